#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <string_view>

namespace orvcapsule {

/// The name of the suite message that tells of one use of a font.
inline constexpr std::u8string_view kFontUsesMessageName = u8"tarsk.SuiteMessage.kerbel.FontUses";

/// Tells the font-sync service of the desktop suite that a document uses a font. One call tells of one use. The values
/// are UTF-8, taken as they are (any character, empty ones too) and arrive so.
///
/// There is no answer, and a message that cannot be delivered is dropped silently: a host that wants to know wraps the
/// transport (`orvtarsksupport/TarskTransport.h`). The call blocks until the broker has answered; with the embedded
/// transport at most for `kBrokerTimeout` (`orvtarsksupport/BrokerTransport.h`). Any thread.
/// @param syncFontID  the font, by its identifier in the service
/// @param documentID  the document
/// @param usedAt      when, in the form that the service expects
/// @param operation   what was done
/// @throws std::bad_alloc only
ORVCAPSULE_API void SendFontUsageMessage(const orvcore::UTF8String& syncFontID, const orvcore::UTF8String& documentID,
                                         const orvcore::UTF8String& usedAt, const orvcore::UTF8String& operation);

} // namespace orvcapsule
