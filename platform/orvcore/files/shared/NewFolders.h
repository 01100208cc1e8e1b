#pragma once

#include <orvcore/Export.h>

#include <filesystem>
#include <system_error>
#include <vector>

namespace orvcore::detail {

/// Creates a folder and its missing parents. Unless Keep is called, the destructor removes those that it has created,
/// except one that is not empty: so work that fails leaves no folders behind.
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
