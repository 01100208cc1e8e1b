#include <tools/zelt/support/Parts.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvstorage/ZipEntry.h>
#include <package/PackageNames.h>
#include <validation/MediaContent.h>

#include <algorithm>
#include <fstream>

namespace zelt {

namespace {

namespace fs = std::filesystem;

// The first bytes of a file; fewer when it is shorter.
std::string Beginning(const std::string& file)
{
    std::ifstream stream(orvcore::ToSystemPath(ToPath(file)), std::ios::binary);
    std::string bytes(orvstorage::kEntryHeadSize, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return bytes;
}

} // namespace

Part PartOf(const std::string& word)
{
    return word == "poster"    ? Part::Poster
           : word == "video"   ? Part::Video
           : word == "project" ? Part::Project
                               : Part::Entry;
}

std::vector<std::string> EntryNames(const std::string& word, const std::string& locale)
{
    const Part part = PartOf(word);
    if (!locale.empty() && part == Part::Entry) {
        throw UsageError("--locale is for poster, video and project; an entry's name says it all");
    }
    if (locale.find_first_of("/\\:") != locale.npos) {
        throw UsageError("\"" + locale + "\" is no locale");
    }
    std::vector<std::string> names;
    const auto add = [&](const orvcore::UTF8String& name) {
        const std::string common = orvcore::ToNarrow(name);
        const std::size_t dot = common.rfind('.');
        names.push_back(common.substr(0, dot) + (locale.empty() ? "" : '_' + locale) + common.substr(dot));
    };
    switch (part) {
    case Part::Poster:
        add(orvcapsule::kThumbFileName);
        break;
    case Part::Video:
        add(orvcapsule::kVideoThumbFileName);
        break;
    case Part::Project:
        add(orvcapsule::kCvProjectFileName);
        add(orvcapsule::kTsProjectFileName);
        break;
    case Part::Entry:
        names.push_back(word);
        break;
    }
    return names;
}

std::string EntryNameFor(const std::string& word, const std::string& locale, const std::string& file)
{
    const std::vector<std::string> names = EntryNames(word, locale);
    if (PartOf(word) != Part::Project) {
        return names.front();
    }
    const std::string extension = ToText(ToPath(file).extension());
    const auto found = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
        return !extension.empty() && name.ends_with(extension);
    });
    if (found == names.end()) {
        throw UsageError("project: \"" + file + "\" is neither a .tsgraphic nor a .cvgraphic file");
    }
    return *found;
}

void NeedSuitable(const std::string& word, const std::string& file)
{
    if (!orvcore::IsFile(ToPath(file))) {
        throw FileError(file, "there is no such file");
    }
    const Part part = PartOf(word);
    if (part == Part::Poster && !orvcapsule::IsPNG(Beginning(file))) {
        throw FileError(file, "it is no PNG picture");
    }
    if (part == Part::Video && !orvcapsule::IsMP4(Beginning(file))) {
        throw FileError(file, "it is no MP4 film");
    }
}

} // namespace zelt
