#pragma once

#include <orvcore/json/JSONOutline.h>

#include <map>
#include <string>
#include <string_view>
#include <tuple>

namespace orvcore::serialization {

/// A JSON text that is edited in place: every edit changes the bytes of one value and leaves all others alone, white
/// space, the digits of numbers, the order of keys and unknown keys included. New members and elements take the layout
/// of their neighbours. Used by one thread at a time.
///
/// Edits are collected, and made together when `Root` or `Text` is next called. Until then outlines and `TextOf` are
/// those of the text before. So edits of many values take one pass over the text when all use one outline, and one pass
/// each when `Root` is called before each. Of edits of one value in a pass the last counts, and one inside a value that
/// is replaced is lost with it. The pass invalidates all outlines.
///
/// What is put in must be one whole JSON value. When edits leave no text that can be read, one beyond the limits of
/// `JSONParse` for instance, the pass throws `json_outline_exception`; the object is of no use after that.
class ORVPLATFORM_API JSONSplice {
public:
    /// @throws json_outline_exception  when the text is not JSON; see ReadOutline for what it does not look at
    explicit JSONSplice(std::string text);

    /// The text with all edits. @throws json_outline_exception
    const std::string& Text() const
    {
        MakeEdits();
        return text_;
    }
    /// The outline of the text with all edits. @throws json_outline_exception
    const JSONOutline& Root() const
    {
        MakeEdits();
        return root_;
    }
    /// The bytes of a value, without the edits that are still to be made.
    std::string_view TextOf(const JSONOutline& value) const
    {
        return std::string_view(text_).substr(value.begin, value.end - value.begin);
    }

    /// Puts `json`, one whole value, in the place of `value`.
    void Replace(const JSONOutline& value, std::string_view json);
    /// Replaces the value of a member, of those with one key the last. A member that is new goes in front of the first
    /// with a greater key where the keys ascend, as writers put them, and to the end where they do not. New members of
    /// one pass that go to one place stand there by their keys.
    void SetMember(const JSONOutline& object, std::string_view key, std::string_view json);
    /// Inserts an element before the one at `index`, behind those that the same pass inserts there; at the end when
    /// there are no more.
    void InsertElement(const JSONOutline& array, std::size_t index, std::string_view json);

private:
    // The bytes that an edit replaces, none of an insertion, and a new member's key.
    struct Place {
        std::size_t begin;
        std::size_t end;
        std::string key;

        bool operator<(const Place& other) const
        {
            return std::tie(begin, end, key) < std::tie(other.begin, other.end, other.key);
        }
    };
    struct Edit {
        std::string text;
        bool intoEmpty; // between brackets that hold nothing, where only a second insertion needs a comma
    };
    void PutOnly(Place place, Edit edit);
    void MakeEdits() const;

    mutable std::string text_;
    mutable JSONOutline root_;
    mutable std::multimap<Place, Edit> edits_; // new elements of one place stay in the order of the calls
};

/// @name Values as JSON text
/// Ill-formed UTF-8 becomes U+FFFD. @throws json_write_exception  for a number that is not finite
/// @{
ORVPLATFORM_API std::string ToJSON(std::string_view text);
ORVPLATFORM_API std::string ToJSON(double number);
/// @}

} // namespace orvcore::serialization
