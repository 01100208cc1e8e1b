#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct curl_slist;

namespace orvappsupport::detail {

/// Takes what comes of an answer. A false ends the transfer.
class AnswerTaker {
public:
    virtual ~AnswerTaker() = default;
    virtual bool TakeHeader(std::string_view line) noexcept = 0;
    virtual bool TakeBody(std::string_view data) noexcept = 0;
};

/// libcurl's handle of one transfer, which makes one request after the other.
class EasyHandle {
public:
    using Native = void; // CURL

    struct Settings {
        std::chrono::milliseconds connectTimeout;
        std::uint64_t maxBytes; ///< announced; what comes is the taker's to count
        bool unpack;            ///< whether the body may come packed
    };
    /// One request.
    struct Request {
        const std::string& url;
        const std::vector<std::string>& headers; ///< "Name: value"
        std::chrono::milliseconds timeout;
    };

    /// @param taker outlives the handle
    EasyHandle(AnswerTaker& taker, const Settings& settings);
    void Prepare(const Request& request);

    Native* Get() const noexcept
    {
        return handle_.get();
    }

    /// @name Of the answer
    /// @{
    int Status() const;
    std::int64_t AnnouncedBytes() const; ///< negative: unknown
    bool HasOwnEnd() const;              ///< its protocol tells where an answer ends (HTTP/2 and later)
    std::chrono::seconds RetryAfter() const;
    /// @}

private:
    struct HandleDeleter {
        void operator()(Native* handle) const noexcept;
    };
    struct ListDeleter {
        void operator()(curl_slist* list) const noexcept;
    };

    const std::unique_ptr<Native, HandleDeleter> handle_;
    std::unique_ptr<curl_slist, ListDeleter> headers_;
};

} // namespace orvappsupport::detail
