#pragma once

#include <orvcore/json/shared/JSONDocument.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvcore::serialization {

/// A JSON text, an object with a long list under one of its keys, that is read piece by piece. At once only what stands
/// beside the list is read, and where its elements stand: a fraction of what it costs to read them.
class ORVPLATFORM_API JSONListText {
public:
    /// Under the rules of `JSONParse`, but for what lies inside of an element: there only UTF-8, quotation marks and
    /// the number of brackets are looked at. Without a list under `key` the text is read whole.
    /// @throws json_parse_exception
    JSONListText(std::string text, std::string_view key);

    /// The text as if the list were empty.
    const JSONDocument& Rest() const noexcept
    {
        return rest_;
    }
    /// How many elements the list has.
    std::size_t Count() const noexcept
    {
        return begins_.size();
    }
    /// The elements from the one with index `first` to the one before `last`, as a list; there is at least one.
    /// @throws json_parse_exception where one of them is no JSON after all
    JSONDocument Read(std::size_t first, std::size_t last) const;

private:
    void FindList(std::string_view key);
    JSONDocument ReadRest() const;

    std::string text_;
    std::size_t listBegin_ = 0; // behind the opening bracket
    std::size_t listEnd_ = 0;   // at the closing one
    std::vector<std::size_t> begins_;
    JSONDocument rest_;
};

} // namespace orvcore::serialization
