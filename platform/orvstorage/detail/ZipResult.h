#pragma once

#include <orvstorage/ZipFailure.h>

#include <utility>
#include <variant>

namespace orvstorage::detail {

/// Why a step failed, as far as the step knows. The operation that it belongs to knows the rest: what was being done,
/// on which archive and entry.
struct ZipFault {
    ZipError error = ZipError::None;
    std::string detail = {};

    explicit operator bool() const noexcept
    {
        return error != ZipError::None;
    }
    /// Completes the operation's failure.
    /// @return false, which is what the operation returns then
    bool Tell(ZipFailure& failure) const
    {
        failure.error = error;
        failure.detail = detail;
        return false;
    }
};

/// The file system's words about something that could not be written.
ZipFault WriteFault(const std::error_code& error);

/// What a step made, or why it could not.
template <class Value>
class ZipResult {
public:
    ZipResult(Value value)
        : result_(std::move(value))
    {
    }
    ZipResult(ZipFault fault)
        : result_(std::move(fault))
    {
    }
    ZipResult(ZipError error)
        : result_(ZipFault{error})
    {
    }

    explicit operator bool() const noexcept
    {
        return std::holds_alternative<Value>(result_);
    }
    Value& operator*()
    {
        return std::get<Value>(result_);
    }
    /// To be asked when there is no value.
    const ZipFault& Fault() const
    {
        return std::get<ZipFault>(result_);
    }

private:
    std::variant<ZipFault, Value> result_;
};

} // namespace orvstorage::detail
