#pragma once

#include <tools/zelt/editing/JSONOutline.h>

#include <string>
#include <string_view>

namespace zelt {

/// A JSON text that is edited in place: every edit changes the bytes of one value and leaves all others alone, white
/// space, the order of keys and unknown keys included. New members and elements take the layout of their neighbours.
/// An edit invalidates the outlines taken before.
class JSONSplice {
public:
    /// @throws OutlineError  when the text is not JSON
    explicit JSONSplice(std::string text);

    const std::string& Text() const noexcept
    {
        return text_;
    }
    const JSONOutline& Root() const noexcept
    {
        return root_;
    }
    /// The bytes of a value.
    std::string_view TextOf(const JSONOutline& value) const
    {
        return std::string_view(text_).substr(value.begin, value.end - value.begin);
    }

    /// Puts `json`, one whole value, in the place of `value`.
    void Replace(const JSONOutline& value, std::string_view json);
    /// Replaces the value of a member, or adds the member behind the last one.
    void SetMember(const JSONOutline& object, std::string_view key, std::string_view json);
    /// Inserts an element before the one at `index`; at the end when there are no more.
    void InsertElement(const JSONOutline& array, std::size_t index, std::string_view json);

private:
    void Put(std::size_t begin, std::size_t end, const std::string& replacement);

    std::string text_;
    JSONOutline root_;
};

/// @name Values as JSON text
/// @{
std::string ToJSON(std::string_view text);
std::string ToJSON(double number);
/// @}

} // namespace zelt
