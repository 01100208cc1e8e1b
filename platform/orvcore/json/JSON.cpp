#include <orvcore/json/JSON.h>

#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/tasks/shared/NoDestructor.h>

namespace orvcore::serialization {

namespace {

// Recurses no deeper than kMaxJSONDepth: the document that the tree was put into first has refused anything deeper, and
// foreign values with it.
void WriteNode(const JSONNode& node, JSONTextWriter& out)
{
    switch (node.Kind()) {
    case JSONKind::kNull:
        return out.Null();
    case JSONKind::kBool: {
        bool value = false;
        node.Get(value);
        return out.Bool(value);
    }
    case JSONKind::kInt64: {
        std::int64_t value = 0;
        node.Get(value);
        return out.Int(value);
    }
    case JSONKind::kUInt64: {
        std::uint64_t value = 0;
        node.Get(value);
        return out.UInt(value);
    }
    case JSONKind::kDouble: {
        double value = 0;
        node.Get(value);
        return out.Double(value);
    }
    case JSONKind::kString: {
        std::string_view value;
        node.Get(value);
        return out.String(value);
    }
    case JSONKind::kArray:
        out.BeginArray();
        for (const JSONNode& child : node.Children()) {
            WriteNode(child, out);
        }
        return out.EndArray();
    case JSONKind::kObject:
        out.BeginObject();
        for (const JSONNode& child : node.Children()) {
            out.Key(child.Key());
            WriteNode(child, out);
        }
        return out.EndObject();
    }
}

Object& MakeObject(Variant& value)
{
    if (auto* object = std::any_cast<Object>(&value)) {
        return *object;
    }
    return value.emplace<Object>();
}

} // namespace

Variant JSONParse(std::u8string_view text)
{
    return JSONDocument::Parse(text).Root().ToTree();
}

UTF8String GetJSONUTF8String(const Variant& value, bool formatted)
{
    const JSONDocument document = JSONDocument::FromTree(value);
    JSONTextWriter out(formatted);
    WriteNode(document.Root(), out);
    return out.Take();
}

bool ObjectHasProperty(const Variant& value, std::u8string_view key)
{
    const Object* object = AsObject(value);
    return object != nullptr && object->count(UTF8String(key)) != 0;
}

const Variant& GetVariantInObject(const Variant& value, std::u8string_view key)
{
    static NoDestructor<Variant> nothing;
    if (const Object* object = AsObject(value)) {
        if (const auto found = object->find(UTF8String(key)); found != object->end()) {
            return found->second ? *found->second : *nothing;
        }
    }
    throw missing_key_exception(ToNarrow(key));
}

bool AddToObject(Variant& object, std::u8string_view key, Variant value)
{
    return MakeObject(object).try_emplace(UTF8String(key), std::make_shared<Variant>(std::move(value))).second;
}

void UpdateInObject(Variant& object, std::u8string_view key, Variant value)
{
    MakeObject(object).insert_or_assign(UTF8String(key), std::make_shared<Variant>(std::move(value)));
}

const Object* AsObject(const Variant& value) noexcept
{
    return std::any_cast<Object>(&value);
}

const Array* AsArray(const Variant& value) noexcept
{
    return std::any_cast<Array>(&value);
}

const UTF8String* AsString(const Variant& value) noexcept
{
    return std::any_cast<UTF8String>(&value);
}

} // namespace orvcore::serialization
