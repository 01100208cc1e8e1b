#include <orvappsupport/detail/Transfer.h>

#include <orvappsupport/detail/ServiceURL.h>

#include <orvcore/tasks/Executor.h>
#include <orvcore/text/shared/ASCII.h>

#include <curl/curl.h>

#include <algorithm>
#include <limits>
#include <random>

namespace orvappsupport::detail {

using namespace std::chrono;

namespace {

constexpr std::size_t kMaxHeaderBytes = std::size_t{256} << 10U;
constexpr std::size_t kMaxErrorBody = std::size_t{64} << 10U;
constexpr const char* kTooLarge = "the answer is too large";
constexpr int kMaxRedirects = 5;
constexpr int kMaxRepetitions = 2;
constexpr milliseconds kFirstPause{250};
constexpr seconds kLongestPause{10};
constexpr long kBufferBytes = 128L << 10U;

bool IsRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool IsBusy(int status)
{
    return status == 429 || status == 503;
}

// In milliseconds as libcurl takes them; it takes 0 for "none".
long ToLong(milliseconds time)
{
    constexpr milliseconds kLongest = hours(24);
    return static_cast<int>(std::clamp(time, milliseconds(1), kLongest).count());
}

// Many clients that were sent away together do not come back together.
milliseconds WithJitter(milliseconds pause)
{
    thread_local std::minstd_rand random{std::random_device()()};
    return pause + milliseconds(std::uniform_int_distribution<milliseconds::rep>(0, pause.count() / 4)(random));
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

template <class T>
T Info(CURL* handle, CURLINFO what)
{
    T value{};
    curl_easy_getinfo(handle, what, &value);
    return value;
}

} // namespace

void Transfer::HandleDeleter::operator()(Handle* handle) const noexcept
{
    curl_easy_cleanup(handle);
}

void Transfer::ListDeleter::operator()(curl_slist* list) const noexcept
{
    curl_slist_free_all(list);
}

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
    } else if (now - lastNews_ > milliseconds(ToLong(request_.options.timeouts.stalled))) {
        Fail(TransferEnd::TimedOut, "no byte has come for too long");
    }
    return ended_;
}

bool Transfer::IsWanted() noexcept
{
    if (!request_.options.progress) {
        return true;
    }
    const auto announced = handle_ ? Info<curl_off_t>(handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T) : 0;
    bool isWanted = false;
    orvcore::OneTimeInvocation ask([&] {
        isWanted = request_.options.progress(received_, static_cast<std::uint64_t>(std::max<curl_off_t>(announced, 0)));
    });
    orvcore::RunTask(ask); // what it throws is the caller's to hear of; the transfer ends
    return isWanted;
}

Transfer::Handle* Transfer::Begin()
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
        deadline_ = Clock::now() + milliseconds(ToLong(request_.options.timeouts.total));
        handle_.reset(curl_easy_init());
        if (!handle_) {
            throw std::bad_alloc();
        }
        SetUp();
    }
    SetUpHop();
    return handle_.get();
}

// What all hops have in common. Certificates are verified unless that is switched off, which nothing here does.
void Transfer::SetUp()
{
    CURL* const handle = handle_.get();
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L); // Redirect decides
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L); // a name that is being looked up does not delay a cancellation
    curl_easy_setopt(handle, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kBufferBytes);
    curl_easy_setopt(handle, CURLOPT_USERAGENT, "orvcapsule");
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, ToLong(request_.options.timeouts.connect));
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE,
                     static_cast<curl_off_t>(std::min(request_.options.maxBytes, kMost)));
    if (!IsDownload()) { // media are packed as they are
        curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, "gzip");
    }
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &OnHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &OnBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
}

void Transfer::SetUpHop()
{
    CURL* const handle = handle_.get();
    response_ = std::make_shared<NetworkResponse>();
    file_.reset();
    headerBytes_ = 0;
    received_ = 0;
    lastNews_ = Clock::now();
    headers_.reset();
    const auto add = [this](const std::string& line) {
        curl_slist* const list = curl_slist_append(headers_.get(), line.c_str());
        if (list == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(headers_.release()); // it is part of the longer one
        headers_.reset(list);
    };
    std::for_each(request_.headers.begin(), request_.headers.end(), add);
    if (HaveSameOrigin(url_, request_.url)) {
        std::for_each(request_.credentials.begin(), request_.credentials.end(), add);
    }
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers_.get());
    curl_easy_setopt(handle, CURLOPT_URL, url_.c_str());
    curl_easy_setopt(handle, CURLOPT_PROXY, IsLoopback(url_) ? "" : nullptr); // none, or what the system says
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, ToLong(ceil<milliseconds>(deadline_ - Clock::now())));
}

// No exception passes through libcurl, which is C.
template <bool (Transfer::*Take)(std::string_view)>
std::size_t Transfer::TakeGuarded(std::string_view data) noexcept
{
    lastNews_ = Clock::now();
    try {
        return (this->*Take)(data) ? data.size() : 0;
    } catch (...) {
        Fail(TransferEnd::NotWritten, "there is no memory for the answer");
        return 0;
    }
}

std::size_t Transfer::OnHeader(char* data, std::size_t /*size*/, std::size_t count, void* self)
{
    return static_cast<Transfer*>(self)->TakeGuarded<&Transfer::TakeHeader>({data, count});
}

bool Transfer::TakeHeader(std::string_view line)
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

std::size_t Transfer::OnBody(char* data, std::size_t /*size*/, std::size_t count, void* self)
{
    return static_cast<Transfer*>(self)->TakeGuarded<&Transfer::TakeBody>({data, count});
}

bool Transfer::TakeBody(std::string_view data)
{
    received_ += data.size();
    if (received_ > request_.options.maxBytes) {
        Fail(TransferEnd::TooLarge, kTooLarge);
        return false;
    }
    response_->statusCode = static_cast<int>(Info<long>(handle_.get(), CURLINFO_RESPONSE_CODE));
    if (!response_->IsSuccess()) { // it only says why
        response_->body += data.substr(0, kMaxErrorBody - std::min(kMaxErrorBody, response_->body.size()));
    } else if (!IsDownload()) {
        response_->body += data;
    } else {
        if (!file_) {
            file_.emplace(*request_.file);
            file_->RemoveLeftBehind();
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
    response_->statusCode = static_cast<int>(Info<long>(handle_.get(), CURLINFO_RESPONSE_CODE));
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
        constexpr curl_off_t kMost = 3600; // more would not fit
        pause = seconds(std::min(kMost, Info<curl_off_t>(handle_.get(), CURLINFO_RETRY_AFTER)));
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
    CURL* const handle = handle_.get();
    std::string coding = response_->GetHeader("Transfer-Encoding");
    std::transform(coding.begin(), coding.end(), coding.begin(), orvcore::ToASCIILower<char>);
    return Info<curl_off_t>(handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T) >= 0 || coding.ends_with("chunked") ||
           Info<long>(handle, CURLINFO_HTTP_VERSION) >= CURL_HTTP_VERSION_2_0;
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
