#pragma once

#include <orvcore/json/JSONErrors.h>
#include <orvcore/json/JSONSink.h>

#include <memory>

namespace orvcore::serialization {

/// Writes JSON text: compact by default, or indented by two spaces per level. Not thread-safe.
/// A number that is not finite raises `json_write_exception`, which names the key; so does a raw value that is not
/// JSON, or would lie deeper than `kMaxJSONDepth`, where no reader would take it.
class ORVPLATFORM_API JSONTextWriter final : public JSONSink {
public:
    /// @param expected about how many bytes come: what is foreseen is not moved while the text grows
    explicit JSONTextWriter(bool formatted = false, std::size_t expected = 0);
    ~JSONTextWriter() override;

    void BeginObject() override;
    void EndObject() override;
    void BeginArray() override;
    void EndArray() override;
    void Key(std::string_view key) override;
    void PlainKey(std::string_view key) override;
    std::string_view LastKey() const noexcept override
    {
        return lastKey_;
    }
    std::size_t Depth() const noexcept override
    {
        return depth_;
    }
    void Null() override;
    void Bool(bool value) override;
    void Int(std::int64_t value) override;
    void UInt(std::uint64_t value) override;
    void Double(double value) override;
    void String(std::string_view text) override;
    void String(std::u16string_view text) override;
    void Raw(std::string_view json) override;
    std::unique_ptr<JSONSink> NewPart() const override;
    void AddPart(JSONSink& part) override;

    /// Hands the text over and leaves the writer empty.
    UTF8String Take();

private:
    void BeforeValue()
    {
        if (!afterKey_) {
            if (needComma_) {
                Put(u8',');
            }
            if (formatted_ && depth_ > 0) {
                NewLine();
            }
        }
        afterKey_ = false;
        needComma_ = true;
    }
    void Begin(char8_t bracket);
    void End(char8_t bracket);
    void NewLine();
    void AfterKey(std::string_view key)
    {
        lastKey_ = key;
        afterKey_ = true;
        if (formatted_) {
            Put(u8' ');
        }
    }
    void Quote(std::string_view text);
    template <class Number>
    void PutNumber(Number value);

    // Room for `bytes` more at the end.
    char8_t* Reserve(std::size_t bytes)
    {
        if (text_.size() - size_ < bytes) {
            Grow(bytes);
        }
        return text_.data() + size_;
    }
    void Grow(std::size_t bytes);
    void Put(char8_t byte)
    {
        *Reserve(1) = byte;
        ++size_;
    }
    void Put(std::string_view bytes);

    // The text is the first `size_` bytes, the rest is room: appending each piece through the string's own calls takes
    // half as long again.
    UTF8String text_;
    std::size_t size_ = 0;
    std::size_t depth_ = 0;
    bool formatted_;
    bool needComma_ = false;
    bool afterKey_ = false;
    std::string_view lastKey_;
};

} // namespace orvcore::serialization
