#pragma once

#include <sources/CapsuleEntry.h>

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvcore::serialization {
class JSONTextWriter;
}

namespace zelt {

/// The folders and libraries in which templates were found, as a user may pick them: numbered in the order in which
/// they were met. One thread at a time.
class FolderTable {
public:
    /// @param folders  the full paths of the folders that are listed
    explicit FolderTable(const std::vector<std::string>& folders);

    /// The number of an entry's folder.
    std::size_t Find(const orvcapsule::CapsuleEntry& entry);
    /// The number of a folder of the disk; none when no entry was met in it.
    std::optional<std::size_t> Find(const std::string& folder) const;

    /// Names with "/" between a folder and those below it: "Titles/News", "Lumo Libraries/Team".
    const std::vector<std::string>& Labels() const noexcept
    {
        return labels_;
    }

private:
    std::string LabelOf(const orvcapsule::CapsuleEntry& entry, const std::string& folder) const;

    std::vector<std::pair<std::string, std::string>> tops_; // path and label
    std::vector<std::string> labels_;
    std::unordered_map<std::string, std::size_t> numbers_; // by where an entry lies
};

/// The folder that a package lies in.
std::string FolderOf(const orvcapsule::CapsuleEntry& entry);

/// Writes the member "folders", a list that the page finds its labels in by number.
void WriteFolderList(orvcore::serialization::JSONTextWriter& writer, const FolderTable& folders);

} // namespace zelt
