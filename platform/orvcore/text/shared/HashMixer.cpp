#include <orvcore/text/Strings.h>
#include <orvcore/text/shared/HashMixer.h>
#include <orvcore/text/shared/LittleEndian.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>

namespace orvcore {

namespace {

Guid ToGuid(const XXH128_hash_t& hash)
{
    // High byte first on every machine: names of files are made of it.
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, hash);
    Guid guid;
    static_assert(sizeof canonical.digest == sizeof guid.bytes);
    std::memcpy(guid.bytes.data(), canonical.digest, sizeof canonical.digest);
    return guid;
}

} // namespace

struct HashMixer::State {
    XXH3_state_t xxh3;
};

HashMixer::HashMixer()
    : state_(std::make_unique<State>())
{
    // XXH3 gives the same results in all releases from 0.8 on: names of files that stay from one start to the next rely
    // on it.
    XXH3_INITSTATE(&state_->xxh3);
    XXH3_128bits_reset(&state_->xxh3);
}

HashMixer::HashMixer(HashMixer&&) noexcept = default;
HashMixer& HashMixer::operator=(HashMixer&&) noexcept = default;
HashMixer::~HashMixer() = default;

HashMixer& HashMixer::AddBytes(const void* bytes, std::size_t size)
{
    XXH3_128bits_update(&state_->xxh3, bytes, size);
    return *this;
}

// The length comes first, or "ab" and "c" would mix to the same as "a" and "bc".
HashMixer& HashMixer::Add(std::string_view narrow)
{
    return Add(std::uint64_t{narrow.size()}).AddBytes(narrow.data(), narrow.size());
}

HashMixer& HashMixer::Add(std::u8string_view text)
{
    return Add(AsNarrow(text));
}

HashMixer& HashMixer::Add(std::u16string_view text)
{
    Add(std::uint64_t{text.size()});
    for (const char16_t unit : text) {
        unsigned char bytes[sizeof unit];
        StoreLittleEndian(unit, bytes, sizeof bytes);
        AddBytes(bytes, sizeof bytes);
    }
    return *this;
}

HashMixer& HashMixer::Add(std::uint64_t value)
{
    unsigned char bytes[sizeof value];
    StoreLittleEndian(value, bytes, sizeof bytes);
    return AddBytes(bytes, sizeof bytes);
}

Guid HashMixer::GetResult() const
{
    return ToGuid(XXH3_128bits_digest(&state_->xxh3));
}

Guid HashMixer::Of(std::string_view bytes)
{
    return ToGuid(XXH3_128bits(bytes.data(), bytes.size()));
}

} // namespace orvcore
