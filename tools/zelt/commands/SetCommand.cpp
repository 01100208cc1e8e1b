#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/editing/DefinitionEditor.h>
#include <tools/zelt/editing/DefinitionStore.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/Template.h>

namespace zelt {

namespace {

std::string Describe(const EditOptions& edit)
{
    std::string done = edit.name ? ", name" : "";
    done += edit.description ? ", description" : "";
    done += edit.tags.empty() ? "" : ", tags";
    done += edit.controls.empty() ? "" : ", " + Count(edit.controls.size(), "control");
    return done.substr(2) + " set";
}

} // namespace

ExitCode RunSet(const SetOptions& options)
{
    const EditOptions& edit = options.edit;
    if (!edit.name && !edit.description && edit.tags.empty() && edit.controls.empty()) {
        ReportError("set: nothing to change; give --name, --description, --tag or --control");
        return ExitCode::kBadUsage;
    }
    bool understood = true;
    const ExitCode exit = OnFile(options.file, [&] {
        const InterruptWatch interrupt;
        const std::string& output = options.output.empty() ? options.file : options.output;
        DefinitionEditor editor(orvcore::AsNarrow(NeedCapsule(options.file).text));
        understood = editor.Apply(edit, options.file);
        if (understood) {
            NeedReadable(options.file, editor.Text());
            StoreDefinition(options.file, output, editor.Text(), interrupt);
            PrintLine(Printable(output) + ": " + Describe(edit));
        }
    });
    return understood ? exit : ExitCode::kBadUsage;
}

} // namespace zelt
