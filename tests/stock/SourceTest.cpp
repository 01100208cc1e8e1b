#include <tests/stock/StockFixture.h>

#include <stock/HostHooks.h>

#include <future>

namespace {

using namespace testing;
using orvcapsule::CheckCancel;
using orvcapsule::TemplateCategory;
using orvcapsule::TemplateType;
using orvcore::UTF8String;
using test::Request;
using test::Response;
using test::StockCapsuleEntry;
using test::StockSource;
using test::TextResponse;

using Entries = StockSource::Entries;

class SourceTest : public test::StockFixture {
protected:
    /// One page; empty after an error.
    Entries Search(const StockSource& source, const std::vector<std::u16string>& terms = {},
                   const std::vector<TemplateCategory>& categories = {})
    {
        std::promise<Entries> promise;
        int arrived = -1;
        source.Search(terms, categories, 0, 10, nullptr,
                      std::make_shared<StockSource::OnResults>([&](const Entries& entries, int first, int total, auto) {
                          EXPECT_EQ(first, 0);
                          EXPECT_EQ(total, 3);
                          EXPECT_EQ(arrived, static_cast<int>(entries.size())) << "told before";
                          promise.set_value(entries);
                      }),
                      std::make_shared<StockSource::OnFailure>([&](const auto&) {
                          EXPECT_EQ(arrived, -1) << "a page that fails has not arrived";
                          promise.set_value({});
                      }),
                      std::make_shared<StockSource::OnArrival>([&](int count, int) { arrived = count; }));
        return promise.get_future().get();
    }
    /// The query of the last request without its columns and page.
    std::string SentParameters() const
    {
        const Request last = Requests().back();
        std::string sent;
        for (const auto& [name, value] : last.query) {
            if (name != "columns" && name != "first" && name != "count") {
                sent += name + "=" + value + " ";
            }
        }
        return sent;
    }
};

TEST_F(SourceTest, SendsTheParametersInOrder)
{
    answer = [](const Request&) { return TextResponse(200, "application/json", R"({"total":3,"rows":[]})"); };
    const auto templates = MakeSource();
    Search(*templates);
    EXPECT_EQ(SentParameters(), "gallery_premium=all content_template=1 template_type=7 source=zelt api_version=2.2 ");
    EXPECT_EQ(*Requests().back().FindQuery("columns"),
              "description,creator_name,keywords,width,height,thumbnail_url,thumbnail_240_url,thumbnail_html_tag,"
              "thumbnail_width,thumbnail_height,video_preview_url,size_bytes,zelt_metadata_url,template_categories");

    templates->SetFilterType(orvcapsule::kStockFilterPremium);
    templates->SetFilterType(u8"");
    Search(*templates, {u"lower", u"drittel ä"}, {TemplateCategory{3}, TemplateCategory{12}});
    EXPECT_EQ(SentParameters(), "term=lower term=drittel ä search_premium=true content_template=1 template_type=7 "
                                "source=zelt api_version=2.2 category=3,12 ");
    Search(*MakeSource(TemplateType::EditingProject), {u"a"});
    EXPECT_EQ(SentParameters(), "term=a search_premium=all content_template=1 template_type=2 api_version=2.2 ");
}

TEST_F(SourceTest, EntriesHaveWhatTheServiceTells)
{
    answer = [](const Request&) {
        return TextResponse(200, "application/json", R"({"total":3,"rows":[{"id":"7/8","title":"Ü","premium":true,
            "licensed":true,"description":"d","creator_name":"c","keywords":["k","l"],"width":1920,"height":1080,
            "thumbnail_url":"http://t","thumbnail_240_url":"http://s","thumbnail_html_tag":"<img>","thumbnail_width":4,
            "thumbnail_height":99999999999,"video_preview_url":"http://v","size_bytes":99999999999,
            "zelt_metadata_url":"http://m","template_categories":[3,12]},{"id":"b"}]})");
    };
    const Entries entries = Search(*MakeSource());
    ASSERT_EQ(entries.size(), 2U);
    const auto& entry = dynamic_cast<const StockCapsuleEntry&>(*entries[0]);
    EXPECT_EQ(entry.GetSourceID(), "graphicsource.Stock");
    EXPECT_EQ(entry.stockID, u8"7/8");
    EXPECT_TRUE(entry.isPremium && entry.isLicensed);
    EXPECT_EQ(entry.name + entry.description + entry.creatorName, u"Üdc");
    EXPECT_THAT(entry.tags, ElementsAre(u"k", u"l"));
    EXPECT_EQ(entry.frameWidth * 10000 + entry.frameHeight, 19201080U);
    EXPECT_EQ(entry.thumbnailURL + entry.smallThumbnailURL + entry.thumbnailHTMLTag, u8"http://thttp://s<img>");
    EXPECT_EQ(entry.thumbnailWidth, 4U);
    EXPECT_EQ(entry.thumbnailHeight, 0xffffffffU);
    EXPECT_EQ(entry.videoPreviewURL + entry.metadataURL, u8"http://vhttp://m");
    EXPECT_EQ(entry.fileSize, 99999999999U);
    EXPECT_THAT(entry.categories, ElementsAre(UTF8String(u8"3"), UTF8String(u8"12")));
    EXPECT_EQ(entry.GetVideoPreviewPath() + entry.thumbnailPath + entry.path, u8"");
    EXPECT_FALSE(entry.GetCapsule());
}

TEST_F(SourceTest, AnAbortedSearchTellsNothing)
{
    answer = [this](const Request&) { return Withheld(); };
    const auto token = boost::make_shared<CheckCancel>();
    std::promise<void> released;
    auto onResults = std::shared_ptr<StockSource::OnResults>(new StockSource::OnResults([](auto&&...) { FAIL(); }),
                                                             [&released](StockSource::OnResults* function) {
                                                                 delete function;
                                                                 released.set_value();
                                                             });
    const auto onFailure = std::make_shared<StockSource::OnFailure>([](auto&&...) { FAIL(); });
    const auto source = MakeSource();
    source->Search({}, {}, 0, 10, token, std::move(onResults), onFailure);
    AwaitRequests(1);
    token->Abort();
    EXPECT_EQ(released.get_future().wait_for(std::chrono::minutes(2)), std::future_status::ready);
    source->Search({}, {}, 0, 10, token, nullptr, onFailure);
    EXPECT_EQ(RequestCount(), 1U) << "an aborted token's search is not begun";
}

TEST_F(SourceTest, GetsTheDescriptionOnceAndNamesItAfterTheEntry)
{
    std::string body = R"({"apiVersion":"2.2","capsuleName":"own","capsuleTags":["own"],"capsuleID":"c"})";
    answer = [&](const Request& request) {
        return TextResponse(request.path == "/missing" ? 404 : 200, "application/json", body);
    };
    const auto source = MakeSource();
    struct Case {
        UTF8String url;
        const char8_t* id;
        bool isThere;
        std::size_t requests;
    };
    for (const Case& c : std::vector<Case>{{URL(u8"/a"), u8"../../a", true, 1},
                                           {URL(u8"/a"), u8"../../a", true, 0},
                                           {URL(u8"/missing"), u8"b", false, 1},
                                           {u8"ftp:" + URL(u8"/a").substr(5), u8"b", false, 0},
                                           {u8"http", u8"b", false, 0},
                                           {u8"", u8"b", false, 0},
                                           {u8"file:///etc/passwd", u8"b", false, 0}}) {
        const auto entry = MakeEntry(c.id);
        entry->name = u"entry's";
        entry->tags = {u"k"};
        entry->metadataURL = c.url;
        const std::size_t before = RequestCount();
        source->DownloadJSON(entry);
        EXPECT_EQ(RequestCount() - before, c.requests) << orvcore::ToNarrow(c.url);
        ASSERT_EQ(entry->GetCapsule() != nullptr, c.isThere) << orvcore::ToNarrow(c.url);
        if (c.isThere) {
            EXPECT_EQ(entry->GetCapsule()->GetDisplayName(), u"entry's");
            EXPECT_EQ(entry->GetCapsule()->GetCapsuleNameObsolete(), u"entry's");
            EXPECT_THAT(entry->GetCapsule()->GetTags(), ElementsAre("k"));
            EXPECT_EQ(entry->GetCapsule()->GetCapsuleID(), u"c");
        }
    }
    const auto entry = MakeEntry(u8"proxy");
    entry->metadataURL = URL(u8"/a");
    const std::string whole = std::exchange(body, "<html>Sign in</html>");
    source->DownloadJSON(entry);
    EXPECT_FALSE(entry->GetCapsule());
    body = whole;
    source->DownloadJSON(entry);
    EXPECT_TRUE(entry->GetCapsule()) << "the page was not kept";
}

TEST_F(SourceTest, TakesAThumbnailByItsType)
{
    answer = [](const Request& request) {
        return TextResponse(request.path == "/gone.png" ? 404 : 200,
                            request.path.ends_with("png")   ? "Image/PNG; q=1"
                            : request.path.ends_with("jpg") ? "image/jpeg"
                                                            : "text/html",
                            request.path);
    };
    const auto source = MakeSource();
    const auto cancelled = boost::make_shared<CheckCancel>();
    cancelled->Abort();
    struct Case {
        const char8_t *path, *id;
        const char* content; // null: none
        const char* failure = "";
        boost::shared_ptr<CheckCancel> token = nullptr;
    };
    for (const Case& c : std::vector<Case>{{u8"/a.png", u8"1", nullptr, "", cancelled},
                                           {u8"/a.html", u8"1", nullptr, "NotAPicture"},
                                           {u8"/gone.png", u8"1", nullptr, "DownloadFailed"},
                                           {u8"/a.png", u8"1", "/a.png", "", boost::make_shared<CheckCancel>()},
                                           {u8"/b.jpg", u8"1", "/a.png"},
                                           {u8"/b.jpg", u8"../1", "/b.jpg"}}) {
        const auto entry = MakeEntry(c.id);
        entry->thumbnailURL = URL(c.path);
        const auto [path, failure] = source->GetThumbnail(entry, c.token);
        EXPECT_EQ(failure ? failure->code : "", c.failure);
        EXPECT_EQ(path, c.content ? orvcapsule::GetTempStockAssetThumbPath(c.id) : u8"");
        EXPECT_EQ(c.content ? orvcore::ReadWholeFile(orvcore::PathFromUTF8(path)) : "", c.content ? c.content : "");
    }
    EXPECT_EQ(RequestCount(), 4U);
    EXPECT_EQ(source->GetThumbnailPath(boost::make_shared<orvcapsule::CapsuleEntry>(), nullptr), u8"");
}

TEST_F(SourceTest, NamesItselfAndKeepsHooks)
{
    StockSource::GraphicFilterID filter;
    filter.subFilters.resize(2);
    MakeSource()->GetFilter(filter);
    EXPECT_EQ(filter.name, u8"Stock");
    EXPECT_EQ(filter.sourceID, "graphicsource.Stock");
    EXPECT_THAT(filter.subFilters, IsEmpty());

    const auto license = std::make_shared<orvcapsule::ZarnLicenseStockAssetFxn>();
    EXPECT_FALSE(orvcapsule::GetZarnLicenseStockAssetSharedFxn());
    orvcapsule::SetZarnLicenseStockAssetSharedFxn(license);
    EXPECT_EQ(orvcapsule::GetZarnLicenseStockAssetSharedFxn(), license);
    EXPECT_FALSE(orvcapsule::GetDownloadStockAssetSharedFxn());
    EXPECT_FALSE(orvcapsule::GetGetStockAssetLicenseInfoSharedFxn());
    orvcapsule::SetZarnLicenseStockAssetSharedFxn(nullptr);
    EXPECT_EQ(license.use_count(), 1) << "the old function is released";
}

} // namespace
