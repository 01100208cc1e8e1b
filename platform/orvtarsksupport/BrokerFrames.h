#pragma once

#include <orvtarsksupport/LocalStream.h>

#include <string_view>

namespace orvtarsksupport {

/// @name What goes over a connection to the broker
/// Both ways a length of four bytes, least significant first, and as many bytes after it. A request's bytes are the
/// protocol's number (1), a byte that is 1 when an answer is wanted and 0 otherwise, the name, a NUL and the body; an
/// answer's are its text. A client sends one request and closes the connection when it has the answer.
/// Memory follows what arrives and not what a length promises.
/// @{

/// Whether the message is short enough to be sent.
ORVPLATFORM_API bool FitsFrame(const TarskMessage& message) noexcept;

ORVPLATFORM_API TarskResult WriteRequest(LocalStream& stream, const TarskMessage& message, Deadline deadline);
/// `BadMessage` for bytes that are no request.
ORVPLATFORM_API TarskResult ReadRequest(LocalStream& stream, TarskMessage& message, Deadline deadline);

ORVPLATFORM_API TarskResult WriteReply(LocalStream& stream, std::u8string_view reply, Deadline deadline);
/// `BadReply` for one that is longer than `kMaxReplyBytes` or not UTF-8; `reply` is set on success only.
ORVPLATFORM_API TarskResult ReadReply(LocalStream& stream, orvcore::UTF8String& reply, Deadline deadline);
/// @}

} // namespace orvtarsksupport
