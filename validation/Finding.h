#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <cstddef>
#include <string>
#include <vector>

namespace orvcapsule {

enum class Severity {
    Warning, ///< legal, but surely not meant: hosts read the template, and show or keep something else than was
             ///< intended
    Error,   ///< some host refuses the template, or loses something of it
};

/// One thing that is wrong with a template: what, where, and how to put it right. A plain value; texts are English and
/// UTF-8. Texts of the template that stand in one are shortened, and not made safe for a terminal
/// (`orvcore::Printable`).
struct Finding {
    Severity severity = Severity::Error;
    std::string code; ///< its kind, for programs: "MissingKey"; docs/findings.md has them all. Codes are kept for ever
    std::string text; ///< for people, one sentence without a full stop: what is wrong and where
    orvcore::UTF8String entry = {}; ///< the package's entry, or the folder's file; empty: the whole
    std::string pointer = {};  ///< JSON pointer (RFC 6901) to the value in the definition, or to where it should be
    std::size_t line = 0;      ///< of the definition's text, from 1; 0: the finding has no place in it
    std::size_t column = 0;    ///< in characters, from 1; 0 as above
    std::string found = {};    ///< what stands there, as in the text, on one line; empty when there is nothing
    std::string expected = {}; ///< what could stand there
    std::string nearest = {};  ///< the known name that is most like the one found; empty when none is like it
};

/// What is wrong with a template. Of a hostile one, where that may be anything, the first are kept and the others
/// counted.
struct Findings {
    /// How many of each severity are kept.
    static constexpr std::size_t kMostKept = 100;

    std::vector<Finding> list; ///< the archive's, then the definition's in the order of its text, then the parts'
    std::size_t moreErrors = 0;
    std::size_t moreWarnings = 0;

    bool HasErrors() const noexcept
    {
        for (const Finding& finding : list) {
            if (finding.severity == Severity::Error) {
                return true;
            }
        }
        return false;
    }
};

} // namespace orvcapsule
