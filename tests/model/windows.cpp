#include "tests/model/windows.h"

#include <sstream>
#include <string>

namespace test {
namespace {

// "04 5A 01 3C; 5A B0 01 3C" and so on.
std::vector<Rect> ParseRects(const std::string& text) {
  std::vector<Rect> rects;
  std::istringstream in(text);
  std::string one;
  while (std::getline(in, one, ';')) {
    std::istringstream bytes(one);
    Rect rect{};
    for (int& byte : rect) bytes >> std::hex >> byte;
    rects.push_back(rect);
  }
  return rects;
}

std::vector<Rect> SixteenRects(const std::array<int, 5>& y) {
  constexpr std::array<int, 5> kX = {0x04, 0x2F, 0x5A, 0x85, 0xB0};
  std::vector<Rect> rects;
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      rects.push_back({kX[column], kX[column + 1], y[row], y[row + 1]});
    }
  }
  return rects;
}

constexpr std::array<const char*, 6> kNtsc = {
    "04 B0 01 77",
    "04 5A 01 3C; 5A B0 01 3C; 04 5A 3C 77; 5A B0 3C 77",
    "04 77 02 50; 77 B0 02 29; 77 B0 29 50; 04 3D 50 76; 3D 77 50 76; 77 B0 50 76",
    "04 85 02 59; 85 B0 02 1F; 85 B0 1F 3C; 85 B0 3C 59; 04 2F 59 76; 2F 5A 59 76; 5A 85 59 76; "
    "85 B0 59 76",
    "04 3D 02 29; 3D 77 02 29; 77 B0 02 29; 04 3D 29 50; 3D 77 29 50; 77 B0 29 50; 04 3D 50 76; "
    "3D 77 50 76; 77 B0 50 76",
    "2F 85 1F 59; 04 2F 02 1F; 2F 5A 02 1F; 5A 85 02 1F; 85 B0 02 1F; 04 2F 1F 3C; 85 B0 1F 3C; "
    "04 2F 3C 59; 85 B0 3C 59; 04 2F 59 76; 2F 5A 59 76; 5A 85 59 76; 85 B0 59 76"};

constexpr std::array<const char*, 6> kPal = {
    "04 B0 01 8E",
    "04 5A 02 48; 5A B0 02 48; 04 5A 48 8E; 5A B0 48 8E",
    "04 76 02 5F; 76 B0 02 31; 76 B0 31 5F; 04 3D 5F 8E; 3D 76 5F 8E; 76 B0 5F 8E",
    "04 85 02 6B; 85 B0 02 25; 85 B0 25 48; 85 B0 48 6B; 04 2F 6B 8E; 2F 5A 6B 8E; 5A 85 6B 8E; "
    "85 B0 6B 8E",
    "04 3D 02 31; 3D 76 02 31; 76 B0 02 31; 04 3D 31 5F; 3D 76 31 5F; 76 B0 31 5F; 04 3D 5F 8E; "
    "3D 76 5F 8E; 76 B0 5F 8E",
    "2F 85 25 6B; 04 2F 02 25; 2F 5A 02 25; 5A 85 02 25; 85 B0 02 25; 04 2F 25 48; 85 B0 25 48; "
    "04 2F 48 6B; 85 B0 48 6B; 04 2F 6B 8E; 2F 5A 6B 8E; 5A 85 6B 8E; 85 B0 6B 8E"};

}  // namespace

std::vector<Rect> DefaultRects(int mode, bool ntsc) {
  if (mode == 6) {
    return ntsc ? SixteenRects({0x02, 0x1F, 0x3C, 0x59, 0x76})
                : SixteenRects({0x02, 0x25, 0x48, 0x6B, 0x8E});
  }
  return ParseRects((ntsc ? kNtsc : kPal).at(static_cast<std::size_t>(mode)));
}

std::optional<Ratio> RatioOf(int code) {
  switch (code) {
    case 0:
      return Ratio{0xFF, 0xFF};  // whole
    case 1:
      return Ratio{0x7F, 0xFF};  // half
    case 2:
      return Ratio{0xAA, 0xAA};  // two thirds
    case 3:
      return Ratio{0xBF, 0xFD};  // three quarters
    case 4:
      return Ratio{0x55, 0x55};  // a third
    case 6:
      return Ratio{0x3F, 0xFF};  // a quarter
    default:
      return std::nullopt;
  }
}

Scaling ScalingOf(int mode, int window) {
  constexpr std::array<Scaling, 7> kLarge = {
      {{0, 0x0}, {1, 0x1}, {2, 0x0}, {3, 0x0}, {4, 0xA}, {1, 0x5}, {6, 0xF}}};
  constexpr std::array<Scaling, 7> kSmall = {
      {{0, 0x0}, {1, 0x1}, {4, 0xA}, {6, 0xF}, {4, 0xA}, {6, 0xF}, {6, 0xF}}};
  return (window == 0 ? kLarge : kSmall).at(static_cast<std::size_t>(mode));
}

DecodedWindow DecodedWindowOf(int mode, int window) {
  const bool large = window == 0;
  switch (mode) {
    case 0:
      return {{0xFF, 0xFF, 0xFF, 0xFF}, 0x00};
    case 1:
      return {{0xFE, 0xFF, 0xFF, 0xFF}, 0x00};
    case 2:
      if (large) return {{0xAA, 0xAA, 0xAA, 0xAA}, 0x00};
      return {{0x55, 0x55, 0x55, 0x55}, 0x05};
    case 3:
      if (large) return {{0xFF, 0xFF, 0xFF, 0xFF}, 0x00};
      return {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09};
    case 4:
      return {{0xAA, 0xAA, 0xAA, 0xAA}, 0x05};
    case 5:
      if (large) return {{0xFF, 0xFF, 0xFF, 0xFF}, 0x08};
      return {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09};
    default:
      return {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09};
  }
}

Rect FullPictureRect(bool ntsc) { return {0x00, 0xB4, 0x00, ntsc ? 0x78 : 0x90}; }

Rect CentredPictureRect(bool ntsc) { return {0x2C, 0x82, 0x1E, ntsc ? 0x58 : 0x64}; }

Rect PipInsetRect(bool ntsc) {
  return ntsc ? Rect{0x78, 0xA2, 0x4B, 0x69} : Rect{0x78, 0xA2, 0x59, 0x7C};
}

}  // namespace test
