#include <package/DefinitionFile.h>

#include <orvcore/files/Files.h>
#include <orvcore/json/JSON.h>

namespace orvcapsule {

orvcore::UTF8String GetJsonContent(const orvcore::UTF8String& path)
{
    constexpr std::uint64_t kLargest = 8 * orvcore::serialization::kMaxJSONSize;
    const auto content = orvcore::ReadWholeFile(orvcore::PathFromUTF8(path), kLargest);
    return content ? orvcore::ToUTF8(*content) : orvcore::UTF8String();
}

} // namespace orvcapsule
