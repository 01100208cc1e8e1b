#include <orvtarsksupport/shared/Machine.h>

#include <orvcore/files/Files.h>
#include <orvcore/host/shared/Environment.h>
#include <orvtarsksupport/detail/Registry.h>

// The search for an installed program asks through these three functions, so that tests can give it machines that they
// have made up: with a registry on Linux, without one on Windows.

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
