#pragma once

#include <validation/Finding.h>

#include <string_view>
#include <unordered_set>

namespace orvcapsule::detail {

/// Findings while they are gathered, each once: a damaged entry shows in every way of reading it.
class FindingList {
public:
    /// Whether another finding of this severity would be kept. One that would not is worth no work.
    bool HasRoom(Severity severity) const noexcept;
    /// Keeps a finding, or counts it where there is no room. One with the code and the entry of another (the text where
    /// there is no entry) is passed over.
    void AddOnce(Finding finding);
    /// Keeps a finding, or counts it.
    void Add(Finding finding);
    /// Counts one that was not worth making.
    void Count(Severity severity) noexcept;

    Findings Take();

private:
    Findings findings_;
    std::size_t keptErrors_ = 0;
    std::size_t keptWarnings_ = 0;
    std::unordered_set<std::size_t> known_; // hashes: the names of all could take as much memory as a package wants
};

/// A text of the template in quotation marks, shortened.
std::string Quoted(std::string_view text);

} // namespace orvcapsule::detail
