#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>

namespace zelt {

namespace {

void AddPlaces(Command& command, Places& places)
{
    command.Argument("[FOLDER...]", places.folders, "Folders of packages, each with all below it");
    command.Option("--shallow", places.isShallow, "The folders without their sub-folders");
    command.Option("--libraries ROOT", places.libraries, "Folder that holds cloud libraries, all of which count");
}

void AddForm(Command& command, Places& places, EntryForm& form)
{
    command.Option("--json", form.json, "One JSON object for each template, on one line");
    command.Option("--long", form.isLong, "Further columns, the path as the last");
    command.Option("--details", form.hasDetails, "Everything that is known of each template, in several lines");
    command.Option("--paths", form.pathsAlone, "Paths alone, one on each line");
    command.Option("-0, --null", form.isNullSeparated, "With --paths: a NUL behind each rather than a line feed");
    command.Option("--no-previews", places.noPreviews, "Extract no preview pictures and videos");
}

} // namespace

std::vector<Command> BrowsingCommands()
{
    return {
        Define("list", "List the templates in folders", &RunList,
               [](Command& command, ListOptions& options) {
                   AddPlaces(command, options.places);
                   AddForm(command, options.places, options.form);
                   command.Option("--progress", options.progress, "Tell how far it is even when no terminal is there");
                   command.Example("list ~/Templates", "all templates in a folder and below it");
               }),
        Define("search", "List the templates in folders that all terms find", &RunSearch,
               [](Command& command, SearchOptions& options) {
                   AddPlaces(command, options.places);
                   command.Argument("[-- TERM...]", options.terms, "Text contained in a name or a tag");
                   AddForm(command, options.places, options.form);
                   command.Example("search ~/Templates -- news title", "the templates that both words find");
                   command.Example("search ~/Templates --paths -0 -- news | xargs -0 zelt check",
                                   "judge the templates that a word finds");
               }),
        Define("tags", "Print the names and tags in folders with a word that begins so", &RunTags,
               [](Command& command, TagsOptions& options) {
                   AddPlaces(command, options.places);
                   command.Argument("[-- PREFIX...]", options.terms, "One beginning of a word; may be empty");
                   command.Option("--json", options.json, "One JSON object for each text, on one line");
                   command.Example("tags ~/Templates -- cou", "what a search field suggests");
               }),
        Define("browse", "Show the templates in folders in the web browser", &RunBrowse,
               [](Command& command, BrowseOptions& options) {
                   AddPlaces(command, options.places);
                   command.Option("--stock URL", options.stock, "Stock service whose templates are shown, too");
                   command.Option("--port N", options.port, "Port of the page on this machine (default: a free one)");
                   command.Option("--no-open", options.noOpen, "Tell the page's address and open no browser");
                   command.Example("browse ~/Templates", "posters, videos, search, details and changes");
               }),
        Define("gallery", "Write a page that shows the templates in folders as files", &RunGallery,
               [](Command& command, GalleryOptions& options) {
                   AddPlaces(command, options.places);
                   command
                       .Option("-o, --output DIR", options.output,
                               "A new or empty folder, or an earlier gallery, which is replaced")
                       .isRequired = true;
                   command.Example("gallery ~/Templates -o /srv/www/templates", "for a web server or a shared disk");
               }),
    };
}

} // namespace zelt
