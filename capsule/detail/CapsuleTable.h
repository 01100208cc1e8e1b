#pragma once

#include <capsule/Capsule.h>
#include <capsule/DefinitionKeys.h>
#include <capsule/detail/ControlJSON.h>
#include <capsule/detail/Locale.h>
#include <capsule/detail/UIStringJSON.h>

#include <kinlet/shared/RecordJSON.h>

namespace orvcapsule::serialization::detail {

namespace json = orvcore::serialization::detail;

// The top-level keys of the definition document, in reading order. The order settles which of an older and a newer
// form of the same information wins.
struct CapsuleTable {
    using JSONNode = orvcore::serialization::JSONNode;
    using JSONSink = orvcore::serialization::JSONSink;

    static constexpr auto APIVersion()
    {
        return json::CustomField(
            CAPSULE_API_VERSION_STR, json::Presence::kLenient,
            [](const JSONNode& node, Capsule& capsule) {
                return json::Codec<std::string>::Read(node, capsule.apiVersion_);
            },
            // What is written follows this library's version, whatever version was read.
            [](JSONSink& sink, const Capsule&) { sink.String(std::string_view(Capsule::GetCurrentAPIVersion())); });
    }

    static constexpr auto Name()
    {
        return json::CustomField(
            CAPSULE_CAPNAME_STR, json::Presence::kLenient,
            [](const JSONNode& node, Capsule& capsule) {
                if (!json::Codec<UTF16String>::Read(node, capsule.capsuleNameObsolete_)) {
                    return false;
                }
                // Stands until a localised name is read.
                capsule.capsuleNameLocalized_ = UIString(capsule.capsuleNameObsolete_);
                return true;
            },
            [](JSONSink& sink, const Capsule& capsule) {
                json::Codec<UTF16String>::Write(sink, capsule.capsuleNameObsolete_);
            });
    }

    // The older single-locale form of a per-locale map: read through its setter, never written.
    template <class T>
    static constexpr auto Older(std::string_view key, void (Capsule::*set)(const T&))
    {
        return json::CustomField(
            key, json::Presence::kLenient,
            [set](const JSONNode& node, Capsule& capsule) {
                T value{};
                if (!json::Codec<T>::Read(node, value)) {
                    return false;
                }
                (capsule.*set)(value);
                return true;
            },
            json::NotWritten{});
    }

    // A map by locale; an empty one does not erase what an older form gave.
    template <class Map>
    static constexpr auto ByLocale(std::string_view key, Map Capsule::*member)
    {
        return json::CustomField(
            key, json::Presence::kLenient,
            [member](const JSONNode& node, Capsule& capsule) {
                Map map;
                if (!json::Codec<Map>::Read(node, map)) {
                    return false;
                }
                if (!map.empty()) {
                    capsule.*member = std::move(map);
                }
                return true;
            },
            [member](JSONSink& sink, const Capsule& capsule) { json::Codec<Map>::Write(sink, capsule.*member); });
    }

    // Of the compositions the one that is shown in the application language. The others are judged: each may make the
    // whole definition unusable.
    static constexpr auto ShownComposition()
    {
        return json::CustomField(
            CAPSULE_SOURCE_INFO_LOC_STR, json::Presence::kLenient,
            [](const JSONNode& node, Capsule& capsule) {
                if (!json::CheckValue<Capsule::SourceInfoMap>(node)) {
                    return false;
                }
                std::map<UTF16String, const JSONNode*> byLocale;
                for (const JSONNode& child : node.Children()) {
                    byLocale[orvcore::ToUTF16(child.Key())] = &child;
                }
                const auto shown = orvcapsule::detail::FindForLanguage(byLocale, orvcapsule::detail::kFallbackLocale);
                if (shown != byLocale.end()) {
                    Capsule::SourceInfoMap map;
                    json::Codec<kinlet::SourceInfo>::Read(*shown->second, map[shown->first]);
                    capsule.sourceInfoLocalized_ = std::move(map);
                }
                return true;
            },
            json::NotWritten{});
    }

    static constexpr auto JudgedControls()
    {
        return json::CustomField(
            CAPSULE_CONTROLS_STR, json::Presence::kLenient,
            [](const JSONNode& node, Capsule&) { return ControlListCodec::Check(node); }, json::NotWritten{});
    }

    // Every row is lenient: a value of a wrong type at the top level costs that value and not the template. What makes
    // a host refuse a template lies deeper, in compositions and controls.
    //
    // A new row also goes into docs/definition.schema.json, from which validation learns what may stand where; a test
    // holds the two together.
    template <class Compositions, class Controls>
    static constexpr auto Rows(Compositions compositions, Controls controls)
    {
        using json::Lenient;
        return json::Fields(
            APIVersion(), //
            Lenient(CAPSULE_APP_STR, &Capsule::authorApp_), Lenient(CAPSULE_AUTHORID_STR, &Capsule::authorID_),
            Lenient(CAPSULE_CAPID_STR, &Capsule::capsuleID_), //
            Name(),                                           //
            Lenient(CAPSULE_LOCCAPNAME_STR, &Capsule::capsuleNameLocalized_),
            Lenient(CAPSULE_CAPDESC_STR, &Capsule::capsuleDesc_),
            Lenient(CAPSULE_CONTROL_PLATFORMSUPPORT_STR, &Capsule::platformSupport_),
            Older(CAPSULE_SOURCE_INFO_STR, &Capsule::SetSourceInfoObsolete), compositions, controls,
            ByLocale(CAPSULE_USED_FONTS_LOC_STR, &Capsule::usedFontsLocalized_),
            Older(CAPSULE_USED_FONTS_STR, &Capsule::SetUsedFontsObsolete),
            Lenient(CAPSULE_USED_EFFECTS_STR, &Capsule::usedEffects_),
            Lenient(CAPSULE_USED_COMP_RENDERERS_STR, &Capsule::usedCompRenderers_),
            Lenient(CAPSULE_USED_FILE_TYPES_STR, &Capsule::usedFileTypes_), Lenient(CAPSULE_TAGS_STR, &Capsule::tags_),
            Lenient(CAPSULE_TSLIB_COMPLIANT_VERSION_STR, &Capsule::tslibCompliantVersion_),
            Lenient(CAPSULE_MOBILECOMPATIBILITY_VERSION_STR, &Capsule::mobileCompatibilityVersion_),
            Lenient(CAPSULE_INTERNALEFFFECTSONLY_VERSION_STR, &Capsule::internalEffectsVersion_),
            Lenient(CAPSULE_FONTWELLONLY_VERSION_STR, &Capsule::fontwellOnlyVersion_),
            Lenient(CAPSULE_RESPONSIVEDESIGN_VERSION_STR, &Capsule::responsiveDesignTimeVersion_),
            Lenient(CAPSULE_LICENSEID_STR, &Capsule::licenseID_));
    }
    static constexpr auto Rows()
    {
        return Rows(ByLocale(CAPSULE_SOURCE_INFO_LOC_STR, &Capsule::sourceInfoLocalized_),
                    json::Lenient<ControlListCodec>(CAPSULE_CONTROLS_STR, &Capsule::controls_));
    }
    // The same keys where a list of templates is made.
    static constexpr auto ListedRows()
    {
        return Rows(ShownComposition(), JudgedControls());
    }
};

} // namespace orvcapsule::serialization::detail

namespace orvcore::serialization::detail {

template <>
struct JSONTable<orvcapsule::Capsule> {
    static constexpr auto fields = orvcapsule::serialization::detail::CapsuleTable::Rows();
};

} // namespace orvcore::serialization::detail
