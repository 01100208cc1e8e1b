#include "RawClient.h"

#include <tests/support/Latch.h>
#include <tests/support/TempFolder.h>
#include <tools/http/Later.h>
#include <tools/http/Server.h>
#include <tools/http/Stream.h>

#include <gmock/gmock.h>

#include <map>
#include <thread>

namespace {

using namespace orvtools::http;
using namespace std::chrono_literals;
using test::Exchange;
using test::RawClient;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

const std::string kHost = "Host: 127.0.0.1\r\n";
const std::string kLast = kHost + "Connection: close\r\n\r\n";

// Tells the method, the path and the body of the request.
Response Echo(const Request& request)
{
    if (request.path == "/throws") {
        throw std::runtime_error("a secret");
    }
    return TextResponse(200, "text/plain", request.method + request.path + '|' + request.body);
}

TEST(HTTPServer, AnswersWhatHTTPAllows)
{
    const Server server(&Echo);
    struct Case {
        std::string request;
        std::string start;
        std::string end;
    };
    const Case cases[] = {
        {"GET /a%20b HTTP/1.1\r\n" + kLast, "HTTP/1.1 200 OK\r\n", "\r\n\r\nGET/a b|"},
        {"HEAD / HTTP/1.1\r\n" + kLast, "HTTP/1.1 200 OK\r\n", "Content-Length: 6\r\nConnection: close\r\n\r\n"},
        {"GET / HTTP/1.0\r\n\r\n", "HTTP/1.1 200 OK\r\n", "Connection: close\r\n\r\nGET/|"},
        {"POST / HTTP/1.1\r\nContent-Length: 2\r\n" + kLast + "ab", "HTTP/1.1 200 OK\r\n", "POST/|ab"},
        {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n" + kLast + "1\r\na\r\n2;x=y\r\nbc\r\n0\r\n\r\n",
         "HTTP/1.1 200 OK\r\n", "POST/|abc"},
        {"GET /1 HTTP/1.1\r\n" + kHost + "\r\nGET /2 HTTP/1.1\r\n" + kLast, "HTTP/1.1 200 OK\r\n", "GET/2|"},
        {"GET /throws HTTP/1.1\r\n" + kLast, "HTTP/1.1 500 ", "\r\n\r\nthe request could not be answered\n"},
    };
    for (const Case& c : cases) {
        EXPECT_THAT(Exchange(server.Port(), c.request), testing::AllOf(StartsWith(c.start), EndsWith(c.end)))
            << c.request;
    }
    EXPECT_EQ(server.Origin(), "http://127.0.0.1:" + std::to_string(server.Port()));
    ServerOptions taken;
    taken.port = server.Port();
    EXPECT_THROW(Server(&Echo, taken), std::system_error);
    ServerOptions named;
    named.address = "localhost";
    EXPECT_THROW(Server(&Echo, named), std::system_error) << "not an address";
}

TEST(HTTPServer, RefusesHostileRequestsAndCloses)
{
    ServerOptions options;
    options.limits.headerBytes = 1024;
    options.limits.bodyBytes = 64;
    options.refuse = [](unsigned status, std::string_view) { return TextResponse(status, "text/plain", "refused"); };
    const Server server(&Echo, options);
    const std::string chunked = "POST / HTTP/1.1\r\n" + kHost + "Transfer-Encoding: chunked\r\n\r\n";
    const std::pair<std::string, int> cases[] = {
        {"GET /" + std::string(4096, 'a') + " HTTP/1.1\r\n" + kHost + "\r\n", 431},
        {"GET / HTTP/1.1\r\n" + kHost + "X: " + std::string(1 << 20, 'a'), 431},
        {"POST / HTTP/1.1\r\n" + kHost + "Content-Length: 65\r\n\r\n", 413},
        {"POST / HTTP/1.1\r\n" + kHost + "Content-Length: 99999999999999999999999\r\n\r\n", 400},
        {"POST / HTTP/1.1\r\n" + kHost + "Content-Length: -1\r\n\r\n", 400},
        {"POST / HTTP/1.1\r\n" + kHost + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nab", 400},
        {"POST / HTTP/1.1\r\n" + kHost + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 400},
        {chunked + "zz\r\n", 400},
        {chunked + "1\r\nab\r\n0\r\n\r\n", 400},
        {chunked + "FFFFFFFFFFFFFFFFFF\r\n", 400},
        {chunked + "41\r\n" + std::string(65, 'a'), 413},
        {"GET / HTTP/1.1\r\n\r\n", 400},
        {"GET / HTTP/1.1\r\n" + kHost + kHost + "\r\n", 400},
        {"GET /../etc/passwd HTTP/1.1\r\n" + kLast, 400},
        {"GET /%2e%2e/a HTTP/1.1\r\n" + kLast, 400},
        {"GET /%zz HTTP/1.1\r\n" + kLast, 400},
        {"GET http://elsewhere/ HTTP/1.1\r\n" + kLast, 400},
        {"GET / HTTP/9.9\r\n" + kLast, 400},
        {std::string("\x16\x03\x01\x02\0\x01\0", 7) + std::string(100, '\0'), 400},
        {"GET / HTTP/1.1\r\nNo colon\r\n\r\n", 400},
    };
    for (const auto& [request, status] : cases) {
        EXPECT_THAT(Exchange(server.Port(), request),
                    testing::AllOf(StartsWith("HTTP/1.1 " + std::to_string(status) + ' '), EndsWith("\r\n\r\nrefused")))
            << request.substr(0, 200);
    }
}

// Each of these clients leaves the server waiting; it closes by itself.
TEST(HTTPServer, ClosesOnSlowClients)
{
    ServerOptions options;
    options.limits.requestTime = 50ms;
    options.limits.idleTime = 50ms;
    const Server server(&Echo, options);
    for (const std::string part : {"", "GET / HT", "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 5\r\n\r\nab"}) {
        EXPECT_EQ(Exchange(server.Port(), part), "") << part;
    }
    // On a busy machine this client is a slow one, too.
    EXPECT_THAT(Exchange(server.Port(), "GET / HTTP/1.1\r\n" + kHost + "\r\n"), testing::AnyOf("", EndsWith("GET/|")));
}

TEST(HTTPServer, TakesNoMoreConnectionsThanAllowed)
{
    ServerOptions options;
    options.limits.connections = 1;
    const Server server(&Echo, options);
    RawClient first(server.Port());
    first.Send("GET /1 HTTP/1.1\r\n" + kHost + "\r\n");
    first.ReadUntil("/1|");
    EXPECT_EQ(RawClient(server.Port()).ReadAll(), "");
    first.Send("GET /2 HTTP/1.1\r\n" + kLast);
    EXPECT_THAT(first.ReadAll(), EndsWith("GET/2|"));
}

TEST(HTTPServer, ServesFilesInParts)
{
    const test::TempFolder folder;
    folder.Write("video.mp4", "0123456789");
    const Server server([&](const Request& request) {
        Response response;
        response.body = FileBody{folder / request.path.substr(1)};
        return response;
    });
    const auto get = [&](const std::string& path, const std::string& headers) {
        return Exchange(server.Port(), "GET " + path + " HTTP/1.1\r\n" + headers + kLast);
    };
    const std::string whole = get("/video.mp4", "");
    EXPECT_THAT(whole, testing::AllOf(StartsWith("HTTP/1.1 200 "), HasSubstr("Accept-Ranges: bytes\r\n"),
                                      EndsWith("\r\n\r\n0123456789")));
    const auto at = whole.find("ETag: ") + 6;
    const std::string tag = whole.substr(at, whole.find('\r', at) - at);
    struct Case {
        std::string path = "/video.mp4";
        std::string headers;
        int status;
        std::string part;
    };
    const Case cases[] = {
        {"/video.mp4", "Range: bytes=2-4\r\n", 206, "Content-Range: bytes 2-4/10\r\n"},
        {"/video.mp4", "Range: bytes=2-4\r\n", 206, "Content-Length: 3\r\nConnection: close\r\n\r\n234"},
        {"/video.mp4", "Range: bytes=10-\r\n", 416, "Content-Range: bytes */10\r\n"},
        {"/video.mp4", "Range: bytes=2-4\r\nIf-Range: " + tag + "\r\n", 206, "\r\n\r\n234"},
        {"/video.mp4", "Range: bytes=2-4\r\nIf-Range: \"old\"\r\n", 200, "\r\n\r\n0123456789"},
        {"/video.mp4", "If-None-Match: " + tag + "\r\n", 304, "Connection: close\r\n\r\n"},
        {"/missing", "", 404, "there is no such file"},
        {"/", "", 404, "there is no such file"},
    };
    for (const Case& c : cases) {
        EXPECT_THAT(get(c.path, c.headers),
                    testing::AllOf(StartsWith("HTTP/1.1 " + std::to_string(c.status) + ' '), HasSubstr(c.part)))
            << c.path << ' ' << c.headers;
    }
}

TEST(HTTPServer, LiesAboutLengthsWhenToldTo)
{
    const Server server([](const Request& request) {
        Response response = TextResponse(200, "text/plain", "abc");
        response.announcedLength = request.path == "/more" ? 5 : 2;
        response.delay = 1ms;
        return response;
    });
    EXPECT_THAT(Exchange(server.Port(), "GET /more HTTP/1.1\r\n" + kHost + "\r\n"),
                testing::AllOf(HasSubstr("Content-Length: 5\r\n"), EndsWith("\r\n\r\nabc")));
    EXPECT_THAT(Exchange(server.Port(), "GET /less HTTP/1.1\r\n" + kHost + "\r\n"),
                testing::AllOf(HasSubstr("Content-Length: 2\r\n"), EndsWith("\r\n\r\nabc")));
}

// Answers every request with the stream.
Server::Handler Streaming(std::shared_ptr<Stream> stream)
{
    return [stream](const Request&) {
        Response response = TextResponse(200, "text/event-stream", "");
        response.body = stream;
        return response;
    };
}

void WaitUntilEnded(const Stream& stream)
{
    while (stream.IsOpen()) {
        std::this_thread::yield();
    }
}

TEST(HTTPStream, IsSentAsItIsWritten)
{
    const auto stream = std::make_shared<Stream>();
    const Server server(Streaming(stream));
    EXPECT_TRUE(stream->WriteEvent("", "before"));
    RawClient client(server.Port());
    client.Send("GET / HTTP/1.1\r\n" + kHost + "\r\n");
    client.ReadUntil("data: before\n\n");
    std::thread([&] { stream->WriteEvent("change", "a\r\nb\n\nc"); }).join();
    EXPECT_THAT(client.ReadUntil("data: c\n\n"), EndsWith("event: change\ndata: a\ndata: b\ndata: \ndata: c\n\n\r\n"));
    stream->Close();
    EXPECT_THAT(client.ReadAll(), EndsWith("\r\n0\r\n\r\n"));
    EXPECT_FALSE(stream->Write("late"));
}

TEST(HTTPStream, EndsWithItsClient)
{
    const std::pair<std::string, std::string> cases[] = {
        {"GET / HTTP/1.1\r\n" + kHost + "\r\n", "leaves"},
        {"GET / HTTP/1.1\r\n" + kHost + "\r\nmore", "sends something more"},
        {"HEAD / HTTP/1.1\r\n" + kHost + "\r\n", "wants no body"},
    };
    for (const auto& [request, what] : cases) {
        const auto stream = std::make_shared<Stream>();
        const Server server(Streaming(stream));
        RawClient client(server.Port());
        client.Send(request);
        client.ReadUntil("\r\n\r\n");
        if (what == "leaves") {
            client.EndSending();
        }
        WaitUntilEnded(*stream);
        EXPECT_FALSE(stream->Write("late")) << what;
    }
    Stream lonely(10);
    EXPECT_TRUE(lonely.Write("0123456789"));
    EXPECT_FALSE(lonely.Write("0")) << "nobody reads it";
    EXPECT_EQ(lonely.Unsent(), 0U);
}

TEST(HTTPServer, AnswersLaterWithoutAThread)
{
    std::map<std::string, std::shared_ptr<Later>> answers;
    for (const char* path : {"/early", "/late", "/left", "/more"}) {
        answers[path] = std::make_shared<Later>();
    }
    ServerOptions options;
    options.limits.handlers = 1;
    const Server server(
        [&](const Request& request) {
            Response response = Echo(request);
            response.headers = {{"X-Kept", "yes"}};
            if (const auto found = answers.find(request.path); found != answers.end()) {
                response.body = found->second;
            }
            return response;
        },
        options);
    const auto send = [&](const std::string& path) {
        auto client = std::make_unique<RawClient>(server.Port());
        client->Send("GET " + path + " HTTP/1.1\r\n" + kHost + "\r\n");
        return client;
    };
    answers["/early"]->Answer(ErrorResponse(418, "early"));
    answers["/early"]->Answer(ErrorResponse(200, "again"));
    EXPECT_THAT(send("/early")->ReadAll(),
                testing::AllOf(StartsWith("HTTP/1.1 418 "), HasSubstr("X-Kept: yes\r\n"), EndsWith("early\n")));
    const auto late = send("/late");
    const auto left = send("/left");
    const auto more = send("/more");
    EXPECT_THAT(Exchange(server.Port(), "GET /now HTTP/1.1\r\n" + kLast), EndsWith("GET/now|"));
    left->EndSending();
    more->Send("GET /now HTTP/1.1\r\n");
    while (answers["/left"]->IsAwaited() || answers["/more"]->IsAwaited()) {
        std::this_thread::yield();
    }
    answers["/left"]->Answer(ErrorResponse(200, "nobody"));
    EXPECT_EQ(left->ReadAll() + more->ReadAll(), "");
    std::thread([&] { answers["/late"]->Answer(ErrorResponse(200, "late")); }).join();
    EXPECT_THAT(late->ReadAll(), EndsWith("late\n"));
}

TEST(HTTPServer, StopsInTheMiddleOfEverything)
{
    const test::TempFolder folder;
    folder.Write("large", std::string(std::size_t{32} << 20, 'a'));
    const auto stream = std::make_shared<Stream>();
    const auto later = std::make_shared<Later>();
    orvtest::Latch inHandler(1);
    orvtest::Latch mayReturn(1);
    Server server([&](const Request& request) {
        Response response = Streaming(stream)(request);
        if (request.path == "/large") {
            response.body = FileBody{folder / "large"};
        } else if (request.path == "/delayed") {
            response = ErrorResponse(200, "late");
            response.delay = 1h;
        } else if (request.path == "/later") {
            response.body = later;
        } else if (request.path == "/handler") {
            inHandler.count_down();
            mayReturn.wait();
            response.body = std::make_shared<Stream>();
        }
        return response;
    });
    RawClient idle(server.Port());
    RawClient events(server.Port());
    RawClient large(server.Port());
    RawClient delayed(server.Port());
    RawClient awaiting(server.Port());
    RawClient handled(server.Port());
    awaiting.Send("GET /later HTTP/1.1\r\n" + kHost + "\r\n");
    events.Send("GET /events HTTP/1.1\r\n" + kHost + "\r\n");
    events.ReadUntil("\r\n\r\n");
    large.Send("GET /large HTTP/1.1\r\n" + kHost + "\r\n");
    large.ReadUntil("\r\n\r\n");
    delayed.Send("GET /delayed HTTP/1.1\r\n" + kHost + "\r\n");
    handled.Send("GET /handler HTTP/1.1\r\n" + kHost + "\r\n");
    inHandler.wait();
    std::thread stopping([&] { server.Stop(); });
    EXPECT_EQ(idle.ReadAll(), "");
    WaitUntilEnded(*stream);
    EXPECT_THAT(events.ReadAll(), Not(HasSubstr("0\r\n\r\n"))) << "a stream that is cut is no complete one";
    EXPECT_LT(large.ReadAll().size(), std::size_t{32} << 20);
    EXPECT_EQ(delayed.ReadAll() + awaiting.ReadAll(), "");
    mayReturn.count_down();
    stopping.join();
    EXPECT_EQ(handled.ReadAll(), "");
    EXPECT_THROW(RawClient(server.Port()), std::exception);
    server.Stop();
    later->Answer(ErrorResponse(200, "nobody"));
}

// The stop meets answers at every stage: a head just written, the client's end just asked for, nothing begun.
TEST(HTTPServer, StopsWhileAnswersBegin)
{
    for (std::size_t round = 0; round < 100; ++round) {
        Server server([](const Request& request) { return Streaming(std::make_shared<Stream>())(request); });
        std::vector<std::unique_ptr<RawClient>> clients;
        for (std::size_t i = 0; i < 8; ++i) {
            clients.push_back(std::make_unique<RawClient>(server.Port()));
            clients.back()->Send("GET / HTTP/1.1\r\n" + kHost + "\r\n");
        }
        clients[round % 8]->ReadUntil("HTTP/1.1 200 ");
        server.Stop();
        for (const auto& client : clients) {
            EXPECT_THAT(client->ReadAll(), Not(HasSubstr("\r\n0\r\n\r\n")));
        }
    }
}

} // namespace
