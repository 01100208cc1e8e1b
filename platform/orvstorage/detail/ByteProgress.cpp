#include <orvstorage/detail/ByteProgress.h>

#include <algorithm>

namespace orvstorage::detail {

namespace {

// Some milliseconds of work: a cancel is heeded quickly, and asking costs nothing against it.
constexpr std::uint64_t kStep = std::uint64_t{256} << 10;

} // namespace

bool ByteProgress::Ask(double fraction)
{
    if (!cancelled_ && progress_) {
        try {
            cancelled_ = !progress_(fraction, opaque_);
        } catch (...) {
            // The operation ends as a cancelled one, with all its cleaning up; State::RunAsking then lets the exception
            // go on.
            thrown_ = std::current_exception();
            cancelled_ = true;
        }
    }
    return !cancelled_;
}

bool ByteProgress::Ask()
{
    const std::uint64_t done = done_;
    nextAsk_ = done + kStep;
    // The total may be an estimate (a changed archive's size is not known before it is written): never above 1.
    return Ask(total_ == 0 ? 0.0 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total_)));
}

} // namespace orvstorage::detail
