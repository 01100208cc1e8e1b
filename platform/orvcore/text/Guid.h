#pragma once

#include <orvcore/text/Strings.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvcore {

/// A 16-byte identifier. Its text form is 36 lower-case characters, "01234567-89ab-cdef-0123-456789abcdef",
/// bytes in order. A plain value; default-built it is all zeros.
struct ORVPLATFORM_API Guid {
    std::array<std::uint8_t, 16> bytes{};

    /// A new random (version 4) identifier. Thread-safe; never all zeros.
    static Guid Create();
    /// Reads the text form, either case, with or without braces; empty when `text` is anything else.
    static std::optional<Guid> FromString(std::string_view text);
    /// The text form.
    std::string ToString() const;

    bool operator==(const Guid&) const = default;
};

} // namespace orvcore
