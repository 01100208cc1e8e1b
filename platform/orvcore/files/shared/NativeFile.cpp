#include <orvcore/files/shared/NativeFile.h>

#include <utility>

namespace orvcore::detail {

NativeFile::NativeFile(NativeFile&& other) noexcept
    : handle_(std::exchange(other.handle_, kNoHandle))
{
}

NativeFile& NativeFile::operator=(NativeFile&& other) noexcept
{
    std::swap(handle_, other.handle_);
    return *this;
}

NativeFile::~NativeFile()
{
    std::error_code ignored;
    Close(ignored);
}

} // namespace orvcore::detail
