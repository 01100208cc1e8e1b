#include <package/DefinitionFile.h>

#include <orvcore/files/Files.h>
#include <orvcore/json/JSON.h>

namespace orvcapsule {

orvcore::UTF8String GetJsonContent(const orvcore::UTF8String& path)
{
    constexpr std::uint64_t kLargest = 8 * orvcore::serialization::kMaxJSONSize;
    std::error_code ignored; // then the text is empty, as it is promised
    return orvcore::ToUTF8(orvcore::ReadWholeFile(orvcore::PathFromUTF8(path), kLargest, ignored));
}

} // namespace orvcapsule
