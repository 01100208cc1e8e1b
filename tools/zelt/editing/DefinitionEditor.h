#pragma once

#include <tools/zelt/editing/EditOptions.h>
#include <tools/zelt/editing/LocalizedTexts.h>
#include <tools/zelt/editing/TextTable.h>

#include <orvcore/json/JSONSplice.h>

#include <string>
#include <string_view>

namespace zelt {

/// Edits values of a definition document in its text: whatever is not asked for keeps its bytes, keys that this
/// library does not know included.
class DefinitionEditor {
public:
    /// @param text  a readable definition document
    explicit DefinitionEditor(std::string_view text);

    /// Makes all edits that are asked for, and reports all that cannot be made as errors of `file`.
    /// @return false when there was such an edit
    bool Apply(const EditOptions& edit, const std::string& file);

    /// Sets a text at the top, such as the description.
    void SetText(std::string_view key, std::string_view text);
    /// Replaces a list of texts at the top, such as the tags.
    void SetList(std::string_view key, const std::vector<std::string>& texts);
    /// Sets the template's name for one locale; the name that other locales show stays.
    void SetName(std::string_view text, const std::string& locale);
    /// Sets texts that VisitTexts names; the id of a text or comment alone stands for its value. Takes one
    /// pass over the document however many rows there are.
    /// @return what is wrong with the rows that are for no text, in their order
    std::vector<std::string> SetTexts(const std::vector<TextTable::Row>& rows);
    /// @param assignment  "LOCALE:KEY=TEXT" @throws UsageError
    void SetTextFrom(std::string_view assignment);
    /// Sets a control's value. @param locale  of a text @throws UsageError
    void SetControl(const std::string& id, std::string_view value, const std::string& locale, bool force);
    /// @param assignment  "ID=VALUE", where the shortest beginning that is an id counts
    void SetControl(std::string_view assignment, const std::string& locale, bool force);

    const orvcore::serialization::JSONSplice& Document() const noexcept
    {
        return splice_;
    }
    const std::string& Text() const
    {
        return splice_.Text();
    }

private:
    using Texts = std::map<std::string, std::string>; // by locale

    std::string OlderName() const;
    void SetLocalizedText(const std::string& key, const std::string& locale, std::string_view text);
    void SetLocalized(const TextPlace& place, const Texts& texts, const std::string& older);
    void SetEntry(const orvcore::serialization::JSONOutline& list, const std::string& locale, const std::string& text);
    void SetValue(const orvcore::serialization::JSONOutline& control, std::string_view input, const std::string& locale,
                  bool force);

    orvcore::serialization::JSONSplice splice_;
};

} // namespace zelt
