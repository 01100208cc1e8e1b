#include <manager/GraphicSourceManager.h>

#include <manager/detail/Delivery.h>
#include <sources/SearchIndex.h>

namespace orvcapsule {

void GraphicSourceManager::RequestSimilarTags(const orvcore::UTF16String& text)
{
    Renew(similarTagToken_);
    Post(similarTagToken_,
         [text, token = similarTagToken_](GraphicSourceManager& manager) { manager.GetSimilarTags(text, token); });
}

void GraphicSourceManager::CancelSimilarTagRequests()
{
    AbortToken(similarTagToken_);
    similarTagToken_.reset();
}

void GraphicSourceManager::GetSimilarTags(const orvcore::UTF16String& text, const TokenPtr& token) const
{
    std::set<orvcore::UTF16String> found;
    if (HasIndex() && !token->GetAbort()) {
        GetTags(text, found);
    }
    detail::Deliver(token, CopyCallbacks().databaseTagRequest, [found = std::move(found)](TextSetCallback& call) {
        std::set<orvcore::UTF8String> tags;
        for (const orvcore::UTF16String& tag : found) {
            tags.insert(orvcore::ToUTF8(tag));
        }
        call(std::move(tags));
    });
}

} // namespace orvcapsule
