#include <orvtarsksupport/SendTarskMessage.h>

#include <orvtarsksupport/detail/MessageXML.h>

namespace orvtarsksupport {

namespace {

bool IsMessageName(std::u8string_view name)
{
    return !name.empty() && name.find(u8'\0') == name.npos && orvcore::IsWellFormedUTF8(orvcore::AsNarrow(name));
}

} // namespace

TarskResult SendTarskMessage(std::u8string_view name, const orvcore::serialization::Object& payload, bool awaitReply,
                             std::u8string_view rootTag, orvcore::UTF8String& reply)
{
    reply.clear();
    // A NUL ends the name in the frame: what stands behind it would be read as the body.
    if (!IsMessageName(name)) {
        return {TarskStatus::BadMessage};
    }
    TarskMessage message{orvcore::UTF8String(name), {}, awaitReply};
    try {
        message.body = detail::MessageXML(rootTag, payload);
    } catch (const orvcore::serialization::json_write_exception&) {
        return {TarskStatus::BadMessage};
    }
    try {
        // Nothing of the delivery is thrown, whatever the transport does: hosts send from places that expect no
        // failure.
        return GetTarskTransport()->Send(message, reply);
    } catch (const std::system_error& error) {
        return {TarskStatus::Failed, error.code()};
    } catch (...) { // a host's transport may throw anything
        return {TarskStatus::Failed};
    }
}

} // namespace orvtarsksupport
