#include <tools/zelt/commands/CommandLine.h>

#include <tools/zelt/commands/Arguments.h>
#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/Locale.h>
#include <tools/zelt/output/Output.h>

#include <capsule/Capsule.h>
#include <orvcore/host/Application.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <sstream>

namespace zelt {

namespace {

using Action = std::function<ExitCode()>;

// A command whose options live as long as the command line does.
template <class Options>
std::pair<CLI::App*, std::shared_ptr<Options>> AddCommand(CLI::App& app, Action& action, const std::string& name,
                                                          const std::string& description,
                                                          ExitCode (*run)(const Options&))
{
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand(name, description);
    command->callback([&action, options, run] { action = [options, run] { return run(*options); }; });
    return {command, options};
}

// An option or argument with one value, a text or an optional one. This and AddList alone take values from the parser:
// they take the marks off.
template <class Text>
CLI::Option* AddOne(CLI::App* command, const std::string& name, Text& value, const std::string& description)
{
    const auto take = [&value](const std::string& text) { value = WithoutMark(text); };
    return command->add_option_function<std::string>(name, take, description)->type_name("");
}

CLI::Option* AddList(CLI::App* command, const std::string& name, std::vector<std::string>& values,
                     const std::string& description)
{
    const auto take = [&values](const std::vector<std::string>& texts) {
        std::transform(texts.begin(), texts.end(), std::back_inserter(values), &WithoutMark);
    };
    return command->add_option_function<std::vector<std::string>>(name, take, description)->type_name("");
}

// An option that may be given several times, each time with one value.
CLI::Option* AddRepeatable(CLI::App* command, const std::string& name, std::vector<std::string>& values,
                           const std::string& placeholder, const std::string& description)
{
    return AddList(command, name, values, description)->type_name(placeholder)->allow_extra_args(false);
}

// An empty value, as of a script's unset variable, would mean the working folder, or that nothing was given.
CLI::Option* NeedText(CLI::Option* option, const std::string& what)
{
    return option->check(
        [what](const std::string& text) { return WithoutMark(text).empty() ? "the " + what + " is empty" : ""; });
}

CLI::Option* NeedName(CLI::Option* option)
{
    return NeedText(option, "file name");
}

CLI::Option* AddArgument(CLI::App* command, const std::string& name, std::string& value, const std::string& description)
{
    return AddOne(command, name, value, description)->required();
}

CLI::Option* AddFile(CLI::App* command, const std::string& name, std::string& file, const std::string& description)
{
    return NeedName(AddArgument(command, name, file, description));
}

void AddFiles(CLI::App* command, std::vector<std::string>& files)
{
    NeedName(AddList(command, "FILE", files, "Packages"))->required();
}

template <class Text>
CLI::Option* AddText(CLI::App* command, const std::string& name, Text& value, const std::string& placeholder,
                     const std::string& description)
{
    return AddOne(command, name, value, description)->type_name(placeholder);
}

void AddLocale(CLI::App* command, const std::string& name, const std::string& what, std::string& locale,
               const std::string& description)
{
    NeedText(AddText(command, name, locale, "LOCALE", description), what)->each([name](const std::string& given) {
        WarnOfLocale(name, WithoutMark(given));
    });
}

void AddEdits(CLI::App* command, EditOptions& edit)
{
    AddLocale(command, "--locale", "locale", edit.locale, "Locale of the name and of texts (default: the language)");
    AddText(command, "--description", edit.description, "TEXT", "The description");
    AddRepeatable(command, "--tag", edit.tags, "TAG", "A search tag; give it several times. Replaces all earlier tags");
}

void AddReading(CLI::App& app, Action& action)
{
    const auto info = AddCommand(app, action, "info", "Show what packages hold", &RunInfo);
    AddFiles(info.first, info.second->files);
    info.first->add_flag("--json", info.second->json, "One JSON object for each package, on one line");

    const auto definition =
        AddCommand(app, action, "definition", "Print a package's definition document", &RunDefinition);
    AddFile(definition.first, "FILE", definition.second->file, "Package");
    definition.first->add_flag("--canonical", definition.second->canonical,
                               "As this library writes it, rather than as it is stored");

    const auto check =
        AddCommand(app, action, "check", "Say of each package whether it is good, and what is wrong", &RunCheck);
    AddFiles(check.first, check.second->files);
    check.first->add_flag("--json", check.second->json, "One JSON object for each package, on one line");
    check.first->add_flag("--strict", check.second->strict, "Warnings make a package bad, too");
}

void AddPacking(CLI::App& app, Action& action)
{
    const auto unpack = AddCommand(app, action, "unpack", "Unpack a package into a folder", &RunUnpack);
    AddFile(unpack.first, "FILE", unpack.second->file, "Package");
    AddFile(unpack.first, "DIR", unpack.second->directory, "Folder; created when missing");
    unpack.first->add_flag("--overwrite", unpack.second->overwrite, "Replace files that stand in the folder");

    const auto pack = AddCommand(app, action, "pack", "Make a package from all files of a folder", &RunPack);
    AddFile(pack.first, "DIR", pack.second->directory, "Folder, laid out as the package");
    AddFile(pack.first, "FILE", pack.second->file, "Package; replaced when it exists");

    const auto extract = AddCommand(app, action, "extract", "Take one part out of a package", &RunExtract);
    AddFile(extract.first, "FILE", extract.second->file, "Package");
    AddArgument(extract.first, "PART", extract.second->what,
                "poster, video or project (each for the language), or the name of an entry");
    AddFile(extract.first, "OUT", extract.second->output, "File to write, or a folder that exists");
}

void AddSet(CLI::App& app, Action& action)
{
    const auto [command, options] = AddCommand(
        app, action, "set", "Change values of a template and nothing else in its package or document", &RunSet);
    AddFile(command, "FILE", options->file, "Package");
    NeedName(AddText(command, "-o,--output", options->output, "FILE", "Package to write (default: FILE itself)"));
    AddText(command, "--name", options->edit.name, "TEXT", "The name, for one locale");
    AddEdits(command, options->edit);
    AddRepeatable(command, "--control", options->edit.controls, "ID=VALUE",
                  "A control's value: a text; a number; on or off; r,g,b,a or #RRGGBBAA; x,y; a menu's index or entry");
    command->add_flag("--force", options->edit.force, "Take values outside a control's range");
}

void AddNew(CLI::App& app, Action& action)
{
    const auto [command, options] =
        AddCommand(app, action, "new", "Make a package from a folder and single parts", &RunNew);
    AddFile(command, "DIR", options->directory, "Folder whose files go into the package; it may be empty");
    AddFile(command, "-o,--output", options->output, "Package to write")->type_name("FILE");
    AddText(command, "--name", options->edit.name, "TEXT", "The template's name")->required();
    AddEdits(command, options->edit);
    AddText(command, "--author-app", options->authorApp, "APP", "The application it is made with: tsfx, crvd, brsk");
    AddText(command, "--author-id", options->authorID, "ID", "The author");
    AddRepeatable(command, "--platform", options->platforms, "APP",
                  "An application that can use it; give it several times");
    NeedName(AddText(command, "--poster", options->poster, "PNG", "The poster picture"));
    AddRepeatable(command, "--locale-poster", options->localePosters, "LOCALE=PNG", "The poster for one locale")
        ->each([](const std::string& given) {
            const std::string poster = WithoutMark(given);
            WarnOfLocale("--locale-poster", poster.substr(0, poster.find('=')));
        });
    NeedName(AddText(command, "--video", options->video, "MP4", "The preview video"));
    NeedName(AddText(command, "--project", options->project, "FILE", "The project, .tsgraphic or .cvgraphic"));
}

void AddIndex(CLI::App& app, Action& action)
{
    CLI::App* index = app.add_subcommand("index", "Fill and ask a search index kept in a file");
    index->require_subcommand(1);

    const auto build = AddCommand(*index, action, "build", "Add packages to an index", &RunIndexBuild);
    AddFile(build.first, "DB", build.second->database, "Index file; created when missing");
    AddFiles(build.first, build.second->files);
    build.first->add_flag("--json", build.second->json, "One JSON object for each package, on one line");

    const auto search =
        AddCommand(*index, action, "search", "Print the paths of the packages that all terms find", &RunIndexSearch);
    AddFile(search.first, "DB", search.second->database, "Index file");
    AddList(search.first, "TERM", search.second->terms, "Text contained in a name or a tag")->required();
    search.first->add_flag("--json", search.second->json, "One JSON object for each path, on one line");

    const auto tags =
        AddCommand(*index, action, "tags", "Print the names and tags with a word that begins so", &RunIndexTags);
    AddFile(tags.first, "DB", tags.second->database, "Index file");
    AddArgument(tags.first, "PREFIX", tags.second->prefix, "Beginning of a word; may be empty");
    tags.first->add_flag("--json", tags.second->json, "One JSON object for each text, on one line");
}

void AddPlaces(CLI::App* command, Places& places)
{
    NeedName(AddList(command, "FOLDER", places.folders,
                     "Folders of packages: the first with all below it, the others without their sub-folders"));
    NeedName(AddOne(command, "--libraries", places.libraries, "Folder that holds cloud libraries, all of which count"))
        ->type_name("ROOT");
}

// `terms` is what the arguments hold behind "--".
void AddBrowsing(CLI::App& app, Action& action, const std::vector<std::string>& terms)
{
    const auto list = AddCommand(app, action, "list", "List the templates in folders", &RunList);
    AddPlaces(list.first, list.second->places);
    list.first->add_flag("--json", list.second->json, "One JSON object for each template, on one line");
    list.first->add_flag("--long", list.second->isLong, "Everything that is known of each template");
    list.first->add_flag("--progress", list.second->progress, "Tell how far it is even when no terminal is there");

    const auto search = AddCommand(
        app, action, "search", "List the templates in folders that all terms find: FOLDER... -- TERM...", &RunSearch);
    search.second->terms = terms;
    AddPlaces(search.first, search.second->places);
    search.first->add_flag("--json", search.second->json, "One JSON object for each template, on one line");
    search.first->add_flag("--long", search.second->isLong, "Everything that is known of each template");

    const auto tags =
        AddCommand(app, action, "tags",
                   "Print the names and tags in folders with a word that begins so: FOLDER... -- PREFIX", &RunTags);
    tags.second->terms = terms;
    AddPlaces(tags.first, tags.second->places);
    tags.first->add_flag("--json", tags.second->json, "One JSON object for each text, on one line");
}

void AddLibrary(CLI::App& app, Action& action)
{
    CLI::App* library = app.add_subcommand("library", "List, show and make cloud libraries that lie on disk");
    library->require_subcommand(1);
    constexpr char kRoot[] = "Folder of the libraries";

    const auto list = AddCommand(*library, action, "list", "List the libraries and their templates", &RunLibraryList);
    AddFile(list.first, "ROOT", list.second->root, kRoot);
    list.first->add_flag("--json", list.second->json, "One JSON object for each library, on one line");

    const auto show =
        AddCommand(*library, action, "show", "Print a template's path and definition document", &RunLibraryShow);
    AddFile(show.first, "ROOT", show.second->root, kRoot);
    AddArgument(show.first, "NAME", show.second->library, "Display name of the library");
    AddArgument(show.first, "ELEMENT", show.second->element, "Display name of the template");
    show.first->add_flag("--json", show.second->json, "One JSON object");

    const auto add = AddCommand(*library, action, "add", "Make a new library of packages", &RunLibraryAdd);
    AddFile(add.first, "ROOT", add.second->root, "Folder of the libraries; created when missing");
    AddArgument(add.first, "NAME", add.second->name, "Display name of the library");
    AddFiles(add.first, add.second->files);
    add.first->add_flag("--json", add.second->json, "One JSON object, as list prints it");
}

void AddFonts(CLI::App& app, Action& action)
{
    const auto fonts = AddCommand(app, action, "fonts",
                                  "List the fonts that packages need, and which of them this machine lacks", &RunFonts);
    AddFiles(fonts.first, fonts.second->files);
    fonts.first->add_flag("--json", fonts.second->json, "One JSON object for each package, on one line");
    AddText(fonts.first, "--report", fonts.second->document, "DOCUMENT",
            "Send a message for each font: this document uses it");

    const auto broker = AddCommand(app, action, "broker",
                                   "Take suite messages and print each as a JSON object, for development", &RunBroker);
    AddFile(broker.first, "--listen", broker.second->path, "Socket, or pipe on Windows")->type_name("PATH");
    AddText(broker.first, "--messages", broker.second->messages, "COUNT", "End after so many messages");
}

std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error)
{
    auto unknown = app.remaining(true);
    unknown.erase(std::remove(unknown.begin(), unknown.end(), "--"), unknown.end());
    if (!unknown.empty() && app.get_subcommands().empty()) {
        return "there is no command \"" + unknown.front() + '"';
    }
    if (!unknown.empty() && dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        return '"' + WithoutMark(unknown.front()) + "\" was not expected";
    }
    return error.what();
}

} // namespace

ExitCode RunCommandLine(std::vector<std::string> arguments)
{
    CLI::App app("Reads, edits, makes and finds motion-graphics template packages (.zelt).", "zelt");
    app.set_version_flag("--version",
                         "zelt " ZELT_VERSION ", definition format " + orvcapsule::Capsule::GetCurrentAPIVersion());
    app.require_subcommand(1);
    app.fallthrough();
    app.allow_windows_style_options(false); // commands take it over: an argument may be a path that begins with "/"
    app.get_formatter()->column_width(28);
    app.footer("Exit codes: 0 done, 1 a file was bad, 2 the command line was, 130 interrupted. "
               "\"zelt COMMAND --help\" tells a command's options.");
    std::string language;
    AddLocale(&app, "--language", "language", language, "Language of localised texts and parts (default: en_US)");
    Action action;
    AddReading(app, action);
    AddPacking(app, action);
    AddSet(app, action);
    AddNew(app, action);
    AddBrowsing(app, action, TakeTerms(arguments));
    AddIndex(app, action);
    AddLibrary(app, action);
    AddFonts(app, action);
    MarkLiterals(arguments);
    try {
        std::reverse(arguments.begin(), arguments.end()); // as this parser takes them
        app.parse(std::move(arguments));
    } catch (const CLI::Success& asked) { // help or version
        std::ostringstream text;
        app.exit(asked, text, text);
        Print(text.str());
        return ExitCode::kDone;
    } catch (const CLI::ParseError& error) {
        ReportError(WhatIsWrong(app, error) + " (see zelt --help)");
        return ExitCode::kBadUsage;
    }
    if (!language.empty()) {
        orvcore::Application::SetLanguage(language);
    }
    return action();
}

} // namespace zelt
