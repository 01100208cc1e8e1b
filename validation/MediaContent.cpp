#include <validation/MediaContent.h>

#include <orvstorage/ZipEntry.h>

// A look at the first bytes only, where each format has fixed ones: a PNG its signature and then the IHDR chunk, an MP4
// the type "ftyp" of its first box and behind that the brand. "qt  " is QuickTime's brand, whose files are no MP4. The
// files come from strangers, so nothing here decodes them.

namespace orvcapsule {

namespace {

bool Holds(std::string_view head, std::size_t at, std::string_view bytes)
{
    return head.size() >= orvstorage::kEntryHeadSize && head.substr(at, bytes.size()) == bytes;
}

} // namespace

bool IsPNG(std::string_view head) noexcept
{
    return Holds(head, 0, "\x89PNG\r\n\x1a\n") && Holds(head, 12, "IHDR");
}

bool IsMP4(std::string_view head) noexcept
{
    return Holds(head, 4, "ftyp") && !Holds(head, 8, "qt  ");
}

} // namespace orvcapsule
