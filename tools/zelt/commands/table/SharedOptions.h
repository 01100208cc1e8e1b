#pragma once

#include <tools/zelt/commandline/Command.h>
#include <tools/zelt/output/Written.h>
#include <tools/zelt/support/PackageList.h>

/// Options that several commands take.
namespace zelt {

/// `--json`. @param fact  what the object tells: "the number of files"
void AddJSON(Command& command, WriteForm& form, const std::string& fact);
void AddNoClobber(Command& command, WriteForm& form);
void AddPackages(Command& command, PackageList& packages);

} // namespace zelt
