# cmake -DFOLDER=... -DOUTPUT=... -P EmbedPage.cmake: writes a source that has every file of the page in it.
file(GLOB_RECURSE files RELATIVE ${FOLDER} ${FOLDER}/*)
list(SORT files)
set(arrays "")
set(rows "")
set(number 0)
foreach(name IN LISTS files)
  file(READ ${FOLDER}/${name} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "constexpr unsigned char kFile${number}[] = {${bytes}0};\n")
  string(APPEND rows "    {\"${name}\", {reinterpret_cast<const char*>(kFile${number}), sizeof kFile${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "#include \"simulator/server/PageFiles.h\"

namespace simulator {
namespace {

${arrays}
struct File {
  std::string_view name, content;
};
const File kFiles[] = {
${rows}    {},
};

}  // namespace

std::string_view pageFileNamed(std::string_view name) {
  for (const File& file : kFiles) {
    if (!name.empty() && file.name == name) return file.content;
  }
  return {};
}

}  // namespace simulator
")
