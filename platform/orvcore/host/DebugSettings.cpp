#include <orvcore/host/DebugSettings.h>
#include <orvcore/host/shared/Environment.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/shared/ASCII.h>

#include <charconv>
#include <map>
#include <mutex>
#include <optional>

namespace orvcore {

namespace {

// What a host sets counts before the environment, and goes again with Unset. The environment is noted under the full
// name of the setting, found or not, so a variable that is set later is not seen.
struct Store {
    std::mutex mutex;
    std::map<std::string, UTF8String> fromHost;
    std::map<std::string, std::optional<UTF8String>> fromEnvironment; // what was found, or that nothing was
};

Store& TheStore()
{
    static NoDestructor<Store> store;
    return *store;
}

std::string VariableName(std::string name)
{
    for (char& c : name) {
        c = IsASCIILetter(c) || IsASCIIDigit(c) ? ToASCIIUpper(c) : '_';
    }
    return name;
}

std::optional<UTF8String> Find(const std::string& name)
{
    Store& store = TheStore();
    const std::lock_guard lock(store.mutex);
    if (const auto found = store.fromHost.find(name); found != store.fromHost.end()) {
        return found->second;
    }
    // Settings of other names belong to the host alone. Ours become variables: "ORV.entrysettletime" is
    // ORV_ENTRYSETTLETIME.
    if (!name.starts_with("ORV.")) {
        return std::nullopt;
    }
    // Asked once for a name: it is slow, and not safe on every system while a host changes its environment.
    const auto [entry, isNew] = store.fromEnvironment.try_emplace(name);
    if (isNew) {
        entry->second = ReadEnvironment(VariableName(name));
    }
    return entry->second;
}

} // namespace

std::int64_t DebugSettings::GetInt(const std::string& name, std::int64_t defaultValue)
{
    const std::optional<UTF8String> found = Find(name);
    if (!found) {
        return defaultValue;
    }
    const std::string_view text = AsNarrow(*found);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    // A text that is no number, or goes on behind one, counts as not set.
    return error == std::errc() && end == text.data() + text.size() ? value : defaultValue;
}

UTF8String DebugSettings::GetText(const std::string& name, const UTF8String& defaultValue)
{
    return Find(name).value_or(defaultValue);
}

void DebugSettings::SetInt(const std::string& name, std::int64_t value)
{
    SetText(name, ToUTF8(std::to_string(value)));
}

void DebugSettings::SetText(const std::string& name, const UTF8String& value)
{
    const std::lock_guard lock(TheStore().mutex);
    TheStore().fromHost[name] = value;
}

void DebugSettings::Unset(const std::string& name)
{
    const std::lock_guard lock(TheStore().mutex);
    TheStore().fromHost.erase(name);
}

} // namespace orvcore
