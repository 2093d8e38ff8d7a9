# Writes a source file that carries files: cmake -D FILES=a;b -D OUTPUT=x.cpp -P EmbedPage.cmake
set(types_html "text/html; charset=utf-8")
set(types_css "text/css; charset=utf-8")
set(types_js "text/javascript; charset=utf-8")
set(types_svg "image/svg+xml")

set(arrays "")
set(rows "")
set(number 0)
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  string(REGEX MATCH "[a-z]+$" kind ${name})
  if(NOT DEFINED types_${kind})
    message(FATAL_ERROR "${file}: of what type is it?")
  endif()
  file(READ ${file} hex HEX)
  string(REGEX REPLACE "(................................................................)" "\\1\"\n    \"" hex "${hex}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" hex "${hex}")
  file(SIZE ${file} size)
  string(APPEND arrays "constexpr std::string_view kFile${number}{\n    \"${hex}\",\n    ${size}};\n")
  string(APPEND rows "    {\"${name}\", \"${types_${kind}}\", kFile${number}},\n")
  math(EXPR number "${number} + 1")
endforeach()

file(WRITE ${OUTPUT} "#include \"virtual_printer/web/page_files.h\"

namespace marbex::virtual_printer {
namespace {

${arrays}
constexpr PageFile kFiles[] = {
${rows}};

}  // namespace

std::optional<PageFile> FindPageFile(std::string_view name)
{
    for (const PageFile& file : kFiles) {
        if (file.name == name) {
            return file;
        }
    }
    return std::nullopt;
}

}  // namespace marbex::virtual_printer
")
