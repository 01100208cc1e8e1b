#pragma once

#include <tools/stock/detail/Catalogue.h>

#include <orvcore/files/TemporaryFolder.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string_view>

namespace orvtools::stock::detail {

/// A template's picture or video in a file.
struct Preview {
    std::filesystem::path file; ///< empty: the template has none
    std::string_view type;      ///< "image/png"
    std::uint32_t width = 0;    ///< in pixels; 0: not known
    std::uint32_t height = 0;
};

/// Takes previews out of packages when they are asked for first, into a folder that goes with this object. Any thread
/// may use it.
class Previews {
public:
    Previews();

    Preview Poster(const Template& content);
    Preview Video(const Template& content);

private:
    std::mutex mutex_;
    const orvcore::TemporaryFolder folder_;
    std::map<std::uint32_t, Preview> posters_; // by the template's number
    std::map<std::uint32_t, Preview> videos_;
};

} // namespace orvtools::stock::detail
