#include <orvtarsksupport/TarskTransport.h>

#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvtarsksupport/BrokerTransport.h>

#include <mutex>

namespace orvtarsksupport {

namespace {

struct Current {
    std::mutex mutex;
    std::shared_ptr<ITarskTransport> transport;
};

Current& GetCurrent()
{
    // A task may send while the process exits.
    static orvcore::NoDestructor<Current> current;
    return *current;
}

} // namespace

ITarskTransport::~ITarskTransport() = default;

// Each stands behind words of the caller's, like "not delivered: ", hence the small letters.
std::string TarskResult::Message() const
{
    switch (status) {
    case TarskStatus::Delivered:
        return "delivered";
    case TarskStatus::NoBroker:
        return "no broker listens";
    case TarskStatus::UnsafeFolder:
        return "the folder of the broker's socket belongs to another user, or others may write there";
    case TarskStatus::ForeignBroker:
        return "what listens at the broker's place does not belong to this user";
    case TarskStatus::TimedOut:
        return "the broker took too long";
    case TarskStatus::BrokenOff:
        return "the broker closed the connection before the end";
    case TarskStatus::BadReply:
        return "the broker's answer is too long or not UTF-8";
    case TarskStatus::BadMessage:
        return "the message cannot be sent: a name, a key or a value has no form in XML, or it is too long";
    case TarskStatus::Failed:
        break;
    }
    return cause ? cause.message() : "the message could not be sent";
}

void SetTarskTransport(std::shared_ptr<ITarskTransport> transport)
{
    Current& current = GetCurrent();
    {
        const std::lock_guard lock(current.mutex);
        current.transport.swap(transport);
    }
    // The old one goes here, outside the lock: its destructor is the host's code.
}

// A share of it: the send that begins now keeps its transport, whatever is installed meanwhile.
std::shared_ptr<ITarskTransport> GetTarskTransport()
{
    Current& current = GetCurrent();
    const std::lock_guard lock(current.mutex);
    // When it is first asked for: a host that sets its own never has the embedded one.
    if (!current.transport) {
        current.transport = MakeBrokerTransport();
    }
    return current.transport;
}

} // namespace orvtarsksupport
