#pragma once

#include <orvappsupport/detail/Transfer.h>

#include <orvcore/tasks/shared/ProcessEnd.h>

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace orvappsupport::detail {

/// The thread on which all transfers of the process run, started by the first one. It ends with the process's
/// executors, when all handlers have been told, or with the process, when none is told any more.
class TransferThread {
public:
    static TransferThread& The();

    TransferThread();
    TransferThread(const TransferThread&) = delete;
    TransferThread& operator=(const TransferThread&) = delete;
    ~TransferThread() = delete; ///< other threads may still use it while the process exits

    /// Takes a transfer; its handler is called on the thread, or here with Cancelled when that has ended.
    void Submit(std::unique_ptr<Transfer> transfer);
    /// Cancels the downloads that were submitted before and waits until they are told; on the thread itself it does not
    /// wait.
    void FlushDownloads();
    /// Whether the caller is that thread.
    static bool IsCurrent() noexcept;
    /// Whether there is a thread that tells handlers.
    bool IsWorking();

private:
    using Transfers = std::list<std::unique_ptr<Transfer>>;
    enum class Ending { No, Tell, Abandon };

    static void EndWithProcess(orvcore::ProcessEnd reason) noexcept;
    void Shutdown();
    void Abandon();
    bool Start();
    void Work() noexcept;
    Ending TakeOrders();
    void BeginWhatMayRun();
    void Begin(Transfers::iterator transfer);
    void FinishWhatHasEnded();
    void EndWhatMustEnd();
    void End(Transfers& from, Transfers::iterator transfer);
    void CancelAll(bool downloadsOnly);
    void Wait();

    void* const multi_; // CURLM
    std::mutex mutex_;
    std::condition_variable changed_;
    std::thread thread_;
    std::vector<std::unique_ptr<Transfer>> submitted_;
    Ending ending_ = Ending::No;
    bool isWorking_ = false; // the thread is there
    std::uint64_t flushesAsked_ = 0;
    std::uint64_t flushesDone_ = 0;

    // The thread's own.
    Transfers waiting_;         // to begin, or to go on after a pause
    Transfers running_;         // in the multi handle
    std::size_t downloads_ = 0; // of those running
    Transfer::Clock::time_point nextQuestion_;
};

} // namespace orvappsupport::detail
