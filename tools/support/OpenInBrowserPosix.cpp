#include <tools/support/OpenInBrowser.h>

#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string_view>
#include <thread>

extern char** environ; // NOLINT(readability-redundant-declaration): only some systems declare it

namespace orvtools {

bool OpenInBrowser(const std::string& address)
{
    const auto isSet = [](const char* name) {
        const char* value = std::getenv(name);
        return value != nullptr && *value != '\0';
    };
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY")) { // as over a remote shell: a browser for text would take over
        return false;
    }
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        posix_spawn_file_actions_addopen(&quiet, stream, "/dev/null", O_RDWR, 0);
    }
    std::string program = "xdg-open";
    std::string argument = address;
    char* const arguments[] = {program.data(), argument.data(), nullptr};
    pid_t child = 0;
    const bool isStarted = posix_spawnp(&child, program.c_str(), &quiet, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&quiet);
    if (isStarted) { // somebody must take the child's end, or it stays in the system's list
        std::thread([child] { waitpid(child, nullptr, 0); }).detach();
    }
    return isStarted;
}

} // namespace orvtools
