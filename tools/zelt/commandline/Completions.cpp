#include <tools/zelt/commandline/Program.h>
#include <tools/zelt/output/TextLayout.h>

#include <algorithm>
#include <functional>
#include <set>

// The scripts are made from the commands' descriptions when the program is built, so they never lack an option.
// Help texts pass through ShellQuoted: shells run these scripts.

namespace zelt {

namespace {

// The text as one word of a shell.
std::string ShellQuoted(std::string_view text)
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

std::vector<std::string> ChoicesOf(const Program& program, const Parameter& argument)
{
    if (argument.takes != Takes::CommandName) {
        return argument.choices;
    }
    std::vector<std::string> words = NextWords(program, "");
    for (const std::string& group : Groups(program)) {
        const auto next = NextWords(program, group);
        words.insert(words.end(), next.begin(), next.end());
    }
    return words;
}

std::vector<std::string> ChoicesOfArguments(const Program& program, const Command& command)
{
    std::vector<std::string> all;
    for (const Parameter& argument : command.Arguments()) {
        const auto choices = ChoicesOf(program, argument);
        all.insert(all.end(), choices.begin(), choices.end());
    }
    return all;
}

bool HasBehindDashes(const Command& command)
{
    const auto& arguments = command.Arguments();
    return std::any_of(arguments.begin(), arguments.end(), [](const auto& one) { return one.isBehindDashes; });
}

// Those of all commands, which stand before the command's name, too, and are not to be taken for it with their values.
std::vector<std::string> CommonSpellings(const Program& program, bool haveValues)
{
    std::vector<std::string> found;
    for (const Parameter& option : program.common.Options()) {
        if (!haveValues || option.takes != Takes::Nothing) {
            const auto spellings = Spellings(option);
            found.insert(found.end(), spellings.begin(), spellings.end());
        }
    }
    return found;
}

// What is offered: words, and files or folders.
std::string BashOffer(const std::vector<std::string>& words, Takes takes)
{
    const std::string files = takes == Takes::File ? "-f" : takes == Takes::Folder ? "-d" : "";
    return "words=" + ShellQuoted(Spaced(words)) + " files=" + files;
}

std::string BashValues(const Command& command, const std::string& pattern)
{
    std::string lines;
    for (const Parameter& option : command.Options()) {
        for (const std::string& spelling :
             option.takes == Takes::Nothing ? std::vector<std::string>() : Spellings(option)) {
            lines += "    " + pattern + ShellQuoted(' ' + spelling) + ") " + BashOffer(option.choices, option.takes) +
                     " ;;\n";
        }
    }
    return lines;
}

std::string BashCommand(const Program& program, const Command& command)
{
    std::vector<std::string> options = CommonSpellings(program, false);
    for (const Parameter& option : command.Options()) {
        const auto spellings = Spellings(option);
        options.insert(options.end(), spellings.begin(), spellings.end());
    }
    return BashValues(command, ShellQuoted(command.Name())) + "    " + ShellQuoted(command.Name() + ' ') +
           "*)\n      if " + (HasBehindDashes(command) ? "[[ $dashes ]]; then :; elif " : "") +
           "[[ $cur == -* ]]; then words=" + ShellQuoted(Spaced(options)) + "; else " +
           BashOffer(ChoicesOfArguments(program, command), TakesOfArguments(command)) + "; fi ;;\n";
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
            : takes == Takes::Folder ? "_path_files -/"
            : choices.empty()        ? " "
                                     : '(' + Spaced(choices) + ')');
}

// The spellings of an option as `_arguments` takes them: each excludes the others, and its value may stand in the same
// word or in the next one.
std::string ZshOptions(const Command& command)
{
    std::string lines;
    for (const Parameter& option : command.Options()) {
        const bool hasValue = option.takes != Takes::Nothing;
        const std::string begin = option.repeats ? "*" : '(' + Spaced(Spellings(option)) + ')';
        const std::string end =
            '[' + Described(option.help) + ']' + (hasValue ? ZshValue(option.value, option.takes, option.choices) : "");
        for (const std::string& spelling : Spellings(option)) {
            const std::string join = !hasValue ? "" : spelling.starts_with("--") ? "=" : "+";
            lines += " \\\n    " + ShellQuoted(std::string(begin).append(spelling).append(join).append(end));
        }
    }
    return lines;
}

std::string ZshCommand(const Program& program, const Command& command)
{
    std::string line = "  " + ShellQuoted(command.Name()) + ") _arguments -S $common" + ZshOptions(command);
    for (const Parameter& argument : command.Arguments()) {
        if (argument.isBehindDashes) {
            continue; // any text
        }
        std::string value = ZshValue(argument.name, argument.takes, ChoicesOf(program, argument));
        if (argument.repeats && HasBehindDashes(command)) { // `-S` takes what follows "--" for more of these
            const std::size_t action = value.rfind(':') + 1;
            value = value.substr(0, action) + "{(( ${words[(I)--]} )) || " + value.substr(action) + '}';
        }
        line += " \\\n    " + ShellQuoted((argument.repeats ? "*" : "") + value);
    }
    return line + " ;;\n";
}

// Completes one word of a command's name, and goes on behind it.
std::string ZshName(const Program& program, const std::string& group)
{
    return "_arguments -C -A '-*' $common ':command:(" + Spaced(NextWords(program, group)) +
           ")' '*:: :->more'\n  [[ $state == more ]] || return\n";
}

// What is offered in a place: words, and files or folders.
std::string FishOffer(const std::vector<std::string>& words, Takes takes)
{
    const std::string all = Spaced(words) + (takes == Takes::Folder ? "(__fish_complete_directories)" : "");
    return (takes == Takes::File ? " -F" : "") + (all.empty() ? "" : " -a " + ShellQuoted(all));
}

// @param place  "-n ..." of one command; empty: everywhere
std::string FishOptions(const Command& command, const std::string& place)
{
    std::string lines;
    for (const Parameter& option : command.Options()) {
        lines += "complete -c zelt" + place + (option.letter == 0 ? "" : " -s " + std::string(1, option.letter)) +
                 (option.name.empty() ? "" : " -l " + option.name.substr(2));
        lines += option.takes == Takes::Nothing
                     ? ""
                     : (option.takes == Takes::File ? " -r" : " -x") + FishOffer(option.choices, option.takes);
        lines += " -d " + ShellQuoted(option.help) + '\n';
    }
    return lines;
}

std::string FishCommand(const Program& program, const Command& command)
{
    const std::string place = "__zelt_is " + command.Name();
    const std::string offer = FishOffer(ChoicesOfArguments(program, command), TakesOfArguments(command));
    const std::string before = HasBehindDashes(command) ? "; and not contains -- -- (commandline -opc)" : "";
    return FishOptions(command, " -n " + ShellQuoted(place)) +
           (offer.empty() ? "" : "complete -c zelt -n " + ShellQuoted(place + before) + offer + '\n');
}

} // namespace

std::string BashCompletion(const Program& program)
{
    // Bash takes "--name=value" for three words.
    std::string script =
        "# bash completion of zelt\n_zelt() {\n"
        "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command= dashes= words= files= word i\n"
        "  if [[ $cur == = ]]; then cur=; elif [[ $prev == = ]]; then prev=${COMP_WORDS[COMP_CWORD-2]}; fi\n"
        "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "    word=${COMP_WORDS[i]}\n"
        "    [[ $word == -- ]] && dashes=1\n"
        "    [[ ' " +
        Spaced(CommonSpellings(program, true)) +
        " ' == *\" $word \"* ]] && ((i++)) && [[ ${COMP_WORDS[i]} == = ]] && ((i++))\n"
        "    [[ $word == -* ]] && continue\n"
        "    [[ -z $command || ' " +
        Spaced(Groups(program)) +
        " ' == *\" $command \"* ]] && command+=${command:+ }$word\n"
        "  done\n"
        "  case \"$command $prev\" in\n" +
        BashValues(program.common, "*");
    for (const Command* command : Shown(program)) {
        script += BashCommand(program, *command);
    }
    for (const std::string& group : Groups(program)) {
        script +=
            "    " + ShellQuoted(group + ' ') + "*) words=" + ShellQuoted(Spaced(NextWords(program, group))) + " ;;\n";
    }
    const std::vector<std::string> common = CommonSpellings(program, false);
    return script + "    ' '*) words=" + ShellQuoted(Spaced(NextWords(program, "")) + ' ' + Spaced(common)) +
           " ;;\n  esac\n"
           "  mapfile -t COMPREPLY < <(compgen $files -W \"$words\" -- \"$cur\")\n"
           // Where names need quotation marks nothing was found, and bash does it its own way.
           "  case $files in\n    -f) compopt -o filenames -o default ;;\n"
           "    -d) compopt -o filenames -o dirnames ;;\n  esac\n}\ncomplete -F _zelt zelt\n";
}

std::string ZshCompletion(const Program& program)
{
    std::string script = "#compdef zelt\n_zelt() {\n  local curcontext=$curcontext state line command\n"
                         "  local -a common=(" +
                         ZshOptions(program.common) + ")\n  " + ZshName(program, "") +
                         "  command=${words[1]} state=\n"
                         "  case $command in\n";
    for (const std::string& group : Groups(program)) {
        script += "  " + group + ") " + ZshName(program, group) + "    command+=\" ${words[1]}\" ;;\n";
    }
    script += "  esac\n  case $command in\n";
    for (const Command* command : Shown(program)) {
        script += ZshCommand(program, *command);
    }
    return script + "  esac\n}\n_zelt \"$@\"\n";
}

std::string FishCompletion(const Program& program)
{
    std::string script = "# fish completion of zelt\nfunction __zelt_is\n"
                         "  set -l words (commandline -opc)\n  set -l command\n  set -l isValue 0\n"
                         "  for word in $words[2..-1]\n"
                         "    if test $isValue = 1\n      set isValue 0\n      continue\n    end\n"
                         "    contains -- $word " +
                         Spaced(CommonSpellings(program, true)) +
                         "; and set isValue 1\n"
                         "    string match -q -- '-*' $word; and continue\n"
                         "    set -a command $word\n"
                         "    contains -- \"$command\" " +
                         Spaced(Groups(program)) +
                         "; or break\n"
                         "  end\n  test \"$command\" = \"$argv\"\nend\n"
                         "complete -c zelt -f\n" +
                         FishOptions(program.common, "");
    std::vector<std::string> places = Groups(program);
    places.emplace_back();
    for (const std::string& place : places) {
        script += "complete -c zelt -n " + ShellQuoted("__zelt_is " + place) + " -a " +
                  ShellQuoted(Spaced(NextWords(program, place))) + '\n';
    }
    for (const Command* command : Shown(program)) {
        script += FishCommand(program, *command);
    }
    return script;
}

} // namespace zelt
