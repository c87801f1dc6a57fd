#include "sim/screen/input_colors.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sim {
namespace {

constexpr double kParts = 65536;  // of a level
constexpr int kPartBits = 16;

using Matrix = std::array<std::array<double, 3>, 3>;

// Rows: luminance, and the colour differences of blue and red as they are on a carrier.
constexpr double kOfBlue = 0.492;
constexpr double kOfRed = 0.877;
constexpr Matrix kToCarrier = {{{0.299, 0.587, 0.114},
                                {-0.299 * kOfBlue, -0.587 * kOfBlue, (1 - 0.114) * kOfBlue},
                                {(1 - 0.299) * kOfRed, -0.587 * kOfRed, -0.114 * kOfRed}}};
constexpr Matrix kFromCarrier = {{{1, 0, 1 / kOfRed},
                                  {1, -0.114 / 0.587 / kOfBlue, -0.299 / 0.587 / kOfRed},
                                  {1, 1 / kOfBlue, 0}}};

Matrix Product(const Matrix& a, const Matrix& b) {
  Matrix product{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) product[i][j] += a[i][k] * b[k][j];
    }
  }
  return product;
}

double Factor(std::uint8_t value) { return value / 128.0; }
int Step(std::uint8_t value) { return value - 0x80; }

}  // namespace

ColorTable::ColorTable(const InputColors& colors) : of_{} {
  const double angle = Step(colors.hue) * 2 * std::numbers::pi / 256;
  const double saturation = Factor(colors.saturation);
  const double along = saturation * std::cos(angle);
  const double across = saturation * std::sin(angle);
  const Matrix control = {
      {{Factor(colors.contrast), 0, 0}, {0, along, -across}, {0, across, along}}};
  const Matrix matrix = Product(kFromCarrier, Product(control, kToCarrier));

  // Brightness, and half a level so that cutting the parts off rounds, come in with red.
  const std::int32_t base = (Step(colors.brightness) * 2 + 1) << (kPartBits - 1);
  for (std::size_t from = 0; from < 3; ++from) {
    for (std::size_t level = 0; level < 256; ++level) {
      for (std::size_t to = 0; to < 3; ++to) {
        of_[from][level][to] = static_cast<std::int32_t>(std::lround(
                                   matrix[to][from] * static_cast<double>(level) * kParts)) +
                               (from == 0 ? base : 0);
      }
    }
  }
}

Rgb ColorTable::operator()(Rgb pixel) const {
  const Sum& red = of_[0][pixel.r];
  const Sum& green = of_[1][pixel.g];
  const Sum& blue = of_[2][pixel.b];
  const auto level = [&](std::size_t i) {
    const std::int32_t sum = red[i] + green[i] + blue[i];
    return static_cast<std::uint8_t>(std::clamp(sum >> kPartBits, 0, 255));
  };
  return {level(0), level(1), level(2)};
}

}  // namespace sim
