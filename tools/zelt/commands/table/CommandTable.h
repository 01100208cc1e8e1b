#pragma once

#include <tools/zelt/commandline/Program.h>

#include <vector>

/// The table of commands. A command is one entry of one of these lists; parsing, help, man page and completions follow.
namespace zelt {

std::vector<Command> ReadingCommands();  ///< what packages hold
std::vector<Command> PackingCommands();  ///< packages as archives
std::vector<Command> EditingCommands();  ///< making and changing templates
std::vector<Command> BrowsingCommands(); ///< templates in folders
std::vector<Command> LibraryCommands();  ///< search indexes and cloud libraries on disk
std::vector<Command> StockCommands();    ///< the stock service, and one for development
std::vector<Command> SuiteCommands();    ///< other programs of the suite
std::vector<Command> ProgramCommands();  ///< help on this program

/// All commands, in the order in which help lists them.
Program MakeProgram(CommonOptions& common);

constexpr char kJSONForEachPackage[] = "One JSON object for each package, on one line";

} // namespace zelt
