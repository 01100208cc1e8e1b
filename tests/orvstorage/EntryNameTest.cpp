#include <orvstorage/shared/EntryName.h>

#include <gtest/gtest.h>

namespace {

using orvstorage::ZipError;

TEST(EntryName, OneTableForEverySystem)
{
    const struct {
        std::string name;
        ZipError error;
        std::string relative = {};
    } cases[] = {
        {"definition.json", ZipError::None, "definition.json"},
        {"Thumbnails/logo.png", ZipError::None, "Thumbnails/logo.png"},
        {"Thumbnails/", ZipError::None, "Thumbnails"},
        {"./a//b/./c", ZipError::None, "a/b/c"},
        {"\u5b57\u5e55/\U0001F3AC.png", ZipError::None, "\u5b57\u5e55/\U0001F3AC.png"},
        {"...a/..b/.hidden", ZipError::None, "...a/..b/.hidden"},
        {"console.txt", ZipError::None, "console.txt"},
        {"com10", ZipError::None, "com10"},
        {"", ZipError::EmptyName},
        {"./", ZipError::EmptyName},
        {"/etc/passwd", ZipError::AbsoluteName},
        {"//server/share", ZipError::AbsoluteName},
        {"\\\\server\\share", ZipError::AbsoluteName},
        {"C:/Windows", ZipError::DriveLetter},
        {"z:name", ZipError::DriveLetter},
        {"..", ZipError::ParentComponent},
        {"../up", ZipError::ParentComponent},
        {"a/../../up", ZipError::ParentComponent},
        {"a/..", ZipError::ParentComponent},
        {"..\\up", ZipError::ParentComponent},
        {"a\\..\\..\\up", ZipError::ParentComponent},
        {"a\\b", ZipError::ReservedCharacter},
        {"a:stream", ZipError::DriveLetter},
        {"file:stream", ZipError::ReservedCharacter},
        {"what?", ZipError::ReservedCharacter},
        {std::string("a\0b", 3), ZipError::ControlCharacter},
        {"a\nb", ZipError::ControlCharacter},
        {"a\x7f", ZipError::ControlCharacter},
        {"bad\xff.png", ZipError::BadEncoding},
        {"bad\xc0\xaf..", ZipError::BadEncoding},
        {"NUL", ZipError::ReservedName},
        {"a/aux.png", ZipError::ReservedName},
        {"Com1 .txt", ZipError::ReservedName},
        {"LPT\u00b2", ZipError::ReservedName},
        {"CONOUT$", ZipError::ReservedName},
        {"dir./x", ZipError::TrailingDotOrSpace},
        {"x ", ZipError::TrailingDotOrSpace},
        {".../x", ZipError::TrailingDotOrSpace},
        {std::string(255, 'n'), ZipError::None, std::string(255, 'n')},
        {std::string(256, 'n'), ZipError::NameTooLong},
        {std::string(2049, '/').replace(0, 1, "a"), ZipError::NameTooLong},
    };
    for (const auto& c : cases) {
        const auto checked = orvstorage::detail::CheckEntryName(orvcore::AsUTF8(c.name));
        EXPECT_EQ(NameOf(checked.error), NameOf(c.error)) << c.name;
        if (c.error == ZipError::None) {
            EXPECT_EQ(orvcore::ToNarrow(checked.relative), c.relative);
        }
    }
}

} // namespace
