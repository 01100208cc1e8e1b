#include <fontusage/FontUsageMessage.h>

#include <orvtarsksupport/SendTarskMessage.h>

#include <utility>

namespace orvcapsule {

namespace {

using orvcore::UTF8String;
using orvcore::serialization::AddToObject;
using orvcore::serialization::Object;
using orvcore::serialization::Variant;

// {"type": "kerbel.FontUses", "uses": {attributes: {"type": "array"}, "use": {...}}}
// The receiver takes the message as XML: the attribute tells it that `uses` is a list, which one element alone would
// not show.
Variant MakePayload(const UTF8String& syncFontID, const UTF8String& documentID, const UTF8String& usedAt,
                    const UTF8String& operation)
{
    Variant use;
    AddToObject(use, u8"sync_font_id", syncFontID);
    AddToObject(use, u8"document_id", documentID);
    AddToObject(use, u8"used_at", usedAt);
    AddToObject(use, u8"operation", operation);

    Variant attributes;
    AddToObject(attributes, u8"type", UTF8String(u8"array"));
    Variant uses;
    AddToObject(uses, orvtarsksupport::kXMLToJSONKey_Attributes, std::move(attributes));
    AddToObject(uses, u8"use", std::move(use));

    Variant payload;
    AddToObject(payload, u8"type", UTF8String(u8"kerbel.FontUses"));
    AddToObject(payload, u8"uses", std::move(uses));
    return payload;
}

} // namespace

void SendFontUsageMessage(const UTF8String& syncFontID, const UTF8String& documentID, const UTF8String& usedAt,
                          const UTF8String& operation)
{
    const Variant payload = MakePayload(syncFontID, documentID, usedAt, operation);
    // Neither the reply nor the result is looked at: a document must open whether or not the service runs.
    UTF8String reply;
    orvtarsksupport::SendTarskMessage(kFontUsesMessageName, *orvcore::serialization::AsObject(payload), true,
                                      orvtarsksupport::kXMLRootTagDefault_Message, reply);
}

} // namespace orvcapsule
