#include <orvcore/json/JSONErrors.h>

// The destructors stand here and not in the header, so that each class has its type information in this library alone:
// an exception that is thrown here is then of the very type that a program or another library catches.

namespace orvcore::serialization {

missing_key_exception::missing_key_exception(std::string key)
    : std::runtime_error("the key \"" + key + "\" is missing or holds no usable value")
    , key_(std::move(key))
{
}

missing_key_exception::~missing_key_exception() = default;

const std::string& missing_key_exception::GetKey() const noexcept
{
    return key_;
}

json_parse_exception::json_parse_exception(const std::string& reason)
    : std::runtime_error(reason)
{
}

json_parse_exception::~json_parse_exception() = default;

json_write_exception::json_write_exception(const std::string& reason)
    : std::runtime_error(reason)
{
}

json_write_exception::~json_write_exception() = default;

} // namespace orvcore::serialization
