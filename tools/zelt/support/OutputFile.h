#pragma once

#include <tools/zelt/output/Written.h>
#include <tools/zelt/support/Interrupt.h>

#include <orvcore/files/Files.h>

#include <filesystem>
#include <string>

namespace zelt {

/// Makes sure that a file may take the place of `to`: a folder, a device or a pipe is not replaced. @throws FileError
void NeedReplaceable(const std::filesystem::path& to);

/// Makes sure that nothing stands at `to` where the form asks for that. @throws FileError
void NeedFree(const std::filesystem::path& to, const WriteForm& form);

/// Copies a file and shows how far it is. On failure `to` is as it was.
/// @param what  what is being done, "writing"
/// @param interrupt  null: it is not cancelled
/// @throws Cancelled, std::filesystem::filesystem_error
void CopyWatched(const std::filesystem::path& from, const std::filesystem::path& to, orvcore::Durability durability,
                 const std::string& what, const InterruptWatch* interrupt);

/// Puts the content of a finished file at a path of the user's, whole and safe on the disk. Links are followed, and a
/// file that is replaced leaves its access rights to the new one.
/// @throws FileError, of what is not replaceable too, Cancelled
void PutInPlace(const std::filesystem::path& made, const std::filesystem::path& to, const InterruptWatch* interrupt);

/// As PutInPlace, once NeedFree agrees; tells of the file and how many bytes there are.
void Deliver(const std::filesystem::path& made, const std::filesystem::path& to, const WriteForm& form,
             const InterruptWatch* interrupt);

} // namespace zelt
