// What a list of templates reads of a definition, beside what the reader of whole templates makes of the same text.
#include <capsule/Serialization.h>
#include <capsule/shared/ListedCapsule.h>

#include <orvcore/files/Files.h>
#include <orvcore/json/JSONOutline.h>

#include <tests/support/Language.h>
#include <tests/support/ShownDefinition.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace orvcapsule;
using orvcore::serialization::JSONOutline;
using orvtest::ShownDefinition;

UTF8String Whole(const std::string& text)
{
    return ShownDefinition([&] { return serialization::CapsuleFromJson(UTF8String(orvcore::AsUTF8(text))); });
}

UTF8String Listed(const std::string& text)
{
    return ShownDefinition([&] { return serialization::ListedCapsuleFromJson(UTF8String(orvcore::AsUTF8(text))); });
}

// Visits `text` with each value replaced by one of each kind, and with each key misspelt.
void VisitChanges(const std::string& text, const JSONOutline& at, const std::function<void(const std::string&)>& visit)
{
    for (const JSONOutline& child : at.children) {
        for (const char* other : {"null", "true", "-1", "1.5", R"("de_DE")", "[1]", "{}"}) {
            visit(text.substr(0, child.begin) + other + text.substr(child.end));
        }
        if (!child.key.empty()) {
            visit(text.substr(0, child.keyBegin + 1) + '_' + text.substr(child.keyBegin + 1));
        }
        VisitChanges(text, child, visit);
    }
}

TEST(ListedCapsule, IsRefusedOrReadLikeTheWholeWhateverIsChanged)
{
    const std::string example = orvcore::ReadWholeFile(ORV_DOCS_DIR "/examples/definition.json");
    std::size_t refused = 0;
    std::size_t read = 0;
    VisitChanges(example, orvcore::serialization::ReadOutline(example), [&](const std::string& text) {
        const UTF8String whole = Whole(text);
        EXPECT_EQ(Listed(text), whole) << text;
        ++(whole.starts_with(u8'{') ? read : refused);
    });
    EXPECT_GT(read, 1000U);
    EXPECT_GT(refused, 1000U);
}

TEST(ListedCapsule, KeepsTheCompositionOfTheLanguageAndNoControls)
{
    const std::string example = orvcore::ReadWholeFile(ORV_DOCS_DIR "/examples/definition.json");
    const auto whole = serialization::CapsuleFromJson(UTF8String(orvcore::AsUTF8(example)));
    ASSERT_EQ(whole->GetSourceInfoLocalized().size(), 2U);
    for (const char* language : {"de_DE", "en_US", "fr_FR"}) {
        const orvtest::Language set(language);
        const auto listed = serialization::ListedCapsuleFromJson(UTF8String(orvcore::AsUTF8(example)));
        EXPECT_EQ(listed->GetSourceInfo(), whole->GetSourceInfo()) << language;
        EXPECT_EQ(listed->GetSourceInfoLocalized().size(), 1U);
        EXPECT_TRUE(listed->GetControls().empty());
    }
}

} // namespace
