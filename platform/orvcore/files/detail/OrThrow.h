#pragma once

#include <filesystem>
#include <system_error>
#include <type_traits>

namespace orvcore::detail {

/// The throwing form of an operation, made of the other one: `act` takes the error code, and what it returns is
/// returned. `what` says what could not be done at `path`.
template <class Act>
auto OrThrow(const char* what, const std::filesystem::path& path, const Act& act)
{
    std::error_code error;
    const auto check = [&] {
        if (error) {
            throw std::filesystem::filesystem_error(what, path, error);
        }
    };
    if constexpr (std::is_void_v<decltype(act(error))>) {
        act(error);
        check();
    } else {
        auto result = act(error);
        check();
        return result;
    }
}

} // namespace orvcore::detail
