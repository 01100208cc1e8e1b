// Stands in for the fuzzing engine where the compiler has none: hands files to the target once each.
//   TARGET FILE-OR-FOLDER...     options of the engine ("-runs=0") are passed over
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& path)
{
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    return files;
}

bool Replay(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file) {
        std::cerr << "cannot read " << path << '\n';
        return false;
    }
    const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(data.data(), data.size());
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    std::size_t count = 0;
    for (const std::string& argument : arguments) {
        if (argument.starts_with('-')) {
            continue;
        }
        for (const fs::path& file : FilesOf(argument)) {
            if (!Replay(file)) {
                return 1;
            }
            ++count;
        }
    }
    std::cout << "replayed " << count << " inputs\n";
    return count == 0 ? 1 : 0; // a corpus that is not there proves nothing
}
