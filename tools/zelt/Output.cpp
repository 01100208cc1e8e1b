#include "Output.h"

#include <orvcore/CommandLine.h>
#include <orvcore/Console.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Paths.h>
#include <orvcore/json/JSONTextWriter.h>

#include <algorithm>
#include <cstdio>

namespace zelt {

void InitOutput()
{
    orvcore::SetBinary(orvcore::StandardStream::Output);
    orvcore::SetBinary(orvcore::StandardStream::Error);
    orvcore::SetConsoleUTF8();
}

void Print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintLine(std::string_view text)
{
    Print(text);
    Print("\n");
}

bool FlushOutput()
{
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

std::string Printable(std::string_view text)
{
    std::string safe;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0U;
        if (c < ' ' || c == 0x7F) {
            safe += '?';
        } else if (c == 0xC2 && next >= 0x80 && next < 0xA0) { // U+0080 to U+009F
            safe += '?';
            ++i;
        } else {
            safe += text[i];
        }
    }
    return safe;
}

std::string OneMember(std::string_view key, std::string_view text, bool json)
{
    if (!json) {
        return Printable(text);
    }
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    writer.Key(key);
    writer.String(text);
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

std::string Count(std::size_t number, const std::string& noun)
{
    return std::to_string(number) + ' ' +
           (number == 1 || !noun.ends_with('y') ? noun : noun.substr(0, noun.size() - 1)) +
           (number == 1           ? ""
            : noun.ends_with('y') ? "ies"
                                  : "s");
}

std::filesystem::path ToPath(std::string_view argument)
{
    return orvcore::PathFromUTF8(orvcore::AsUTF8(argument));
}

std::filesystem::path ToFullPath(std::string_view argument)
{
    const std::filesystem::path full = std::filesystem::absolute(ToPath(argument));
    if (std::find(full.begin(), full.end(), "..") == full.end()) {
        return full.lexically_normal();
    }
    std::error_code failed;
    std::filesystem::path real = orvcore::RealPath(full, failed);
    if (failed) {
        throw std::filesystem::filesystem_error("", full, failed);
    }
    return real;
}

std::string ToText(const std::filesystem::path& path)
{
    return orvcore::ToNarrow(orvcore::PathToUTF8(path));
}

} // namespace zelt
