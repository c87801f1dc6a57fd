// What one connection says: bytes to a greeting and lines. It knows no socket.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace desk {

enum class Wants : std::uint8_t {
  Nothing,    // answers alone
  Events,     // all but bus cycles
  AllEvents,  // bus cycles too
};

class Conversation {
 public:
  static constexpr std::size_t kLongestLine = 4096;  // bytes without its end

  struct Step {
    enum class Kind : std::uint8_t {
      Greeting,  // the first line, as it should be
      Line,      // to be run
      NoLine,    // to be refused; the text says why, and the connection goes on
      Over,      // nothing more is read; the text says why
    };
    Kind kind = Kind::Over;
    Wants wants = Wants::Nothing;  // Greeting
    std::uint64_t number = 0;      // Line, NoLine: counts from 1
    std::string line{};            // Line, NoLine
    std::string why{};             // NoLine, Over
  };

  // More bytes, when Next has none left to tell of.
  void Take(std::string_view bytes);
  // The next step that the bytes so far make, none without the end of a line.
  std::optional<Step> Next();
  // Greeted, and not over.
  bool Greeted() const { return greeted_ && !over_; }

 private:
  Step End(std::string why);
  Step Greet(std::string_view line);

  std::string bytes_;
  std::size_t begin_ = 0;  // of the line in bytes_ that is not read yet
  std::uint64_t lines_ = 0;
  bool greeted_ = false;
  bool over_ = false;
};

}  // namespace desk
