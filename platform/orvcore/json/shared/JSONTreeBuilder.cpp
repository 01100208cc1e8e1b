#include <orvcore/json/shared/JSONTreeBuilder.h>

#include <orvcore/json/detail/JSONWriteError.h>

#include <cmath>

// The same calls that make a text make a tree here. `open_` leads from the root to the object or array that is open;
// `key_` is the key of the next value, and stays after it for the messages about values.

namespace orvcore::serialization {

JSONTreeBuilder::JSONTreeBuilder() = default;
JSONTreeBuilder::~JSONTreeBuilder() = default;

Variant& JSONTreeBuilder::Place(Variant value)
{
    if (open_.empty()) {
        root_ = std::move(value);
        return root_;
    }
    auto placed = std::make_shared<Variant>(std::move(value));
    Variant& result = *placed;
    if (auto* object = std::any_cast<Object>(open_.back())) {
        // The pointers in `open_` stay good whatever is added: each value lies where its shared pointer has put it.
        object->insert_or_assign(key_, std::move(placed));
    } else {
        std::any_cast<Array&>(*open_.back()).push_back(std::move(placed));
    }
    return result;
}

void JSONTreeBuilder::BeginObject()
{
    open_.push_back(&Place(Object{}));
}
void JSONTreeBuilder::EndObject()
{
    open_.pop_back();
}
void JSONTreeBuilder::BeginArray()
{
    open_.push_back(&Place(Array{}));
}
void JSONTreeBuilder::EndArray()
{
    open_.pop_back();
}
void JSONTreeBuilder::Key(std::string_view key)
{
    key_ = AsUTF8(key);
}
void JSONTreeBuilder::Null()
{
    Place({});
}
void JSONTreeBuilder::Bool(bool value)
{
    Place(value);
}
void JSONTreeBuilder::Int(std::int64_t value)
{
    Place(value);
}
void JSONTreeBuilder::UInt(std::uint64_t value)
{
    Place(value);
}
void JSONTreeBuilder::Double(double value)
{
    if (!std::isfinite(value)) {
        throw detail::NotFinite(LastKey());
    }
    Place(value);
}
void JSONTreeBuilder::String(std::string_view text)
{
    Place(IsWellFormedUTF8(text) ? ToUTF8(text) : ToUTF8(ToUTF16(text)));
}
void JSONTreeBuilder::String(std::u16string_view text)
{
    Place(ToUTF8(text));
}
void JSONTreeBuilder::Raw(std::string_view json)
{
    Place(detail::ReadRaw(json, LastKey()).Root().ToTree());
}
std::unique_ptr<JSONSink> JSONTreeBuilder::NewPart() const
{
    auto part = std::make_unique<JSONTreeBuilder>();
    part->key_ = key_;
    return part;
}
void JSONTreeBuilder::AddPart(JSONSink& part)
{
    Variant elements = dynamic_cast<JSONTreeBuilder&>(part).Take();
    auto& added = std::any_cast<Array&>(elements);
    auto& open = std::any_cast<Array&>(*open_.back());
    open.insert(open.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
}

Variant JSONTreeBuilder::Take()
{
    Variant result = std::move(root_);
    root_.reset();
    return result;
}

} // namespace orvcore::serialization
