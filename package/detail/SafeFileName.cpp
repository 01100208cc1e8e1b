#include <package/detail/SafeFileName.h>

#include <orvcore/files/Paths.h>
#include <orvcore/files/shared/PathNames.h>
#include <orvcore/text/shared/HashMixer.h>

#include <string>

namespace orvcapsule::detail {

// An identifier comes from a network service, and one file name must come of it on every system: never a way out of the
// folder ("..", a separator), never a device ("nul"), never the name of another identifier's folder. So "%" is escaped
// always, and an identifier that is a plain name on every system stays as it is.
//
// A change of a rule here gives existing assets another folder: they are fetched again, and the old files stay
// until the working folder is deleted.

namespace {

// Longer names, in bytes, do not fit every file system once a program adds to them.
constexpr std::size_t kLongestName = 120;

bool IsForbidden(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
           std::string_view("%/\\:*?\"<>|").find(c) != std::string_view::npos;
}

void AppendEscaped(std::string& out, char c)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    out += {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
}

std::string Escape(std::string_view text)
{
    const bool wellFormed = orvcore::IsWellFormedUTF8(text);
    const bool onlyDots = text.find_first_not_of('.') == std::string_view::npos;
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        // One escaped character is enough to take a device name or a row of dots away from the system.
        const bool first = i == 0 && (onlyDots || orvcore::IsDeviceName(orvcore::AsUTF8(text)));
        const bool last = i + 1 == text.size() && (c == '.' || c == ' '); // Windows drops them
        if (first || last || IsForbidden(c) || (!wellFormed && static_cast<unsigned char>(c) >= 0x80)) {
            AppendEscaped(out, c);
        } else {
            out.push_back(c);
        }
    }
    return out;
}

} // namespace

std::filesystem::path SafeFileName(std::u8string_view text)
{
    const std::string_view narrow = orvcore::AsNarrow(text);
    std::string name = Escape(narrow);
    // "%" is always followed by two digits above, so these two forms are free.
    if (name.empty()) {
        name = "%";
    } else if (name.size() > kLongestName) {
        name = "%~" + orvcore::HashMixer().AddBytes(narrow.data(), narrow.size()).GetResult().ToString();
    }
    return orvcore::PathFromUTF8(orvcore::AsUTF8(name));
}

} // namespace orvcapsule::detail
