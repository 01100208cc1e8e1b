#include <tools/zelt/commandline/Program.h>

#include <orvcore/text/NearestName.h>
#include <tools/zelt/commandline/Locale.h>

#include <algorithm>

namespace zelt {

namespace {

using Words = std::vector<std::string>;

std::string Quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

// What of several names was likely meant, as the end of a message.
std::string DidYouMean(std::string_view word, const Words& names)
{
    const std::string nearest = orvcore::NearestName(word, names);
    return nearest.empty() ? "" : "; did you mean " + Quoted(nearest) + '?';
}

void Give(const Parameter& parameter, const std::string& value)
{
    const bool isPath = parameter.takes == Takes::File || parameter.takes == Takes::Folder;
    if (value.empty() && (isPath || parameter.takes == Takes::Locale)) {
        throw UsageError(parameter.name + (isPath ? ": the file name is empty" : ": the locale is empty"));
    }
    if (parameter.takes == Takes::Locale || parameter.takes == Takes::LocaleFirst) {
        WarnOfLocale(parameter.name, std::string_view(value).substr(0, value.find_first_of("=:")));
    }
    try {
        parameter.take(value);
    } catch (const UsageError& error) {
        throw UsageError(parameter.name + ": " + error.what());
    }
}

// Words are given to the command as they come, but its arguments only when all were read: which of them a repeated
// argument takes depends on how many there are. After "--" a word is no option; a command that has an argument behind
// "--" gets those words there alone.
class Reader {
public:
    Reader(const Program& program, const Words& words, std::string& name)
        : program_(program)
        , words_(words)
        , name_(name)
    {
    }

    const Command* Read(const CommonOptions& common)
    {
        bool hasOptions = true;
        while (at_ < words_.size()) {
            const std::string& word = words_[at_++];
            const bool isOption = hasOptions && word.size() > 1 && word.front() == '-';
            if (isOption && word == "--") {
                hasOptions = false;
            } else if (isOption) {
                TakeOption(word);
            } else if (command_ == nullptr) {
                TakeName(word);
            } else {
                (hasOptions ? arguments_ : behind_).push_back(word);
            }
        }
        if (command_ != nullptr && !common.help && !common.version) {
            GiveArguments();
        }
        return command_;
    }

private:
    void TakeName(const std::string& word)
    {
        const std::string name = name_.empty() ? word : name_ + ' ' + word;
        command_ = program_.Find(name);
        if (command_ == nullptr && !program_.IsGroup(name)) {
            Words names;
            for (const Command& command : program_.commands) {
                names.push_back(command.Name());
            }
            throw UsageError("there is no command " + Quoted(name) + DidYouMean(name, names));
        }
        name_ = name;
    }

    const Parameter* FindOption(const std::function<bool(const Parameter&)>& fits) const
    {
        for (const Command* command : {command_, &program_.common}) {
            if (command != nullptr) {
                const auto& options = command->Options();
                if (const auto found = std::find_if(options.begin(), options.end(), fits); found != options.end()) {
                    return &*found;
                }
            }
        }
        return nullptr;
    }

    [[noreturn]] void ThrowUnknown(const std::string& name) const
    {
        Words names;
        FindOption([&names](const Parameter& option) {
            names.push_back(option.name);
            return false;
        });
        throw UsageError(Where() + "there is no option " + Quoted(name) + DidYouMean(name, names));
    }

    // "--name", "--name=value", "--name value", "-x", "-xvalue", "-x value".
    void TakeOption(const std::string& word)
    {
        const bool isLong = word.starts_with("--");
        const std::size_t end = isLong ? std::min(word.find('='), word.size()) : 2;
        const std::string name = word.substr(0, end);
        const Parameter* option =
            FindOption([&](const Parameter& one) { return isLong ? one.name == name : one.letter == name[1]; });
        if (option == nullptr) {
            ThrowUnknown(name);
        }
        const bool hasValue = end < word.size();
        if (option->takes == Takes::Nothing) {
            if (hasValue) {
                throw UsageError(Where() + option->name + " takes no value");
            }
            option->take({});
        } else if (hasValue) {
            Give(*option, word.substr(end + (isLong ? 1 : 0)));
        } else if (at_ == words_.size()) {
            throw UsageError(Where() + option->name + " needs " + option->value);
        } else {
            Give(*option, words_[at_++]);
        }
        given_.push_back(option);
    }

    void GiveArguments()
    {
        const auto& all = command_->Arguments();
        if (std::none_of(all.begin(), all.end(), [](const Parameter& one) { return one.isBehindDashes; })) {
            arguments_.insert(arguments_.end(), behind_.begin(), behind_.end());
        }
        auto next = arguments_.cbegin();
        for (const Parameter& argument : all) {
            if (argument.isBehindDashes) {
                GiveEach(argument, behind_.cbegin(), behind_.cend());
            } else {
                const auto left = arguments_.cend() - next;
                const auto taken = argument.repeats ? left : std::min<std::ptrdiff_t>(left, 1);
                GiveEach(argument, next, next + taken);
                next += taken;
            }
        }
        if (next != arguments_.cend()) {
            throw UsageError(Where() + Quoted(*next) + " was not expected");
        }
        for (const Parameter& option : command_->Options()) {
            if (option.isRequired && std::find(given_.begin(), given_.end(), &option) == given_.end()) {
                throw UsageError(Where() + option.name + " is missing");
            }
        }
    }

    void GiveEach(const Parameter& argument, Words::const_iterator begin, Words::const_iterator end) const
    {
        if (begin == end && argument.isRequired) {
            throw UsageError(Where() + argument.name + " is missing");
        }
        std::for_each(begin, end, [&argument](const std::string& value) { Give(argument, value); });
    }

    std::string Where() const
    {
        return name_.empty() ? "" : name_ + ": ";
    }

    const Program& program_;
    const Words& words_;
    std::string& name_;
    std::size_t at_ = 0;
    const Command* command_ = nullptr;
    Words arguments_;
    Words behind_; // "--"
    std::vector<const Parameter*> given_;
};

} // namespace

const Command* Program::Find(std::string_view name) const
{
    const auto found =
        std::find_if(commands.begin(), commands.end(), [name](const auto& c) { return c.Name() == name; });
    return found == commands.end() ? nullptr : &*found;
}

bool Program::IsGroup(std::string_view word) const
{
    const std::string begin = std::string(word) + ' ';
    return std::any_of(commands.begin(), commands.end(), [&](const auto& c) { return c.Name().starts_with(begin); });
}

const Command* ParseCommandLine(const Program& program, const CommonOptions& common, const Words& arguments,
                                std::string& group)
{
    return Reader(program, arguments, group).Read(common);
}

} // namespace zelt
