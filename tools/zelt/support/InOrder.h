#pragma once

#include <cstddef>
#include <functional>

namespace zelt {

/// Does `work(i)` for each i below `count`, on `jobs` threads at one time (0: as many as there are processors), and
/// `take(i)` on this thread, in the order of i and each as soon as its work is done. Work runs only so far ahead of
/// what has been taken that what waits to be taken stays small.
/// @param work  must not throw
/// @param take  what it throws ends this call once the work that has begun is done
void DoInOrder(std::size_t count, std::size_t jobs, const std::function<void(std::size_t)>& work,
               const std::function<void(std::size_t)>& take);

} // namespace zelt
