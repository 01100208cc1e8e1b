#include <orvcore/text/Guid.h>

#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/shared/ASCII.h>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid.hpp>

#include <algorithm>
#include <mutex>

namespace orvcore {

namespace {

class Generator {
public:
    boost::uuids::uuid Generate()
    {
        const std::lock_guard lock(mutex_);
        return generate_();
    }

private:
    std::mutex mutex_;
    boost::uuids::random_generator generate_;
};

constexpr std::string_view kDigits = "0123456789abcdef";

constexpr bool IsDashPosition(std::size_t at)
{
    return at == 8 || at == 13 || at == 18 || at == 23;
}

int DigitValue(char c)
{
    if (IsASCIIDigit(c)) {
        return c - '0';
    }
    const char lower = ToASCIILower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

Guid Guid::Create()
{
    // One for the process, since a new one asks the system for its randomness again, and not one a thread: when a
    // thread ends, MinGW's compiler frees the memory of such objects before it destroys them.
    static NoDestructor<Generator> generator;
    const boost::uuids::uuid made = generator->Generate();
    Guid guid;
    std::copy(made.begin(), made.end(), guid.bytes.begin());
    return guid;
}

std::optional<Guid> Guid::FromString(std::string_view text)
{
    // In braces, as Windows programs write it.
    if (text.size() == 38 && text.front() == '{' && text.back() == '}') {
        text = text.substr(1, 36);
    }
    if (text.size() != 36) {
        return std::nullopt;
    }
    Guid guid;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsDashPosition(i)) {
            if (text[i] != '-') {
                return std::nullopt;
            }
            continue;
        }
        const int value = DigitValue(text[i]);
        if (value < 0) {
            return std::nullopt;
        }
        std::uint8_t& byte = guid.bytes[digits / 2];
        byte = static_cast<std::uint8_t>(byte * 16 + value);
        ++digits;
    }
    return guid;
}

std::string Guid::ToString() const
{
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (IsDashPosition(text.size())) {
            text.push_back('-');
        }
        text.push_back(kDigits[bytes[i] >> 4U]);
        text.push_back(kDigits[bytes[i] & 0x0FU]);
    }
    return text;
}

} // namespace orvcore
