#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/ParallelFor.h>
#include <orvcore/tasks/shared/GrowingLoop.h>

#include <algorithm>

namespace orvcore {

void ParallelFor(std::size_t count, std::size_t grain, const std::function<void(std::size_t, std::size_t)>& body,
                 const std::function<void()>& whileWaiting)
{
    // Several, so that a worker whose pieces were quick takes some of another's.
    constexpr std::size_t kPiecesAWorker = 4;
    if (grain == 0) {
        grain = std::max<std::size_t>(count / (GetCPUBoundExecutor()->GetConcurrency() * kPiecesAWorker), 1);
    }
    if (count <= grain) {
        if (count != 0) {
            body(0, count);
        }
        return;
    }
    GrowingLoop loop(grain, [&body](std::size_t begin, std::size_t end) { body(begin, end); });
    loop.Grow(count);
    loop.Finish(whileWaiting);
}

} // namespace orvcore
