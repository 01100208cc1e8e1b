#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>

namespace zelt {

std::vector<Command> PackingCommands()
{
    return {
        Define("unpack", "Unpack a package into a folder", &RunUnpack,
               [](Command& command, UnpackOptions& options) {
                   command.Argument("FILE", options.file, "Package");
                   command.Argument("DIR", options.directory, "Folder; created when missing");
                   command.Option("--overwrite", options.overwrite, "Replace files that stand in the folder");
                   command.Example("unpack lower-third.zelt parts", "all parts, in a new folder");
               }),
        Define("pack", "Make a package from all files of a folder", &RunPack,
               [](Command& command, PackOptions& options) {
                   command.Argument("DIR", options.directory, "Folder, laid out as the package");
                   command.Argument("FILE", options.file, "Package; replaced when it exists");
                   command.Example("pack parts lower-third.zelt", "the files of \"parts\" as a package");
               }),
        Define("extract", "Take one part out of a package", &RunExtract,
               [](Command& command, ExtractOptions& options) {
                   command.Argument("FILE", options.file, "Package");
                   command
                       .Argument("PART", options.what,
                                 "poster, video or project (each for the language), or the name of an entry")
                       .choices = {"poster", "video", "project"};
                   command.Argument("OUT", options.output, "File to write, or a folder that exists");
                   command.Example("extract lower-third.zelt poster poster.png", "the poster picture");
                   command.Example("extract bar-chart.zelt Thumbnails/logo.png .", "an entry, under its own name");
               }),
    };
}

} // namespace zelt
