#include <tools/stock/detail/Previews.h>

#include <orvcore/files/Paths.h>
#include <package/CapsuleZip.h>
#include <validation/MediaContent.h>

#include <fstream>
#include <functional>

namespace orvtools::stock::detail {

namespace {

namespace fs = std::filesystem;
using orvcapsule::CapsuleZip;

// As big-endian numbers stand in pictures.
std::uint32_t NumberAt(const std::string& bytes, std::size_t at)
{
    std::uint32_t number = 0;
    for (std::size_t i = at; i < at + 4; ++i) {
        number = number << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return number;
}

// A file that is neither of the two pictures that clients take is none.
Preview LookAtPicture(const fs::path& file)
{
    constexpr std::size_t kHead = 24; // signature, the first chunk's length and name, width, height
    std::string head(kHead, '\0');
    std::ifstream(orvcore::ToSystemPath(file), std::ios::binary).read(head.data(), kHead);
    if (orvcapsule::IsPNG(head)) {
        return {file, "image/png", NumberAt(head, 16), NumberAt(head, 20)};
    }
    return head.starts_with("\xff\xd8\xff") ? Preview{file, "image/jpeg", 0, 0} : Preview{};
}

// Under the lock, extraction included: two requests for one preview must not write the same file at once. A template
// without one is remembered as well.
Preview Once(std::map<std::uint32_t, Preview>& known, const Template& content, const std::function<Preview()>& make)
{
    const auto found = known.find(content.number);
    return found != known.end() ? found->second : known.emplace(content.number, make()).first->second;
}

} // namespace

Previews::Previews()
    : folder_(u8"orvcapsule-stock")
{
}

Preview Previews::Poster(const Template& content)
{
    const std::lock_guard lock(mutex_);
    return Once(posters_, content, [&] {
        const fs::path file = folder_.Path() / (std::to_string(content.number) + ".png");
        return CapsuleZip(content.package).GetZELTThumbnailPNG(orvcore::PathToUTF8(file)) ? LookAtPicture(file)
                                                                                          : Preview{};
    });
}

Preview Previews::Video(const Template& content)
{
    const std::lock_guard lock(mutex_);
    return Once(videos_, content, [&] {
        const fs::path file = folder_.Path() / (std::to_string(content.number) + ".mp4");
        return CapsuleZip(content.package).GetZELTThumbnailVideo(orvcore::PathToUTF8(file))
                   ? Preview{file, "video/mp4", 0, 0}
                   : Preview{};
    });
}

} // namespace orvtools::stock::detail
