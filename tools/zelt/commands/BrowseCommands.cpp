#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/EntryOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/Gallery.h>
#include <tools/zelt/support/Browser.h>
#include <tools/zelt/support/OpenPackage.h>
#include <tools/zelt/support/Places.h>

#include <algorithm>

namespace zelt {

namespace {

ExitCode ReportFailures(const std::vector<orvcapsule::FolderFailure>& failures)
{
    for (const orvcapsule::FolderFailure& failure : failures) {
        ReportError(orvcore::AsNarrow(failure.folder), failure.reason.message());
    }
    return failures.empty() ? ExitCode::kDone : ExitCode::kBadFile;
}

// A listing opens packages without a password; whoever gave one may expect it to.
void WarnOfEncrypted(const Entries& entries)
{
    const auto encrypted = std::count_if(entries.begin(), entries.end(), [](const auto& e) { return IsEncrypted(*e); });
    if (encrypted != 0 && !GetPassword().empty()) {
        ReportError("warning: a listing uses no password and tells nothing of " +
                    Count(static_cast<std::size_t>(encrypted), "encrypted package") + "; zelt info does");
    }
}

// Lists the places, then does `work` with what is in them.
template <class Work>
ExitCode Browse(const Places& places, bool progressive, Work&& work)
{
    if (!NamePlaces(places)) {
        return ExitCode::kBadUsage;
    }
    ExitCode exit = ExitCode::kDone;
    const Places full = FullPlaces(places, exit);
    const ExitCode listed = OnFile(places.folders.empty() ? places.libraries : places.folders.front(), [&] {
        Browser browser(full);
        const Entries entries = browser.List(progressive);
        exit = std::max({exit, ReportFailures(browser.GetFolderFailures()), ReportLeftOut(browser.GetLeftOut())});
        WarnOfEncrypted(entries);
        work(browser, entries);
    });
    // The worse of the two: exit codes ascend with what went wrong.
    return std::max(exit, listed);
}

// The entries whose paths were found.
// The search tells paths; the entries come from the listing, in its order.
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
                  [&](Browser&, const Entries& entries) { PrintEntries(entries, options.form); });
}

ExitCode RunSearch(const SearchOptions& options)
{
    if (options.terms.empty()) {
        ReportError("there is nothing to search for: zelt search FOLDER... -- TERM...");
        return ExitCode::kBadUsage;
    }
    return Browse(options.places, false, [&](Browser& browser, const Entries& entries) {
        PrintEntries(WithPaths(entries, browser.Search(options.terms)), options.form);
    });
}

ExitCode RunGallery(const GalleryOptions& options)
{
    return Browse(options.places, false, [&](Browser& browser, const Entries& entries) {
        WriteGallery(entries, browser.GetPlaces().folders, ToPath(options.output), browser.GetInterrupt());
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
