#pragma once

#include <capsule/UIString.h>

#include <memory>
#include <string>
#include <variant>

namespace orvcapsule {

/// A control cannot be written: its value is not of its kind's alternative.
class ORVCAPSULE_API foreign_value_exception : public std::bad_variant_access {
public:
    explicit foreign_value_exception(const UTF16String& controlID);
    foreign_value_exception(const foreign_value_exception&) noexcept;
    foreign_value_exception& operator=(const foreign_value_exception&) noexcept;
    ~foreign_value_exception() override;
    /// Names the control; UTF-8.
    const char* what() const noexcept override;

private:
    std::shared_ptr<const std::string> message_;
};

} // namespace orvcapsule
