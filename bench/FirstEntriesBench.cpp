// How soon a host has the first hundred entries of a listing, for folders (and cloud libraries) of a hundred packages
// and of many more, in one run: nothing noted yet (cold), and nothing changed since the last listing (warm). And how
// long it takes then until a cancelled listing has ended.
#include <bench/ListingBenchData.h>

#include <lumolibmanager/FolderLibManager.h>
#include <manager/GraphicSourceManager.h>
#include <package/CapsuleZip.h>
#include <sources/LocalGraphicsSource.h>
#include <sources/LumoLibrariesSource.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/tasks/MainThread.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using orvcapsule::GraphicSourceManager;

constexpr std::size_t kFirst = 100;
constexpr std::size_t kLinksAFile = 10'000; // file systems have a limit
constexpr int kRounds = 20;

double MillisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Many templates, which are few files with many names: a new time of those makes all of them new.
class Templates {
public:
    Templates(const fs::path& root, std::size_t count)
        : folder_(root / "templates")
        , files_(root / "files")
        , count_(count)
    {
        orvcore::EnsureDirectory(folder_);
        orvcore::EnsureDirectory(files_);
        std::ofstream(files_ / "definition.json", std::ios::binary) << orvcore::ToNarrow(bench::MakeDefinition(8));
        static_cast<void>(orvcapsule::CapsuleZip(files_ / "model.zelt").Zip(files_, {}, nullptr));
    }

    void MakePackages()
    {
        Link("model.zelt", ".zelt");
    }
    void MakeLibrary()
    {
        Link("definition.json", ".json");
        Link("definition.json", ".zelt"); // which nobody opens
        std::ofstream manifest(folder_ / "library.json");
        manifest << R"({"formatVersion":1,"id":"lib","name":"Titles","elements":[)";
        for (std::size_t i = 0; i < count_; ++i) {
            const std::string name = std::to_string(i);
            manifest << (i == 0 ? "" : ",") << R"({"id":")" << name << R"(","name":"E","type":"capsule","files":)"
                     << R"({"primary":")" << name << R"(.zelt","alternate":")" << name << R"(.json"}})";
        }
        manifest << "]}";
    }
    void Touch() const
    {
        for (const fs::path& file : made_) {
            fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(1));
        }
    }

private:
    void Link(const std::string& model, const std::string& extension)
    {
        std::error_code error;
        for (std::size_t i = 0; i < count_; ++i) {
            if (i % kLinksAFile == 0) {
                made_.push_back(files_ / (std::to_string(made_.size()) + extension));
                fs::copy_file(files_ / model, made_.back());
            }
            orvcore::MakeHardLink(made_.back(), folder_ / (std::to_string(i) + extension), error);
        }
    }

    fs::path folder_;
    fs::path files_;
    std::size_t count_;
    std::vector<fs::path> made_;
};

class Browser {
public:
    Browser(const fs::path& root, const std::shared_ptr<orvcapsule::IGraphicSource>& source)
        : manager_(std::make_shared<GraphicSourceManager>(orvcore::PathToUTF16(root / "index.db")))
    {
        manager_->AddGraphicSource(source);
        manager_->SetLocalRequestEntriesFoundCallback(std::make_shared<GraphicSourceManager::EntriesFoundCallback>(
            [this](const GraphicSourceManager::EntryList& entries) { found_ += entries.size(); }));
        manager_->SetLocalDirectoryRequestCallback(std::make_shared<GraphicSourceManager::DirectoryCallback>(
            [this](const auto&, const auto&, bool) { idle_ = true; }));
    }
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;
    ~Browser()
    {
        manager_->Shutdown();
        orvcore::RunMainThreadCalls();
    }

    /// Milliseconds until the host has so many entries.
    double UntilFound(std::size_t count)
    {
        found_ = 0;
        const auto start = Clock::now();
        manager_->RequestDefaultGraphicSet({}, true);
        Pump([&] { return found_ >= count; });
        return MillisecondsSince(start);
    }
    double UntilIdle()
    {
        idle_ = false;
        const auto start = Clock::now();
        manager_->LocalDirectoryChanged("none", u8"none", {}); // answered when everything before it has ended
        Pump([&] { return idle_; });
        return MillisecondsSince(start);
    }
    double UntilCancelled()
    {
        manager_->Abort();
        return UntilIdle();
    }

private:
    template <class Done>
    static void Pump(const Done& done)
    {
        while (!done()) {
            orvcore::WaitForMainThreadCalls(std::chrono::seconds(1));
            orvcore::RunMainThreadCalls();
        }
    }

    const std::shared_ptr<GraphicSourceManager> manager_;
    std::size_t found_ = 0;
    bool idle_ = false;
};

// A folder or library with its listing times in milliseconds.
class Place {
public:
    Place(std::size_t count, bool isLibrary)
        : count_(count)
        , templates_(folder_.Path(), count)
    {
        if (isLibrary) {
            templates_.MakeLibrary();
            libraries_ = std::make_shared<lumolibmanager::FolderLibManager>(folder_.Path());
        } else {
            templates_.MakePackages();
        }
    }

    void MeasureCold()
    {
        templates_.Touch();
        if (libraries_) { // one that has not read the manifest yet
            libraries_ = std::make_shared<lumolibmanager::FolderLibManager>(folder_.Path());
        }
        Measure(cold_);
    }
    /// Lists to the end, so that all is noted.
    void ListAll()
    {
        Browser browser = Browse();
        browser.UntilFound(count_);
        browser.UntilIdle();
    }
    void MeasureWarm()
    {
        Measure(warm_);
    }
    void Print(const char* name, const Place& alone) const
    {
        std::printf("%s of %6zu: first %zu entries cold %5.1f ms (ratio %.2f), warm %5.1f ms (ratio %.2f), cancelled "
                    "after %.1f ms at most\n",
                    name, count_, kFirst, cold_, cold_ / alone.cold_, warm_, warm_ / alone.warm_, cancel_);
    }

private:
    Browser Browse() const
    {
        if (libraries_) {
            lumolibmanager::SetLumoLibManager(libraries_);
            return {folder_.Path(), std::make_shared<orvcapsule::LumoLibrariesSource>(false)};
        }
        const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>> noFolders;
        return {folder_.Path(), std::make_shared<orvcapsule::LocalGraphicsSource>(
                                    orvcore::PathToUTF16(folder_.Path() / "templates"), noFolders)};
    }
    void Measure(double& best)
    {
        Browser browser = Browse();
        best = std::min(best, browser.UntilFound(kFirst));
        cancel_ = std::max(cancel_, browser.UntilCancelled());
    }

    const std::size_t count_;
    const orvcore::TemporaryFolder folder_{u8"orvcapsule-bench"};
    Templates templates_;
    std::shared_ptr<lumolibmanager::FolderLibManager> libraries_;
    double cold_ = 1e9;
    double warm_ = 1e9;
    double cancel_ = 0;
};

// Rounds alternate, so that all places meet the same weather; the best of each counts.
void Run(const char* name, bool isLibrary, const std::vector<std::size_t>& counts)
{
    std::vector<std::unique_ptr<Place>> places;
    for (const std::size_t count : counts) {
        places.push_back(std::make_unique<Place>(count, isLibrary));
    }
    for (int round = 0; round < kRounds; ++round) {
        std::for_each(places.begin(), places.end(), [](const auto& place) { place->MeasureCold(); });
    }
    std::for_each(places.begin(), places.end(), [](const auto& place) { place->ListAll(); });
    for (int round = 0; round < kRounds; ++round) {
        std::for_each(places.begin(), places.end(), [](const auto& place) { place->MeasureWarm(); });
    }
    std::for_each(places.begin(), places.end(), [&](const auto& place) { place->Print(name, *places[0]); });
    std::fflush(stdout);
}

} // namespace

int main()
{
    orvcore::DebugSettings::SetInt("ORV.entrysettletime", 0); // noted at once
    Run("folder", false, {kFirst, 1'000, 100'000});
    Run("library", true, {kFirst, 1'000, lumolibmanager::kMaxElements});
}
