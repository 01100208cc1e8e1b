// Any text: the definition reader must not crash or hang, may only raise what its header names, and what it read must
// be written as a text that reads as the same again. What a listing reads of it is the same, or refused for the same
// reason.
#include <capsule/Serialization.h>
#include <capsule/shared/ListedCapsule.h>

#include <tests/support/ShownDefinition.h>

#include <cstdio>
#include <cstdlib>

namespace {

using orvcapsule::UTF8String;
namespace serialization = orvcapsule::serialization;
namespace json = orvcore::serialization;

[[noreturn]] void Fail(const char* what, const UTF8String& first, const UTF8String& second)
{
    std::fprintf(stderr, "%s\n1: %s\n2: %s\n", what, orvcore::ToNarrow(first).c_str(),
                 orvcore::ToNarrow(second).c_str());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const UTF8String text(data, data + size);
    const UTF8String whole = orvtest::ShownDefinition([&] { return serialization::CapsuleFromJson(text); });
    const UTF8String listed = orvtest::ShownDefinition([&] { return serialization::ListedCapsuleFromJson(text); });
    if (whole != listed) {
        Fail("a listing reads another template", whole, listed);
    }
    std::shared_ptr<orvcapsule::Capsule> capsule;
    try {
        capsule = serialization::CapsuleFromJson(text);
    } catch (const json::missing_key_exception&) {
        return 0;
    }
    if (!capsule) {
        return 0;
    }
    UTF8String written;
    try {
        written = serialization::CapsuleToJson(capsule);
    } catch (const json::json_write_exception&) { // keys of an older form that lie deeper in the newer one
        return 0;
    }
    const auto again = serialization::CapsuleFromJson(written);
    const UTF8String rewritten = again ? serialization::CapsuleToJson(again) : UTF8String();
    if (rewritten != written) {
        Fail("a definition does not read as it was written", written, rewritten);
    }
    return 0;
}
