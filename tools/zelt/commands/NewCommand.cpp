#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/editing/Composition.h>
#include <tools/zelt/editing/DefinitionEditor.h>
#include <tools/zelt/editing/DefinitionStore.h>
#include <tools/zelt/editing/NewControl.h>
#include <tools/zelt/output/FindingOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/FolderFiles.h>
#include <tools/zelt/support/OpenPackage.h>
#include <tools/zelt/support/OutputFile.h>
#include <tools/zelt/support/Parts.h>
#include <tools/zelt/support/TempFolder.h>
#include <tools/zelt/support/Template.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Guid.h>
#include <capsule/Serialization.h>
#include <capsule/Versions.h>
#include <orvcore/files/Files.h>
#include <orvcore/host/Application.h>
#include <package/PackageNames.h>
#include <validation/Validation.h>

// Stage, write the definition, pack, judge, and only then put in place: a package that hosts would refuse never stands
// at the output's path, and the author's folder is only read. Everything happens in a folder of the program's own,
// which goes with the command, also after an interruption.

namespace zelt {

namespace {

namespace fs = std::filesystem;

// A file that goes into the package under a fixed name.
struct NamedPart {
    std::string word; ///< "poster"
    std::string source;
    std::string entry;
};

std::vector<NamedPart> NamedParts(const NewOptions& options)
{
    std::vector<NamedPart> parts;
    const auto add = [&parts](const char* word, const std::string& source, const std::string& locale) {
        if (!source.empty()) {
            parts.push_back({word, source, EntryNameFor(word, locale, source)});
        }
    };
    add("poster", options.poster, "");
    add("video", options.video, "");
    add("project", options.project, "");
    for (const std::string& poster : options.localePosters) {
        const std::size_t equals = poster.find('=');
        const std::string locale = poster.substr(0, equals);
        if (equals == poster.npos || equals + 1 == poster.size() || locale.empty()) {
            throw UsageError("--locale-poster: \"" + poster + "\" is not LOCALE=FILE");
        }
        add("poster", poster.substr(equals + 1), locale);
    }
    return parts;
}

// Reports all files that cannot be taken, so that they are put right at one time.
void NeedAllSuitable(const std::vector<NamedPart>& parts)
{
    std::optional<FileError> last;
    for (const NamedPart& part : parts) {
        try {
            NeedSuitable(part.word, part.source);
        } catch (const FileError& error) {
            if (last) {
                ReportError(last->GetFile(), last->what());
            }
            last = error;
        }
    }
    if (last) {
        throw *last;
    }
}

void CopyPart(const fs::path& from, const fs::path& to)
{
    if (!orvcore::IsFile(from)) {
        throw FileError(ToText(from), "there is no such file");
    }
    std::error_code error;
    if (!orvcore::CopyOneFile(from, to, orvcore::Durability::Cached, {}, error)) {
        const bool noRoom = error == std::errc::no_space_on_device || error == std::errc::file_too_large ||
                            error == std::errc::read_only_file_system;
        throw FileError(ToText(noRoom ? to : from), error.message());
    }
}

// Lays the package's files out: those of the folder, and the named parts over them. An earlier package in the folder is
// no part of itself.
void Stage(const NewOptions& options, const fs::path& output, const fs::path& stage, const InterruptWatch& interrupt)
{
    const Progress progress("copying");
    const fs::path directory = ToPath(options.directory);
    const std::vector<NamedPart> parts = NamedParts(options);
    NeedAllSuitable(parts);
    if (!orvcore::IsDirectory(directory)) {
        throw FileError(options.directory, "there is no such folder");
    }
    for (const fs::path& file : FilesToPack(directory, output)) {
        const fs::path staged = stage / file.lexically_relative(directory);
        orvcore::EnsureDirectory(staged.parent_path());
        CopyPart(file, staged);
        interrupt.Check();
    }
    for (const NamedPart& part : parts) {
        interrupt.Check();
        CopyPart(ToPath(part.source), stage / ToPath(part.entry));
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

bool HasComposition(const NewOptions& options)
{
    return !options.frame.empty() || !options.rate.empty() || !options.duration.empty();
}

// A new document. Values that `set` takes as well are left to the editor: `values` receives those of the controls.
std::string FreshDefinition(const NewOptions& options, const fs::path& stage, std::vector<std::string>& values)
{
    const auto hosts = Hosts(stage);
    const auto app = orvcore::ToUTF16(hosts.empty() ? std::string() : hosts.front());
    auto capsule = std::make_shared<orvcapsule::Capsule>(app, u"", orvcapsule::utils::GenerateStringGuid());
    capsule->SetPlatformSupport(hosts);
    capsule->SetCapsuleNameLocalized(orvcapsule::UIString(std::vector<orvcapsule::LocStrPair>()));
    if (HasComposition(options)) {
        kinlet::SourceInfo composition = MakeComposition(options.frame, options.rate, options.duration);
        composition.name = orvcore::ToUTF16(*options.edit.name);
        composition.parentProjectFile = orvcore::PathToUTF8(ToPath(options.project).filename());
        capsule->SetSourceInfo(composition);
    }
    const std::string locale = options.edit.locale.empty() ? orvcore::Application::GetLanguage() : options.edit.locale;
    std::vector<std::shared_ptr<orvcapsule::ClientControl>> controls;
    for (const std::string& form : options.controls) {
        NewControl made = ParseNewControl(form, locale);
        if (made.value) {
            values.push_back(orvcore::ToNarrow(made.control->GetID()) + '=' + *made.value);
        }
        controls.push_back(std::move(made.control));
    }
    capsule->SetControls(controls);
    return orvcore::ToNarrow(orvcapsule::serialization::CapsuleToJson(capsule));
}

// The definition that lies in the folder, or a new one.
std::string FirstDefinition(const NewOptions& options, const fs::path& stage, const std::string& name,
                            std::vector<std::string>& values)
{
    const fs::path file = stage / orvcapsule::kJSONFileName;
    if (orvcore::InspectTarget(file).kind == orvcore::FileKind::Nothing) {
        return FreshDefinition(options, stage, values);
    }
    std::string stored = orvcore::ReadWholeFile(file);
    if (!options.controls.empty() || HasComposition(options)) {
        throw UsageError("--frame, --rate, --duration and --control are for a new definition, and " + name +
                         " is there");
    }
    if (const auto read = orvcapsule::ReadDefinition(orvcore::ToUTF8(stored)); read.capsule == nullptr) {
        throw FileError(name, read.refusals.front().text);
    }
    return stored;
}

// Writes the definition with the values that the command line gives. False when one of them does not fit.
bool WriteDefinition(const NewOptions& options, const fs::path& stage)
{
    const fs::path file = stage / orvcapsule::kJSONFileName;
    const std::string name = ToText(ToPath(options.directory) / orvcapsule::kJSONFileName);
    EditOptions edit = options.edit;
    DefinitionEditor editor(FirstDefinition(options, stage, name, edit.controls));
    if (!editor.Apply(edit, name)) {
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

// Packs the stage and checks the result, before it takes its place. Errors are those of `output`; everything that is
// missing is told.
void MakeGood(const fs::path& stage, const fs::path& draft, const std::string& output, const InterruptWatch& interrupt)
{
    try {
        PackFolder(stage, ToText(draft), interrupt);
    } catch (const FileError& error) {
        throw FileError(output, error.what());
    }
    const Progress progress("checking");
    std::vector<std::string> errors;
    for (const orvcapsule::Finding& finding : orvcapsule::ValidateTemplate(draft, GetPassword()).list) {
        if (finding.severity == orvcapsule::Severity::Error) {
            errors.push_back(FindingText(finding));
        }
    }
    for (std::size_t i = 0; i + 1 < errors.size(); ++i) {
        ReportError(output, errors[i]);
    }
    if (!errors.empty()) {
        throw FileError(output, errors.back());
    }
}

// Hosts look for files of one extension only.
std::string PackageName(const std::string& given)
{
    const fs::path path = ToPath(given);
    const bool isNamed = path.extension() == fs::path(orvcapsule::kCapsuleExtn) || orvcore::Exists(path);
    return isNamed ? given : given + orvcore::ToNarrow(orvcapsule::kCapsuleExtn);
}

} // namespace

ExitCode RunNew(const NewOptions& options)
{
    bool understood = true;
    const std::string output = PackageName(options.output);
    const ExitCode exit = OnFile(output, [&] {
        NeedFree(ToPath(output), options.form);
        const InterruptWatch interrupt;
        const TempFolder folder;
        const fs::path stage = folder.Path() / u8"package";
        orvcore::EnsureDirectory(stage);
        Stage(options, ToPath(output), stage, interrupt);
        understood = WriteDefinition(options, stage);
        if (!understood) {
            return;
        }
        const fs::path draft = folder.Path() / u8"package.zelt";
        MakeGood(stage, draft, output, interrupt);
        const std::size_t entries = OpenPackage(draft).GetArchive().GetEntries().size();
        PutInPlace(draft, ToPath(output), &interrupt);
        PrintWritten(options.form, output, "made", {"entries", std::uint64_t{entries}});
    });
    return understood ? exit : ExitCode::kBadUsage;
}

} // namespace zelt
