#pragma once

#include <orvcore/text/Strings.h>

#include <cstddef>
#include <string_view>

namespace orvcore {

/// @name Text as a searcher sees it
/// All functions are pure and thread-safe, take any content (ill-formed sequences count as U+FFFD) and throw nothing
/// but `std::bad_alloc`.
/// @{

/// The form of `text` in which spellings that a person takes for the same are equal, as UTF-8.
///
/// - Case: full Unicode case folding ("Straße", "STRASSE" and "strasse" give "strasse").
/// - Width and presentation forms: the compatibility forms are resolved ("ＡＢＣ" gives "abc", half-width kana full
///   width).
/// - Accents: combining marks of Latin, Greek and Cyrillic letters and the vowel points of Hebrew and Arabic are
///   dropped ("Møller", "Łódź" give "moller", "lodz"), letters that only look accented included (ø, ł, đ, ħ, ı, æ, œ).
/// - Kept: marks that make another letter, such as the voiced mark of kana ("ガ" is not "カ") and the vowel signs of
///   the Indic and Thai scripts. A Hangul syllable stays one letter.
/// - Invisible characters (soft hyphen, joiners, variation selectors) are dropped.
///
/// Folding a folded text changes nothing. The result never holds the bytes 0xF8 to 0xFF.
ORVPLATFORM_API UTF8String FoldText(std::u16string_view text);
ORVPLATFORM_API UTF8String FoldText(std::u8string_view text);

/// `text` with every letter replaced by its lower-case letter (Unicode's simple mapping, whatever the language).
ORVPLATFORM_API UTF16String ToLowerCase(std::u16string_view text);

/// True when a word of `text` begins at byte `at`: at the text's start, after a character that is neither letter, digit
/// nor mark, and before every letter of a script that is written without spaces (Chinese, Japanese, Thai and their
/// like). `text` is well-formed UTF-8 and `at` the first byte of a character or the end.
ORVPLATFORM_API bool IsWordStart(std::u8string_view text, std::size_t at) noexcept;
/// @}

} // namespace orvcore
