#include <orvtarsksupport/BrokerTransport.h>

#include <orvcore/host/shared/Environment.h>
#include <orvtarsksupport/BrokerFrames.h>

#include <algorithm>
#include <utility>

// One connection a message: connect, write the request, read the answer, close. The deadline is that of the whole call,
// so a broker that sends its answer byte by byte cannot hold the caller longer than one that says nothing.

namespace orvtarsksupport {

namespace {

class BrokerTransport final : public ITarskTransport {
public:
    BrokerTransport(orvcore::UTF8String path, std::chrono::milliseconds timeout)
        : path_(std::move(path))
        , timeout_(std::min<std::chrono::milliseconds>(timeout, std::chrono::hours(24))) // no point of time overflows
    {
    }

    TarskResult Send(const TarskMessage& message, orvcore::UTF8String& reply) override
    {
        reply.clear();
        const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
        if (!FitsFrame(message)) {
            return {TarskStatus::BadMessage};
        }
        LocalStream stream;
        TarskResult result = LocalStream::Connect(Path(), deadline, stream);
        if (result) {
            result = WriteRequest(stream, message, deadline);
        }
        return result && message.awaitReply ? ReadReply(stream, reply, deadline) : result;
    }

private:
    orvcore::UTF8String Path() const
    {
        if (!path_.empty()) {
            return path_;
        }
        // At each send: a host may set it when this object is made already.
        const auto named = orvcore::ReadEnvironment(kBrokerVariable);
        return named && !named->empty() ? *named : DefaultBrokerPath();
    }

    const orvcore::UTF8String path_;
    const std::chrono::milliseconds timeout_;
};

} // namespace

std::shared_ptr<ITarskTransport> MakeBrokerTransport(orvcore::UTF8String path, std::chrono::milliseconds timeout)
{
    return std::make_shared<BrokerTransport>(std::move(path), timeout);
}

} // namespace orvtarsksupport
