#pragma once

#include <capsule/ControlKinds.h>
#include <capsule/DefinitionKeys.h>
#include <capsule/ForeignValue.h>
#include <capsule/detail/UIStringJSON.h>

#include <kinlet/shared/RecordJSON.h>

namespace orvcore::serialization::detail {

template <>
struct JSONTable<orvcapsule::AlternateRectInfo> {
    using Info = orvcapsule::AlternateRectInfo;
    static constexpr auto fields = Fields(Required("isEnabled", &Info::isEnabled), Required("compId", &Info::compId),
                                          Required("layerId", &Info::layerId));
};

template <>
struct JSONTable<orvcapsule::SpreadsheetColumnInfoLoc> {
    using Column = orvcapsule::SpreadsheetColumnInfoLoc;
    static constexpr auto fields =
        Fields(Required("columnName", &Column::name), Required("columnDataType", &Column::dataType),
               Required("columnMinValue", &Column::minimum), Required("columnMaxValue", &Column::maximum));
};

} // namespace orvcore::serialization::detail

namespace orvcapsule::serialization::detail {

namespace json = orvcore::serialization::detail;
using json::Fields;
using json::Presence;
using json::Required;
using orvcore::serialization::JSONNode;
using orvcore::serialization::JSONSink;

// The keys of each kind of control, in reading order. A kind's own keys follow those that every control has.
struct ControlTables {
    // The value under "value", kept as the alternative T; a control that holds another one cannot be written.
    template <class T>
    static constexpr auto Value(std::string_view key = CAPSULE_CONTROL_VALUE_STR)
    {
        return json::CustomField(
                   key, Presence::kRequired,
                   [](const JSONNode& node, ClientControl& control) {
                       T value{};
                       if (!json::Codec<T>::Read(node, value)) {
                           return false;
                       }
                       control.value_ = std::move(value);
                       return true;
                   },
                   [](JSONSink& sink, const ClientControl& control) {
                       const T* value = std::get_if<T>(&control.value_);
                       if (value == nullptr) {
                           throw foreign_value_exception(control.id_);
                       }
                       json::Codec<T>::Write(sink, *value);
                   })
            .CheckedBy(json::CheckValue<T>);
    }

    // Stands for a value that is passed over, whatever it is.
    static constexpr bool AnyValue(const JSONNode& /*node*/)
    {
        return true;
    }
    template <class Control, class Write>
    static constexpr auto PassedOver(std::string_view key, Write write)
    {
        return json::CustomField(
                   key, Presence::kLenient, [](const JSONNode&, Control&) { return true; }, write)
            .CheckedBy(AnyValue);
    }

    // A text that documents always hold empty and that readers pass over.
    static constexpr auto EmptyText(std::string_view key)
    {
        return PassedOver<ClientControl>(
            key, [](JSONSink& sink, const ClientControl&) { json::Codec<UIString>::Write(sink, UIString()); });
    }

    // Apart from Common, because these keys are also read of a control whose kind is unknown here.
    static constexpr auto BeforeType()
    {
        return Fields(
            json::Lenient(CAPSULE_CONTROL_ID_STR, &ClientControl::id_),
            json::CustomField(
                CAPSULE_CONTROL_UINAME_STR, Presence::kLenient,
                [](const JSONNode& node, ClientControl& control) {
                    // An unusable label becomes the empty text, as an absent one is; NoText, which the control was
                    // built with, is none.
                    if (!json::Codec<UIString>::Read(node, control.locName_)) {
                        control.locName_ = UIString();
                    }
                    return true;
                },
                [](JSONSink& sink, const ClientControl& control) {
                    json::Codec<UIString>::Write(sink, control.locName_);
                })
                .CheckedBy(AnyValue),
            EmptyText("uiSuffix"), EmptyText("uiToolTip"),
            // Hidden controls are marked for other readers; a control read here is never hidden.
            PassedOver<ClientControl>(CAPSULE_CONTROL_HIDDEN_STR,
                                      [](JSONSink& sink, const ClientControl& control) { sink.Bool(control.hidden_); })
                .WrittenWhen([](const ClientControl& control) { return control.hidden_; }),
            json::CustomField(
                CAPSULE_CONTROLPROPS_CANANIMATE_STR, Presence::kRequired,
                [](const JSONNode& node, ClientControl& control) { return node.Get(control.properties_.canAnimate); },
                [](JSONSink& sink, const ClientControl& control) { sink.Bool(control.properties_.canAnimate); })
                .CheckedBy(json::CheckValue<bool>));
    }

    static constexpr auto Common()
    {
        return std::tuple_cat(BeforeType(), Fields(Required(CAPSULE_CONTROL_TYPE_STR, &ClientControl::type_)));
    }

    template <class... Own>
    static constexpr auto Kind(Own... own)
    {
        return std::tuple_cat(Common(), Fields(own...));
    }

    static constexpr auto Slider()
    {
        return Kind(Required(CAPSULE_SLIDERVALUE_MIN_STR, &SliderControl::minimum_),
                    Required(CAPSULE_SLIDERVALUE_MAX_STR, &SliderControl::maximum_), Value<double>());
    }

    static constexpr auto Text()
    {
        return Kind(json::Lenient(CAPSULE_STRING_FONTEDITINFO_STR, &StringControl::fontEditInfo_),
                    json::Lenient(CAPSULE_STRING_ALTERNATERECTINFO_STR, &StringControl::alternateRectInfo_),
                    Value<UIString>());
    }

    static constexpr auto Scale()
    {
        return Kind(Required(CAPSULE_SCALE_LINKED_STR, &ScaleControl::linked_),
                    Required(CAPSULE_SCALE_DIMENSIONS_STR, &ScaleControl::dimensions_), Value<std::vector<double>>());
    }

    static constexpr auto Group()
    {
        return Kind(Value<std::vector<UTF16String>>(), Required(CAPSULE_GROUP_EXPANDED_STR, &GroupControl::expanded_));
    }

    static constexpr auto Menu()
    {
        return Kind(Required(CAPSULE_MENU_CONTENT_STR, &MenuControl::entries_), Value<std::int32_t>());
    }

    // A media control keeps unknown keys. "value" is none of them: other kinds' key, passed over and never written.
    static constexpr auto Media()
    {
        return std::tuple_cat(Common(),
                              json::Lift<MediaControl>(&MediaControl::replacement_,
                                                       json::JSONTable<kinlet::MediaReplacementProperties>::fields),
                              Fields(Value<UTF16String>(CAPSULE_MEDIA_CACHE_VALUE_STR),
                                     Required(CAPSULE_ISEXPANDED_STR, &MediaControl::expanded_),
                                     PassedOver<MediaControl>(CAPSULE_CONTROL_VALUE_STR, json::NotWritten{})));
    }

    static constexpr auto Spreadsheet()
    {
        return Kind(Required("minRows", &SpreadsheetControl::minRows_),
                    Required("maxRows", &SpreadsheetControl::maxRows_),
                    Required("columnInfo", &SpreadsheetControl::columns_), Value<kinlet::SpreadsheetValue>());
    }

    // Where a control keeps keys that its table does not name: a media control's belong to its properties.
    static orvcore::serialization::UnknownKeys* Unknown(MediaControl& control)
    {
        return &control.replacement_.unknownKeys;
    }
    static const orvcore::serialization::UnknownKeys* Unknown(const MediaControl& control)
    {
        return &control.replacement_.unknownKeys;
    }
    static orvcore::serialization::UnknownKeys* Unknown(const ClientControl&)
    {
        return nullptr;
    }
};

} // namespace orvcapsule::serialization::detail
