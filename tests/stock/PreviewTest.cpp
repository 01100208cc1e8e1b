#include <tests/stock/StockFixture.h>

#include <orvcore/tasks/MainThread.h>
#include <stock/StockPreviewDownloadManager.h>

#include <atomic>
#include <future>

namespace {

using namespace testing;
using orvcapsule::CapsuleEntry;
using orvcapsule::StockPreviewDownloadManager;
using orvcore::UTF8String;
using test::Request;
using test::Response;
using test::TextResponse;

class PreviewTest : public test::StockFixture {
protected:
    PreviewTest()
    {
        StockPreviewDownloadManager::Initialize();
    }
    ~PreviewTest() override
    {
        StockPreviewDownloadManager::Terminate();
    }

    using OnReady = StockPreviewDownloadManager::OnReady;
    std::shared_ptr<OnReady> Note(const std::string& name)
    {
        return std::make_shared<OnReady>([this, name](const boost::shared_ptr<CapsuleEntry>& entry) {
            EXPECT_NE(entry->GetVideoPreviewPath(), u8"");
            orvcore::AsyncCallFromMainThread([this, name] { told += name; });
        });
    }
    boost::shared_ptr<test::StockCapsuleEntry> Ask(const char8_t* id, const std::string& name,
                                                   const char8_t* path = u8"/video")
    {
        auto entry = MakeEntry(id);
        entry->videoPreviewURL = URL(path);
        StockPreviewDownloadManager::GetInstance()->DownloadPreview(Note(name), entry);
        return entry;
    }
    void PumpUntilTold(const std::string& all)
    {
        while (told != all) {
            ASSERT_TRUE(orvcore::WaitForMainThreadCalls(std::chrono::minutes(2)));
            orvcore::RunMainThreadCalls();
        }
    }

    std::string told;
};

TEST_F(PreviewTest, IsDownloadedOnceAndTheFirstIsTold)
{
    std::promise<void> open;
    const std::shared_future<void> opened = open.get_future().share();
    answer = [opened](const Request& request) {
        opened.wait();
        return TextResponse(request.path == "/video" ? 200 : 404, "video/mp4", "moving");
    };
    const auto first = Ask(u8"1", "a");
    const auto second = Ask(u8"1", "b");
    const auto missing = Ask(u8"2", "c", u8"/nowhere");
    EXPECT_EQ(first->GetVideoPreviewPath(), u8"");
    open.set_value();
    PumpUntilTold("a");
    const UTF8String path = orvcapsule::GetTempStockAssetVideoThumbPath(u8"1");
    EXPECT_EQ(first->GetVideoPreviewPath(), path);
    EXPECT_EQ(first->videoPreviewPath, path);
    EXPECT_TRUE(first->SupportVideoPlayback());
    EXPECT_EQ(orvcore::ReadWholeFile(orvcore::PathFromUTF8(path)), "moving");
    EXPECT_EQ(second->GetVideoPreviewPath(), u8"") << "its next request finds the file";

    Ask(u8"3", "d"); // behind the failed one
    PumpUntilTold("ad");
    EXPECT_EQ(missing->GetVideoPreviewPath(), u8"");
    EXPECT_EQ(Ask(u8"1", "e")->GetVideoPreviewPath(), path) << "on disk";
    AwaitRequests(3); // the failed one's may come last
    EXPECT_EQ(RequestCount(), 3U);
    while (RequestCount() < 4) { // until the failure has been told, its place is taken
        Ask(u8"2", "f");
    }
    PumpUntilTold("adf");
    EXPECT_EQ(told, "adf");
}

TEST_F(PreviewTest, TerminatedInTheMiddleNothingIsToldAndAllMayBeginAnew)
{
    std::atomic<bool> isHeld = true;
    answer = [&](const Request&) { return isHeld ? Withheld() : TextResponse(200, "video/mp4", "moving"); };
    for (int i = 0; i < 40; ++i) {
        const UTF8String id = orvcore::ToUTF8(std::to_string(i));
        Ask(id.c_str(), "x");
    }
    AwaitRequests(16);
    const boost::weak_ptr<StockPreviewDownloadManager> old = StockPreviewDownloadManager::GetInstance();
    StockPreviewDownloadManager::Terminate();
    EXPECT_TRUE(old.expired()) << "no completion holds it any more";
    EXPECT_FALSE(StockPreviewDownloadManager::GetInstance());
    StockPreviewDownloadManager::Terminate();

    EXPECT_TRUE(StockPreviewDownloadManager::Initialize());
    const auto instance = StockPreviewDownloadManager::GetInstance();
    EXPECT_TRUE(StockPreviewDownloadManager::Initialize());
    EXPECT_EQ(StockPreviewDownloadManager::GetInstance(), instance);
    isHeld = false;
    Ask(u8"0", "y");
    PumpUntilTold("y");
    instance->DownloadPreview(nullptr, nullptr);
    instance->DownloadPreview(nullptr, boost::make_shared<CapsuleEntry>());
    StockPreviewDownloadManager unowned; // cannot keep itself for the handler, so no download starts
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(unowned.DownloadPreview(nullptr, MakeEntry(u8"z")), boost::bad_weak_ptr) << "none is under way";
    }
}

} // namespace
