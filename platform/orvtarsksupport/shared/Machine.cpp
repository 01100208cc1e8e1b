#include <orvtarsksupport/shared/Machine.h>

#include <orvcore/files/Files.h>
#include <orvcore/host/shared/Environment.h>
#include <orvtarsksupport/detail/Registry.h>

namespace orvtarsksupport {

Machine ThisMachine()
{
    Machine machine;
    machine.environment = [](const std::string& name) {
        const auto value = orvcore::ReadEnvironment(name);
        return value ? std::optional(orvcore::ToUTF16(*value)) : std::nullopt;
    };
    machine.isFile = [](const orvcore::UTF16String& path) { return orvcore::IsFile(orvcore::PathFromUTF16(path)); };
    machine.registryText = [](const orvcore::UTF16String& key, const orvcore::UTF16String& value) {
        return detail::ReadRegistryText(key, value);
    };
    return machine;
}

} // namespace orvtarsksupport
