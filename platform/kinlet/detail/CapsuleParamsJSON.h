#pragma once

#include <kinlet/CapsuleParams.h>
#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

// The JSON kind tells the alternative: a number without fraction and exponent is a whole number.
template <>
struct Codec<kinlet::CapsuleParamValue> {
    static bool Read(const JSONNode& node, kinlet::CapsuleParamValue& out)
    {
        switch (node.Kind()) {
        case JSONKind::kBool:
            return ReadAs<bool>(node, out);
        case JSONKind::kInt64:
            return ReadAs<std::int64_t>(node, out);
        case JSONKind::kUInt64:
        case JSONKind::kDouble:
            return ReadAs<double>(node, out);
        case JSONKind::kString:
            return ReadAs<UTF16String>(node, out);
        case JSONKind::kArray:
            return ReadAs<std::vector<double>>(node, out);
        case JSONKind::kNull:
        case JSONKind::kObject:
            break;
        }
        return false;
    }
    static void Write(JSONSink& sink, const kinlet::CapsuleParamValue& value)
    {
        std::visit([&sink](const auto& held) { Codec<std::remove_cvref_t<decltype(held)>>::Write(sink, held); }, value);
    }

private:
    template <class T>
    static bool ReadAs(const JSONNode& node, kinlet::CapsuleParamValue& out)
    {
        return Codec<T>::Read(node, out.emplace<T>());
    }
};

template <>
struct JSONTable<kinlet::CapsuleParam> {
    static constexpr auto fields =
        Fields(Optional("id", &kinlet::CapsuleParam::id), Optional("value", &kinlet::CapsuleParam::value));
    static constexpr auto unknown = &kinlet::CapsuleParam::unknownKeys;
};

template <>
struct JSONTable<kinlet::CapsuleParams> {
    static constexpr auto fields = Fields(Optional("capsuleID", &kinlet::CapsuleParams::capsuleID),
                                          Optional("params", &kinlet::CapsuleParams::params));
    static constexpr auto unknown = &kinlet::CapsuleParams::unknownKeys;
};

} // namespace orvcore::serialization::detail
