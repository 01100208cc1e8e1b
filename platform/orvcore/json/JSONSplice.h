#pragma once

#include <orvcore/json/JSONOutline.h>

#include <string>
#include <string_view>

namespace orvcore::serialization {

/// A JSON text that is edited in place: every edit changes the bytes of one value and leaves all others alone, white
/// space, the digits of numbers, the order of keys and unknown keys included. New members and elements take the layout
/// of their neighbours. An edit invalidates the outlines taken before. Used by one thread at a time.
///
/// What is put in must be one whole JSON value. An edit that leaves no text that can be read, one beyond the limits of
/// `JSONParse` for instance, throws `json_outline_exception`; the object is of no use after that.
class ORVPLATFORM_API JSONSplice {
public:
    /// @throws json_outline_exception  when the text is not JSON; see ReadOutline for what it does not look at
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
    /// Replaces the value of a member, of those with one key the last. A member that is new goes in front of the first
    /// with a greater key where the keys ascend, as writers put them, and to the end where they do not.
    void SetMember(const JSONOutline& object, std::string_view key, std::string_view json);
    /// Inserts an element before the one at `index`; at the end when there are no more.
    void InsertElement(const JSONOutline& array, std::size_t index, std::string_view json);

private:
    void Put(std::size_t begin, std::size_t end, const std::string& replacement);

    std::string text_;
    JSONOutline root_;
};

/// @name Values as JSON text
/// Ill-formed UTF-8 becomes U+FFFD. @throws json_write_exception  for a number that is not finite
/// @{
ORVPLATFORM_API std::string ToJSON(std::string_view text);
ORVPLATFORM_API std::string ToJSON(double number);
/// @}

} // namespace orvcore::serialization
