#pragma once

#include <orvcore/files/Files.h>
#include <orvcore/files/shared/NewFolders.h>
#include <orvcore/files/shared/PathTree.h>

#include <filesystem>
#include <system_error>
#include <vector>

namespace orvcore::detail {

/// A folder into which many files are written, and none outside of it: a symbolic link below it, which someone else
/// left there, must not lead a file elsewhere. All or nothing: unless Keep is called, the folders and files that it has
/// created are removed, and those that it has replaced are put back. Relative paths are normal: without "..", "." and
/// doubled separators. Failures are put into the `error` of a call, which is otherwise cleared.
class GuardedFolder {
public:
    explicit GuardedFolder(std::filesystem::path folder);
    GuardedFolder(const GuardedFolder&) = delete;
    GuardedFolder& operator=(const GuardedFolder&) = delete;
    ~GuardedFolder();

    /// Creates the folder and its parents where missing and, inside, a private one for files on their way.
    /// @return the private folder's path
    std::filesystem::path Open(std::error_code& error);
    /// Creates the folder `relative` and its parents where missing.
    bool MakeDirectory(const std::filesystem::path& relative, std::error_code& error);
    /// Whether anything stands at `relative`.
    bool Has(const std::filesystem::path& relative) const;
    /// Moves a file from the private folder to its place.
    bool PutFile(const std::filesystem::path& from, const std::filesystem::path& relative, IfExists ifExists,
                 std::error_code& error);
    void Keep() noexcept;

private:
    using Tree = PathTree<std::filesystem::path::value_type>;
    struct Step {
        Tree::Node folder;
        Tree::String name; // of the file that was put there; empty: the folder itself was created
        bool hadOld;       // a file stood there, and now waits in the private folder
    };

    bool Enter(Tree::View relative, Tree::Node& node, std::error_code& error);
    bool MakeOne(const std::filesystem::path& directory, bool& isNew, std::error_code& error) const;
    bool SetAside(const std::filesystem::path& place, const std::filesystem::path& aside, std::error_code& error) const;
    std::filesystem::path PlaceOf(const Step& step) const;
    std::filesystem::path AsideOf(std::size_t step) const;
    bool Undo() noexcept;

    // As the caller named it, made absolute: it is worked in by this name. `canonical_` is only compared with.
    std::filesystem::path folder_;
    std::filesystem::path canonical_;
    std::filesystem::path private_;
    NewFolders outer_; // the folder itself and those above it
    Tree known_;       // folders that are there and lead nowhere else
    std::vector<Step> steps_;
};

} // namespace orvcore::detail
