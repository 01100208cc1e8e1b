#pragma once

#include <tools/zelt/commandline/Program.h>
#include <tools/zelt/output/EntryOutput.h>
#include <tools/zelt/output/Errors.h>
#include <tools/zelt/support/Browser.h>
#include <tools/zelt/support/Interrupt.h>
#include <tools/zelt/support/PackageList.h>

#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/// The commands: what each is asked, and the function that does it. Every one reports its errors itself and returns
/// how the program ends. File names are UTF-8.
namespace zelt {

struct InfoOptions {
    PackageList packages;
    bool json = false;
};
ExitCode RunInfo(const InfoOptions& options);

struct DefinitionOptions {
    std::string file;
    bool canonical = false;
};
ExitCode RunDefinition(const DefinitionOptions& options);

struct CheckOptions {
    PackageList packages;
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

struct ListOptions {
    Places places;
    EntryForm form;
    bool progress = false; ///< told even where no terminal shows a bar
};
ExitCode RunList(const ListOptions& options);

struct SearchOptions {
    Places places;
    EntryForm form;
    std::vector<std::string> terms;
};
ExitCode RunSearch(const SearchOptions& options);

struct BrowseOptions {
    Places places;
    std::string stock;    ///< the URL of a stock service; empty: none
    std::size_t port = 0; ///< 0: a free one
    bool noOpen = false;
};
ExitCode RunBrowse(const BrowseOptions& options);

struct GalleryOptions {
    Places places;
    std::string output;
};
ExitCode RunGallery(const GalleryOptions& options);

struct TagsOptions {
    Places places;
    std::vector<std::string> terms; ///< one: what a tag begins with
    bool json = false;
};
ExitCode RunTags(const TagsOptions& options);

struct IndexBuildOptions {
    std::string database;
    PackageList packages;
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
    PackageList packages;
    std::optional<std::string> document; ///< whose use of the fonts is reported
    bool json = false;
};
ExitCode RunFonts(const FontsOptions& options);

struct BrokerOptions {
    std::string path;                    ///< a socket or pipe
    std::optional<std::string> messages; ///< a number, after which it ends
};
ExitCode RunBroker(const BrokerOptions& options);

struct HelpOptions {
    std::vector<std::string> words;
};
ExitCode RunHelp(const HelpOptions& options);
/// Prints help on a command, a group of them (the first word of their names), or all when the name is empty.
ExitCode PrintHelp(const Program& program, const std::string& name);

struct GenerateOptions {
    std::string what;
};
ExitCode RunGenerate(const GenerateOptions& options);

/// The templates of a stock service at a base URL.
struct StockSearchOptions {
    std::string url;
    std::vector<std::string> terms;
    std::string filter = "all"; ///< or "premium", "free"
    bool json = false;
};
ExitCode RunStockSearch(const StockSearchOptions& options);

struct StockGetOptions {
    std::string url;
    std::string id;
    std::string output;
};
ExitCode RunStockGet(const StockGetOptions& options);

/// A development service over the packages in a folder, and what it does wrong.
struct StockServeOptions {
    std::string folder;
    std::size_t port = 8080;
    std::string address = "127.0.0.1";
    std::size_t copies = 1;
    std::string token;
    std::size_t delay = 0;  ///< milliseconds
    std::size_t status = 0; ///< 0: none
    std::optional<std::string> retryAfter;
    std::optional<std::string> redirect; ///< a URL, or "loop"
    std::string lie;                     ///< "longer", "shorter" or nothing
    bool cut = false;
    bool stall = false;
    std::size_t rows = std::numeric_limits<std::size_t>::max();
    std::string only; ///< "searches", "files" or nothing
    std::size_t times = 0;
};
ExitCode RunStockServe(const StockServeOptions& options);

} // namespace zelt
