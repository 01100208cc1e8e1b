#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace orvcore::detail {

/// What the system tells of a folder and those below it; one implementation a system. Used by one thread at a time, but
/// for Wake.
class FolderNotices {
public:
    FolderNotices() = default;
    FolderNotices(const FolderNotices&) = delete;
    FolderNotices& operator=(const FolderNotices&) = delete;
    virtual ~FolderNotices() = default;

    enum class Watched : std::uint8_t {
        No,    ///< the system cannot tell of it
        Still, ///< as before
        Anew,  ///< from now on: it was not watched, or another folder had its name
    };
    /// Asks for notices of what happens directly in the folder that has this name now.
    virtual Watched Watch(const std::filesystem::path& folder) = 0;
    /// Asks for none any more.
    virtual void Forget(const std::filesystem::path& folder) = 0;

    /// Waits for a notice, a call of Wake or the end of the time, and takes all notices there are.
    /// @return whether something happened in any of the folders
    virtual bool Wait(std::chrono::milliseconds longest) = 0;
    /// Ends a Wait, this one or the next. Any thread.
    virtual void Wake() noexcept = 0;
};

/// @param top  the folders that will be asked for are this one and, with `withSubFolders`, those below it
std::unique_ptr<FolderNotices> MakeFolderNotices(const std::filesystem::path& top, bool withSubFolders);

} // namespace orvcore::detail
