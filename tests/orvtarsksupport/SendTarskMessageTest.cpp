#include "tests/support/Latch.h"
#include "tests/support/TestBroker.h"

#include <orvtarsksupport/BrokerFrames.h>
#include <orvtarsksupport/BrokerTransport.h>
#include <orvtarsksupport/SendTarskMessage.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace orvtarsksupport;
using namespace std::chrono_literals;
using namespace std::string_view_literals;
using orvcore::UTF8String;
using orvcore::serialization::JSONParse;
using orvcore::serialization::Object;
using orvcore::serialization::Variant;
using test::TestBroker;

// Keeps what it is given, and ends as it is told.
class Recorder final : public ITarskTransport {
public:
    TarskResult Send(const TarskMessage& message, UTF8String& reply) override
    {
        last = message;
        reply = u8"answer";
        return end();
    }
    TarskMessage last;
    std::function<TarskResult()> end = [] { return TarskResult{}; };
};

class SendTarskMessageTest : public testing::Test {
protected:
    SendTarskMessageTest()
    {
        SetTarskTransport(recorder_);
    }
    ~SendTarskMessageTest() override
    {
        SetTarskTransport(nullptr);
    }
    static TarskStatus Send(const Variant& payload, std::u8string_view name = u8"n", std::u8string_view root = u8"m")
    {
        UTF8String reply;
        return SendTarskMessage(name, *orvcore::serialization::AsObject(payload), true, root, reply).status;
    }

    const std::shared_ptr<Recorder> recorder_ = std::make_shared<Recorder>();
};

TEST_F(SendTarskMessageTest, TreesBecomeXML)
{
    const std::pair<std::u8string_view, std::u8string_view> table[] = {
        {u8"{}", u8"<m></m>"},
        {u8R"({"b":"2","a":{"@attributes":{"x":"1<\"\n","y":true},"c":""}})",
         u8"<m><a x=\"1&lt;&quot;&#10;\" y=\"true\"><c></c></a><b>2</b></m>"},
        {u8R"({"l":[1,"&",{"k":[]},null]})", u8"<m><l>1</l><l>&amp;</l><l></l><l></l></m>"},
        {u8R"({"n":[-1,18446744073709551615,0.5,1e300,false]})",
         u8"<m><n>-1</n><n>18446744073709551615</n><n>0.5</n><n>1e+300</n><n>false</n></m>"},
        {u8R"({"t":"a\r\n\tb"})", u8"<m><t>a&#13;&#10;&#9;b</t></m>"},
        {u8R"({"t":["\u0000","\uFFFE"]})", u8"<m><t encoding=\"base64\">AA==</t><t encoding=\"base64\">77++</t></m>"},
    };
    for (const auto& [json, xml] : table) {
        EXPECT_EQ(Send(JSONParse(json)), TarskStatus::Delivered);
        EXPECT_EQ(recorder_->last.body, u8"<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + UTF8String(xml));
    }
}

TEST_F(SendTarskMessageTest, WhatHasNoFormIsNotSent)
{
    recorder_->last.name = u8"untouched";
    for (const std::u8string_view json :
         {u8R"({"":1})", u8R"({"a b":1})", u8R"({"1":1})", u8R"({"a:b":1})", u8R"({"l":[[1]]})",
          u8R"({"a":{"@attributes":1}})", u8R"({"a":{"@attributes":{"x":{}}}})",
          u8R"({"a":{"@attributes":{"x":"\u0001"}}})", u8R"({"a":{"@attributes":{"x y":1}}})"}) {
        EXPECT_EQ(Send(JSONParse(json)), TarskStatus::BadMessage) << orvcore::AsNarrow(json);
    }
    const auto holding = [](Variant value) {
        return Variant(Object{{u8"a", std::make_shared<Variant>(std::move(value))}});
    };
    EXPECT_EQ(Send(holding(std::nan(""))), TarskStatus::BadMessage);
    EXPECT_EQ(Send(holding('c')), TarskStatus::BadMessage);
    Variant deep;
    for (std::size_t i = 0; i < 1000; ++i) {
        deep = holding(std::move(deep));
    }
    EXPECT_EQ(Send(deep), TarskStatus::BadMessage);
    for (const std::u8string_view name : {u8""sv, u8"a\0b"sv, u8"\xC0\x80"sv}) {
        EXPECT_EQ(Send(holding(true), name), TarskStatus::BadMessage);
    }
    EXPECT_EQ(Send(holding(true), u8"n", u8"<"), TarskStatus::BadMessage);
    EXPECT_EQ(recorder_->last.name, u8"untouched");
}

TEST_F(SendTarskMessageTest, AThrowingTransportIsAFailedSend)
{
    recorder_->end = []() -> TarskResult { throw 1; };
    EXPECT_EQ(Send(Object()), TarskStatus::Failed);
    recorder_->end = []() -> TarskResult { throw std::system_error(std::make_error_code(std::errc::io_error)); };
    UTF8String reply;
    EXPECT_EQ(SendTarskMessage(u8"n", {}, true, u8"m", reply).cause, std::errc::io_error);
}

// How the embedded transport ends with a broker that treats it so.
struct Treatment {
    const char* name;
    TarskStatus status;
    std::function<void(LocalStream&, orvtest::Latch& clientHasLeft)> serve;
};

void ReadAll(LocalStream& client, orvtest::Latch& /*clientHasLeft*/)
{
    TarskMessage message;
    ReadRequest(client, message, TestBroker::Soon());
}

TEST(BrokerTransportTest, ABadBrokerCostsNoMoreThanTheTimeout)
{
    const auto answer = [](std::string_view bytes) {
        return [bytes](LocalStream& client, orvtest::Latch& clientHasLeft) {
            ReadAll(client, clientHasLeft);
            client.Write(bytes, TestBroker::Soon());
        };
    };
    const Treatment table[] = {
        {"answers", TarskStatus::Delivered, answer("\3\0\0\0abc"sv)},
        {"answers with nothing", TarskStatus::Delivered, answer("\0\0\0\0"sv)},
        {"never reads", TarskStatus::TimedOut,
         [](LocalStream&, orvtest::Latch& clientHasLeft) { clientHasLeft.wait(); }},
        {"never answers", TarskStatus::TimedOut,
         [](LocalStream& client, orvtest::Latch& clientHasLeft) {
             ReadAll(client, clientHasLeft);
             clientHasLeft.wait();
         }},
        {"stops in its answer", TarskStatus::TimedOut,
         [&](LocalStream& client, orvtest::Latch& clientHasLeft) {
             answer("\3\0\0\0a"sv)(client, clientHasLeft);
             clientHasLeft.wait();
         }},
        {"dies at once", TarskStatus::BrokenOff, [](LocalStream&, orvtest::Latch&) {}},
        {"dies before it answers", TarskStatus::BrokenOff, ReadAll},
        {"dies in the length", TarskStatus::BrokenOff, answer("\3\0"sv)},
        {"promises more than it sends", TarskStatus::BrokenOff, answer("\4\0\0\0abc"sv)},
        {"promises four gigabytes", TarskStatus::BadReply, answer("\xFF\xFF\xFF\xFF"sv)},
        {"answers with garbage", TarskStatus::BadReply, answer("\2\0\0\0\xC0\x80"sv)},
    };
    for (const Treatment& treatment : table) {
        const bool hangs = treatment.status == TarskStatus::TimedOut;
        orvtest::Latch clientHasLeft(1);
        TestBroker broker([&](LocalStream client) { treatment.serve(client, clientHasLeft); });
        UTF8String reply = u8"old";
        // More than the system keeps for a reader that does not come.
        const TarskMessage message{u8"n", UTF8String(4U << 20U, u8'x'), true};
        const auto result = MakeBrokerTransport(broker.Path(), hangs ? 300ms : 10min)->Send(message, reply);
        EXPECT_EQ(result.status, treatment.status) << treatment.name << ": " << result.Message();
        EXPECT_EQ(reply, treatment.name == "answers"sv ? u8"abc" : u8"") << treatment.name;
        clientHasLeft.count_down();
    }
}

TEST(BrokerTransportTest, WithoutABroker)
{
    UTF8String reply;
    UTF8String gone;
    {
        const TestBroker broker([](LocalStream) {});
        gone = broker.Path();
    }
    EXPECT_EQ(MakeBrokerTransport(gone)->Send({u8"n", u8"b", true}, reply).status, TarskStatus::NoBroker);
    for (const UTF8String& path : {UTF8String(300, u8'x'), UTF8String(u8"a\0b", 3)}) {
        EXPECT_EQ(MakeBrokerTransport(path)->Send({u8"n", u8"b", true}, reply).status, TarskStatus::Failed);
    }
}

TEST(BrokerTransportTest, TheLargestMessageArrivesAndALargerOneDoesNotLeave)
{
    TarskMessage got;
    orvtest::Latch arrived(1);
    TestBroker broker([&](LocalStream client) {
        EXPECT_TRUE(ReadRequest(client, got, TestBroker::Soon()));
        arrived.count_down();
    });
    TarskMessage message{u8"name", UTF8String(kMaxMessageBytes - 4, u8'x'), false};
    UTF8String reply;
    const auto transport = MakeBrokerTransport(broker.Path(), 10min);
    EXPECT_EQ(transport->Send(message, reply).status, TarskStatus::Delivered);
    arrived.wait();
    EXPECT_TRUE(got.name == message.name && got.body == message.body && !got.awaitReply);
    message.body += u8'x';
    EXPECT_EQ(transport->Send(message, reply).status, TarskStatus::BadMessage);
}

// The other end is the one that lies.
TEST(BrokerFramesTest, ABrokerRefusesWhatIsNoRequest)
{
    const std::pair<std::string_view, TarskStatus> table[] = {
        {"\5\0\0\0\1\1n\0b"sv, TarskStatus::Delivered},  {"\3\0\0\0\1\1n"sv, TarskStatus::BadMessage},
        {"\0\0\0\0"sv, TarskStatus::BadMessage},         {"\1\0\0\0\1"sv, TarskStatus::BadMessage},
        {"\5\0\0\0\2\1n\0b"sv, TarskStatus::BadMessage}, {"\xFF\xFF\xFF\x7F"sv, TarskStatus::BadMessage},
        {"\6\0\0\0\1\1n\0b"sv, TarskStatus::BrokenOff},
    };
    for (const auto& [bytes, status] : table) {
        TarskResult result;
        {
            orvtest::Latch read(1);
            TestBroker broker([&](LocalStream client) {
                TarskMessage message;
                result = ReadRequest(client, message, TestBroker::Soon());
                read.count_down();
            });
            {
                LocalStream client;
                ASSERT_TRUE(LocalStream::Connect(broker.Path(), TestBroker::Soon(), client));
                ASSERT_TRUE(client.Write(bytes, TestBroker::Soon()));
            }
            read.wait();
        }
        EXPECT_EQ(result.status, status) << testing::PrintToString(bytes);
    }
}

} // namespace
