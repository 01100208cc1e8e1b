#include <tools/zelt/output/EntryOutput.h>

#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Style.h>
#include <tools/zelt/output/TextLayout.h>

#include <orvcore/json/JSONTextWriter.h>
#include <orvstorage/ZipFailure.h>
#include <validation/Finding.h>

#include <cstdio>

// Three forms for three readers. Tables and details are for people and pass through Printable: a name from a package
// could otherwise steer the terminal. JSON is for programs: its keys are always there. A path alone is for other
// programs' arguments and therefore the path's own bytes, also those that no terminal should see.

namespace zelt {

namespace {

using orvcapsule::CapsuleEntry;
using orvcore::AsNarrow;
using orvcore::ToNarrow;

// An entry of a package whose definition could not be read has only what the file system tells.
bool IsReadable(const CapsuleEntry& entry)
{
    return !entry.apiVersion.empty();
}

std::string Note(const CapsuleEntry& entry)
{
    if (IsReadable(entry)) {
        return entry.needsTsUpgrade ? "needs newer host" : "";
    }
    return IsEncrypted(entry) ? "encrypted" : "cannot be read";
}

std::string Size(std::uint64_t bytes)
{
    if (bytes < 1000) {
        return std::to_string(bytes) + " B";
    }
    const auto number = static_cast<double>(bytes);
    // From here on one decimal would round to "1000.0 kB".
    return bytes < 999'950 ? Fixed(number / 1e3, 1) + " kB" : Fixed(number / 1e6, 1) + " MB";
}

std::string Duration(const CapsuleEntry& entry)
{
    return entry.durationMs == 0 ? "-" : Fixed(static_cast<double>(entry.durationMs) / 1000, 3) + " s";
}

std::string Frame(const CapsuleEntry& entry)
{
    return entry.frameWidth == 0 && entry.frameHeight == 0
               ? "-"
               : std::to_string(entry.frameWidth) + " x " + std::to_string(entry.frameHeight);
}

std::vector<std::string> Narrowed(const std::vector<orvcore::UTF16String>& texts)
{
    std::vector<std::string> narrow;
    narrow.reserve(texts.size());
    for (const orvcore::UTF16String& text : texts) {
        narrow.push_back(ToNarrow(text));
    }
    return narrow;
}

// "2024-05-01T12:30:00Z"; empty when unknown.
std::string Modified(const CapsuleEntry& entry)
{
    if (entry.modified.is_special()) {
        return "";
    }
    const auto date = entry.modified.date().year_month_day();
    const auto time = entry.modified.time_of_day();
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", static_cast<int>(date.year),
                  static_cast<int>(date.month.as_number()), static_cast<int>(date.day.as_number()),
                  static_cast<int>(time.hours()), static_cast<int>(time.minutes()), static_cast<int>(time.seconds()));
    return text;
}

std::string OrDash(std::string text)
{
    return text.empty() ? "-" : std::move(text);
}

// Writes the members of an entry's object.
class Members {
public:
    void Text(std::string_view key, std::string_view text)
    {
        writer_.Key(key);
        writer_.String(text);
    }
    void Text(std::string_view key, const orvcore::UTF16String& text)
    {
        writer_.Key(key);
        writer_.String(text);
    }
    void Number(std::string_view key, std::uint64_t number)
    {
        writer_.Key(key);
        writer_.UInt(number);
    }
    void Bool(std::string_view key, bool value)
    {
        writer_.Key(key);
        writer_.Bool(value);
    }
    template <class Texts>
    void List(std::string_view key, const Texts& texts)
    {
        writer_.Key(key);
        writer_.BeginArray();
        for (const auto& text : texts) {
            writer_.String(text);
        }
        writer_.EndArray();
    }
    // Null stands for an empty text.
    void TextOrNull(std::string_view key, std::string_view text)
    {
        writer_.Key(key);
        if (text.empty()) {
            writer_.Null();
        } else {
            writer_.String(text);
        }
    }
    // A path that may be missing.
    void Path(std::string_view key, const orvcore::UTF8String& path)
    {
        if (path.empty()) {
            writer_.Key(key);
            writer_.Null();
        } else {
            WritePath(writer_, key, AsNarrow(path));
        }
    }
    orvcore::serialization::JSONTextWriter& Writer()
    {
        return writer_;
    }

private:
    orvcore::serialization::JSONTextWriter writer_;
};

std::string EntriesAsTable(const Entries& entries, bool isLong)
{
    if (entries.empty()) {
        return "";
    }
    std::vector<std::vector<std::string>> rows = {{"NAME", "SIZE", "DURATION", "FRAME", "AUTHOR", "TAGS", "NOTE"}};
    if (isLong) {
        rows.front().insert(rows.front().end(), {"MODIFIED", "PATH"});
    }
    for (const auto& entry : entries) {
        rows.push_back({Printable(ToNarrow(entry->name)), Size(entry->fileSize), Duration(*entry), Frame(*entry),
                        Printable(OrDash(ToNarrow(entry->authorApp))), Printable(OrDash(Joined(Narrowed(entry->tags)))),
                        Note(*entry)});
        if (isLong) {
            rows.back().insert(rows.back().end(), {OrDash(Modified(*entry)), Printable(AsNarrow(entry->path))});
        }
    }
    std::string table = Table(rows, "");
    const std::size_t heading = table.find('\n');
    return Styled(table.substr(0, heading), Style::Heading) + table.substr(heading);
}

std::string EntryAsText(const CapsuleEntry& entry)
{
    const std::string id = ToNarrow(entry.capsuleID);
    return Printable(ToNarrow(entry.name)) + '\n' + LabelledLine("Note", Note(entry)) +
           LabelledLine("Reason", entry.refusal ? entry.refusal->text : "") +
           LabelledLine("Path", AsNarrow(entry.path)) +
           LabelledLine("Size", std::to_string(entry.fileSize) + " bytes") + LabelledLine("Modified", Modified(entry)) +
           LabelledLine("Identity", id) + LabelledLine("Description", ToNarrow(entry.description)) +
           LabelledLine("Author", ToNarrow(entry.authorApp)) + LabelledLine("Version", ToNarrow(entry.apiVersion)) +
           LabelledLine("Licence", ToNarrow(entry.licenseID)) +
           LabelledLine("Duration", entry.durationMs == 0 ? "" : Duration(entry)) +
           LabelledLine("Frame", entry.frameWidth == 0 ? "" : Frame(entry)) +
           LabelledLine("Fonts", Joined(Narrowed(entry.usedFonts))) +
           LabelledLine("Tags", Joined(Narrowed(entry.tags))) + LabelledLine("Picture", AsNarrow(entry.thumbnailPath)) +
           LabelledLine("Video", AsNarrow(entry.videoPreviewPath));
}

std::string EntryAsJSON(const CapsuleEntry& entry)
{
    Members members;
    members.Writer().BeginObject();
    members.Path("path", entry.path);
    members.Text("name", entry.name);
    members.List("sourcePath", entry.sourcePath);
    members.Text("elementID", AsNarrow(entry.lumoElementID));
    members.Bool("readable", IsReadable(entry));
    members.TextOrNull("error", entry.refusal ? entry.refusal->text : "");
    members.Number("fileSize", entry.fileSize);
    members.Text("modified", Modified(entry));
    members.Number("durationMs", entry.durationMs);
    members.Number("frameWidth", entry.frameWidth);
    members.Number("frameHeight", entry.frameHeight);
    members.Text("authorApp", entry.authorApp);
    members.Text("capsuleID", entry.capsuleID);
    members.Text("apiVersion", entry.apiVersion);
    members.Text("licenseID", entry.licenseID);
    members.Text("mobileCompatibility", entry.mobileCompatibilityVersion);
    members.Bool("needsNewerHost", entry.needsTsUpgrade);
    members.Text("description", entry.description);
    members.List("fonts", entry.usedFonts);
    members.List("tags", entry.tags);
    members.Path("thumbnail", entry.thumbnailPath);
    members.Path("video", entry.videoPreviewPath);
    members.Writer().EndObject();
    return ToNarrow(members.Writer().Take());
}

} // namespace

bool IsEncrypted(const CapsuleEntry& entry)
{
    return entry.refusal && entry.refusal->code == NameOf(orvstorage::ZipError::PasswordNeeded);
}

void PrintEntries(const Entries& entries, const EntryForm& form)
{
    if (!form.json && !form.pathsAlone && !form.hasDetails) {
        Print(EntriesAsTable(entries, form.isLong));
        return;
    }
    for (const auto& entry : entries) {
        if (form.json) {
            PrintLine(EntryAsJSON(*entry));
        } else if (form.pathsAlone) {
            Print(AsNarrow(entry->path));
            Print(form.isNullSeparated ? std::string_view("\0", 1) : "\n");
        } else {
            Print((entry == entries.front() ? "" : "\n") + EntryAsText(*entry));
        }
    }
}

std::string StockEntriesAsTable(const StockEntries& entries)
{
    if (entries.empty()) {
        return "";
    }
    std::vector<std::vector<std::string>> rows = {{"ID", "NAME", "SIZE", "FRAME", "CREATOR", "TAGS", "NOTE"}};
    for (const auto& entry : entries) {
        rows.push_back({Printable(AsNarrow(entry->stockID)), Printable(ToNarrow(entry->name)), Size(entry->fileSize),
                        Frame(*entry), Printable(OrDash(ToNarrow(entry->creatorName))),
                        Printable(OrDash(Joined(Narrowed(entry->tags)))), entry->isPremium ? "premium" : ""});
    }
    return Table(rows, "");
}

std::string StockEntryAsJSON(const orvcapsule::StockCapsuleEntry& entry, std::size_t index, std::size_t total)
{
    Members members;
    members.Writer().BeginObject();
    members.Number("index", index);
    members.Number("total", total);
    members.Text("id", AsNarrow(entry.stockID));
    members.Text("name", entry.name);
    members.Text("creator", entry.creatorName);
    members.List("tags", entry.tags);
    members.Number("width", entry.frameWidth);
    members.Number("height", entry.frameHeight);
    members.TextOrNull("thumbnailURL", AsNarrow(entry.thumbnailURL));
    members.TextOrNull("previewURL", AsNarrow(entry.videoPreviewURL));
    members.TextOrNull("metadataURL", AsNarrow(entry.metadataURL));
    members.Writer().EndObject();
    return ToNarrow(members.Writer().Take());
}

} // namespace zelt
