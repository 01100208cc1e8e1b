#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/EntryOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/Gallery.h>
#include <tools/zelt/support/Browser.h>

#include <orvcore/files/FileSystem.h>

#include <algorithm>

namespace zelt {

namespace {

// The full path of a folder; the name itself, reported, of one that is not there, which the library passes over.
std::string FullPath(const std::string& folder, ExitCode& exit)
{
    std::string path = folder;
    const ExitCode named = OnFile(folder, [&] {
        std::error_code failed;
        const orvcore::FileKind kind = orvcore::InspectTarget(ToPath(folder), failed).kind;
        if (kind == orvcore::FileKind::Nothing && !failed) {
            throw FileError(folder, "there is no such folder");
        }
        if (kind != orvcore::FileKind::Directory && !failed) {
            throw FileError(folder, "it is not a folder");
        }
        path = ToText(ToFullPath(folder));
    });
    exit = named == ExitCode::kDone ? exit : named;
    return path;
}

ExitCode ReportFailures(const std::vector<orvcapsule::FolderFailure>& failures)
{
    for (const orvcapsule::FolderFailure& failure : failures) {
        ReportError(orvcore::AsNarrow(failure.folder), failure.reason.message());
    }
    return failures.empty() ? ExitCode::kDone : ExitCode::kBadFile;
}

ExitCode ReportLeftOut(const std::vector<lumolibmanager::LeftOut>& leftOut)
{
    for (const lumolibmanager::LeftOut& left : leftOut) {
        const std::string element = left.elementID.empty() ? "" : "element " + left.elementID + ": ";
        ReportError(orvcore::AsNarrow(left.place), element + (left.role.empty() ? "" : left.role + ": ") + left.reason);
    }
    return leftOut.empty() ? ExitCode::kDone : ExitCode::kBadFile;
}

// Lists the places, then does `work` with what is in them.
template <class Work>
ExitCode Browse(const Places& places, bool progressive, Work&& work)
{
    if (places.folders.empty() && places.libraries.empty()) {
        ReportError("there is nothing to look into: give a FOLDER or --libraries ROOT");
        return ExitCode::kBadUsage;
    }
    ExitCode exit = ExitCode::kDone;
    Places full;
    for (const std::string& folder : places.folders) {
        full.folders.push_back(FullPath(folder, exit));
    }
    full.libraries = places.libraries.empty() ? "" : FullPath(places.libraries, exit);
    const ExitCode listed = OnFile(places.folders.empty() ? places.libraries : places.folders.front(), [&] {
        Browser browser(full.folders, full.libraries);
        const Entries entries = browser.List(progressive);
        exit = std::max({exit, ReportFailures(browser.GetFolderFailures()), ReportLeftOut(browser.GetLeftOut())});
        work(browser, entries);
    });
    return std::max(exit, listed);
}

void PrintEntries(const Entries& entries, bool json, bool isLong)
{
    if (json) {
        for (const auto& entry : entries) {
            PrintLine(EntryAsJSON(*entry));
        }
    } else if (isLong) {
        for (const auto& entry : entries) {
            Print((entry == entries.front() ? "" : "\n") + EntryAsText(*entry));
        }
    } else {
        Print(EntriesAsTable(entries));
    }
}

// The entries whose paths were found.
Entries WithPaths(const Entries& entries, const Browser::Texts& paths)
{
    Entries found;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(found),
                 [&](const auto& entry) { return paths.count(entry->path) != 0; });
    return found;
}

} // namespace

ExitCode RunList(const ListOptions& options)
{
    return Browse(options.places, options.progress,
                  [&](Browser&, const Entries& entries) { PrintEntries(entries, options.json, options.isLong); });
}

ExitCode RunSearch(const SearchOptions& options)
{
    if (options.terms.empty()) {
        ReportError("there is nothing to search for: zelt search FOLDER... -- TERM...");
        return ExitCode::kBadUsage;
    }
    return Browse(options.places, false, [&](Browser& browser, const Entries& entries) {
        PrintEntries(WithPaths(entries, browser.Search(options.terms)), options.json, options.isLong);
    });
}

ExitCode RunGallery(const GalleryOptions& options)
{
    return Browse(options.places, false, [&](Browser& browser, const Entries& entries) {
        WriteGallery(entries, browser.GetFolders(), ToPath(options.output), browser.GetInterrupt());
        PrintLine(Printable(options.output) + ": " + Count(entries.size(), "template"));
    });
}

ExitCode RunTags(const TagsOptions& options)
{
    if (options.terms.size() != 1) {
        ReportError("one beginning of a tag is needed: zelt tags FOLDER... -- PREFIX");
        return ExitCode::kBadUsage;
    }
    return Browse(options.places, false, [&](Browser& browser, const Entries&) {
        for (const orvcore::UTF8String& tag : browser.FindTags(options.terms.front())) {
            PrintLine(OneMember("tag", orvcore::AsNarrow(tag), options.json));
        }
    });
}

} // namespace zelt
