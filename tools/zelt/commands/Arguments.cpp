#include <tools/zelt/commands/Arguments.h>

#include <algorithm>
#include <utility>

namespace zelt {

namespace {

using Arguments = std::vector<std::string>;

constexpr char kMark = '\0'; // no argument of a system's holds one

// The first argument from `begin` on that is neither an option nor the value of the one that all commands share.
Arguments::iterator FindCommand(Arguments::iterator begin, Arguments::iterator end)
{
    for (auto at = begin; at != end; ++at) {
        if (*at == "--language" && at + 1 != end) {
            ++at;
        } else if (!at->starts_with('-')) {
            return at;
        }
    }
    return end;
}

} // namespace

std::vector<std::string> TakeTerms(Arguments& arguments)
{
    const auto command = FindCommand(arguments.begin(), arguments.end());
    const auto separator = std::find(arguments.begin(), arguments.end(), "--");
    if (command == arguments.end() || (*command != "search" && *command != "tags") || separator == arguments.end()) {
        return {};
    }
    Arguments terms(separator + 1, arguments.end());
    arguments.erase(separator, arguments.end());
    return terms;
}

void MarkLiterals(Arguments& arguments)
{
    auto command = FindCommand(arguments.begin(), arguments.end());
    if (command != arguments.end() && (*command == "index" || *command == "library")) {
        command = FindCommand(command + 1, arguments.end());
    }
    if (command == arguments.end()) {
        return;
    }
    Arguments marked(arguments.begin(), command + 1);
    bool onlyLiterals = false;
    for (auto at = command + 1; at != arguments.end(); ++at) {
        if (onlyLiterals || !at->starts_with('-')) {
            marked.push_back(kMark + *at);
        } else if (at->starts_with("--") &&
                   at->find('=') == at->size() - 1) { // the parser would take the next argument
            marked.insert(marked.end(), {at->substr(0, at->size() - 1), std::string(1, kMark)});
        } else {
            onlyLiterals = *at == "--";
            marked.push_back(*at);
        }
    }
    arguments = std::move(marked);
}

std::string WithoutMark(std::string argument)
{
    if (argument.starts_with(kMark)) {
        argument.erase(0, 1);
    }
    return argument;
}

} // namespace zelt
