# Writes a C++ source that holds the files of a folder:
#   cmake -DFOLDER=... -DOUT=... "-DFILES=a;b" -P EmbedFiles.cmake
set(arrays "")
set(rows "")
set(number 0)
foreach(file IN LISTS FILES)
  file(READ "${FOLDER}/${file}" hex HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "(................................................................................)" "\\1\n" bytes "${bytes}")
  string(APPEND arrays "const unsigned char kFile${number}[] = {\n${bytes}0};\n")
  string(APPEND rows "    {\"${file}\", {reinterpret_cast<const char*>(kFile${number}), sizeof kFile${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUT}" "#include <tools/zelt/panel/PageFiles.h>

namespace zelt {

namespace {

${arrays}
const PageFile kFiles[] = {
${rows}};

} // namespace

std::span<const PageFile> PageFiles() noexcept
{
    return kFiles;
}

} // namespace zelt
")
