// Started by CTest with the arguments listed here: they must arrive as the same UTF-8 text on every system.
#include <orvcore/CommandLine.h>
#include <orvcore/text/Strings.h>

#include <cstdio>

int main(int argc, char** argv)
{
    const std::vector<std::string> got = orvcore::UTF8Arguments(argc, argv);
    const std::u8string_view expected[] = {u8"字幕 タイトル.zelt", u8"😀", u8"", u8"a\"b\\", u8"*.cpp", u8"Ärger"};
    bool same = got.size() == 1 + std::size(expected);
    for (std::size_t i = 1; same && i < got.size(); ++i) {
        same = orvcore::AsUTF8(got[i]) == expected[i - 1];
    }
    for (std::size_t i = 0; !same && i < got.size(); ++i) {
        std::printf("argument %zu: [%s]\n", i, got[i].c_str());
    }
    return same ? 0 : 1;
}
