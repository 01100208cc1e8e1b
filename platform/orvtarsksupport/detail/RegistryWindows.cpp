#include <orvtarsksupport/detail/Registry.h>

#include <windows.h>

#include <algorithm>
#include <memory>
#include <string>

namespace orvtarsksupport::detail {

namespace {

struct CloseKey {
    void operator()(HKEY key) const noexcept
    {
        ::RegCloseKey(key);
    }
};

std::wstring AsWide(const orvcore::UTF16String& text)
{
    return {text.begin(), text.end()};
}

// Reads a value of any size; it may grow between the two questions.
LSTATUS ReadValue(HKEY key, const std::wstring& name, DWORD& type, std::string& bytes)
{
    DWORD size = 0;
    LSTATUS status = ::RegQueryValueExW(key, name.c_str(), nullptr, &type, nullptr, &size);
    if (status == ERROR_SUCCESS) {
        bytes.resize(size);
        status = ::RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size);
        bytes.resize(status == ERROR_SUCCESS ? size : 0);
    }
    return status;
}

} // namespace

RegistryText ReadRegistryText(const orvcore::UTF16String& key, const orvcore::UTF16String& value)
{
    HKEY opened = nullptr;
    // The 64-bit view also in a 32-bit process: that is where installers of the suite register.
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, AsWide(key).c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &opened) !=
        ERROR_SUCCESS) {
        return {};
    }
    const std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey> close(opened);
    DWORD type = REG_NONE;
    std::string bytes;
    const LSTATUS status = ReadValue(opened, AsWide(value), type, bytes);
    if (status == ERROR_MORE_DATA) {
        return {RegistryText::Outcome::Unusable};
    }
    if (status != ERROR_SUCCESS) {
        return {};
    }
    // The value's bytes are whatever its writer stored: an odd number, no closing NUL or several.
    orvcore::UTF16String text(bytes.size() / sizeof(char16_t), u'\0');
    bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * sizeof(char16_t));
    text.resize(std::min(text.size(), text.find(u'\0'))); // the end may be marked or not
    const bool isText = type == REG_SZ && bytes.size() % sizeof(char16_t) == 0 && !text.empty();
    return isText ? RegistryText{RegistryText::Outcome::Text, text} : RegistryText{RegistryText::Outcome::Unusable};
}

} // namespace orvtarsksupport::detail
