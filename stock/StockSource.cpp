#include <stock/StockSource.h>

#include <capsule/Serialization.h>
#include <orvappsupport/StockTransfers.h>
#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/Files.h>
#include <orvcore/host/Localiser.h>
#include <orvcore/json/JSON.h>
#include <orvcore/tasks/Executor.h>
#include <orvstorage/ZipFailure.h>
#include <package/DefinitionFile.h>
#include <package/Workspace.h>
#include <sources/PreviewLimit.h>
#include <stock/StockCapsuleEntry.h>
#include <stock/detail/StockEntries.h>
#include <validation/Finding.h>

#include <boost/pointer_cast.hpp>

#include <algorithm>
#include <utility>

// What waits and what does not. Search returns at once, and its answer comes on the client's thread, where all
// transfers of the process wait meanwhile; so the handler only makes entries and calls on. GetThumbnailPath and
// DownloadJSON fetch on the calling thread and block; they are for workers.
//
// Files in the stock folder are shared by all hosts. One that is there is used and never fetched again, so nothing is
// stored that was not looked at: a still has an image's content type, a description is JSON. They are stored in one
// step, since another host may read a file while this one writes it.

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

// Other programs may read the file already while this one writes it.
bool Store(const std::filesystem::path& path, const std::string& body, std::error_code& error)
{
    orvcore::AtomicFile file(path);
    return file.Write(body.data(), body.size(), error) && file.Commit(orvcore::Durability::Cached, error);
}

Thumbnail NoThumbnail(std::string code, std::string text)
{
    return {{}, std::make_shared<const Finding>(Finding{Severity::Error, std::move(code), std::move(text)})};
}

Thumbnail StoreThumbnail(const orvappsupport::NetworkResponse& response, const UTF8String& path)
{
    if (!response.IsSuccess()) {
        return NoThumbnail("DownloadFailed", "the service answers with status " + std::to_string(response.statusCode));
    }
    const std::string type = response.GetContentType();
    if (type != "image/jpeg" && type != "image/png") {
        return NoThumbnail("NotAPicture", "the service answers with no JPEG or PNG picture");
    }
    std::error_code error;
    if (Store(orvcore::PathFromUTF8(path), response.body, error)) {
        return {path, nullptr};
    }
    const auto failure = orvstorage::WriteFailure(error, orvstorage::ZipAction::Unpack, {}, {});
    return NoThumbnail(std::string(NameOf(failure.error)), failure.Reason());
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
        std::error_code ignored; // the caller looks whether it is there
        Store(path, response->body, ignored);
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
    return GetThumbnail(entry, cancel).path;
}

Thumbnail StockSource::GetThumbnail(const boost::shared_ptr<CapsuleEntry>& entry,
                                    const boost::shared_ptr<CheckCancel>& cancel) const
{
    const auto stock = boost::dynamic_pointer_cast<StockCapsuleEntry>(entry);
    const UTF8String path = stock ? GetTempStockAssetThumbPath(stock->stockID) : UTF8String();
    if (!stock || (!path.empty() && orvcore::Exists(orvcore::PathFromUTF8(path)))) {
        return {path, nullptr};
    }
    if (path.empty()) {
        return NoThumbnail("WriteFailed", "there is no working folder");
    }
    const auto isAborted = [cancel] { return cancel && cancel->GetAbort(); };
    if (isAborted()) {
        return {};
    }
    orvappsupport::TransferOptions options;
    options.maxBytes = kMaxPreviewBytes;
    options.progress = [isAborted](auto, auto) { return !isAborted(); };
    const auto response = orvappsupport::FetchResponseForURL(stock->thumbnailURL, options);
    if (!response) {
        return isAborted() ? Thumbnail() : NoThumbnail("DownloadFailed", "the service gives no whole answer");
    }
    return StoreThumbnail(*response, path);
}

} // namespace orvcapsule
