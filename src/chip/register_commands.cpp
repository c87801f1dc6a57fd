#include "chip/register_commands.h"

#include "VexoCtrlSDK.h"
#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "report/diagnostics.h"
#include "report/host_messages.h"

std::uint8_t VexoProc_ReadRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg) {
  if (g_video.g_chip_ready == 0) return 0;
  const std::uint8_t value = TW_ReadRegister(chip, page, reg);
  VexoDbg_Print(u">> VEXO READ REG 0x%02X 0x%02X 0x%02X 0x%02X \r\n", chip, page, reg, value);
  VexoRegRecord record = {chip, page, reg, value};  // the host's to write to while it is sent
  VexoSDK_SendHostMessage(VEXO_MSG_REG_VALUE, reinterpret_cast<std::uintptr_t>(&record), 0);
  return value;
}

void VexoProc_WriteRegister(std::uint8_t chip, std::uint8_t page, std::uint8_t reg,
                            std::uint8_t value) {
  if (g_video.g_chip_ready != 1) return;
  TW_WriteRegister(chip, page, reg, value);
  VexoDbg_Print(u">> VEXO WRITE REG 0x%02X 0x%02X 0x%02X 0x%02X \r\n", chip, page, reg, value);
}
