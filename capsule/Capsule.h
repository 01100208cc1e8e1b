#pragma once

#include <capsule/ClientControl.h>
#include <capsule/UIString.h>
#include <capsule/Versions.h>

#include <kinlet/SourceInfo.h>

#include <concepts>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvcapsule {

namespace serialization::detail {
struct CapsuleTable;
}

/// The description of one motion-graphics template: who made it and with which host, its name and description, the
/// host-media description of its composition per locale, the resources it needs, the version markers that gate
/// compatibility, and its client controls in display order.
///
/// A plain value class: it validates nothing and never fails but for lack of memory. Not synchronised: concurrent
/// reads are safe, a writer needs exclusive access. "Application language" is `orvcore::Application::GetLanguage`,
/// read afresh at each call. Wide strings are UTF-16, narrow strings UTF-8. Copies share the controls.
class ORVCAPSULE_API Capsule {
public:
    using ControlList = std::vector<std::shared_ptr<ClientControl>>;
    using StringList = std::vector<std::string>;
    using FontMap = std::map<UTF16String, StringList>;
    using SourceInfoMap = std::map<UTF16String, kinlet::SourceInfo>;

    /// A record with every field empty, the API version too. The localised name is a default-built `UIString`: one
    /// empty text under the application language.
    Capsule();
    /// A record of the current API version with the given identity; all version markers "0".
    Capsule(const UTF16String& authorApp, const UTF16String& capsuleName, const UTF16String& capsuleID);
    /// A record of the current API version. `sourceInfo` and `usedFonts` land under the application language;
    /// the responsive-design marker is "0" and the licence empty.
    Capsule(const UTF16String& authorApp, const UTF16String& authorID, const UTF16String& capsuleName,
            const UTF16String& capsuleID, const UTF16String& capsuleDesc, const StringList& platformSupport,
            const kinlet::SourceInfo& sourceInfo, const ControlList& controls, const StringList& usedFonts,
            const StringList& usedEffects, const StringList& usedCompRenderers, const StringList& usedFileTypes,
            const StringList& tags, const UTF16String& tslibCompliantVersion,
            const UTF16String& mobileCompatibilityVersion, const UTF16String& internalEffectsVersion,
            const UTF16String& fontwellOnlyVersion);
    Capsule(const Capsule&);
    Capsule(Capsule&&) noexcept;
    Capsule& operator=(const Capsule&);
    Capsule& operator=(Capsule&&) noexcept;
    virtual ~Capsule();

    /// The version of the definition format that this library writes: "2.2".
    static std::string GetCurrentAPIVersion();

    /// The version of the definition format that this record follows.
    std::string GetAPIVersion() const
    {
        return apiVersion_;
    }
    UTF16String GetAuthorApp() const
    {
        return authorApp_;
    }
    UTF16String GetAuthorID() const
    {
        return authorID_;
    }
    UTF16String GetCapsuleID() const
    {
        return capsuleID_;
    }
    UTF16String GetCapsuleDesc() const
    {
        return capsuleDesc_;
    }
    /// The name from the time before names were localised.
    UTF16String GetCapsuleNameObsolete() const
    {
        return capsuleNameObsolete_;
    }
    UIString GetCapsuleNameLocalized() const
    {
        return capsuleNameLocalized_;
    }
    /// The licence identifier, opaque to this library.
    UTF16String GetLicenseID() const
    {
        return licenseID_;
    }

    /// @name Version markers: a release stamp of `Versions.h`, or "0".
    /// @{
    UTF16String GetTslibCompliantVersion() const
    {
        return tslibCompliantVersion_;
    }
    UTF16String GetMobileCompatibilityVersion() const
    {
        return mobileCompatibilityVersion_;
    }
    UTF16String GetInternalEffectsVersion() const
    {
        return internalEffectsVersion_;
    }
    UTF16String GetFontwellOnlyVersion() const
    {
        return fontwellOnlyVersion_;
    }
    UTF16String GetResponsiveDesignTimeVersion() const
    {
        return responsiveDesignTimeVersion_;
    }
    /// @}

    /// @name Lists and maps: references into this record.
    /// @{
    const ControlList& GetControls() const noexcept
    {
        return controls_;
    }
    /// The control with this id, the first of several; null when there is none.
    std::shared_ptr<ClientControl> FindControl(const UTF16String& id) const;
    const StringList& GetPlatformSupport() const noexcept
    {
        return platformSupport_;
    }
    const StringList& GetUsedEffects() const noexcept
    {
        return usedEffects_;
    }
    const StringList& GetUsedCompRenderers() const noexcept
    {
        return usedCompRenderers_;
    }
    const StringList& GetUsedFileTypes() const noexcept
    {
        return usedFileTypes_;
    }
    const StringList& GetTags() const noexcept
    {
        return tags_;
    }
    const FontMap& GetUsedFontsLocalized() const noexcept
    {
        return usedFontsLocalized_;
    }
    const SourceInfoMap& GetSourceInfoLocalized() const noexcept
    {
        return sourceInfoLocalized_;
    }
    /// @}

    /// The localised name by the rule of `UIString::GetString`, or the older name when that is empty.
    UTF16String GetDisplayName() const;
    /// The fonts for the application language, else those of the smallest locale; "en_US" gets no preference here.
    StringList GetUsedFonts() const;
    /// The composition for the application language, else for "en_US", else for the smallest locale, else a
    /// default-built one.
    kinlet::SourceInfo GetSourceInfo() const;

    void SetAPIVersion(const std::string& version)
    {
        apiVersion_ = version;
    }
    void SetAuthorApp(const UTF16String& app)
    {
        authorApp_ = app;
    }
    void SetAuthorID(const UTF16String& id)
    {
        authorID_ = id;
    }
    void SetCapsuleID(const UTF16String& id)
    {
        capsuleID_ = id;
    }
    void SetCapsuleDesc(const UTF16String& description)
    {
        capsuleDesc_ = description;
    }
    void SetCapsuleNameObsolete(const UTF16String& name)
    {
        capsuleNameObsolete_ = name;
    }
    void SetCapsuleNameLocalized(const UIString& name)
    {
        capsuleNameLocalized_ = name;
    }
    void SetLicenseID(const UTF16String& id)
    {
        licenseID_ = id;
    }
    void SetTslibCompliantVersion(const UTF16String& marker)
    {
        tslibCompliantVersion_ = marker;
    }
    void SetMobileCompatibilityVersion(const UTF16String& marker)
    {
        mobileCompatibilityVersion_ = marker;
    }
    void SetInternalEffectsVersion(const UTF16String& marker)
    {
        internalEffectsVersion_ = marker;
    }
    void SetFontwellOnlyVersion(const UTF16String& marker)
    {
        fontwellOnlyVersion_ = marker;
    }
    void SetResponsiveDesignTimeVersion(const UTF16String& marker)
    {
        responsiveDesignTimeVersion_ = marker;
    }
    void SetControls(const ControlList& controls)
    {
        controls_ = controls;
    }
    void SetPlatformSupport(const StringList& platforms)
    {
        platformSupport_ = platforms;
    }
    void SetUsedEffects(const StringList& effects)
    {
        usedEffects_ = effects;
    }
    void SetUsedCompRenderers(const StringList& renderers)
    {
        usedCompRenderers_ = renderers;
    }
    void SetUsedFileTypes(const StringList& types)
    {
        usedFileTypes_ = types;
    }
    void SetTags(const StringList& tags)
    {
        tags_ = tags;
    }

    /// Sets the composition of the application language; other locales stay.
    void SetSourceInfo(const kinlet::SourceInfo& sourceInfo);
    /// Does what `SetSourceInfo` does, but only while no locale has a composition.
    void SetSourceInfoObsolete(const kinlet::SourceInfo& sourceInfo);
    /// Replaces the compositions of all locales; an empty map changes nothing.
    void SetSourceInfoVector(const SourceInfoMap& sourceInfos);

    /// Sets the fonts of the application language; other locales stay.
    void SetUsedFonts(const StringList& fonts);
    void SetUsedFonts(const std::vector<UTF8String>& fonts);
    /// The same for names in braces: `SetUsedFonts({"Serif", "Sans"})`, `SetUsedFonts({})`.
    void SetUsedFonts(std::initializer_list<std::string> fonts)
    {
        SetUsedFonts(StringList(fonts));
    }
    template <std::same_as<const char8_t*> Name>
    void SetUsedFonts(std::initializer_list<Name> fonts)
    {
        SetUsedFonts(std::vector<UTF8String>(fonts.begin(), fonts.end()));
    }
    /// Does what `SetUsedFonts` does, but only while no locale has fonts.
    void SetUsedFontsObsolete(const StringList& fonts);
    /// Replaces the fonts of all locales; an empty map changes nothing.
    void SetUsedFontsVector(const FontMap& fonts);

    /// Whether the compositing host's template library can use the template: its release stamp is one that its
    /// definition-format version admits.
    /// @param knownVersion  when not null, receives whether the definition-format version is a known one.
    bool CanUseTSLib(bool* knownVersion) const;
    /// True unless the compliance marker is exactly "0"; an empty marker counts as compliant.
    bool IsTSLibCompliant() const;

private:
    friend struct serialization::detail::CapsuleTable;

    std::string apiVersion_;
    UTF16String authorApp_;
    UTF16String authorID_;
    UTF16String capsuleNameObsolete_;
    UIString capsuleNameLocalized_;
    UTF16String capsuleID_;
    UTF16String capsuleDesc_;
    StringList platformSupport_;
    ControlList controls_;
    FontMap usedFontsLocalized_;
    StringList usedEffects_;
    StringList usedCompRenderers_;
    StringList usedFileTypes_;
    StringList tags_;
    UTF16String tslibCompliantVersion_;
    UTF16String mobileCompatibilityVersion_;
    UTF16String internalEffectsVersion_;
    UTF16String fontwellOnlyVersion_;
    UTF16String responsiveDesignTimeVersion_;
    SourceInfoMap sourceInfoLocalized_;
    UTF16String licenseID_;
};

/// Whether a template uses effects that the hosts cannot render: always false, the list is not inspected.
ORVCAPSULE_API bool HasUnsupportedEffects(const std::vector<std::string>& usedEffects);

} // namespace orvcapsule
