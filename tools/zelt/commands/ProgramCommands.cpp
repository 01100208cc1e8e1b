#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>
#include <tools/zelt/output/Output.h>

namespace zelt {

namespace {

std::string Joined(const std::vector<std::string>& words)
{
    std::string joined;
    for (const std::string& word : words) {
        joined += (joined.empty() ? "" : " ") + word;
    }
    return joined;
}

} // namespace

ExitCode PrintHelp(const Program& program, const std::string& name)
{
    const Command* command = program.Find(name);
    if (command == nullptr && !name.empty() && !program.IsGroup(name)) {
        ReportError("there is no command \"" + name + "\" (see zelt --help)");
        return ExitCode::kBadUsage;
    }
    Print(command == nullptr ? HelpOnProgram(program, name) : HelpOnCommand(program, *command));
    return ExitCode::kDone;
}

ExitCode RunHelp(const HelpOptions& options)
{
    CommonOptions common;
    return PrintHelp(MakeProgram(common), Joined(options.words));
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
