#include <orvcore/files/detail/WindowsError.h>

#include <windows.h>

#include <algorithm>
#include <iterator>

// Callers compare with std::errc and show the message to people. The system's own category does neither alike on all
// systems: its numbers are equal to std::errc only where a standard library maps them, and its words come in the user's
// language. A number without a row keeps the system's category; no code compares with it.

namespace orvcore::detail {

namespace {

struct Row {
    DWORD system;
    std::errc portable;
};

constexpr Row kRows[] = {
    {ERROR_FILE_NOT_FOUND, std::errc::no_such_file_or_directory},
    // Five more ways to say that nothing is there: a folder on the way is missing, the name is one that no file can
    // have, or the disk or the server is not there. To callers all mean the same.
    {ERROR_PATH_NOT_FOUND, std::errc::no_such_file_or_directory},
    {ERROR_INVALID_NAME, std::errc::no_such_file_or_directory},
    {ERROR_BAD_PATHNAME, std::errc::no_such_file_or_directory},
    {ERROR_BAD_NETPATH, std::errc::no_such_file_or_directory},
    {ERROR_INVALID_DRIVE, std::errc::no_such_file_or_directory},
    {ERROR_ACCESS_DENIED, std::errc::permission_denied},
    {ERROR_SHARING_VIOLATION, std::errc::permission_denied},
    {ERROR_LOCK_VIOLATION, std::errc::permission_denied},
    {ERROR_WRITE_PROTECT, std::errc::read_only_file_system},
    {ERROR_FILE_EXISTS, std::errc::file_exists},
    {ERROR_ALREADY_EXISTS, std::errc::file_exists},
    {ERROR_DIRECTORY, std::errc::not_a_directory},
    {ERROR_DIR_NOT_EMPTY, std::errc::directory_not_empty},
    {ERROR_DISK_FULL, std::errc::no_space_on_device},
    {ERROR_HANDLE_DISK_FULL, std::errc::no_space_on_device},
    {ERROR_FILENAME_EXCED_RANGE, std::errc::filename_too_long},
    {ERROR_BUFFER_OVERFLOW, std::errc::filename_too_long},
    {ERROR_TOO_MANY_OPEN_FILES, std::errc::too_many_files_open},
    {ERROR_NOT_ENOUGH_MEMORY, std::errc::not_enough_memory},
    {ERROR_OUTOFMEMORY, std::errc::not_enough_memory},
    {ERROR_NOT_SAME_DEVICE, std::errc::cross_device_link},
    {ERROR_CANT_RESOLVE_FILENAME, std::errc::too_many_symbolic_link_levels},
    {ERROR_INVALID_PARAMETER, std::errc::invalid_argument},
};

} // namespace

std::error_code LastWindowsError()
{
    const DWORD code = ::GetLastError();
    const Row* row = std::find_if(std::begin(kRows), std::end(kRows),
                                  [code](const Row& candidate) { return candidate.system == code; });
    if (row == std::end(kRows)) {
        return {static_cast<int>(code), std::system_category()};
    }
    return std::make_error_code(row->portable);
}

} // namespace orvcore::detail
