#pragma once

#include <orvcore/text/Strings.h>

#include <memory>
#include <string>
#include <system_error>

namespace orvtarsksupport {

/// How a send ended.
enum class TarskStatus {
    Delivered,     ///< the broker has the message and, where one was asked for, has answered
    NoBroker,      ///< nothing listens at the broker's place
    UnsafeFolder,  ///< the socket's folder belongs to another user, or others may write there; nothing was sent
    ForeignBroker, ///< what listens belongs to another user, or is no socket or pipe; nothing was sent
    TimedOut,      ///< the time ran out; the broker may have got a part of the message or all of it
    BrokenOff,     ///< the broker closed the connection before the end
    BadReply,      ///< the answer is longer than `kMaxReplyBytes` or is not UTF-8
    BadMessage,    ///< the message has no form that can be sent: a name, a key, a value or the size; nothing was sent
    Failed,        ///< the system or the host's transport failed; `cause` has the system's reason where there is one
};

/// The longest message, name and body together, and the longest answer, in bytes.
inline constexpr std::size_t kMaxMessageBytes = std::size_t{16} << 20U;
inline constexpr std::size_t kMaxReplyBytes = std::size_t{1} << 20U;

/// What became of a message; true when it was delivered.
struct TarskResult {
    TarskStatus status = TarskStatus::Delivered;
    std::error_code cause = {}; ///< of `Failed` only

    explicit operator bool() const noexcept
    {
        return status == TarskStatus::Delivered;
    }
    /// Why it was not delivered, for a log: plain English without a full stop.
    ORVPLATFORM_API std::string Message() const;
};

/// A message on its way.
struct TarskMessage {
    orvcore::UTF8String name; ///< well-formed, not empty, without NUL
    orvcore::UTF8String body; ///< an XML document
    bool awaitReply = false;  ///< whether the broker is to answer
};

/// Takes messages to the broker. A host installs its own to use another channel, or wraps the one in use to see how
/// each send ends.
class ORVPLATFORM_API ITarskTransport {
public:
    virtual ~ITarskTransport();
    /// Sends one message; `reply`, empty before, receives the answer. Called from any thread, several at a time, and
    /// may block for as long as the transport allows. What it throws counts as `Failed`.
    virtual TarskResult Send(const TarskMessage& message, orvcore::UTF8String& reply) = 0;
};

/// Installs the transport of all later sends; empty for the embedded one (`MakeBrokerTransport()`), which is the
/// default. A send in progress keeps the one it began with. Any thread.
ORVPLATFORM_API void SetTarskTransport(std::shared_ptr<ITarskTransport> transport);
/// The transport in use, never empty. Any thread.
ORVPLATFORM_API std::shared_ptr<ITarskTransport> GetTarskTransport();

} // namespace orvtarsksupport
