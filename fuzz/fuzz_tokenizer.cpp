// The tokenizer beside a plain model of it. The input is lines, each ended by a zero byte; the
// first byte of a line says how many tokens are asked for before the next line begins.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "text/tokenizer.h"

namespace {

constexpr const char* kSeparators = " ,\n";

// What is left of a line, as text.
class Model {
 public:
  void Start(const std::string& line) { rest_ = line; }

  std::optional<std::string> Next() {
    const std::size_t end = rest_.find_first_of(kSeparators);
    if (end == 0 || end == std::string::npos) {
      rest_.clear();
      return std::nullopt;
    }
    const std::string token = rest_.substr(0, end);
    rest_.erase(0, end + 1);
    return token;
  }

 private:
  std::string rest_;
};

void Compare(const char* token, const std::optional<std::string>& expected) {
  if ((token == nullptr) != !expected || (token != nullptr && *expected != token)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  g_tokenizer = {};
  Model model;
  Compare(VexoTok_Next(nullptr, kSeparators), model.Next());
  for (std::size_t i = 0; i < size;) {
    const unsigned calls = data[i++];
    std::string line;
    for (; i < size && data[i] != 0; ++i) {
      if (line.size() < kLineMax) line.push_back(static_cast<char>(data[i]));
    }
    ++i;
    model.Start(line);
    Compare(VexoTok_Next(line.c_str(), kSeparators), model.Next());
    for (unsigned k = 0; k < calls; ++k) Compare(VexoTok_Next(nullptr, kSeparators), model.Next());
  }
  return 0;
}
