#include <fontusage/detail/BrokerLookup.h>

#include <string_view>

// The places in their order: the 32-bit common files, the common files, the registry. A host may start what is found,
// so a path counts only when it names the broker's file and that file exists.
//
// `machine` stands for the system, so that all places can be tried on a system without a registry.

namespace orvcapsule::detail {

namespace {

using orvcore::UTF16String;
using orvtarsksupport::Machine;
using orvtarsksupport::RegistryText;
using Status = BrokerLocation::Status;

constexpr std::u16string_view kFallbackFolder = u"C:\\Program Files\\Common Files";
constexpr std::u16string_view kSuffix = u"\\Ambrel\\Ambrel Desktop Common\\Pipebay\\AmbrelIPCBroker.exe";
constexpr std::u16string_view kExecutable = u"AmbrelIPCBroker.exe";
constexpr std::u16string_view kKey = u"SOFTWARE\\Ambrel\\Tarsk\\5.0";
constexpr std::u16string_view kValue = u"AmbrelIPCBroker";

// Whether the name behind the last separator of either kind is the broker's. A name without a folder is none: it would
// lead to whatever lies in the working folder.
bool IsBrokerPath(std::u16string_view path)
{
    for (const char16_t separator : {u'\\', u'/'}) {
        const std::size_t last = path.rfind(separator);
        if (last != path.npos && path.substr(last + 1) == kExecutable) {
            return true;
        }
    }
    return false;
}

BrokerLocation Judge(const Machine& machine, UTF16String path)
{
    if (IsBrokerPath(path) && machine.isFile(path)) {
        return {Status::Found, std::move(path)};
    }
    return {};
}

BrokerLocation InRegistry(const Machine& machine)
{
    RegistryText read = machine.registryText(UTF16String(kKey), UTF16String(kValue));
    switch (read.outcome) {
    case RegistryText::Outcome::Text:
        return Judge(machine, std::move(read.text));
    case RegistryText::Outcome::Unusable:
        return {Status::BadRegistryValue, {}};
    case RegistryText::Outcome::Missing:
        break;
    }
    return {};
}

} // namespace

BrokerLocation FindBroker(const Machine& machine)
{
    for (const char* variable : {"CommonProgramFiles(x86)", "CommonProgramFiles"}) {
        const UTF16String folder = machine.environment(variable).value_or(UTF16String(kFallbackFolder));
        BrokerLocation found = Judge(machine, folder + UTF16String(kSuffix));
        if (found.status == Status::Found) {
            return found;
        }
    }
    return InRegistry(machine);
}

} // namespace orvcapsule::detail
