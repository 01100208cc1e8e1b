#include <orvcore/host/Application.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <mutex>
#include <shared_mutex>

namespace orvcore {

namespace {

// Read by all workers for each text that they look up, and changed hardly ever.
struct Values {
    std::shared_mutex mutex;
    std::string language = "en_US";
    UTF16String languageUTF16 = u"en_US"; // kept beside the narrow form: locale look-ups are frequent
    std::string name = "orvcapsule";
    std::string clientVersion = "0.1.0";
};

Values& TheValues()
{
    static NoDestructor<Values> values;
    return *values;
}

// Copies: a reference would be read after the lock is gone, while another thread sets the value.
template <class T>
T Copy(const T& value)
{
    const std::shared_lock lock(TheValues().mutex);
    return value;
}

} // namespace

std::string Application::GetLanguage()
{
    return Copy(TheValues().language);
}

UTF16String Application::GetLanguageUTF16()
{
    return Copy(TheValues().languageUTF16);
}

void Application::SetLanguage(const std::string& language)
{
    // Before the lock, which all workers share for reading.
    UTF16String wide = ToUTF16(language);
    const std::unique_lock lock(TheValues().mutex);
    TheValues().language = language;
    TheValues().languageUTF16 = std::move(wide);
}

std::string Application::GetName()
{
    return Copy(TheValues().name);
}

void Application::SetName(const std::string& name)
{
    const std::unique_lock lock(TheValues().mutex);
    TheValues().name = name;
}

std::string Application::GetClientVersion()
{
    return Copy(TheValues().clientVersion);
}

void Application::SetClientVersion(const std::string& version)
{
    const std::unique_lock lock(TheValues().mutex);
    TheValues().clientVersion = version;
}

} // namespace orvcore
