#include <tools/zelt/support/OpenPackage.h>

#include <utility>

namespace zelt {

namespace {

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
