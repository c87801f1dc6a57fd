#include "lines.h"

#include <sstream>
#include <stdexcept>

#include "VexoDesk.h"
#include "board.h"
#include "exports.h"
#include "plain_surroundings.h"
#include "script/parse.h"
#include "script/session.h"

namespace kit {
namespace {

// Messages of the calling thread's windows are handled while time passes.
void PassTime(std::uint32_t ms) {
  const ULONGLONG end = GetTickCount64() + ms;
  for (;;) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    const ULONGLONG now = GetTickCount64();
    if (now >= end) return;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
  }
}

class DeskSurroundings : public PlainSurroundings {
 public:
  void LetTimePass(std::uint32_t ms) override {
    const AwayFromBoard away;
    PassTime(ms);
  }
};

struct Lines {
  std::ostringstream out;
  DeskSurroundings around;
  script::Session session{out, around};
  bool after_action = false;

  int Run(const std::string& text, std::string& answer) {
    const AtBoard at_board;
    try {
      const auto statement = script::ParseLine(text, after_action);
      if (!statement) return VEXODESK_OK;
      if (statement->group == script::LineGroup::Action) {
        session.BeginAction(statement->text);
        after_action = true;
      }
      out.str("");
      statement->step(session);
      answer = out.str();
      if (statement->group == script::LineGroup::Action && session.returned) {
        answer = "= " + std::to_string(*session.returned);
      }
      return VEXODESK_OK;
    } catch (const script::Unmet& unmet) {
      answer = unmet.found;
      return VEXODESK_ERROR_UNMET;
    } catch (const std::exception& error) {
      answer = error.what();
      return VEXODESK_ERROR_LINE;
    }
  }
};

Lines& TheLines() {
  static Lines& lines = *new Lines;
  return lines;
}

}  // namespace

int RunLine(const char* line, char* answer, std::size_t capacity) {
  if (BoardKind() != Kind::Real || line == nullptr) return VEXODESK_ERROR_STATE;
  SwitchOn();
  UseLoadedExports();
  std::string text;
  const int result = TheLines().Run(line, text);
  if (answer != nullptr && capacity != 0) {
    const std::size_t length = text.copy(answer, capacity - 1);
    answer[length] = '\0';
  }
  return result;
}

int ControlPort() { return 0; }

}  // namespace kit
