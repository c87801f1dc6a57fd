// The files of the page, which are part of the program.
#pragma once

#include <span>
#include <string_view>

namespace desk {

struct PageFile {
  std::string_view name;
  std::string_view type;  // of its content, for a browser
  std::string_view text;
};

// Those of desk/page/files, made by embed.cmake.
std::span<const PageFile> PageFiles();

}  // namespace desk
