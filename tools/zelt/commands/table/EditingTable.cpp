#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>
#include <tools/zelt/commands/table/SharedOptions.h>

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
                   command.Option(
                       "--text LOCALE:KEY=TEXT", options.edit.texts,
                       "A text in one language; KEY as \"zelt texts\" prints it, or a control's id for its value");
                   command.Option("--clear-tags", options.edit.clearTags, "Remove all tags");
                   command.Option("--new-id", options.edit.newID, "A new identity: it becomes another template");
                   command.Option(
                       "--definition FILE", options.definition,
                       "Replace the whole definition document by a file's, before all else; -: by standard input");
                   command.Option("--force", options.edit.force, "Take values outside a control's range");
                   AddNoClobber(command, options.form);
                   AddJSON(command, options.form, "what was set");
                   command.Example("set lower-third.zelt --name \"Bauchbinde\" --locale de_DE", "the name in German");
                   command.Example("set lower-third.zelt -o anna.zelt --control t-name=Anna --control col-bar=#2040C0",
                                   "another package, with a text and a colour of its own");
                   command.Example("set lower-third.zelt --text de_DE:t-name/label=Vorname", "a label in German");
                   command.Example("set lower-third.zelt --definition edited.json", "the document from a file");
               }),
        Define("texts", "Print all texts of a template by language, or put them back", &RunTexts,
               [](Command& command, TextsOptions& options) {
                   command.Argument("FILE", options.file, "Package");
                   command.Option("--csv", options.csv, "As a table that spreadsheet programs read");
                   command.Option(
                       "--json", options.json,
                       "One JSON object for each text, on one line; with --import one that tells of the file");
                   command.Option("--import FILE", options.import,
                                  "Put the texts of such a table or of such objects back; -: of standard input");
                   command.Note(
                       "The keys are \"name\" for the template's name, and ID/label, ID/tip, ID/value, ID/entry/0 "
                       "and ID/heading/0 for a control's label, tip, text, menu entries and column headings. What "
                       "is missing in a language is empty, null in JSON, and stays as it is when it is put back.");
                   command.Example("texts lower-third.zelt", "all texts, with gaps shown as -");
                   command.Example("texts lower-third.zelt --csv > texts.csv", "a table for translators");
                   command.Example("texts lower-third.zelt --import texts.csv", "the translations, in one change");
               }),
        Define(
            "new", "Make a package from a folder and single parts", &RunNew,
            [](Command& command, NewOptions& options) {
                command.Argument("DIR", options.directory, "Folder whose files go into the package; it may be empty");
                command.Option("-o, --output FILE", options.output, "Package to write").isRequired = true;
                command.Option("--name TEXT", options.edit.name, "The template's name").isRequired = true;
                AddEdits(command, options.edit);
                command.Option("--frame WIDTHxHEIGHT", options.frame, "The composition's size, in pixels");
                command.Option("--rate NUMBER", options.rate, "Its frames a second: 25, 29.97, 30000/1001");
                command.Option("--duration TIME", options.duration, "Its duration: 5s, 500ms, 125f");
                command.Option("--control KIND:ID[:LABEL][=VALUE]", options.controls, "A control; see below");
                AddNoClobber(command, options.form);
                AddJSON(command, options.form, "the number of entries");
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
                command.Note(
                    "A control is a checkbox, slider, angle, color, point, text, comment, scale, menu, group or "
                    "media. Its VALUE is that of \"zelt set --control\", but for a slider VALUE,MIN,MAX, for a menu "
                    "ENTRY|ENTRY..., of which the first is chosen, and for a group ID,ID... of its members.");
                command.Example("new parts -o banner --name Banner --poster poster.png --project banner.tsgraphic "
                                "--frame 1920x1080 --rate 25 --duration 5s",
                                "banner.zelt, of the folder \"parts\", a picture, a project and a composition");
                command.Example("new parts -o banner --name Banner --control text:title:Title=News "
                                "--control slider:size:Size=50,0,100 --control \"menu:style:Style=Plain|Bold\"",
                                "with controls, where the folder holds poster and project already");
            }),
    };
}

} // namespace zelt
