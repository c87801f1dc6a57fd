// The text entry: picks the family of commands by the header word found in the line.

#include <cstring>

#include "VexoCtrlSDK.h"
#include "report/diagnostics.h"
#include "report/library_state.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"
#include "text/tokenizer.h"

namespace {

// The tokenizer holds no more than this; a longer line is refused before a byte of it is kept.
bool FitsTokenizer(const char* line) {
  for (std::size_t i = 0; i <= kLineMax; ++i) {
    if (line[i] == '\0') return true;
  }
  return false;
}

}  // namespace

int VEXOAPI_TextCommandProc(const char* line) {
  if (g_library.g_initialized == 0) return VEXO_ERROR_UNINITIALIZED;
  if (line != nullptr && !FitsTokenizer(line)) {
    VexoDbg_Print(u">> Command Line Too Long!\r\n");
    return VEXO_ERROR_FAILED;
  }
  std::int32_t tokens = 0;
  // Quirk: the header is looked for anywhere in the line; the parser then wants it first.
  if (line != nullptr && std::strstr(line, kChipHeader) != nullptr) {
    tokens = VexoText_Parse(line);
  } else if (line != nullptr && std::strstr(line, kBackEndHeader) != nullptr) {
    tokens = VPB_ParseText(line);
  } else {
    VexoDbg_Print(u">> Command Not Found Header!\r\n");
    return VEXO_ERROR_NO_HEADER;
  }
  return tokens != 0 ? VEXO_OK : VEXO_ERROR_FAILED;
}
