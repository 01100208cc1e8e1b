#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>

namespace zelt {

namespace {

// The values that `set` and `new` have in common.
void AddEdits(Command& command, EditOptions& edit)
{
    command.Option("--locale LOCALE", edit.locale, "Locale of the name and of texts (default: the language)");
    command.Option("--description TEXT", edit.description, "The description");
    command.Option("--tag TAG", edit.tags, "A search tag; replaces all earlier tags");
}

} // namespace

std::vector<Command> EditingCommands()
{
    return {
        Define("set", "Change values of a template and nothing else in its package or document", &RunSet,
               [](Command& command, SetOptions& options) {
                   command.Argument("FILE", options.file, "Package");
                   command.Option("-o, --output FILE", options.output, "Package to write (default: FILE itself)");
                   command.Option("--name TEXT", options.edit.name, "The name, for one locale");
                   AddEdits(command, options.edit);
                   command.Option("--control ID=VALUE", options.edit.controls,
                                  "A control's value: a text; a number; on or off; r,g,b,a or #RRGGBBAA; x,y; a menu's "
                                  "index or entry");
                   command.Option("--force", options.edit.force, "Take values outside a control's range");
                   command.Example("set lower-third.zelt --name \"Bauchbinde\" --locale de_DE", "the name in German");
                   command.Example("set lower-third.zelt -o anna.zelt --control t-name=Anna --control col-bar=#2040C0",
                                   "another package, with a text and a colour of its own");
               }),
        Define(
            "new", "Make a package from a folder and single parts", &RunNew,
            [](Command& command, NewOptions& options) {
                command.Argument("DIR", options.directory, "Folder whose files go into the package; it may be empty");
                command.Option("-o, --output FILE", options.output, "Package to write").isRequired = true;
                command.Option("--name TEXT", options.edit.name, "The template's name").isRequired = true;
                AddEdits(command, options.edit);
                command
                    .Option("--author-app APP", options.authorApp, "The application it is made with: tsfx, crvd, brsk")
                    .choices = {"tsfx", "crvd", "brsk"};
                command.Option("--author-id ID", options.authorID, "The author");
                command.Option("--platform APP", options.platforms, "An application that can use it").choices = {
                    "tsfx", "crvd", "brsk"};
                command.Option("--poster PNG", options.poster, "The poster picture");
                command.Option("--locale-poster LOCALE=PNG", options.localePosters, "The poster for one locale");
                command.Option("--video MP4", options.video, "The preview video");
                command.Option("--project FILE", options.project, "The project, .tsgraphic or .cvgraphic");
                command.Example("new parts -o banner.zelt --name Banner --poster poster.png --project banner.tsgraphic",
                                "a package of the folder \"parts\", a picture and a project");
            }),
    };
}

} // namespace zelt
