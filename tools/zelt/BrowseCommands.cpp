#include "Browser.h"
#include "Commands.h"
#include "EntryOutput.h"
#include "Output.h"

#include <orvcore/files/FileSystem.h>

#include <algorithm>

namespace zelt {

namespace {

namespace fs = std::filesystem;

// The full path of a folder that can be listed. @throws FileError
std::string UsableFolder(const std::string& folder)
{
    std::error_code failed;
    orvcore::ReadDirectory(
        ToPath(folder), [](const fs::path&, orvcore::FileKind) { return false; }, failed);
    if (failed == std::errc::no_such_file_or_directory) {
        throw FileError(folder, "there is no such folder");
    }
    if (failed == std::errc::not_a_directory) {
        throw FileError(folder, "it is not a folder");
    }
    if (failed) {
        throw FileError(folder, failed.message());
    }
    return ToText(ToFullPath(folder));
}

// Reports the folders that cannot be listed and leaves the others; the first keeps its place, even if it is not usable.
std::vector<std::string> UsableFolders(const std::vector<std::string>& folders, ExitCode& exit)
{
    std::vector<std::string> usable(1);
    for (std::size_t i = 0; i < folders.size(); ++i) {
        const ExitCode one = OnFile(folders[i], [&] {
            const std::string path = UsableFolder(folders[i]);
            if (i == 0) {
                usable.front() = path;
            } else {
                usable.push_back(path);
            }
        });
        exit = one == ExitCode::kDone ? exit : one;
    }
    return usable;
}

// Lists the folders, then does `work` with what is in them.
template <class Work>
ExitCode Browse(const std::vector<std::string>& folders, bool progressive, Work&& work)
{
    ExitCode exit = ExitCode::kDone;
    const std::vector<std::string> usable = UsableFolders(folders, exit);
    if (std::all_of(usable.begin(), usable.end(), [](const std::string& folder) { return folder.empty(); })) {
        return exit;
    }
    const ExitCode listed = OnFile(folders.front(), [&] {
        Browser browser(usable);
        work(browser, browser.List(progressive));
    });
    return listed == ExitCode::kDone ? exit : listed;
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

// The entries whose paths were found. A search answers with well-formed text, which a file's name need not be.
Entries WithPaths(const Entries& entries, const Browser::Texts& paths)
{
    Entries found;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(found),
                 [&](const auto& entry) { return paths.count(orvcore::ToUTF8(orvcore::ToUTF16(entry->path))) != 0; });
    return found;
}

} // namespace

ExitCode RunList(const ListOptions& options)
{
    return Browse(options.folders, options.progress,
                  [&](Browser&, const Entries& entries) { PrintEntries(entries, options.json, options.isLong); });
}

ExitCode RunSearch(const SearchOptions& options)
{
    if (options.terms.empty()) {
        ReportError("there is nothing to search for: zelt search FOLDER... -- TERM...");
        return ExitCode::kBadUsage;
    }
    return Browse(options.folders, false, [&](Browser& browser, const Entries& entries) {
        PrintEntries(WithPaths(entries, browser.Search(options.terms)), options.json, options.isLong);
    });
}

ExitCode RunTags(const TagsOptions& options)
{
    if (options.terms.size() != 1) {
        ReportError("one beginning of a tag is needed: zelt tags FOLDER... -- PREFIX");
        return ExitCode::kBadUsage;
    }
    return Browse(options.folders, false, [&](Browser& browser, const Entries&) {
        for (const orvcore::UTF8String& tag : browser.FindTags(options.terms.front())) {
            PrintLine(OneMember("tag", orvcore::AsNarrow(tag), options.json));
        }
    });
}

} // namespace zelt
