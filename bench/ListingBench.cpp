// The listing of local folders beside the bare libraries in the same run, as time for each package: nothing known yet
// (cold), every package read but its previews there (cached), nothing changed since the last listing (same); and the
// memory of listed entries. Wall time profits from several processors. Usage: listing_bench [entries for the memory
// row]
#include <bench/ListingBenchData.h>
#include <bench/ListingBenchFloor.h>

#include <sources/LocalGraphicsSource.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/host/DebugSettings.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

namespace fs = std::filesystem;
using orvcapsule::CapsuleEntry;
using orvcapsule::LocalGraphicsSource;
using Entries = std::vector<boost::shared_ptr<CapsuleEntry>>;

struct Cost {
    double wall = 1e9; // seconds
    double cpu = 1e9;
};

template <class Work>
void Measure(Cost& best, const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t cpu = std::clock();
    work();
    best.cpu = std::min(best.cpu, static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC);
    best.wall = std::min(best.wall, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

Entries List(const LocalGraphicsSource& source, Entries entries = {})
{
    int total = 0;
    source.Search({}, entries, 0, 0, total, {});
    return entries;
}

void RemovePreviews(const Entries& entries)
{
    for (const auto& entry : entries) {
        orvcore::RemoveTree(orvcore::PathFromUTF8(entry->thumbnailPath));
        orvcore::RemoveTree(orvcore::PathFromUTF8(entry->videoPreviewPath));
    }
}

void Print(const bench::PackageShape& shape, const char* row, const Cost& ours, const Cost& floor)
{
    const double each = 1e6 / static_cast<double>(shape.packages);
    std::printf("%-22s %-7s %8.1f us wall %8.1f us cpu   floor %8.1f / %8.1f   ratio wall %.2f cpu %.2f\n", shape.name,
                row, ours.wall * each, ours.cpu * each, floor.wall * each, floor.cpu * each, ours.wall / floor.wall,
                ours.cpu / floor.cpu);
    std::fflush(stdout);
}

// How long a package must have been left alone before a listing notes what it read in it.
constexpr std::int64_t kAtOnce = 0;
constexpr std::int64_t kUnused = -1;
void SetStore(std::int64_t milliseconds)
{
    orvcore::DebugSettings::SetInt("ORV.entrysettletime", milliseconds);
}

// A new time makes each package a new one, whose previews nobody has extracted.
void TouchAll(const fs::path& folder)
{
    const auto touch = [](const fs::path& path, orvcore::FileKind kind) {
        if (kind == orvcore::FileKind::File) {
            fs::last_write_time(path, fs::last_write_time(path) + std::chrono::seconds(1));
        }
        return orvcore::WalkNext::GoOn;
    };
    orvcore::WalkTree(folder, {touch});
}

// Rounds alternate, so that both sides meet the same weather; the best of each counts. No file is deleted before the
// end: file systems take their time with new files where others have just been deleted.
void RunTimes(const bench::PackageShape& shape, const fs::path& folder, const LocalGraphicsSource& source)
{
    constexpr int kRounds = 3;
    const orvcore::TemporaryFolder floorFolder(u8"orvcapsule-bench");
    std::vector<Entries> listed;
    Cost cold;
    Cost coldFloor;
    bench::Memory before;
    bench::Memory after;
    for (int round = 0; round < kRounds; ++round) {
        const fs::path previews = floorFolder.Path() / std::to_string(round);
        fs::create_directory(previews);
        Measure(coldFloor, [&] { bench::ListBare(folder, previews); });
        TouchAll(folder);
        before = bench::MeasureMemory();
        Measure(cold, [&] { listed.push_back(List(source)); });
        after = bench::MeasureMemory();
    }
    if (listed[0].size() != shape.packages || listed[0].back()->videoPreviewPath.empty()) {
        std::fprintf(stderr, "the listing is not whole\n");
        std::exit(1);
    }
    Cost same;
    Cost cached;
    Cost cachedFloor;
    for (int round = 0; round < 3 * kRounds; ++round) {
        Measure(cachedFloor, [&] { bench::ListBare(folder, {}); });
        Measure(same, [&] { List(source); });
        SetStore(kUnused);
        Measure(cached, [&] { List(source); });
        SetStore(kAtOnce);
    }
    Print(shape, "cold", cold, coldFloor);
    Print(shape, "cached", cached, cachedFloor);
    Print(shape, "same", same, cachedFloor);
    std::printf("%-22s cold    %.1f MB of memory at most above the start\n", shape.name,
                (static_cast<double>(after.peak) - static_cast<double>(before.now)) / 1e6);
    std::for_each(listed.begin(), listed.end(), RemovePreviews);
}

template <class Text>
std::size_t TextBytes(const Text& text)
{
    return text.size() * sizeof(typename Text::value_type);
}

template <class Text>
std::size_t TextBytes(const std::vector<Text>& texts)
{
    std::size_t bytes = 0;
    for (const Text& text : texts) {
        bytes += TextBytes(text);
    }
    return bytes;
}

// What the fields say, without anything it takes to hold them.
std::size_t FieldBytes(const CapsuleEntry& e)
{
    constexpr std::size_t kNumbers =
        sizeof e.fileSize + 3 * sizeof e.frameWidth + sizeof e.entryKind + sizeof e.modified + 3 * sizeof e.flag;
    return kNumbers + TextBytes(e.path) + TextBytes(e.name) + TextBytes(e.field3) + TextBytes(e.sourcePath) +
           TextBytes(e.field5) + TextBytes(e.thumbnailPath) + TextBytes(e.videoPreviewPath) + TextBytes(e.capsuleID) +
           TextBytes(e.licenseID) + TextBytes(e.mobileCompatibilityVersion) + TextBytes(e.apiVersion) +
           TextBytes(e.lumoElementID) + TextBytes(e.usedFonts) + TextBytes(e.description) + TextBytes(e.tags) +
           TextBytes(e.authorApp);
}

void RunMemory(const LocalGraphicsSource& source, std::size_t wanted)
{
    Entries entries = List(source);
    const bench::Memory before = bench::MeasureMemory();
    const std::size_t first = entries.size();
    while (entries.size() < first + wanted) {
        entries = List(source, std::move(entries));
    }
    const bench::Memory after = bench::MeasureMemory();
    std::size_t fields = 0;
    for (std::size_t i = first; i < entries.size(); ++i) {
        fields += FieldBytes(*entries[i]);
    }
    const auto listed = static_cast<double>(entries.size() - first);
    const auto held = static_cast<double>(after.now - before.now);
    std::printf("%-22.0f entries %6.0f bytes each, their fields' content %.0f   ratio %.2f\n", listed, held / listed,
                static_cast<double>(fields) / listed, held / static_cast<double>(fields));
}

} // namespace

int main(int argc, char** argv)
{
    constexpr bench::PackageShape kShapes[] = {
        {"2000 packages of 60 KB", 2000, 8, 12'000, 20'000, 26'000},
        {"200 packages of 5 MB", 200, 40, 300'000, 2'000'000, 2'700'000},
    };
    SetStore(kAtOnce);
    const std::size_t entries = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100'000;
    for (const bench::PackageShape& shape : kShapes) {
        const orvcore::TemporaryFolder made(u8"orvcapsule-bench");
        const fs::path& folder = made.Path();
        bench::MakePackages(folder, shape);
        const LocalGraphicsSource source(orvcore::PathToUTF16(folder), {});
        RunTimes(shape, folder, source);
        if (shape.packages == kShapes[0].packages) {
            RunMemory(source, entries);
        }
        RemovePreviews(List(source));
    }
}
