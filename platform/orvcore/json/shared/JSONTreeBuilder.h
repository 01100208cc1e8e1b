#pragma once

#include <orvcore/json/JSON.h>
#include <orvcore/json/JSONSink.h>

#include <vector>

namespace orvcore::serialization {

/// Builds a value tree from what is written to it. A number that is not finite raises `json_write_exception`, which
/// names the key. Not thread-safe.
class ORVPLATFORM_API JSONTreeBuilder final : public JSONSink {
public:
    JSONTreeBuilder();
    ~JSONTreeBuilder() override;

    void BeginObject() override;
    void EndObject() override;
    void BeginArray() override;
    void EndArray() override;
    void Key(std::string_view key) override;
    std::string_view LastKey() const noexcept override
    {
        return AsNarrow(key_);
    }
    std::size_t Depth() const noexcept override
    {
        return open_.size();
    }
    void Null() override;
    void Bool(bool value) override;
    void Int(std::int64_t value) override;
    void UInt(std::uint64_t value) override;
    void Double(double value) override;
    void String(std::string_view text) override;
    void String(std::u16string_view text) override;
    void Raw(std::string_view json) override;
    void RawElements(std::string_view jsonArray) override;

    /// The finished tree; nothing when nothing was written.
    Variant Take();

private:
    Variant& Place(Variant value);

    Variant root_;
    std::vector<Variant*> open_;
    UTF8String key_;
};

} // namespace orvcore::serialization
