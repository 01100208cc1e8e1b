#pragma once

#include <orvcore/json/JSONOutline.h>
#include <orvcore/json/shared/JSONDocument.h>

#include <string_view>

namespace orvcapsule::detail {

/// One value of a definition's text with the place where it stands. Points into its `DefinitionText`.
/// The document and the outline are made of one text by two scanners, and both keep repeated members in the text's
/// order; so a child has the same number in both.
class PlacedValue {
public:
    using Node = orvcore::serialization::JSONNode;
    using Outline = orvcore::serialization::JSONOutline;

    PlacedValue() = default;
    PlacedValue(const Node& node, const Outline& outline)
        : node_(&node)
        , outline_(&outline)
    {
    }

    /// False: there is no such value. Nothing but this may then be asked.
    explicit operator bool() const noexcept
    {
        return node_ != nullptr;
    }
    const Node& operator*() const noexcept
    {
        return *node_;
    }
    const Node* operator->() const noexcept
    {
        return node_;
    }
    const Outline& Outlined() const noexcept
    {
        return *outline_;
    }

    /// The members or elements, in the text's order; a member that is repeated is there as often.
    std::size_t size() const noexcept
    {
        return outline_->children.size();
    }
    PlacedValue operator[](std::size_t index) const
    {
        return {node_->Children()[index], outline_->children[index]};
    }
    /// The member that readers take.
    PlacedValue Find(std::string_view key) const
    {
        const Node* found = node_->Find(key);
        return found != nullptr ? (*this)[static_cast<std::size_t>(found - node_->Children().data())] : PlacedValue();
    }
    /// The text of the value, or of its member `key`; empty when it is none.
    std::string_view Text() const noexcept
    {
        std::string_view text;
        node_->Get(text);
        return text;
    }
    std::string_view Text(std::string_view key) const
    {
        const PlacedValue member = Find(key);
        return member ? member.Text() : std::string_view();
    }
    /// The number of the member `key`; false when it holds none of this kind.
    template <class Number>
    bool Get(std::string_view key, Number& out) const
    {
        const PlacedValue member = Find(key);
        return member && member->Get(out);
    }

private:
    const Node* node_ = nullptr;
    const Outline* outline_ = nullptr;
};

/// A definition's text, read once for its values and once for their places.
class DefinitionText {
public:
    /// @throws json_parse_exception  which is a json_outline_exception where the place is known
    explicit DefinitionText(std::string_view text);

    PlacedValue Root() const
    {
        return {document_.Root(), outline_};
    }

private:
    orvcore::serialization::JSONDocument document_;
    orvcore::serialization::JSONOutline outline_;
};

} // namespace orvcapsule::detail
