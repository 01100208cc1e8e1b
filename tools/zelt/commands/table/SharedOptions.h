#pragma once

#include <tools/zelt/commandline/Command.h>
#include <tools/zelt/support/PackageList.h>

/// Options that several commands take.
namespace zelt {

void AddPackages(Command& command, PackageList& packages);

} // namespace zelt
