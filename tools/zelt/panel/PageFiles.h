#pragma once

#include <span>
#include <string_view>

namespace zelt {

/// A file of the page as it lies in `page/`, put into the program when that is built.
struct PageFile {
    std::string_view name;
    std::string_view content;
};

/// All files of the page; the scripts come in such an order that each one's imports stand before it.
std::span<const PageFile> PageFiles() noexcept;

} // namespace zelt
