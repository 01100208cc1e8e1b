#include <rewrite/DefinitionRewrite.h>

#include <package/CapsuleZip.h>
#include <sources/SourceNames.h>

#include <orvcore/json/JSON.h>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/FakeLibraries.h>
#include <tests/support/TempFolder.h>

namespace {

using orvcapsule::CapsuleEntry;
using orvcapsule::GetCapsuleJson;
using orvcapsule::GetJsonContent;
using orvcapsule::UpdateCapsuleValuesInPlace;
using orvcore::UTF8String;

class DefinitionRewriteTest : public testing::Test {
protected:
    DefinitionRewriteTest()
    {
        record->SetCapsuleID(u"the id");
        record->SetLicenseID(u"the licence");
        record->SetTags({"a", "\u5b57\""});
        record->SetCapsuleNameLocalized(orvcapsule::UIString({{u"en_US", u"Name"}, {u"de_DE", u"Titel"}}));
    }

    // Its elements' identifiers are their names' first letters.
    void AddLibrary(const std::string& id, const std::string& name, const std::vector<std::string>& elements)
    {
        libraries->order.push_back(id);
        libraries->libraries[id].name = name;
        for (const std::string& element : elements) {
            const std::string file = id + element[0];
            const std::string definition = orvcore::ToNarrow(orvcore::PathToUTF8(folder / (file + ".json")));
            libraries->libraries[id].elements[element.substr(0, 1)] = {element, file + ".zelt", definition, "", ""};
        }
    }
    static boost::shared_ptr<CapsuleEntry> Entry(std::vector<std::string> sourcePath)
    {
        auto entry = boost::make_shared<CapsuleEntry>();
        entry->sourcePath = std::move(sourcePath);
        return entry;
    }
    // What becomes of a text that a stock entry brings along.
    std::string Updated(const std::string& text, const std::vector<const char*>& keys) const
    {
        return orvcore::ToNarrow(
            UpdateCapsuleValuesInPlace(Entry({orvcapsule::kStockSourceID}), record, keys, orvcore::ToUTF8(text)));
    }

    const test::TempFolder folder;
    const test::FakeLibraries::Installed libraries;
    std::shared_ptr<orvcapsule::Capsule> record = std::make_shared<orvcapsule::Capsule>();
};

TEST_F(DefinitionRewriteTest, ReadsFilesAsTheyAre)
{
    folder.Write("\u5b57.json", std::string("\xEF\xBB\xBF{}\r\n\0\xFF", 9));
    const UTF8String text = GetJsonContent(orvcore::PathToUTF8(folder / "\u5b57.json"));
    EXPECT_EQ(text, UTF8String(reinterpret_cast<const char8_t*>("\xEF\xBB\xBF{}\r\n\0\xFF"), 9));
    EXPECT_GE(text.capacity() - text.size(), orvcore::serialization::kJSONTextRoom);
    EXPECT_EQ(GetJsonContent(orvcore::PathToUTF8(folder / "missing")), u8"");
    EXPECT_EQ(GetJsonContent(orvcore::PathToUTF8(folder.Path())), u8"");
    EXPECT_EQ(GetJsonContent(u8""), u8"");
}

TEST_F(DefinitionRewriteTest, FindsTemplatesByNameInEveryLibraryOfThatName)
{
    AddLibrary("1", "Titles", {"anna", "bert"});
    AddLibrary("2", "titles", {"carl"});
    AddLibrary("3", "Titles", {"bert", "carl"});
    folder.Write("1b.json", "first");
    folder.Write("2c.json", "other name");
    folder.Write("3c.json", "third");
    const struct {
        const char8_t* library;
        const char8_t* element;
        bool isFound;
        const char8_t* path;
        const char8_t* text;
    } cases[] = {
        {u8"Titles", u8"bert", true, u8"1b.zelt", u8"first"}, {u8"Titles", u8"carl", true, u8"3c.zelt", u8"third"},
        {u8"Titles", u8"anna", true, u8"1a.zelt", u8""}, // no definition file
        {u8"Titles", u8"Carl", false, u8"path", u8"text"},    {u8"Title", u8"carl", false, u8"path", u8"text"},
    };
    for (const auto& [library, element, isFound, wantedPath, wantedText] : cases) {
        UTF8String path = u8"path";
        UTF8String text = u8"text";
        EXPECT_EQ(static_cast<std::uint32_t>(GetCapsuleJson(library, element, path, text)), isFound ? 0U : 0xA00F0001U);
        EXPECT_EQ(path, wantedPath);
        EXPECT_EQ(text, wantedText);
    }
    libraries->order.clear();
    UTF8String untouched = u8"x";
    EXPECT_EQ(GetCapsuleJson(u8"Titles", u8"bert", untouched, untouched), orvcapsule::kResultNothingFound);
    EXPECT_EQ(untouched, u8"x");
}

TEST_F(DefinitionRewriteTest, ReplacesTheKeysAskedForAndKeepsEveryOtherByte)
{
    const std::string tags = R"("capsuleTags":["a","字\""])";
    const std::string name =
        R"("capsuleNameLocalized":{"strDB":[{"localeString":"de_DE","str":"Titel"},{"localeString":"en_US","str":"Name"}]})";
    const struct {
        std::string text;
        std::vector<const char*> keys;
        std::string expected;
    } cases[] = {
        {R"({"capsuleTags":["old"]})", {"capsuleTags"}, "{" + tags + "}"},
        {R"({"licenseID":"old"})", {"licenseID"}, R"({"licenseID":"the id"})"},
        {"{}",
         {"licenseID", "capsuleTags", "capsuleNameLocalized"},
         "{" + name + "," + tags + R"(,"licenseID":"the id"})"},
        {R"({"apiVersion":"2.2","z":0})", {"capsuleTags"}, R"({"apiVersion":"2.2",)" + tags + R"(,"z":0})"},
        {"{ \"z\" : 1.0 ,\n \"authorApp\" : \"x\", \"capsuleTags\":[ ] , \"\\u0061\":1E400E }", {}, ""}, // not JSON
        {"{\"z\":[1.0,-0.0,1e5,18446744073709551615,100000000000000000000,9007199254740993.0,1E+2], \"b\" : "
         "\"\\u00e9\" ,\n"
         "\"capsuleTags\" : [], \"unknown\":{\"licenseID\":1,\"capsuleTags\":2} }\n",
         {"capsuleTags", "authorApp", "capsuletags", nullptr, ""},
         "{\"z\":[1.0,-0.0,1e5,18446744073709551615,100000000000000000000,9007199254740993.0,1E+2], \"b\" : "
         "\"\\u00e9\" ,\n"
         "\"capsuleTags\" : [\"a\",\"字\\\"\"], \"unknown\":{\"licenseID\":1,\"capsuleTags\":2} }\n"},
        {R"({"capsuleTags":1,"capsuleTags":2})", {"capsuleTags"}, R"({"capsuleTags":1,)" + tags + "}"},
        {"\xEF\xBB\xBF {\"authorApp\":1}", {"authorApp"}, "\xEF\xBB\xBF {\"authorApp\":1}"},
        {"", {"capsuleTags"}, ""},
    };
    for (const auto& [text, keys, expected] : cases) {
        if (keys.empty()) {
            EXPECT_THROW(Updated(text, keys), orvcore::serialization::json_parse_exception);
        } else {
            EXPECT_EQ(Updated(text, keys), expected);
        }
    }
    for (const char* text : {"[]", "7", "null", "\"capsuleTags\""}) {
        EXPECT_THROW(Updated(text, {"capsuleTags"}), std::bad_cast) << text;
    }
    for (const char* text : {"{", "{}{}", "{\"a\":1e999}", "{\"a\":\"\xFF\"}", " "}) {
        EXPECT_THROW(Updated(text, {}), orvcore::serialization::json_parse_exception) << text;
    }
    EXPECT_EQ(UpdateCapsuleValuesInPlace(nullptr, nullptr, {"capsuleTags"}, u8"{ }"), u8"{ }");
}

TEST_F(DefinitionRewriteTest, TheDefinitionComesFromWhereTheEntryIs)
{
    const auto keys = std::vector<const char*>{"licenseID"};
    const auto local = Entry({orvcapsule::kLocalSourceID, orvcapsule::kDefaultLocalSourceID});
    local->path = orvcore::PathToUTF8(test::Name(std::string(ORV_SAMPLES_DIR) + "/lower-third.zelt"));
    const UTF8String stored = orvcapsule::CapsuleZip(local->path).GetZELTDescriptionJSON();
    std::string expected = orvcore::ToNarrow(stored);
    const std::size_t at = expected.find("\"licenseID\":\"") + 13;
    expected.replace(at, expected.find('"', at) - at, "the id");
    EXPECT_EQ(orvcore::ToNarrow(UpdateCapsuleValuesInPlace(local, record, keys, u8"{}")), expected);
    local->path += u8".missing";
    EXPECT_EQ(UpdateCapsuleValuesInPlace(local, record, keys, u8"{}"), u8"");

    AddLibrary("1", "Titles", {"bert"});
    const auto cloud = Entry({orvcapsule::kLumoLibrariesSourceID, "1"});
    cloud->lumoElementID = u8"b";
    EXPECT_EQ(UpdateCapsuleValuesInPlace(cloud, record, keys, u8"{}"), u8"");
    folder.Write("1b.json", "{}");
    EXPECT_EQ(UpdateCapsuleValuesInPlace(cloud, record, keys, u8""), u8"{\"licenseID\":\"the id\"}");

    for (const std::string& source : {orvcapsule::kDefaultLocalSourceID, orvcapsule::kStockSourceID, std::string()}) {
        const auto other = Entry({source});
        other->path = orvcore::PathToUTF8(test::Name(std::string(ORV_SAMPLES_DIR) + "/lower-third.zelt"));
        EXPECT_EQ(UpdateCapsuleValuesInPlace(other, record, keys, u8"{}"), u8"{\"licenseID\":\"the id\"}");
        EXPECT_EQ(UpdateCapsuleValuesInPlace(other, record, keys, u8""), u8"");
    }
}

} // namespace
