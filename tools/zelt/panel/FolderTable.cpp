#include <tools/zelt/panel/FolderTable.h>

#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/EntryRow.h>

#include <orvcore/files/Paths.h>
#include <sources/ILumoLibrariesWrapper.h>
#include <sources/SourceNames.h>

#include <algorithm>

// Numbers and labels are only added, never changed: rows that a page has already been told refer to them. Two listed
// folders with one name get different labels, so that a user can tell them apart.

namespace zelt {

namespace {

// The last part of a folder's path; the path where it has none, as of a disk.
std::string TitleOf(const std::string& folder)
{
    const auto path = orvcore::WithoutClosingSeparators(ToPath(folder));
    return path.has_filename() ? ToText(path.filename()) : folder;
}

// The label of a folder whose full path leads from `top` down; none where it leads elsewhere.
std::optional<std::string> LabelBelow(const std::pair<std::string, std::string>& top, const std::string& folder)
{
    const auto relative = ToPath(folder).lexically_relative(ToPath(top.first));
    if (relative.empty() || *relative.begin() == "..") {
        return std::nullopt;
    }
    std::string label = top.second;
    for (const auto& part : relative) {
        label += part == "." ? "" : '/' + ToText(part);
    }
    return label;
}

} // namespace

std::string FolderOf(const orvcapsule::CapsuleEntry& entry)
{
    return ToText(orvcore::PathFromUTF8(entry.path).parent_path());
}

FolderTable::FolderTable(const std::vector<std::string>& folders)
{
    for (const std::string& folder : folders) {
        std::string label = TitleOf(folder);
        const auto isTaken = [&] {
            return std::any_of(tops_.begin(), tops_.end(), [&](const auto& top) { return top.second == label; });
        };
        for (int number = 2; isTaken(); ++number) {
            label = TitleOf(folder) + " (" + std::to_string(number) + ')';
        }
        tops_.emplace_back(ToText(orvcore::WithoutClosingSeparators(ToPath(folder))), label);
    }
}

std::size_t FolderTable::Find(const orvcapsule::CapsuleEntry& entry)
{
    const bool isLocal = entry.GetSourceID() == orvcapsule::kLocalSourceID;
    const std::string place = isLocal ? FolderOf(entry) : entry.GetSourceID() + '\n' + entry.GetLibraryID();
    const auto [at, isNew] = numbers_.try_emplace(place, labels_.size());
    if (isNew) {
        labels_.push_back(LabelOf(entry, place));
    }
    return at->second;
}

std::optional<std::size_t> FolderTable::Find(const std::string& folder) const
{
    const auto at = numbers_.find(folder);
    return at == numbers_.end() ? std::nullopt : std::optional(at->second);
}

std::string FolderTable::LabelOf(const orvcapsule::CapsuleEntry& entry, const std::string& folder) const
{
    if (entry.GetSourceID() == orvcapsule::kLumoLibrariesSourceID) {
        return "Lumo Libraries/" + orvcapsule::ILumoLibrariesWrapper::GetLibraryNameFromLibraryID(entry.GetLibraryID());
    }
    std::string nearest; // folders may lie in one another
    std::string label = TitleOf(folder);
    for (const auto& top : tops_) {
        auto below = LabelBelow(top, folder);
        if (below && nearest.size() < top.first.size()) {
            nearest = top.first;
            label = std::move(*below);
        }
    }
    return label;
}

void WriteFolderList(orvcore::serialization::JSONTextWriter& writer, const FolderTable& folders)
{
    WriteList(writer, "folders", folders.Labels());
}

} // namespace zelt
