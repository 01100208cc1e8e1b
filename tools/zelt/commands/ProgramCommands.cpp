#include <tools/zelt/commands/CommandLine.h>
#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>
#include <tools/zelt/output/Output.h>

namespace zelt {

void PrintHelp(const Program& program, const std::string& name)
{
    const Command* command = program.Find(name);
    Print(command == nullptr ? HelpOnProgram(program, name) : HelpOnCommand(program, *command));
}

ExitCode RunHelp(const HelpOptions& options)
{
    std::vector<std::string> arguments = options.words;
    arguments.emplace_back("--help");
    return RunCommandLine(arguments);
}

ExitCode RunGenerate(const GenerateOptions& options)
{
    CommonOptions common;
    const Program program = MakeProgram(common);
    if (options.what == "man") {
        Print(ManPage(program, ZELT_VERSION));
    } else if (options.what == "bash") {
        Print(BashCompletion(program));
    } else if (options.what == "zsh") {
        Print(ZshCompletion(program));
    } else if (options.what == "fish") {
        Print(FishCompletion(program));
    } else {
        ReportError("generate: \"" + options.what + "\" is none of man, bash, zsh, fish");
        return ExitCode::kBadUsage;
    }
    return ExitCode::kDone;
}

} // namespace zelt
