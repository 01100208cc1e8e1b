#pragma once

#include <tools/zelt/output/EntryOutput.h>
#include <tools/zelt/support/Interrupt.h>

#include <filesystem>
#include <string>
#include <vector>

namespace zelt {

/// Writes the page and everything it shows as files, for a web server or a shared disk: no program runs behind it, and
/// nothing of it tells where the packages lie on this machine. The folder appears whole or not at all. A missing or
/// empty one is filled, an earlier gallery is replaced, and anything else is refused.
/// @param folders  the full paths of the folders that were listed
/// @throws FileError, Cancelled
void WriteGallery(const Entries& entries, const std::vector<std::string>& folders, const std::filesystem::path& to,
                  const InterruptWatch& interrupt);

} // namespace zelt
