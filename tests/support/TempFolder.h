#pragma once

#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace test {

/// A path in a test. Narrow text is UTF-8 here on every system; `std::filesystem` would read it in the machine's code
/// page.
class Name : public std::filesystem::path {
public:
    Name(const char* text)
        : Name(std::string(text))
    {
    }
    Name(const std::string& text)
        : std::filesystem::path(orvcore::PathFromUTF8(orvcore::AsUTF8(text)))
    {
    }
    Name(const std::filesystem::path& other)
        : std::filesystem::path(other)
    {
    }
};

/// A folder of the test's own, gone at the end of its scope.
class TempFolder : public orvcore::TemporaryFolder {
public:
    TempFolder()
        : TemporaryFolder(u8"orvcapsule-tests")
    {
    }
    std::filesystem::path operator/(const Name& name) const
    {
        return Path() / name;
    }
    /// Writes a file, making its folders.
    void Write(const Name& name, const std::string& content) const
    {
        orvcore::EnsureDirectory((Path() / name).parent_path());
        std::ofstream(orvcore::ToSystemPath(Path() / name), std::ios::binary) << content;
    }
    /// A file's content; "(missing)" when there is none.
    std::string Read(const Name& name) const
    {
        return orvcore::IsFile(Path() / name) ? orvcore::ReadWholeFile(Path() / name) : "(missing)";
    }
    /// The relative names of all files and empty folders below, slash separated, in order.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Path())) {
            if (!entry.is_directory() || std::filesystem::is_empty(entry.path())) {
                const auto name = entry.path().lexically_relative(Path()).generic_u8string();
                names.push_back(orvcore::ToNarrow(name) + (entry.is_directory() ? "/" : ""));
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

} // namespace test
