#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/editing/PrettyJSON.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/Template.h>

#include <capsule/Serialization.h>
#include <tools/support/Console.h>

namespace zelt {

ExitCode RunDefinition(const DefinitionOptions& options)
{
    return OnFile(options.file, [&] {
        // As it is stored, a broken document is printed, too: whoever repairs it must see it.
        const Template read = options.canonical ? NeedCapsule(options.file) : NeedText(options.file);
        const auto text =
            options.canonical ? orvcapsule::serialization::CapsuleToJson(read.definition.capsule) : read.text;
        if (options.pretty) {
            Print(PrettyJSON(orvcore::AsNarrow(text)));
            return;
        }
        Print(orvcore::AsNarrow(text));
        if (!text.ends_with(u8'\n') && orvtools::IsTerminal(orvtools::StandardStream::Output)) {
            Print("\n"); // a prompt belongs on a line of its own; a file gets the text alone
        }
    });
}

} // namespace zelt
