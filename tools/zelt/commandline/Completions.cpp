#include <tools/zelt/commandline/Program.h>
#include <tools/zelt/output/TextLayout.h>

#include <algorithm>
#include <functional>
#include <set>

// The scripts are made from the commands' descriptions when the program is built, so they never lack an option.
// Help texts pass through Quoted: shells run these scripts.

namespace zelt {

namespace {

// The text as one word of a shell.
std::string Quoted(std::string_view text)
{
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + '\'';
}

std::string Spaced(const std::vector<std::string>& words)
{
    return Joined(words, " ");
}

std::vector<const Command*> Shown(const Program& program)
{
    std::vector<const Command*> shown;
    for (const Command& command : program.commands) {
        if (!command.IsHidden()) {
            shown.push_back(&command);
        }
    }
    return shown;
}

std::vector<std::string> Groups(const Program& program)
{
    std::set<std::string> groups;
    for (const Command* command : Shown(program)) {
        if (const std::size_t space = command->Name().find(' '); space != std::string::npos) {
            groups.insert(command->Name().substr(0, space));
        }
    }
    return {groups.begin(), groups.end()};
}

// The words that may follow `group` (empty: the program's name), each once.
std::vector<std::string> NextWords(const Program& program, const std::string& group)
{
    std::set<std::string> words;
    const std::string begin = group.empty() ? "" : group + ' ';
    for (const Command* command : Shown(program)) {
        if (command->Name().starts_with(begin)) {
            words.insert(command->Name().substr(begin.size(), command->Name().find(' ', begin.size()) - begin.size()));
        }
    }
    return {words.begin(), words.end()};
}

std::vector<Parameter> AllOptions(const Program& program, const Command& command)
{
    std::vector<Parameter> options = command.Options();
    options.insert(options.end(), program.common.Options().begin(), program.common.Options().end());
    return options;
}

std::vector<std::string> Spellings(const Parameter& option)
{
    std::vector<std::string> spellings;
    if (option.letter != 0) {
        spellings.push_back({'-', option.letter});
    }
    if (!option.name.empty()) {
        spellings.push_back(option.name);
    }
    return spellings;
}

// What the arguments of a command are, for shells that are told once for all of them.
Takes TakesOfArguments(const Command& command)
{
    Takes takes = Takes::Text;
    for (const Parameter& argument : command.Arguments()) {
        takes = argument.takes == Takes::File || takes == Takes::Text ? argument.takes : takes;
    }
    return takes;
}

std::vector<std::string> ChoicesOfArguments(const Command& command)
{
    std::vector<std::string> choices;
    for (const Parameter& argument : command.Arguments()) {
        choices.insert(choices.end(), argument.choices.begin(), argument.choices.end());
    }
    return choices;
}

std::string BashWords(Takes takes, const std::vector<std::string>& choices)
{
    const std::string words = choices.empty() ? "" : " -W " + Quoted(Spaced(choices));
    return "compgen" + words +
           (takes == Takes::File     ? " -f"
            : takes == Takes::Folder ? " -d"
                                     : "") +
           (words.empty() && takes != Takes::File && takes != Takes::Folder ? " -W ''" : "") + " -- \"$cur\"";
}

std::string BashCommand(const Program& program, const Command& command)
{
    std::vector<std::string> words;
    std::string values;
    for (const Parameter& option : AllOptions(program, command)) {
        const auto spellings = Spellings(option);
        words.insert(words.end(), spellings.begin(), spellings.end());
        for (const std::string& spelling : option.takes == Takes::Nothing ? std::vector<std::string>() : spellings) {
            values += "    " + Quoted(command.Name() + ' ' + spelling) + ") found=$(" +
                      BashWords(option.takes, option.choices) + ") ;;\n";
        }
    }
    const std::string name = Quoted(command.Name() + ' ');
    return values + "    " + name + "*) if [[ $cur == -* ]]; then found=$(compgen -W " + Quoted(Spaced(words)) +
           " -- \"$cur\"); else found=$(" + BashWords(TakesOfArguments(command), ChoicesOfArguments(command)) +
           "); fi ;;\n";
}

// A description as `_arguments` takes it.
std::string Described(std::string_view text)
{
    std::string described;
    for (const char c : text) {
        described += c == '[' || c == ']' || c == ':' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return described;
}

std::string ZshValue(const std::string& what, Takes takes, const std::vector<std::string>& choices)
{
    return ':' + Described(what) + ':' +
           (takes == Takes::File     ? "_files"
            : takes == Takes::Folder ? "_files -/"
            : choices.empty()        ? " "
                                     : '(' + Spaced(choices) + ')');
}

std::string ZshCommand(const Program& program, const Command& command)
{
    std::string line = "  " + Quoted(command.Name()) + ") _arguments -S";
    for (const Parameter& option : AllOptions(program, command)) {
        const std::string value =
            option.takes == Takes::Nothing ? "" : ZshValue(option.value, option.takes, option.choices);
        for (const std::string& spelling : Spellings(option)) {
            line += " \\\n    " +
                    Quoted((option.repeats ? "*" : "") + spelling + '[' + Described(option.help) + ']' + value);
        }
    }
    for (const Parameter& argument : command.Arguments()) {
        line += " \\\n    " +
                Quoted((argument.repeats ? "*" : "") + ZshValue(argument.name, argument.takes, argument.choices));
    }
    return line + " ;;\n";
}

std::string FishCommand(const Program& program, const Command& command)
{
    const std::string begin = "complete -c zelt -n " + Quoted("__zelt_is " + command.Name());
    std::string lines;
    for (const Parameter& option : AllOptions(program, command)) {
        lines += begin + (option.letter == 0 ? "" : " -s " + std::string(1, option.letter)) +
                 (option.name.empty() ? "" : " -l " + option.name.substr(2));
        lines += option.takes == Takes::Nothing                                 ? ""
                 : option.takes == Takes::File || option.takes == Takes::Folder ? " -rF"
                                                                                : " -x";
        lines += " -d " + Quoted(option.help) + '\n';
    }
    const auto choices = ChoicesOfArguments(command);
    lines += choices.empty() ? "" : begin + " -a " + Quoted(Spaced(choices)) + '\n';
    const Takes takes = TakesOfArguments(command);
    return lines + (takes == Takes::File || takes == Takes::Folder ? begin + " -F\n" : "");
}

} // namespace

std::string BashCompletion(const Program& program)
{
    const std::string groups = Quoted(' ' + Spaced(Groups(program)) + ' ');
    std::string script =
        "# bash completion of zelt\n_zelt() {\n"
        "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command= found= word i\n"
        "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "    word=${COMP_WORDS[i]}\n"
        "    [[ $word == -* ]] && continue\n"
        "    [[ ${COMP_WORDS[i-1]} == --language || ${COMP_WORDS[i-1]} == --password ]] && continue\n"
        "    command+=${command:+ }$word\n"
        "    [[ " +
        groups +
        " == *\" $command \"* ]] || break\n"
        "  done\n"
        "  case \"$command $prev\" in\n";
    for (const Command* command : Shown(program)) {
        script += BashCommand(program, *command);
    }
    for (const std::string& group : Groups(program)) {
        script += "    " + Quoted(group + ' ') + "*) found=$(compgen -W " + Quoted(Spaced(NextWords(program, group))) +
                  " -- \"$cur\") ;;\n";
    }
    return script + "    *) found=$(compgen -W " + Quoted(Spaced(NextWords(program, ""))) +
           " -- \"$cur\") ;;\n  esac\n" +
           "  local IFS=$'\\n'\n  COMPREPLY=($found)\n}\ncomplete -o filenames -F _zelt zelt\n";
}

std::string ZshCompletion(const Program& program)
{
    std::string script = "#compdef zelt\n_zelt() {\n  local command=${words[2]}\n  shift words; (( CURRENT-- ))\n"
                         "  if (( CURRENT == 1 )); then compadd -- " +
                         Spaced(NextWords(program, "")) +
                         "; return; fi\n"
                         "  case $command in\n";
    for (const std::string& group : Groups(program)) {
        script += "  " + group +
                  ")\n    command+=\" ${words[2]}\"; shift words; (( CURRENT-- ))\n"
                  "    if (( CURRENT == 1 )); then compadd -- " +
                  Spaced(NextWords(program, group)) + "; return; fi ;;\n";
    }
    script += "  esac\n  case $command in\n";
    for (const Command* command : Shown(program)) {
        script += ZshCommand(program, *command);
    }
    return script + "  esac\n}\n_zelt \"$@\"\n";
}

std::string FishCompletion(const Program& program)
{
    std::string script = "# fish completion of zelt\nfunction __zelt_command\n"
                         "  set -l words (commandline -opc)\n  set -l command\n"
                         "  for word in $words[2..-1]\n"
                         "    string match -q -- '-*' $word; and continue\n"
                         "    set -a command $word\n"
                         "    contains -- \"$command\" " +
                         Spaced(Groups(program)) +
                         "; or break\n"
                         "  end\n  echo \"$command\"\nend\n"
                         "function __zelt_is\n  set -l command (__zelt_command)\n  test \"$command\" = \"$argv\"\nend\n"
                         "complete -c zelt -f\n";
    std::vector<std::string> places = Groups(program);
    places.emplace_back();
    for (const std::string& place : places) {
        script += "complete -c zelt -n " + Quoted("__zelt_is " + place) + " -a " +
                  Quoted(Spaced(NextWords(program, place))) + '\n';
    }
    for (const Command* command : Shown(program)) {
        script += FishCommand(program, *command);
    }
    return script;
}

} // namespace zelt
