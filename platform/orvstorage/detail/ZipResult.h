#pragma once

#include <orvstorage/ZipFailure.h>

#include <optional>
#include <utility>
#include <variant>

namespace orvstorage::detail {

/// Why a step failed, as far as the step knows. The operation that it belongs to knows the rest: what was being done,
/// on which archive and entry. A step that makes nothing returns one; without an error it succeeded.
struct ZipFault {
    ZipError error = ZipError::None;
    std::string detail = {};
    std::optional<orvcore::UTF8String> entry = {}; ///< where it is not the operation's; empty: the archive as a whole
    std::optional<ZipAction> action = {};          ///< where it is not the operation's
    std::filesystem::path folder = {};             ///< as in ZipFailure

    explicit operator bool() const noexcept
    {
        return error != ZipError::None;
    }
    /// The same fault, told of another entry.
    ZipFault At(orvcore::UTF8String name) &&
    {
        entry = std::move(name);
        return std::move(*this);
    }
    /// The failure of `operation`, which is filled in but for the error.
    ZipFailure In(ZipFailure operation) const
    {
        operation.error = error;
        operation.detail = detail;
        operation.entry = entry.value_or(operation.entry);
        operation.action = action.value_or(operation.action);
        operation.folder = folder;
        return operation;
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
    Value* operator->()
    {
        return &std::get<Value>(result_);
    }
    /// To be asked when there is no value: beside one there is no fault, and the call throws.
    const ZipFault& Fault() const
    {
        return std::get<ZipFault>(result_);
    }

private:
    std::variant<ZipFault, Value> result_;
};

} // namespace orvstorage::detail
