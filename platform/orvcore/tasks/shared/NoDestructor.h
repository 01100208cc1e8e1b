#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace orvcore {

/// Holds one object that is made with it and never destroyed. For static objects that worker threads use: workers may
/// still run while the process exits, when the static objects with destructors are destroyed one after the other. What
/// the object owns goes with the process. Its constructor may throw; a function's static is then made at the next call.
template <class T>
class NoDestructor {
public:
    template <class... Arguments>
    explicit NoDestructor(Arguments&&... arguments)
    {
        ::new (static_cast<void*>(&storage_)) T(std::forward<Arguments>(arguments)...);
    }
    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;

    T& operator*() noexcept
    {
        return *std::launder(reinterpret_cast<T*>(&storage_));
    }
    T* operator->() noexcept
    {
        return &**this;
    }

private:
    alignas(T) std::byte storage_[sizeof(T)];
};

} // namespace orvcore
