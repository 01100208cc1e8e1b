#include <tools/zelt/editing/DefinitionChange.h>

#include <tools/zelt/editing/DefinitionStore.h>

namespace zelt {

// Read, edit, store; again from the beginning where the store finds that another program has changed the package since
// it was read. The edits are a function and not a result, so that they can be made once more on the new text: what the
// other program has written stays.

namespace {

// For a definition that is replaced as a whole: the stored one may be broken, which is why it is replaced.
Template ReadArchive(const std::string& file)
{
    Template read = ReadTemplate(file);
    if (read.entries.empty()) { // not even an archive
        throw FileError(file, read.definition.refusals.front().text);
    }
    return read;
}

} // namespace

ExitCode ChangeDefinition(const DefinitionChange& change)
{
    // Where several programs change one package at a time, each round stores the work of one of them.
    constexpr int kMostAttempts = 100;
    const InterruptWatch interrupt;
    for (int attempt = 0; attempt != kMostAttempts; ++attempt) {
        Template read = change.text ? ReadArchive(change.file) : NeedCapsule(change.file);
        DefinitionEditor editor(change.text ? std::string_view(*change.text) : orvcore::AsNarrow(read.text));
        if (!change.edit(editor)) {
            return ExitCode::kBadUsage;
        }
        if (editor.Text() == orvcore::AsNarrow(read.text) && change.output == change.file) {
            return ExitCode::kDone; // what is so already needs no new archive
        }
        // The last look before anything is written: an edit that made the definition unreadable would cost the
        // template.
        NeedReadable(change.file, editor.Text());
        if (StoreDefinition(read, change.output, editor.Text(), interrupt)) {
            return ExitCode::kDone;
        }
    }
    throw FileError(change.output, "other programs keep changing it");
}

} // namespace zelt
