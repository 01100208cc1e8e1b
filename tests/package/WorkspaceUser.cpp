// workspace_user NAME OTHER MEETING: a host that shares the local working folder with another one. Initialises it,
// keeps a file NAME in it, and again and again asks for the folder's deletion, while the other does the same. They meet
// by files in the folder MEETING. Ends with 1 when its file has gone, with 2 when the other does not come.
#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <package/Workspace.h>

#include <chrono>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

void Make(const fs::path& file)
{
    orvcore::WriteBufferToFile(file, "x", 1);
}

bool Meet(const fs::path& meeting, const std::string& name, const std::string& other, const char* when)
{
    Make(meeting / (name + when));
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!orvcore::Exists(meeting / (other + when))) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        return 3;
    }
    const std::string name = argv[1];
    const std::string other = argv[2];
    const fs::path meeting = argv[3];
    if (!Meet(meeting, name, other, ".started")) {
        return 2;
    }
    orvcapsule::InitTempDirectory(true);
    const fs::path folder = orvcore::PathFromUTF8(orvcapsule::GetTempLocalDirectory());
    Make(folder / name);
    if (!Meet(meeting, name, other, ".initialised")) {
        return 2;
    }
    Make(folder / "cleanupRequest");
    bool there = true;
    for (int i = 0; i < 5000 && there; ++i) {
        orvcapsule::CleanupTempDirectory(0, orvcore::PathToUTF16(folder));
        there = orvcore::Exists(folder / name);
    }
    if (!Meet(meeting, name, other, ".ended")) { // alone, it may delete the folder
        return 2;
    }
    return there ? 0 : 1;
}
