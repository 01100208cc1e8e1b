#pragma once

#include <orvcore/Export.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvappsupport::detail {

/// @name URLs, as text in ASCII or UTF-8
/// @{

/// `http:` or `https:` with a host and without a user name.
ORVPLATFORM_API bool IsWebURL(const std::string& url);

/// Percent-encodes all but letters, digits, "-", ".", "_" and "~".
ORVPLATFORM_API std::string Escape(std::string_view text);

/// `path` and a query of name and value each, behind a base URL with or without a "/" at its end; empty when the base
/// URL is none, or has a query or a fragment.
ORVPLATFORM_API std::string MakeURL(const std::string& base, std::string_view path,
                                    const std::vector<std::pair<std::string, std::string>>& query);

/// Where a redirect from `url` leads; empty when it may not be followed: to another scheme than http and https, from
/// https to http, or to what is no URL.
ORVPLATFORM_API std::optional<std::string> FollowRedirect(const std::string& url, const std::string& location);

/// Whether both have the same scheme, host and port. False for what is no URL.
ORVPLATFORM_API bool HaveSameOrigin(const std::string& a, const std::string& b);

/// Whether the host is this machine by its name or number.
ORVPLATFORM_API bool IsLoopback(const std::string& url);
/// @}

} // namespace orvappsupport::detail
