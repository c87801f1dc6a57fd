// Scripts that run once for each of several kinds of board: what differs stands side by side.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace script {

// The names behind `variants`, none when the line is another. Throws Malformed.
std::vector<std::string> VariantNames(const std::string& line);

// The line as it reads for one of the variants: of each `{a|b}` its alternative, and of `only NAME
// LINE` the line, or nothing when it is for another. Throws Malformed.
std::string LineOfVariant(const std::string& line, std::span<const std::string> variants,
                          std::size_t which);

}  // namespace script
