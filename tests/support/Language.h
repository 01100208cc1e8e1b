#pragma once

#include <orvcore/host/Application.h>

namespace orvtest {

/// Sets the application language for a scope.
class Language {
public:
    explicit Language(const std::string& language)
        : before_(orvcore::Application::GetLanguage())
    {
        orvcore::Application::SetLanguage(language);
    }
    ~Language()
    {
        orvcore::Application::SetLanguage(before_);
    }
    Language(const Language&) = delete;
    Language& operator=(const Language&) = delete;

private:
    std::string before_;
};

} // namespace orvtest
