#include <tools/zelt/commandline/Program.h>
#include <tools/zelt/output/Style.h>

#include <algorithm>

namespace zelt {

namespace {

// A name in a column of its own and the text beside it.
struct Row {
    std::string name;
    std::string text;
};

std::string Section(std::string_view heading, const std::vector<Row>& rows)
{
    constexpr std::size_t kWidestName = 26;
    if (rows.empty()) {
        return {};
    }
    std::size_t column = 0;
    for (const Row& row : rows) {
        column = std::max(column, std::min(row.name.size(), kWidestName));
    }
    column += 4;
    const std::size_t width = std::min(OutputWidth(), std::size_t{110}); // longer lines are hard to read
    std::string section = '\n' + Styled(heading, Style::Heading) + '\n';
    for (const Row& row : rows) {
        const bool isLong = row.name.size() + 4 > column;
        section += "  " + row.name +
                   (isLong ? '\n' + std::string(column, ' ') : std::string(column - 2 - row.name.size(), ' '));
        section += Wrapped(row.text, width, column) + '\n';
    }
    return section;
}

Row RowOf(const Parameter& option)
{
    std::string name = option.letter == 0 ? "" : '-' + std::string(1, option.letter);
    name += (name.empty() || option.name.empty() ? "" : ", ") + option.name;
    return {name + (option.value.empty() ? "" : ' ' + option.value),
            option.help + (option.repeats ? "; may be given several times" : "")};
}

std::vector<Row> RowsOf(const std::vector<Parameter>& options)
{
    std::vector<Row> rows(options.size());
    std::transform(options.begin(), options.end(), rows.begin(), &RowOf);
    return rows;
}

} // namespace

std::string HelpOnProgram(const Program& program, std::string_view group)
{
    const std::string begin = group.empty() ? "" : std::string(group) + ' ';
    std::vector<Row> commands;
    for (const Command& command : program.commands) {
        if (!command.IsHidden() && command.Name().starts_with(begin)) {
            commands.push_back({command.Name(), command.Summary()});
        }
    }
    std::string text = program.common.Summary() + "\n\n" + Styled("Usage", Style::Heading) + "\n  zelt " + begin +
                       "COMMAND ...\n" + Section("Commands", commands) +
                       Section("Options of all commands", RowsOf(program.common.Options())) + '\n';
    for (const std::string& note : program.common.Notes()) {
        text += Wrapped(note, OutputWidth(), 0) + '\n';
    }
    return text;
}

std::string HelpOnCommand(const Program& program, const Command& command)
{
    std::vector<Row> arguments;
    for (const Parameter& argument : command.Arguments()) {
        arguments.push_back({argument.name, argument.help});
    }
    std::string text = command.Summary() + ".\n\n" + Styled("Usage", Style::Heading) + "\n  " + command.Synopsis() +
                       '\n' + Section("Arguments", arguments) + Section("Options", RowsOf(command.Options())) +
                       Section("Options of all commands", RowsOf(program.common.Options()));
    for (const std::string& note : command.Notes()) {
        text += '\n' + Wrapped(note, OutputWidth(), 0) + '\n';
    }
    if (!command.Examples().empty()) {
        text += '\n' + Styled("Examples", Style::Heading) + '\n';
        for (const Example& example : command.Examples()) {
            text += "  zelt " + example.line + "\n      " + Wrapped(example.does, OutputWidth(), 6) + '\n';
        }
    }
    return text;
}

} // namespace zelt
