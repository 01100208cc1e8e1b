#include <orvappsupport/detail/Transfer.h>

#include <orvappsupport/detail/ServiceURL.h>

#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/shared/ASCII.h>

#include <curl/curl.h>

#include <algorithm>
#include <random>

// One transfer is a chain of requests (hops): the first, those after redirects, and repetitions for a service that is
// busy. Begin prepares a hop, libcurl carries it out, Finish judges its end; when that says "not ended", Begin is
// called again at ResumeTime. `ended_` and `result_` are set once, by whoever comes first: the answer, a limit, a
// time-out, the caller's no. After that the thread takes the transfer out of libcurl and calls Tell.
//
// Limits: five redirects; two repetitions, after 250 and 500 ms and up to a quarter more, or after what Retry-After
// says, up to ten seconds, and never beyond the total time; 256 KB of headers, which are kept in memory; of an answer
// that is no success 64 KB, which is enough to say why. An announced length makes at most 1 MB be reserved: it may be a
// lie.
//
// A body of success goes to the response or, of a download, to a private file, which takes its place only when the
// answer was whole (IsWhole): an answer that ends with its connection may have been cut short anywhere.

namespace orvappsupport::detail {

using namespace std::chrono;

namespace {

constexpr std::size_t kMaxHeaderBytes = std::size_t{256} << 10U;
constexpr std::size_t kMaxErrorBody = std::size_t{64} << 10U;
constexpr const char* kTooLarge = "the answer is too large";
constexpr std::int64_t kMostReserved = std::int64_t{1} << 20U;
constexpr int kMaxRedirects = 5;
constexpr int kMaxRepetitions = 2;
constexpr milliseconds kFirstPause{250};
constexpr seconds kLongestPause{10};

bool IsRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool IsBusy(int status)
{
    return status == 429 || status == 503;
}

// Points of time do not overflow so.
milliseconds Sane(milliseconds time)
{
    return std::clamp<milliseconds>(time, milliseconds(1), hours(24));
}

// Many clients that were sent away together do not come back together.
milliseconds WithJitter(milliseconds pause)
{
    thread_local std::minstd_rand random{std::random_device()()};
    return pause + milliseconds(std::uniform_int_distribution<milliseconds::rep>(0, pause.count() / 4)(random));
}

// Removes what killed downloads left beside the file; of many into one folder the first one does.
void TidyFolder(const std::filesystem::path& file)
{
    // Only the transfer thread comes here, and another one when that has ended. No object of a thread's own: see
    // Guid::Create.
    static orvcore::NoDestructor<std::filesystem::path> tidied;
    if (std::filesystem::path folder = file.parent_path(); folder != *tidied) {
        orvcore::RemoveLeftBehind(folder, hours(24));
        *tidied = std::move(folder);
    }
}

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kSpace);
    return begin == text.npos ? std::string_view() : text.substr(begin, text.find_last_not_of(kSpace) - begin + 1);
}

TransferEnd EndOf(CURLcode code)
{
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return TransferEnd::TimedOut;
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
        return TransferEnd::BadURL;
    case CURLE_FILESIZE_EXCEEDED:
        return TransferEnd::TooLarge;
    case CURLE_PARTIAL_FILE:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_WRITE_ERROR: // by libcurl itself, unpacking
        return TransferEnd::BadBody;
    default:
        return TransferEnd::NoConnection;
    }
}

} // namespace

Transfer::Transfer(TransferRequest request, TransferHandler handler)
    : request_(std::move(request))
    , handler_(std::move(handler))
{
}

Transfer::~Transfer() = default;

bool Transfer::MustEnd(Clock::time_point now) noexcept
{
    if (!IsWanted()) {
        Fail(TransferEnd::Cancelled);
    } else if (now - lastNews_ > Sane(request_.options.timeouts.stalled)) {
        Fail(TransferEnd::TimedOut, "no byte has come for too long");
    }
    return ended_;
}

bool Transfer::IsWanted() noexcept
{
    if (!request_.options.progress) {
        return true;
    }
    const std::int64_t announced = handle_ ? std::max<std::int64_t>(handle_->AnnouncedBytes(), 0) : 0;
    bool isWanted = false;
    orvcore::OneTimeInvocation ask(
        [&] { isWanted = request_.options.progress(received_, static_cast<std::uint64_t>(announced)); });
    orvcore::RunTask(ask); // what it throws is the caller's to hear of; the transfer ends
    return isWanted;
}

EasyHandle::Native* Transfer::Begin()
{
    if (ended_) {
        return nullptr;
    }
    if (!handle_) {
        if (!IsWebURL(request_.url)) {
            Fail(TransferEnd::BadURL, "the URL is none of http or https");
            return nullptr;
        }
        url_ = request_.url;
        deadline_ = Clock::now() + Sane(request_.options.timeouts.total);
        // Media are packed as they are.
        handle_ = std::make_unique<EasyHandle>(
            static_cast<AnswerTaker&>(*this),
            EasyHandle::Settings{request_.options.timeouts.connect, request_.options.maxBytes, !IsDownload()});
    }
    response_ = std::make_shared<NetworkResponse>();
    file_.reset();
    headerBytes_ = 0;
    received_ = 0;
    lastNews_ = Clock::now();
    std::vector<std::string> headers = request_.headers;
    if (url_ == request_.url || HaveSameOrigin(url_, request_.url)) {
        headers.insert(headers.end(), request_.credentials.begin(), request_.credentials.end());
    }
    handle_->Prepare({url_, headers, ceil<milliseconds>(deadline_ - Clock::now())});
    return handle_->Get();
}

bool Transfer::TakeHeader(std::string_view line) noexcept
{
    return Guard([&] { return NoteHeader(line); });
}

bool Transfer::TakeBody(std::string_view data) noexcept
{
    return Guard([&] { return StoreBody(data); });
}

// No exception passes through libcurl, which is C.
template <class Take>
bool Transfer::Guard(Take&& take) noexcept
{
    lastNews_ = Clock::now();
    try {
        return take();
    } catch (...) {
        Fail(TransferEnd::NotWritten, "there is no memory for the answer");
        return false;
    }
}

bool Transfer::NoteHeader(std::string_view line)
{
    headerBytes_ += line.size();
    if (headerBytes_ > kMaxHeaderBytes) {
        Fail(TransferEnd::TooLarge, "the answer's headers are too long");
        return false;
    }
    if (line.starts_with("HTTP/")) { // the next answer, after an interim one
        response_->headers.clear();
    } else if (const std::size_t colon = line.find(':'); colon != line.npos) {
        response_->headers.emplace_back(Trim(line.substr(0, colon)), Trim(line.substr(colon + 1)));
    }
    return true;
}

bool Transfer::StoreBody(std::string_view data)
{
    received_ += data.size();
    if (received_ > request_.options.maxBytes) {
        Fail(TransferEnd::TooLarge, kTooLarge);
        return false;
    }
    response_->statusCode = handle_->Status();
    if (!response_->IsSuccess()) { // it only says why
        response_->body += data.substr(0, kMaxErrorBody - std::min(kMaxErrorBody, response_->body.size()));
    } else if (!IsDownload()) {
        if (response_->body.empty()) {
            const std::int64_t announced = handle_->AnnouncedBytes(); // which may be a lie
            response_->body.reserve(static_cast<std::size_t>(std::clamp<std::int64_t>(announced, 0, kMostReserved)));
        }
        response_->body += data;
    } else {
        if (!file_) {
            file_.emplace(*request_.file);
            TidyFolder(*request_.file);
        }
        if (std::error_code error; !file_->Write(data.data(), data.size(), error)) {
            Fail(TransferEnd::NotWritten, error.message());
            return false;
        }
    }
    return true;
}

bool Transfer::Finish(int curlCode)
{
    const auto code = static_cast<CURLcode>(curlCode);
    if (!ended_ && code != CURLE_OK) {
        Fail(EndOf(code), code == CURLE_FILESIZE_EXCEEDED ? kTooLarge : curl_easy_strerror(code));
    }
    return ended_ || Answer();
}

bool Transfer::Answer()
{
    response_->statusCode = handle_->Status();
    resume_ = Clock::now();
    lastNews_ = Clock::time_point::max();
    if (IsRedirect(response_->statusCode) && !response_->GetHeader("Location").empty()) {
        return !Redirect();
    }
    if (IsBusy(response_->statusCode) && PauseBeforeRepeating()) {
        return false;
    }
    if (response_->IsSuccess() && !IsWhole()) {
        Fail(TransferEnd::BadBody, "the answer does not tell where it ends");
        return true;
    }
    if (response_->IsSuccess() && IsDownload()) {
        StoreFile();
    }
    if (!ended_) {
        ended_ = true;
        result_ = {TransferEnd::Answered, std::move(response_), {}};
    }
    return true;
}

bool Transfer::Redirect()
{
    const auto next = FollowRedirect(url_, response_->GetHeader("Location"));
    if (!next || ++redirects_ > kMaxRedirects) {
        Fail(TransferEnd::BadRedirect, next ? "there are too many redirects" : "it redirects to where is not followed");
        return false;
    }
    url_ = *next;
    return true;
}

bool Transfer::PauseBeforeRepeating()
{
    if (repetitions_ == kMaxRepetitions) {
        return false;
    }
    milliseconds pause = WithJitter(kFirstPause * (1 << repetitions_));
    if (!response_->GetHeader("Retry-After").empty()) {
        pause = handle_->RetryAfter();
    }
    if (pause > kLongestPause || resume_ + pause >= deadline_) {
        return false;
    }
    ++repetitions_;
    resume_ += pause;
    return true;
}

// HTTP/2 has an end of its own; libcurl has seen to it, to the announced length and to the last chunk.
bool Transfer::IsWhole() const
{
    std::string coding = response_->GetHeader("Transfer-Encoding");
    std::transform(coding.begin(), coding.end(), coding.begin(), orvcore::ToASCIILower<char>);
    return handle_->AnnouncedBytes() >= 0 || coding.ends_with("chunked") || handle_->HasOwnEnd();
}

void Transfer::StoreFile()
{
    if (!file_) {
        file_.emplace(*request_.file); // an empty one
    }
    std::error_code error;
    if (!file_->Commit(orvcore::Durability::Cached, error)) {
        Fail(TransferEnd::NotWritten, error.message());
    }
}

void Transfer::Fail(TransferEnd end, std::string reason)
{
    if (!ended_) {
        ended_ = true;
        result_ = {end, nullptr, std::move(reason)};
    }
}

void Transfer::DropFile() noexcept
{
    file_.reset();
}

void Transfer::Tell() noexcept
{
    DropFile(); // nobody finds the private file beside the result
    orvcore::OneTimeInvocation call([&] { std::exchange(handler_, {})(std::move(result_)); });
    orvcore::RunTask(call);
}

} // namespace orvappsupport::detail
