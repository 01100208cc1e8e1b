#include <orvcore/text/NearestName.h>

#include <orvcore/text/shared/ASCII.h>

#include <algorithm>
#include <array>

namespace orvcore {

namespace {

// Bounds the table, and the time: a longer word is no misspelt name.
constexpr std::size_t kLongest = 64;

// How many letters to add, drop, change or swap make one text of the other. Rows of the table are kept for three
// letters of `from`: a swap looks two back.
std::size_t Distance(std::string_view from, std::string_view to)
{
    std::array<std::array<std::size_t, kLongest + 1>, 3> rows{};
    for (std::size_t j = 0; j <= to.size(); ++j) {
        rows[0][j] = j;
    }
    for (std::size_t i = 1; i <= from.size(); ++i) {
        auto& row = rows[i % 3];
        const auto& last = rows[(i + 2) % 3];
        const auto& beforeLast = rows[(i + 1) % 3];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const bool isSame = ToASCIILower(from[i - 1]) == ToASCIILower(to[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && ToASCIILower(from[i - 1]) == ToASCIILower(to[j - 2]) &&
                ToASCIILower(from[i - 2]) == ToASCIILower(to[j - 1])) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return rows[from.size() % 3][to.size()];
}

} // namespace

std::string NearestName(std::string_view word, const std::vector<std::string>& names)
{
    std::string nearest;
    std::size_t fewest = kLongest;
    for (const std::string& name : names) {
        if (word.empty() || word.size() > kLongest || name.size() > kLongest) {
            continue;
        }
        const std::size_t distance = Distance(word, name);
        // At most a third of the letters may differ: a worse guess confuses more than it helps.
        if (distance < fewest && distance * 3 <= std::max(name.size(), word.size())) {
            fewest = distance;
            nearest = name;
        }
    }
    return nearest;
}

} // namespace orvcore
