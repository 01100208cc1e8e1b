#pragma once

#include <orvappsupport/StockTransfers.h>
#include <orvappsupport/detail/EasyHandle.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/Paths.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvappsupport::detail {

/// How a transfer ended.
enum class TransferEnd {
    Answered, ///< with whatever status; a body of success is whole, and in its file where there is one
    Cancelled,
    BadURL,
    NoConnection,
    TimedOut,
    BadRedirect,
    TooLarge,
    BadBody,    ///< cut short, or badly packed
    NotWritten, ///< the file
};

/// What is to be fetched.
struct TransferRequest {
    std::string url;                           ///< empty, or no URL: ends as BadURL
    std::vector<std::string> headers;          ///< "Name: value"
    std::vector<std::string> credentials;      ///< the same; sent to the origin of `url` only
    std::optional<std::filesystem::path> file; ///< where a body of success goes; none: into the response
    TransferOptions options;
};

struct TransferResult {
    TransferEnd end = TransferEnd::Answered;
    std::shared_ptr<NetworkResponse> response; ///< of an answer; without the body when that went to a file
    std::string reason;                        ///< when there is none: why, plain English without a full stop
};

using TransferHandler = std::function<void(TransferResult)>;

/// One request with its redirects and repetitions, as a transfer of libcurl's. Used by the client's thread only, but
/// for the constructor.
class Transfer final : private AnswerTaker {
public:
    using Clock = std::chrono::steady_clock;

    Transfer(TransferRequest request, TransferHandler handler);
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer() override;

    bool IsDownload() const noexcept
    {
        return request_.file.has_value();
    }
    /// Tells the caller's progress function; true when the transfer has ended, because that said so or no byte has come
    /// for too long.
    bool MustEnd(Clock::time_point now) noexcept;

    /// Begins, or goes on after a redirect or a pause: what is to be given to the multi handle next. Null when the
    /// transfer has ended instead.
    EasyHandle::Native* Begin();
    /// Takes note of libcurl's end of what Begin gave; true when the transfer has ended. Otherwise it goes on with
    /// Begin at ResumeTime.
    bool Finish(int curlCode);
    Clock::time_point ResumeTime() const noexcept
    {
        return resume_;
    }

    /// Ends the transfer without an answer, unless it has ended.
    void Fail(TransferEnd end, std::string reason = {});
    /// Gives an unfinished file up.
    void DropFile() noexcept;
    /// Calls the handler, once, and lets go of it.
    void Tell() noexcept;

    /// What Begin gave.
    EasyHandle::Native* GetHandle() const noexcept
    {
        return handle_->Get();
    }

private:
    bool TakeHeader(std::string_view line) noexcept override;
    bool TakeBody(std::string_view data) noexcept override;
    template <class Take>
    bool Guard(Take&& take) noexcept;
    bool NoteHeader(std::string_view line);
    bool StoreBody(std::string_view data);
    bool IsWanted() noexcept;
    bool Answer();
    bool Redirect();
    bool PauseBeforeRepeating();
    bool IsWhole() const;
    void StoreFile();

    TransferRequest request_;
    TransferHandler handler_;
    std::unique_ptr<EasyHandle> handle_;
    std::string url_; // of the hop under way
    Clock::time_point deadline_;
    Clock::time_point resume_;
    Clock::time_point lastNews_ = Clock::time_point::max(); // of a hop under way: its begin or the last byte
    std::shared_ptr<NetworkResponse> response_;
    std::optional<orvcore::AtomicFile> file_;
    std::size_t headerBytes_ = 0;
    std::uint64_t received_ = 0;
    int redirects_ = 0;
    int repetitions_ = 0;
    bool ended_ = false;
    TransferResult result_;
};

} // namespace orvappsupport::detail
