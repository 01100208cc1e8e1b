#pragma once

#include <tools/stock/detail/Catalogue.h>
#include <tools/stock/detail/Previews.h>
#include <tools/stock/detail/Query.h>

#include <cstddef>
#include <string>

namespace orvtools::stock::detail {

/// What a page is made of beside what was found.
struct PageContext {
    Previews& previews;
    std::string base;      ///< what the URLs of files begin with
    bool licensed = false; ///< the client may use what costs money
    std::size_t maxRows;   ///< no more than these, whatever was asked for
};

/// One page of the answer to a search, as JSON.
std::string MakePage(const std::vector<const Asset*>& found, const Query& query, const PageContext& context);

/// The URL of one of an asset's files: "metadata", "thumbnail", "video".
std::string FileURL(const std::string& base, const Asset& asset, std::string_view file);

} // namespace orvtools::stock::detail
