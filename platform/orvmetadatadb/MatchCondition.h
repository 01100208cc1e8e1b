#pragma once

#include <orvcore/text/Strings.h>

#include <vector>

namespace orvmetadatadb {

/// One term of a search.
struct MatchCondition {
    /// How a term is compared with a row's text.
    enum Mode : int {
        kContains = 0, ///< the folded text contains the folded term
    };

    orvcore::UTF16String term;
    /// The tables whose texts are searched.
    std::vector<orvcore::UTF16String> tables;
    /// One `Mode` for each table, in the tables' order.
    std::vector<int> modes;
};

/// How the conditions of one search combine.
enum MatchOperator : int {
    kMatchAll = 0, ///< keys for which every condition holds, each in any row of the key
};

/// One answer of `RapidFindDB::GetSimilarList`.
struct SimilarItem {
    orvcore::UTF16String text;
};

} // namespace orvmetadatadb
