#pragma once

#include <tools/zelt/support/Interrupt.h>

#include <sources/CapsuleEntry.h>

#include <filesystem>
#include <string>
#include <vector>

namespace zelt {

/// A changed template that the page wants stored.
struct SaveRequest {
    struct Text {
        std::string locale;
        std::string text;
    };
    struct Value {
        std::string control;
        std::string locale; ///< of a text
        std::string value;  ///< in the form that `zelt set` takes
    };

    std::uint64_t id = 0;
    bool replace = false; ///< the original itself
    std::string file;     ///< else the copy's name, without a folder; ".zelt" is added when it is not there
    std::vector<Text> names;
    std::vector<Value> controls;
};

/// Reads what a page has sent. @throws UsageError  when it is not such a request
SaveRequest ReadSaveRequest(const std::string& body);

/// The folder for copies of a template: its own, and for one of a cloud library the first that is listed; empty when
/// there is none.
std::filesystem::path CopyFolderOf(const orvcapsule::CapsuleEntry& entry, const std::vector<std::string>& folders);
/// A name for a copy that is free in the folder.
std::string FreeCopyName(const orvcapsule::CapsuleEntry& entry, const std::filesystem::path& folder);

/// Makes all changes in the template's document and stores it, every other byte of the package as it was, in place of
/// the original or as a new file, which takes no other file's place.
/// @return the path that was written
/// @throws UsageError  that tells every change that cannot be made, or what is wrong with the name; FileError,
///         Cancelled
std::filesystem::path Save(const orvcapsule::CapsuleEntry& entry, const SaveRequest& request,
                           const std::vector<std::string>& folders, const InterruptWatch& interrupt);

} // namespace zelt
