#include "MeasuredRun.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

MeasuredRun RunMeasured(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                        const std::filesystem::path& output)
{
    std::vector<char*> words = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = -1;
    int status = -1;
    rusage usage{};
    MeasuredRun run;
    if (::posix_spawn(&child, program.c_str(), &files, nullptr, words.data(), environ) == 0 &&
        ::wait4(child, &status, 0, &usage) == child) {
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        run.processorSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
        run.peakBytes = static_cast<std::uint64_t>(usage.ru_maxrss) << 10;
    }
    posix_spawn_file_actions_destroy(&files);
    return run;
}

} // namespace test
