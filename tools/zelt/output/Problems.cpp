#include <tools/zelt/output/Problems.h>

#include <functional>

namespace zelt {

void Problems::Add(Problem problem)
{
    const std::string_view what = problem.entry.empty() ? problem.text : orvcore::AsNarrow(problem.entry);
    const bool isNew = known_.insert(std::hash<std::string>()(problem.code + '\0' + std::string(what))).second;
    if (isNew && told_.size() < kMostTold) {
        told_.push_back(std::move(problem));
    }
}

std::vector<Problem> Problems::Told() const
{
    std::vector<Problem> told = told_;
    if (known_.size() > told.size()) {
        told.push_back({"MoreProblems", "and " + std::to_string(known_.size() - told.size()) + " more"});
    }
    return told;
}

std::string Shortened(std::string_view text)
{
    constexpr std::size_t kMost = 80;
    if (text.size() <= kMost) {
        return std::string(text);
    }
    std::size_t end = kMost;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) { // inside a character
        --end;
    }
    return std::string(text.substr(0, end)) + "...";
}

} // namespace zelt
