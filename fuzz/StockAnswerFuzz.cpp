// An answer of the stock service: what is taken of it keeps the promises of a page, whatever the text.
#include <orvappsupport/detail/SearchAnswer.h>

#include <cstdint>
#include <cstdlib>

namespace {

namespace search = orvappsupport::search;

constexpr int kCount = 3;

bool IsSound(const search::Results& results)
{
    bool sound = results.total >= 0 && results.rows.size() <= kCount;
    for (const search::Row& row : results.rows) {
        sound = sound && !row.id.empty() && row.id.size() <= search::kMaxColumnBytes &&
                row.values.size() == results.columns.size() && orvcore::IsWellFormedUTF8(orvcore::AsNarrow(row.title));
    }
    return sound;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    search::Results results;
    results.columns = {u8"width", u8"keywords", u8"description"};
    const search::Error error = orvappsupport::detail::ReadPage(text, kCount, results);
    const bool isRefused = error == search::Error::BadAnswer && results.rows.empty() && !results.message.empty();
    if (!IsSound(results) || (error != search::Error::None && !isRefused) ||
        !orvcore::IsWellFormedUTF8(orvappsupport::detail::ReadErrorMessage(text))) {
        std::abort();
    }
    return 0;
}
