#include <bench/ListingBenchFloor.h>

#include <simdjson.h>
#include <zip.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace bench {

namespace fs = std::filesystem;

namespace {

void Read(zip_t* archive, const char* name, std::vector<char>& content)
{
    zip_stat_t stat;
    const zip_int64_t index = zip_name_locate(archive, name, 0);
    zip_file_t* entry = index < 0 ? nullptr : zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0);
    if (entry == nullptr || zip_stat_index(archive, static_cast<zip_uint64_t>(index), 0, &stat) != 0) {
        std::abort();
    }
    content.resize(stat.size + simdjson::SIMDJSON_PADDING);
    if (zip_fread(entry, content.data(), stat.size) != static_cast<zip_int64_t>(stat.size)) {
        std::abort();
    }
    content.resize(stat.size);
    zip_fclose(entry);
}

void Write(const fs::path& path, const std::vector<char>& content)
{
    std::FILE* file = std::fopen(path.string().c_str(), "wb");
    if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file) != content.size()) {
        std::abort();
    }
    std::fclose(file);
}

} // namespace

std::size_t ListBare(const fs::path& folder, const fs::path& previews)
{
    simdjson::dom::parser parser;
    std::vector<char> content;
    std::size_t count = 0;
    for (const fs::directory_entry& found : fs::recursive_directory_iterator(folder)) {
        if (found.path().extension() != ".zelt") {
            continue;
        }
        zip_t* archive = zip_open(found.path().string().c_str(), ZIP_RDONLY, nullptr);
        if (archive == nullptr) {
            std::abort();
        }
        Read(archive, "definition.json", content);
        content.reserve(content.size() + simdjson::SIMDJSON_PADDING);
        if (parser.parse(content.data(), content.size(), false).error() != simdjson::SUCCESS) {
            std::abort();
        }
        if (!previews.empty()) {
            for (const char* name : {"thumb.png", "thumb.mp4"}) {
                Read(archive, name, content);
                Write(previews / (std::to_string(count) + name), content);
            }
        }
        zip_discard(archive);
        ++count;
    }
    return count;
}

} // namespace bench
