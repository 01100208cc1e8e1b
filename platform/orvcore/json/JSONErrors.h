#pragma once

#include <orvcore/text/Strings.h>

#include <stdexcept>
#include <string>

namespace orvcore::serialization {

/// A required key is absent, or a key that must hold a usable value holds none.
class ORVPLATFORM_API missing_key_exception : public std::runtime_error {
public:
    explicit missing_key_exception(std::string key);
    ~missing_key_exception() override;
    /// The name of the key, UTF-8.
    const std::string& GetKey() const noexcept;

private:
    std::string key_;
};

/// A text is not JSON as this library reads it; `what()` says why.
class ORVPLATFORM_API json_parse_exception : public std::runtime_error {
public:
    explicit json_parse_exception(const std::string& reason);
    ~json_parse_exception() override;
};

/// A value has no JSON form (a number that is not finite, a tree node of a foreign type); `what()` names it.
class ORVPLATFORM_API json_write_exception : public std::runtime_error {
public:
    explicit json_write_exception(const std::string& reason);
    ~json_write_exception() override;
};

} // namespace orvcore::serialization
