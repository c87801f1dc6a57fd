#include "bench/by_hand.h"

#include "chip/register_bus.h"

void WriteByHand(std::uint8_t select, std::uint8_t reg, std::uint8_t value) {
  *g_bus.select = select;
  *g_bus.address = reg;
  *g_bus.data = value;
  *g_bus.select = kSelectIdle;
}

std::uint8_t ReadByHand(std::uint8_t select, std::uint8_t reg) {
  *g_bus.select = select;
  *g_bus.address = reg;
  const std::uint8_t value = *g_bus.data;
  *g_bus.select = kSelectIdle;
  return value;
}

void WriteTableByHand(std::uint8_t select, std::uint8_t first_reg, const std::uint8_t* data,
                      std::uint8_t count) {
  *g_bus.select = select;
  *g_bus.address = first_reg;
  for (std::uint8_t i = 0; i < count; ++i) *g_bus.data = data[i];
  *g_bus.select = kSelectIdle;
}
