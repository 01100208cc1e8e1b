#pragma once

#include <tools/zelt/output/EntryOutput.h>

#include <stock/StockCapsuleEntry.h>
#include <stock/StockSource.h>
#include <tools/http/Workers.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace zelt {

/// The stock service behind the page: results a page at a time, as the user scrolls, and what they need to be shown.
/// Templates have numbers of their own, far above the catalogue's. Calls that wait for the service belong on its own
/// threads, so that a slow one holds up nothing else.
class StockShelf {
public:
    using Entry = boost::shared_ptr<orvcapsule::StockCapsuleEntry>;

    static constexpr std::uint64_t kFirstNumber = std::uint64_t{1} << 40U;
    static constexpr int kPageSize = 100;

    /// For the main thread, as the destructor. @param url  of the service
    explicit StockShelf(const std::string& url);
    StockShelf(const StockShelf&) = delete;
    StockShelf& operator=(const StockShelf&) = delete;
    ~StockShelf();

    /// Ends waiting calls soon, drops what has not begun, and returns when none runs any more.
    void Stop();
    /// @name Run work that waits for the service on one of the shelf's few threads
    /// Searches have some of their own, for files may come from elsewhere and stall while searches are answered.
    /// @{
    void PostSearch(std::function<void()> work);
    void PostFetch(std::function<void()> work);
    /// @}

    /// A page of results from a position on as JSON: "rows" (EntryRow.h), and the "total" of the query.
    /// @throws FileError  that says why there is none
    std::string PageAsJSON(const std::vector<orvcore::UTF16String>& terms, int first);
    /// Null when there is none of this number.
    Entry Find(std::uint64_t number) const;

    /// @name Fetched from the service when they are not there yet
    /// Paths are empty where the service gives none.
    /// @{
    orvcore::UTF8String PosterOf(const Entry& entry) const;
    std::shared_ptr<orvcapsule::Capsule> CapsuleOf(const Entry& entry) const;
    /// @}

    using OnVideo = std::function<void(const orvcore::UTF8String& path)>;
    /// Gets the preview video and returns at once; `onVideo` is called when it is there, at once or from TellVideos.
    /// Its path is empty where there is none after a while: a later call may get it.
    void FindVideo(const Entry& entry, OnVideo onVideo);
    /// To be called now and then.
    void TellVideos();

private:
    struct Awaited {
        Entry entry;
        std::chrono::steady_clock::time_point end;
        OnVideo onVideo;
    };
    std::uint64_t NumberOf(const Entry& entry);

    const std::string url_;
    const std::shared_ptr<orvcapsule::StockSource> source_;
    const boost::shared_ptr<orvcapsule::CheckCancel> stop_;
    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
    std::unordered_map<std::string, std::uint64_t> numbers_; // by the service's identifier
    std::vector<Awaited> videos_;
    orvtools::http::Workers searches_; // last, as the next: their threads use the others
    orvtools::http::Workers fetches_;
};

} // namespace zelt
