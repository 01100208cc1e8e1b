#pragma once

#include <kinlet/detail/RecordTables.h>

#include <gtest/gtest.h>

#include <random>

// Records with a value of its own in every field, drawn from a seeded generator: a field that is not written, or not
// read, shows as a difference.
class RecordFiller {
public:
    explicit RecordFiller(unsigned seed)
        : generator_(seed)
    {
    }

    kinlet::CapsuleParams CapsuleParams()
    {
        kinlet::CapsuleParams r;
        r.capsuleID = Text();
        r.params = {{Text(), true, {}},
                    {Text(), Draw<std::int64_t>(), {{"hint", R"("x")"}}},
                    {Text(), 50.0, {}},
                    {Text(), Text(), {}},
                    {Text(), std::vector<double>{0.5, -0.0, 1e300}, {}}};
        r.unknownKeys = {{"aaa", R"({"b":[1,2.5,null]})"}, {"zzz", "18446744073709551615"}};
        return r;
    }

    kinlet::TextEditInfo TextEditInfo()
    {
        kinlet::TextEditInfo r;
        r.text = Text();
        r.overrideType = kinlet::ESourceTextOverrideType::kTextAndFont;
        auto& font = r.fontEditInfo;
        Fill(font.fontEditable, font.sizeEditable, font.styleEditable, font.fontName, font.fontSize, font.bold,
             font.italic, font.allCaps, font.smallCaps);
        font.unknownKeys = {{"kerning", "[1.0]"}};
        r.styleRuns = {{Draw<std::uint32_t>(), "Serif-Bold", 12.5, {0.1, 0.2, 0.3, 0.4}, {{"t", "true"}}}, {}};
        r.unknownKeys = {{"language", R"("de")"}};
        return r;
    }

private:
    template <class... Members>
    void Fill(Members&... members)
    {
        (Set(members), ...);
    }
    template <class Number>
    requires std::is_integral_v<Number>
    void Set(Number& member)
    {
        member = Draw<Number>();
    }
    void Set(bool& member)
    {
        member = generator_() % 2 == 0;
    }
    void Set(double& member)
    {
        member = std::uniform_real_distribution<double>(-1e6, 1e6)(generator_);
    }
    void Set(orvcore::UTF16String& member)
    {
        member = Text();
    }
    void Set(orvcore::UTF8String& member)
    {
        member = orvcore::ToUTF8(Text());
    }
    void Set(std::string& member)
    {
        member = orvcore::ToNarrow(Text());
    }
    // A text that needs escaping, two, three and four UTF-8 bytes a character, and a number of its own.
    orvcore::UTF16String Text()
    {
        return orvcore::ToUTF16(u8"\"é字😀\n" + orvcore::ToUTF8(std::to_string(generator_())));
    }
    template <class Number>
    Number Draw()
    {
        return static_cast<Number>(std::uniform_int_distribution<std::uint64_t>()(generator_));
    }
    std::mt19937_64 generator_;
};

// The value tree of any record that has a table.
template <class Record>
orvcore::serialization::Variant TreeOf(const Record& record)
{
    return orvcore::serialization::detail::ToTree(record);
}

// Fills any record that has a table; false when the tree is of no usable kind.
template <class Record>
bool FromTree(const orvcore::serialization::Variant& tree, Record& out)
{
    return orvcore::serialization::detail::FromTree(tree, out);
}

// The record after a trip through JSON text.
template <class Record>
Record ThroughText(const Record& record)
{
    const auto text = orvcore::serialization::GetJSONUTF8String(TreeOf(record), false);
    Record result;
    EXPECT_TRUE(FromTree(orvcore::serialization::JSONParse(text), result));
    return result;
}

// The record that a JSON text holds.
template <class Record>
Record FromText(std::u8string_view text)
{
    Record result;
    EXPECT_TRUE(FromTree(orvcore::serialization::JSONParse(text), result));
    return result;
}

template <class Record>
std::string ToText(const Record& record)
{
    return orvcore::ToNarrow(orvcore::serialization::GetJSONUTF8String(TreeOf(record), false));
}

// The key that reading `text` reports as missing; "" when it reads.
template <class Record>
std::string MissingKey(const orvcore::serialization::Variant& tree)
{
    try {
        Record result;
        return FromTree(tree, result) ? "" : "(no object)";
    } catch (const orvcore::serialization::missing_key_exception& error) {
        return error.GetKey();
    }
}
