#pragma once

namespace orvcore::detail {

/// Has `function` called when the process exits, where its threads still live then. On Windows it is not called: the
/// system has ended the threads before, perhaps while they held a lock, so there nothing may be waited for or locked.
void CallAtExit(void (*function)()) noexcept;

} // namespace orvcore::detail
