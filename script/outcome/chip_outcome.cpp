// What became of the text commands for the chips, a row for each that can end in more than one way.
#include <algorithm>
#include <array>

#include "VexoCtrlSDK.h"
#include "display/window_tables.h"
#include "script/outcome/layout_outcome.h"
#include "script/outcome/text_action.h"
#include "sim/text.h"

namespace script {
namespace {

constexpr unsigned kChannelsWithoutVariant = 12;

// ---- Numbers that are refused, taken otherwise, or lead nowhere --------------------------------

// Says what became of a channel that the operation does not check.
void SayOfChannel(TextAction& a, std::string_view name = "CHANNEL") {
  const std::size_t place = a.PlaceOf(name);
  const unsigned channel = a.Byte(place);
  if (channel < a.Channels() || a.Writes().empty()) return;
  const auto written = WrittenChannel(channel);
  const std::string text = NotOfTheBoard(a, place) + ": ";
  const unsigned chip = written / kChannelsPerChip;
  if (a.World().board.Fitted(chip)) {
    a.Say(text + "channel " + std::to_string(written) + " was written in its place");
  } else {
    a.Say(text + std::string(ChipName(chip)) +
          " is not fitted and took nothing of what was written");
  }
}

// True, and said, when a number is above its highest.
bool Refused(TextAction& a, std::string_view name, unsigned highest,
             const std::string& consequence = "nothing was written") {
  const std::size_t place = a.PlaceOf(name);
  if (a.Byte(place) <= highest) return false;
  a.Say(a.Named(place) + " is above " + std::to_string(highest) + ": " + consequence);
  return true;
}

bool IsScale(unsigned code) { return code <= 4 || code == 6; }

void SayOfEmptyWindow(TextAction& a) {
  const bool empty = a.Byte(a.PlaceOf("X_END")) <= a.Byte(a.PlaceOf("X_START")) ||
                     a.Byte(a.PlaceOf("Y_END")) <= a.Byte(a.PlaceOf("Y_START"));
  if (empty) a.Say("the window ends before it begins: it shows nothing");
}

// ---- System -------------------------------------------------------------------------------------

void AsksForNothing(TextAction& a) { a.Say("this command asks for nothing: nothing was done"); }

void Init(TextAction& a) {
  if (!a.Acted()) return a.Say("the bus windows are not mapped: nothing was done");
  const auto* status = a.Last<sim::MessageEvent>();
  if (status == nullptr || status->message != VEXO_MSG_STATUS) return;
  a.Say(a.Facts().ready ? "no chip answered: the library goes on as initialized, with no channels"
                        : "no chip answered: the chips are not initialized");
}

void Stream(TextAction& a) {
  const auto* open = a.Last<sim::OpenEvent>();
  if (open != nullptr && !open->ok) a.Say(open->name + " could not be opened: nothing was done");
}

void Version(TextAction& a) {
  if (!a.Facts().ready) a.Say("the chips are not initialized: 0 was sent");
}

void SayOfAccess(TextAction& a, bool read) {
  const unsigned chip = a.Byte(0);
  if (Refused(a, "PAGE", kPageCount - 1, read ? "nothing was read" : "nothing was written")) return;
  if (chip == kChipAll) {
    if (read) a.Say("one chip can be read at a time: what all of them answer is no value");
    return;
  }
  unsigned position = 0;
  while (position < kChipsMax && kChipByPosition[position] != chip) ++position;
  if (position == kChipsMax) {
    a.Say("CHIP " + sim::Hex(chip) +
          " is none of 0x03, 0x0C, 0x30, 0xC0 and 0xFF: no chip was selected");
  } else if (!a.World().board.Fitted(position)) {
    a.Say(std::string(ChipName(position)) +
          " is not fitted: " + (read ? "no chip answered" : "no chip took the value"));
  }
}
void ReadReg(TextAction& a) { SayOfAccess(a, true); }
void WriteReg(TextAction& a) { SayOfAccess(a, false); }

void StoreStandard(TextAction& a) {
  const auto* access = a.Last<sim::NvramEvent>();
  if (access == nullptr || access->ok) return;
  a.Say(access->op == "read" ? "the stored settings cannot be read: nothing was stored"
                             : "the stored settings cannot be written: nothing was stored");
}

// ---- Live display -------------------------------------------------------------------------------

void ScaleX(TextAction& a) {
  const std::size_t horizontal = a.PlaceOf("HORIZONTAL");
  const std::size_t vertical = a.PlaceOf("VERTICAL");
  if (!IsScale(a.Byte(vertical))) {
    return a.Say(a.Named(vertical) + " is no scale: nothing was written");
  }
  if (!IsScale(a.Byte(horizontal))) {
    a.Say(a.Named(horizontal) + " is no scale: the vertical ratio alone was written");
  }
  SayOfChannel(a);
}

void ScaleY(TextAction& a) {
  if (!Refused(a, "RECORD_MODE", 2)) SayOfChannel(a);
}

void Offset(TextAction& a) {
  if (Refused(a, "MODE", kSplitModes - 1u, "nothing was done")) return;
  Refused(a, "WINDOW", kWindowsOfMode[a.Byte(0)] - 1u, "nothing was done");
}

void StartPip(TextAction& a) {
  SayOfChannel(a, "MAIN");
  SayOfChannel(a, "INSET");
  if (a.Byte(0) == a.Byte(1)) a.Say("MAIN and INSET are one channel: it is the inset alone");
}

void StartMultiPip(TextAction& a) {
  SayOfChannel(a);
  SayOfEmptyWindow(a);
}

void Zoom(TextAction& a) {
  if (a.Channels() == kChannelsWithoutVariant || a.Channels() == 0) {
    return a.Say(std::to_string(a.Channels()) +
                 " channels have no zoom: the blank mask alone was "
                 "written");
  }
  if (!a.Has("X")) return;
  for (const auto& [name, edge] :
       {std::pair("X", 180u), std::pair("Y", a.Facts().pal ? 144u : 120u)}) {
    const std::size_t place = a.PlaceOf(name);
    if (a.Byte(place) > edge) {
      a.Say(a.Named(place) + " is past the edge: " + std::to_string(edge) + " was written");
    }
  }
}

void Record(TextAction& a) {
  const std::size_t switching = a.PlaceOf("SWITCHING");
  if (a.Byte(switching) != 0 && a.Byte(switching) != 4) {
    return a.Say(a.Named(switching) + " is neither 0 nor 4: nothing was written");
  }
  if (Refused(a, "RECORD_MODE", 2)) return;
  if (a.Byte(0) == 0 && a.Channels() == kChannelsWithoutVariant) {
    a.Say("the queues of 12 channels are not written");
  }
}

void BackToLive(TextAction& a) {
  if (a.Channels() == kChannelsWithoutVariant) {
    a.Say("of 12 channels the attributes of 0 to 3 alone were written");
  }
}

// ---- Playback -----------------------------------------------------------------------------------

void PlaySetup(TextAction& a) {
  if (a.Channels() == kChannelsWithoutVariant || a.Channels() == 0) {
    return a.Say(std::to_string(a.Channels()) +
                 " channels have no setup of their own: neither paths nor pattern were written");
  }
  Refused(a, "SETUP", 2, "no pattern was written");
}

void BankOfAll(TextAction& a) {
  if (a.Channels() == kChannelsWithoutVariant) a.Say("of 12 channels 0 to 3 alone were reached");
}

void BankShow(TextAction& a) {
  const auto channel = static_cast<unsigned>(a.Number(0));
  if (channel >= a.Channels()) return a.Say(NotOfTheBoard(a, 0) + ": nothing was done");
  if (a.Writes().empty()) {
    return a.Say("by the library's record neither is blanked: nothing was done");
  }
  if (channel + 1 < a.Channels()) return;
  const unsigned second = WrittenChannel(channel + 1);
  a.Say("the next channel is none of the board's: " +
        (second < a.Channels() ? "channel " + std::to_string(second) + " was shown in its place"
                               : std::string("no chip took it")));
}

// ---- Motion -------------------------------------------------------------------------------------

void MotionLevel(TextAction& a) {
  if (!Refused(a, "LEVEL", 3)) SayOfChannel(a);
}

void SayOfCells(TextAction& a) {
  const unsigned grids = a.WritesTo(kBoxX);
  if (grids == 0) {
    a.Say(
        "no grid was drawn: only one, four, nine or sixteen pictures have one, and channels that "
        "are shown live");
  } else if (a.WritesTo(kBoxControl) < grids) {
    a.Say("frozen channels get no cells");
  }
}

void ShowCells(TextAction& a) {
  if (Refused(a, "MODE", kSplitModes - 1u, "the cells were cleared and no grid drawn")) return;
  if (const std::size_t type = a.PlaceOf("TYPE"); a.Byte(type) > 4) {
    a.Say(a.Named(type) + " is taken for 0");
  }
  SayOfCells(a);
  const std::size_t channel = a.PlaceOf("CHANNEL");
  if (a.Byte(channel) >= a.Channels()) a.Say(NotOfTheBoard(a, channel) + ": it has no cells");
}

void CellDisplay(TextAction& a) {
  if (a.Writes().empty()) return a.Say(a.Named(0) + " is neither 1 nor 2: nothing was done");
  SayOfCells(a);
}

void MaskAll(TextAction& a) {
  if (Refused(a, "CHANNEL", kChannelsMax - 1u, "nothing was done")) return;
  SayOfChannel(a);
}

void ToggleCell(TextAction& a) {
  if (Refused(a, "CHANNEL", kChannelsMax - 1u, "nothing was done")) return;
  if (Refused(a, "ROW", 11, "nothing was done")) return;
  if (const std::size_t column = a.PlaceOf("COLUMN"); a.Byte(column) > 15) {
    a.Say(a.Named(column) + " is above 15: it was taken for " +
          std::to_string(8 + a.Byte(column) % 8));
  }
  SayOfChannel(a);
}

// ---- Colours ------------------------------------------------------------------------------------

// Refused channels write nothing; the channel count stands for all of them, but for the hue.
bool ColorRefused(TextAction& a) {
  if (!a.Writes().empty()) return false;
  const unsigned channel = a.Byte(0);
  a.Say(channel == a.Channels()
            ? "the hue of all channels cannot be set at once: nothing was written"
            : NotOfTheBoard(a, 0) + ": nothing was written");
  return true;
}

void AllColors(TextAction& a) { ColorRefused(a); }

// One colour is written together with the others as they were last set by text: zero at first.
void OneColor(TextAction& a) {
  if (ColorRefused(a)) return;
  struct Color {
    const ChannelRegister<1>& reg;
    const char* name;
    std::string_view keyword;
  };
  const std::array<Color, 4> colors = {{{kInputHue, "hue", " hue "},
                                        {kInputSaturation, "saturation", " sat "},
                                        {kInputContrast, "contrast", " con "},
                                        {kInputBrightness, "brightness", " bri "}}};
  std::vector<std::string_view> zero;
  for (const Color& color : colors) {
    if (a.Line().pattern.find(color.keyword) != std::string_view::npos) continue;
    const auto written =
        std::find_if(a.Writes().begin(), a.Writes().end(), [&](const sim::RegisterAccess& write) {
          return Covers(color.reg, {write.Page(), write.reg}) && write.value == 0;
        });
    if (written != a.Writes().end()) zero.emplace_back(color.name);
  }
  if (zero.empty()) return;
  std::string names(zero.front());
  for (std::size_t i = 1; i < zero.size(); ++i) {
    names += (i + 1 == zero.size() ? " and " : ", ") + std::string(zero[i]);
  }
  a.Say(names + " went to 0 with it: a text command left " + (zero.size() == 1 ? "it" : "them") +
        " so, or none has set " + (zero.size() == 1 ? "it" : "them") + " yet");
}

// ---- The table ----------------------------------------------------------------------------------

struct Row {
  std::string_view pattern;
  void (*say)(TextAction& action);
};

constexpr std::array kRows = {
    Row{"init [NUMBER]", Init},
    Row{"uninit", AsksForNothing},
    Row{"stream on", Stream},
    Row{"stream off", Stream},
    Row{"xscale CHANNEL HORIZONTAL VERTICAL", ScaleX},
    Row{"yscale CHANNEL RECORD_MODE", ScaleY},
    Row{"lsplit MODE CHANNEL [BLANK_MASK]", SayOfLiveSplit},
    Row{"lsplit_pos MODE WINDOW DX_START DY_START DX_END DY_END", Offset},
    Row{"pip start MAIN INSET [BLANK_MASK]", StartPip},
    Row{"mpip start CHANNEL SIZE X_START X_END Y_START Y_END [BLANK_MASK]", StartMultiPip},
    Row{"mpip move CHANNEL X_START X_END Y_START Y_END [BLANK_MASK]", StartMultiPip},
    Row{"mpip stop MODE CHANNEL [BLANK_MASK]", SayOfLiveSplit},
    Row{"zoom start [BLANK_MASK]", Zoom},
    Row{"zoom stop [BLANK_MASK]", Zoom},
    Row{"zoom pos X Y [BLANK_MASK]", Zoom},
    Row{"rec RECORD_MODE SWITCHING", Record},
    Row{"play SETUP OPTION", PlaySetup},
    Row{"stop", BackToLive},
    Row{"psplit MODE CHANNEL [BLANK_MASK]", SayOfPlaySplit},
    Row{"psplit_pos MODE WINDOW DX_START DY_START DX_END DY_END", Offset},
    Row{"pbank init", BankOfAll},
    Row{"pbank show CHANNEL", BankShow},
    Row{"pbank clear", BankOfAll},
    Row{"mlevel CHANNEL LEVEL", MotionLevel},
    Row{"mcell show TYPE MODE CHANNEL", ShowCells},
    Row{"mmask change all CHANNEL CLEAR", MaskAll},
    Row{"mmask change CHANNEL COLUMN ROW", ToggleCell},
    Row{"mshow REQUEST", CellDisplay},
    Row{"rver", Version},
    Row{"set_emif A B C D E F G H I J", AsksForNothing},
    Row{"rr $CHIP $PAGE $REGISTER", ReadReg},
    Row{"wr $CHIP $PAGE $REGISTER $VALUE", WriteReg},
    Row{"change_vdo ntsc", StoreStandard},
    Row{"change_vdo pal", StoreStandard},
    Row{"change_vdo auto", StoreStandard},
    Row{"color CHANNEL all HUE SATURATION CONTRAST BRIGHTNESS", AllColors},
    Row{"color CHANNEL hue VALUE", OneColor},
    Row{"color CHANNEL sat VALUE", OneColor},
    Row{"color CHANNEL con VALUE", OneColor},
    Row{"color CHANNEL bri VALUE", OneColor},
};

// Chips that were counted and have gone since.
void SayOfDeadChips(TextAction& a) {
  for (unsigned p = 0; p * kChannelsPerChip < a.Channels(); ++p) {
    const auto to_it = [p](const sim::RegisterAccess& write) {
      return write.Chip() == kChipByPosition[p];
    };
    if (!a.World().board.Fitted(p) && std::any_of(a.Writes().begin(), a.Writes().end(), to_it)) {
      a.Say(std::string(ChipName(p)) + " does not answer: it took nothing of what was written");
    }
  }
}

}  // namespace

void SayOfChipCommand(TextAction& action) {
  for (const Row& row : kRows) {
    if (row.pattern == action.Line().pattern) row.say(action);
  }
  SayOfMasks(action);
  SayOfDeadChips(action);
}

}  // namespace script
