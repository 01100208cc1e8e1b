// Any text, given to the reader of every single record: it may only raise what its header names, and what it read must
// be written as a text that reads as the same again.
#include <capsule/Serialization.h>
#include <kinlet/detail/RecordTables.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace orvcapsule;
namespace json = orvcore::serialization;

[[noreturn]] void Fail(const char* what, std::string_view text)
{
    std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
    std::abort();
}

// `again` reads and writes once more; a kept key may lie too deep for that.
template <class Again>
void ExpectSame(const json::Variant& written, const Again& again)
{
    const auto text = json::GetJSONUTF8String(written, false);
    const auto rewritten = json::GetJSONUTF8String(again(json::JSONParse(text)), false);
    if (rewritten != text) {
        Fail("a record does not read as it was written", orvcore::AsNarrow(text));
    }
}

template <class Record>
void TryTree(const json::Variant& tree)
{
    const auto rewrite = [](const json::Variant& from) {
        Record record;
        return json::detail::FromTree(from, record) ? json::detail::ToTree(record) : json::Variant();
    };
    try {
        ExpectSame(rewrite(tree), rewrite);
    } catch (const json::missing_key_exception&) {
    }
}

template <class Record>
void TryText(const UTF16String& text, UTF16String (*write)(const Record&), Record (*read)(const UTF16String&))
{
    try {
        const UTF16String written = write(read(text));
        if (write(read(written)) != written) {
            Fail("a record's text does not read as it was written", orvcore::ToNarrow(written));
        }
    } catch (const json::missing_key_exception&) {
    }
}

void TryControl(const json::Variant& tree)
{
    try {
        const auto control = serialization::ClientControlFromJson(tree);
        if (control != nullptr) {
            ExpectSame(serialization::ClientControlToJson(control), [](const json::Variant& from) {
                return serialization::ClientControlToJson(serialization::ClientControlFromJson(from));
            });
        }
    } catch (const json::missing_key_exception&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const UTF8String text(data, data + size);
    json::Variant tree;
    try {
        tree = json::JSONParse(text);
    } catch (const json::json_parse_exception&) {
    }
    TryControl(tree);
    TryTree<kinlet::SourceInfo>(tree);
    TryTree<kinlet::CapsuleParams>(tree);
    TryTree<kinlet::ColorSpace>(tree);
    TryTree<kinlet::MissingAssets>(tree);
    TryTree<kinlet::RemoteAssetRequest>(tree);
    TryTree<kinlet::RemoteProductionRequest>(tree);
    TryTree<kinlet::SpreadsheetData>(tree);
    TryTree<kinlet::TextEditInfo>(tree);
    const UTF16String wide = orvcore::ToUTF16(text);
    TryText(wide, serialization::AlternateRectInfoToJson, serialization::AlternateRectInfoFromJson);
    TryText(wide, serialization::TextEditInfoToJson, serialization::TextEditInfoFromJson);
    TryText(wide, serialization::SourceTextFontEditInfoToJson, serialization::SourceTextFontEditInfoFromJson);
    TryText(wide, serialization::SpreadsheetColInfoLocVecToJson, serialization::SpreadsheetColInfoLocVecFromJson);
    return 0;
}
