#pragma once

#include <tools/zelt/commandline/Command.h>

#include <string>
#include <vector>

namespace zelt {

/// What all commands take.
struct CommonOptions {
    std::string language;
    std::string password; ///< of the packages
    bool help = false;
    bool version = false;
};

/// Everything that help, completions and parsing ask for.
struct Program {
    std::vector<Command> commands; ///< in the order in which help lists them
    Command common;                ///< its options are those of all commands

    /// Null when there is none of this name.
    const Command* Find(std::string_view name) const;
    /// Whether the name is the first word of other commands' names: "index" of "index build".
    bool IsGroup(std::string_view word) const;
};

/// Finds the command of the arguments and gives it, and the common options, their values.
/// @return null when the arguments name no command, as those of "zelt --help" and "zelt index --help"
/// @param group  receives the words that were read of a command's name
/// @throws UsageError  that says what is wrong, and what was likely meant
const Command* ParseCommandLine(const Program& program, const CommonOptions& common,
                                const std::vector<std::string>& arguments, std::string& group);

/// @name Help
/// Texts for people, wrapped to the terminal's width.
/// @{
/// All commands, or those of a group. @param group  empty: all
std::string HelpOnProgram(const Program& program, std::string_view group);
std::string HelpOnCommand(const Program& program, const Command& command);
/// @}

/// @name Files that are installed beside the program
/// @{
std::string ManPage(const Program& program, std::string_view version);
std::string BashCompletion(const Program& program);
std::string ZshCompletion(const Program& program);
std::string FishCompletion(const Program& program);
/// @}

} // namespace zelt
