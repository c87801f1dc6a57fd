// What two builds or two runs may say differently.
#pragma once

#include <string>
#include <string_view>

namespace vexosim {

// A text without the time of the build in the banner, as it was written or as JSON has it.
inline std::string WithoutBuildTime(std::string text) {
  constexpr std::string_view kBanner = ">> build : ";
  const std::size_t begin = text.find(kBanner);
  if (begin == std::string::npos) return text;
  const std::size_t end = text.find_first_of("\r\\", begin);
  if (end == std::string::npos) return text;
  return text.erase(begin + kBanner.size(), end - begin - kBanner.size());
}

// A text without the number of a thread.
inline std::string WithoutThreadNumber(std::string text) {
  constexpr std::string_view kThread = "[THREAD_ID 0x";
  const std::size_t begin = text.find(kThread);
  if (begin == std::string::npos) return text;
  const std::size_t end = text.find(']', begin);
  if (end == std::string::npos) return text;
  return text.erase(begin + kThread.size(), end - begin - kThread.size());
}

}  // namespace vexosim
