#include <tools/zelt/support/OpenPackage.h>

#include <utility>

namespace zelt {

namespace {

// Set once before the first package is opened; threads that open packages later only read it.
std::string thePassword;

} // namespace

void SetPassword(std::string password)
{
    thePassword = std::move(password);
}

const std::string& GetPassword()
{
    return thePassword;
}

orvcapsule::CapsuleZip OpenPackage(const std::filesystem::path& path)
{
    return orvcapsule::CapsuleZip(path, thePassword);
}

} // namespace zelt
