#pragma once

#include <capsule/AlternateRectInfo.h>
#include <capsule/ClientControl.h>
#include <capsule/SpreadsheetColumnInfoLoc.h>

#include <kinlet/MediaReplacementProperties.h>
#include <kinlet/TextEditInfo.h>

#include <vector>

// The kinds of client controls. Each keeps its current value in the base's value, under the alternative named here,
// and adds the settings of its kind. `ControlFactory.h` makes them.

namespace orvcapsule {

/// A check box; its value is a bool.
class ORVCAPSULE_API CheckboxControl : public ClientControl {
public:
    CheckboxControl(UTF16String id, UIString name, ControlProperties properties, bool value);
    ~CheckboxControl() override;
};

/// A number within a range; its value is a double, which may lie outside the range.
class ORVCAPSULE_API SliderControl : public ClientControl {
public:
    SliderControl(UTF16String id, UIString name, ControlProperties properties, double minimum, double maximum,
                  double value);
    ~SliderControl() override;

    double GetMinimum() const noexcept
    {
        return minimum_;
    }
    double GetMaximum() const noexcept
    {
        return maximum_;
    }

private:
    friend struct serialization::detail::ControlTables;
    double minimum_;
    double maximum_;
};

/// An angle in degrees; its value is a double.
class ORVCAPSULE_API AngleControl : public ClientControl {
public:
    AngleControl(UTF16String id, UIString name, ControlProperties properties, double value);
    ~AngleControl() override;
};

/// A colour; its value is a `ColorRGBA`.
class ORVCAPSULE_API ColorControl : public ClientControl {
public:
    ColorControl(UTF16String id, UIString name, ControlProperties properties, ColorRGBA value);
    ~ColorControl() override;
};

/// A point in the composition; its value is a `Point2D`.
class ORVCAPSULE_API Point2DControl : public ClientControl {
public:
    Point2DControl(UTF16String id, UIString name, ControlProperties properties, Point2D value);
    ~Point2DControl() override;
};

/// An editable text; its value is a `UIString`.
class ORVCAPSULE_API StringControl : public ClientControl {
public:
    StringControl(UTF16String id, UIString name, ControlProperties properties, UIString text,
                  kinlet::SourceTextFontEditInfo fontEditInfo, AlternateRectInfo alternateRectInfo,
                  kinlet::ESourceTextOverrideType overrideType);
    ~StringControl() override;

    const kinlet::SourceTextFontEditInfo& GetFontEditInfo() const noexcept
    {
        return fontEditInfo_;
    }
    void SetFontEditInfo(const kinlet::SourceTextFontEditInfo& info)
    {
        fontEditInfo_ = info;
    }
    const AlternateRectInfo& GetAlternateRectInfo() const noexcept
    {
        return alternateRectInfo_;
    }
    void SetAlternateRectInfo(const AlternateRectInfo& info)
    {
        alternateRectInfo_ = info;
    }
    /// How the text overrides the layer's source text. In memory only: a document does not hold it.
    kinlet::ESourceTextOverrideType GetSourceTextOverrideType() const noexcept
    {
        return overrideType_;
    }

private:
    friend struct serialization::detail::ControlTables;
    kinlet::SourceTextFontEditInfo fontEditInfo_;
    AlternateRectInfo alternateRectInfo_;
    kinlet::ESourceTextOverrideType overrideType_;
};

/// A remark for the user; its value is a `UIString`.
class ORVCAPSULE_API CommentControl : public ClientControl {
public:
    CommentControl(UTF16String id, UIString name, ControlProperties properties, UIString text);
    ~CommentControl() override;
};

/// A scale in per cent with one value per dimension; its value is a list of doubles.
class ORVCAPSULE_API ScaleControl : public ClientControl {
public:
    ScaleControl(UTF16String id, UIString name, ControlProperties properties, bool linked, std::int32_t dimensions,
                 std::vector<double> values);
    ~ScaleControl() override;

    /// Whether the dimensions change together.
    bool GetLinked() const noexcept
    {
        return linked_;
    }
    std::int32_t GetDimensions() const noexcept
    {
        return dimensions_;
    }

private:
    friend struct serialization::detail::ControlTables;
    bool linked_;
    std::int32_t dimensions_;
};

/// A group of other controls; its value is the list of their ids, which may name controls that do not exist.
class ORVCAPSULE_API GroupControl : public ClientControl {
public:
    GroupControl(UTF16String id, UIString name, ControlProperties properties, std::vector<UTF16String> members,
                 bool expanded);
    ~GroupControl() override;

    /// Whether the host shows the group opened.
    bool GetExpanded() const noexcept
    {
        return expanded_;
    }

private:
    friend struct serialization::detail::ControlTables;
    bool expanded_;
};

/// A group that takes dropped media; its value is the list of its members' ids. A document holds the shared part of
/// such a control only, and a reader skips it.
class ORVCAPSULE_API GroupDropZoneControl : public ClientControl {
public:
    GroupDropZoneControl(UTF16String id, UIString name, ControlProperties properties, std::vector<UTF16String> members);
    ~GroupDropZoneControl() override;
};

/// A choice; its value is the 32-bit index of the selected entry, which may lie outside the list.
class ORVCAPSULE_API MenuControl : public ClientControl {
public:
    MenuControl(UTF16String id, UIString name, ControlProperties properties, std::int32_t selected,
                std::vector<UIString> entries);
    ~MenuControl() override;

    const std::vector<UIString>& GetEntries() const noexcept
    {
        return entries_;
    }

private:
    friend struct serialization::detail::ControlTables;
    std::vector<UIString> entries_;
};

/// A place for replaceable media; its value is the wide text of the media's cache id.
class ORVCAPSULE_API MediaControl : public ClientControl {
public:
    MediaControl(UTF16String id, UIString name, ControlProperties properties, bool expanded,
                 kinlet::MediaReplacementProperties replacement, UTF16String cacheID);
    ~MediaControl() override;

    /// Whether the host shows the control's panel opened.
    bool GetExpanded() const noexcept
    {
        return expanded_;
    }
    const kinlet::MediaReplacementProperties& GetMediaReplacementProperties() const noexcept
    {
        return replacement_;
    }
    void SetMediaReplacementProperties(const kinlet::MediaReplacementProperties& replacement)
    {
        replacement_ = replacement;
    }

private:
    friend struct serialization::detail::ControlTables;
    bool expanded_;
    kinlet::MediaReplacementProperties replacement_;
};

/// A table of data; its value is a `kinlet::SpreadsheetValue`.
class ORVCAPSULE_API SpreadsheetControl : public ClientControl {
public:
    SpreadsheetControl(UTF16String id, UIString name, ControlProperties properties, std::uint32_t minRows,
                       std::uint32_t maxRows, std::vector<SpreadsheetColumnInfoLoc> columns,
                       kinlet::SpreadsheetValue value);
    ~SpreadsheetControl() override;

    std::uint32_t GetMinRows() const noexcept
    {
        return minRows_;
    }
    std::uint32_t GetMaxRows() const noexcept
    {
        return maxRows_;
    }
    const std::vector<SpreadsheetColumnInfoLoc>& GetColumns() const noexcept
    {
        return columns_;
    }

private:
    friend struct serialization::detail::ControlTables;
    std::uint32_t minRows_;
    std::uint32_t maxRows_;
    std::vector<SpreadsheetColumnInfoLoc> columns_;
};

} // namespace orvcapsule
