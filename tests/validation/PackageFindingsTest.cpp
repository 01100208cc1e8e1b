// The mistakes that authors make with a package's parts. A folder is judged as the package that is made of it.
#include <validation/TemplateReading.h>
#include <validation/Validation.h>

#include <orvcore/files/Files.h>
#include <package/CapsuleZip.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>

#include <map>

namespace {

using namespace orvcapsule;
using test::TempFolder;
using testing::ElementsAreArray;
using testing::IsEmpty;
namespace fs = std::filesystem;

const std::string kPNG("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
const std::string kMP4("\0\0\0 ftypisom\0\0\2\0", 16);

std::vector<std::string> CodesOf(const Findings& findings)
{
    std::vector<std::string> codes;
    for (const Finding& finding : findings.list) {
        codes.push_back(finding.code);
    }
    return codes;
}

TEST(PackageFindings, ToldOfEachMistakeInAFolderAndInThePackageOfIt)
{
    const std::string definition = orvcore::ReadWholeFile(ORV_DOCS_DIR "/examples/definition.json");
    const struct {
        const char* part;
        std::string content; ///< "-": there is none
        std::vector<std::string> codes;
        const char* nearest = "";
    } rows[] = {
        {"notes.txt", "as the author likes", {}},
        {"Thumbnails/logo.png", kPNG, {}},
        {"thumb.mp4", kMP4, {}},
        {"thumb_de_DE.png", "", {}}, // as good as missing
        {"thumb.png", "-", {"MissingPoster"}},
        {"thumb.png", "", {"EmptyPart", "MissingPoster"}},
        {"thumb.png", "GIF89a", {"NotAPicture"}},
        {"thumb.png", kPNG.substr(0, 8), {"NotAPicture"}},
        {"Thumbnails/logo.png", "JFIF", {"NotAPicture"}},
        {"thumb.mp4", "", {"EmptyPart"}},
        {"thumb.mp4", std::string("\0\0\0 ftypqt  \0\0\2\0", 16), {"NotAVideo"}},
        {"thumb_de-DE.png", kPNG, {"BadLocale"}, "thumb_de_DE.png"},
        {"project-ja_JP.tsgraphic", "x", {"BadLocale"}, "project_ja_JP.tsgraphic"},
        {"project.tsgraphic", "-", {"MissingProject"}},
        {"thumb.jpg", "x", {"UnknownPart"}, "thumb.png"},
        {"Thumb.mp4", kMP4, {"UnknownPart"}, "thumb.mp4"},
        {"preview.mov", "x", {"UnknownPart"}, "thumb.mp4"},
        {"zeltoptimizations.bin", "x", {"UnknownPart"}, "ZeltOptimizations.bin"},
        {"__MACOSX/thumb.png", "x", {"StrayFile"}},
        {"definition.json", "-", {"MissingDefinition"}},
        {"definition.json", "{", {"MalformedJSON"}},
        {"aux.txt", "x", {"ReservedName"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.part);
        std::map<std::string, std::string> parts = {
            {"definition.json", definition}, {"thumb.png", kPNG}, {"project.tsgraphic", "x"}};
        parts[row.part] = row.content;
        const TempFolder folder;
        for (const auto& [name, content] : parts) {
            if (content != "-") {
                folder.Write("parts/" + name, content);
            }
        }
        if (row.content != "-" && !orvcore::IsFile(folder / "parts" / row.part)) {
            EXPECT_EQ(row.codes, std::vector<std::string>{"ReservedName"}); // a system's device: nobody has such a file
            continue;
        }
        const Findings ofFolder = ValidateTemplate(folder / "parts");
        EXPECT_THAT(CodesOf(ofFolder), ElementsAreArray(row.codes));
        EXPECT_EQ(ofFolder.list.empty() ? "" : ofFolder.list.front().nearest, row.nearest);
        const CapsuleZip package(folder / "a.zelt");
        if (package.Zip(folder / "parts", {}, nullptr)) { // names that no package may have are refused by packing
            EXPECT_THAT(CodesOf(ValidatePackage(package)), ElementsAreArray(row.codes));
        }
    }
}

TEST(PackageFindings, GoodSamplesHaveNone)
{
    std::size_t good = 0;
    for (const auto& file : orvcore::ListDirectory(fs::path(ORV_SAMPLES_DIR)).files) {
        const TemplateReading reading = ReadTemplate(file);
        EXPECT_EQ(reading.capsule != nullptr, reading.refusals.empty()) << file;
        if (reading) {
            const Findings findings = ValidateTemplate(file);
            EXPECT_THAT(findings.list, IsEmpty()) << file << ": " << findings.list.front().text;
            ++good;
        } else {
            EXPECT_EQ(reading.declaredVersion, "3.0") << file;
        }
    }
    EXPECT_EQ(good, 6U);
}

TEST(PackageFindings, AFileThatIsNoPackageIsToldOnce)
{
    const fs::path samples = test::Name(ORV_SAMPLES_DIR);
    for (const auto& [file, code] :
         {std::pair("damaged/not-a-zip.zelt", "NotAZip"), std::pair("gone.zelt", "FileMissing"),
          std::pair("gone.json", "MissingDefinition")}) {
        EXPECT_THAT(CodesOf(ValidateTemplate(samples / file)), testing::ElementsAre(code)) << file;
        const TemplateReading reading = ReadTemplate(samples / file);
        ASSERT_EQ(reading.refusals.size(), 1U) << file;
        EXPECT_FALSE(reading) << file;
    }
}

} // namespace
