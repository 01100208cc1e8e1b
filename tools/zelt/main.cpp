#include <tools/zelt/commands/CommandLine.h>
#include <tools/zelt/output/Output.h>

#include <orvcore/tasks/Executor.h>
#include <tools/support/Arguments.h>

#include <exception>

int main(int argc, char** argv)
{
    zelt::InitOutput();
    auto exit = zelt::ExitCode::kBadFile;
    try {
        auto arguments = orvtools::UTF8Arguments(argc, argv);
        arguments.erase(arguments.begin(), arguments.begin() + (arguments.empty() ? 0 : 1));
        exit = zelt::RunCommandLine(arguments);
    } catch (const std::exception& error) {
        zelt::ReportError(error.what());
    }
    // Waits for workers that are still starting: cut off by the end of the process, they write errors under Wine.
    orvcore::ShutdownExecutors();
    // The last thing: a full disk or a closed pipe may show only now, and the exit code is what scripts look at.
    if (!zelt::FlushOutput()) {
        zelt::ReportError("standard output cannot be written");
        exit = zelt::ExitCode::kBadFile;
    }
    return static_cast<int>(exit);
}
