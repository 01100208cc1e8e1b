#include <tools/zelt/output/Output.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Paths.h>
#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/text/Printable.h>
#include <tools/support/Console.h>

#include <algorithm>
#include <fstream>

// Standard output may be shared with other programs (`xargs -P`, `make -j`), so it is written in whole lines and past
// the C library's buffer. A failure is remembered and told at the end by FlushOutput: a full disk or a closed pipe must
// not look like success. One thread at a time writes.

namespace zelt {

namespace {

// Lines that wait to be written. The C library's buffer would be written wherever it is full, in the middle of a line,
// where another program that shares the stream may put its own.
std::string waiting;
std::size_t enough = std::size_t{64} << 10; // what is worth a call of the system
bool isGood = true;

void WriteWaiting(std::size_t size)
{
    const std::string_view text(waiting.data(), size);
    isGood = isGood && orvtools::WriteLines(orvtools::StandardStream::Output, text);
    waiting.erase(0, size);
}

} // namespace

void InitOutput()
{
    if (orvtools::IsTerminal(orvtools::StandardStream::Output)) {
        enough = 1; // a person who reads along sees each line at once
    }
    orvtools::SetBinary(orvtools::StandardStream::Output);
    orvtools::SetBinary(orvtools::StandardStream::Error);
    orvtools::SetConsoleUTF8();
}

void Print(std::string_view text)
{
    waiting += text;
    if (waiting.size() >= enough) {
        // A line that is not complete waits for its end.
        WriteWaiting(waiting.rfind('\n') + 1);
    }
}

void PrintLine(std::string_view text)
{
    Print(text);
    Print("\n");
}

bool PrintFile(const std::filesystem::path& file)
{
    std::ifstream stream(orvcore::ToSystemPath(file), std::ios::binary);
    std::string piece(std::size_t{64} << 10, '\0');
    bool isWritten = stream.is_open() && FlushOutput();
    while (isWritten && stream.read(piece.data(), static_cast<std::streamsize>(piece.size())).gcount() > 0) {
        const std::string_view bytes(piece.data(), static_cast<std::size_t>(stream.gcount()));
        isWritten = orvtools::WriteLines(orvtools::StandardStream::Output, bytes);
    }
    return isWritten && !stream.bad();
}

bool FlushOutput()
{
    WriteWaiting(waiting.size());
    return isGood;
}

std::string Printable(std::string_view text)
{
    return orvcore::Printable(text);
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

void WritePath(orvcore::serialization::JSONTextWriter& writer, std::string_view key, std::string_view path)
{
    writer.Key(key);
    writer.String(path);
    if (orvcore::IsWellFormedUTF8(path)) {
        return;
    }
    std::string digits;
    for (const char byte : path) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        digits += kDigits[static_cast<unsigned char>(byte) >> 4U];
        digits += kDigits[static_cast<unsigned char>(byte) & 0xFU];
    }
    writer.Key(std::string(key) + "Bytes");
    writer.String(std::string_view(digits));
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
    // "a/link/.." is not "a" where the link leads elsewhere, so ".." is never taken away by the rules of texts.
    if (std::find(full.begin(), full.end(), "..") == full.end()) {
        return full.lexically_normal();
    }
    return orvcore::RealPath(full);
}

std::string ToText(const std::filesystem::path& path)
{
    return orvcore::ToNarrow(orvcore::PathToUTF8(path));
}

} // namespace zelt
