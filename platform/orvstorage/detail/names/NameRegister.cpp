#include <orvstorage/detail/names/NameRegister.h>

#include <orvstorage/shared/EntryName.h>

#include <algorithm>

// Names are kept folded to one case, each part under its folder. Two spellings of one folder clash as two files do: on
// Windows "Images/a" and "images/b" would be unpacked into one folder, elsewhere into two, and packed again the archive
// would be another one.

namespace orvstorage::detail {

ZipError NameRegister::EnterOne(Tree::Node& node, std::u8string_view name, bool isDirectory, bool isParent)
{
    const orvcore::UTF8String folded = FoldCase(name);
    // `taken_` grows with the tree: a node's number less one is its place there.
    const auto found = names_.Find(node, folded);
    if (!found) {
        // What was entered stays, also when the rest of the name is refused: the limits count what an archive asks for.
        folders_ += isDirectory ? 1 : 0;
        node = names_.Add(node, folded);
        taken_.push_back({orvcore::UTF8String(name), isDirectory});
        return folders_ > limits_.maxFolders ? ZipError::TooManyEntries : ZipError::None;
    }
    node = *found;
    const Taken& taken = taken_[node - 1];
    if (taken.spelling != name || taken.isDirectory != isDirectory) {
        return ZipError::NameClash;
    }
    // A folder is met once for each entry in it, and once as an entry of its own. Only a file that comes again is one
    // too many.
    return isParent || isDirectory ? ZipError::None : ZipError::DuplicateName;
}

ZipError NameRegister::Enter(std::u8string_view relative, bool isDirectory)
{
    const auto slashes = static_cast<std::uint64_t>(std::count(relative.begin(), relative.end(), u8'/'));
    // Asked first, and by counting: a name of a thousand folders must not enter a thousand nodes before it is refused.
    if (slashes + (isDirectory ? 1 : 0) > limits_.maxDepth) {
        return ZipError::TooDeep;
    }
    Tree::Node node = Tree::kRoot;
    std::size_t begin = 0;
    for (std::size_t slash = relative.find(u8'/'); slash != std::u8string_view::npos;
         slash = relative.find(u8'/', begin)) {
        const ZipError error = EnterOne(node, relative.substr(begin, slash - begin), true, true);
        if (error != ZipError::None) {
            return error;
        }
        begin = slash + 1;
    }
    return EnterOne(node, relative.substr(begin), isDirectory, false);
}

} // namespace orvstorage::detail
