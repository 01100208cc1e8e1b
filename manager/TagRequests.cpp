#include <manager/detail/Delivery.h>
#include <manager/detail/ManagerState.h>
#include <sources/SearchIndex.h>

namespace orvcapsule {

namespace {

void GetSimilarTags(const detail::ManagerState& state, const orvcore::UTF16String& text, const detail::TokenPtr& token)
{
    std::set<orvcore::UTF16String> found;
    if (state.HasIndex() && !token->GetAbort()) {
        GetTags(text, found);
    }
    // Taken here and not at the request, unlike a search's: a callback that is set meanwhile gets these tags.
    detail::Deliver(token, state.CopyCallbacks().databaseTagRequest,
                    [found = std::move(found)](GraphicSourceManager::TextSetCallback& call) {
                        std::set<orvcore::UTF8String> tags;
                        for (const orvcore::UTF16String& tag : found) {
                            tags.insert(orvcore::ToUTF8(tag));
                        }
                        call(std::move(tags));
                    });
}

} // namespace

void GraphicSourceManager::RequestSimilarTags(const orvcore::UTF16String& text)
{
    TokenPtr& token = state_->tokens.similarTag;
    detail::RenewToken(token);
    state_->Post(token, [&state = *state_, text, token] { GetSimilarTags(state, text, token); });
}

void GraphicSourceManager::CancelSimilarTagRequests()
{
    detail::AbortToken(state_->tokens.similarTag);
    state_->tokens.similarTag.reset();
}

} // namespace orvcapsule
