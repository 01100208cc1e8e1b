#include <orvappsupport/detail/EasyHandle.h>

#include <orvappsupport/detail/ServiceURL.h>

#include <curl/curl.h>

#include <algorithm>
#include <limits>
#include <new>

// libcurl's options for one transfer, set once but for those of each hop. Why some are what they are:
//
// - redirects are off: the transfer follows them by hand, and takes the credentials off where the host changes;
// - no signals: libcurl would use SIGALRM for time-outs of name look-ups, in a process that is not ours;
// - a quick exit: the thread that looks a name up is left alone at a cancellation, which may take as long as the
//   system's resolver likes;
// - revoked certificates are looked for as well as that is possible: where the list cannot be reached, it goes on;
// - no proxy for this machine's own addresses: a company's proxy would look for the service on its own machine;
// - the size that an answer announces is refused early here, what really comes is counted by the taker.

namespace orvappsupport::detail {

namespace {

constexpr long kBufferBytes = 128L << 10U;

// In milliseconds as libcurl takes them; it takes 0 for "none".
long ToLong(std::chrono::milliseconds time)
{
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24);
    return static_cast<int>(std::clamp(time, std::chrono::milliseconds(1), kLongest).count());
}

template <class T>
T Info(CURL* handle, CURLINFO what)
{
    T value{};
    curl_easy_getinfo(handle, what, &value);
    return value;
}

std::size_t OnHeader(char* data, std::size_t /*size*/, std::size_t count, void* taker)
{
    return static_cast<AnswerTaker*>(taker)->TakeHeader({data, count}) ? count : 0;
}

std::size_t OnBody(char* data, std::size_t /*size*/, std::size_t count, void* taker)
{
    return static_cast<AnswerTaker*>(taker)->TakeBody({data, count}) ? count : 0;
}

} // namespace

void EasyHandle::HandleDeleter::operator()(Native* handle) const noexcept
{
    curl_easy_cleanup(handle);
}

void EasyHandle::ListDeleter::operator()(curl_slist* list) const noexcept
{
    curl_slist_free_all(list);
}

// Certificates are verified unless that is switched off, which nothing here does.
EasyHandle::EasyHandle(AnswerTaker& taker, const Settings& settings)
    : handle_(curl_easy_init())
{
    CURL* const handle = handle_.get();
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L); // the transfer decides
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L); // a name that is being looked up does not delay a cancellation
    curl_easy_setopt(handle, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kBufferBytes);
    curl_easy_setopt(handle, CURLOPT_USERAGENT, "orvcapsule");
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, ToLong(settings.connectTimeout));
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(std::min(settings.maxBytes, kMost)));
    if (settings.unpack) {
        curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, "gzip");
    }
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &OnHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, &taker);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &OnBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &taker);
}

void EasyHandle::Prepare(const Request& request)
{
    CURL* const handle = handle_.get();
    std::unique_ptr<curl_slist, ListDeleter> headers;
    for (const std::string& line : request.headers) {
        curl_slist* const longer = curl_slist_append(headers.get(), line.c_str());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(headers.release()); // it is part of the longer one
        headers.reset(longer);
    }
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers.get());
    headers_ = std::move(headers);
    curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROXY, IsLoopback(request.url) ? "" : nullptr); // none, or what the system says
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, ToLong(request.timeout));
}

int EasyHandle::Status() const
{
    return static_cast<int>(Info<long>(handle_.get(), CURLINFO_RESPONSE_CODE));
}

std::int64_t EasyHandle::AnnouncedBytes() const
{
    return Info<curl_off_t>(handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
}

bool EasyHandle::HasOwnEnd() const
{
    return Info<long>(handle_.get(), CURLINFO_HTTP_VERSION) >= CURL_HTTP_VERSION_2_0;
}

std::chrono::seconds EasyHandle::RetryAfter() const
{
    constexpr curl_off_t kMost = 3600; // more would not fit a smaller unit
    return std::chrono::seconds(std::min(kMost, Info<curl_off_t>(handle_.get(), CURLINFO_RETRY_AFTER)));
}

} // namespace orvappsupport::detail
