#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/editing/DefinitionChange.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/TextLayout.h>
#include <tools/zelt/support/OutputFile.h>

#include <validation/TemplateReading.h>

namespace zelt {

namespace {

// What is changed, in words that both people and programs read.
std::vector<std::string> Changes(const SetOptions& options)
{
    const EditOptions& edit = options.edit;
    std::vector<std::string> changes;
    const auto add = [&changes](bool isAsked, const std::string& what) {
        if (isAsked) {
            changes.push_back(what);
        }
    };
    add(!options.definition.empty(), "definition");
    add(edit.newID, "identity");
    add(edit.name.has_value(), "name");
    add(edit.description.has_value(), "description");
    add(!edit.tags.empty() || edit.clearTags, "tags");
    add(!edit.texts.empty(), Count(edit.texts.size(), "text"));
    add(!edit.controls.empty(), Count(edit.controls.size(), "control"));
    return changes;
}

std::optional<std::string> GivenDefinition(const std::string& file)
{
    if (file.empty()) {
        return std::nullopt;
    }
    std::string text = ReadInput(file);
    if (const auto read = orvcapsule::ReadDefinition(orvcore::ToUTF8(text)); read.capsule == nullptr) {
        throw FileError(file, read.refusals.front().text);
    }
    return text;
}

} // namespace

ExitCode RunSet(const SetOptions& options)
{
    const std::vector<std::string> changes = Changes(options);
    if (changes.empty()) {
        ReportError(
            "set: nothing to change; give --name, --description, --tag, --text, --control or one of the others");
        return ExitCode::kBadUsage;
    }
    ExitCode exit = ExitCode::kDone;
    const ExitCode done = OnFile(options.file, [&] {
        const std::string& output = options.output.empty() ? options.file : options.output;
        // --no-clobber is about other files; the package itself is what is to be changed.
        if (!options.output.empty()) {
            NeedFree(ToPath(output), options.form);
        }
        exit = ChangeDefinition({options.file, output, GivenDefinition(options.definition),
                                 [&](DefinitionEditor& editor) { return editor.Apply(options.edit, options.file); }});
        if (exit == ExitCode::kDone) {
            PrintWritten(options.form, output, Joined(changes) + " set", {"set", changes});
        }
    });
    return done == ExitCode::kDone ? exit : done;
}

} // namespace zelt
