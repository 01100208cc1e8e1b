#pragma once

#include <bench/SearchBenchData.h>

#include <optional>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace bench {

/// Bare FTS5 over the same rows: a table of (key, text) with one of the tokenizers, nothing between it and the caller.
class FullTextFloor {
public:
    enum class Tokenizer {
        Words,    ///< unicode61, FTS5's default
        Trigrams, ///< trigram
        Bigrams,  ///< overlapping pairs of letters, made before the insert, so that every substring is a phrase
    };

    FullTextFloor(const std::string& file, Tokenizer tokenizer);
    ~FullTextFloor();
    FullTextFloor(const FullTextFloor&) = delete;
    FullTextFloor& operator=(const FullTextFloor&) = delete;

    /// Inserts all texts in one transaction; seconds it took, preparing the pairs not counted.
    double Insert(const std::vector<Template>& templates);
    /// The keys that every term finds; nothing when the tokenizer cannot look for one of them.
    std::optional<std::vector<std::u16string>> Match(const std::vector<std::u8string>& terms);

private:
    std::optional<std::string> Expression(const std::u8string& term) const;

    Tokenizer tokenizer_;
    sqlite3* database_ = nullptr;
};

} // namespace bench
