#include "sim/screen/digits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>
#include <vector>

namespace sim {
namespace {

// Strokes lie in a box of 1 x 2 units; a cell adds half a stroke's width on each side.
struct Point {
  double x;
  double y;
};

using Stroke = std::vector<Point>;

constexpr double kStrokeHalf = 26;  // pixels
constexpr double kUnitX = kDigitWidth - 2 * kStrokeHalf - 2;
constexpr double kUnitY = (kDigitHeight - 2 * kStrokeHalf - 2) / 2;

// An arc from one angle to another in degrees; 0 is to the right, 90 is down.
Stroke Arc(Point center, double radius_x, double radius_y, double from, double to) {
  constexpr int kSteps = 20;
  Stroke stroke;
  for (int i = 0; i <= kSteps; ++i) {
    const double angle = (from + (to - from) * i / kSteps) * std::numbers::pi / 180;
    stroke.push_back(
        {center.x + radius_x * std::cos(angle), center.y + radius_y * std::sin(angle)});
  }
  return stroke;
}

Stroke Joined(Stroke first, const Stroke& then) {
  first.insert(first.end(), then.begin(), then.end());
  return first;
}

std::vector<Stroke> StrokesOf(int digit) {
  switch (digit) {
    case 0:
      return {
          Joined(Joined(Arc({0.5, 0.55}, 0.5, 0.55, 180, 360), Arc({0.5, 1.45}, 0.5, 0.55, 0, 180)),
                 {{0, 0.55}})};
    case 1:
      return {{{0.12, 0.45}, {0.6, 0}, {0.6, 2}}};
    case 2:
      return {Joined(Arc({0.5, 0.55}, 0.48, 0.55, 195, 395), {{0.02, 2}, {1, 2}})};
    case 3:
      return {Arc({0.46, 0.5}, 0.48, 0.5, 205, 450), Arc({0.46, 1.47}, 0.54, 0.53, 270, 515)};
    case 4:
      return {{{0.7, 0}, {0, 1.4}, {1, 1.4}}, {{0.75, 0.85}, {0.75, 2}}};
    case 5:
      return {Joined({{0.9, 0}, {0.12, 0}, {0.06, 0.95}}, Arc({0.45, 1.38}, 0.55, 0.62, 230, 505))};
    case 6:
      return {Arc({0.5, 1.4}, 0.5, 0.6, 0, 360), Arc({1.0, 1.4}, 1.0, 1.4, 180, 258)};
    case 7:
      return {{{0, 0}, {1, 0}, {0.38, 2}}};
    case 8:
      return {Arc({0.5, 0.48}, 0.44, 0.48, 0, 360), Arc({0.5, 1.48}, 0.5, 0.52, 0, 360)};
    default:
      return {Arc({0.5, 0.6}, 0.5, 0.6, 0, 360), Arc({0, 0.6}, 1.0, 1.4, 0, 78)};
  }
}

double DistanceToSegment(Point p, Point a, Point b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double length_squared = dx * dx + dy * dy;
  double t = 0;
  if (length_squared > 0) {
    t = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length_squared, 0.0, 1.0);
  }
  return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

using Glyph = std::array<std::uint8_t, std::size_t{kDigitWidth} * kDigitHeight>;

// Draws the segment's round-ended line where it covers more than what is there.
void DrawSegment(Glyph& glyph, Point a, Point b) {
  constexpr double kReach = kStrokeHalf + 1;
  const int left = std::max(0, static_cast<int>(std::min(a.x, b.x) - kReach));
  const int right = std::min(kDigitWidth - 1, static_cast<int>(std::max(a.x, b.x) + kReach));
  const int top = std::max(0, static_cast<int>(std::min(a.y, b.y) - kReach));
  const int bottom = std::min(kDigitHeight - 1, static_cast<int>(std::max(a.y, b.y) + kReach));
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) {
      const double distance = DistanceToSegment({x + 0.5, y + 0.5}, a, b);
      const double coverage = std::clamp(kStrokeHalf + 0.5 - distance, 0.0, 1.0);
      std::uint8_t& pixel = glyph[static_cast<std::size_t>(y * kDigitWidth + x)];
      pixel = std::max(pixel, static_cast<std::uint8_t>(coverage * 255));
    }
  }
}

std::vector<Glyph> MakeGlyphs() {
  std::vector<Glyph> glyphs(10, Glyph{});
  const auto place = [](Point p) {
    return Point{kStrokeHalf + 1 + p.x * kUnitX, kStrokeHalf + 1 + p.y * kUnitY};
  };
  for (int digit = 0; digit < 10; ++digit) {
    for (const Stroke& stroke : StrokesOf(digit)) {
      for (std::size_t i = 1; i < stroke.size(); ++i) {
        DrawSegment(glyphs[static_cast<std::size_t>(digit)], place(stroke[i - 1]),
                    place(stroke[i]));
      }
    }
  }
  return glyphs;
}

}  // namespace

const std::uint8_t* DigitRow(int digit, int y) {
  static const std::vector<Glyph> glyphs = MakeGlyphs();
  return &glyphs[static_cast<std::size_t>(digit)][static_cast<std::size_t>(y * kDigitWidth)];
}

SmallDigits::SmallDigits(int height)
    : width_(height * kDigitWidth / kDigitHeight), height_(height) {
  coverage_.reserve(std::size_t{10} * static_cast<std::size_t>(width_ * height_));
  for (int digit = 0; digit < 10; ++digit) {
    for (int y = 0; y < height_; ++y) {
      const int top = y * kDigitHeight / height_;
      const int bottom = (y + 1) * kDigitHeight / height_;
      for (int x = 0; x < width_; ++x) {
        const int left = x * kDigitWidth / width_;
        const int right = (x + 1) * kDigitWidth / width_;
        int sum = 0;
        for (int row = top; row < bottom; ++row) {
          const std::uint8_t* coverage = DigitRow(digit, row);
          sum = std::accumulate(coverage + left, coverage + right, sum);
        }
        coverage_.push_back(static_cast<std::uint8_t>(sum / ((bottom - top) * (right - left))));
      }
    }
  }
}

const std::uint8_t* SmallDigits::Row(int digit, int y) const {
  return &coverage_[static_cast<std::size_t>((digit * height_ + y) * width_)];
}

}  // namespace sim
