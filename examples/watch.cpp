// A host that keeps its list of templates up to date: it lists a folder, watches it, and lists again the folders in
// which packages come, go or change. docs/hosting.md tells the rules.

#include <manager/GraphicSourceManager.h>
#include <orvcore/files/FolderWatcher.h>
#include <orvcore/files/Paths.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>
#include <sources/LocalGraphicsSource.h>
#include <sources/SourceNames.h>
#include <tools/support/Arguments.h>
#include <tools/support/Console.h>

#include <charconv>
#include <iostream>
#include <limits>
#include <map>
#include <string>

namespace {

using orvcapsule::GraphicSourceManager;
using Entry = boost::shared_ptr<orvcapsule::CapsuleEntry>;
using Changes = std::vector<orvcore::FolderWatcher::Change>;

// The templates that are shown, by path. Used on the main thread only.
class Panel {
public:
    explicit Panel(const std::filesystem::path& root)
        : root_(root)
    {
    }

    // A delivery replaces what lies directly in its folder; that of the root folder what lies below it, too.
    void Replace(const std::vector<Entry>& entries, const std::filesystem::path& folder)
    {
        std::map<orvcore::UTF8String, Entry> before;
        for (auto entry = entries_.begin(); entry != entries_.end();) {
            const bool isReplaced = folder == root_ || orvcore::PathFromUTF8(entry->first).parent_path() == folder;
            const auto next = std::next(entry);
            if (isReplaced) {
                before.insert(entries_.extract(entry));
            }
            entry = next;
        }
        for (const Entry& entry : entries) {
            std::cout << (before.erase(entry->path) != 0 ? "again " : "new ") << orvcore::ToNarrow(entry->name);
            std::cout << (entry->refusal ? ", not usable: " + entry->refusal->text : std::string()) << std::endl;
            entries_[entry->path] = entry;
        }
        for (const auto& [path, entry] : before) {
            std::cout << "gone " << orvcore::ToNarrow(entry->name) << std::endl;
        }
    }

private:
    const std::filesystem::path root_;
    std::map<orvcore::UTF8String, Entry> entries_;
};

// Lists each folder again, and names the files that changed: the index forgets those that are gone.
void ListAgain(GraphicSourceManager& manager, const Changes& changes)
{
    for (const orvcore::FolderWatcher::Change& change : changes) {
        std::vector<orvcore::UTF8String> files;
        for (const std::filesystem::path& file : change.files) {
            files.push_back(orvcore::PathToUTF8(file));
        }
        manager.LocalDirectoryChanged(orvcapsule::kLocalSourceID, orvcore::PathToUTF8(change.folder), files);
    }
}

} // namespace

int main(int argc, char** argv)
{
    orvtools::SetConsoleUTF8(); // this line and the next are a program's; a host has its own
    const std::vector<std::string> arguments = orvtools::UTF8Arguments(argc, argv);
    if (arguments.size() < 2) {
        std::cerr << "usage: watch FOLDER [DELIVERIES]\n";
        return 2;
    }
    std::size_t deliveries = std::numeric_limits<std::size_t>::max(); // after so many it ends
    if (arguments.size() > 2) {
        std::from_chars(arguments[2].data(), arguments[2].data() + arguments[2].size(), deliveries);
    }
    const std::filesystem::path folder =
        std::filesystem::absolute(orvcore::PathFromUTF8(orvcore::AsUTF8(arguments[1])));
    const orvcore::TemporaryFolder data(u8"orvcapsule-watch");
    const auto manager = std::make_shared<GraphicSourceManager>(orvcore::PathToUTF16(data.Path() / "index.db"));
    manager->AddGraphicSource(std::make_shared<orvcapsule::LocalGraphicsSource>(orvcore::PathToUTF16(folder)));

    Panel panel(folder);
    std::size_t done = 0;
    manager->SetLocalDirectoryRequestCallback(std::make_shared<GraphicSourceManager::DirectoryCallback>(
        [&](const GraphicSourceManager::EntryList& entries, const orvcore::UTF8String& directory, bool last) {
            panel.Replace(entries, orvcore::PathFromUTF8(directory));
            done += last ? 1 : 0;
        }));
    // The watcher comes first: what changes while the folder is listed is told then, and listed once more.
    const std::weak_ptr<GraphicSourceManager> weak = manager; // a call may still be queued when the manager has gone
    const orvcore::FolderWatcher watcher({folder, true, ".zelt"}, [weak](const Changes& changes) {
        orvcore::AsyncCallFromMainThread([weak, changes] {
            if (const auto alive = weak.lock()) {
                ListAgain(*alive, changes);
            }
        });
    });
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, orvcore::PathToUTF8(folder), {});
    while (done < deliveries) {
        orvcore::WaitForMainThreadCalls(std::chrono::seconds(1));
        orvcore::RunMainThreadCalls();
    }
    manager->SetLocalDirectoryRequestCallback(nullptr); // it refers to this function's variables
    manager->Shutdown();
    orvcore::StopMainThreadCalls();
    orvcore::ShutdownExecutors();
    return 0;
}
