#include <orvcore/json/JSONErrors.h>

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
