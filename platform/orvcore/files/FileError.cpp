#include <orvcore/files/FileError.h>
#include <orvcore/tasks/shared/NoDestructor.h>

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
        switch (static_cast<FileError>(value)) {
        case FileError::EmptyPath:
            return "its path is empty";
        case FileError::NotARegularFile:
            return "it is not a regular file";
        case FileError::LinkToNothing:
            return "it is a link that leads nowhere";
        case FileError::OutsideTarget:
            return "a link in the target folder would lead it elsewhere";
        }
        return "unknown";
    }
};

} // namespace

std::error_code make_error_code(FileError error) noexcept
{
    // Error codes point at their category, and a worker may look at one while the process exits.
    static NoDestructor<FileErrorCategory> category;
    return {static_cast<int>(error), *category};
}

} // namespace orvcore
