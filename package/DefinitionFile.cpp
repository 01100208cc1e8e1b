#include <package/DefinitionFile.h>

#include <orvcore/files/Files.h>
#include <orvcore/json/JSON.h>

namespace orvcapsule {

orvcore::UTF8String GetJsonContent(const orvcore::UTF8String& path)
{
    // There must be a limit, because the path may come from a library's manifest and lead to a file of any size.
    constexpr std::uint64_t kLargest = 8 * orvcore::serialization::kMaxJSONSize;
    std::error_code ignored; // then the text is empty, as it is promised
    return orvcore::ToUTF8(orvcore::ReadWholeFile(orvcore::PathFromUTF8(path), kLargest, ignored));
}

} // namespace orvcapsule
