#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lumolibmanager {
struct LeftOut;
}

namespace zelt {

/// How the program ends.
enum class ExitCode : int {
    kDone = 0,
    kBadFile = 1,     ///< a file could not be read or written, or is not what it should be
    kBadUsage = 2,    ///< the command line asks for something that cannot be done
    kCancelled = 130, ///< the user interrupted; what shells answer for a program that ended so
};

/// What is wrong with one file; ends the work on it.
class FileError : public std::runtime_error {
public:
    FileError(std::string file, const std::string& what)
        : std::runtime_error(what)
        , file_(std::move(file))
    {
    }
    const std::string& GetFile() const noexcept
    {
        return file_;
    }

private:
    std::string file_;
};

/// The command line asks for what this file or this program cannot do; ends the command.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The user interrupted the work; ends the command.
class Cancelled : public std::runtime_error {
public:
    Cancelled()
        : std::runtime_error("cancelled")
    {
    }
};

/// Writes "zelt: FILE: WHAT" as one line on standard error.
void ReportError(std::string_view file, std::string_view what);
/// Writes "zelt: WHAT" as one line on standard error.
void ReportError(std::string_view what);

/// Reports what a library manager left out, one line each; `kBadFile` when there is something.
ExitCode ReportLeftOut(const std::vector<lumolibmanager::LeftOut>& leftOut);

/// Reports the exception that is being handled, of the work on `file`.
ExitCode ReportCurrentException(const std::string& file);

/// Runs the work on one file; what it throws is reported as an error of that file.
template <class Work>
ExitCode OnFile(const std::string& file, Work&& work)
{
    try {
        work();
        return ExitCode::kDone;
    } catch (...) {
        return ReportCurrentException(file);
    }
}

} // namespace zelt
