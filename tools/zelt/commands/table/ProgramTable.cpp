#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>

namespace zelt {

std::vector<Command> ProgramCommands()
{
    return {
        Define("help", "Explain a command", &RunHelp,
               [](Command& command, HelpOptions& options) {
                   command.Argument("[COMMAND...]", options.words, "Its name; without one, all commands are listed");
                   command.Example("help index build", "what \"index build\" takes");
               }),
        Define("generate", "Print the man page or a shell's completion of this program", &RunGenerate,
               [](Command& command, GenerateOptions& options) {
                   command.Argument("WHAT", options.what, "man, bash, zsh or fish").choices = {"man", "bash", "zsh",
                                                                                               "fish"};
                   command.Hide();
               }),
    };
}

Program MakeProgram(CommonOptions& common)
{
    Program program{{}, {"", "Reads, edits, makes and finds motion-graphics template packages (.zelt)."}};
    for (const auto& list : {&ReadingCommands, &PackingCommands, &EditingCommands, &BrowsingCommands, &LibraryCommands,
                             &StockCommands, &SuiteCommands, &ProgramCommands}) {
        for (Command& command : list()) {
            program.commands.push_back(std::move(command));
        }
    }
    program.common.Option("--language LOCALE", common.language,
                          "Language of localised texts and parts (default: ZELT_LANGUAGE, else LC_ALL, LC_MESSAGES or "
                          "LANG, else en_US)");
    program.common.Option(
        "--password TEXT", common.password,
        "Password of the packages that are read, changed or made (default: ZELT_PASSWORD); listings use none");
    program.common.Option("-h, --help", common.help, "Explain the command");
    program.common.Option("--version", common.version, "Print the versions of the program and of what it writes");
    program.common.Note("Exit codes: 0 done, 1 a file was bad, 2 the command line was wrong, 130 interrupted. NO_COLOR "
                        "in the environment turns colours off.");
    return program;
}

} // namespace zelt
