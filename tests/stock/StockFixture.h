#pragma once

#include <tools/http/Server.h>
#include <tools/http/Stream.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvcore/host/Application.h>
#include <package/Workspace.h>
#include <stock/StockCapsuleEntry.h>
#include <stock/StockSource.h>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include <condition_variable>
#include <mutex>

namespace test {

using orvcapsule::StockCapsuleEntry;
using orvcapsule::StockSource;
using orvtools::http::Request;
using orvtools::http::Response;
using orvtools::http::TextResponse;

/// A service that answers as the test says, and a stock working folder of the test's own.
class StockFixture : public testing::Test {
protected:
    StockFixture()
    {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        orvcore::Application::SetName(std::string(test->test_suite_name()) + "-" + test->name());
        orvcore::RemoveTree(WorkingFolder());
    }
    ~StockFixture() override
    {
        orvcore::RemoveTree(WorkingFolder());
        orvcore::Application::SetName("");
    }
    void TearDown() override
    {
        server_.Stop(); // while all that `answer` uses is there: a client that has left may still be answered
    }

    std::filesystem::path WorkingFolder() const
    {
        return orvcore::PathFromUTF8(orvcapsule::GetTempStockDirectory(u8"x")).parent_path().parent_path();
    }
    std::shared_ptr<StockSource> MakeSource(orvcapsule::TemplateType type = orvcapsule::TemplateType::MotionGraphics)
    {
        return std::make_shared<StockSource>(Connection(), type);
    }
    std::shared_ptr<orvcapsule::ClientStockConnection> Connection() const
    {
        orvappsupport::StockConnectionSettings settings;
        settings.baseURL = orvcore::ToUTF8(server_.Origin());
        return std::make_shared<orvcapsule::ClientStockConnection>(settings);
    }
    orvcore::UTF8String URL(const char8_t* path) const
    {
        return orvcore::ToUTF8(server_.Origin()) + path;
    }
    static boost::shared_ptr<StockCapsuleEntry> MakeEntry(const char8_t* id)
    {
        auto entry = boost::make_shared<StockCapsuleEntry>();
        entry->stockID = id;
        return entry;
    }
    /// A body of which nothing comes before the test's end.
    Response Withheld()
    {
        Response response = TextResponse(200, "application/json", "");
        response.announcedLength = 1000;
        response.body = std::make_shared<orvtools::http::Stream>();
        return response;
    }

    /// Those answered so far; others may be under way, whose clients have left.
    std::vector<Request> Requests() const
    {
        const std::lock_guard lock(mutex_);
        return requests_;
    }
    std::size_t RequestCount() const
    {
        return Requests().size();
    }
    void AwaitRequests(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        ASSERT_TRUE(arrived_.wait_for(lock, std::chrono::minutes(2), [&] { return requests_.size() >= count; }));
    }

    std::function<Response(const Request&)> answer; ///< set before the first request

private:
    Response Answer(const Request& request)
    {
        std::unique_lock lock(mutex_);
        const auto respond = answer;
        lock.unlock();
        Response response = respond(request);
        lock.lock();
        requests_.push_back(request); // now: a test changes what the answers go by once a request is counted
        arrived_.notify_all();
        return response;
    }

    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<Request> requests_;
    orvtools::http::Server server_{[this](const Request& request) { return Answer(request); }};
};

} // namespace test
