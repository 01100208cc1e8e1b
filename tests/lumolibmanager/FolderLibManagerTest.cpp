#include <lumolibmanager/FolderLibManager.h>
#include <sources/ILumoLibrariesWrapper.h>

#include <orvcore/host/DebugSettings.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>

#include <atomic>
#include <thread>

namespace {

namespace fs = std::filesystem;
namespace wrapper = orvcapsule::ILumoLibrariesWrapper;
using lumolibmanager::FolderLibManager;
using orvcore::ToUTF8;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string Quote(std::string text)
{
    std::replace(text.begin(), text.end(), '\'', '"');
    return text;
}

std::string Manifest(const std::string& id, const std::string& elements)
{
    return Quote("{'formatVersion':1,'id':'" + id + "','name':'Titles','elements':[" + elements + "]}");
}

std::string Element(const std::string& id, const std::string& files)
{
    return "{'id':'" + id + "','name':'Name of " + id + "','type':'capsule','files':{" + files + "}}";
}

class FolderLibManagerTest : public testing::Test {
protected:
    std::vector<std::string> Libraries()
    {
        std::vector<std::string> ids{"what it held"};
        manager.GetLibraryList(ids);
        return ids;
    }
    std::vector<std::string> Elements(const std::string& library)
    {
        std::vector<std::string> ids{"what it held"};
        manager.GetElementIDsForElementType(library, lumolibmanager::kElementType_Capsule, ids);
        std::vector<std::string> listed;
        manager.ListElements(library, lumolibmanager::kElementType_Capsule, [&](const auto& element) {
            EXPECT_EQ(element.primaryPath, manager.GetPrimaryPath(library, element.id));
            EXPECT_EQ(element.primaryInfo, orvcore::InspectTarget(orvcore::PathFromUTF8(ToUTF8(element.primaryPath))));
            EXPECT_EQ(element.alternateInfo,
                      orvcore::InspectTarget(orvcore::PathFromUTF8(ToUTF8(element.alternatePath))));
            listed.push_back(element.id);
            return true;
        });
        EXPECT_EQ(listed, ids);
        return ids;
    }
    // "element role: reason" of all that was left out.
    std::vector<std::string> LeftOut()
    {
        std::vector<std::string> list;
        for (const auto& left : manager.GetLeftOut()) {
            list.push_back(left.elementID + ' ' + left.role + ": " + left.reason);
        }
        return list;
    }

    const test::TempFolder root;
    FolderLibManager manager{root.Path()};
};

TEST_F(FolderLibManagerTest, ListsLibrariesElementsAndFiles)
{
    const std::string files =
        "'image/png':'a/p.png','alternate':'a/d.json','primary':'a/\u5b57.zelt','video/mp4':'a/v.mp4'";
    root.Write("two/library.json", Manifest("L2", ""));
    root.Write("one/library.json",
               Manifest("L1", Element("e2", files) + "," + Element("e1", "'primary':'b.zelt'") +
                                  ",{'id':'x','name':'','type':'colour','files':{'primary':'b.zelt'}}"));
    for (const char* name : {"one/a/p.png", "one/a/d.json", "one/a/\u5b57.zelt", "one/a/v.mp4", "one/b.zelt"}) {
        root.Write(name, "x");
    }
    root.Write(".sync/state", "x");
    root.Write("readme.txt", "x");
    lumolibmanager::SetLumoLibManager(std::make_shared<FolderLibManager>(root.Path()));
    std::vector<std::string> ids{"what it held"};
    wrapper::GetLibraryList(ids);
    EXPECT_THAT(ids, ElementsAre("L1", "L2"));
    EXPECT_EQ(wrapper::GetLibraryNameFromLibraryID("L1"), "Titles");
    wrapper::GetCapsuleElementIDs("L1", ids);
    EXPECT_THAT(ids, ElementsAre("e2", "e1"));
    EXPECT_EQ(wrapper::GetElementName("L1", "e2"), "Name of e2");
    const auto full = [&](const char* name) {
        return orvcore::ToNarrow(orvcore::PathToUTF8((root / name).make_preferred()));
    };
    EXPECT_EQ(wrapper::GetCapsulePath("L1", "e2"), full("one/a/\u5b57.zelt"));
    EXPECT_EQ(wrapper::GetCapsuleSchemaPath("L1", "e2"), full("one/a/d.json"));
    EXPECT_EQ(wrapper::GetCapsuleThumbnailPath("L1", "e2"), full("one/a/p.png"));
    EXPECT_EQ(wrapper::GetCapsuleVideoThumbnailPath("L1", "e2"), full("one/a/v.mp4"));
    EXPECT_EQ(wrapper::GetCapsuleVideoThumbnailPath("L1", "e1") + wrapper::GetCapsulePath("L1", "e9") +
                  wrapper::GetElementName("L9", "e1") + wrapper::GetLibraryDiskPath(),
              "");
    EXPECT_THAT(lumolibmanager::GetLumoLibManager()->GetLeftOut(), IsEmpty());

    // The manager that is there at first takes its root from the setting.
    lumolibmanager::SetLumoLibManager(nullptr);
    wrapper::GetLibraryList(ids);
    EXPECT_THAT(ids, IsEmpty());
    orvcore::DebugSettings::SetText("ORV.libraryfolder", orvcore::PathToUTF8(root.Path()));
    wrapper::GetLibraryList(ids);
    EXPECT_THAT(ids, ElementsAre("L1", "L2"));
    orvcore::DebugSettings::Unset("ORV.libraryfolder");
}

TEST_F(FolderLibManagerTest, ADamagedManifestCostsItsLibraryAlone)
{
    const std::string good = Manifest("good", "");
    root.Write("good/library.json", good);
    orvcore::EnsureDirectory(root / "bad");
    const struct {
        std::string text;
        const char* reason;
    } cases[] = {
        {"", "no JSON"},
        {good.substr(0, good.size() / 2), "no JSON"},
        {std::string(300, '['), "no JSON"},
        {"[]", "no JSON object"},
        {"{}", "formatVersion"},
        {Quote("{'formatVersion':'1'}"), "formatVersion"},
        {Quote("{'formatVersion':2,'id':'b','name':'','elements':[]}"), "newer"},
        {Quote("{'formatVersion':1,'id':7,'name':'','elements':[]}"), "\"id\" is missing or no text"},
        {Quote("{'formatVersion':1,'id':'','name':'','elements':[]}"), "\"id\" is empty"},
        {Quote("{'formatVersion':1,'id':'b','elements':[]}"), "\"name\" is missing"},
        {Quote("{'formatVersion':1,'id':'b','name':'" + std::string(1025, 'n') + "','elements':[]}"), "longer than"},
        {Quote("{'formatVersion':1,'id':'b','name':'','elements':{}}"), "no list"},
        {Manifest("b", "{'id':'e'").substr(0, 65), "no JSON"},
        {Manifest("b", "{'id':'e'"), "no JSON"},
        {Manifest("b", "{'id':'\xFF'}"), "no JSON"},
        {Manifest("b", "") + ",", "no JSON"},
        {Manifest("good", ""), "same identifier: bad"},
        {std::string((std::size_t{8} << 20U) + 1, ' '), "File too large"},
    };
    EXPECT_THAT(Libraries(), ElementsAre("good"));
    EXPECT_THAT(LeftOut(), ElementsAre(HasSubstr("not there yet"))) << "a library that has only just begun to arrive";
    for (const auto& [text, reason] : cases) {
        root.Write("bad/library.json", text);
        EXPECT_THAT(Libraries(), ElementsAre("good"));
        ASSERT_EQ(LeftOut().size(), 1U) << reason;
        EXPECT_THAT(LeftOut()[0], HasSubstr(reason));
    }
    root.Write("bad/library.json", Manifest("b", ""));
    EXPECT_THAT(Libraries(), ElementsAre("b", "good"));
}

TEST_F(FolderLibManagerTest, ABadElementCostsItselfAndAMissingFileNoMore)
{
    root.Write("l/there", "x");
    root.Write("outside", "x");
    orvcore::EnsureDirectory(root / "l/folder");
    std::error_code noLinks; // Wine makes none
    fs::create_symlink("../outside", root / "l/link", noLinks);
    fs::create_directory_symlink("..", root / "l/up", noLinks);
    const std::string tooMany = [] {
        std::string files = "'primary':'there'";
        for (int i = 0; i < 32; ++i) {
            files += ",'r" + std::to_string(i) + "':'there'";
        }
        return files;
    }();
    const std::string outside = orvcore::ToNarrow((root / "outside").generic_u8string());
    const struct {
        std::string element;
        const char* reason;
        bool isListed = false;
        bool needsLinks = false;
    } cases[] = {
        {"7", "element 2 of the list"},
        {"{'id' 'e'}", "element 2 of the list"},
        {"{'id':'e','name':tru}", "element 2 of the list"},
        {"{'id':'e'}", "\"name\" is missing"},
        {"{'id':'e','name':'','type':'capsule'}", "\"files\" is missing"},
        {"{'id':'e','name':'','type':7,'files':{'primary':'there'}}", "\"type\""},
        {Element("ok", "'primary':'there'"), "same identifier"},
        {Element("e", ""), "no primary file"},
        {Element("e", "'primary':'there','" + std::string(1025, 'r') + "':'there'"), "role is longer than"},
        {Element("e", "'primary':null"), "no text"},
        {Element("e", tooMany), "more than 32 files"},
        {Element("e", "'primary':''"), "empty"},
        {Element("e", "'primary':'../outside'"), "leads out"},
        {Element("e", "'primary':'there','alternate':'folder/../../outside'"), "leads out"},
        {Element("e", "'primary':'" + outside + "'"), "name"},
        {Element("e", "'primary':'C:there'"), "drive letter"},
        {Element("e", "'primary':'..\\\\outside'"), "leads out"},
        {Element("e", "'primary':'there\\u0000'"), "control character"},
        {Element("e", "'primary':'folder'"), "is no file"},
        {Element("e", "'primary':'late.zelt'"), "not there yet"},
        {Element("e", "'primary':'there/late.zelt'"), "not there yet"},
        {Element("e", "'primary':'link'"), "link", false, true},
        {Element("e", "'primary':'up/outside'"), "link", false, true},
        {Element("e", "'primary':'there','image/png':'up/l/there'"), "link", false, true},
        {Element("e", "'primary':'there','alternate':'late.json'"), "e alternate: the alternate file \"late.json\"",
         true},
    };
    for (const auto& [element, reason, isListed, needsLinks] : cases) {
        if (needsLinks && noLinks) {
            continue;
        }
        root.Write("l/library.json", Manifest("l", Element("ok", "'primary':'there'") + "," + element));
        EXPECT_THAT(Libraries(), ElementsAre("l"));
        EXPECT_EQ(Elements("l").size(), isListed ? 2U : 1U) << element;
        ASSERT_EQ(LeftOut().size(), 1U) << element;
        EXPECT_THAT(LeftOut()[0], HasSubstr(reason)) << element;
        EXPECT_EQ(manager.GetPrimaryPath("l", "e").empty(), !isListed) << element;
        EXPECT_NE(manager.GetPrimaryPath("l", "ok"), "");
        EXPECT_EQ(manager.GetAlternatePath("l", "e"), "");
    }
    if (!noLinks) { // a library that is elsewhere, or whose manifest is
        fs::create_directory_symlink("l", root / "linked");
        orvcore::EnsureDirectory(root / "m");
        fs::create_symlink("../l/library.json", root / "m/library.json");
        EXPECT_THAT(Libraries(), ElementsAre("l"));
        EXPECT_THAT(LeftOut(), testing::IsSupersetOf({HasSubstr("it is a link"), HasSubstr("library.json is a link")}));
    }
}

TEST_F(FolderLibManagerTest, SeesChangesAtTheNextListing)
{
    const auto write = [&](const std::string& elements) { root.Write("l/library.json", Manifest("l", elements)); };
    write(Element("a", "'primary':'a.zelt'"));
    EXPECT_THAT(Elements("l"), IsEmpty());
    root.Write("l/a.zelt", "x"); // the file arrives, the manifest stays
    EXPECT_THAT(Elements("l"), ElementsAre("a"));
    EXPECT_THAT(LeftOut(), IsEmpty());
    write(Element("b", "'primary':'a.zelt'")); // as many bytes, at once
    EXPECT_THAT(Elements("l"), ElementsAre("b"));
    EXPECT_EQ(manager.GetPrimaryPath("l", "a"), "");

    // Old files, whose manifests are not read again, are looked at all the same.
    orvcore::DebugSettings::SetInt("ORV.entrysettletime", -1000000);
    EXPECT_THAT(Libraries(), ElementsAre("l"));
    EXPECT_THAT(Libraries(), ElementsAre("l"));
    write(Element("a", "'primary':'a.zelt'") + "," + Element("b", "'primary':'a.zelt'"));
    EXPECT_THAT(Elements("l"), ElementsAre("a", "b"));
    orvcore::RemoveTree(root / "l/a.zelt");
    EXPECT_THAT(Elements("l"), IsEmpty());
    orvcore::DebugSettings::Unset("ORV.entrysettletime");

    root.Write("k/library.json", Manifest("k", ""));
    fs::rename(root / "l", root / "m");
    root.Write("m/a.zelt", "x");
    EXPECT_THAT(Libraries(), ElementsAre("k", "l"));
    EXPECT_THAT(Elements("l"), ElementsAre("a", "b"));
    orvcore::RemoveTree(root.Path());
    EXPECT_THAT(Elements("l"), IsEmpty());
    EXPECT_THAT(LeftOut(), ElementsAre(HasSubstr("cannot be read")));
    manager.Terminate();
    EXPECT_THAT(LeftOut(), IsEmpty());
}

// A host's main thread asks while workers list, and the synchronisation replaces the library under them.
TEST_F(FolderLibManagerTest, AnswersSeveralThreadsWhileTheManifestIsReplaced)
{
    const auto put = [&](const std::string& element) {
        root.Write("l/library.json", Manifest("l", Element(element, "'primary':'x'")));
    };
    root.Write("l/x", "x");
    put("e");
    constexpr std::size_t kOthers = 50;
    for (std::size_t i = 0; i < kOthers; ++i) {
        const std::string id = "other " + std::to_string(i);
        root.Write(id + "/library.json", Manifest(id, ""));
    }
    std::atomic<int> asked = 0;
    std::atomic<int> strange = 0; // neither the library nor the moment in which its manifest is half there
    const auto ask = [&] {
        for (int i = 0; i < 200; ++i, ++asked) {
            std::vector<std::string> ids;
            manager.GetLibraryList(ids);
            strange += ids.size() == kOthers || ids.size() == kOthers + 1 ? 0 : 1;
            manager.ListElements("l", lumolibmanager::kElementType_Capsule, [&](const auto& element) {
                strange += element.name == "Name of " + element.id ? 0 : 1;
                manager.GetPrimaryPath("l", element.id);
                return true;
            });
            manager.GetLeftOut();
        }
    };
    std::thread one(ask);
    std::thread other(ask);
    for (int i = 1; asked < 400; ++i) {
        put("e" + std::string(static_cast<std::size_t>(i % 3), 'e'));
        manager.Terminate();
    }
    one.join();
    other.join();
    EXPECT_EQ(strange, 0);
    EXPECT_EQ(Elements("l").size(), 1U);
}

TEST_F(FolderLibManagerTest, CountsAreBounded)
{
    std::string elements;
    for (int i = 0; i < 300; ++i) {
        elements += std::string(i == 0 ? "" : ",") + Element("e" + std::to_string(i), "'primary':'late'");
    }
    root.Write("l/library.json", Manifest("l", elements));
    EXPECT_THAT(Elements("l"), IsEmpty());
    EXPECT_EQ(LeftOut().size(), 101U);
    EXPECT_THAT(LeftOut().back(), HasSubstr("more was left out"));
    root.Write("l/late", "x");
    EXPECT_EQ(Elements("l").size(), 300U);
    elements.clear();
    for (std::size_t i = 0; i <= lumolibmanager::kMaxElements; ++i) {
        elements += i == 0 ? "0" : ",0";
    }
    root.Write("l/library.json", Manifest("l", elements));
    EXPECT_THAT(Libraries(), IsEmpty());
    EXPECT_THAT(LeftOut(), ElementsAre(HasSubstr("more than 20000 elements")));
}

} // namespace
