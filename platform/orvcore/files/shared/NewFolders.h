#pragma once

#include <orvcore/Export.h>

#include <filesystem>
#include <system_error>
#include <vector>

namespace orvcore::detail {

/// Creates a folder and its missing parents, and takes those that it has created away again unless Keep is called:
/// work that fails leaves none behind. One that holds something by then stays.
class ORVPLATFORM_API NewFolders {
public:
    NewFolders() = default;
    NewFolders(const NewFolders&) = delete;
    NewFolders& operator=(const NewFolders&) = delete;
    ~NewFolders();

    /// False, with the reason in `error`, when the folder is not there afterwards.
    bool Make(const std::filesystem::path& folder, std::error_code& error);
    void Keep() noexcept
    {
        made_.clear();
    }

private:
    std::vector<std::filesystem::path> made_; // each after its parent
};

} // namespace orvcore::detail
