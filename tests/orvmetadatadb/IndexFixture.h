#pragma once

#include <tests/support/TempFolder.h>

#include <orvcore/files/Paths.h>
#include <orvmetadatadb/RapidFindDB.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace test {

using Texts = std::vector<std::u16string>;

inline const Texts kTables = {u"nametable"};

/// The keys that all of `terms` find; "(failed)" when the search fails.
inline Texts Find(orvmetadatadb::RapidFindDB& index, const Texts& terms)
{
    std::vector<orvmetadatadb::MatchCondition> conditions;
    for (const std::u16string& term : terms) {
        conditions.push_back({term, kTables, {orvmetadatadb::MatchCondition::kContains}});
    }
    Texts keys;
    return index.Match(conditions, orvmetadatadb::kMatchAll, keys) >= 0 ? keys : Texts{u"(failed)"};
}

inline Texts Similar(orvmetadatadb::RapidFindDB& index, const std::u16string& text, int count = 100)
{
    std::vector<orvmetadatadb::SimilarItem> items;
    Texts texts;
    if (index.GetSimilarList(text, count, kTables, items, 0) < 0) {
        return {u"(failed)"};
    }
    for (const auto& item : items) {
        texts.push_back(item.text);
    }
    return texts;
}

/// A folder with the place for an index file.
class IndexTest : public testing::Test {
protected:
    std::u16string File() const
    {
        return orvcore::PathToUTF16(folder / "index.db");
    }
    /// Opens the file and takes the table into use.
    orvmetadatadb::ResultCode Start(orvmetadatadb::RapidFindDB& index) const
    {
        const auto opened = index.Open(File());
        index.SetSynchronousMode(false);
        return opened < 0 ? opened : index.UpdateTable(kTables);
    }

    TempFolder folder;
};

} // namespace test
