#pragma once

#include <tools/zelt/output/Errors.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// What the command line knows of each command. Parsing, help, the man page and the completions of shells all follow
/// from these descriptions.
namespace zelt {

/// What a value stands for: which values are refused, and what a shell offers.
enum class Takes : std::uint8_t {
    Nothing,     ///< a flag
    Text,        ///< anything, also nothing
    File,        ///< a path, not empty
    Folder,      ///< a path, not empty
    Locale,      ///< not empty
    LocaleFirst, ///< "LOCALE=...", "LOCALE:..."
    CommandName, ///< one of this program's commands, anything
};

/// An option or an argument of a command.
struct Parameter {
    std::string name;       ///< "--output"; an argument's is what help shows: "FILE"
    char letter = 0;        ///< 'o' for "-o"; 0: none
    std::string value = {}; ///< what help shows for an option's value: "FILE"
    std::string help = {};
    Takes takes = Takes::Nothing;
    bool isRequired = false;
    bool repeats = false;
    bool isBehindDashes = false;           ///< an argument that stands behind "--"
    std::vector<std::string> choices = {}; ///< what a shell offers
    std::function<void(std::string)> take = {};
};

/// A command line that shows what a command is for.
struct Example {
    std::string line; ///< without "zelt"
    std::string does;
};

/// One command: its words, what it takes, and what runs it.
class Command {
public:
    /// @param name  "check", or "index build" of a group
    Command(std::string name, std::string summary)
        : name_(std::move(name))
        , summary_(std::move(summary))
    {
    }

    /// @name Describing
    /// The value is stored in `to` when the command line is parsed. What `form` calls the value says what it stands
    /// for: FILE, DIR, LOCALE and so on.
    /// @{
    /// @param form  "FILE"; "[FILE]": may be left out; "FILE...": at least one; "[FILE...]"; "-- TERM...": behind "--"
    template <class Value>
    Parameter& Argument(const std::string& form, Value& to, const std::string& help)
    {
        return AddArgument(form, help, Into(to));
    }
    /// @param form  "--json" for a bool; "-o, --output FILE" for a value. A list takes several such options.
    template <class Value>
    Parameter& Option(const std::string& form, Value& to, const std::string& help)
    {
        Parameter& option = AddOption(form, help, Into(to));
        option.repeats = std::is_same_v<Value, std::vector<std::string>>;
        return option;
    }
    void Example(std::string line, std::string does);
    /// A paragraph of help below the options.
    void Note(std::string text);
    /// A command that help does not list.
    void Hide()
    {
        isHidden_ = true;
    }
    void Runs(std::function<ExitCode()> run)
    {
        run_ = std::move(run);
    }
    /// @}

    const std::string& Name() const noexcept
    {
        return name_;
    }
    const std::string& Summary() const noexcept
    {
        return summary_;
    }
    const std::vector<Parameter>& Arguments() const noexcept
    {
        return arguments_;
    }
    const std::vector<Parameter>& Options() const noexcept
    {
        return options_;
    }
    const std::vector<zelt::Example>& Examples() const noexcept
    {
        return examples_;
    }
    const std::vector<std::string>& Notes() const noexcept
    {
        return notes_;
    }
    bool IsHidden() const noexcept
    {
        return isHidden_;
    }
    ExitCode Run() const
    {
        return run_();
    }
    /// "zelt extract FILE PART OUT [options]"
    std::string Synopsis() const;

private:
    using Take = std::function<void(std::string)>;
    static Take Into(bool& flag);
    static Take Into(std::size_t& number);
    static Take Into(std::string& text);
    static Take Into(std::optional<std::string>& text);
    static Take Into(std::vector<std::string>& texts);

    Parameter& AddArgument(std::string form, const std::string& help, Take take);
    Parameter& AddOption(std::string form, const std::string& help, Take take);

    std::string name_;
    std::string summary_;
    std::vector<Parameter> arguments_;
    std::vector<Parameter> options_;
    std::vector<zelt::Example> examples_;
    std::vector<std::string> notes_;
    std::function<ExitCode()> run_;
    bool isHidden_ = false;
};

/// A command whose options live as long as it does.
/// @param describe  called with the command and its options: adds arguments, options and examples
template <class Options, class Describe>
Command Define(std::string name, std::string summary, ExitCode (*run)(const Options&), Describe&& describe)
{
    Command command(std::move(name), std::move(summary));
    const auto options = std::make_shared<Options>();
    describe(command, *options);
    command.Runs([options, run] { return run(*options); });
    return command;
}

} // namespace zelt
