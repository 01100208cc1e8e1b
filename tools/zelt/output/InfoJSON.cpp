#include <tools/zelt/output/InfoOutput.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>
#include <orvcore/json/JSONTextWriter.h>

#include <map>

// The keys, their order and their kinds are the same for every template, a refused one included, so that programs can
// rely on them.

namespace zelt {

namespace {

using namespace orvcapsule;
namespace json = orvcore::serialization;

// Writes the members of one object. A value is whatever JSONTextWriter writes, a list of such, or a function that
// writes it; null where the template was refused.
class Members {
public:
    Members(json::JSONTextWriter& writer, const Capsule* capsule)
        : writer_(writer)
        , capsule_(capsule)
    {
    }

    template <class T>
    void Add(std::string_view key, const T& value)
    {
        writer_.Key(key);
        Value(value);
    }
    // A member that comes from the capsule.
    template <class Get>
    void FromCapsule(std::string_view key, Get&& get)
    {
        writer_.Key(key);
        if (capsule_ == nullptr) {
            writer_.Null();
        } else {
            Value(get(*capsule_));
        }
    }

    void Value(bool value)
    {
        writer_.Bool(value);
    }
    void Value(std::int64_t value)
    {
        writer_.Int(value);
    }
    void Value(double value)
    {
        writer_.Double(value);
    }
    void Value(std::string_view text)
    {
        writer_.String(text);
    }
    void Value(const std::string& text)
    {
        writer_.String(std::string_view(text));
    }
    void Value(const UTF16String& text)
    {
        writer_.String(std::u16string_view(text));
    }
    template <class T>
    void Value(const std::vector<T>& list)
    {
        writer_.BeginArray();
        for (const T& element : list) {
            Value(element);
        }
        writer_.EndArray();
    }
    void Value(const Capsule::FontMap& fonts)
    {
        writer_.BeginObject();
        for (const auto& [locale, list] : fonts) {
            Add(orvcore::ToNarrow(locale), list);
        }
        writer_.EndObject();
    }

private:
    json::JSONTextWriter& writer_;
    const Capsule* capsule_;
};

// The value of a control in the form of the info line.
struct ControlValueWriter {
    Members& out;
    json::JSONTextWriter& writer;
    const std::shared_ptr<ClientControl>& control;

    void operator()(const Point2D& point) const
    {
        out.Value(std::vector<double>{point.x, point.y});
    }
    void operator()(const ColorRGBA& colour) const
    {
        out.Value(std::vector<double>{colour.red, colour.green, colour.blue, colour.alpha});
    }
    void operator()(std::int32_t index) const
    {
        out.Value(std::int64_t{index});
    }
    void operator()(float number) const
    {
        out.Value(double{number});
    }
    void operator()(const UIString& text) const
    {
        out.Value(text.GetString());
    }
    // A table has no simpler form than the document's own.
    void operator()(const kinlet::SpreadsheetValue& /*table*/) const
    {
        const auto tree = serialization::ClientControlToJson(control);
        const auto& value = json::GetVariantInObject(tree, orvcore::AsUTF8(CAPSULE_CONTROL_VALUE_STR));
        writer.Raw(orvcore::AsNarrow(json::GetJSONUTF8String(value, false)));
    }
    template <class T>
    void operator()(const T& plain) const
    {
        out.Value(plain);
    }
};

class InfoWriter {
public:
    explicit InfoWriter(const Template& read)
        : read_(read)
        , out_(writer_, read.definition.capsule.get())
    {
    }

    std::string Write()
    {
        writer_.BeginObject();
        Outcome();
        Identity();
        Resources();
        Versions();
        Composition();
        Controls();
        Entries();
        writer_.EndObject();
        return orvcore::ToNarrow(writer_.Take());
    }

private:
    void Outcome()
    {
        out_.Add("file", read_.file);
        out_.Add("ok", read_.IsGood());
        writer_.Key("error");
        if (read_.IsGood()) {
            writer_.Null();
        } else {
            out_.Value(read_.definition.refusals.front().text);
        }
    }

    void Identity()
    {
        if (const std::string& declared = read_.definition.declaredVersion; !read_.IsGood() && !declared.empty()) {
            out_.Add("apiVersion", declared); // tells which library a refused template needs
        } else {
            out_.FromCapsule("apiVersion", [](const Capsule& c) { return c.GetAPIVersion(); });
        }
        out_.FromCapsule("authorApp", [](const Capsule& c) { return c.GetAuthorApp(); });
        out_.FromCapsule("authorID", [](const Capsule& c) { return c.GetAuthorID(); });
        out_.FromCapsule("capsuleID", [](const Capsule& c) { return c.GetCapsuleID(); });
        out_.FromCapsule("name", [](const Capsule& c) { return c.GetDisplayName(); });
        out_.FromCapsule("description", [](const Capsule& c) { return c.GetCapsuleDesc(); });
    }

    void Resources()
    {
        out_.FromCapsule("platformSupport", [](const Capsule& c) { return c.GetPlatformSupport(); });
        out_.FromCapsule("fonts", [](const Capsule& c) { return c.GetUsedFonts(); });
        out_.FromCapsule("fontsLocalized", [](const Capsule& c) { return c.GetUsedFontsLocalized(); });
        out_.FromCapsule("effects", [](const Capsule& c) { return c.GetUsedEffects(); });
        out_.FromCapsule("renderers", [](const Capsule& c) { return c.GetUsedCompRenderers(); });
        out_.FromCapsule("fileTypes", [](const Capsule& c) { return c.GetUsedFileTypes(); });
        out_.FromCapsule("tags", [](const Capsule& c) { return c.GetTags(); });
    }

    void Versions()
    {
        writer_.Key("versions");
        if (const Capsule* capsule = read_.definition.capsule.get()) {
            writer_.BeginObject();
            out_.Add("tslibCompliant", capsule->GetTslibCompliantVersion());
            out_.Add("mobileCompatibility", capsule->GetMobileCompatibilityVersion());
            out_.Add("internalEffects", capsule->GetInternalEffectsVersion());
            out_.Add("fontwellOnly", capsule->GetFontwellOnlyVersion());
            out_.Add("responsiveDesignTime", capsule->GetResponsiveDesignTimeVersion());
            writer_.EndObject();
        } else {
            writer_.Null();
        }
        out_.FromCapsule("licenseID", [](const Capsule& c) { return c.GetLicenseID(); });
        out_.FromCapsule("canUseTSLib", [](const Capsule& c) { return c.CanUseTSLib(nullptr); });
        out_.FromCapsule("knownVersion", [](const Capsule& c) {
            bool known = false;
            c.CanUseTSLib(&known);
            return known;
        });
    }

    void Composition()
    {
        out_.FromCapsule("sourceLocales", [](const Capsule& c) {
            std::vector<UTF16String> locales;
            for (const auto& [locale, info] : c.GetSourceInfoLocalized()) {
                locales.push_back(locale);
            }
            return locales;
        });
        const auto composition = [this](std::string_view key, auto get) {
            out_.FromCapsule(key, [&](const Capsule& c) { return get(c.GetSourceInfo()); });
        };
        composition("frameWidth", [](const kinlet::SourceInfo& s) { return std::int64_t{s.frameSize.size.x}; });
        composition("frameHeight", [](const kinlet::SourceInfo& s) { return std::int64_t{s.frameSize.size.y}; });
        composition("durationMs", [](const kinlet::SourceInfo& s) { return s.duration.ToMilliseconds(); });
        composition("pixelAspect", [](const kinlet::SourceInfo& s) {
            return std::to_string(s.pixelAspectRatio.numerator) + '/' + std::to_string(s.pixelAspectRatio.denominator);
        });
        composition("dropFrame", [](const kinlet::SourceInfo& s) { return s.isDropFrame; });
    }

    void Controls()
    {
        writer_.Key("controls");
        if (!read_.IsGood()) {
            writer_.Null();
            return;
        }
        writer_.BeginArray();
        for (const auto& control : read_.definition.capsule->GetControls()) {
            writer_.BeginObject();
            out_.Add("type", static_cast<std::int64_t>(control->GetType()));
            out_.Add("id", control->GetID());
            out_.Add("name", control->GetName());
            out_.Add("canAnimate", control->GetProperties().canAnimate);
            writer_.Key("value");
            std::visit(ControlValueWriter{out_, writer_, control}, control->GetVal());
            writer_.EndObject();
        }
        writer_.EndArray();
    }

    void Entries()
    {
        writer_.Key("entries");
        writer_.BeginArray();
        for (const orvstorage::ZipEntry& entry : read_.entries) {
            writer_.BeginObject();
            out_.Add("name", orvcore::AsNarrow(entry.name));
            writer_.Key("size");
            writer_.UInt(entry.size);
            writer_.Key("compressedSize");
            writer_.UInt(entry.compressedSize);
            writer_.EndObject();
        }
        writer_.EndArray();
    }

    const Template& read_;
    json::JSONTextWriter writer_;
    Members out_;
};

} // namespace

std::string InfoAsJSON(const Template& read)
{
    return InfoWriter(read).Write();
}

} // namespace zelt
