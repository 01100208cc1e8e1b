#include <validation/MediaContent.h>

#include <orvstorage/ZipEntry.h>

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
