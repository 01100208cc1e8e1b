#include <orvcore/text/shared/TextFold.h>

#include <orvcore/text/shared/ASCII.h>

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <vector>

// A text is folded in four steps: decompose with all compatibility forms and case folding, drop accents and replace
// letters that only look accented, put the remaining marks into their one order, compose again. Most texts are ASCII
// and need none of it. The index's file keeps texts as they were written, so that a change here needs no new format of
// it.

namespace orvcore {

namespace {

using CodePoint = utf8proc_int32_t;
using CodePoints = std::vector<CodePoint>;

struct Range {
    CodePoint first;
    CodePoint last;
};

// Marks that are accents or optional points. Other scripts' marks spell letters of their own and stay.
constexpr Range kDroppedMarks[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05BF}, {0x05C1, 0x05C2}, {0x05C4, 0x05C5},
    {0x05C7, 0x05C7}, {0x0610, 0x061A}, {0x064B, 0x065F}, {0x0670, 0x0670}, {0x06D6, 0x06DC}, {0x06DF, 0x06E4},
    {0x06E7, 0x06E8}, {0x06EA, 0x06ED}, {0x1AB0, 0x1ACE}, {0x1DC0, 0x1DFF}, {0x20D0, 0x20F0}, {0xFE20, 0xFE2F},
};

// Scripts whose words stand side by side without spaces.
constexpr Range kUnspacedScripts[] = {
    {0x0E00, 0x0EFF}, {0x1000, 0x109F}, {0x1780, 0x17FF}, {0x2E80, 0x2FDF}, {0x3005, 0x3007},   {0x3040, 0x30FF},
    {0x31F0, 0x31FF}, {0x3400, 0x4DBF}, {0x4E00, 0x9FFF}, {0xF900, 0xFAFF}, {0x20000, 0x3FFFF},
};

struct PlainForm {
    CodePoint letter;
    std::array<char, 2> plain; // the second is NUL where one letter suffices
};

// Letters without a decomposition in Unicode that people type without their stroke, hook or ligature. Lower case
// alone: they are looked up after case folding.
constexpr PlainForm kPlainForms[] = {
    {0x00E6, {'a', 'e'}}, {0x00F0, {'d', 0}}, {0x00F8, {'o', 0}}, {0x00FE, {'t', 'h'}}, {0x0111, {'d', 0}},
    {0x0127, {'h', 0}},   {0x0131, {'i', 0}}, {0x0138, {'k', 0}}, {0x0142, {'l', 0}},   {0x014B, {'n', 'g'}},
    {0x0153, {'o', 'e'}}, {0x0167, {'t', 0}}, {0x0180, {'b', 0}}, {0x0188, {'c', 0}},   {0x0192, {'f', 0}},
    {0x0199, {'k', 0}},   {0x019A, {'l', 0}}, {0x01A5, {'p', 0}}, {0x01B4, {'y', 0}},   {0x01B6, {'z', 0}},
    {0x01E5, {'g', 0}},   {0x0225, {'z', 0}}, {0x023C, {'c', 0}}, {0x0247, {'e', 0}},   {0x0249, {'j', 0}},
    {0x024D, {'r', 0}},   {0x024F, {'y', 0}}, {0x0253, {'b', 0}}, {0x0256, {'d', 0}},   {0x0257, {'d', 0}},
    {0x0268, {'i', 0}},   {0x026B, {'l', 0}}, {0x0289, {'u', 0}}, {0x2C65, {'a', 0}},   {0x2C66, {'t', 0}},
};

// Searched by halves, as kPlainForms is: keep these tables ascending.
template <std::size_t N>
bool IsIn(const Range (&ranges)[N], CodePoint c) noexcept
{
    const auto* const at =
        std::lower_bound(ranges, ranges + N, c, [](const Range& range, CodePoint value) { return range.last < value; });
    return at != ranges + N && at->first <= c;
}

void AppendPlain(CodePoint c, CodePoints& out)
{
    if (c < 0x80) {
        out.push_back(c);
        return;
    }
    if (IsIn(kDroppedMarks, c)) {
        return;
    }
    const auto* const at = std::lower_bound(std::begin(kPlainForms), std::end(kPlainForms), c,
                                            [](const PlainForm& form, CodePoint value) { return form.letter < value; });
    if (at == std::end(kPlainForms) || at->letter != c) {
        out.push_back(c);
        return;
    }
    out.push_back(at->plain[0]);
    if (at->plain[1] != 0) {
        out.push_back(at->plain[1]);
    }
}

utf8proc_propval_t CombiningClass(CodePoint c) noexcept
{
    return utf8proc_get_property(c)->combining_class;
}

// Several marks on one letter have one order. Sorted run by run here: the library's own reordering takes time quadratic
// in the length of a run, which a text of nothing but marks turns into a standstill.
void OrderMarks(CodePoints& text)
{
    const auto isMark = [](CodePoint c) { return c >= 0x300 && CombiningClass(c) != 0; };
    auto at = std::find_if(text.begin(), text.end(), isMark);
    while (at != text.end()) {
        const auto end = std::find_if_not(at, text.end(), isMark);
        std::stable_sort(at, end, [](CodePoint a, CodePoint b) { return CombiningClass(a) < CombiningClass(b); });
        at = std::find_if(end, text.end(), isMark);
    }
}

// The character at `at`, which is moved past it. The text is well-formed.
CodePoint Next(std::u8string_view text, std::size_t& at) noexcept
{
    if (text[at] < 0x80) {
        return text[at++];
    }
    CodePoint c = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + at,
                                         static_cast<utf8proc_ssize_t>(text.size() - at), &c);
    at += length > 0 ? static_cast<std::size_t>(length) : 1;
    return c;
}

void AppendCharacter(CodePoint c, UTF8String& out)
{
    std::array<utf8proc_uint8_t, 4> bytes{};
    const auto length = utf8proc_encode_char(c, bytes.data());
    for (std::size_t i = 0; i < static_cast<std::size_t>(length); ++i) {
        out.push_back(static_cast<char8_t>(bytes[i]));
    }
}

void AppendDecomposed(CodePoint c, CodePoints& out)
{
    constexpr auto kOptions =
        static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT | UTF8PROC_CASEFOLD | UTF8PROC_IGNORE);
    std::array<CodePoint, 64> parts{}; // the longest decomposition has 18
    int boundClass = 0;
    const auto count =
        utf8proc_decompose_char(c, parts.data(), static_cast<utf8proc_ssize_t>(parts.size()), kOptions, &boundClass);
    if (count < 0 || static_cast<std::size_t>(count) > parts.size()) {
        out.push_back(c);
        return;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        AppendPlain(parts[i], out);
    }
}

UTF8String FoldWellFormed(std::u8string_view text)
{
    CodePoints parts;
    parts.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        AppendDecomposed(Next(text, at), parts);
    }
    OrderMarks(parts);
    // Composing joins Hangul letters to syllables again, and kana to their voiced marks.
    constexpr auto kCompose = static_cast<utf8proc_option_t>(UTF8PROC_COMPOSE | UTF8PROC_STABLE);
    const auto count = utf8proc_normalize_utf32(parts.data(), static_cast<utf8proc_ssize_t>(parts.size()), kCompose);
    parts.resize(static_cast<std::size_t>(std::max<utf8proc_ssize_t>(count, 0)));
    UTF8String out;
    out.reserve(text.size());
    for (const CodePoint c : parts) {
        AppendCharacter(c, out);
    }
    return out;
}

template <class Char>
bool FoldASCII(std::basic_string_view<Char> text, UTF8String& out)
{
    out.resize(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const Char c = text[i];
        if (c >= 0x80) {
            return false;
        }
        out[i] = static_cast<char8_t>(ToASCIILower(c));
    }
    return true;
}

bool IsWordCharacter(CodePoint c) noexcept
{
    if (c < 0x80) {
        return IsASCIILetter(c) || IsASCIIDigit(c);
    }
    const auto category = utf8proc_category(c);
    return category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_NO;
}

} // namespace

UTF8String FoldText(std::u16string_view text)
{
    UTF8String out;
    return FoldASCII(text, out) ? out : FoldWellFormed(ToUTF8(text));
}

UTF8String FoldText(std::u8string_view text)
{
    UTF8String out;
    if (FoldASCII(text, out)) {
        return out;
    }
    return IsWellFormedUTF8(AsNarrow(text)) ? FoldWellFormed(text) : FoldWellFormed(ToUTF8(ToUTF16(text)));
}

UTF16String ToLowerCase(std::u16string_view text)
{
    const UTF8String from = ToUTF8(text);
    UTF8String out;
    out.reserve(from.size());
    for (std::size_t at = 0; at < from.size();) {
        AppendCharacter(utf8proc_tolower(Next(from, at)), out);
    }
    return ToUTF16(out);
}

bool IsWordStart(std::u8string_view text, std::size_t at) noexcept
{
    if (at == 0) {
        return true;
    }
    std::size_t before = at - 1;
    while (before > 0 && (text[before] & 0xC0U) == 0x80) {
        --before;
    }
    if (!IsWordCharacter(Next(text, before))) {
        return true;
    }
    return at < text.size() && text[at] >= 0x80 && IsIn(kUnspacedScripts, Next(text, at));
}

} // namespace orvcore
