// The listing of a cloud library of 10,000 elements beside reading and parsing the same definitions with the bare
// libraries in the same run, as time for each element: nothing noted yet (cold), and nothing changed since the last
// listing (same). The bare libraries work on one thread, with one parser that keeps its memory; the listing works on
// all processors.
#include <bench/ListingBenchData.h>

#include <lumolibmanager/FolderLibManager.h>
#include <sources/LumoLibrariesSource.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/host/DebugSettings.h>

#include <simdjson.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>

namespace {

namespace fs = std::filesystem;
constexpr std::size_t kElements = 10'000;

template <class Work>
double Microseconds(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / static_cast<double>(kElements);
}

void MakeLibrary(const fs::path& folder)
{
    const std::string definition = orvcore::ToNarrow(bench::MakeDefinition(8));
    std::ofstream manifest(folder / "library.json");
    manifest << R"({"formatVersion":1,"id":"lib","name":"Titles","elements":[)";
    for (std::size_t i = 0; i < kElements; ++i) {
        const std::string name = std::to_string(i);
        std::ofstream(folder / (name + ".json"), std::ios::binary) << definition;
        std::ofstream(folder / (name + ".zelt"), std::ios::binary) << "package";
        manifest << (i == 0 ? "" : ",") << R"({"id":")" << name
                 << R"(","name":"E","type":"capsule","files":{"primary":")" << name << R"(.zelt","alternate":")" << name
                 << R"(.json"}})";
    }
    manifest << "]}";
}

std::size_t ReadBare(const fs::path& folder)
{
    simdjson::dom::parser parser;
    std::size_t parsed = 0;
    for (std::size_t i = 0; i < kElements; ++i) {
        parsed += parser.load((folder / (std::to_string(i) + ".json")).string()).error() == simdjson::SUCCESS ? 1U : 0U;
    }
    return parsed;
}

std::size_t List()
{
    const orvcapsule::LumoLibrariesSource source(false);
    std::vector<boost::shared_ptr<orvcapsule::CapsuleEntry>> entries;
    int total = 0;
    source.Search({}, entries, 0, 0, total, {});
    const auto isRead = [](const auto& entry) { return !entry->apiVersion.empty(); };
    return static_cast<std::size_t>(std::count_if(entries.begin(), entries.end(), isRead));
}

} // namespace

int main()
{
    const orvcore::TemporaryFolder folder(u8"orvcapsule-bench");
    const fs::path& root = folder.Path();
    orvcore::EnsureDirectory(root / "library");
    MakeLibrary(root / "library");
    lumolibmanager::SetLumoLibManager(std::make_shared<lumolibmanager::FolderLibManager>(root));
    double bare = 1e9;
    double cold = 1e9;
    double same = 1e9;
    std::size_t whole = kElements;
    for (int round = 0; round < 5; ++round) {
        bare = std::min(bare, Microseconds([&] { whole = std::min(whole, ReadBare(root / "library")); }));
        orvcore::DebugSettings::SetInt("ORV.entrysettletime", -1); // nothing is noted
        cold = std::min(cold, Microseconds([&] { whole = std::min(whole, List()); }));
        orvcore::DebugSettings::SetInt("ORV.entrysettletime", 0);
        List();
        same = std::min(same, Microseconds([&] { whole = std::min(whole, List()); }));
    }
    std::printf("%zu elements: bare %.1f us, cold %.1f us (ratio %.2f), same %.1f us\n", kElements, bare, cold,
                cold / bare, same);
    return whole == kElements ? 0 : 1;
}
