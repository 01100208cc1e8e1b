#include <orvtarsksupport/BrokerFrames.h>

#include <orvcore/text/shared/LittleEndian.h>

#include <algorithm>
#include <array>
#include <string>

namespace orvtarsksupport {

namespace {

constexpr std::size_t kLengthBytes = 4;
constexpr std::size_t kHeaderBytes = 2; // protocol and wish for an answer
constexpr char kProtocol = 1;

// A frame's beginning: the length of what follows.
std::string BeginFrame(std::size_t length)
{
    std::string frame;
    frame.reserve(kLengthBytes + length);
    orvcore::AppendLittleEndian(frame, length, kLengthBytes);
    return frame;
}

// Reads one frame; `tooLong` is the status for one of more than `limit` bytes.
TarskResult ReadFrame(LocalStream& stream, std::size_t limit, TarskStatus tooLong, std::string& bytes,
                      Deadline deadline)
{
    std::array<char, kLengthBytes> header{};
    if (const TarskResult result = stream.Read(header, deadline); !result) {
        return result;
    }
    const std::size_t length = orvcore::LoadLittleEndian(header.data(), header.size());
    // Before a byte of it is read: a sender that promises too much is not listened to.
    if (length > limit) {
        return {tooLong};
    }
    // The length is the other side's claim: memory grows with what really comes.
    constexpr std::size_t kStep = std::size_t{1} << 16U;
    while (bytes.size() < length) {
        const std::size_t before = bytes.size();
        bytes.resize(before + std::min(kStep, length - before));
        if (const TarskResult result = stream.Read(std::span(bytes).subspan(before), deadline); !result) {
            return result;
        }
    }
    return {};
}

} // namespace

bool FitsFrame(const TarskMessage& message) noexcept
{
    return message.name.size() <= kMaxMessageBytes && message.body.size() <= kMaxMessageBytes - message.name.size();
}

TarskResult WriteRequest(LocalStream& stream, const TarskMessage& message, Deadline deadline)
{
    std::string frame = BeginFrame(kHeaderBytes + message.name.size() + 1 + message.body.size());
    frame += kProtocol;
    frame += static_cast<char>(message.awaitReply ? 1 : 0);
    frame += orvcore::AsNarrow(message.name);
    frame += '\0';
    frame += orvcore::AsNarrow(message.body);
    return stream.Write(frame, deadline);
}

TarskResult ReadRequest(LocalStream& stream, TarskMessage& message, Deadline deadline)
{
    std::string bytes;
    const std::size_t limit = kHeaderBytes + kMaxMessageBytes + 1;
    if (const TarskResult result = ReadFrame(stream, limit, TarskStatus::BadMessage, bytes, deadline); !result) {
        return result;
    }
    // The name ends at the first NUL, and has none itself (SendTarskMessage refuses it); the body may hold any byte.
    const std::size_t end = bytes.find('\0', std::min(bytes.size(), kHeaderBytes));
    if (end == bytes.npos || bytes[0] != kProtocol) {
        return {TarskStatus::BadMessage};
    }
    message.awaitReply = bytes[1] != 0;
    message.name = orvcore::ToUTF8(std::string_view(bytes).substr(kHeaderBytes, end - kHeaderBytes));
    message.body = orvcore::ToUTF8(std::string_view(bytes).substr(end + 1));
    return {};
}

TarskResult WriteReply(LocalStream& stream, std::u8string_view reply, Deadline deadline)
{
    std::string frame = BeginFrame(reply.size());
    frame += orvcore::AsNarrow(reply);
    return stream.Write(frame, deadline);
}

TarskResult ReadReply(LocalStream& stream, orvcore::UTF8String& reply, Deadline deadline)
{
    std::string bytes;
    if (const TarskResult result = ReadFrame(stream, kMaxReplyBytes, TarskStatus::BadReply, bytes, deadline); !result) {
        return result;
    }
    if (!orvcore::IsWellFormedUTF8(bytes)) {
        return {TarskStatus::BadReply};
    }
    reply = orvcore::ToUTF8(bytes);
    return {};
}

} // namespace orvtarsksupport
