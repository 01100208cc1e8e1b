// Packing, unpacking and opening packages beside the plain tools for the work: Info-ZIP's zip and unzip over the same
// files, and the least that reading one entry can cost. Times are of the clock on the wall, best of some runs; the
// last column is the ratio to the floor.

#include <orvcore/files/TemporaryFolder.h>
#include <package/CapsuleZip.h>

#include <libdeflate.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

double Seconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Best(int runs, const std::function<void()>& prepare, const std::function<void()>& work)
{
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        prepare();
        best = std::min(best, Seconds(work));
    }
    return best;
}

void Check(bool ok, const char* what)
{
    if (!ok) {
        std::fprintf(stderr, "package_bench: %s failed\n", what);
        std::exit(1);
    }
}

void Run(const std::string& command)
{
    Check(std::system(command.c_str()) == 0, command.c_str());
}

void Row(const char* work, double ours, double floor, const char* floorName, double scale, const char* unit)
{
    std::printf("%-34s %9.2f %s   %-22s %9.2f %s   ratio %.2f\n", work, ours * scale, unit, floorName, floor * scale,
                unit, ours / floor);
}

// A file whose bytes deflate to about half, or not at all.
void MakeFile(const fs::path& path, std::size_t size, bool compressible)
{
    std::mt19937_64 random(size);
    std::string block(1U << 20U, '\0');
    std::ofstream file(path, std::ios::binary);
    for (std::size_t done = 0; done < size; done += block.size()) {
        for (std::size_t i = 0; i + 8 <= block.size(); i += 8) {
            std::uint64_t value = random();
            if (compressible) {
                value &= 0x0F0F0F0F0F0F0F0FULL; // four bits of eight
            }
            std::memcpy(block.data() + i, &value, 8);
        }
        file.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), size - done)));
    }
}

// A 200 MB package: a large project, a video, and the small parts that every package has.
fs::path MakeContents(const fs::path& root)
{
    const fs::path folder = root / "contents";
    fs::create_directories(folder / "Thumbnails");
    MakeFile(folder / "project.tsgraphic", 100U << 20U, true);
    MakeFile(folder / "thumb.mp4", 90U << 20U, false);
    for (int i = 0; i < 40; ++i) {
        MakeFile(folder / "Thumbnails" / (std::to_string(i) + ".png"), 256U << 10U, false);
    }
    std::ofstream(folder / "definition.json") << R"({"apiVersion":"2.2","capsuleName":"Bench"})";
    return folder;
}

void MeasureLarge(const fs::path& root)
{
    const fs::path contents = MakeContents(root);
    const fs::path ours = root / "ours.zelt";
    const fs::path theirs = root / "theirs.zip";
    const fs::path target = root / "target";
    const auto removeArchives = [&] {
        fs::remove(ours);
        fs::remove(theirs);
    };
    const auto removeTarget = [&] { fs::remove_all(target); };

    const double pack = Best(3, removeArchives, [&] {
        Check(orvcapsule::CapsuleZip(ours, "").Zip(
                  contents, [](double, void*) { return true; }, nullptr),
              "Zip");
    });
    const double zip = Best(
        3, [&] { fs::remove(theirs); },
        [&] { Run("cd " + contents.string() + " && zip -q -r -n .mp4:.png " + theirs.string() + " ."); });
    Row("Zip, 200 MB", pack, zip, "zip", 1e3, "ms");

    const double unpack =
        Best(3, removeTarget, [&] { Check(orvcapsule::CapsuleZip(ours, "").UnZip(target, true), "UnZip"); });
    const double unzip = Best(3, removeTarget, [&] { Run("unzip -q " + ours.string() + " -d " + target.string()); });
    Row("UnZip, 200 MB", unpack, unzip, "unzip", 1e3, "ms");
}

std::uint32_t Word(const unsigned char* at)
{
    std::uint32_t value = 0;
    std::memcpy(&value, at, 4);
    return value;
}

std::uint16_t Half(const unsigned char* at)
{
    std::uint16_t value = 0;
    std::memcpy(&value, at, 2);
    return value;
}

// The definition of a well-formed package, found and inflated with no check at all.
std::string ReadBare(const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    fstat(file, &status);
    const auto size = static_cast<std::size_t>(status.st_size);
    auto* map = static_cast<unsigned char*>(mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0));
    const unsigned char* end = map + size - 22;
    while (Word(end) != 0x06054B50) {
        --end;
    }
    const unsigned char* entry = map + Word(end + 16);
    std::string text;
    for (unsigned i = Half(end + 10); i > 0;
         --i, entry += 46U + Half(entry + 28) + Half(entry + 30) + Half(entry + 32)) {
        if (Half(entry + 28) != 15 || std::memcmp(entry + 46, "definition.json", 15) != 0) {
            continue;
        }
        const unsigned char* local = map + Word(entry + 42);
        text.resize(Word(entry + 24));
        libdeflate_decompressor* inflater = libdeflate_alloc_decompressor();
        libdeflate_deflate_decompress(inflater, local + 30 + Half(local + 26) + Half(local + 28), Word(entry + 20),
                                      text.data(), text.size(), nullptr);
        libdeflate_free_decompressor(inflater);
    }
    munmap(map, size);
    close(file);
    return text;
}

void MeasureOpening(const fs::path& package)
{
    constexpr int kTimes = 2000;
    const std::string name = package.string();
    const orvcore::UTF8String utf8 = package.u8string();
    std::size_t read = 0;
    const auto repeat = [&](const std::function<std::size_t()>& once) {
        return Best(
                   5, [] {},
                   [&] {
                       for (int i = 0; i < kTimes; ++i) {
                           read += once();
                       }
                   }) /
               kTimes;
    };
    const double ours = repeat([&] { return orvcapsule::CapsuleZip(utf8, "").GetZELTDescriptionJSON().size(); });
    const double floor = repeat([&] { return ReadBare(name.c_str()).size(); });
    Check(read != 0, "reading the definition");
    Row("open and read the definition", ours, floor, "mmap + libdeflate", 1e6, "us");
}

} // namespace

int main()
{
    const orvcore::TemporaryFolder folder(u8"orvcapsule-bench");
    MeasureOpening(fs::path(ORV_SAMPLES_DIR) / "lower-third.zelt");
    MeasureLarge(folder.Path());
}
