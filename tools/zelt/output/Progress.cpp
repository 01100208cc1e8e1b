#include <tools/zelt/output/Progress.h>

#include <tools/support/Console.h>

#include <algorithm>
#include <cstdio>

// The bar is drawn by a thread of its own, because the work calls Set at any rate or not at all, on any thread. The
// mutex is held while the bar is drawn and while it is taken away, so that a line printed after Clear does not end up
// behind it; the bar comes back at the next step.
//
// No thread is started where standard error is no terminal.

namespace zelt {

namespace {

constexpr std::chrono::milliseconds kDelay(500); // what ends sooner shows no bar
constexpr std::chrono::milliseconds kStep(100);
constexpr std::size_t kWidth = 40;

} // namespace

Progress::Progress(std::string what)
    : what_(std::move(what))
{
    if (orvtools::IsTerminal(orvtools::StandardStream::Error)) {
        ticker_ = std::thread([this] { Run(); });
    }
}

Progress::~Progress()
{
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    wake_.notify_one();
    if (ticker_.joinable()) {
        ticker_.join();
    }
    Erase();
}

void Progress::Set(double fraction)
{
    const std::lock_guard lock(mutex_);
    fraction_ = std::clamp(fraction, 0.0, 1.0);
}

void Progress::Clear()
{
    const std::lock_guard lock(mutex_);
    Erase();
}

void Progress::Run()
{
    std::unique_lock lock(mutex_);
    const auto ended = [this] { return ends_; };
    if (wake_.wait_for(lock, kDelay, ended)) {
        return;
    }
    for (std::size_t step = 0; !wake_.wait_for(lock, kStep, ended); ++step) {
        Draw(step);
    }
}

void Progress::Draw(std::size_t step)
{
    std::string bar(kWidth, ' ');
    std::string percent;
    if (fraction_ < 0) {
        bar.replace(step % (kWidth - 2), 3, "===");
    } else {
        std::fill_n(bar.begin(), static_cast<std::size_t>(fraction_ * kWidth), '=');
        percent = ' ' + std::to_string(static_cast<int>(fraction_ * 100)) + " %";
    }
    std::fprintf(stderr, "\r%s [%s]%s ", what_.c_str(), bar.c_str(), percent.c_str());
    std::fflush(stderr);
    isDrawn_ = true;
}

void Progress::Erase()
{
    if (isDrawn_) {
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(what_.size() + kWidth + 12), "");
        std::fflush(stderr);
        isDrawn_ = false;
    }
}

bool ShowAndWatch::operator()(double fraction, void* /*opaque*/) const
{
    progress.Set(fraction);
    return interrupt == nullptr || !interrupt->IsRaised();
}

} // namespace zelt
