#include <tools/zelt/panel/Gallery.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/panel/EntryRow.h>
#include <tools/zelt/panel/FolderTable.h>
#include <tools/zelt/panel/PageFiles.h>
#include <tools/zelt/panel/TemplateJSON.h>
#include <tools/zelt/support/TempFolder.h>

#include <capsule/Capsule.h>
#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/host/Application.h>
#include <orvcore/json/JSONSplice.h>
#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/tasks/ParallelFor.h>
#include <validation/TemplateReading.h>

#include <atomic>
#include <mutex>
#include <set>

// A page that is opened from a disk may load neither modules nor data, only scripts. So the page's modules are joined
// into one script, and all data are scripts that call one function, in parts: a browser would stand still over one
// script of a hundred thousand rows, and some disks over one folder with as many files.
//
// The gallery is made under a private name beside its place and then renamed. An earlier one is moved aside first and
// comes back when the second rename fails; killed between the two, the old gallery stays under its private name. A
// place that holds anything else is refused, because what stands there is deleted in the end: by the mark, which is
// written last, a gallery is known for one.
//
// Templates are written on all processors; only the set of languages is shared, and locked.

namespace zelt {

namespace {

namespace fs = std::filesystem;
namespace json = orvcore::serialization;

constexpr std::size_t kPart = 1000;                   // files a folder, as in gallery.js
constexpr std::size_t kRowsAFile = 2000;              // templates told of by one file
constexpr std::string_view kMark = "data/gallery.js"; // what a gallery is known by

// A file that the page loads as a script: pages that lie on a disk may load nothing else.
std::string AsScript(const std::string& name, const std::string& content)
{
    return "zeltGallery(" + json::ToJSON(name) + ',' + content + ");\n";
}

// The page's modules as one script, for pages on a disk may not load modules either. Each module's names are told by
// one-line imports and by "export" at the beginning of a line, and no two modules use one name.
std::string OneScript()
{
    std::string script = "'use strict';\n{\n";
    for (const PageFile& file : PageFiles()) {
        if (!file.name.ends_with(".js")) {
            continue;
        }
        for (std::size_t at = 0; at < file.content.size();) {
            const std::size_t end = std::min(file.content.find('\n', at), file.content.size());
            std::string_view line = file.content.substr(at, end - at);
            at = end + 1;
            if (!line.starts_with("import ")) {
                line.remove_prefix(line.starts_with("export ") ? 7 : 0);
                script.append(line).push_back('\n');
            }
        }
    }
    return script + "}\n";
}

void Replace(std::string& text, std::string_view what, std::string_view with)
{
    if (const std::size_t at = text.find(what); at != text.npos) {
        text.replace(at, what.size(), with);
    }
}

class GalleryWriter {
public:
    GalleryWriter(const Entries& entries, const std::vector<std::string>& folders, const fs::path& to,
                  const InterruptWatch& interrupt)
        : entries_(entries)
        , to_(to)
        , interrupt_(interrupt)
        , folders_(folders)
        , rows_(entries.size())
    {
    }

    void Write()
    {
        std::vector<std::size_t> folderOf;
        folderOf.reserve(entries_.size());
        for (const auto& entry : entries_) {
            folderOf.push_back(folders_.Find(*entry));
        }
        orvcore::ParallelFor(entries_.size(), 1, [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                interrupt_.Check();
                WriteTemplate(i, folderOf[i]);
                progress_.Set(static_cast<double>(++done_) / static_cast<double>(entries_.size()));
            }
        });
        WriteRows();
        WritePage();
        WriteStart(); // last: by it a gallery is known
    }

private:
    // Everything of one template but the row.
    void WriteTemplate(std::size_t i, std::size_t folder)
    {
        const orvcapsule::CapsuleEntry& entry = *entries_[i];
        const std::string place = std::to_string(i / kPart) + '/' + std::to_string(i);
        const RowFacts facts{i, folder, IsUnreadable(entry) ? "" : NamesOf(entry)};
        const DetailsFacts told{.folder = folders_.Labels()[folder], .areFontsTold = false, .isChecked = true};
        Put("details/" + place + ".js", AsScript("details/" + place, DetailsAsJSON(entry, told)));
        Copy(entry.thumbnailPath, "poster/" + place + ".png");
        Copy(entry.videoPreviewPath, "video/" + place + ".mp4");
        json::JSONTextWriter writer;
        WriteRow(writer, entry, facts);
        rows_[i] = orvcore::ToNarrow(writer.Take());
    }

    std::string NamesOf(const orvcapsule::CapsuleEntry& entry)
    {
        const auto read = orvcapsule::ReadTemplate(orvcore::PathFromUTF8(entry.path));
        if (!read) { // it has changed since it was listed
            return {};
        }
        const orvcapsule::UIString names = read.capsule->GetCapsuleNameLocalized();
        if (names.GetString().empty()) {
            return {};
        }
        const std::lock_guard lock(mutex_);
        for (const auto& [locale, name] : names.GetLocaleStrings()) {
            languages_.insert(orvcore::ToNarrow(locale));
        }
        return TextsAsJSON(names);
    }

    void WriteRows()
    {
        for (std::size_t part = 0; part < Parts(); ++part) {
            std::string list;
            for (std::size_t i = part * kRowsAFile; i < std::min(entries_.size(), (part + 1) * kRowsAFile); ++i) {
                list += (list.empty() ? "" : ",\n") + rows_[i];
            }
            const std::string name = "data/rows-" + std::to_string(part);
            Put(name + ".js", AsScript(name, '[' + list + ']'));
        }
    }

    void WritePage()
    {
        for (const PageFile& file : PageFiles()) {
            std::string content(file.content);
            if (file.name == "index.html") {
                Replace(content, "<html lang=\"en\">", "<html lang=\"en\" data-kind=\"gallery\">");
                Replace(content, "<script type=\"module\" src=\"main.js\">", "<script defer src=\"page.js\">");
            }
            if (!file.name.ends_with(".js")) {
                Put(std::string(file.name), content);
            }
        }
        Put("page.js", OneScript());
    }

    void WriteStart()
    {
        const std::string language = orvcore::Application::GetLanguage();
        languages_.insert(language);
        json::JSONTextWriter writer;
        writer.BeginObject();
        writer.Key("parts");
        writer.UInt(Parts());
        writer.Key("language");
        writer.String(std::string_view(language));
        WriteList(writer, "languages", languages_);
        WriteFolderList(writer, folders_);
        writer.EndObject();
        Put(std::string(kMark), AsScript("data/gallery", orvcore::ToNarrow(writer.Take())));
    }

    std::size_t Parts() const
    {
        return (entries_.size() + kRowsAFile - 1) / kRowsAFile;
    }

    fs::path PlaceOf(const std::string& name)
    {
        fs::path path = to_ / ToPath(name);
        std::error_code error;
        orvcore::EnsureDirectory(path.parent_path(), error); // where it fails, so does the file
        return path;
    }
    void Put(const std::string& name, const std::string& content)
    {
        WriteText(PlaceOf(name), content);
    }
    void Copy(const orvcore::UTF8String& from, const std::string& name)
    {
        if (!from.empty()) {
            orvcore::CopyOneFile(orvcore::PathFromUTF8(from), PlaceOf(name));
        }
    }

    const Entries& entries_;
    const fs::path to_;
    const InterruptWatch& interrupt_;
    FolderTable folders_;
    std::vector<std::string> rows_; // JSON
    std::mutex mutex_;
    std::set<std::string> languages_;
    std::atomic<std::size_t> done_{0};
    Progress progress_{"writing"};
};

// What stands at the place must be nothing, an empty folder, or an earlier gallery.
bool IsGalleryOrNothing(const fs::path& to)
{
    std::error_code error;
    const orvcore::FileKind kind = orvcore::InspectTarget(to, error).kind;
    if (kind == orvcore::FileKind::Nothing && !error) {
        return true;
    }
    if (kind != orvcore::FileKind::Directory) {
        return false;
    }
    bool isEmpty = true;
    orvcore::ReadDirectory(
        to, [&isEmpty](const fs::path& /*path*/, orvcore::FileKind /*kind*/) { return isEmpty = false; }, error);
    return !error && (isEmpty || orvcore::IsFile(to / ToPath(kMark)));
}

} // namespace

void WriteGallery(const Entries& entries, const std::vector<std::string>& folders, const fs::path& to,
                  const InterruptWatch& interrupt)
{
    if (!IsGalleryOrNothing(to)) {
        throw FileError(ToText(to), "there is something else than a gallery; give a new or an empty folder");
    }
    const fs::path made = orvcore::PrivateSibling(to);
    const fs::path old = orvcore::PrivateSibling(to);
    try {
        orvcore::EnsureDirectory(made);
        GalleryWriter(entries, folders, made, interrupt).Write();
        if (orvcore::Exists(to)) {
            fs::rename(orvcore::ToSystemPath(to), orvcore::ToSystemPath(old));
        }
        fs::rename(orvcore::ToSystemPath(made), orvcore::ToSystemPath(to));
        orvcore::RemoveTree(old);
    } catch (...) {
        std::error_code error; // the first failure counts
        orvcore::RemoveTree(made, error);
        if (orvcore::Exists(old) && !orvcore::Exists(to)) {
            fs::rename(orvcore::ToSystemPath(old), orvcore::ToSystemPath(to), error);
        }
        throw;
    }
}

} // namespace zelt
