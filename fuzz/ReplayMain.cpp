// Runs a fuzz target over the files and folders named on the command line, where the compiler has no fuzzer: every
// build keeps the targets compiling and replays what was found once.
#include <orvcore/Files.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool Replay(const std::filesystem::path& file)
{
    const auto content = orvcore::ReadWholeFile(file);
    if (content) {
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content->data()), content->size());
    }
    return content.has_value();
}

} // namespace

int main(int argc, char** argv)
{
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path = argv[i];
        if (orvcore::IsFile(path)) {
            replayed += Replay(path) ? 1 : 0;
            continue;
        }
        orvcore::WalkFiles(path, [&](const std::filesystem::path& file) {
            replayed += Replay(file) ? 1 : 0;
            return true;
        });
    }
    std::printf("%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
