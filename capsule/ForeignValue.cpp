#include <capsule/ForeignValue.h>

namespace orvcapsule {

// The text is shared because an exception is copied while it is thrown, where running out of memory would end the
// process.
foreign_value_exception::foreign_value_exception(const UTF16String& controlID)
    : message_(std::make_shared<const std::string>("the value of control \"" + orvcore::ToNarrow(controlID) +
                                                   "\" is not of its kind"))
{
}
foreign_value_exception::foreign_value_exception(const foreign_value_exception&) noexcept = default;
foreign_value_exception& foreign_value_exception::operator=(const foreign_value_exception&) noexcept = default;
foreign_value_exception::~foreign_value_exception() = default;

const char* foreign_value_exception::what() const noexcept
{
    return message_->c_str();
}

} // namespace orvcapsule
