#include <tools/zelt/commands/CommandLine.h>

#include <tools/zelt/commandline/Language.h>
#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/OpenPackage.h>

#include <capsule/Capsule.h>
#include <orvcore/host/Application.h>

#include <cstdlib>

namespace zelt {

ExitCode RunCommandLine(const std::vector<std::string>& arguments)
{
    CommonOptions common;
    const Program program = MakeProgram(common);
    const Command* command = nullptr;
    std::string name;
    try {
        command = ParseCommandLine(program, common, arguments, name);
        if (command == nullptr && !common.help && !common.version) {
            throw UsageError(name.empty() ? "a command is needed" : name + ": which of its commands is needed");
        }
    } catch (const UsageError& error) {
        ReportError(std::string(error.what()) + " (see zelt " + (name.empty() ? "" : name + ' ') + "--help)");
        return ExitCode::kBadUsage;
    }
    if (common.version) {
        PrintLine("zelt " ZELT_VERSION ", definition format " + orvcapsule::Capsule::GetCurrentAPIVersion());
        return ExitCode::kDone;
    }
    if (common.help) {
        PrintHelp(program, name);
        return ExitCode::kDone;
    }
    orvcore::Application::SetLanguage(ChosenLanguage(common.language));
    const char* password = std::getenv("ZELT_PASSWORD"); // other users cannot see it, unlike an option
    SetPassword(common.password.empty() && password != nullptr ? password : common.password);
    return command->Run();
}

} // namespace zelt
