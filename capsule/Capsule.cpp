#include <capsule/Capsule.h>

#include <capsule/detail/Locale.h>

#include <algorithm>

namespace orvcapsule {

namespace {

// Raised with each new form of the definition, together with the table in Compatibility.cpp and the schema in docs. The
// version gate, the names of the listings' notes and the stock search's parameter follow from it: an older host refuses
// what this one writes, notes of an older reader are not taken, and the service offers what can be read.
constexpr char kCurrentAPIVersion[] = "2.2";
constexpr const char16_t* kUnsupported = u"0";

} // namespace

Capsule::Capsule() = default;
Capsule::Capsule(const Capsule&) = default;
Capsule::Capsule(Capsule&&) noexcept = default;
Capsule& Capsule::operator=(const Capsule&) = default;
Capsule& Capsule::operator=(Capsule&&) noexcept = default;
Capsule::~Capsule() = default;

Capsule::Capsule(const UTF16String& authorApp, const UTF16String& capsuleName, const UTF16String& capsuleID)
    : apiVersion_(kCurrentAPIVersion)
    , authorApp_(authorApp)
    // Both forms of the name: readers before the localised one know the first only.
    , capsuleNameObsolete_(capsuleName)
    , capsuleNameLocalized_(capsuleName)
    , capsuleID_(capsuleID)
    , tslibCompliantVersion_(kUnsupported)
    , mobileCompatibilityVersion_(kUnsupported)
    , internalEffectsVersion_(kUnsupported)
    , fontwellOnlyVersion_(kUnsupported)
    , responsiveDesignTimeVersion_(kUnsupported)
{
}

Capsule::Capsule(const UTF16String& authorApp, const UTF16String& authorID, const UTF16String& capsuleName,
                 const UTF16String& capsuleID, const UTF16String& capsuleDesc, const StringList& platformSupport,
                 const kinlet::SourceInfo& sourceInfo, const ControlList& controls, const StringList& usedFonts,
                 const StringList& usedEffects, const StringList& usedCompRenderers, const StringList& usedFileTypes,
                 const StringList& tags, const UTF16String& tslibCompliantVersion,
                 const UTF16String& mobileCompatibilityVersion, const UTF16String& internalEffectsVersion,
                 const UTF16String& fontwellOnlyVersion)
    : Capsule(authorApp, capsuleName, capsuleID)
{
    authorID_ = authorID;
    capsuleDesc_ = capsuleDesc;
    platformSupport_ = platformSupport;
    controls_ = controls;
    usedEffects_ = usedEffects;
    usedCompRenderers_ = usedCompRenderers;
    usedFileTypes_ = usedFileTypes;
    tags_ = tags;
    tslibCompliantVersion_ = tslibCompliantVersion;
    mobileCompatibilityVersion_ = mobileCompatibilityVersion;
    internalEffectsVersion_ = internalEffectsVersion;
    fontwellOnlyVersion_ = fontwellOnlyVersion;
    SetSourceInfo(sourceInfo);
    SetUsedFonts(usedFonts);
}

std::string Capsule::GetCurrentAPIVersion()
{
    return kCurrentAPIVersion;
}

UTF16String Capsule::GetDisplayName() const
{
    UTF16String name = capsuleNameLocalized_.GetString();
    // An empty text in the host's language is a name that was not translated, not a template without a name.
    return name.empty() ? capsuleNameObsolete_ : name;
}

std::shared_ptr<ClientControl> Capsule::FindControl(const UTF16String& id) const
{
    // Ids are the author's, and nothing keeps two controls from having one: the first counts. Hosts may have put null
    // pointers into the list.
    const auto found = std::find_if(controls_.begin(), controls_.end(),
                                    [&](const auto& control) { return control != nullptr && control->GetID() == id; });
    return found != controls_.end() ? *found : nullptr;
}

kinlet::SourceInfo Capsule::GetSourceInfo() const
{
    const auto found = detail::FindForLanguage(sourceInfoLocalized_, detail::kFallbackLocale);
    return found != sourceInfoLocalized_.end() ? found->second : kinlet::SourceInfo();
}

void Capsule::SetSourceInfo(const kinlet::SourceInfo& sourceInfo)
{
    sourceInfoLocalized_.insert_or_assign(detail::CurrentLocale(), sourceInfo);
}

// The older form holds one composition and does not say for which language. It counts only where the newer form gave
// none, whichever of the two comes first; so the order of keys in a document does not matter.
void Capsule::SetSourceInfoObsolete(const kinlet::SourceInfo& sourceInfo)
{
    if (sourceInfoLocalized_.empty()) {
        SetSourceInfo(sourceInfo);
    }
}

void Capsule::SetSourceInfoVector(const SourceInfoMap& sourceInfos)
{
    if (!sourceInfos.empty()) {
        sourceInfoLocalized_ = sourceInfos;
    }
}

Capsule::StringList Capsule::GetUsedFonts() const
{
    // Fonts fall straight back to the smallest locale: another language's default fonts would be a worse guess.
    const auto found = detail::FindForLanguage(usedFontsLocalized_, {});
    return found != usedFontsLocalized_.end() ? found->second : StringList();
}

void Capsule::SetUsedFonts(const StringList& fonts)
{
    usedFontsLocalized_.insert_or_assign(detail::CurrentLocale(), fonts);
}

void Capsule::SetUsedFonts(const std::vector<UTF8String>& fonts)
{
    StringList narrow;
    narrow.reserve(fonts.size());
    for (const UTF8String& font : fonts) {
        narrow.push_back(orvcore::ToNarrow(font));
    }
    SetUsedFonts(narrow);
}

void Capsule::SetUsedFontsObsolete(const StringList& fonts)
{
    if (usedFontsLocalized_.empty()) {
        SetUsedFonts(fonts);
    }
}

void Capsule::SetUsedFontsVector(const FontMap& fonts)
{
    if (!fonts.empty()) {
        usedFontsLocalized_ = fonts;
    }
}

} // namespace orvcapsule
