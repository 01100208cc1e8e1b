#include <tools/zelt/commandline/Command.h>

#include <algorithm>
#include <array>
#include <charconv>

// A command is described once, by forms such as "-o, --output FILE" that people read in the help as they stand.
// Parsing, completions and the man page take them apart here. The word for a value decides what is offered and refused,
// so a new word for a path must be added to TakesOf.

namespace zelt {

namespace {

Takes TakesOf(std::string_view value)
{
    constexpr std::array<std::string_view, 8> kFiles = {"FILE", "OUT", "DB", "PNG", "MP4", "SOURCE", "PATH", "LIST"};
    constexpr std::array<std::string_view, 3> kFolders = {"DIR", "FOLDER", "ROOT"};
    const auto isIn = [value](const auto& names) {
        return std::find(names.begin(), names.end(), value) != names.end();
    };
    if (value == "LOCALE") {
        return Takes::Locale;
    }
    if (value.starts_with("LOCALE")) {
        return Takes::LocaleFirst;
    }
    if (value == "COMMAND") {
        return Takes::CommandName;
    }
    return isIn(kFiles) ? Takes::File : isIn(kFolders) ? Takes::Folder : Takes::Text;
}

// Takes `end` off the end of `text`; false when it does not end so.
bool TakeOff(std::string& text, std::string_view end)
{
    const bool endsSo = text.ends_with(end);
    text.resize(text.size() - (endsSo ? end.size() : 0));
    return endsSo;
}

} // namespace

void Command::Example(std::string line, std::string does)
{
    examples_.push_back({std::move(line), std::move(does)});
}

void Command::Note(std::string text)
{
    notes_.push_back(std::move(text));
}

std::string Command::Synopsis() const
{
    std::string line = "zelt " + name_;
    for (const Parameter& option : options_) {
        line += option.isRequired ? ' ' + option.name + ' ' + option.value : "";
    }
    const bool hasMore = std::any_of(options_.begin(), options_.end(), [](const auto& o) { return !o.isRequired; });
    line += hasMore ? " [options]" : "";
    for (const Parameter& argument : arguments_) {
        const std::string name = argument.name + (argument.repeats ? "..." : "");
        line += (argument.isBehindDashes ? " -- " : " ") + (argument.isRequired ? name : '[' + name + ']');
    }
    return line;
}

Command::Take Command::Into(bool& flag)
{
    return [&flag](const std::string&) { flag = true; };
}

Command::Take Command::Into(std::size_t& number)
{
    return [&number](const std::string& text) {
        const char* end = text.data() + text.size();
        if (const auto read = std::from_chars(text.data(), end, number); read.ec != std::errc() || read.ptr != end) {
            throw UsageError('"' + text + "\" is no number");
        }
    };
}

Command::Take Command::Into(std::string& text)
{
    return [&text](std::string given) { text = std::move(given); };
}

Command::Take Command::Into(std::optional<std::string>& text)
{
    return [&text](std::string given) { text = std::move(given); };
}

Command::Take Command::Into(std::vector<std::string>& texts)
{
    return [&texts](std::string given) { texts.push_back(std::move(given)); };
}

Parameter& Command::AddArgument(std::string form, const std::string& help, Take take)
{
    Parameter argument;
    argument.isRequired = !TakeOff(form, "]");
    argument.repeats = TakeOff(form, "...");
    argument.isBehindDashes = form.find("-- ") != form.npos;
    argument.name = form.substr(form.find_last_of("[ ") + 1);
    argument.takes = TakesOf(argument.name);
    argument.help = help;
    argument.take = std::move(take);
    return arguments_.emplace_back(std::move(argument));
}

Parameter& Command::AddOption(std::string form, const std::string& help, Take take)
{
    Parameter option;
    const std::size_t name = form.find("--");
    option.letter = name == 0 ? '\0' : form[1];
    const std::size_t end = form.find(' ', std::min(name, form.size()));
    option.name = name == form.npos ? "" : form.substr(name, end - name);
    option.value = end == form.npos ? "" : form.substr(end + 1);
    option.takes = option.value.empty() ? Takes::Nothing : TakesOf(option.value);
    option.help = help;
    option.take = std::move(take);
    return options_.emplace_back(std::move(option));
}

} // namespace zelt
