// The mistakes that authors make in a definition, one row each: the complete example with one thing changed.
#include <validation/TemplateReading.h>
#include <validation/Validation.h>

#include <orvcore/files/Files.h>
#include <orvcore/json/JSONSplice.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvcapsule;
using orvcore::serialization::JSONOutline;
using orvcore::serialization::JSONSplice;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string& Example()
{
    static const std::string text = orvcore::ReadWholeFile(ORV_DOCS_DIR "/examples/definition.json");
    return text;
}

const JSONOutline* Step(const JSONOutline& at, const std::string& step, const JSONSplice& text)
{
    if (at.Is(JSONOutline::Kind::kObject)) {
        return at.Find(step);
    }
    for (const JSONOutline& child : at.children) { // a control is named by its id
        const JSONOutline* id = child.Find("id");
        if (id != nullptr && text.TextOf(*id) == '"' + step + '"') {
            return &child;
        }
    }
    return &at.children.at(std::stoul(step));
}

// The example with the member or element at `path` replaced by `json`, added or, where that is empty, renamed to end in
// "s", as if misspelt.
std::string Changed(const std::string& path, const std::string& json)
{
    JSONSplice text(Example());
    const JSONOutline* at = &text.Root();
    std::string last = path.substr(path.rfind('/') + 1);
    for (std::size_t begin = 0, end = path.find('/'); end != path.npos; begin = end + 1, end = path.find('/', begin)) {
        at = Step(*at, path.substr(begin, end - begin), text);
    }
    if (!json.empty() && at->Is(JSONOutline::Kind::kObject)) {
        text.SetMember(*at, last, json);
        return text.Text();
    }
    const JSONOutline* value = Step(*at, last, text);
    if (!json.empty()) {
        text.Replace(*value, json);
        return text.Text();
    }
    return text.Text().substr(0, value->keyBegin) + '"' + last + "s\"" +
           text.Text().substr(value->keyBegin + last.size() + 2);
}

Findings Judge(const std::string& text)
{
    return ValidateDefinition(orvcore::AsUTF8(text));
}

struct Mistake {
    const char* path;
    const char* json; ///< empty: the key is misspelt
    const char* code;
    const char* nearest = "";
    const char* pointer = nullptr; ///< where it is found; null: at the path, if that names no control
};

constexpr const char* kLabel = R"({"strDB":[{"localeString":"de_DE","str":"a"},{"localeString":"en_US","str":"b"}]})";

const Mistake kMistakes[] = {
    // Keys and types
    {"clientControls", "", "UnknownKey", "clientControls"},
    {"platformSuport", R"(["tsfx"])", "UnknownKey", "platformSupport"},
    {"clientControls/tilt/canAnimate", "", "MissingKey"},
    {"clientControls/tilt/uiname", kLabel, "UnknownKey", "uiName"},
    {"clientControls/logo/replacmentFit", "1", "UnknownKey", "replacementFit"},
    {"clientControls/team/fonteditinfo/fontsize", "12", "UnknownKey", "fontSize"},
    {"sourceInfoLocalized/de_DE/frameRate", "{}", "UnknownKey", "framerate"},
    {"sourceInfoLocalized/de_DE/framerate", "25", "MissingKey"},
    {"sourceInfoLocalized/de_DE/id", R"("one")", "MissingKey"},
    {"sourceInfoLocalized/de_DE/duration", R"({"value":1})", "MissingKey", "",
     "/sourceInfoLocalized/de_DE/duration/scale"},
    {"sourceInfoLocalized/de_DE/colorSpace", R"({"baseColorProfile":{"colorProfileName":"x","colorProfileData":"%"}})",
     "MissingKey", "", "/sourceInfoLocalized/de_DE/colorSpace/baseColorProfile/colorProfileData"},
    {"sourceInfoLocalized/de_DE", "null", "IgnoredValue"},
    {"capsuleTags", R"("sport")", "IgnoredValue"},
    {"capsuleTags", R"(["sport", 7])", "IgnoredValue", "", "/capsuleTags/1"},
    {"capsuleNameLocalized", R"("Scoreboard")", "IgnoredValue"},
    {"capsuleNameLocalized/strDB/0/str", "5", "IgnoredValue"},
    {"description", "null", "IgnoredValue"},
    {"clientControls", R"({"a":1})", "IgnoredValue"},
    {"clientControls/tilt", R"("angle")", "IgnoredValue", "", "/clientControls/5"},
    {"clientControls/tilt/uiName", R"("Tilt")", "IgnoredValue"},
    {"clientControls/tilt/value", R"("12")", "MissingKey"},
    {"clientControls/team/fonteditinfo", "7", "IgnoredValue"},
    {"clientControls/scores/value/columnValues/3/0", R"({"date":"2024-02-31"})", "MissingKey", "",
     "/clientControls/11/value/columnValues"},
    {"clientControls/scores/value/columnValues/3/0", R"({"day":"2024-02-29"})", "MissingKey", "",
     "/clientControls/11/value/columnValues/3/0/date"},
    // Kinds and known values
    {"clientControls/size/type", R"("slider")", "UnknownKind", "Slider"},
    {"clientControls/size/type", "7", "UnknownValue"},
    {"clientControls/logo/replacementFit", "9", "UnknownValue"},
    {"clientControls/scores/columnInfo/0/columnDataType", "4", "UnknownValue"},
    {"authorApp", R"("tfsx")", "UnknownValue", "tsfx"},
    {"platformSupport", R"(["TSFX"])", "UnknownValue", "tsfx", "/platformSupport/0"},
    {"platformSupport", "[]", "NoPlatform"},
    {"tslibCompliantVersion", R"("newest")", "UnknownValue"},
    {"mobileCompatibilityVersion", R"("2024.10")", "UnknownValue", "202410"},
    {"apiVersion", R"("2.15")", "UnknownValue", "2.1"},
    {"apiVersion", "2.2", "NoVersion", "", ""},
    {"apiVersion", R"("2.3")", "NewerVersion", "", ""},
    // Identity and names
    {"capsuleID", R"("")", "NoIdentity"},
    {"capsuleID", R"("my-template")", "NoIdentity"},
    {"capsuleID", R"("00000000-0000-0000-0000-000000000000")", "NoIdentity"},
    {"capsuleNameLocalized", R"({"strDB":[{"localeString":"en_US","str":""}]})", "EmptyName"},
    {"clientControls/tilt/id", R"("")", "EmptyName"},
    {"clientControls/tilt/uiName", R"({"strDB":[]})", "EmptyName"},
    {"clientControls/style/menucontent/1",
     R"({"strDB":[{"localeString":"de_DE","str":""},{"localeString":"en_US","str":"x"}]})", "EmptyName", "",
     "/clientControls/9/menucontent/1/strDB/0"},
    {"usedFontsLocalized/de_DE", R"([""])", "EmptyName", "", "/usedFontsLocalized/de_DE/0"},
    {"capsuleTags", R"(["a","b","a"])", "RepeatedEntry", "", "/capsuleTags/2"},
    {"clientControls/tilt/id", R"("size")", "RepeatedId"},
    // Languages
    {"sourceInfoLocalized/de-DE", "{}", "BadLocale", "de_DE"},
    {"capsuleNameLocalized/strDB/0/localeString", R"("de_de")", "BadLocale", "de_DE"},
    {"capsuleNameLocalized/strDB/1/localeString", R"("en_UK")", "BadLocale", "en_GB"},
    {"capsuleNameLocalized/strDB/0/localeString", R"("jp_JP")", "BadLocale", "ja_JP"},
    {"capsuleNameLocalized/strDB/0/localeString", R"("en_US")", "RepeatedLocale", "",
     "/capsuleNameLocalized/strDB/1/localeString"},
    {"clientControls/tilt/uiName", R"({"strDB":[{"localeString":"en_US","str":"Tilt"}]})", "MissingText"},
    {"clientControls/tilt/uiName", R"({"strDB":[{"localeString":"de_DE","str":"Neigung"}]})", "MissingText"},
    {"usedFontsLocalized", "{}", "NoFonts"},
    {"usedFontsLocalized/de_DE", "[]", "NoFonts"},
    {"usedFontsLocalized/", R"(["Serif"])", "BadLocale"},
    {"usedFonts", R"(["Serif"])", "OlderForm"},
    // Numbers
    {"clientControls/size/min", "300", "MinAboveMax"},
    {"clientControls/size/value", "300", "OutOfRange"},
    {"clientControls/style/value", "3", "OutOfRange"},
    {"clientControls/bar/value", "[1.2, 0, 0, 1]", "ColorOutOfRange", "", "/clientControls/6/value/0"},
    {"clientControls/bar/value", "[220, 40, 80]", "MissingKey"},
    {"clientControls/scale/dimensions", "3", "UnequalCounts", "", "/clientControls/8/value"},
    {"clientControls/scores/minRows", "60", "MinAboveMax"},
    {"clientControls/scores/maxRows", "1", "RowsOutOfRange", "", "/clientControls/11/value"},
    {"clientControls/scores/value/activeRows", "999", "RowsOutOfRange"},
    {"clientControls/scores/value/columnValues/1", R"([1])", "UnequalCounts", "",
     "/clientControls/11/value/columnValues"},
    {"clientControls/scores/value/columnValues/1/0", "100", "CellOutOfRange"},
    {"clientControls/scores/value/columnValues/1/0", R"("3")", "CellKind"},
    {"clientControls/scores/columnInfo/1/columnMinValue", "100", "MinAboveMax"},
    {"sourceInfoLocalized/de_DE/duration/value", "0", "NotPositive"},
    {"sourceInfoLocalized", "{}", "NoComposition"},
    {"sourceInfoLocalized/de_DE/veldenassetrequestinfo", R"({"mServerConnectInfo":{"mAuthToken":"x"}})", "SecretInside",
     "", "/sourceInfoLocalized/de_DE/veldenassetrequestinfo/mServerConnectInfo/mAuthToken"},
    // Groups
    {"clientControls/texts/value", R"(["team", "shadw"])", "UnknownMember", "shadow", "/clientControls/1/value/1"},
    {"clientControls/texts/value", R"(["team", "texts"])", "GroupInItself", "", "/clientControls/1/value/1"},
    {"clientControls/texts/value", R"(["team", "team"])", "RepeatedEntry", "", "/clientControls/1/value/1"},
};

TEST(DefinitionFindings, ToldOfEachMistakeWithItsPlace)
{
    for (const Mistake& mistake : kMistakes) {
        SCOPED_TRACE(std::string(mistake.path) + " = " + mistake.json);
        const std::string text = Changed(mistake.path, mistake.json);
        const std::vector<Finding> found = Judge(text).list;
        const auto finding = std::find_if(found.begin(), found.end(), [&](const Finding& one) {
            return one.code == mistake.code && (mistake.pointer == nullptr || one.pointer == mistake.pointer);
        });
        ASSERT_NE(finding, found.end()) << (found.empty() ? "nothing found" : found[0].code + ' ' + found[0].pointer);
        EXPECT_EQ(finding->nearest, mistake.nearest);
        EXPECT_EQ(finding->entry, u8"definition.json");
        if (mistake.pointer == nullptr) {
            const std::string path = std::string("/") + mistake.path;
            EXPECT_THAT(finding->pointer,
                        testing::EndsWith(path.substr(path.rfind('/') + 1) +
                                          (*mistake.json == '\0' && *mistake.code == 'U' ? "s" : "")));
            EXPECT_GT(finding->line, 1U);
        }
        EXPECT_EQ(ReadDefinition(orvcore::ToUTF8(text)).refusals.empty(),
                  std::none_of(found.begin(), found.end(), [](const Finding& one) {
                      return one.code == "MissingKey" || one.code == "NoVersion" || one.code == "NewerVersion";
                  }));
    }
}

TEST(DefinitionFindings, GoodTextsHaveNone)
{
    const std::pair<const char*, const char*> good[] = {
        {"$schema", R"("definition.schema.json")"},
        {"clientControls/logo/ourOwnKey", "1"}, // kept
        {"clientControls/tilt/value", "12"},
        {"clientControls/team/value",
         R"({"strDB":[{"localeString":"de_DE","str":""},{"localeString":"en_US","str":""}]})"},
        {"usedFontsLocalized/zh_Hant_TW", R"(["Serif"])"},
        {"clientControls/scores/value", R"({"activeRows":0,"columnValues":[]})"},
    };
    EXPECT_THAT(Judge(Example()).list, IsEmpty());
    for (const auto& [path, json] : good) {
        const auto found = Judge(Changed(path, json)).list;
        EXPECT_THAT(found, IsEmpty()) << path << ": " << found.front().text;
    }
}

TEST(DefinitionFindings, KnowEveryValueThatTheLibraryNames)
{
    for (const char* stamp : {CAPSULE_VERSION_UNSUPPORTED, CAPSULE_VERSION_FALL_2017, CAPSULE_VERSION_SPRING_2018,
                              CAPSULE_VERSION_FALL_2018, CAPSULE_VERSION_SPRING_2019, CAPSULE_VERSION_FALL_2019,
                              CAPSULE_VERSION_FALL_2020, CAPSULE_VERSION_FALL_2021, CAPSULE_VERSION_FALL_2022,
                              CAPSULE_VERSION_FALL_2023, CAPSULE_VERSION_FALL_2024, CAPSULE_VERSION_FALL_2025}) {
        EXPECT_THAT(Judge(Changed("mobileCompatibilityVersion", '"' + std::string(stamp) + '"')).list, IsEmpty())
            << stamp;
    }
    for (const char* host :
         {CAPSULE_PLATFORMSUPPORT_TESSEL_STR, CAPSULE_PLATFORMSUPPORT_CORVID_STR, CAPSULE_PLATFORMSUPPORT_BRISK_STR}) {
        EXPECT_THAT(Judge(Changed("authorApp", '"' + std::string(host) + '"')).list, IsEmpty()) << host;
    }
    EXPECT_THAT(Judge(Changed("apiVersion", '"' + Capsule::GetCurrentAPIVersion() + '"')).list, IsEmpty());
}

TEST(DefinitionFindings, TextsThatAreNoUsableDocument)
{
    struct {
        std::string text;
        const char* code;
        std::size_t line;
        std::size_t column;
    } rows[] = {
        {"{\"apiVersion\":\"2.2\",\n \"é\": x}", "MalformedJSON", 2, 7},
        {"{\"apiVersion\":\"2.2\",}", "MalformedJSON", 1, 21},
        {"{\"apiVersion\":\"2.2\" // remark\n}", "MalformedJSON", 1, 21},
        {std::string("{\0\"\0", 4), "MalformedJSON", 0, 0},
        {"", "MalformedJSON", 1, 1},
        {"[\"apiVersion\"]", "MalformedJSON", 0, 0},
        {"{}", "NoVersion", 0, 0},
        {R"({"apiVersion":"2.2","apiVersion":"2.1"})", "RepeatedKey", 1, 21},
        {R"({"description":"apiVersion \"1.2\"","apiVersion":"2.2"})", "MisleadingVersion", 1, 37},
    };
    for (const auto& row : rows) {
        const auto found = Judge(row.text).list;
        const auto finding =
            std::find_if(found.begin(), found.end(), [&](const Finding& one) { return one.code == row.code; });
        ASSERT_NE(finding, found.end()) << row.text;
        EXPECT_EQ(finding->line, row.line) << row.text;
        EXPECT_EQ(finding->column, row.column) << row.text;
    }
}

TEST(DefinitionFindings, KeepsTheFirstOfEachSeverityAndCountsTheRest)
{
    std::string tags = "[\"a\"";
    std::string members = "[\"a\"";
    std::string unknown;
    for (int i = 0; i < 300; ++i) {
        tags += ",\"a\"";
        members += ",\"x\"";
        unknown += R"({"type":"x","canAnimate":true},)";
    }
    const std::string control =
        R"({"type":10,"id":"g","canAnimate":false,"groupexpanded":true,"value":)" + members + "]}";
    const Findings found =
        Judge(R"({"apiVersion":"2.2","capsuleTags":)" + tags + R"(],"clientControls":[)" + control + "]}");
    EXPECT_EQ(found.list.size(), 2 * Findings::kMostKept);
    EXPECT_EQ(found.moreErrors, 301 - Findings::kMostKept);
    EXPECT_GE(found.moreWarnings, 300 - Findings::kMostKept);
    // A refusal has a reason, also where that comes after as many other errors as are kept.
    const std::string refused =
        R"({"apiVersion":"2.2","clientControls":[)" + unknown + R"({"type":2,"canAnimate":true}]})";
    EXPECT_EQ(ReadDefinition(orvcore::ToUTF8(refused)).refusals.size(), 1U);
}

TEST(DefinitionFindings, SaysWhichRecordAndWhatIsExpected)
{
    const auto found = Judge(Changed("clientControls/size/value", R"("72")")).list;
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].text,
              "control 5 (\"size\"): the value of \"value\" cannot be used: \"72\" stands where a number "
              "is expected");
    EXPECT_EQ(found[0].found, "\"72\"");
    EXPECT_EQ(found[0].expected, "a number");
    EXPECT_THAT(ReadDefinition(orvcore::ToUTF8(Changed("apiVersion", "\"3.0\""))).declaredVersion, "3.0");
}

} // namespace
