#pragma once

#include <orvcore/files/shared/PathTree.h>
#include <orvstorage/ZipFailure.h>
#include <orvstorage/ZipLimits.h>

#include <string_view>
#include <vector>

namespace orvstorage::detail {

/// Notices names that could not all become files of their own: the same name twice, names that differ only in case,
/// a file where another name needs a folder. The same on systems where case counts. Holds the limits on folders, too:
/// an entry's name costs a byte or two for each folder that it leads through.
class NameRegister {
public:
    explicit NameRegister(const ZipLimits& limits)
        : limits_(limits)
    {
    }

    /// Enters a relative path; the first comer keeps the place.
    ZipError Enter(std::u8string_view relative, bool isDirectory);

private:
    using Tree = orvcore::detail::PathTree<char8_t>;
    struct Taken {
        orvcore::UTF8String spelling; ///< of the last part
        bool isDirectory;
    };
    ZipError EnterOne(Tree::Node& node, std::u8string_view name, bool isDirectory, bool isParent);

    const ZipLimits& limits_;
    Tree names_;               // without case
    std::vector<Taken> taken_; // by the number of a name's node
    std::uint64_t folders_ = 0;
};

} // namespace orvstorage::detail
