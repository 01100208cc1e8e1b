#pragma once

#include <orvcore/Export.h>

#include <cstddef>
#include <functional>
#include <memory>

namespace orvcore {

/// A ParallelFor over elements that are still being found while the first ones are worked on. Made, grown and ended by
/// one thread.
class ORVPLATFORM_API GrowingLoop {
public:
    /// @param grain at least 1; the largest number of elements a piece
    /// @param body  as ParallelFor's
    GrowingLoop(std::size_t grain, std::function<void(std::size_t begin, std::size_t end)> body);
    GrowingLoop(const GrowingLoop&) = delete;
    GrowingLoop& operator=(const GrowingLoop&) = delete;
    /// Leaves out what has not begun and returns when the running pieces have ended.
    ~GrowingLoop();

    /// `more` elements have been found; workers begin with them. Nothing happens after `body` has thrown.
    void Grow(std::size_t more);
    /// Works on one piece on this thread, where more than `left` elements wait.
    void Help(std::size_t left);
    /// Works on all that is left and returns when the pieces of other threads have ended, too. The first exception of
    /// `body` leaves this call.
    /// @param whileWaiting as ParallelFor's
    void Finish(const std::function<void()>& whileWaiting = {});

private:
    struct State;
    const std::shared_ptr<State> state_; // shared with the workers; one that comes late finds nothing left
};

} // namespace orvcore
