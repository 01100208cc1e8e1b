#include <tools/zelt/panel/StockShelf.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/panel/EntryRow.h>
#include <tools/zelt/support/StockPlace.h>

#include <stock/StockPreviewDownloadManager.h>

#include <algorithm>
#include <future>
#include <iterator>

namespace zelt {

namespace {

using namespace orvcapsule;
using namespace std::chrono_literals;

constexpr auto kGlance = 50ms;   // between two looks at what is being waited for
constexpr auto kVideoWait = 10s; // the library does not tell when one cannot be had
constexpr auto kPageWait = 70s;  // longer than the client's own time-outs
constexpr std::size_t kSearches = 2;
constexpr std::size_t kFetches = 4;

std::shared_ptr<StockSource> MakeSource(const std::string& url)
{
    auto source = std::make_shared<StockSource>(ConnectStock(url), TemplateType::MotionGraphics);
    source->Initialize();
    return source;
}

struct Page {
    StockSource::Entries entries;
    int total = 0;
    std::string failure;
};

} // namespace

StockShelf::StockShelf(const std::string& url)
    : url_(url)
    , source_(MakeSource(url))
    , stop_(new CheckCancel)
    , searches_(kSearches)
    , fetches_(kFetches)
{
    StockPreviewDownloadManager::Initialize();
}

StockShelf::~StockShelf()
{
    Stop();
    StockPreviewDownloadManager::Terminate();
    source_->Terminate();
}

void StockShelf::Stop()
{
    stop_->Abort();
    searches_.Stop();
    fetches_.Stop();
}

void StockShelf::PostSearch(std::function<void()> work)
{
    searches_.Post(std::move(work));
}

void StockShelf::PostFetch(std::function<void()> work)
{
    fetches_.Post(std::move(work));
}

std::string StockShelf::PageAsJSON(const std::vector<orvcore::UTF16String>& terms, int first)
{
    // Both callbacks hold it: one that comes after this call has given up has nobody to tell.
    const auto promise = std::make_shared<std::promise<Page>>();
    source_->Search(
        terms, {}, first, kPageSize, stop_,
        std::make_shared<StockSource::OnResults>([promise](const StockSource::Entries& entries, int /*first*/,
                                                           int total, const boost::shared_ptr<CheckCancel>&) {
            promise->set_value({entries, total, ""});
        }),
        std::make_shared<StockSource::OnFailure>([promise](const StockSearchFailure& failure) {
            promise->set_value({{}, 0, orvcore::ToNarrow(failure.message)});
        }));
    std::future<Page> answer = promise->get_future();
    const auto end = std::chrono::steady_clock::now() + kPageWait;
    while (answer.wait_for(kGlance) != std::future_status::ready) {
        if (stop_->GetAbort() || std::chrono::steady_clock::now() > end) {
            throw FileError(url_, "the stock service does not answer");
        }
    }
    const Page page = answer.get();
    if (!page.failure.empty()) {
        throw FileError(url_, page.failure);
    }
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("total");
    writer.Int(page.total);
    writer.Key("rows");
    writer.BeginArray();
    for (const auto& entry : page.entries) {
        WriteRow(writer, *entry, {NumberOf(boost::dynamic_pointer_cast<StockCapsuleEntry>(entry)), 0, {}});
    }
    writer.EndArray();
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

std::uint64_t StockShelf::NumberOf(const Entry& entry)
{
    const std::lock_guard lock(mutex_);
    const auto [at, isNew] =
        numbers_.try_emplace(std::string(orvcore::AsNarrow(entry->stockID)), kFirstNumber + entries_.size());
    if (isNew) {
        entries_.push_back(entry);
    }
    return at->second;
}

StockShelf::Entry StockShelf::Find(std::uint64_t number) const
{
    const std::lock_guard lock(mutex_);
    const bool isIn = number >= kFirstNumber && number - kFirstNumber < entries_.size();
    return isIn ? entries_[number - kFirstNumber] : nullptr;
}

orvcore::UTF8String StockShelf::PosterOf(const Entry& entry) const
{
    return source_->GetThumbnailPath(entry, stop_);
}

void StockShelf::FindVideo(const Entry& entry, OnVideo onVideo)
{
    // Of several that wait for one video only the first would be called, so each looks for itself.
    StockPreviewDownloadManager::GetInstance()->DownloadPreview(nullptr, entry);
    const orvcore::UTF8String path = entry->GetVideoPreviewPath();
    if (!path.empty()) {
        onVideo(path);
        return;
    }
    const std::lock_guard lock(mutex_);
    videos_.push_back({entry, std::chrono::steady_clock::now() + kVideoWait, std::move(onVideo)});
}

void StockShelf::TellVideos()
{
    std::vector<Awaited> ended;
    {
        const std::lock_guard lock(mutex_);
        const auto now = std::chrono::steady_clock::now();
        const auto first = std::partition(videos_.begin(), videos_.end(), [now](const Awaited& video) {
            return now < video.end && video.entry->GetVideoPreviewPath().empty();
        });
        std::move(first, videos_.end(), std::back_inserter(ended));
        videos_.erase(first, videos_.end());
    }
    for (const Awaited& video : ended) {
        video.onVideo(video.entry->GetVideoPreviewPath());
    }
}

std::shared_ptr<Capsule> StockShelf::CapsuleOf(const Entry& entry) const
{
    if (!entry->GetCapsule()) {
        source_->DownloadJSON(entry);
    }
    return entry->GetCapsule();
}

} // namespace zelt
