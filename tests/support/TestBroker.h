#pragma once

#include "tests/support/TempFolder.h"

#include <orvcore/text/Guid.h>
#include <orvtarsksupport/LocalListener.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

namespace test {

/// A broker on a real socket or pipe that treats its clients, one after the other, as the test says.
class TestBroker {
public:
    using Serve = std::function<void(orvtarsksupport::LocalStream)>;

    explicit TestBroker(Serve serve)
        : listener_(orvtarsksupport::LocalListener::Open(path_, error_))
        , serve_(std::move(serve))
    {
        if (!listener_) {
            throw std::runtime_error("no listener: " + error_.message());
        }
        thread_ = std::thread([this] { Run(); });
    }
    TestBroker(const TestBroker&) = delete;
    TestBroker& operator=(const TestBroker&) = delete;
    ~TestBroker()
    {
        stop_ = true;
        thread_.join();
    }

    const orvcore::UTF8String& Path() const
    {
        return path_;
    }
    static orvtarsksupport::Deadline Soon(std::chrono::milliseconds time = std::chrono::minutes(10))
    {
        return std::chrono::steady_clock::now() + time;
    }

private:
    void Run()
    {
        while (!stop_) {
            if (auto client = listener_->Accept(Soon(std::chrono::milliseconds(20)))) {
                serve_(std::move(*client));
            }
        }
    }

    TempFolder folder_;
    const orvcore::UTF8String path_ =
        std::filesystem::path::preferred_separator == '/'
            ? orvcore::PathToUTF8(folder_ / "broker.sock")
            : u8"\\\\.\\pipe\\orv-test-" + orvcore::ToUTF8(orvcore::Guid::Create().ToString());
    std::error_code error_;
    std::unique_ptr<orvtarsksupport::LocalListener> listener_;
    Serve serve_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

} // namespace test
