#include <stock/StockSource.h>

#include <capsule/Serialization.h>
#include <orvappsupport/StockTransfers.h>
#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/Files.h>
#include <orvcore/host/Localiser.h>
#include <orvcore/json/JSON.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/text/shared/ASCII.h>
#include <package/DefinitionFile.h>
#include <package/Workspace.h>
#include <sources/PreviewLimit.h>
#include <stock/StockCapsuleEntry.h>
#include <stock/detail/StockEntries.h>

#include <boost/pointer_cast.hpp>

#include <algorithm>
#include <utility>

namespace orvcapsule {

namespace search = orvappsupport::search;
using orvcore::UTF16String;
using orvcore::UTF8String;
using Parameters = std::vector<std::pair<UTF8String, UTF8String>>;

namespace {

constexpr char kCode = 0; // an address in this library, whose code the client's thread runs

template <class Number>
UTF8String Decimal(Number number)
{
    return orvcore::ToUTF8(std::to_string(static_cast<std::int32_t>(number)));
}

Parameters MakeParameters(bool hasTerms, const UTF8String& filter, TemplateType type,
                          const std::vector<TemplateCategory>& categories)
{
    Parameters parameters;
    parameters.emplace_back(
        hasTerms ? search::kSearchParameter_FilterTypeSearchTerm : search::kSearchParameter_FilterTypeGallery, filter);
    parameters.emplace_back(search::kSearchParameter_ContentTypeTemplate, u8"1");
    parameters.emplace_back(search::kSearchParameter_TemplateTypeID, Decimal(type));
    if (type == TemplateType::MotionGraphics) {
        parameters.emplace_back(search::kSearchParameter_ZeltSource, search::kZeltSource);
    }
    parameters.emplace_back(search::kSearchParameter_ZeltAPIVersion, orvcore::ToUTF8(Capsule::GetCurrentAPIVersion()));
    if (!categories.empty()) {
        UTF8String joined;
        for (const TemplateCategory category : categories) {
            joined.append(joined.empty() ? u8"" : u8",").append(Decimal(category));
        }
        parameters.emplace_back(search::kSearchParameter_TemplateCategoryID, joined);
    }
    return parameters;
}

bool IsWebURL(const UTF8String& url)
{
    return url.starts_with(u8"http:") || url.starts_with(u8"https:");
}

// The header without its parameters, in lower case.
std::string ContentType(const orvappsupport::NetworkResponse& response)
{
    std::string type = response.GetHeader("Content-Type");
    type.erase(std::min(type.find_first_of("; \t"), type.size()));
    std::transform(type.begin(), type.end(), type.begin(), orvcore::ToASCIILower<char>);
    return type;
}

// Other programs may read the file already while this one writes it.
bool Store(const std::filesystem::path& path, const std::string& body)
{
    orvcore::AtomicFile file(path);
    std::error_code error;
    return file.Write(body.data(), body.size(), error) && file.Commit(orvcore::Durability::Cached, error);
}

bool IsJSON(const std::string& text)
{
    try {
        static_cast<void>(orvcore::serialization::JSONParse(orvcore::AsUTF8(text)));
        return true;
    } catch (const orvcore::serialization::json_parse_exception&) {
        return false;
    }
}

// What the service sends in the place of a description (the page of a proxy, say) is not kept for the next time.
void FetchDescription(const UTF8String& url, const std::filesystem::path& path)
{
    orvappsupport::TransferOptions options;
    options.maxBytes = orvcore::serialization::kMaxJSONSize;
    const auto response = orvappsupport::FetchResponseForURL(url, options);
    if (response && response->IsSuccess() && IsJSON(response->body)) {
        static_cast<void>(Store(path, response->body)); // the caller looks whether it is there
    }
}

std::shared_ptr<Capsule> ReadDescription(const UTF8String& path)
{
    try {
        auto capsule = serialization::CapsuleFromJson(GetJsonContent(path));
        return capsule && !capsule->GetAPIVersion().empty() ? capsule : nullptr;
    } catch (const orvcore::serialization::missing_key_exception&) {
        return nullptr;
    }
}

} // namespace

StockSource::StockSource(std::shared_ptr<ClientStockConnection> connection, TemplateType type)
    : templateType_(type)
    , connection_(std::move(connection))
{
}

StockSource::~StockSource() = default;

std::shared_ptr<ClientStockConnection> StockSource::GetClientStockConnectionPtr() const
{
    return connection_;
}

void StockSource::Initialize()
{
    try {
        InitTempDirectory(false);
    } catch (const std::filesystem::filesystem_error&) { // what cannot be stored later is left out then
        return;
    }
}

std::string StockSource::GetSourceID() const
{
    return kStockSourceID;
}

void StockSource::GetFilter(GraphicFilterID& filter)
{
    filter.name = orvcore::Localiser::Resolve("$$$/GraphicSource/local/Stock=Stock");
    filter.sourceID = GetSourceID();
    filter.subFilters.clear();
}

void StockSource::SetFilterType(const UTF8String& filterType)
{
    if (!filterType.empty()) {
        const std::lock_guard lock(mutex_);
        filterType_ = filterType;
    }
}

void StockSource::SetWantThumbsWithStockID(bool want)
{
    const std::lock_guard lock(mutex_);
    wantThumbsWithStockID_ = want;
}

bool StockSource::GetWantThumbsWithStockID() const
{
    const std::lock_guard lock(mutex_);
    return wantThumbsWithStockID_;
}

void StockSource::Search(const std::vector<UTF16String>& terms, const std::vector<TemplateCategory>& categories,
                         int first, int count, boost::shared_ptr<CheckCancel> token,
                         std::shared_ptr<OnResults> onResults, std::shared_ptr<OnFailure> onFailure,
                         std::shared_ptr<OnArrival> onArrival) const
{
    const auto isWanted = [token] { return !token || !token->GetAbort(); };
    if (!isWanted()) {
        return;
    }
    UTF8String filter;
    {
        const std::lock_guard lock(mutex_);
        filter = filterType_;
    }
    std::vector<UTF8String> terms8;
    std::transform(terms.begin(), terms.end(), std::back_inserter(terms8),
                   [](const UTF16String& term) { return orvcore::ToUTF8(term); });
    const auto handler = [first, token = std::move(token), isWanted, onResults = std::move(onResults),
                          onFailure = std::move(onFailure),
                          onArrival = std::move(onArrival)](search::Error error, const search::Results& results) {
        if (!isWanted() || error == search::Error::Cancelled) {
            return;
        }
        if (error != search::Error::None) {
            if (onFailure && *onFailure) {
                (*onFailure)({error, first, results.message});
            }
            return;
        }
        if (onArrival && *onArrival) {
            (*onArrival)(static_cast<int>(results.rows.size()), results.total);
        }
        if (onResults && *onResults) {
            (*onResults)(detail::MakeEntries(results.rows), first, results.total, token);
        }
    };
    orvcore::KeepModuleLoaded(&kCode);
    search::Search(terms8, MakeParameters(!terms.empty(), filter, templateType_, categories), detail::ResultColumns(),
                   connection_, first, count, handler, isWanted);
}

void StockSource::DownloadJSON(const boost::shared_ptr<CapsuleEntry>& entry) const
{
    const auto stock = boost::dynamic_pointer_cast<StockCapsuleEntry>(entry);
    if (!stock || !IsWebURL(stock->metadataURL)) {
        return;
    }
    const UTF8String path = GetTempStockAssetJSONPath(stock->stockID);
    if (path.empty()) {
        return;
    }
    if (!orvcore::Exists(orvcore::PathFromUTF8(path))) {
        FetchDescription(stock->metadataURL, orvcore::PathFromUTF8(path));
    }
    const std::shared_ptr<Capsule> capsule = ReadDescription(path);
    if (!capsule) {
        return;
    }
    std::vector<std::string> tags;
    std::transform(stock->tags.begin(), stock->tags.end(), std::back_inserter(tags),
                   [](const UTF16String& tag) { return orvcore::ToNarrow(tag); });
    capsule->SetTags(tags);
    capsule->SetCapsuleNameObsolete(stock->name);
    capsule->SetCapsuleNameLocalized(UIString(stock->name));
    stock->SetCapsule(capsule);
}

UTF8String StockSource::GetThumbnailPath(const boost::shared_ptr<CapsuleEntry>& entry,
                                         const boost::shared_ptr<CheckCancel>& cancel) const
{
    const auto stock = boost::dynamic_pointer_cast<StockCapsuleEntry>(entry);
    UTF8String path = stock ? GetTempStockAssetThumbPath(stock->stockID) : UTF8String();
    if (path.empty() || orvcore::Exists(orvcore::PathFromUTF8(path))) {
        return path;
    }
    orvappsupport::TransferOptions options;
    options.maxBytes = kMaxPreviewBytes;
    options.progress = [cancel](auto, auto) { return !cancel || !cancel->GetAbort(); };
    if (!options.progress(0, 0)) {
        return {};
    }
    const auto response = orvappsupport::FetchResponseForURL(stock->thumbnailURL, options);
    if (!response || !response->IsSuccess()) {
        return {};
    }
    const std::string type = ContentType(*response);
    const bool isImage = type == "image/jpeg" || type == "image/png";
    return isImage && Store(orvcore::PathFromUTF8(path), response->body) ? path : UTF8String();
}

} // namespace orvcapsule
