#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>

namespace zelt {

std::vector<Command> SuiteCommands()
{
    return {
        Define("broker", "Take suite messages and print each as a JSON object, for development", &RunBroker,
               [](Command& command, BrokerOptions& options) {
                   command.Option("--listen PATH", options.path, "Socket, or pipe on Windows").isRequired = true;
                   command.Option("--messages COUNT", options.messages, "End after so many messages");
                   command.Example("broker --listen /run/user/1000/orv-broker/broker.sock",
                                   "print what other programs send");
               }),
    };
}

} // namespace zelt
