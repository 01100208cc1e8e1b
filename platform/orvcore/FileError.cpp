#include <orvcore/FileError.h>

#include <string>

namespace orvcore {

namespace {

class FileErrorCategory : public std::error_category {
public:
    const char* name() const noexcept override
    {
        return "orvcore file";
    }
    std::string message(int value) const override
    {
        return static_cast<FileError>(value) == FileError::EmptyPath ? "its path is empty" : "it is not a regular file";
    }
};

} // namespace

std::error_code make_error_code(FileError error) noexcept
{
    static const FileErrorCategory category;
    return {static_cast<int>(error), category};
}

} // namespace orvcore
