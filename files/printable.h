// Text from files and command lines, as a terminal may have it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace files {

// The text with \xHH for each byte that is no UTF-8 and each control byte but the tab. Of what is
// longer than `most` bytes the beginning, and "...".
std::string Printable(std::string_view text, std::size_t most = 200);

// The same for each line of a text of several.
std::string PrintableLines(std::string_view text, std::size_t most = 200);

}  // namespace files
