#pragma once

#include <string>
#include <vector>

namespace bench {

/// One made-up template: where it lies, and the texts that find it (its name and four tags), in UTF-8.
struct Template {
    std::u8string path;
    std::vector<std::u8string> texts;
};

/// `count` templates in ten languages; the same for the same count.
std::vector<Template> MakeTemplates(std::size_t count);

} // namespace bench
