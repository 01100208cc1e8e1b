#include <tools/zelt/commandline/Program.h>

namespace zelt {

namespace {

// A text as the formatter takes it: a line must not begin with a dot or an apostrophe, and a dash is one to type.
std::string Roff(std::string_view text)
{
    std::string roff = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char c : text) {
        roff += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return roff;
}

std::string Entry(const Parameter& parameter)
{
    const std::string letter = parameter.letter == 0 ? "" : '-' + std::string(1, parameter.letter);
    std::string entry =
        ".TP\n.B " + Roff(letter + (letter.empty() || parameter.name.empty() ? "" : ", ") + parameter.name);
    entry += parameter.value.empty() ? "" : " \\fI" + Roff(parameter.value) + "\\fR";
    return entry + '\n' + Roff(parameter.help) + ".\n";
}

std::string Section(const Command& command)
{
    std::string section = ".SS " + Roff(command.Synopsis()) + '\n' + Roff(command.Summary()) + ".\n";
    for (const auto* parameters : {&command.Arguments(), &command.Options()}) {
        for (const Parameter& parameter : *parameters) {
            section += Entry(parameter);
        }
    }
    for (const std::string& note : command.Notes()) {
        section += ".PP\n" + Roff(note) + '\n';
    }
    for (const Example& example : command.Examples()) {
        section += ".PP\n" + Roff(example.does) + ":\n.PP\n.RS 4\n.B zelt " + Roff(example.line) + "\n.RE\n";
    }
    return section;
}

} // namespace

std::string ManPage(const Program& program, std::string_view version)
{
    std::string page = ".TH ZELT 1 \"\" \"zelt " + Roff(version) + "\" \"User Commands\"\n.SH NAME\nzelt \\- " +
                       "work with motion\\-graphics template packages\n.SH SYNOPSIS\n.B zelt\n" +
                       "\\fICOMMAND\\fR [\\fIoptions\\fR] ...\n.SH DESCRIPTION\n" + Roff(program.common.Summary()) +
                       '\n';
    for (const std::string& note : program.common.Notes()) {
        page += ".PP\n" + Roff(note) + '\n';
    }
    page += ".SH OPTIONS OF ALL COMMANDS\n";
    for (const Parameter& option : program.common.Options()) {
        page += Entry(option);
    }
    page += ".SH COMMANDS\n";
    for (const Command& command : program.commands) {
        page += command.IsHidden() ? "" : Section(command);
    }
    return page;
}

} // namespace zelt
