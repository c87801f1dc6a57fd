#include "script/grammar/did_you_mean.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "sim/text.h"

namespace script {
namespace {

// How many characters must be put in, taken out or changed to make one word of the other.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t change = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({change, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates) {
  constexpr std::size_t kMostChanges = 2;
  constexpr std::size_t kMostWords = 4;
  std::vector<std::pair<std::size_t, std::string_view>> near;
  for (const std::string_view candidate : candidates) {
    const std::size_t distance = Distance(word, candidate);
    // Short words are near to everything.
    if (distance <= kMostChanges && distance < std::min(word.size(), candidate.size())) {
      near.emplace_back(distance, candidate);
    }
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  if (near.empty()) return {};
  std::vector<std::string_view> words;
  for (const auto& [distance, candidate] : near) {
    if (words.size() < kMostWords) words.push_back(candidate);
  }
  return "; did you mean " + sim::OneOf(words) + '?';
}

}  // namespace script
