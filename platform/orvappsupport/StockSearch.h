#pragma once

#include <orvappsupport/StockConnection.h>
#include <orvcore/text/Strings.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace orvappsupport::search {

/// @file
/// Searching the stock service. `docs/stock-service.md` describes what goes over the wire.

/// @name Search parameters
/// @{
/// The price filter ("all", "true" for premium, "false" for free assets) of a listing without terms, and of a search.
inline constexpr const char8_t* kSearchParameter_FilterTypeGallery = u8"gallery_premium";
inline constexpr const char8_t* kSearchParameter_FilterTypeSearchTerm = u8"search_premium";
/// "1": templates only.
inline constexpr const char8_t* kSearchParameter_ContentTypeTemplate = u8"content_template";
/// A `TemplateType` in decimal.
inline constexpr const char8_t* kSearchParameter_TemplateTypeID = u8"template_type";
/// `kZeltSource`: only assets that are template packages.
inline constexpr const char8_t* kSearchParameter_ZeltSource = u8"source";
/// The newest definition format that the client reads: "2.2".
inline constexpr const char8_t* kSearchParameter_ZeltAPIVersion = u8"api_version";
/// Numbers of categories in decimal, with commas between them; an asset of any of them will do.
inline constexpr const char8_t* kSearchParameter_TemplateCategoryID = u8"category";
/// An asset's identifier: only that asset. A service that does not know the parameter passes it over, so the answer's
/// row is to be compared.
inline constexpr const char8_t* kSearchParameter_ID = u8"id";

inline constexpr const char8_t* kZeltSource = u8"zelt";
/// @}

/// @name Columns of a result
/// Texts, but for whole numbers (width, height, size) and lists of texts (keywords, categories).
/// @{
inline constexpr const char8_t* kResultColumn_Description = u8"description";
inline constexpr const char8_t* kResultColumn_CreatorName = u8"creator_name";
inline constexpr const char8_t* kResultColumn_Keywords = u8"keywords";
inline constexpr const char8_t* kResultColumn_Width = u8"width"; ///< of the template, in pixels
inline constexpr const char8_t* kResultColumn_Height = u8"height";
inline constexpr const char8_t* kResultColumn_ThumbnailURL = u8"thumbnail_url";
inline constexpr const char8_t* kResultColumn_ThumbnailURL_240 = u8"thumbnail_240_url"; ///< at most 240 pixels wide
inline constexpr const char8_t* kResultColumn_ThumbnailHTMLTag = u8"thumbnail_html_tag";
inline constexpr const char8_t* kResultColumn_ThumbnailWidth = u8"thumbnail_width";
inline constexpr const char8_t* kResultColumn_ThumbnailHeight = u8"thumbnail_height";
inline constexpr const char8_t* kResultColumn_VideoPreviewURL = u8"video_preview_url";
inline constexpr const char8_t* kResultColumn_SizeBytes = u8"size_bytes";              ///< of the package
inline constexpr const char8_t* kResultColumn_ZeltMetadataURL = u8"zelt_metadata_url"; ///< its definition document
inline constexpr const char8_t* kResultColumn_TemplateCategories = u8"template_categories";
/// @}

/// How a search ended.
enum class Error : std::int32_t {
    None,          ///< the page arrived
    Cancelled,     ///< `isWanted` said no, or the process's executors end
    BadRequest,    ///< the connection's settings or the search have no form that can be sent; nothing was sent
    NoConnection,  ///< the service was not reached, or is not who it says (TLS)
    TimedOut,      ///< a time-out of the connection's settings passed
    NotAuthorised, ///< 401 or 403: the credentials are missing, wrong or not enough
    Busy,          ///< 429 or 503, also when asked again
    Refused,       ///< another status that is no success
    BadRedirect,   ///< too many redirects, one from https to http, or to something else than either
    BadAnswer,     ///< the answer is not what the contract says, too large, or cut short
};

/// "TimedOut" and so on: for logs and tests. A number outside the enumeration gives "Unknown".
ORVPLATFORM_API std::string_view ToText(Error error) noexcept;

/// A value of one column: nothing where the service told none, or one that is not well-formed.
using Value = std::variant<std::monostate, std::u8string_view, std::uint64_t, std::span<const std::u8string_view>>;

/// One asset. Its texts and values are part of the page: they are valid as long as the `Results`, or a copy of those.
struct Row {
    std::u8string_view id; ///< never empty; any text, so no path is made from it directly
    std::u8string_view title;
    bool premium = false;          ///< costs money
    bool licensed = false;         ///< the user has a licence already
    std::span<const Value> values; ///< one for each column asked for, in that order
};

/// One page of a query. All texts are well-formed UTF-8 of at most `kMaxColumnBytes`.
struct Results {
    int total = 0;                            ///< of the whole query; at least 0
    std::vector<orvcore::UTF8String> columns; ///< as they were asked for
    std::vector<Row> rows;                    ///< at most as many as asked for
    int status = 0;                           ///< the HTTP status; 0 without an answer
    orvcore::UTF8String message;              ///< after an error: what went wrong, in plain English without a full stop
    std::shared_ptr<const void> content;      ///< what the rows are parts of

    /// The row's value in this column as a text; empty when it is none. What was asked for only.
    ORVPLATFORM_API orvcore::UTF8String GetText(const Row& row, std::u8string_view column) const;
    /// The same as a number, 0 when it is none, and as a list of texts, empty when it is none.
    ORVPLATFORM_API std::uint64_t GetNumber(const Row& row, std::u8string_view column) const;
    ORVPLATFORM_API std::vector<orvcore::UTF8String> GetList(const Row& row, std::u8string_view column) const;
};

/// @name Limits
/// @{
inline constexpr int kMaxRows = 100;                                  ///< of one page
inline constexpr std::size_t kMaxURLBytes = 8192;                     ///< of a request's URL
inline constexpr std::size_t kMaxColumnBytes = std::size_t{1} << 16U; ///< of one text
inline constexpr std::size_t kMaxAnswerBytes = std::size_t{8} << 20U; ///< of one page, unpacked
/// @}

using Handler = std::function<void(Error, const Results&)>;

/// Asks for one page of a query and returns at once. Any thread.
///
/// `handler` is called exactly once, on the client's thread, where it must not block: all requests of the process
/// wait meanwhile. When the process's executors have ended (`orvcore::ShutdownExecutors`) it is called before this
/// returns, with `Cancelled`. Only a process that exits calls it no more. What it throws goes to
/// `orvcore::SetTaskExceptionHandler`.
///
/// A service that is busy (429, 503) is asked up to three times, each time after the pause it names (up to ten
/// seconds) or else a growing one, within the total time-out.
/// @param terms      all of them must match; none: the whole gallery
/// @param parameters name and value each, in the order in which they are sent
/// @param columns    what to tell of each asset besides identifier, title and the two flags
/// @param connection may not be empty
/// @param first      position of the first row in the query's result, from 0
/// @param count      1 to `kMaxRows`
/// @param isWanted   may be empty; asked on the client's thread some ten times a second, must not block or throw. Its
///                   false ends the search.
ORVPLATFORM_API void Search(const std::vector<orvcore::UTF8String>& terms,
                            const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& parameters,
                            const std::vector<orvcore::UTF8String>& columns,
                            const std::shared_ptr<ClientStockConnection>& connection, int first, int count,
                            Handler handler, std::function<bool()> isWanted = {});

} // namespace orvappsupport::search
