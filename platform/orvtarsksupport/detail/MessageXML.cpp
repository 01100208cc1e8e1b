#include <orvtarsksupport/detail/MessageXML.h>

#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/text/shared/ASCII.h>
#include <orvcore/text/shared/BinaryText.h>
#include <orvtarsksupport/SendTarskMessage.h>

#include <algorithm>
#include <string>

// The XML of a message. Nothing is lost on the way: a text that XML cannot hold goes as base 64 with an attribute that
// says so, and what has no form at all (a key that is no element's name, a list in a list) refuses the message rather
// than being left out.

namespace orvtarsksupport::detail {

namespace {

using orvcore::serialization::json_write_exception;
using orvcore::serialization::JSONKind;
using orvcore::serialization::JSONNode;

// Names are ASCII and have no colon, which is a namespace's.
bool IsElementName(std::string_view name)
{
    const auto isLetter = [](char c) { return orvcore::IsASCIILetter(c) || c == '_'; };
    const auto isOther = [](char c) { return orvcore::IsASCIIDigit(c) || c == '-' || c == '.'; };
    return !name.empty() && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), [&](char c) { return isLetter(c) || isOther(c); });
}

// Well-formed, and without the characters that XML 1.0 leaves out even as references.
bool IsXMLText(std::string_view text)
{
    const auto isForbidden = [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
    };
    return orvcore::IsWellFormedUTF8(text) && std::none_of(text.begin(), text.end(), isForbidden) &&
           text.find("\xEF\xBF\xBE") == text.npos && text.find("\xEF\xBF\xBF") == text.npos; // U+FFFE, U+FFFF
}

// A reader would turn white space other than the blank into something else, in attributes or at the ends of lines.
std::string_view ReferenceFor(char c)
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    default:
        return {};
    }
}

class XMLWriter {
public:
    void Element(std::string_view name, const JSONNode& node)
    {
        if (!IsElementName(name)) {
            throw json_write_exception("a key is no name of an XML element");
        }
        if (node.IsArray()) {
            Elements(name, node);
        } else if (node.IsObject()) {
            Put({"<", name});
            Attributes(node.Find(orvcore::AsNarrow(kXMLToJSONKey_Attributes)));
            Put({">"});
            Members(node);
            Put({"</", name, ">"});
        } else {
            Leaf(name, TextOf(node));
        }
    }

    orvcore::UTF8String Take()
    {
        return orvcore::ToUTF8(out_);
    }

    void Put(std::initializer_list<std::string_view> parts)
    {
        for (const std::string_view part : parts) {
            out_ += part;
        }
    }

private:
    void Elements(std::string_view name, const JSONNode& list)
    {
        for (const JSONNode& child : list.Children()) {
            if (child.IsArray()) {
                throw json_write_exception("a list stands directly in a list: its elements have no name in XML");
            }
            Element(name, child);
        }
    }

    void Members(const JSONNode& object)
    {
        for (const JSONNode& child : object.Children()) {
            if (child.Key() != orvcore::AsNarrow(kXMLToJSONKey_Attributes)) {
                Element(child.Key(), child);
            }
        }
    }

    void Attributes(const JSONNode* attributes)
    {
        if (attributes == nullptr) {
            return;
        }
        // A list fails here, because its elements have no names; any other value has no children and is refused below.
        for (const JSONNode& child : attributes->Children()) {
            const std::string text = TextOf(child);
            if (!IsElementName(child.Key()) || !IsXMLText(text)) {
                throw json_write_exception("an attribute has no form in XML");
            }
            Put({" ", child.Key(), "=\""});
            Text(text);
            Put({"\""});
        }
        if (!attributes->IsObject()) {
            throw json_write_exception("attributes are not an object");
        }
    }

    // An attribute has no room for the mark of an encoding, so what XML cannot hold is refused there, and encoded here.
    void Leaf(std::string_view name, std::string_view text)
    {
        if (IsXMLText(text)) {
            Put({"<", name, ">"});
            Text(text);
        } else {
            const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
            const orvcore::UTF8String encoded = orvcore::EncodeBinaryDataToUTF8String(bytes);
            Put({"<", name, " encoding=\"base64\">", orvcore::AsNarrow(encoded)});
        }
        Put({"</", name, ">"});
    }

    void Text(std::string_view text)
    {
        for (const char c : text) {
            const std::string_view reference = ReferenceFor(c);
            if (reference.empty()) {
                out_ += c;
            } else {
                out_ += reference;
            }
        }
    }

    // A scalar as JSON writes it, a text without its quotes, null as nothing.
    static std::string TextOf(const JSONNode& node)
    {
        orvcore::serialization::JSONTextWriter writer;
        switch (node.Kind()) {
        case JSONKind::kNull:
            return {};
        case JSONKind::kString: {
            std::string_view text;
            node.Get(text);
            return std::string(text);
        }
        case JSONKind::kBool: {
            bool value = false;
            node.Get(value);
            writer.Bool(value);
            break;
        }
        case JSONKind::kInt64: {
            std::int64_t value = 0;
            node.Get(value);
            writer.Int(value);
            break;
        }
        case JSONKind::kUInt64: {
            std::uint64_t value = 0;
            node.Get(value);
            writer.UInt(value);
            break;
        }
        case JSONKind::kDouble: {
            double value = 0;
            node.Get(value);
            writer.Double(value);
            break;
        }
        case JSONKind::kArray:
        case JSONKind::kObject:
            throw json_write_exception("an attribute is no scalar");
        }
        return orvcore::ToNarrow(writer.Take());
    }

    std::string out_;
};

} // namespace

orvcore::UTF8String MessageXML(std::u8string_view rootTag, const orvcore::serialization::Object& payload)
{
    const orvcore::serialization::Variant tree(payload); // shares the values
    const auto document = orvcore::serialization::JSONDocument::FromTree(tree);
    XMLWriter writer;
    writer.Put({R"(<?xml version="1.0" encoding="UTF-8"?>)"});
    writer.Element(orvcore::AsNarrow(rootTag), document.Root());
    return writer.Take();
}

} // namespace orvtarsksupport::detail
