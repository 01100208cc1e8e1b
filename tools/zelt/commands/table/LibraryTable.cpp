#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>
#include <tools/zelt/commands/table/SharedOptions.h>

namespace zelt {

std::vector<Command> LibraryCommands()
{
    return {
        Define("index build", "Add packages to a search index in a file", &RunIndexBuild,
               [](Command& command, IndexBuildOptions& options) {
                   command.Argument("DB", options.database, "Index file; created when missing");
                   AddPackages(command, options.packages);
                   command.Option("--json", options.json, kJSONForEachPackage);
                   command.Example("index build titles.db ~/Templates",
                                   "an index of all packages in a folder and below it");
               }),
        Define("index search", "Print the paths of the packages that all terms find", &RunIndexSearch,
               [](Command& command, IndexSearchOptions& options) {
                   command.Argument("DB", options.database, "Index file");
                   command.Argument("TERM...", options.terms, "Text contained in a name or a tag");
                   command.Option("--json", options.json, "One JSON object for each path, on one line");
                   command.Example("index search titles.db news", "the packages that the word finds");
               }),
        Define("index tags", "Print the names and tags with a word that begins so", &RunIndexTags,
               [](Command& command, IndexTagsOptions& options) {
                   command.Argument("DB", options.database, "Index file");
                   command.Argument("PREFIX", options.prefix, "Beginning of a word; may be empty");
                   command.Option("--json", options.json, "One JSON object for each text, on one line");
                   command.Example("index tags titles.db cou", "what a search field suggests");
               }),
        Define("library list", "List cloud libraries that lie on disk, and their templates", &RunLibraryList,
               [](Command& command, LibraryListOptions& options) {
                   command.Argument("ROOT", options.root, "Folder of the libraries");
                   command.Option("--json", options.json, "One JSON object for each library, on one line");
                   command.Example("library list ~/Libraries", "all libraries in a folder");
               }),
        Define("library show", "Print the path and the definition document of a library's template", &RunLibraryShow,
               [](Command& command, LibraryShowOptions& options) {
                   command.Argument("ROOT", options.root, "Folder of the libraries");
                   command.Argument("NAME", options.library, "Display name of the library");
                   command.Argument("ELEMENT", options.element, "Display name of the template");
                   command.Option("--json", options.json, "One JSON object");
                   command.Example("library show ~/Libraries \"Our titles\" Countdown", "one template of a library");
               }),
        Define("library add", "Make a new library of packages", &RunLibraryAdd,
               [](Command& command, LibraryAddOptions& options) {
                   command.Argument("ROOT", options.root, "Folder of the libraries; created when missing");
                   command.Argument("NAME", options.name, "Display name of the library");
                   command.Argument("FILE...", options.files, "Packages");
                   command.Option("--json", options.json, "One JSON object, as list prints it");
                   command.Example("library add ~/Libraries \"Our titles\" *.zelt", "a library of all packages here");
               }),
    };
}

} // namespace zelt
