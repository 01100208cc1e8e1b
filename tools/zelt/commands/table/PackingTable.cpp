#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>
#include <tools/zelt/commands/table/SharedOptions.h>

namespace zelt {

std::vector<Command> PackingCommands()
{
    return {
        Define("unpack", "Unpack a package into a folder", &RunUnpack,
               [](Command& command, UnpackOptions& options) {
                   command.Argument("FILE", options.file, "Package");
                   command.Argument("DIR", options.directory, "Folder; created when missing");
                   command.Option("--overwrite", options.overwrite, "Replace files that stand in the folder");
                   AddJSON(command, options.form, "the number of files");
                   command.Example("unpack lower-third.zelt parts", "all parts, in a new folder");
               }),
        Define("pack", "Make a package from all files of a folder", &RunPack,
               [](Command& command, PackOptions& options) {
                   command.Argument("DIR", options.directory, "Folder, laid out as the package");
                   command.Argument("FILE", options.file, "Package; replaced when it exists");
                   AddNoClobber(command, options.form);
                   AddJSON(command, options.form, "the number of entries");
                   command.Example("pack parts lower-third.zelt", "the files of \"parts\" as a package");
               }),
        Define("extract", "Take one part out of a package", &RunExtract,
               [](Command& command, ExtractOptions& options) {
                   command.Argument("FILE", options.file, "Package");
                   command
                       .Argument("PART", options.what,
                                 "poster, video or project (each for the language), or the name of an entry")
                       .choices = {"poster", "video", "project"};
                   command.Argument("OUT", options.output,
                                    "File to write, or a folder that exists; -: standard output");
                   AddNoClobber(command, options.form);
                   AddJSON(command, options.form, "its size in bytes");
                   command.Example("extract lower-third.zelt poster poster.png", "the poster picture");
                   command.Example("extract lower-third.zelt project - | sha256sum", "the project, to another program");
                   command.Example("extract bar-chart.zelt Thumbnails/logo.png .", "an entry, under its own name");
               }),
        Define(
            "put", "Store a file as a part of a package", &RunPut,
            [](Command& command, PutOptions& options) {
                command.Argument("FILE", options.file, "Package");
                command.Argument("PART", options.part, "poster, video or project, or the name of an entry").choices = {
                    "poster", "video", "project"};
                command.Argument("SOURCE", options.source,
                                 "File; a poster must be a PNG picture and a video an MP4 film by its content");
                command.Option("--locale LOCALE", options.locale, "The part for one locale (default: the common one)");
                command.Option("--no-clobber", options.form.noClobber, "Fail where the package has the part already");
                AddJSON(command, options.form, "the entry's name");
                command.Example("put lower-third.zelt poster neu.png --locale de_DE", "the poster for German");
                command.Example("put bar-chart.zelt Thumbnails/logo.png logo.png", "an entry by its name");
            }),
        Define(
            "remove", "Remove a part of a package", &RunRemove,
            [](Command& command, RemoveOptions& options) {
                command.Argument("FILE", options.file, "Package");
                command.Argument("PART", options.part, "poster, video or project, or the name of an entry").choices = {
                    "poster", "video", "project"};
                command.Option("--locale LOCALE", options.locale, "The part for one locale (default: the common one)");
                AddJSON(command, options.form, "the entry's name");
                command.Example("remove lower-third.zelt video", "the preview video");
            }),
    };
}

} // namespace zelt
