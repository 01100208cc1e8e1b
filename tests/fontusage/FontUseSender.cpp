// Sends the font uses of a file, four values in hexadecimal digits and commas a line, from several threads at once.
// usage: font_use_sender FILE THREADS SECONDS    prints how often a send ended how, as "COUNT REASON" lines
#include <fontusage/FontUsageMessage.h>
#include <orvtarsksupport/BrokerTransport.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

namespace {

using namespace orvtarsksupport;

class Witness final : public ITarskTransport {
public:
    explicit Witness(std::chrono::seconds timeout)
        : transport_(MakeBrokerTransport({}, timeout))
    {
    }
    TarskResult Send(const TarskMessage& message, orvcore::UTF8String& reply) override
    {
        const TarskResult result = transport_->Send(message, reply);
        const std::lock_guard lock(mutex_);
        ++ends[result.Message()];
        return result;
    }
    std::map<std::string, int> ends;

private:
    const std::shared_ptr<ITarskTransport> transport_;
    std::mutex mutex_;
};

std::vector<orvcore::UTF8String> Values(const std::string& line)
{
    std::vector<orvcore::UTF8String> values;
    std::istringstream fields(line + ',');
    for (std::string field; std::getline(fields, field, ',');) {
        orvcore::UTF8String& value = values.emplace_back();
        for (std::size_t i = 0; i + 1 < field.size(); i += 2) {
            value += static_cast<char8_t>(std::strtol(field.substr(i, 2).c_str(), nullptr, 16));
        }
    }
    return values;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        return 2;
    }
    std::vector<std::vector<orvcore::UTF8String>> uses;
    std::ifstream file(argv[1]);
    for (std::string line; std::getline(file, line);) {
        uses.push_back(Values(line));
    }
    const auto witness = std::make_shared<Witness>(std::chrono::seconds(std::atoi(argv[3])));
    SetTarskTransport(witness);
    const auto count = static_cast<std::size_t>(std::atoi(argv[2]));
    std::vector<std::thread> threads;
    for (std::size_t first = 0; first < count; ++first) {
        threads.emplace_back([&, first] {
            for (std::size_t i = first; i < uses.size(); i += count) {
                orvcapsule::SendFontUsageMessage(uses[i].at(0), uses[i].at(1), uses[i].at(2), uses[i].at(3));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& [end, times] : witness->ends) {
        std::cout << times << ' ' << end << '\n';
    }
}
