#include <package/DefinitionFile.h>

#include <orvcore/files/Files.h>
#include <orvcore/json/JSON.h>

namespace orvcapsule {

orvcore::UTF8String GetJsonContent(const orvcore::UTF8String& path)
{
    // There must be a limit, because the path may come from a library's manifest and lead to a file of any size.
    constexpr std::uint64_t kLargest = 8 * orvcore::serialization::kMaxJSONSize;
    std::error_code ignored; // then the text is empty, as it is promised
    const std::string content = orvcore::ReadWholeFile(orvcore::PathFromUTF8(path), kLargest, ignored);
    orvcore::UTF8String text;
    text.reserve(content.size() + orvcore::serialization::kJSONTextRoom);
    text.append(orvcore::AsUTF8(content));
    return text;
}

} // namespace orvcapsule
