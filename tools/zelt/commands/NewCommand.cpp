#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/editing/DefinitionEditor.h>
#include <tools/zelt/editing/DefinitionStore.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/FolderFiles.h>
#include <tools/zelt/support/OutputFile.h>
#include <tools/zelt/support/TempFolder.h>
#include <tools/zelt/support/Template.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Guid.h>
#include <capsule/Serialization.h>
#include <capsule/Versions.h>
#include <orvcore/files/Files.h>
#include <package/PackageNames.h>
#include <validation/Validation.h>

namespace zelt {

namespace {

namespace fs = std::filesystem;

// A file that goes into the package under a fixed name.
struct Part {
    std::string source;
    fs::path name;
};

// The kind of project that a file is by its extension, which is also its entry's.
fs::path ProjectName(const std::string& file)
{
    const fs::path extension = ToPath(file).extension();
    for (const auto& name : {orvcapsule::kTsProjectFileName, orvcapsule::kCvProjectFileName}) {
        if (fs::path(name).extension() == extension) {
            return name;
        }
    }
    throw UsageError("--project: \"" + file + "\" is neither a .tsgraphic nor a .cvgraphic file");
}

std::vector<Part> NamedParts(const NewOptions& options)
{
    std::vector<Part> parts;
    if (!options.poster.empty()) {
        parts.push_back({options.poster, orvcapsule::kThumbFileName});
    }
    if (!options.video.empty()) {
        parts.push_back({options.video, orvcapsule::kVideoThumbFileName});
    }
    if (!options.project.empty()) {
        parts.push_back({options.project, ProjectName(options.project)});
    }
    for (const std::string& poster : options.localePosters) {
        const std::size_t equals = poster.find('=');
        const std::string locale = poster.substr(0, equals);
        if (equals == poster.npos || equals + 1 == poster.size() || locale.empty() ||
            locale.find_first_of("/\\:") != locale.npos) {
            throw UsageError("--locale-poster: \"" + poster + "\" is not LOCALE=FILE");
        }
        parts.push_back({poster.substr(equals + 1), ToPath("thumb_" + locale + ".png")});
    }
    return parts;
}

void CopyPart(const fs::path& from, const fs::path& to)
{
    if (!orvcore::IsFile(from)) {
        throw FileError(ToText(from), "there is no such file");
    }
    try {
        orvcore::CopyOneFile(from, to);
    } catch (const fs::filesystem_error& error) {
        const std::error_code code = error.code();
        const bool noRoom = code == std::errc::no_space_on_device || code == std::errc::file_too_large ||
                            code == std::errc::read_only_file_system;
        throw FileError(ToText(noRoom ? to : from), code.message());
    }
}

// Lays the package's files out: those of the folder, and the named parts over them. An earlier package in the folder is
// no part of itself.
void Stage(const NewOptions& options, const fs::path& stage, const InterruptWatch& interrupt)
{
    const Progress progress("copying");
    const fs::path directory = ToPath(options.directory);
    if (!orvcore::IsDirectory(directory)) {
        throw FileError(options.directory, "there is no such folder");
    }
    for (const fs::path& file : FilesToPack(directory, ToPath(options.output))) {
        const fs::path staged = stage / file.lexically_relative(directory);
        orvcore::EnsureDirectory(staged.parent_path());
        CopyPart(file, staged);
        interrupt.Check();
    }
    for (const Part& part : NamedParts(options)) {
        interrupt.Check();
        CopyPart(ToPath(part.source), stage / part.name);
    }
}

// What the package's projects say of the host that it is for.
orvcapsule::Capsule::StringList Hosts(const fs::path& stage)
{
    orvcapsule::Capsule::StringList hosts;
    if (orvcore::IsFile(stage / orvcapsule::kTsProjectFileName)) {
        hosts.emplace_back(orvcapsule::CAPSULE_PLATFORMSUPPORT_TESSEL_STR);
    }
    if (orvcore::IsFile(stage / orvcapsule::kCvProjectFileName)) {
        hosts.emplace_back(orvcapsule::CAPSULE_PLATFORMSUPPORT_CORVID_STR);
    }
    return hosts;
}

std::string FreshDefinition(const fs::path& stage)
{
    const auto hosts = Hosts(stage);
    const auto app = orvcore::ToUTF16(hosts.empty() ? std::string() : hosts.front());
    auto capsule = std::make_shared<orvcapsule::Capsule>(app, u"", orvcapsule::utils::GenerateStringGuid());
    capsule->SetPlatformSupport(hosts);
    capsule->SetCapsuleNameLocalized(orvcapsule::UIString(std::vector<orvcapsule::LocStrPair>()));
    return orvcore::ToNarrow(orvcapsule::serialization::CapsuleToJson(capsule));
}

// The definition that lies in the folder, or a new one, with the values that the command line gives.
bool WriteDefinition(const NewOptions& options, const fs::path& stage)
{
    const fs::path file = stage / orvcapsule::kJSONFileName;
    const auto stored = orvcore::ReadWholeFile(file);
    const std::string name = ToText(ToPath(options.directory) / orvcapsule::kJSONFileName);
    if (stored) {
        if (const Definition read = ReadDefinition(orvcore::ToUTF8(*stored)); read.capsule == nullptr) {
            throw FileError(name, read.refusals.front().text);
        }
    }
    DefinitionEditor editor(stored ? *stored : FreshDefinition(stage));
    if (!editor.Apply(options.edit, name)) {
        return false;
    }
    if (options.authorApp) {
        editor.SetText(orvcapsule::CAPSULE_APP_STR, *options.authorApp);
    }
    if (options.authorID) {
        editor.SetText(orvcapsule::CAPSULE_AUTHORID_STR, *options.authorID);
    }
    if (!options.platforms.empty()) {
        editor.SetList(orvcapsule::CAPSULE_CONTROL_PLATFORMSUPPORT_STR, options.platforms);
    }
    NeedReadable(name, editor.Text());
    orvcore::RemoveTree(file); // it has the rights of the one in the folder, which may be none to write
    WriteText(file, editor.Text());
    return true;
}

// Packs the stage and checks the result, before it takes its place. Errors are those of `output`.
void MakeGood(const fs::path& stage, const fs::path& draft, const std::string& output, const InterruptWatch& interrupt)
{
    try {
        PackFolder(stage, ToText(draft), interrupt);
    } catch (const FileError& error) {
        throw FileError(output, error.what());
    }
    const Progress progress("checking");
    for (const orvcapsule::Finding& finding : orvcapsule::ValidateTemplate(draft).list) {
        if (finding.severity == orvcapsule::Severity::Error) {
            throw FileError(output, finding.text);
        }
    }
}

} // namespace

ExitCode RunNew(const NewOptions& options)
{
    bool understood = true;
    const ExitCode exit = OnFile(options.output, [&] {
        const InterruptWatch interrupt;
        const TempFolder folder;
        const fs::path stage = folder.Path() / u8"package";
        orvcore::EnsureDirectory(stage);
        Stage(options, stage, interrupt);
        understood = WriteDefinition(options, stage);
        if (!understood) {
            return;
        }
        const fs::path draft = folder.Path() / u8"package.zelt";
        MakeGood(stage, draft, options.output, interrupt);
        PutInPlace(draft, ToPath(options.output), &interrupt);
        PrintLine(Printable(options.output) + ": made");
    });
    return understood ? exit : ExitCode::kBadUsage;
}

} // namespace zelt
