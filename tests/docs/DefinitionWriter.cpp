// Gives the documentation's tests what this library reads and writes.
//   definition_writer write FOLDER     definitions of many kinds, one file each
//   definition_writer canonical FILE   the definition as it is written, over several lines
//   definition_writer read FILE...     one line each: "refused", "missing KEY" or the definition as it is written
//   definition_writer libraries ROOT   what is left out of cloud libraries, one line each: the element and the reason
#include <capsule/ControlFactory.h>
#include <capsule/Serialization.h>

#include <lumolibmanager/FolderLibManager.h>
#include <orvcore/files/Files.h>
#include <orvcore/host/Application.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>

namespace {

using namespace orvcapsule;
using CapsulePtr = std::shared_ptr<Capsule>;
namespace json = orvcore::serialization;

const UIString kLabel(std::vector<LocStrPair>{{u"en_US", u"Label"}, {u"ja_JP", u"ラベル 😀"}});
const UIString kNoText((std::vector<LocStrPair>()));

Capsule::ControlList OneOfEachKind()
{
    kinlet::SourceTextFontEditInfo font;
    font.fontName = "Serif-Bold";
    font.unknownKeys = {{"kerning", "[1.5]"}};
    kinlet::MediaReplacementProperties media;
    media.unknownKeys = {{"aspect", R"({"x":16,"y":9})"}};
    using boost::gregorian::date;
    kinlet::SpreadsheetValue sheet;
    sheet.activeRows = 3;
    sheet.columnValues = {{UTF16String(u"a"), std::monostate(), 2.5, true, date(2024, 2, 29)},
                          {date(boost::date_time::not_a_date_time), date(boost::date_time::neg_infin)},
                          {}};
    const std::vector<SpreadsheetColumnInfoLoc> columns = {{kinlet::SpreadsheetColumnDataType::kDate, kLabel, -1, 0.1}};
    return {factory::CreateCheckboxControl(u"check", kLabel, {true}, true),
            factory::CreateSliderControl(u"slider", kLabel, {}, 0, 100, 5e-324),
            factory::CreateAngleControl(u"angle", kLabel, {}, -std::numeric_limits<double>::max()),
            factory::CreateColorControl(u"color", kLabel, {}, {1, 0.1, -0.0, 1e300}),
            factory::CreatePoint2DControl(u"point", kLabel, {}, {1e21, 1.0 / 3}),
            factory::CreateStringControl(u"text", kLabel, {}, kLabel, font, {true, INT32_MIN, INT32_MAX}, {}),
            factory::CreateCommentControl(u"comment", kNoText, {}, kNoText),
            factory::CreateScaleControl(u"scale", kLabel, {}, true, 3, std::vector<double>(600, 99.5)),
            factory::CreateGroupControl(u"group", kLabel, {}, {u"check", u"nobody"}, true),
            factory::CreateGroupDropZoneControl(u"zone", kLabel, {}, {u"check"}),
            factory::CreateMenuControl(u"menu", kLabel, {}, INT32_MIN, {kLabel, kNoText}),
            factory::CreateMediaControl(u"media", kLabel, {}, true, media, u"cache"),
            factory::CreateSpreadsheetControl(u"sheet", kLabel, {}, 0, UINT32_MAX, columns, sheet),
            std::make_shared<ClientControl>(static_cast<ClientControlType>(-7), u"odd", UIString(), ControlProperties(),
                                            true)};
}

kinlet::SourceInfo Composition()
{
    kinlet::SourceInfo info;
    info.parentProjectFile = u8"C:\\project.tsgraphic";
    info.name = u"Quotes \" and \u0001 and \xD83D\xDE00";
    info.duration = {INT64_MAX, INT64_MIN};
    info.pixelAspectRatio = {0, UINT32_MAX};
    info.alphaChannelType = static_cast<kinlet::AlphaChannelType>(INT64_MIN);
    info.frameSize = {{INT32_MIN, INT32_MAX}, {1920, 1080}};
    info.pixelFormats = {{UINT64_MAX, 0}};
    info.audioChannelLayout = {{100}, {101}};
    info.sourceBitrate = UINT64_MAX;
    info.colorAwareEffectsEnabled = true;
    info.colorSpace.baseColorProfile = {u"Profile", {0, 255, 127, 1}};
    info.colorSpace.baseProfileType = 1;
    info.colorSpace.linearized = true;
    info.colorSpace.metadata = {INT64_MIN, UINT64_MAX, true};
    info.assetRequest.serverConnection.headers = {{u"X-Same", u"a"}, {u"X-Same", u"b"}};
    info.capsuleParams.params = {{u"a", true, {}},
                                 {u"b", INT64_MIN, {{"hint", "null"}}},
                                 {u"c", 50.0, {}},
                                 {u"d", UTF16String(u"text"), {}},
                                 {u"e", std::vector<double>{1, -0.0}, {}}};
    info.missingAssets.fonts = {{u"Family", u"Bold", u"Family-Bold", u"Family Bold", INT64_MIN}};
    info.missingAssets.plugins = {{u"plugin"}};
    info.missingAssets.footage = {{u8"/media/a.mov"}};
    return info;
}

std::map<std::string, CapsulePtr> Records()
{
    std::map<std::string, CapsulePtr> records;
    records["empty"] = std::make_shared<Capsule>();
    records["fresh"] = std::make_shared<Capsule>(u"tsfx", u"Title", u"id");
    const auto full = records["full"] = std::make_shared<Capsule>(*records["fresh"]);
    full->SetSourceInfoVector({{u"en_US", Composition()}, {u"", kinlet::SourceInfo()}});
    full->SetUsedFontsVector({{u"en_US", {"Serif-Bold"}}, {u"\xD83D\xDE00", {}}});
    full->SetTslibCompliantVersion(u"no stamp");
    full->SetControls(OneOfEachKind());
    const auto hidden = records["hidden"] = std::make_shared<Capsule>(*records["fresh"]);
    auto controls = OneOfEachKind();
    for (const auto& control : controls) {
        control->SetHidden(true);
    }
    controls.insert(controls.begin() + 1, nullptr); // a slip of the caller's, which is no control to write
    hidden->SetControls(controls);
    const auto many = records["many"] = std::make_shared<Capsule>(*records["fresh"]);
    many->SetControls(Capsule::ControlList(600, full->GetControls().front()));
    return records;
}

UTF8String Slurp(const std::filesystem::path& path)
{
    return orvcore::ToUTF8(orvcore::ReadWholeFile(path));
}

int Write(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    for (const char* language : {"en_US", "ja_JP"}) {
        orvcore::Application::SetLanguage(language);
        for (const auto& [name, capsule] : Records()) {
            std::ofstream file(folder / (name + "-" + language + ".json"), std::ios::binary);
            file << orvcore::AsNarrow(serialization::CapsuleToJson(capsule));
            if (!file.flush()) {
                std::cerr << "definition_writer: cannot write " << name << " into the folder\n";
                return 1;
            }
        }
    }
    return 0;
}

std::string Outcome(const UTF8String& text)
{
    try {
        const CapsulePtr capsule = serialization::CapsuleFromJson(text);
        return capsule ? orvcore::ToNarrow(serialization::CapsuleToJson(capsule)) : "refused";
    } catch (const json::missing_key_exception& error) {
        return "missing " + error.GetKey();
    }
}

void TellLeftOut(const std::filesystem::path& root)
{
    lumolibmanager::FolderLibManager manager(root);
    std::vector<std::string> libraries;
    std::vector<std::string> elements;
    manager.GetLibraryList(libraries);
    for (const std::string& library : libraries) {
        manager.GetElementIDsForElementType(library, lumolibmanager::kElementType_Capsule, elements);
    }
    for (const lumolibmanager::LeftOut& each : manager.GetLeftOut()) {
        std::cout << each.elementID << ' ' << each.reason << '\n';
    }
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "write") {
        return Write(arguments[1]);
    }
    if (arguments.size() == 2 && arguments[0] == "canonical") {
        const UTF8String text = serialization::CapsuleToJson(serialization::CapsuleFromJson(Slurp(arguments[1])));
        std::cout << orvcore::AsNarrow(json::GetJSONUTF8String(json::JSONParse(text), true)) << '\n';
        return 0;
    }
    if (arguments.size() >= 2 && arguments[0] == "read") {
        for (std::size_t i = 1; i < arguments.size(); ++i) {
            std::cout << Outcome(Slurp(arguments[i])) << '\n';
        }
        return 0;
    }
    if (arguments.size() == 2 && arguments[0] == "libraries") {
        TellLeftOut(arguments[1]);
        return 0;
    }
    std::cerr << "usage: definition_writer write FOLDER | canonical FILE | read FILE... | libraries ROOT\n";
    return 2;
}
