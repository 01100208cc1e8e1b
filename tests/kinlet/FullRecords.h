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

    kinlet::SourceInfo SourceInfo()
    {
        kinlet::SourceInfo r;
        r.parentProjectFile = u8"C:\\Users\\author\\" + orvcore::ToUTF8(Text());
        Fill(r.name, r.mediaProducerDescription, r.teamProjectName, r.appSpecificSourceInfo, r.contentCredentialsInfo);
        Fill(r.id, r.initialContentState, r.duration, r.currentTime, r.workInPoint, r.workOutPoint, r.startTime,
             r.inPoint, r.outPoint, r.frameRate, r.audioSampleRate);
        r.pixelAspectRatio = {Draw<std::uint32_t>(), Draw<std::uint32_t>()};
        r.alphaChannelType = static_cast<kinlet::AlphaChannelType>(Draw<std::int64_t>());
        r.fieldType = static_cast<kinlet::FieldType>(Draw<std::int64_t>());
        r.nativeFieldType = static_cast<kinlet::FieldType>(Draw<std::int64_t>());
        r.frameSize = {{Draw<std::int32_t>(), Draw<std::int32_t>()}, {Draw<std::int32_t>(), Draw<std::int32_t>()}};
        r.pixelFormats = {{Draw<std::uint64_t>(), Draw<std::uint64_t>()}, {}, {1, 2}};
        r.audioChannelLayout = {{Draw<std::uint64_t>()}, {100}};
        Fill(r.hasAudio, r.hasVideo, r.isDropFrame, r.isXMPWritable, r.isMedia, r.supportsVideoRenderingSessions,
             r.hasFrozenUnstretchableRegions, r.colorAwareEffectsEnabled, r.enableLogColorManagement);
        Fill(r.alphaMatteColorRed, r.alphaMatteColorGreen, r.alphaMatteColorBlue);
        r.capsuleParams = CapsuleParams();
        Fill(r.assetRequest.assetInfo.productionIdentifier, r.assetRequest.assetInfo.productionRevision,
             r.assetRequest.assetInfo.assetIdentifier);
        r.assetRequest.serverConnection = Server();
        Fill(r.productionRequest.productionInfo.productionIdentifier, r.productionRequest.productionInfo.revision,
             r.productionRequest.productionInfo.displayName, r.productionRequest.createNewProduction);
        r.productionRequest.serverConnection = Server();
        r.colorSpace = ColorSpace();
        Fill(r.graphicsWhiteLuminance, r.sourceBitrate, r.missingAssets.offlineMasks);
        r.missingAssets.fonts = {{Text(), Text(), Text(), Text(), Draw<std::int64_t>()}, {}};
        r.missingAssets.plugins = {{Text()}, {Text()}};
        r.missingAssets.footage = {{u8"/media/" + orvcore::ToUTF8(Text())}};
        return r;
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

    kinlet::ColorSpace ColorSpace()
    {
        kinlet::ColorSpace r;
        r.baseColorProfile.name = Text();
        r.baseColorProfile.data = {0, 255, Draw<std::uint8_t>(), 127};
        Fill(r.baseProfileType, r.metadata.version, r.metadata.peakLuminance);
        r.linearized = true;
        r.metadata.dataRangeInfoValid = true;
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
    void Set(orvcore::Guid& member)
    {
        for (std::uint8_t& byte : member.bytes) {
            byte = Draw<std::uint8_t>();
        }
    }
    void Set(kinlet::Time& member)
    {
        Fill(member.value, member.scale);
    }
    void Set(kinlet::FrameRate& member)
    {
        Fill(member.ticksPerFrame);
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
    kinlet::ServerConnection Server()
    {
        kinlet::ServerConnection r{Text(), Text(), Text(), Text(), Text(), {}};
        r.headers = {{u"X-Same", Text()}, {u"X-Same", Text()}, {Text(), u""}};
        return r;
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
