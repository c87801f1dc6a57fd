# Makes a source file of the page's files: cmake -DOUTPUT=... -DFILES=A,B... -P embed.cmake
set(type_css "text/css; charset=utf-8")
set(type_html "text/html; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_svg "image/svg+xml")

set(texts "")
set(rows "")
string(REPLACE "," ";" files "${FILES}")
foreach(file ${files})
  get_filename_component(name ${file} NAME)
  get_filename_component(ending ${file} LAST_EXT)
  string(SUBSTRING "${ending}" 1 -1 ending)
  if(NOT DEFINED type_${ending})
    message(FATAL_ERROR "${file}: embed.cmake has no type for a file that ends in .${ending}")
  endif()
  # Without a look at what the bytes are: a compiler limits how long a text may be.
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(MAKE_C_IDENTIFIER "${name}" identifier)
  string(APPEND texts "constexpr unsigned char ${identifier}[] = {${bytes}};\n")
  string(APPEND rows "    {\"${name}\", \"${type_${ending}}\", Text(${identifier})},\n")
endforeach()

file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT [[
// Made by embed.cmake of the files of the page.
#include "desk/page/files.h"

#include <array>
#include <cstddef>

namespace desk {
namespace {

@texts@
template <std::size_t kBytes>
std::string_view Text(const unsigned char (&bytes)[kBytes]) {
  return {reinterpret_cast<const char*>(bytes), kBytes};
}

}  // namespace

std::span<const PageFile> PageFiles() {
  static const PageFile files[] = {
@rows@  };
  return files;
}

}  // namespace desk
]])
