#pragma once

#include <tools/http/Message.h>

#include <cstdint>
#include <string_view>

/// What keeps other pages of the user's browser away from a server on the loopback address: they can send it requests,
/// and by a name of their own that leads to 127.0.0.1 they could read its answers too.
namespace orvtools::http {

/// True when the request names this machine's loopback address ("127.0.0.1", "[::1]", "localhost") and the port in its
/// `Host`: it does not come through a foreign name.
bool IsHostLoopback(const Request& request, std::uint16_t port);

/// True when no other page has sent it: there is neither a foreign `Origin` nor a `Sec-Fetch-Site` of another site. Ask
/// it after IsHostLoopback; programs other than browsers send neither header.
bool IsSameOrigin(const Request& request);

/// Compares in a time that does not tell how much of the secret was right.
bool IsSecret(std::string_view given, std::string_view secret) noexcept;

/// Adds the headers with which a browser runs and loads only what this server itself serves, shows it in no frame, lets
/// no other page use it, and sends its address to nobody. Headers of the same name that are there stay.
void Protect(Response& response);

} // namespace orvtools::http
