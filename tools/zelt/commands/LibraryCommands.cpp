#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/LibraryWriter.h>

#include <lumolibmanager/FolderLibManager.h>
#include <orvcore/json/JSONTextWriter.h>
#include <rewrite/DefinitionRewrite.h>
#include <sources/ILumoLibrariesWrapper.h>

namespace zelt {

namespace {

namespace libraries = orvcapsule::ILumoLibrariesWrapper;
using orvcore::serialization::JSONTextWriter;

// The library has one manager for the process, as in a host; a command works on one root.
void Install(const std::string& root)
{
    lumolibmanager::SetLumoLibManager(std::make_shared<lumolibmanager::FolderLibManager>(ToPath(root)));
}

std::string AsText(const std::string& library, const std::vector<std::string>& elements)
{
    std::string text = Printable(libraries::GetLibraryNameFromLibraryID(library)) + " (" + Printable(library) +
                       "): " + Count(elements.size(), "template");
    for (const std::string& element : elements) {
        text += "\n    " + Printable(libraries::GetElementName(library, element));
    }
    return text;
}

void WriteElement(JSONTextWriter& writer, const std::string& library, const std::string& element)
{
    writer.BeginObject();
    writer.Key("id");
    writer.String(element);
    writer.Key("name");
    writer.String(libraries::GetElementName(library, element));
    WritePath(writer, "path", libraries::GetCapsulePath(library, element));
    WritePath(writer, "definition", libraries::GetCapsuleSchemaPath(library, element));
    WritePath(writer, "thumbnail", libraries::GetCapsuleThumbnailPath(library, element));
    WritePath(writer, "video", libraries::GetCapsuleVideoThumbnailPath(library, element));
    writer.EndObject();
}

std::string AsJSON(const std::string& library, const std::vector<std::string>& elements)
{
    JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("id");
    writer.String(library);
    writer.Key("name");
    writer.String(libraries::GetLibraryNameFromLibraryID(library));
    writer.Key("elements");
    writer.BeginArray();
    for (const std::string& element : elements) {
        WriteElement(writer, library, element);
    }
    writer.EndArray();
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

} // namespace

ExitCode RunLibraryList(const LibraryListOptions& options)
{
    Install(options.root);
    std::vector<std::string> ids;
    std::vector<std::string> elements;
    libraries::GetLibraryList(ids);
    for (const std::string& library : ids) {
        libraries::GetCapsuleElementIDs(library, elements);
        PrintLine(options.json ? AsJSON(library, elements) : AsText(library, elements));
    }
    return ReportLeftOut(lumolibmanager::GetLumoLibManager()->GetLeftOut());
}

ExitCode RunLibraryShow(const LibraryShowOptions& options)
{
    return OnFile(options.root, [&] {
        Install(options.root);
        orvcore::UTF8String path;
        orvcore::UTF8String definition;
        if (orvcapsule::GetCapsuleJson(orvcore::ToUTF8(options.library), orvcore::ToUTF8(options.element), path,
                                       definition) != orvcore::kResultOK) {
            throw FileError(options.root,
                            "no library \"" + options.library + "\" holds a template \"" + options.element + '"');
        }
        if (!options.json) {
            PrintLine(Printable(orvcore::AsNarrow(path)));
            PrintLine(orvcore::AsNarrow(definition));
            return;
        }
        JSONTextWriter writer;
        writer.BeginObject();
        WritePath(writer, "path", orvcore::AsNarrow(path));
        writer.Key("definition");
        writer.String(orvcore::AsNarrow(definition));
        writer.EndObject();
        PrintLine(orvcore::AsNarrow(writer.Take()));
    });
}

ExitCode RunLibraryAdd(const LibraryAddOptions& options)
{
    return OnFile(options.root, [&] {
        const std::string id = WriteLibrary(options.root, options.name, options.files);
        if (options.json) {
            Install(options.root);
            std::vector<std::string> elements;
            libraries::GetCapsuleElementIDs(id, elements);
            PrintLine(AsJSON(id, elements));
            return;
        }
        PrintLine(Printable(options.root) + ": " + Printable(options.name) + " (" + id +
                  "): " + Count(options.files.size(), "template"));
    });
}

} // namespace zelt
