// What a mistyped word may have been meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace script {

// "; did you mean a or b?" with the candidates next to a mistyped word, empty when none is near.
std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace script
