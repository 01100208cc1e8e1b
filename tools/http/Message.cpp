#include <tools/http/Message.h>

#include <tools/http/detail/Text.h>

#include <algorithm>

namespace orvtools::http {

const std::string* Request::FindHeader(std::string_view name) const noexcept
{
    const auto found = std::find_if(headers.begin(), headers.end(),
                                    [name](const auto& header) { return detail::EqualsNoCase(header.first, name); });
    return found == headers.end() ? nullptr : &found->second;
}

const std::string* Request::FindQuery(std::string_view name) const noexcept
{
    const auto found =
        std::find_if(query.begin(), query.end(), [name](const auto& value) { return value.first == name; });
    return found == query.end() ? nullptr : &found->second;
}

Response TextResponse(unsigned status, std::string_view contentType, std::string body)
{
    Response response;
    response.status = status;
    response.headers = {{"Content-Type", std::string(contentType)}};
    response.body = std::move(body);
    return response;
}

Response ErrorResponse(unsigned status, std::string_view text)
{
    return TextResponse(status, "text/plain; charset=utf-8", std::string(text) + '\n');
}

} // namespace orvtools::http
