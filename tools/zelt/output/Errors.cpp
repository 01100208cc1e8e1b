#include <tools/zelt/output/Errors.h>

#include <tools/zelt/output/Output.h>

#include <tools/support/Console.h>

#include <lumolibmanager/LumoLibManager.h>

#include <filesystem>
#include <new>

namespace zelt {

void ReportError(std::string_view what)
{
    FlushOutput(); // where both streams go to one place, lines stay in order
    const std::string line = "zelt: " + Printable(what) + '\n';
    orvtools::WriteLines(orvtools::StandardStream::Error, line);
}

void ReportError(std::string_view file, std::string_view what)
{
    ReportError(std::string(file) + ": " + std::string(what));
}

ExitCode ReportLeftOut(const std::vector<lumolibmanager::LeftOut>& leftOut)
{
    for (const lumolibmanager::LeftOut& left : leftOut) {
        const std::string element = left.elementID.empty() ? "" : "element \"" + left.elementID + "\": ";
        ReportError(orvcore::AsNarrow(left.place), element + left.reason); // which names the file
    }
    return leftOut.empty() ? ExitCode::kDone : ExitCode::kBadFile;
}

// One place for all commands, so that each kind of failure has one form and one exit code. The order of the handlers
// matters: a UsageError is a runtime_error, too.
ExitCode ReportCurrentException(const std::string& file)
{
    try {
        throw;
    } catch (const UsageError& error) {
        ReportError(file, error.what());
        return ExitCode::kBadUsage;
    } catch (const Cancelled& cancelled) {
        ReportError(cancelled.what());
        return ExitCode::kCancelled;
    } catch (const FileError& error) {
        ReportError(error.GetFile(), error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        // Its own text holds paths in the machine's encoding; the reason alone is plain.
        ReportError(file, error.code().message());
    } catch (const std::bad_alloc&) {
        ReportError(file, "memory ran out");
    } catch (const std::exception& error) {
        ReportError(file, error.what());
    }
    return ExitCode::kBadFile;
}

} // namespace zelt
