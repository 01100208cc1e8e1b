#pragma once

#include <validation/detail/DefinitionText.h>
#include <validation/detail/FindingList.h>

#include <string>
#include <string_view>
#include <vector>

namespace orvcapsule::detail {

/// What is said of a place in a definition. The texts go on after "control 3 ("size"): ".
struct Note {
    Severity severity;
    std::string_view code;
    std::string text;
    std::string expected = {};
    std::string nearest = {};
};

/// Gathers findings of one definition. Where they stand is worked out at the end, for those that are kept.
class DefinitionReport {
public:
    /// Both outlive the report.
    DefinitionReport(std::string_view text, const PlacedValue& root);

    bool HasRoom(Severity severity) const noexcept
    {
        return (severity == Severity::Error ? errors_ : warnings_) < Findings::kMostKept;
    }
    /// How many findings there are for which readers refuse the definition.
    std::size_t Refusals() const noexcept
    {
        return refusals_;
    }
    /// About a value.
    void At(const PlacedValue& value, Note note);
    /// About a member's key.
    void AtKey(const PlacedValue& member, Note note);
    /// About a member that `object` lacks.
    void Absent(const PlacedValue& object, std::string_view key, Note note);

    /// The bytes of a value on one line, shortened.
    std::string Found(const PlacedValue& value) const;

    /// Puts the findings into `to`, in the order of the text.
    void Finish(FindingList& to);

private:
    struct Pending {
        Finding finding;
        std::size_t offset; // where it is shown
        std::size_t begin;  // the value's, for the pointer
        std::string absent; // the member that the value lacks
    };

    void Add(Pending pending);
    void Place(Pending& pending) const;

    std::string_view text_;
    const orvcore::serialization::JSONOutline& root_;
    std::size_t errors_ = 0;
    std::size_t warnings_ = 0;
    std::size_t refusals_ = 0;
    std::vector<Pending> pending_;
};

} // namespace orvcapsule::detail
