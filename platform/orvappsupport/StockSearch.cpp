#include <orvappsupport/StockSearch.h>

#include <orvappsupport/detail/SearchAnswer.h>
#include <orvappsupport/detail/ServiceURL.h>
#include <orvappsupport/detail/TransferThread.h>

#include <algorithm>
#include <stdexcept>

// Makes a request of a search and results of its answer; how the request travels is Transfer's. A search that cannot be
// sent still goes through the transfer thread, with an empty URL: it ends there as BadURL, and so its handler is called
// on the same thread and in the same way as any other, not from inside Search (but for executors that have ended).

namespace orvappsupport::search {

using detail::TransferEnd;
using detail::TransferResult;
using orvcore::UTF8String;
using Parameters = std::vector<std::pair<UTF8String, UTF8String>>;

namespace {

// No transfer is begun.
struct BadRequest : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

std::string Join(const std::vector<UTF8String>& texts)
{
    std::string joined;
    for (const UTF8String& text : texts) {
        joined.append(joined.empty() ? "" : ",").append(orvcore::AsNarrow(text));
    }
    return joined;
}

std::string MakeSearchURL(const UTF8String& base, const std::vector<UTF8String>& terms, const Parameters& parameters,
                          const std::vector<UTF8String>& columns, int first, int count)
{
    if (first < 0 || count < 1 || count > kMaxRows) {
        throw BadRequest("a page begins at 0 or later and has 1 to 100 rows");
    }
    std::vector<std::pair<std::string, std::string>> query;
    query.reserve(terms.size() + parameters.size() + 3);
    for (const UTF8String& term : terms) {
        query.emplace_back("term", orvcore::ToNarrow(term));
    }
    for (const auto& [name, value] : parameters) {
        query.emplace_back(orvcore::ToNarrow(name), orvcore::ToNarrow(value));
    }
    if (!columns.empty()) {
        query.emplace_back("columns", Join(columns));
    }
    query.emplace_back("first", std::to_string(first));
    query.emplace_back("count", std::to_string(count));
    const auto isText = [](const auto& pair) {
        return orvcore::IsWellFormedUTF8(pair.first) && orvcore::IsWellFormedUTF8(pair.second);
    };
    if (!std::all_of(query.begin(), query.end(), isText)) {
        throw BadRequest("a term or parameter is not UTF-8");
    }
    std::string url = detail::MakeURL(orvcore::ToNarrow(base), "/v1/search", query);
    if (url.empty()) {
        throw BadRequest("the base URL is not one of http or https, or has a user name, query or fragment");
    }
    if (url.size() > kMaxURLBytes) {
        throw BadRequest("the search is too long");
    }
    return url;
}

// The message does not repeat the value, which may be a secret.
void AddHeader(std::vector<std::string>& headers, const char* name, const UTF8String& value)
{
    if (value.empty()) {
        return;
    }
    const std::string_view text = orvcore::AsNarrow(value);
    const auto isPlain = [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7f; };
    if (!std::all_of(text.begin(), text.end(), isPlain)) {
        throw BadRequest("the connection's value for " + std::string(name, std::string_view(name).find(':')) +
                         " has a control character");
    }
    headers.push_back(std::string(name).append(text));
}

detail::TransferRequest MakeRequest(const StockConnectionSettings& settings, std::string url,
                                    std::function<bool()> isWanted)
{
    detail::TransferRequest request;
    request.url = std::move(url);
    request.headers = {"Accept: application/json"};
    AddHeader(request.headers, "Stock-Product: ", settings.product);
    AddHeader(request.credentials, "Stock-Api-Key: ", settings.apiKey);
    AddHeader(request.credentials, "Authorization: Bearer ", settings.bearerToken);
    request.options.timeouts = settings.timeouts;
    request.options.maxBytes = kMaxAnswerBytes;
    if (isWanted) {
        request.options.progress = [isWanted = std::move(isWanted)](auto, auto) { return isWanted(); };
    }
    return request;
}

Error ErrorOf(TransferEnd end)
{
    switch (end) {
    case TransferEnd::Answered:
        return Error::None;
    case TransferEnd::Cancelled:
        return Error::Cancelled;
    case TransferEnd::BadURL:
        return Error::BadRequest;
    case TransferEnd::NoConnection:
    case TransferEnd::NotWritten:
        return Error::NoConnection;
    case TransferEnd::TimedOut:
        return Error::TimedOut;
    case TransferEnd::BadRedirect:
        return Error::BadRedirect;
    case TransferEnd::TooLarge:
    case TransferEnd::BadBody:
        return Error::BadAnswer;
    }
    return Error::BadAnswer;
}

Error ErrorOfStatus(int status)
{
    switch (status) {
    case 401:
    case 403:
        return Error::NotAuthorised;
    case 429:
    case 503:
        return Error::Busy;
    default:
        return Error::Refused;
    }
}

Error ReadAnswer(const NetworkResponse& response, int count, Results& results)
{
    results.status = response.statusCode;
    if (response.IsSuccess()) {
        return detail::ReadPage(response.body, count, results);
    }
    const std::string message = detail::ReadErrorMessage(response.body);
    results.message = orvcore::ToUTF8(
        message.empty() ? "the service answered with status " + std::to_string(response.statusCode) : message);
    return ErrorOfStatus(response.statusCode);
}

const Value* Find(const Results& results, const Row& row, std::u8string_view column)
{
    const auto found = std::find(results.columns.begin(), results.columns.end(), column);
    const auto index = static_cast<std::size_t>(found - results.columns.begin());
    return index < row.values.size() ? &row.values[index] : nullptr;
}

template <class T>
T Get(const Results& results, const Row& row, std::u8string_view column)
{
    const T* const value = std::get_if<T>(Find(results, row, column)); // which takes null
    return value != nullptr ? *value : T();
}

} // namespace

std::string_view ToText(Error error) noexcept
{
    switch (error) {
    case Error::None:
        return "None";
    case Error::Cancelled:
        return "Cancelled";
    case Error::BadRequest:
        return "BadRequest";
    case Error::NoConnection:
        return "NoConnection";
    case Error::TimedOut:
        return "TimedOut";
    case Error::NotAuthorised:
        return "NotAuthorised";
    case Error::Busy:
        return "Busy";
    case Error::Refused:
        return "Refused";
    case Error::BadRedirect:
        return "BadRedirect";
    case Error::BadAnswer:
        return "BadAnswer";
    }
    return "Unknown";
}

UTF8String Results::GetText(const Row& row, std::u8string_view column) const
{
    return UTF8String(Get<std::u8string_view>(*this, row, column));
}

std::uint64_t Results::GetNumber(const Row& row, std::u8string_view column) const
{
    return Get<std::uint64_t>(*this, row, column);
}

std::vector<UTF8String> Results::GetList(const Row& row, std::u8string_view column) const
{
    const auto list = Get<std::span<const std::u8string_view>>(*this, row, column);
    return {list.begin(), list.end()};
}

void Search(const std::vector<UTF8String>& terms, const Parameters& parameters, const std::vector<UTF8String>& columns,
            const std::shared_ptr<ClientStockConnection>& connection, int first, int count, Handler handler,
            std::function<bool()> isWanted)
{
    detail::TransferRequest request;
    std::string refusal;
    try {
        if (!connection) {
            throw BadRequest("there is no connection");
        }
        const StockConnectionSettings settings = connection->GetSettings();
        request = MakeRequest(settings, MakeSearchURL(settings.baseURL, terms, parameters, columns, first, count),
                              std::move(isWanted));
    } catch (const BadRequest& bad) {
        refusal = bad.what();
    }
    auto tell = [columns = columns, count, refusal,
                 handler = std::move(handler)](const TransferResult& result) mutable {
        Results results;
        results.columns = std::move(columns); // it is told once
        Error error = ErrorOf(result.end);
        if (result.response) {
            error = ReadAnswer(*result.response, count, results);
        } else {
            results.message = orvcore::ToUTF8(refusal.empty() ? result.reason : refusal);
        }
        if (handler) {
            handler(error, results);
        }
    };
    detail::TransferThread::The().Submit(std::make_unique<detail::Transfer>(std::move(request), std::move(tell)));
}

} // namespace orvappsupport::search
