#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zelt {

/// The values of a definition that `set` and `new` change. What is not given stays.
struct EditOptions {
    std::optional<std::string> name;
    std::string locale; ///< of the name and of texts; empty: the language
    std::optional<std::string> description;
    std::vector<std::string> tags;     ///< empty: not asked
    std::vector<std::string> texts;    ///< "LOCALE:KEY=TEXT"
    std::vector<std::string> controls; ///< "ID=VALUE"
    bool clearTags = false;
    bool newID = false;
    bool force = false; ///< values outside a control's range are taken
};

} // namespace zelt
