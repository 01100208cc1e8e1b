#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>

#include <orvcore/json/JSONTextWriter.h>
#include <orvtarsksupport/BrokerFrames.h>
#include <orvtarsksupport/LocalListener.h>

#include <charconv>
#include <limits>

// A broker for development: it takes one client after the other on this thread and prints what they send. A client that
// stops in the middle of its message holds up the others for the time-out at most.

namespace zelt {

namespace {

using namespace std::chrono_literals;
using namespace orvtarsksupport;

constexpr auto kInterruptInterval = 100ms; // between looks whether the user has interrupted
constexpr auto kMessageTimeout = 5s;       // for a client in the middle of its message

std::uint64_t CountOf(const std::optional<std::string>& text)
{
    std::uint64_t count = std::numeric_limits<std::uint64_t>::max();
    if (text) {
        const char* const end = text->data() + text->size();
        const auto read = std::from_chars(text->data(), end, count);
        if (read.ptr != end || read.ec != std::errc() || count == 0) {
            throw UsageError('"' + *text + "\" is no number of messages");
        }
    }
    return count;
}

std::string AsJSON(const TarskMessage& message)
{
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("name");
    writer.String(orvcore::AsNarrow(message.name));
    writer.Key("body");
    writer.String(orvcore::AsNarrow(message.body));
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

// Prints one client's message and answers it; false when it did not arrive.
bool Serve(LocalStream client)
{
    const Deadline deadline = std::chrono::steady_clock::now() + kMessageTimeout;
    TarskMessage message;
    if (const TarskResult result = ReadRequest(client, message, deadline); !result) {
        ReportError("a message did not arrive: " + (result.status == TarskStatus::BrokenOff
                                                        ? "the sender closed the connection before the end"
                                                        : result.Message()));
        return false;
    }
    PrintLine(AsJSON(message));
    if (!FlushOutput()) {
        throw std::runtime_error("standard output cannot be written");
    }
    if (message.awaitReply && WriteReply(client, {}, deadline)) {
        char unexpected = 0;
        client.Read({&unexpected, 1}, deadline); // the sender closes when it has the answer, or the answer may be lost
    }
    return true;
}

} // namespace

ExitCode RunBroker(const BrokerOptions& options)
{
    return OnFile(options.path, [&] {
        std::uint64_t left = CountOf(options.messages);
        const InterruptWatch interrupt;
        std::error_code error;
        const auto listener = LocalListener::Open(orvcore::ToUTF8(options.path), error);
        if (!listener) {
            throw FileError(options.path, error.message());
        }
        ReportError("listening at " + options.path);
        while (left > 0 && !interrupt.IsRaised()) {
            auto client = listener->Accept(std::chrono::steady_clock::now() + kInterruptInterval);
            left -= client && Serve(std::move(*client)) ? 1U : 0U;
        }
    });
}

} // namespace zelt
