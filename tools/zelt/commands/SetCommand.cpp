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

// False when the command line is at fault.
bool SetOnce(const SetOptions& options, const std::string& output, const InterruptWatch& interrupt, bool& isStored)
{
    Template read = NeedCapsule(options.file);
    DefinitionEditor editor(orvcore::AsNarrow(read.text));
    if (!editor.Apply(options.edit, options.file)) {
        return false;
    }
    NeedReadable(options.file, editor.Text());
    isStored = StoreDefinition(read, output, editor.Text(), interrupt);
    return true;
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
        // Where several programs change one package at a time, each round stores the work of one of them.
        constexpr int kMostAttempts = 100;
        const InterruptWatch interrupt;
        const std::string& output = options.output.empty() ? options.file : options.output;
        bool isStored = false;
        for (int attempt = 0; understood && !isStored; ++attempt) {
            if (attempt == kMostAttempts) {
                throw FileError(output, "other programs keep changing it");
            }
            understood = SetOnce(options, output, interrupt, isStored);
        }
        if (understood) {
            PrintLine(Printable(output) + ": " + Describe(edit));
        }
    });
    return understood ? exit : ExitCode::kBadUsage;
}

} // namespace zelt
