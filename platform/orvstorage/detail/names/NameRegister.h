#pragma once

#include <orvstorage/ZipFailure.h>

#include <string_view>
#include <unordered_map>

namespace orvstorage::detail {

/// Notices names that could not all become files of their own: the same name twice, names that differ only in case,
/// a file where another name needs a folder. The same on systems where case counts.
class NameRegister {
public:
    /// Enters a relative path; the first comer keeps the place.
    ZipError Enter(std::u8string_view relative, bool isDirectory);

private:
    struct Taken {
        orvcore::UTF8String spelling;
        bool isDirectory;
    };
    ZipError EnterOne(std::u8string_view relative, bool isDirectory, bool isParent);

    std::unordered_map<std::u8string, Taken> taken_; // by the name without case
};

} // namespace orvstorage::detail
