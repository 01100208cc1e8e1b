#pragma once

#include <orvcore/json/JSON.h>
#include <orvtarsksupport/TarskTransport.h>

#include <string_view>

namespace orvtarsksupport {

/// The key under which an object of a payload holds the attributes of its element: an object of scalars. "@" begins no
/// element's name, so the key hides none.
inline constexpr std::u8string_view kXMLToJSONKey_Attributes = u8"@attributes";
/// The usual root element of a message's body.
inline constexpr std::u8string_view kXMLRootTagDefault_Message = u8"Message";

/// Sends a suite message: makes the XML body of the payload and hands it to the transport in use.
///
/// In the body each object is an element, each key the name of an element in it, a list that element once for each of
/// its values, and every other value the element's text (`docs/suite-messages.md` has the details). A text that XML
/// cannot hold (control characters, NUL, ill-formed UTF-8) goes as base 64 in an element with the attribute
/// encoding="base64", so nothing is lost.
/// @param name        the message's name, UTF-8
/// @param payload     the body's content: keys are ASCII names of XML elements, values as in `Variant`
/// @param awaitReply  whether the broker is to answer; without it the send is done when the broker has the bytes
/// @param rootTag     the name of the root element
/// @param reply       receives the broker's answer, UTF-8; empty without one
/// @return how it ended. Never throws for the delivery; `std::bad_alloc` from making the body passes. Any thread.
ORVPLATFORM_API TarskResult SendTarskMessage(std::u8string_view name, const orvcore::serialization::Object& payload,
                                             bool awaitReply, std::u8string_view rootTag, orvcore::UTF8String& reply);

} // namespace orvtarsksupport
