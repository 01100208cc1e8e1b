#pragma once

namespace orvtools::http::detail {

/// Whether a listener sets SO_REUSEADDR. Where that lets it take a port whose last connections are still ending, as
/// after a restart, it does; where it would let two programs listen at one port, it does not.
extern const bool kReuseAddress;

} // namespace orvtools::http::detail
