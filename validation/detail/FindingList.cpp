#include <validation/detail/FindingList.h>

#include <orvcore/text/Printable.h>

#include <functional>
#include <utility>

namespace orvcapsule::detail {

bool FindingList::HasRoom(Severity severity) const noexcept
{
    return (severity == Severity::Error ? keptErrors_ : keptWarnings_) < Findings::kMostKept;
}

void FindingList::AddOnce(Finding finding)
{
    // The text may differ between two ways of reading one damaged entry, so the entry's name tells them to be one.
    const std::string_view what = finding.entry.empty() ? finding.text : orvcore::AsNarrow(finding.entry);
    // Two findings with one hash lose one of them, which is rare and costs a line of a report; the first of them stays.
    if (known_.insert(std::hash<std::string>()(finding.code + '\0' + std::string(what))).second) {
        Add(std::move(finding));
    }
}

void FindingList::Add(Finding finding)
{
    if (!HasRoom(finding.severity)) {
        return Count(finding.severity);
    }
    ++(finding.severity == Severity::Error ? keptErrors_ : keptWarnings_);
    findings_.list.push_back(std::move(finding));
}

void FindingList::Count(Severity severity) noexcept
{
    ++(severity == Severity::Error ? findings_.moreErrors : findings_.moreWarnings);
}

Findings FindingList::Take()
{
    return std::exchange(findings_, {});
}

std::string Quoted(std::string_view text)
{
    return '"' + orvcore::Shortened(text) + '"';
}

} // namespace orvcapsule::detail
