#include <orvappsupport/detail/TransferThread.h>

#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <curl/curl.h>

#include <algorithm>
#include <new>
#include <system_error>

// Callers and the client's thread share what `mutex_` guards: new transfers, the numbers of flushes, how it ends. All
// else (the lists of transfers, the multi handle) belongs to the thread alone. Handlers and the callers' functions run
// without the lock; they may submit new transfers.
//
// The thread sleeps in curl_multi_poll. A thread that gives an order changes the shared state first and then calls
// curl_multi_wakeup, the one function of libcurl that other threads may call here; a wake-up that comes before the poll
// ends the next one, so no order waits for the end of a sleep.
//
// The way of a transfer: submitted_, waiting_, running_ (it is in the multi handle), perhaps back to the front of
// waiting_ for its next hop, End. It is taken out of the multi handle before its handler is called, which may end the
// process. Of downloads sixteen run; the time of the others does not count yet, because their deadline is set at the
// first Begin.
//
// Ways to end: Shutdown has every handler told and joins the thread. Abandon, at exit, tells nobody, since what
// handlers use may be gone, and destroys no handler either; the thread removes unfinished files and leaves, for which
// it has two seconds. On Windows nobody calls Abandon: the system has ended the thread. isWorking_ turns false as the
// thread's last act under the lock, so a caller that waits for a flush or a fetch learns of the end in each case.

namespace orvappsupport::detail {

using namespace std::chrono;

namespace {

constexpr std::size_t kMostDownloads = 16;
constexpr milliseconds kQuestionInterval{100};

thread_local bool isTransferThread = false;

CURLM* MakeMulti()
{
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
        throw std::bad_alloc();
    }
    CURLM* const multi = curl_multi_init();
    if (multi == nullptr) {
        throw std::bad_alloc();
    }
    return multi;
}

} // namespace

TransferThread& TransferThread::The()
{
    static orvcore::NoDestructor<TransferThread> thread;
    return *thread;
}

// CallAtEnd comes after libcurl's initialisation, and with it that of its TLS library, which registers a handler for
// the exit: so the thread ends before that one, and no transfer uses what is gone.
TransferThread::TransferThread()
    : multi_(MakeMulti())
{
    orvcore::KeepModuleLoaded(&kQuestionInterval);
    if (!orvcore::CallAtEnd(&EndWithProcess)) {
        ending_ = Ending::Tell;
    }
}

void TransferThread::EndWithProcess(orvcore::ProcessEnd reason) noexcept
{
    reason == orvcore::ProcessEnd::Shutdown ? The().Shutdown() : The().Abandon();
}

void TransferThread::Shutdown()
{
    std::thread thread;
    {
        const std::lock_guard lock(mutex_);
        ending_ = Ending::Tell;
        thread.swap(thread_);
    }
    if (thread.joinable()) {
        curl_multi_wakeup(multi_);
        thread.join();
    }
}

// What the handlers use may be gone already, so they are neither called nor destroyed; but the thread must end first.
void TransferThread::Abandon()
{
    constexpr seconds kLongest{2};
    std::unique_lock lock(mutex_);
    ending_ = Ending::Abandon;
    if (IsCurrent()) { // a handler ends the process, and this thread does not come back to work
        isWorking_ = false;
    } else if (isWorking_) {
        curl_multi_wakeup(multi_);
        if (changed_.wait_for(lock, kLongest, [this] { return !isWorking_; })) {
            std::thread ended = std::move(thread_);
            lock.unlock();
            if (ended.joinable()) { // otherwise Shutdown waits for it
                ended.join();
            }
        }
    }
}

bool TransferThread::IsWorking()
{
    const std::lock_guard lock(mutex_);
    return isWorking_;
}

bool TransferThread::IsCurrent() noexcept
{
    return isTransferThread;
}

bool TransferThread::Start()
{
    if (ending_ != Ending::No) {
        return false;
    }
    try {
        if (!isWorking_) {
            thread_ = std::thread([this] { Work(); });
            isWorking_ = true;
        }
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

void TransferThread::Submit(std::unique_ptr<Transfer> transfer)
{
    std::unique_lock lock(mutex_);
    if (!Start()) {
        lock.unlock();
        transfer->Fail(TransferEnd::Cancelled);
        transfer->Tell();
        return;
    }
    submitted_.push_back(std::move(transfer));
    lock.unlock();
    curl_multi_wakeup(multi_);
}

void TransferThread::FlushDownloads()
{
    std::unique_lock lock(mutex_);
    if (!isWorking_) {
        return;
    }
    const std::uint64_t number = ++flushesAsked_;
    curl_multi_wakeup(multi_);
    if (!IsCurrent()) {
        changed_.wait(lock, [&] { return flushesDone_ >= number || !isWorking_; });
    }
}

void TransferThread::Work() noexcept
{
    isTransferThread = true;
    Ending ending = TakeOrders();
    while (ending == Ending::No) {
        int left = 0;
        BeginWhatMayRun();
        curl_multi_perform(multi_, &left);
        FinishWhatHasEnded();
        EndWhatMustEnd();
        Wait();
        ending = TakeOrders();
    }
    if (ending == Ending::Tell) {
        CancelAll(false);
    } else {
        for (const auto& transfer : running_) {
            transfer->DropFile();
        }
    }
    const std::lock_guard lock(mutex_);
    isWorking_ = false;
    changed_.notify_all();
}

// What others asked for since the last time.
TransferThread::Ending TransferThread::TakeOrders()
{
    std::unique_lock lock(mutex_);
    for (auto& transfer : submitted_) {
        waiting_.push_back(std::move(transfer));
    }
    submitted_.clear();
    if (const std::uint64_t asked = flushesAsked_; asked != flushesDone_ && ending_ == Ending::No) {
        lock.unlock();
        CancelAll(true);
        lock.lock();
        flushesDone_ = asked;
        changed_.notify_all();
    }
    return ending_;
}

void TransferThread::BeginWhatMayRun()
{
    const auto now = Transfer::Clock::now();
    for (auto next = waiting_.begin(); next != waiting_.end();) {
        const auto transfer = next++;
        const bool hasTurn = !(*transfer)->IsDownload() || downloads_ < kMostDownloads;
        if (hasTurn && (*transfer)->ResumeTime() <= now) {
            Begin(transfer);
        }
    }
}

void TransferThread::Begin(Transfers::iterator transfer)
{
    EasyHandle::Native* handle = nullptr;
    try {
        handle = (*transfer)->Begin();
    } catch (...) {
        (*transfer)->Fail(TransferEnd::NoConnection, "there is no memory for the request");
    }
    if (handle == nullptr) {
        End(waiting_, transfer);
        return;
    }
    running_.splice(running_.end(), waiting_, transfer);
    downloads_ += (*transfer)->IsDownload() ? 1U : 0U;
    if (curl_multi_add_handle(multi_, handle) != CURLM_OK) {
        (*transfer)->Fail(TransferEnd::NoConnection, "there is no memory for the request");
        End(running_, transfer);
    }
}

void TransferThread::FinishWhatHasEnded()
{
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(multi_, &left)) {
        CURL* const handle = message->easy_handle;
        const CURLcode code = message->data.result;
        const auto transfer = std::find_if(running_.begin(), running_.end(),
                                           [handle](const auto& each) { return each->GetHandle() == handle; });
        bool hasEnded = true;
        try {
            hasEnded = (*transfer)->Finish(code);
        } catch (...) {
            (*transfer)->Fail(TransferEnd::BadBody, "there is no memory for the answer");
        }
        if (hasEnded) {
            End(running_, transfer);
        } else {
            curl_multi_remove_handle(multi_, handle);
            downloads_ -= (*transfer)->IsDownload() ? 1U : 0U;
            waiting_.splice(waiting_.begin(), running_, transfer); // before those that have not begun
        }
    }
}

void TransferThread::EndWhatMustEnd()
{
    const auto now = Transfer::Clock::now();
    if (now < nextQuestion_) {
        return;
    }
    nextQuestion_ = now + kQuestionInterval;
    for (Transfers* const transfers : {&running_, &waiting_}) {
        for (auto next = transfers->begin(); next != transfers->end();) {
            const auto transfer = next++;
            if ((*transfer)->MustEnd(now)) {
                End(*transfers, transfer);
            }
        }
    }
}

void TransferThread::End(Transfers& from, Transfers::iterator transfer)
{
    const std::unique_ptr<Transfer> ended = std::move(*transfer);
    from.erase(transfer);
    if (&from == &running_) {
        curl_multi_remove_handle(multi_, ended->GetHandle());
        downloads_ -= ended->IsDownload() ? 1U : 0U;
    }
    ended->Tell();
}

void TransferThread::CancelAll(bool downloadsOnly)
{
    for (Transfers* const transfers : {&running_, &waiting_}) {
        for (auto next = transfers->begin(); next != transfers->end();) {
            const auto transfer = next++;
            if (!downloadsOnly || (*transfer)->IsDownload()) {
                (*transfer)->Fail(TransferEnd::Cancelled);
                End(*transfers, transfer);
            }
        }
    }
}

void TransferThread::Wait()
{
    constexpr milliseconds kIdle = minutes(1);
    milliseconds longest = running_.empty() && waiting_.empty() ? kIdle : kQuestionInterval;
    const auto now = Transfer::Clock::now();
    for (const auto& transfer : waiting_) {
        if (!transfer->IsDownload() || downloads_ < kMostDownloads) {
            longest = std::clamp(ceil<milliseconds>(transfer->ResumeTime() - now), milliseconds(0), longest);
        }
    }
    curl_multi_poll(multi_, nullptr, 0, static_cast<int>(longest.count()), nullptr);
}

} // namespace orvappsupport::detail
