#pragma once

#include <orvcore/text/Strings.h>

#include <string>
#include <unordered_set>
#include <vector>

namespace zelt {

/// One thing that is wrong with a template.
struct Problem {
    std::string code;               ///< its kind, for machines: "MissingKey"
    std::string text;               ///< for people: what is wrong and where
    orvcore::UTF8String entry = {}; ///< the archive's entry that is refused or damaged
};

/// What is wrong with a template, each thing once: an entry's problem shows again in every way of reading it, and for
/// each of several entries of one name. A hostile package has any number of problems; the first `kMostTold` are kept,
/// the rest are counted.
class Problems {
public:
    static constexpr std::size_t kMostTold = 100;

    void Add(Problem problem);
    bool empty() const noexcept
    {
        return told_.empty();
    }
    const Problem& front() const
    {
        return told_.front();
    }
    /// The problems that were kept; after them, where there were more, one that says how many.
    std::vector<Problem> Told() const;

private:
    std::vector<Problem> told_;
    std::unordered_set<std::size_t> known_; // hashes: the texts of all could take as much memory as a package wants
};

/// A text of the package, such as an id, short enough to stand in a message.
std::string Shortened(std::string_view text);

} // namespace zelt
