#pragma once

#include <tools/zelt/support/Interrupt.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace zelt {

/// A bar on standard error while long work runs: only on a terminal, and only once the work has taken half a second.
/// Work that cannot tell how far it is gets a mark that moves. The destructor removes the bar.
class Progress {
public:
    /// @param what  what is being done, "packing"
    explicit Progress(std::string what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// How much is done, 0 to 1. Any thread may call.
    void Set(double fraction);
    /// Removes the bar so that a line can be printed; it comes back at its next step.
    void Clear();

private:
    void Run();
    void Draw(std::size_t step);
    void Erase();

    const std::string what_;
    std::mutex mutex_;
    std::condition_variable wake_;
    double fraction_ = -1; // not known
    bool isDrawn_ = false;
    bool ends_ = false;
    std::thread ticker_; // last: it uses the others
};

/// Callbacks for long work of the library: show how far it is, and cancel it when the user has interrupted.
struct ShowAndWatch {
    Progress& progress;
    const InterruptWatch* interrupt; ///< null: the work must not be cancelled

    bool operator()(double fraction, void* opaque = nullptr) const;
};

} // namespace zelt
