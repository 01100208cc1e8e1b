#pragma once

#include <package/CapsuleZip.h>

#include <filesystem>
#include <string>

namespace zelt {

/// Sets the password of all packages that the program opens or makes; empty: none. Before the first one.
void SetPassword(std::string password);
const std::string& GetPassword();

/// @throws std::filesystem::filesystem_error as the class's constructor
orvcapsule::CapsuleZip OpenPackage(const std::filesystem::path& path);

} // namespace zelt
