#pragma once

#include <tools/stock/detail/Query.h>

#include <orvcore/files/TemporaryFolder.h>
#include <orvmetadatadb/RapidFindDB.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvtools::stock::detail {

/// What is told of a package.
struct Template {
    std::uint32_t number = 0; ///< from 0
    std::filesystem::path package;
    std::string title;
    std::string description;
    std::string creator;
    std::vector<std::string> keywords;
    std::uint32_t width = 0; ///< of the composition, in pixels
    std::uint32_t height = 0;
    std::uint64_t size = 0; ///< bytes of the package
    FormatVersion format;
    bool premium = false;
    std::uint32_t category = 0; ///< 0: none
};

/// Something that can be found: a template under one identifier.
struct Asset {
    std::string id;
    std::shared_ptr<const Template> content;
};

/// The assets of a service: the packages below a folder whose definition can be read. Those below a folder named
/// "premium" cost money; each sub-folder of the folder is a category, numbered from 1 in the order of names. Any thread
/// may use it.
class Catalogue {
public:
    /// @param copies  how many assets there are of each package
    /// @throws std::filesystem::filesystem_error  when the folder cannot be read
    Catalogue(const std::filesystem::path& folder, std::uint32_t copies);

    const std::vector<Asset>& Assets() const noexcept
    {
        return assets_;
    }
    /// Packages and sub-folders that could not be read.
    const std::vector<std::filesystem::path>& Unreadable() const noexcept
    {
        return unreadable_;
    }
    /// Everything that the query finds, whatever its page.
    std::vector<const Asset*> Find(const Query& query);
    /// Null when there is none with this identifier.
    const Asset* FindID(const std::string& id) const;

private:
    void Read(const std::filesystem::path& folder, std::uint32_t copies);
    void Add(const std::shared_ptr<Template>& content, std::string name, std::uint32_t copies);
    void Index(const Template& content);
    std::vector<bool> Matching(const std::vector<std::string>& terms);

    const orvcore::TemporaryFolder folder_; // of the search index
    orvmetadatadb::RapidFindDB index_;
    std::vector<Asset> assets_;
    std::uint32_t templates_ = 0;
    std::vector<std::filesystem::path> unreadable_;
    std::unordered_map<std::string, std::size_t> byID_;
};

} // namespace orvtools::stock::detail
