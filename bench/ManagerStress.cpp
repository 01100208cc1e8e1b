// Browses a large folder as an impatient user does: lists it through a manager, cancels at random moments and starts
// again, shuts down in the middle of a listing. Prints the times and ends with an error when a template is missing,
// listed twice, or delivered after its request was cancelled.
//
//   manager_stress FOLDER [CANCELS]

#include <manager/GraphicSourceManager.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/tasks/MainThread.h>
#include <sources/LocalGraphicsSource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using orvcapsule::GraphicSourceManager;

double Since(Clock::time_point start)
{
    return Milliseconds(Clock::now() - start).count();
}

void Fail(const char* what)
{
    std::fprintf(stderr, "manager_stress: %s\n", what);
    std::exit(1);
}

class Browser {
public:
    explicit Browser(const std::filesystem::path& folder)
        : data_(u8"orvcapsule-stress")
        , manager_(std::make_shared<GraphicSourceManager>(orvcore::PathToUTF16(data_.Path() / "index.db")))
    {
        manager_->AddGraphicSource(std::make_shared<orvcapsule::LocalGraphicsSource>(
            orvcore::PathToUTF16(folder), std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>{}));
        manager_->SetLocalDirectoryRequestCallback(std::make_shared<GraphicSourceManager::DirectoryCallback>(
            [this](const auto&, const auto&, bool) { idle_ = true; }));
    }
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    void Start(bool showProgress)
    {
        answered_ = false;
        manager_->SetLocalRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
            [this, request = ++newest_](GraphicSourceManager::ResultMap& results, int, int) {
                if (request != newest_) {
                    Fail("a delivery of a cancelled request");
                }
                results_ = std::move(results);
                answered_ = true;
            }));
        manager_->RequestDefaultGraphicSet({}, showProgress);
    }
    void Finish()
    {
        Pump(answered_);
    }
    /// Milliseconds until the executor is free again.
    double Cancel()
    {
        const auto start = Clock::now();
        manager_->Abort();
        ++newest_;
        idle_ = false;
        manager_->LocalDirectoryChanged("none", u8"none", {}); // answered when everything before it has ended
        Pump(idle_);
        return Since(start);
    }
    /// Milliseconds of the call, and until the last task has ended.
    std::pair<double, double> Shutdown()
    {
        const std::weak_ptr<GraphicSourceManager> running = manager_;
        const auto start = Clock::now();
        ++newest_;
        manager_->Shutdown();
        const double call = Since(start);
        manager_.reset();
        while (!running.expired()) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        const double all = Since(start);
        orvcore::RunMainThreadCalls();
        return {call, all};
    }
    /// The number of results, each a different package.
    std::size_t CountResults() const
    {
        std::set<orvcore::UTF8String> paths;
        for (const auto& [position, entry] : results_) {
            paths.insert(entry->path);
        }
        if (paths.size() != results_.size()) {
            Fail("a template listed twice");
        }
        return paths.size();
    }
    void ForgetResults()
    {
        results_.clear();
    }

private:
    void Pump(const bool& done)
    {
        while (!done) {
            orvcore::WaitForMainThreadCalls(std::chrono::seconds(60));
            orvcore::RunMainThreadCalls();
        }
    }

    const orvcore::TemporaryFolder data_;
    std::shared_ptr<GraphicSourceManager> manager_;
    GraphicSourceManager::ResultMap results_;
    int newest_ = 0;
    bool answered_ = false;
    bool idle_ = false;
};

std::size_t CountPackages(const std::filesystem::path& folder)
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        count += entry.is_regular_file() && entry.path().extension() == ".zelt" ? 1U : 0U;
    }
    return count;
}

// Runs one listing to its end and returns its milliseconds.
double ListOnce(Browser& browser, std::size_t packages)
{
    browser.ForgetResults();
    const auto start = Clock::now();
    browser.Start(true);
    browser.Finish();
    const double time = Since(start);
    if (browser.CountResults() != packages) {
        Fail("not every package was listed");
    }
    return time;
}

void Run(const std::filesystem::path& folder, int cancels)
{
    const std::size_t packages = CountPackages(folder);
    Browser browser(folder);
    const double first = ListOnce(browser, packages);
    const double second = ListOnce(browser, packages);
    std::printf("%zu packages: first listing %.0f ms, second %.0f ms\n", packages, first, second);

    std::mt19937 random(1);
    std::uniform_real_distribution<double> moment(0.0, second * 1.1);
    std::vector<double> times;
    for (int i = 0; i < cancels; ++i) {
        browser.Start(i % 2 == 0);
        std::this_thread::sleep_for(Milliseconds(moment(random)));
        times.push_back(browser.Cancel());
    }
    std::sort(times.begin(), times.end());
    if (!times.empty()) {
        std::printf("%d cancels: until the work has ended, median %.2f ms, p99 %.2f ms, worst %.2f ms\n", cancels,
                    times[times.size() / 2], times[times.size() * 99 / 100], times.back());
    }
    std::printf("listing after them %.0f ms\n", ListOnce(browser, packages));

    browser.Start(true);
    std::this_thread::sleep_for(Milliseconds(second / 2));
    const auto [call, all] = browser.Shutdown();
    std::printf("shutdown during a listing: returned after %.2f ms, the task ended after %.2f ms\n", call, all);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: manager_stress FOLDER [CANCELS]\n", stderr);
        return 2;
    }
    Run(argv[1], argc > 2 ? std::atoi(argv[2]) : 200);
    return 0;
}
