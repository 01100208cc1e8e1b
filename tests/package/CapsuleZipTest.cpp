#include <package/CapsuleZip.h>
#include <package/PackageNames.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/shared/FileLock.h>
#include <orvcore/host/Application.h>
#include <orvcore/json/JSON.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/Future.h>
#include <orvcore/text/Guid.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

namespace {

namespace fs = std::filesystem;
using orvcapsule::CapsuleZip;
using orvcore::PathToUTF16;
using orvcore::PathToUTF8;
using orvcore::UTF16String;
using test::TempFolder;
using test::ZipBytes;
using testing::ElementsAre;
using testing::IsEmpty;

// Package paths of exactly `length` bytes below `folder`.
fs::path PathOfLength(const TempFolder& folder, std::size_t length, const std::string& name)
{
    const std::size_t room = length - PathToUTF8(folder.Path()).size() - name.size() - 2;
    fs::path parent = folder.Path() / std::string(room, 'd');
    orvcore::EnsureDirectory(parent);
    return parent / name;
}

class CapsuleZipTest : public testing::Test {
protected:
    void TearDown() override
    {
        orvcore::Application::SetLanguage("en_US");
        EXPECT_EQ(PrivateFiles(), 0) << "a private folder was left behind";
    }

    // This test's files in private folders; other tests run at the same time.
    int PrivateFiles() const
    {
        int count = 0;
        orvcore::TreeVisitor visitor;
        visitor.visit = [&](const fs::path& path, orvcore::FileKind) {
            count += orvcore::PathToUTF8(path.filename()).starts_with(orvcore::AsUTF8(unique_)) ? 1 : 0;
            return orvcore::WalkNext::GoOn;
        };
        visitor.fail = [](const fs::path&, const std::error_code&) { return orvcore::WalkNext::GoOn; }; // another's
        orvcore::WalkTree(orvcore::TempDirectory() / "Capsule", visitor);
        return count;
    }

    fs::path Package(const std::string& name, const ZipBytes& bytes) const
    {
        folder_.Write(name, bytes.Finish());
        return folder_ / name;
    }

    const std::string unique_ = orvcore::Guid::Create().ToString();
    const TempFolder folder_;
};

TEST_F(CapsuleZipTest, PathsOf220BytesAreOpenedInPlaceAndLongerOnesThroughACopy)
{
    for (const std::size_t length : {220U, 221U}) {
        const fs::path path = PathOfLength(folder_, length, unique_ + ".zelt");
        orvcore::CopyOneFile(Package("p.zelt", ZipBytes().Add({.name = "definition.json", .data = "{}"})), path);
        CapsuleZip byText(PathToUTF8(path));
        const orvcore::UTF8String text = byText.GetZELTDescriptionJSON(); // opens the copy that the assignment removes
        EXPECT_EQ(text, u8"{}");
        EXPECT_GE(text.capacity() - text.size(), orvcore::serialization::kJSONTextRoom);
        const auto byFile = std::make_unique<CapsuleZip>(path);
        const CapsuleZip copy = *byFile;
        byText = *byFile;
        EXPECT_EQ(copy.GetPackagePath(), PathToUTF8(path));
        EXPECT_EQ(copy.GetWorkingPath() == copy.GetPackagePath(), length == 220U);
        EXPECT_EQ(copy.GetZELTDescriptionJSON(), u8"{}");
        EXPECT_EQ(PrivateFiles(), length == 220U ? 0 : 1);
    }
    EXPECT_EQ(CapsuleZip(PathOfLength(folder_, 230, "none.zelt")).GetZELTDescriptionJSON(), u8"");
}

TEST_F(CapsuleZipTest, AChangeNeverUndoesAnothers)
{
    folder_.Write("other/definition.json", "other's");
    folder_.Write("mine/definition.json", "mine");
    for (const std::size_t length : {220U, 221U}) {
        const fs::path path = PathOfLength(folder_, length, unique_ + ".zelt");
        orvcore::CopyOneFile(Package("p.zelt", ZipBytes().Add({.name = "definition.json", .data = "old"})), path);
        CapsuleZip zip(path);
        const CapsuleZip copy = zip;
        EXPECT_EQ(zip.GetZELTDescriptionJSON(), u8"old");
        EXPECT_TRUE(CapsuleZip(path).SetZELTDescriptionJSON(PathToUTF16(folder_ / "other")));
        EXPECT_FALSE(zip.SetZELTDescriptionJSON(PathToUTF16(folder_ / "mine")));
        EXPECT_EQ(zip.GetLastFailure().Reason(), "another program has changed it since it was read");
        EXPECT_EQ(CapsuleZip(path).GetZELTDescriptionJSON(), u8"other's");
        EXPECT_FALSE(zip.SetZELTDescriptionJSON(u8"mine"));
        zip.Reopen();
        EXPECT_EQ(copy.GetZELTDescriptionJSON(), u8"other's");
        EXPECT_TRUE(zip.SetZELTDescriptionJSON(u8"mine"));
        EXPECT_EQ(copy.GetZELTDescriptionJSON(), u8"mine");
        EXPECT_EQ(CapsuleZip(path).GetZELTDescriptionJSON(), u8"mine");
        EXPECT_TRUE(zip.Zip(folder_ / "other", {}, nullptr));
        EXPECT_EQ(CapsuleZip(path).GetZELTDescriptionJSON(), u8"other's");
    }
}

TEST_F(CapsuleZipTest, WhatKilledProgramsLeftInPrivateGoesAfterADay)
{
    const fs::path area = orvcore::TempDirectory() / "Capsule";
    const auto path = [&](const char* name) { return area / (orvcore::Guid::Create().ToString() + name); };
    const struct {
        fs::path folder;
        int hours; // old
        bool isHeld;
        bool isRemoved;
    } cases[] = {
        {path(""), 25, false, true},
        {path(""), 23, false, false},
        {path(""), 25, true, false},
        {path(".mine"), 25, false, false},
    };
    std::error_code error;
    std::unique_ptr<orvcore::FileLock> held;
    for (const auto& c : cases) {
        orvcore::EnsureDirectory(c.folder);
        std::ofstream(c.folder / "package").close();
        auto lock = orvcore::FileLock::Open(fs::path(c.folder) += ".lock", true, error);
        ASSERT_TRUE(lock && lock->TryShared());
        held = c.isHeld ? std::move(lock) : std::move(held);
        const auto time = fs::file_time_type::clock::now() - std::chrono::hours(c.hours);
        fs::last_write_time(c.folder, time, error);
        if (!error) {
            fs::last_write_time(fs::path(c.folder) += ".lock", time);
        }
    }
    const fs::path unsure = path(""); // its lock leads to itself, so nobody can tell whether it is held
    const fs::path circle = fs::path(unsure) += ".lock";
    std::error_code noLinks; // on some systems
    orvcore::EnsureDirectory(unsure);
    fs::last_write_time(unsure, fs::file_time_type::clock::now() - std::chrono::hours(25), noLinks);
    fs::create_symlink(circle, circle, noLinks);
    const fs::path longPath = PathOfLength(folder_, 240, unique_ + ".zelt");
    orvcore::CopyOneFile(Package("p.zelt", ZipBytes()), longPath);
    static_cast<void>(CapsuleZip(longPath));
    EXPECT_TRUE(orvcore::Exists(unsure) || noLinks);
    orvcore::RemoveTree(unsure);
    orvcore::RemoveTree(circle);
    for (const auto& c : cases) { // held until then: other tests use this area at the same time
        EXPECT_EQ(orvcore::Exists(c.folder), !c.isRemoved || error) << c.folder; // not every C++ library sets the time
        EXPECT_EQ(orvcore::Exists(fs::path(c.folder) += ".lock"), !c.isRemoved || error);
    }
    held.reset();
    for (const auto& c : cases) {
        orvcore::RemoveTree(c.folder);
        orvcore::RemoveTree(fs::path(c.folder) += ".lock");
    }
}

TEST_F(CapsuleZipTest, OnlyWhatIsMissingHasASubstitute)
{
    orvcore::Application::SetLanguage("de_DE");
    const auto damaged = [](const std::string& name) { return test::ZipItem{.name = name, .data = "x", .crc = 5}; };
    const struct {
        const char* bad;
        const char* next;
    } projects[] = {{"project_de_DE.cvgraphic", "project.cvgraphic"},
                    {"project.cvgraphic", "project.tsgraphic"},
                    {"project_de_DE.tsgraphic", "project.tsgraphic"}};
    for (const auto& c : projects) {
        const CapsuleZip zip(Package("p.zelt", ZipBytes().Add(damaged(c.bad)).Add({.name = c.next, .data = "good"})));
        for (const std::string& sub : {std::string("short"), std::string(230, 's')}) {
            UTF16String out = u"untouched";
            EXPECT_FALSE(zip.GetZELTProjectPackage(PathToUTF16(folder_ / "base"), orvcore::ToUTF16(sub), u"p", out));
            EXPECT_EQ(out, u"untouched");
            EXPECT_EQ(NameOf(zip.GetLastFailure().error), "ChecksumMismatch") << c.bad;
            EXPECT_EQ(orvcore::ToNarrow(zip.GetLastFailure().entry), c.bad);
            EXPECT_FALSE(orvcore::Exists(folder_ / "base")) << "made for nothing";
        }
    }
    const CapsuleZip zip(Package("p.zelt", ZipBytes()
                                               .Add(damaged("thumb_de_DE.png"))
                                               .Add({.name = "thumb.png", .data = "good"})
                                               .Add({.name = "project.tsgraphic", .data = "good"})
                                               .Add(damaged("ZeltOptimizations.bin"))));
    EXPECT_FALSE(zip.GetZELTThumbnailPNG(PathToUTF8(folder_ / "out")));
    EXPECT_EQ(NameOf(zip.GetLastFailure().error), "ChecksumMismatch");
    EXPECT_FALSE(orvcore::Exists(folder_ / "out"));
    UTF16String out;
    EXPECT_TRUE(zip.GetZELTProjectPackage(u"", PathToUTF16(folder_ / "project"), u"p", out)) << "whole without it";
    EXPECT_EQ(out, PathToUTF16(folder_ / "project" / "p.tsgraphic")) << "an absolute folder is where it says";
    EXPECT_EQ(orvcore::ToNarrow(zip.GetLastFailure().entry), "ZeltOptimizations.bin");
}

TEST_F(CapsuleZipTest, PostersAndVideosFallBackToTheDefault)
{
    const CapsuleZip zip(Package("p.zelt", ZipBytes()
                                               .Add({.name = "thumb_de_DE.png", .data = "german"})
                                               .Add({.name = "thumb_fr_FR.png"})
                                               .Add({.name = "thumb.png", .data = "default"})
                                               .Add({.name = "thumb_de_DE.mp4", .data = "film"})
                                               .Add({.name = "Thumbnails/logo.png", .data = "logo"})));
    const auto out = PathToUTF8(folder_ / "out");
    for (const auto& [language, expected] :
         {std::pair{"de_DE", "german"}, {"fr_FR", "default"}, {"ja_JP", "default"}}) {
        orvcore::Application::SetLanguage(language);
        EXPECT_TRUE(zip.GetZELTThumbnailPNG(out));
        EXPECT_EQ(folder_.Read("out"), expected);
    }
    EXPECT_FALSE(zip.GetZELTThumbnailVideo(out));
    EXPECT_EQ(folder_.Read("out"), "default");
    EXPECT_FALSE(zip.GetZELTThumbnailPNG(PathToUTF8(folder_ / "missing/out")));
    EXPECT_TRUE(zip.GetZELTMediaThumbnailPNG(u8"logo.png", out));
    EXPECT_EQ(folder_.Read("out"), "logo");
    for (const std::u8string_view name : {u8"", u8"../thumb.png", u8"Logo.png", u8"/", u8".."}) {
        EXPECT_FALSE(zip.GetZELTMediaThumbnailPNG(orvcore::UTF8String(name), out));
    }
    EXPECT_FALSE(zip.GetZELTMediaThumbnailPNG(orvcore::UTF8String(u8"logo.png\0x", 10), out));
}

TEST_F(CapsuleZipTest, APictureGoesOverTheFileThatIsThereOnceItIsKnownToBeGood)
{
    const std::string large = std::string(3 << 20, 'x') + "end"; // more than is held in memory
    for (const std::string& content : {std::string("small"), large}) {
        folder_.Write("out", content + content);
        std::error_code noLinks;
        fs::create_hard_link(folder_ / "out", folder_ / "link", noLinks);
        const CapsuleZip bad(Package("bad.zelt", ZipBytes().Add({.name = "thumb.png", .data = content, .crc = 5})));
        EXPECT_FALSE(bad.GetZELTThumbnailPNG(PathToUTF8(folder_ / "out")));
        EXPECT_EQ(folder_.Read("out"), content + content);
        const CapsuleZip good(Package("good.zelt", ZipBytes().Add({.name = "thumb.png", .data = content})));
        EXPECT_TRUE(good.GetZELTThumbnailPNG(PathToUTF8(folder_ / "out")));
        EXPECT_EQ(folder_.Read("out"), content);
        EXPECT_TRUE(noLinks || folder_.Read("link") == content) << "another file took its place";
        EXPECT_FALSE(good.GetZELTThumbnailPNG(PathToUTF8(folder_ / "no/out")));
        EXPECT_EQ(NameOf(good.GetLastFailure().error), "WriteFailed");
        fs::remove(folder_ / "link", noLinks);
    }
}

TEST_F(CapsuleZipTest, ProjectsComeCorvidFirstAndLocalizedFirst)
{
    orvcore::Application::SetLanguage("de_DE");
    const struct {
        std::vector<std::string> entries;
        std::string extension; // of the project that is written, empty: none
        std::string content;
        bool side = false;
    } cases[] = {
        {{"project.cvgraphic", "project.tsgraphic", "ZeltOptimizations.bin"}, ".cvgraphic", "project.cvgraphic"},
        {{"project_de_DE.cvgraphic", "project.cvgraphic"}, ".cvgraphic", "project_de_DE.cvgraphic"},
        {{"project_fr_FR.cvgraphic", "project.tsgraphic"}, ".tsgraphic", "project.tsgraphic"},
        {{"project_de_DE.tsgraphic", "ZeltOptimizations.bin"}, ".tsgraphic", "project_de_DE.tsgraphic", true},
        {{"definition.json", "ZeltOptimizations.bin"}, "", ""},
    };
    for (const auto& c : cases) {
        ZipBytes bytes;
        for (const std::string& entry : c.entries) {
            bytes.Add({.name = entry, .data = entry});
        }
        const CapsuleZip zip(Package("p.zelt", bytes));
        for (const std::string& sub : {std::string("short"), std::string(230, 's')}) {
            UTF16String out = u"untouched";
            const bool done = zip.GetZELTProjectPackage(PathToUTF16(folder_ / "base"), orvcore::ToUTF16(sub),
                                                        orvcore::ToUTF16(unique_), out);
            const fs::path directory = folder_ / "base" / sub;
            const fs::path file = directory / (unique_ + c.extension);
            EXPECT_EQ(done, !c.extension.empty());
            EXPECT_EQ(out, done ? PathToUTF16(file) : u"untouched");
            EXPECT_EQ(folder_.Read(file), done ? c.content : "(missing)");
            EXPECT_EQ(orvcore::Exists(directory / "ZeltOptimizations.bin"), c.side);
            orvcore::RemoveTree(folder_ / "base");
        }
    }
}

TEST_F(CapsuleZipTest, UnZipReachesLongFoldersByTheSameRules)
{
    const CapsuleZip good(Package(
        "good.zelt",
        ZipBytes().Add({.name = "definition.json", .data = "{}"}).Add({.name = "Thumbnails/" + unique_, .data = "a"})));
    const CapsuleZip mixed(Package("mixed.zelt", ZipBytes().Add({.name = "a", .data = "1"}).Add({.name = "../b"})));
    const CapsuleZip bad(Package("bad.zelt", ZipBytes().Add({.name = "a", .data = "1", .crc = 5})));
    for (const std::string& sub : {std::string("short"), std::string(230, 'l')}) {
        const fs::path target = folder_ / sub / "deeper";
        EXPECT_TRUE(good.UnZip(target, false));
        EXPECT_EQ(folder_.Read(target / "Thumbnails" / unique_), "a");
        folder_.Write(target / "definition.json", "mine");
        EXPECT_TRUE(good.UnZip(target, false));
        EXPECT_EQ(folder_.Read(target / "definition.json"), "mine");
        EXPECT_TRUE(good.UnZip(target, true));
        EXPECT_EQ(folder_.Read(target / "definition.json"), "{}");
        EXPECT_FALSE(mixed.UnZip(target, false));
        EXPECT_EQ(folder_.Read(target / "a"), "1");
        EXPECT_FALSE(bad.UnZip(folder_ / sub / "none", true));
        EXPECT_FALSE(orvcore::Exists(folder_ / sub / "none"));
    }
}

TEST_F(CapsuleZipTest, UnZipReachesLongFoldersOnTheCallersOwnThread)
{
    const CapsuleZip zip(Package("good.zelt", ZipBytes().Add({.name = "a/" + unique_, .data = "new"})));
    const fs::path target = folder_ / std::string(230, 'l');
    const auto promise = std::make_shared<orvcore::Promise<bool>>();
    const auto done = promise->GetFuture();
    // One task at a time runs here: what waits for another waits for ever.
    ASSERT_TRUE(orvcore::GetPreTerminationExecutor()->Post([=] { promise->SetValue(zip.UnZip(target, true)); }));
    ASSERT_EQ(done.Wait(std::chrono::minutes(1)), orvcore::FutureStatus::Ready);
    EXPECT_TRUE(done.Get());
    for (const double until : {0.2, 0.7}) { // while unpacking, while copying
        folder_.Write(target / "a" / unique_, "old");
        EXPECT_FALSE(zip.UnZip(
            target, true, [&](double fraction, void*) { return fraction < until; }, nullptr));
        EXPECT_EQ(zip.GetLastFailure().error, orvstorage::ZipError::Cancelled);
        EXPECT_EQ(folder_.Read(target / "a" / unique_), "old");
    }
}

TEST_F(CapsuleZipTest, UnZipFailsInLongFoldersForTheSameReasons)
{
    using orvstorage::ZipError;
    const struct {
        const char* name;
        std::function<void(const fs::path& target)> prepare;
        const char* sub; // the folder that is unpacked to, below the target
        const char* mode;
        ZipError error;
        std::u8string_view entry;
    } cases[] = {
        {"a link that leads out",
         [this](const fs::path& target) {
             fs::create_directory_symlink(folder_ / "outside", orvcore::ToSystemPath(target / "sub"));
         },
         "", "link", ZipError::OutsideTarget, u8"sub/x"},
        {"a folder in a file's place", [](const fs::path& target) { orvcore::EnsureDirectory(target / "sub/x/y"); }, "",
         "", ZipError::WriteFailed, u8"sub/x"},
        {"a file in the target's place", [this](const fs::path& target) { folder_.Write(target / "t", ""); }, "t", "",
         ZipError::WriteFailed, u8""},
        {"damage", [](const fs::path&) {}, "n1/n2", "damage", ZipError::ChecksumMismatch, u8"bad"},
    };
    orvcore::EnsureDirectory(folder_ / "outside");
    std::error_code noLinks;
    fs::create_directory_symlink(folder_ / "outside", folder_ / "probe", noLinks);
    const ZipBytes good = ZipBytes().Add({.name = "first", .data = unique_}).Add({.name = "sub/x", .data = "new"});
    const CapsuleZip whole(Package("good.zelt", good));
    const CapsuleZip damaged(Package("bad.zelt", ZipBytes(good).Add({.name = "bad", .data = "1", .crc = 5})));
    for (const auto& c : cases) {
        if (std::string_view(c.mode) == "link" && noLinks) {
            continue;
        }
        for (const std::string& sub : {std::string("short"), std::string(230, 'l')}) {
            const fs::path target = folder_ / sub / c.name;
            orvcore::EnsureDirectory(target);
            c.prepare(target);
            const auto before = orvcore::ListDirectory(target);
            const CapsuleZip& zip = std::string_view(c.mode) == "damage" ? damaged : whole;
            EXPECT_FALSE(zip.UnZip(target / c.sub, true)) << c.name;
            const auto failure = zip.GetLastFailure();
            EXPECT_EQ(NameOf(failure.error), NameOf(c.error)) << c.name << sub;
            EXPECT_EQ(failure.entry, c.entry) << c.name << sub;
            EXPECT_EQ(failure.folder, c.entry.empty() ? target / c.sub : fs::path()) << c.name;
            const std::string named = '"' + orvcore::ToNarrow(PathToUTF8(failure.folder)) + '"';
            EXPECT_EQ(failure.Reason().starts_with("the folder " + named + " cannot be written ("), c.entry.empty());
            EXPECT_EQ(orvcore::ListDirectory(target).directories, before.directories) << c.name << sub;
            EXPECT_EQ(orvcore::ListDirectory(target).files, before.files) << c.name << sub;
        }
    }
    EXPECT_TRUE(fs::is_empty(folder_ / "outside"));
}

TEST_F(CapsuleZipTest, ALongPackageBehindALinkIsChangedWhereItLies)
{
    const fs::path real = PathOfLength(folder_, 240, unique_ + ".zelt");
    const fs::path link = real.parent_path() / "link.zelt";
    std::error_code noLinks;
    orvcore::CopyOneFile(Package("p.zelt", ZipBytes().Add({.name = "definition.json", .data = "old"})), real);
    fs::create_symlink(real.filename(), orvcore::ToSystemPath(link), noLinks);
    if (noLinks) {
        GTEST_SKIP() << "no symbolic links here";
    }
    folder_.Write("new/definition.json", "new");
    EXPECT_TRUE(CapsuleZip(link).SetZELTDescriptionJSON(PathToUTF16(folder_ / "new")));
    EXPECT_EQ(CapsuleZip(real).GetZELTDescriptionJSON(), u8"new");
    EXPECT_EQ(orvcore::InspectPath(link, noLinks).kind, orvcore::FileKind::Link);
}

TEST_F(CapsuleZipTest, FindsUnpackedProjectsByExactExtension)
{
    for (const char* name : {"z.cvgraphic", "a/x.cvgraphic", "a/deep/b.cvgraphic", "a/x.CVGRAPHIC", "cvgraphic"}) {
        folder_.Write(fs::path("tree") / name, "");
    }
    const fs::path tree = folder_ / "tree";
    const auto in = [&tree](const char* name) { return PathToUTF16((tree / name).make_preferred()); };
    const auto found = CapsuleZip::GetPathOfUnZippedProject("cvgraphic", PathToUTF16(tree));
    ASSERT_TRUE(found);
    EXPECT_THAT(*found, ElementsAre(in("a/deep/b.cvgraphic"), in("a/x.cvgraphic"), in("z.cvgraphic")));
    const fs::path relative = fs::absolute(tree).lexically_proximate(fs::current_path());
    EXPECT_TRUE(
        fs::path(CapsuleZip::GetPathOfUnZippedProject("cvgraphic", PathToUTF16(relative))->front()).is_absolute());
    EXPECT_FALSE(CapsuleZip::GetPathOfUnZippedProject("tsgraphic", PathToUTF16(tree)));
    EXPECT_FALSE(CapsuleZip::GetPathOfUnZippedProject("cvgraphic", PathToUTF16(folder_ / "missing")));
    EXPECT_FALSE(CapsuleZip::GetPathOfUnZippedProject(nullptr, PathToUTF16(tree)));
}

TEST_F(CapsuleZipTest, SamplesUnpackPackAndUnpackToTheSameBytes)
{
    int samples = 0;
    for (const fs::path& sample : orvcore::ListDirectory(ORV_SAMPLES_DIR).files) {
        if (PathToUTF8(sample.extension()) != orvcapsule::kCapsuleExtn) {
            continue;
        }
        ++samples;
        const TempFolder folder;
        const CapsuleZip original(sample);
        EXPECT_FALSE(original.GetZELTDescriptionJSON().empty());
        EXPECT_THAT(original.GetArchive().Check(true), IsEmpty());
        ASSERT_TRUE(original.UnZip(folder / "1", true)) << original.GetLastFailure().Message();
        const CapsuleZip packed(folder / "packed.zelt");
        ASSERT_TRUE(packed.Zip(folder / "1", {}, nullptr)) << packed.GetLastFailure().Message();
        ASSERT_TRUE(packed.UnZip(folder / "2", true)) << packed.GetLastFailure().Message();
        const auto compare = [&](const fs::path& path, orvcore::FileKind kind) {
            const auto other = folder / "2" / path.lexically_relative(folder / "1");
            if (kind == orvcore::FileKind::Directory) {
                EXPECT_TRUE(orvcore::IsDirectory(other)) << path;
            } else {
                EXPECT_EQ(orvcore::ReadWholeFile(path), orvcore::ReadWholeFile(other)) << path;
            }
            return orvcore::WalkNext::GoOn;
        };
        orvcore::WalkTree(folder / "1", {compare});
    }
    EXPECT_GE(samples, 5);
}

TEST_F(CapsuleZipTest, DamagedSamplesSayWhatIsWrong)
{
    using orvstorage::ZipError;
    const struct {
        const char* name;
        ZipError error;
        bool hasText;
    } cases[] = {
        {"broken-json.zelt", ZipError::None, true},       {"empty.zelt", ZipError::NotAZip, false},
        {"missing-framerate.zelt", ZipError::None, true}, {"no-definition.zelt", ZipError::EntryMissing, false},
        {"not-a-zip.zelt", ZipError::NotAZip, false},     {"truncated.zelt", ZipError::Truncated, false},
    };
    for (const auto& c : cases) {
        const CapsuleZip zip(fs::path(ORV_SAMPLES_DIR) / "damaged" / c.name);
        EXPECT_EQ(!zip.GetZELTDescriptionJSON().empty(), c.hasText) << c.name;
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error)) << c.name;
    }
}

} // namespace
