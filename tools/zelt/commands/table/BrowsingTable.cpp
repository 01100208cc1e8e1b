#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>

namespace zelt {

namespace {

void AddPlaces(Command& command, Places& places)
{
    command.Argument("[FOLDER...]", places.folders,
                     "Folders of packages: the first with all below it, the others without their sub-folders");
    command.Option("--libraries ROOT", places.libraries, "Folder that holds cloud libraries, all of which count");
}

} // namespace

std::vector<Command> BrowsingCommands()
{
    return {
        Define("list", "List the templates in folders", &RunList,
               [](Command& command, ListOptions& options) {
                   AddPlaces(command, options.places);
                   command.Option("--json", options.json, "One JSON object for each template, on one line");
                   command.Option("--long", options.isLong, "Everything that is known of each template");
                   command.Option("--progress", options.progress, "Tell how far it is even when no terminal is there");
                   command.Example("list ~/Templates", "all templates in a folder and below it");
               }),
        Define("search", "List the templates in folders that all terms find", &RunSearch,
               [](Command& command, SearchOptions& options) {
                   AddPlaces(command, options.places);
                   command.Argument("[-- TERM...]", options.terms, "Text contained in a name or a tag");
                   command.Option("--json", options.json, "One JSON object for each template, on one line");
                   command.Option("--long", options.isLong, "Everything that is known of each template");
                   command.Example("search ~/Templates -- news title", "the templates that both words find");
               }),
        Define("tags", "Print the names and tags in folders with a word that begins so", &RunTags,
               [](Command& command, TagsOptions& options) {
                   AddPlaces(command, options.places);
                   command.Argument("[-- PREFIX...]", options.terms, "One beginning of a word; may be empty");
                   command.Option("--json", options.json, "One JSON object for each text, on one line");
                   command.Example("tags ~/Templates -- cou", "what a search field suggests");
               }),
    };
}

} // namespace zelt
