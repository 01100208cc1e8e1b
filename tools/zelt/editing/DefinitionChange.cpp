#include <tools/zelt/editing/DefinitionChange.h>

#include <tools/zelt/editing/DefinitionStore.h>

namespace zelt {

namespace {

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
        NeedReadable(change.file, editor.Text());
        if (StoreDefinition(read, change.output, editor.Text(), interrupt)) {
            return ExitCode::kDone;
        }
    }
    throw FileError(change.output, "other programs keep changing it");
}

} // namespace zelt
