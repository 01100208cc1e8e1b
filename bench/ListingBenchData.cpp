#include <bench/ListingBenchData.h>

#include <capsule/ControlFactory.h>
#include <capsule/Serialization.h>
#include <package/CapsuleZip.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>

#include <fstream>
#include <random>
#include <sstream>

namespace bench {

namespace fs = std::filesystem;
using namespace orvcapsule;

namespace {

UIString TenLanguages(const std::u16string& text)
{
    UIString result{std::vector<LocStrPair>()};
    for (const char16_t* locale :
         {u"de_DE", u"en_US", u"es_ES", u"fr_FR", u"it_IT", u"ja_JP", u"ko_KR", u"pt_BR", u"ru_RU", u"zh_CN"}) {
        result.SetString(text + u" タイトル " + locale, locale);
    }
    return result;
}

} // namespace

UTF8String MakeDefinition(std::size_t controls)
{
    kinlet::SourceInfo info;
    info.name = u"Lower third";
    info.duration = {1270080000000, 254016000000};
    info.frameSize.size = {1920, 1080};
    Capsule capsule(u"tsfx", u"Lower third", u"6e1f0f6a-3a54-4c4e-9d55-0b2a4f6c1a03");
    capsule.SetCapsuleNameLocalized(TenLanguages(u"Lower third"));
    capsule.SetCapsuleDesc(u"A clean two-line lower third with a sliding bar.");
    capsule.SetTags({"lower third", "title", "news", "clean"});
    capsule.SetUsedFonts(Capsule::StringList{"DejaVuSans", "DejaVuSans-Bold"});
    const UIString languages = TenLanguages(u"");
    Capsule::SourceInfoMap infos;
    for (const auto& [locale, text] : languages.GetLocaleStrings()) {
        infos[locale] = info;
    }
    capsule.SetSourceInfoVector(infos);
    Capsule::ControlList list;
    for (std::size_t i = 0; i < controls; ++i) {
        const std::u16string id = orvcore::ToUTF16("control-" + std::to_string(i));
        list.push_back(factory::CreateSliderControl(id, TenLanguages(u"Control"), {true}, 0, 100, 0.5));
    }
    capsule.SetControls(list);
    return serialization::CapsuleToJson(std::make_shared<Capsule>(capsule));
}

namespace {

void WriteFile(const fs::path& path, const std::string& content)
{
    std::ofstream(orvcore::ToSystemPath(path), std::ios::binary) << content;
}

// As hard to pack as a picture.
std::string Noise(std::size_t size)
{
    std::mt19937_64 random(size);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random() & 0xFFU);
    }
    return bytes;
}

} // namespace

void MakePackages(const fs::path& folder, const PackageShape& shape)
{
    const orvcore::TemporaryFolder made(u8"orvcapsule-bench");
    const fs::path& content = made.Path();
    WriteFile(content / "definition.json", orvcore::ToNarrow(MakeDefinition(shape.controls)));
    WriteFile(content / "thumb.png", Noise(shape.still));
    WriteFile(content / "thumb.mp4", Noise(shape.video));
    WriteFile(content / "project.tsgraphic", Noise(shape.project));
    const fs::path model = content / "model.zelt";
    static_cast<void>(CapsuleZip(model).Zip(content, {}, nullptr)); // what it did not make cannot be copied
    for (std::size_t i = 0; i < shape.packages; ++i) {
        const fs::path part = folder / ("part " + std::to_string(i / 100));
        orvcore::EnsureDirectory(part);
        fs::copy_file(model, part / ("Lower third " + std::to_string(i) + ".zelt"));
    }
}

Memory MeasureMemory()
{
    Memory memory;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        std::istringstream words(line);
        std::string name;
        std::uint64_t kilobytes = 0;
        words >> name >> kilobytes;
        memory.now = name == "VmRSS:" ? kilobytes * 1024 : memory.now;
        memory.peak = name == "VmHWM:" ? kilobytes * 1024 : memory.peak;
    }
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak is measured from here
    return memory;
}

} // namespace bench
