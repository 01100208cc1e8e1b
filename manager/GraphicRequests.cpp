#include <manager/detail/Delivery.h>
#include <manager/detail/Listing.h>
#include <manager/detail/ManagerState.h>
#include <manager/detail/StockPaging.h>
#include <manager/detail/TaskEnd.h>

#include <orvcore/files/Paths.h>

// A request goes through three threads. On the main thread its token is renewed, which aborts the request of the same
// kind before it, and the callbacks are copied; so what a host sets later belongs to later requests. On the executor
// the work is done under that token. Back on the main thread the delivery looks at the token once more and is dropped
// when a newer request has come meanwhile.

namespace orvcapsule {

namespace {

void SearchIndex(const detail::ManagerState& state, const std::vector<orvcore::UTF16String>& terms,
                 const detail::TokenPtr& token, const std::shared_ptr<GraphicSourceManager::TextSetCallback>& callback)
{
    if (token->GetAbort()) { // a newer search replaced this one while it waited behind a listing
        return;
    }
    std::set<orvcore::UTF8String> names;
    for (const auto& source : state.CopyLocalSources()) {
        std::set<orvcore::UTF16String> matches;
        try {
            source->SearchDB(terms, matches);
        } catch (...) {
            detail::ReportCurrentException();
            continue; // a source that fails contributes nothing
        }
        for (const orvcore::UTF16String& match : matches) {
            // The two orders are nearly the same, and with a right hint the set finds the place at once.
            names.insert(names.end(), orvcore::PathTextToUTF8(match));
        }
    }
    detail::Deliver(token, callback, [names = std::move(names)](GraphicSourceManager::TextSetCallback& call) mutable {
        call(std::move(names));
    });
}

} // namespace

void GraphicSourceManager::RequestGraphics(const std::vector<orvcore::UTF16String>& terms)
{
    const bool hasIndex = state_->HasIndex();
    // In stock mode a search and the listing of everything are the same question with and without terms, so the newer
    // one of either replaces the other: they share a token.
    TokenPtr& token = hasIndex ? state_->tokens.indexSearch : state_->tokens.graphics;
    detail::RenewToken(token);
    if (hasIndex) {
        state_->Post(token, [&state = *state_, terms, token, callback = state_->CopyCallbacks().databaseRequest] {
            SearchIndex(state, terms, token, callback);
        });
    } else {
        detail::PostStockSearch(*state_, terms, token);
    }
}

void GraphicSourceManager::RequestDefaultGraphicSet(const std::vector<GraphicSourceState>& states, bool showProgress)
{
    const bool hasIndex = state_->HasIndex();
    TokenPtr& token = hasIndex ? state_->tokens.defaultSet : state_->tokens.graphics;
    detail::RenewToken(token);
    if (hasIndex) {
        detail::PostListing(*state_, states, showProgress, token);
    } else {
        detail::PostStockSearch(*state_, {}, token);
    }
}

void GraphicSourceManager::CancelGraphicRequests()
{
    for (TokenPtr* token : {&state_->tokens.graphics, &state_->tokens.indexSearch}) {
        detail::AbortToken(*token);
        token->reset();
    }
}

} // namespace orvcapsule
