#pragma once

#include <orvtarsksupport/TarskTransport.h>

#include <chrono>
#include <memory>
#include <string>

namespace orvtarsksupport {

/// The environment variable that names the broker's socket or pipe in place of the default one.
inline constexpr const char* kBrokerVariable = "ORV_BROKER";
/// The default time-out of one send.
inline constexpr std::chrono::milliseconds kBrokerTimeout{1000};

/// Where this user's broker listens unless the environment says otherwise: the socket "orv-broker/broker.sock" in the
/// user's runtime folder, on Windows the pipe `\\.\pipe\orv-broker-` with the user's security identifier. UTF-8.
ORVPLATFORM_API orvcore::UTF8String DefaultBrokerPath();

/// The embedded transport: speaks to the broker over a local stream socket, on Windows over a named pipe, one
/// connection a message (`docs/suite-messages.md` has the protocol). Before anything is sent it makes sure that the
/// broker belongs to this user or the system. Any number of threads.
/// @param path     the broker's socket or pipe, UTF-8. Empty: what `ORV_BROKER` names at the time of each send, else
///                 `DefaultBrokerPath()`
/// @param timeout  the limit of the whole call: connecting, writing and the answer
ORVPLATFORM_API std::shared_ptr<ITarskTransport>
MakeBrokerTransport(orvcore::UTF8String path = {}, std::chrono::milliseconds timeout = kBrokerTimeout);

} // namespace orvtarsksupport
