#pragma once

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/support/Interrupt.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The commands: what each is asked, and the function that does it. Every one reports its errors itself and returns
/// how the program ends. File names are UTF-8.
namespace zelt {

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};
ExitCode RunInfo(const InfoOptions& options);

struct DefinitionOptions {
    std::string file;
    bool canonical = false;
};
ExitCode RunDefinition(const DefinitionOptions& options);

struct CheckOptions {
    std::vector<std::string> files;
    bool json = false;
    bool strict = false; ///< warnings count
};
ExitCode RunCheck(const CheckOptions& options);

struct UnpackOptions {
    std::string file;
    std::string directory;
    bool overwrite = false;
};
ExitCode RunUnpack(const UnpackOptions& options);

struct PackOptions {
    std::string directory;
    std::string file;
};
ExitCode RunPack(const PackOptions& options);
/// Makes a package of a folder's files, with a progress bar. @throws FileError, Cancelled
void PackFolder(const std::filesystem::path& directory, const std::string& file, const InterruptWatch& interrupt);

struct ExtractOptions {
    std::string file;
    std::string what;
    std::string output;
};
ExitCode RunExtract(const ExtractOptions& options);

/// The values of a definition that `set` and `new` change. What is not given stays.
struct EditOptions {
    std::optional<std::string> name;
    std::string locale; ///< of the name and of texts; empty: the language
    std::optional<std::string> description;
    std::vector<std::string> tags;     ///< empty: not asked
    std::vector<std::string> controls; ///< "ID=VALUE"
    bool force = false;                ///< values outside a control's range are taken
};

struct SetOptions {
    std::string file;
    std::string output; ///< empty: the file itself
    EditOptions edit;
};
ExitCode RunSet(const SetOptions& options);

struct NewOptions {
    std::string directory;
    std::string output;
    EditOptions edit;
    std::optional<std::string> authorApp;
    std::optional<std::string> authorID;
    std::vector<std::string> platforms;
    std::string poster;
    std::string video;
    std::string project;
    std::vector<std::string> localePosters; ///< "LOCALE=FILE"
};
ExitCode RunNew(const NewOptions& options);

/// The first folder is listed with all below it, the others without sub-folders.
/// Where templates are looked for.
struct Places {
    std::vector<std::string> folders;
    std::string libraries; ///< the folder that holds the cloud libraries; empty: none
};

struct ListOptions {
    Places places;
    bool json = false;
    bool isLong = false;
    bool progress = false; ///< told even where no terminal shows a bar
};
ExitCode RunList(const ListOptions& options);

struct SearchOptions {
    Places places;
    std::vector<std::string> terms;
    bool json = false;
    bool isLong = false;
};
ExitCode RunSearch(const SearchOptions& options);

struct TagsOptions {
    Places places;
    std::vector<std::string> terms; ///< one: what a tag begins with
    bool json = false;
};
ExitCode RunTags(const TagsOptions& options);

struct IndexBuildOptions {
    std::string database;
    std::vector<std::string> files;
    bool json = false;
};
ExitCode RunIndexBuild(const IndexBuildOptions& options);

struct IndexSearchOptions {
    std::string database;
    std::vector<std::string> terms;
    bool json = false;
};
ExitCode RunIndexSearch(const IndexSearchOptions& options);

struct IndexTagsOptions {
    std::string database;
    std::string prefix;
    bool json = false;
};
ExitCode RunIndexTags(const IndexTagsOptions& options);

/// Cloud libraries that lie on disk below a root folder.
struct LibraryListOptions {
    std::string root;
    bool json = false;
};
ExitCode RunLibraryList(const LibraryListOptions& options);

struct LibraryShowOptions {
    std::string root;
    std::string library; ///< display names, compared exactly
    std::string element;
    bool json = false;
};
ExitCode RunLibraryShow(const LibraryShowOptions& options);

struct LibraryAddOptions {
    std::string root;
    std::string name;
    std::vector<std::string> files;
    bool json = false;
};
ExitCode RunLibraryAdd(const LibraryAddOptions& options);

struct FontsOptions {
    std::vector<std::string> files;
    std::optional<std::string> document; ///< whose use of the fonts is reported
    bool json = false;
};
ExitCode RunFonts(const FontsOptions& options);

struct BrokerOptions {
    std::string path;                    ///< a socket or pipe
    std::optional<std::string> messages; ///< a number, after which it ends
};
ExitCode RunBroker(const BrokerOptions& options);

} // namespace zelt
