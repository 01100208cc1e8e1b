#pragma once

#include <string>
#include <vector>

/// The arguments between the system and the parser.
namespace zelt {

/// Takes what is behind the first "--" out of the arguments of a command that gives it a meaning of its own; the parser
/// would add it to the folders.
std::vector<std::string> TakeTerms(std::vector<std::string>& arguments);

/// Marks the arguments of a command that are not options. To the parser "[a,b]" is a list, "++" an end and a command's
/// name a command wherever they stand; marked, they are the names of files or the terms that they are meant to be.
void MarkLiterals(std::vector<std::string>& arguments);

/// An argument without its mark, if it has one.
std::string WithoutMark(std::string argument);

} // namespace zelt
