#pragma once

#include <orvcore/text/Guid.h>

#include <cstddef>
#include <memory>

namespace orvcore {

/// A 128-bit hash of pieces fed one after another. The same pieces in the same order give the same result on every
/// system and in every version, so it may name files that outlive the process; it is no protection against forgery.
/// One thread at a time.
class ORVPLATFORM_API HashMixer {
public:
    HashMixer();
    HashMixer(HashMixer&&) noexcept;
    HashMixer& operator=(HashMixer&&) noexcept;
    ~HashMixer();

    /// Bytes as they are: feeding them in two parts is the same as feeding them in one.
    HashMixer& AddBytes(const void* bytes, std::size_t size);

    /// @name Values
    /// Each text is fed with its length, so that "ab" then "c" differs from "a" then "bc"; UTF-16 as two bytes a code
    /// unit and numbers as eight, low byte first.
    /// @{
    HashMixer& Add(std::string_view narrow);
    HashMixer& Add(std::u8string_view text);
    HashMixer& Add(std::u16string_view text);
    HashMixer& Add(std::uint64_t value);
    /// @}

    /// The hash of all that was fed so far; feeding may go on.
    Guid GetResult() const;

    /// The hash of one piece, as AddBytes alone gives it, in a fraction of the time.
    static Guid Of(std::string_view bytes);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace orvcore
