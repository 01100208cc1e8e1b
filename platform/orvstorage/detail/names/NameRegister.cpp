#include <orvstorage/detail/names/NameRegister.h>

#include <orvstorage/detail/names/EntryName.h>

namespace orvstorage::detail {

ZipError NameRegister::EnterOne(std::u8string_view relative, bool isDirectory, bool isParent)
{
    const auto [at, isNew] = taken_.try_emplace(FoldCase(relative), Taken{orvcore::UTF8String(relative), isDirectory});
    if (isNew) {
        return ZipError::None;
    }
    if (at->second.spelling != relative || at->second.isDirectory != isDirectory) {
        return ZipError::NameClash;
    }
    return isParent || isDirectory ? ZipError::None : ZipError::DuplicateName;
}

ZipError NameRegister::Enter(std::u8string_view relative, bool isDirectory)
{
    for (std::size_t slash = relative.find(u8'/'); slash != std::u8string_view::npos;
         slash = relative.find(u8'/', slash + 1)) {
        if (const ZipError error = EnterOne(relative.substr(0, slash), true, true); error != ZipError::None) {
            return error;
        }
    }
    return EnterOne(relative, isDirectory, false);
}

} // namespace orvstorage::detail
