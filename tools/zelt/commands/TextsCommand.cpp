#include <tools/zelt/commandline/Locale.h>
#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/editing/DefinitionChange.h>
#include <tools/zelt/editing/TextTable.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/PackageList.h>
#include <tools/zelt/support/Template.h>

namespace zelt {

namespace {

void PrintTexts(const TextsOptions& options)
{
    const Template read = NeedCapsule(options.file);
    const TextTable table = ReadTexts(orvcore::serialization::JSONSplice(orvcore::ToNarrow(read.text)));
    Print(options.csv ? TextsAsCSV(table) : options.json ? TextsAsJSON(table) : TextsAsTable(table));
}

// Texts that are so already keep their bytes. False when one of the others is for none of the document's.
bool PutTexts(const TextTable& table, const std::string& file, DefinitionEditor& editor)
{
    // A translator hands the whole table back, of which most is unchanged: what is so already must not touch the
    // document.
    std::map<std::string, std::map<std::string, std::string>> present;
    for (TextTable::Row& row : ReadTexts(editor.Document()).rows) {
        present[row.key] = std::move(row.texts);
    }
    std::vector<TextTable::Row> changed;
    for (TextTable::Row row : table.rows) {
        const auto& known = present[row.key];
        std::erase_if(row.texts, [&](const auto& text) {
            const auto stored = known.find(text.first);
            return stored != known.end() && stored->second == text.second;
        });
        if (!row.texts.empty()) {
            changed.push_back(std::move(row));
        }
    }
    const std::vector<std::string> errors = editor.SetTexts(changed);
    for (const std::string& error : errors) {
        ReportError(file, error);
    }
    return errors.empty();
}

ExitCode ImportTexts(const TextsOptions& options)
{
    const TextTable table = ParseTexts(ReadInput(options.import));
    for (const std::string& locale : table.Locales()) {
        WarnOfLocale(options.import, locale);
    }
    const ExitCode done = ChangeDefinition({options.file, options.file, std::nullopt, [&](DefinitionEditor& editor) {
                                                return PutTexts(table, options.import, editor);
                                            }});
    if (done == ExitCode::kDone) {
        PrintWritten({options.json, false}, options.file, Count(table.rows.size(), "text") + " put back",
                     {"texts", std::uint64_t{table.rows.size()}});
    }
    return done;
}

} // namespace

ExitCode RunTexts(const TextsOptions& options)
{
    if (options.csv && (options.json || !options.import.empty())) {
        ReportError("texts: --csv stands alone; what --import reads tells its form itself");
        return ExitCode::kBadUsage;
    }
    ExitCode exit = ExitCode::kDone;
    const ExitCode done = OnFile(options.file, [&] {
        if (options.import.empty()) {
            PrintTexts(options);
        } else {
            exit = ImportTexts(options);
        }
    });
    return done == ExitCode::kDone ? exit : done;
}

} // namespace zelt
