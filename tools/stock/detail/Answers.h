#pragma once

#include <tools/http/Message.h>

#include <string_view>

namespace orvtools::stock::detail {

inline constexpr std::string_view kSearch = "/v1/search";
inline constexpr std::string_view kAssets = "/v1/assets/";

/// An answer that is no success, with the body that the contract gives it.
http::Response ErrorAnswer(unsigned status, std::string_view message);

} // namespace orvtools::stock::detail
