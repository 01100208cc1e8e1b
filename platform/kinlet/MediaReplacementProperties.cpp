#include <kinlet/MediaReplacementProperties.h>

#include <kinlet/shared/RecordJSON.h>

// The properties lie in a control's object beside the control's own keys, so neither side can take what it does not
// know for its own alone: reading, the control's keys are taken out first (ExtractProperties), or they would be kept as
// unknown ones and written twice; writing, a kept key never replaces one that the control has set.

namespace kinlet {

namespace serialization = orvcore::serialization;
using serialization::detail::JSONTable;
using serialization::detail::TableWalker;

namespace {

using Walker = TableWalker<MediaReplacementProperties, JSONTable<MediaReplacementProperties>::fields>;

} // namespace

void MediaReplacementProperties::ConvertToObject(serialization::Object& control) const
{
    serialization::JSONTreeBuilder builder;
    Walker::Write(builder, *this, nullptr);
    serialization::Variant tree = builder.Take();
    for (const auto& [key, value] : *serialization::AsObject(tree)) {
        control.insert_or_assign(key, value);
    }
    for (const auto& [key, text] : unknownKeys) {
        orvcore::UTF8String name = orvcore::ToUTF8(std::string_view(key));
        if (!control.contains(name)) {
            builder.Key(key);
            builder.Raw(text);
            control.emplace(std::move(name), std::make_shared<serialization::Variant>(builder.Take()));
        }
    }
}

MediaReplacementProperties MediaReplacementProperties::ExtractProperties(const serialization::Object& control,
                                                                         std::span<const std::u8string_view> ownKeys)
{
    serialization::Object rest = control;
    for (const std::u8string_view key : ownKeys) {
        rest.erase(orvcore::UTF8String(key));
    }
    MediaReplacementProperties result;
    serialization::detail::FromTree(serialization::Variant(std::move(rest)), result);
    return result;
}

} // namespace kinlet
