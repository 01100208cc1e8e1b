#pragma once

#include <orvcore/JSONErrors.h>
#include <orvcore/JSONSink.h>

namespace orvcore::serialization {

/// Writes JSON text: compact by default, or indented by two spaces a level. Not thread-safe.
/// A number that is not finite raises `json_write_exception`, which names the key.
class ORVPLATFORM_API JSONTextWriter final : public JSONSink {
public:
    explicit JSONTextWriter(bool formatted = false);
    ~JSONTextWriter() override;

    void BeginObject() override;
    void EndObject() override;
    void BeginArray() override;
    void EndArray() override;
    void Key(std::string_view key) override;
    void Null() override;
    void Bool(bool value) override;
    void Int(std::int64_t value) override;
    void UInt(std::uint64_t value) override;
    void Double(double value) override;
    void String(std::string_view text) override;
    void String(std::u16string_view text) override;
    void Raw(std::string_view json) override;
    void RawElements(std::string_view jsonArray) override;

    /// The text so far, UTF-8.
    const UTF8String& Text() const noexcept
    {
        return text_;
    }
    /// Hands the text over and leaves the writer empty.
    UTF8String Take();

private:
    void BeforeValue();
    void Begin(char8_t bracket);
    void End(char8_t bracket);
    void NewLine();
    void Quote(std::string_view text);

    UTF8String text_;
    std::size_t depth_ = 0;
    bool formatted_;
    bool needComma_ = false;
    bool afterKey_ = false;
    std::string_view lastKey_;
};

} // namespace orvcore::serialization
