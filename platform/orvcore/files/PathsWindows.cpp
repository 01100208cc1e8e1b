#include <orvcore/files/Paths.h>

// A path that nears 260 characters is opened in its extended form, "\\?\C:\..." or "\\?\UNC\server\share\...", which
// the system takes as it stands: it resolves no ".." there and knows no slashes, so the path is made absolute and
// normal first. Short paths keep their own form, because the extended one means another thing where a name ends with a
// dot or a space, and some programs that get a path from here do not know it.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

// A directory's limit is 12 characters below MAX_PATH (260): room for a short file name must remain.
constexpr std::size_t kLongestPlainPath = 240;

std::u16string_view AsUTF16(const std::wstring& text)
{
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

} // namespace

fs::path PathFromUTF16(std::u16string_view text)
{
    return std::wstring(reinterpret_cast<const wchar_t*>(text.data()), text.size());
}

fs::path PathFromUTF8(std::u8string_view text)
{
    return PathFromUTF16(ToUTF16(text));
}

UTF8String PathToUTF8(const fs::path& path)
{
    return ToUTF8(AsUTF16(path.native()));
}

UTF16String PathToUTF16(const fs::path& path)
{
    return UTF16String(AsUTF16(path.native()));
}

UTF16String PathTextToUTF16(std::u8string_view text)
{
    return ToUTF16(text);
}

UTF8String PathTextToUTF8(std::u16string_view text)
{
    return ToUTF8(text);
}

fs::path ToSystemPath(const fs::path& path)
{
    const std::wstring& text = path.native();
    const bool isExtended = text.starts_with(L"\\\\?\\") || text.starts_with(L"\\\\.\\");
    if (isExtended || (text.size() < kLongestPlainPath && path.is_absolute())) {
        return path;
    }
    std::error_code error;
    fs::path absolute = fs::absolute(path, error); // the system's limit is for what a relative path comes to
    if (error || absolute.native().size() < kLongestPlainPath) {
        return path;
    }
    absolute = absolute.lexically_normal().make_preferred();
    if (absolute.native().starts_with(L"\\\\")) {
        return L"\\\\?\\UNC" + absolute.native().substr(1);
    }
    return L"\\\\?\\" + absolute.native();
}

} // namespace orvcore
