#include "MeasuredRun.h"

#include <orvcore/text/Strings.h>

#include <windows.h>

#include <psapi.h>

namespace test {

namespace {

std::wstring CommandLine(const std::filesystem::path& program, const std::vector<std::string>& arguments)
{
    std::wstring line = L'"' + program.wstring() + L'"';
    for (const std::string& argument : arguments) {
        line += L" \"" + std::filesystem::path(orvcore::ToUTF16(argument)).wstring() + L'"';
    }
    return line;
}

double Seconds(const FILETIME& time)
{
    return static_cast<double>((std::uint64_t{time.dwHighDateTime} << 32) + time.dwLowDateTime) / 1e7;
}

double ProcessorSeconds(HANDLE process)
{
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    return ::GetProcessTimes(process, &created, &ended, &kernel, &user) ? Seconds(kernel) + Seconds(user) : 0;
}

// Some emulators forget the memory of a process that has ended, so it is asked again and again.
void WaitAndWatch(HANDLE process, MeasuredRun& run)
{
    for (DWORD ended = WAIT_TIMEOUT; ended == WAIT_TIMEOUT;) {
        ended = ::WaitForSingleObject(process, 10);
        PROCESS_MEMORY_COUNTERS memory{};
        if (::K32GetProcessMemoryInfo(process, &memory, sizeof(memory)) && memory.PeakWorkingSetSize > run.peakBytes) {
            run.peakBytes = memory.PeakWorkingSetSize;
        }
    }
}

} // namespace

MeasuredRun RunMeasured(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                        const std::filesystem::path& output)
{
    MeasuredRun run;
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE file = ::CreateFileW(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = file;
    start.hStdError = file;
    PROCESS_INFORMATION process{};
    std::wstring line = CommandLine(std::filesystem::path(program).make_preferred(), arguments);
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        WaitAndWatch(process.hProcess, run);
        DWORD exitCode = 0;
        if (::GetExitCodeProcess(process.hProcess, &exitCode)) {
            run.exitCode = static_cast<int>(exitCode);
        }
        // Some emulators answer with the asking process's own time, which then lies between two answers for itself.
        const double before = ProcessorSeconds(::GetCurrentProcess());
        const double answered = ProcessorSeconds(process.hProcess);
        const double after = ProcessorSeconds(::GetCurrentProcess());
        run.processorSeconds = before <= answered && answered <= after ? 0 : answered;
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }
    ::CloseHandle(file);
    return run;
}

} // namespace test
