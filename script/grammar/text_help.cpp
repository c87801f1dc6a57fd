#include "script/grammar/text_help.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <sstream>
#include <vector>

#include "script/grammar/pattern_walk.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"

namespace script {
namespace {

constexpr std::array kChipHelp = {
    TextHelp{"init [NUMBER]",
             "Halts the camera stream, initializes the chips, resumes the stream and posts the "
             "outcome to the host. The number is printed and otherwise ignored. Chips that were "
             "initialized count as such for good, also when none answers any more: the board then "
             "has no channels.",
             "vexo init 0 "},
    TextHelp{"uninit", "Does nothing.", "vexo uninit "},
    TextHelp{"stream on", "Resumes the camera stream. A driver that fails is not told.",
             "vexo stream on "},
    TextHelp{"stream off", "Halts the camera stream. A driver that fails is not told.",
             "vexo stream off "},
    TextHelp{"xscale CHANNEL HORIZONTAL VERTICAL",
             "Sets the scaler ratios of a channel. A refused code is printed; a refused "
             "horizontal code leaves the vertical ratio written.",
             "vexo xscale 0 1 1 "},
    TextHelp{"yscale CHANNEL RECORD_MODE",
             "Sets the layout of a channel on the record path. A refused mode is printed.",
             "vexo yscale 0 1 "},
    TextHelp{"lsplit MODE CHANNEL [BLANK_MASK]",
             "Lays out a live split of consecutive channels from the given one, counted round the "
             "board, with all channels blank meanwhile, and then blanks those of the mask. Where a "
             "board has too few channels, the later windows of modes 1, 4 and 6 stay empty, mode 4 "
             "shows nothing on 4 channels, and in modes 2, 3 and 5 each channel is in the last "
             "window that it gets. A mode above 6 is printed, and only blanks.",
             "vexo lsplit 6 0 "},
    TextHelp{"lsplit_pos MODE default",
             "Puts the whole live window table back to its defaults. The mode is not used.",
             "vexo lsplit_pos 0 default "},
    TextHelp{"lsplit_pos MODE WINDOW DX_START DY_START DX_END DY_END",
             "Moves the edges of a window of the live table from their default places; the next "
             "layout shows it. An edge that leaves 0 to 255 comes in again on the other side. A "
             "mode or window that there is not changes nothing.",
             "vexo lsplit_pos 1 0 2 0 2 0 "},
    TextHelp{"pip start MAIN INSET [BLANK_MASK]",
             "Shows one channel full size and another as an inset over it. Channels below the "
             "main one are hidden; those above it keep their windows, behind it.",
             "vexo pip start 0 1 "},
    TextHelp{"pip stop", "Brings all channels to the front; windows and scalers stay.",
             "vexo pip stop "},
    TextHelp{"mpip start CHANNEL SIZE X_START X_END Y_START Y_END [BLANK_MASK]",
             "Shows a channel as an inset over the current layout, in the given window.",
             "vexo mpip start 2 0 90 132 10 40 "},
    TextHelp{"mpip move CHANNEL X_START X_END Y_START Y_END [BLANK_MASK]",
             "Moves the inset; its size in the scaler stays.", "vexo mpip move 2 20 62 10 40 "},
    TextHelp{"mpip stop MODE CHANNEL [BLANK_MASK]",
             "Takes the inset away and lays out a live split as lsplit does.",
             "vexo mpip stop 6 0 "},
    TextHelp{"zoom start [BLANK_MASK]",
             "Zooms into the live picture. 12 channels have no zoom: that is printed, and the mask "
             "alone is written.",
             "vexo zoom start "},
    TextHelp{"zoom stop [BLANK_MASK]", "Shows the whole picture again.", "vexo zoom stop "},
    TextHelp{"zoom pos X Y [BLANK_MASK]",
             "Moves the enlarged part; values past the screen are cut to its edge, but first to a "
             "byte: 300 is 44.",
             "vexo zoom pos 45 30 "},
    TextHelp{"frz FREEZE_MASK [BLANK_MASK]",
             "Freezes the channels of the first mask, lets the others run, then blanks those of "
             "the second. Of 12 channels both masks reach 0 to 7 alone.",
             "vexo frz 3 "},
    TextHelp{"loss BLANK_MASK",
             "Blanks the channels of the mask and shows the others. Of 12 channels it reaches 0 to "
             "7 alone.",
             "vexo loss 1 "},
    TextHelp{"rec RECORD_MODE SWITCHING",
             "Programs the record path of all chips. A refused number is printed, and nothing "
             "written. On 12 channels mode 0 leaves the queues as they are.",
             "vexo rec 1 0 "},
    TextHelp{"play SETUP OPTION",
             "Prepares the chips for decoded pictures. The option is printed and not used. On 12 "
             "channels neither paths nor pattern are written.",
             "vexo play 0 0 "},
    TextHelp{"stop",
             "Programs the display for live pictures again, without a layout. Of 12 channels 0 to "
             "3 alone get the attributes of live ones.",
             "vexo stop "},
    TextHelp{
        "psplit MODE CHANNEL [BLANK_MASK]",
        "Lays out a playback split of consecutive channels, as lsplit does for live ones. "
        "Mode 0 is a centred picture, and mode 6 shows every channel in the window of its own "
        "number, of 12 channels 0 to 7 alone. Mode 4 leaves the windows empty that a board has "
        "no channels for. Announced before its arguments are read.",
        "vexo psplit 1 0 "},
    TextHelp{"psplit_pos MODE default",
             "Puts the whole playback window table back to its defaults. The mode is not used.",
             "vexo psplit_pos 0 default "},
    TextHelp{"psplit_pos MODE WINDOW DX_START DY_START DX_END DY_END",
             "Moves the edges of a window of the playback table from their default places; the "
             "next playback layout shows it. Otherwise as lsplit_pos.",
             "vexo psplit_pos 1 0 2 0 2 0 "},
    TextHelp{"pbank init",
             "Blanks every channel for playback. Of 12 channels it reaches 0 to 3 alone, and puts "
             "none on record.",
             "vexo pbank init "},
    TextHelp{"pbank show CHANNEL",
             "Shows a channel and the next one, when one of the two is on the library's record of "
             "blanked channels. pbank init and the blank masks of binary commands in playback keep "
             "that record, the masks of text commands do not. What comes after channel 15 is "
             "channel 12.",
             "vexo pbank show 0 "},
    TextHelp{"pbank clear", "Shows every channel. Of 12 channels it reaches 0 to 3 alone.",
             "vexo pbank clear "},
    TextHelp{"minit",
             "Programs motion detection of all channels from the kept settings, and sets the "
             "shared parameter back to 3 and 3.",
             "vexo minit "},
    TextHelp{"mlevel CHANNEL LEVEL",
             "Programs a channel's sensitivity; the kept setting stays. A level above 3 does "
             "nothing.",
             "vexo mlevel 0 2 "},
    TextHelp{
        "mcell show TYPE MODE CHANNEL",
        "Draws the motion cells at the live windows of a split, whichever is shown, from a "
        "first channel on. Modes other than 0, 1, 4 and 6 only clear them, and frozen channels "
        "or those not shown live get none.",
        "vexo mcell show 0 1 0 "},
    TextHelp{"mcell clear", "Takes the motion cells away.", "vexo mcell clear "},
    TextHelp{"mmask change all CHANNEL CLEAR",
             "Sets all motion cells of a channel, or clears them when CLEAR is not 0.",
             "vexo mmask change all 0 0 "},
    TextHelp{"mmask change CHANNEL COLUMN ROW",
             "Turns one motion cell of a channel over. A channel above 15 and a row above 11 do "
             "nothing; from 16 on columns come round as 8 to 15.",
             "vexo mmask change 0 3 4 "},
    TextHelp{"mshow REQUEST",
             "Draws the motion cells over the current live layout: 1 and 2 are two looks, other "
             "numbers do nothing. A layout of six, eight or thirteen has no grid: the cells are "
             "only cleared.",
             "vexo mshow 1 "},
    TextHelp{"clrbar ON", "Shows the chips' colour bar, or takes it away.", "vexo clrbar 1 "},
    TextHelp{"bluescr init",
             "Shows a blank test screen over a full-screen layout of the first channel.",
             "vexo bluescr init "},
    TextHelp{"bluescr clear",
             "Takes the test screen away; the layout comes back with the next split.",
             "vexo bluescr clear "},
    TextHelp{"rver",
             "Sends the host which chips were found, one byte a chip; 0 before initialization.",
             "vexo rver "},
    TextHelp{"set_emif A B C D E F G H I J", "Reads its ten numbers and does nothing.",
             "vexo set_emif 0 0 0 0 0 0 0 0 0 0 "},
    TextHelp{"rr $CHIP $PAGE $REGISTER", "Reads a register, prints it and sends it to the host.",
             "vexo rr 3 1 ab "},
    TextHelp{"wr $CHIP $PAGE $REGISTER $VALUE", "Writes a register and prints it.",
             "vexo wr ff 1 6 4 "},
    TextHelp{"change_vdo ntsc", "Stores NTSC for the next initialization. A failure is printed.",
             "vexo change_vdo ntsc "},
    TextHelp{"change_vdo pal", "Stores PAL for the next initialization. A failure is printed.",
             "vexo change_vdo pal "},
    TextHelp{"change_vdo auto",
             "Stores 255, which is no standard: the next initialization takes it in place of what "
             "it detects, reports it to the host, and programs the chips as for PAL.",
             "vexo change_vdo auto "},
    TextHelp{"color CHANNEL all HUE SATURATION CONTRAST BRIGHTNESS",
             "Sets the colours of a channel, or of all. Channels above the channel count do "
             "nothing. 128 each is the picture as it comes.",
             "vexo color 16 all 128 128 128 128 "},
    TextHelp{"color CHANNEL hue VALUE",
             "Sets the hue of one channel, and writes its three other colours with it as text "
             "commands last set them: 0 after load, whatever the chip has. Set all four first.",
             "vexo color 0 hue 136 "},
    TextHelp{
        "color CHANNEL sat VALUE",
        "Sets the saturation of a channel, or of all, and writes the other colours with it as hue "
        "does. Set all four first.",
        "vexo color 0 sat 140 "},
    TextHelp{
        "color CHANNEL con VALUE",
        "Sets the contrast of a channel, or of all, and writes the other colours with it as hue "
        "does. Set all four first.",
        "vexo color 0 con 110 "},
    TextHelp{
        "color CHANNEL bri VALUE",
        "Sets the brightness of a channel, or of all, and writes the other colours with it as hue "
        "does. Set all four first.",
        "vexo color 0 bri 120 "},
};

constexpr std::array kBackEndHelp = {
    TextHelp{
        "init",
        "Opens the driver; a failure, or that it is open already, is sent to the host. An open "
        "that failed counts as open until vpb uninit: the next one fails as open already.",
        "vpb init "},
    TextHelp{"uninit", "Closes the driver, or ends a failed open; closed already, it does nothing.",
             "vpb uninit "},
    TextHelp{"trans on", "Request 0x224800, no input.", "vpb trans on "},
    TextHelp{"trans off", "Request 0x224804, no input.", "vpb trans off "},
    TextHelp{"blen on LEVEL", "Request 0x224808, one byte.", "vpb blen on 128 "},
    TextHelp{"blen off", "Request 0x22480C, no input.", "vpb blen off "},
    TextHelp{"setp A B C D E F G H I J", "Request 0x224810, slots A B G H I J C D E F.",
             "vpb setp 1 2 3 4 5 6 7 8 9 10 "},
    TextHelp{"default", "Request 0x224814, no input.", "vpb default "},
    TextHelp{"setp_base A B", "Request 0x224828, slots A B 0 0 0 0 0 0 0 0.", "vpb setp_base 1 2 "},
    TextHelp{"setp_vdo A B C D", "Request 0x22482C, slots 0 0 0 0 0 0 A B C D.",
             "vpb setp_vdo 1 2 3 4 "},
    TextHelp{"setp_bmp A B C D", "Request 0x224830, slots 0 0 A B C D 0 0 0 0.",
             "vpb setp_bmp 1 2 3 4 "},
    TextHelp{"set_osd A B C D E F", "Request 0x224850, slots A to F.", "vpb set_osd 1 2 3 4 5 6 "},
    TextHelp{"set_vdownd A B C D", "Request 0x224854, slots A to D.", "vpb set_vdownd 1 2 3 4 "},
    TextHelp{"set_bmpwnd A B", "Request 0x224858, slots A B.", "vpb set_bmpwnd 1 2 "},
    TextHelp{"set_wndcfg A B C D E F G H",
             "Request 0x22485C, slots 0 0 B C D E F G H A; A is cut to a byte.",
             "vpb set_wndcfg 1 2 3 4 5 6 7 8 "},
    TextHelp{"set_bmpcfg A B C D E F G H",
             "Request 0x224860, slots B C D E F G H A, each cut to a byte.",
             "vpb set_bmpcfg 1 2 3 4 5 6 7 8 "},
    TextHelp{"set_curcfg A B C D E F G H", "Request 0x224864, slots A to H, each cut to a byte.",
             "vpb set_curcfg 1 2 3 4 5 6 7 8 "},
    TextHelp{"set_wndenable WINDOW ON", "Request 0x224868, slots WINDOW and 0 or 1.",
             "vpb set_wndenable 0 1 "},
    TextHelp{"set_wndpos WINDOW X Y", "Request 0x22486C, slots as typed, each cut to a byte.",
             "vpb set_wndpos 0 10 20 "},
    TextHelp{"set_wndsize WINDOW WIDTH HEIGHT",
             "Request 0x224878, slots as typed, each cut to a byte.", "vpb set_wndsize 0 100 80 "},
};

constexpr std::array kChipNumbers = {
    PlaceholderHelp{"NUMBER", "any; 65535 when missing"},
    PlaceholderHelp{"CHANNEL",
                    "0 to 15, below the channel count. For color the count itself means every "
                    "channel, but for hue"},
    PlaceholderHelp{"MAIN", "channel, 0 to 15"},
    PlaceholderHelp{"INSET", "channel, 0 to 15"},
    PlaceholderHelp{
        "HORIZONTAL",
        "scale: 0 whole, 1 half, 2 two thirds, 3 three quarters, 4 a third, 6 a quarter"},
    PlaceholderHelp{"VERTICAL", "as HORIZONTAL"},
    PlaceholderHelp{"RECORD_MODE", "0 to 2"},
    PlaceholderHelp{"SWITCHING", "0 or 4"},
    PlaceholderHelp{"MODE",
                    "split: 0 one picture, 1 four, 2 six, 3 eight, 4 nine, 5 thirteen, 6 sixteen"},
    PlaceholderHelp{"WINDOW", "window of the split, from 0"},
    PlaceholderHelp{"BLANK_MASK",
                    "channels to blank: bit n for channel n, 0 to 65535; 0 when missing"},
    PlaceholderHelp{"FREEZE_MASK", "channels to freeze: bit n for channel n, 0 to 65535"},
    PlaceholderHelp{"DX_START", "left edge, -128 to 127 display units; likewise the three below"},
    PlaceholderHelp{"DY_START", "upper edge"},
    PlaceholderHelp{"DX_END", "right edge"},
    PlaceholderHelp{"DY_END", "lower edge"},
    PlaceholderHelp{"SIZE", "2 half size, any other number a quarter"},
    PlaceholderHelp{"X_START", "0 to 180 display units"},
    PlaceholderHelp{"X_END", "0 to 180 display units"},
    PlaceholderHelp{"Y_START", "0 to 120 (NTSC), 144 (PAL) display units"},
    PlaceholderHelp{"Y_END", "0 to 120 (NTSC), 144 (PAL) display units"},
    PlaceholderHelp{"X", "0 to 180 display units"},
    PlaceholderHelp{"Y", "0 to 120 (NTSC), 144 (PAL) display units"},
    PlaceholderHelp{"SETUP", "pattern of the decoded pictures, 0 to 2; others set no pattern"},
    PlaceholderHelp{"OPTION", "any"},
    PlaceholderHelp{"LEVEL", "sensitivity, 0 to 3"},
    PlaceholderHelp{"TYPE", "look of the cells, 0 to 4; others as 0"},
    PlaceholderHelp{"CLEAR", "0 sets, any other number clears"},
    PlaceholderHelp{"COLUMN", "0 to 15"},
    PlaceholderHelp{"ROW", "0 to 11"},
    PlaceholderHelp{"REQUEST", "1 or 2"},
    PlaceholderHelp{"ON", "0 off, any other number on"},
    PlaceholderHelp{"A", "any; likewise B to J"},
    PlaceholderHelp{"CHIP",
                    "hexadecimal: 3 master, c slave 1, 30 slave 2, c0 slave 3, ff all (writes)"},
    PlaceholderHelp{"PAGE", "hexadecimal: 0 to 2"},
    PlaceholderHelp{"REGISTER", "hexadecimal: 0 to ff"},
    PlaceholderHelp{"VALUE", "0 to 255; hexadecimal for wr, and for color 128 as it comes"},
    PlaceholderHelp{"HUE", "0 to 255: all round; 128 as it comes"},
    PlaceholderHelp{"SATURATION", "0 grey, 128 as it comes, to 255"},
    PlaceholderHelp{"CONTRAST", "0 none, 128 as it comes, to 255"},
    PlaceholderHelp{"BRIGHTNESS", "0 dark, 128 as it comes, to 255"},
};

constexpr std::array kBackEndNumbers = {
    PlaceholderHelp{"A", "a 32-bit number, unless the request cuts it; likewise B to J"},
    PlaceholderHelp{"LEVEL", "0 to 255"},
    PlaceholderHelp{"WINDOW", "0 to 255"},
    PlaceholderHelp{"ON", "0 off, any other number up to 255 on"},
    PlaceholderHelp{"X", "0 to 255"},
    PlaceholderHelp{"Y", "0 to 255"},
    PlaceholderHelp{"WIDTH", "0 to 255"},
    PlaceholderHelp{"HEIGHT", "0 to 255"},
};

std::vector<std::string> WordsOf(std::string_view pattern) {
  std::istringstream in{std::string(pattern)};
  return {std::istream_iterator<std::string>(in), {}};
}

// The placeholders of a pattern, each once.
std::vector<const PlaceholderHelp*> NumbersOf(const TextGrammar& grammar,
                                              std::string_view pattern) {
  std::vector<const PlaceholderHelp*> found;
  for (const std::string& word : WordsOf(pattern)) {
    const PlaceholderHelp* const number = FindPlaceholder(grammar, word);
    const bool known = std::find(found.begin(), found.end(), number) != found.end();
    if (number != nullptr && !known) found.push_back(number);
  }
  return found;
}

std::string HelpOn(std::string_view keyword, const TextGrammar& grammar,
                   std::span<const TextHelp> commands) {
  std::string text;
  std::vector<const PlaceholderHelp*> named;
  for (const TextHelp& command : commands) {
    if (KeywordOf(command.pattern) != keyword) continue;
    text += std::string(grammar.header) + ' ' + std::string(command.pattern) + "\n    " +
            std::string(command.effect) + "\n    for example: " + std::string(command.example) +
            '\n';
    for (const PlaceholderHelp* number : NumbersOf(grammar, command.pattern)) {
      if (std::find(named.begin(), named.end(), number) == named.end()) named.push_back(number);
    }
  }
  for (const PlaceholderHelp* number : named) {
    text += "  " + std::string(number->name) + ": " + std::string(number->range) + '\n';
  }
  return text;
}

void AddSection(std::ostream& out, const char* header, std::span<const TextHelp> commands,
                std::span<const PlaceholderHelp> numbers) {
  for (const TextHelp& command : commands) {
    out << "### `" << header << ' ' << command.pattern << "`\n\n"
        << command.effect << "\n\n    " << command.example << "\n\n";
  }
  out << "| Number | Range and meaning |\n|---|---|\n";
  for (const PlaceholderHelp& number : numbers) {
    out << "| `" << number.name << "` | " << number.range << " |\n";
  }
}

}  // namespace

std::span<const TextHelp> ChipTextHelp() { return kChipHelp; }
std::span<const TextHelp> BackEndTextHelp() { return kBackEndHelp; }
std::span<const PlaceholderHelp> ChipPlaceholders() { return kChipNumbers; }
std::span<const PlaceholderHelp> BackEndPlaceholders() { return kBackEndNumbers; }

const PlaceholderHelp* FindPlaceholder(const TextGrammar& grammar, std::string_view word) {
  const std::string_view typed = NumberName(word);
  const bool letter = typed.size() == 1 && typed.front() >= 'A' && typed.front() <= 'J';
  const std::string_view name = letter ? "A" : typed;
  const auto numbers = &grammar == &kChipGrammar ? ChipPlaceholders() : BackEndPlaceholders();
  const auto found = std::find_if(numbers.begin(), numbers.end(),
                                  [&](const PlaceholderHelp& help) { return help.name == name; });
  return found == numbers.end() ? nullptr : &*found;
}

std::string HelpOnKeyword(std::string_view keyword) {
  return HelpOn(keyword, kChipGrammar, kChipHelp) + HelpOn(keyword, kBackEndGrammar, kBackEndHelp);
}

std::string TextCommandManual() {
  std::ostringstream out;
  out << "# Text commands\n\n"
         "`VEXOAPI_TextCommandProc` runs one line: a header, a keyword, words and numbers, each\n"
         "**followed** by one separator, which is a blank, a comma or a line feed; carriage "
         "return\n"
         "and tab do not separate. A last word without a separator after it is dropped, and two\n"
         "separators in a row end the line: what stands behind them is not read, and the command\n"
         "runs when nothing that it must have is missing (`vexo zoom start  5` runs without a\n"
         "mask). More than a command takes is not read either. A line holds at most 255\n"
         "characters.\n\n"
         "In the patterns below words in small letters are typed as they stand, CAPITALS stand "
         "for\n"
         "decimal numbers, `$CAPITALS` for hexadecimal ones of one to eight digits without a\n"
         "prefix, and what stands in `[ ]` may be left out. A number is cut to the width that its\n"
         "operation takes: 256 is 0 where a byte is meant. A word that is no number reads as 0.\n\n"
         "| Result | Meaning |\n|---|---|\n"
         "| 0 | done; or accepted without effect: the chips are not ready, a word after the "
         "keyword is "
         "unknown (`vexo` alone), the driver is closed (`vpb` alone), or the operation refuses a "
         "number, reaches no chip or fails |\n"
         "| -1 | rejected: the first word is not the header, the keyword is unknown, a word or a "
         "number is missing, a later word is unknown (`vpb` alone), or the line is too long |\n"
         "| -4 | neither `vexo` nor `vpb` in the line |\n"
         "| -6 | the library is not initialized |\n\n"
         "This page is written from the library's own tables: `vexosim manual` prints it. In\n"
         "`vexosim shell` the separator at the end is added, and `help KEYWORD` explains a "
         "command, and\n"
         "what came of a line is told beside its result.\n"
         "`lsplit`, `mpip stop` and `bluescr init` wait until the chips have settled, and\n"
         "`bluescr` until the fill engine has finished, however long that takes.\n\n"
         "## Chips: `vexo`\n\n"
         "Before the chips are initialized these commands are accepted and do nothing, but for\n"
         "`init`, `uninit`, `stream`, `set_emif` and `rver`. Even so `psplit` announces itself, "
         "and a\n"
         "hexadecimal number of more than eight digits is told. None of them takes the lock that\n"
         "the binary commands take.\n\n"
         "Most commands do not check a channel: one that the board lacks is written to a chip "
         "that\n"
         "is not there, and one above 15 to the last chip. Of 12 channels every mask reaches 0 to "
         "7\n"
         "alone.\n\n";
  AddSection(out, kChipHeader, kChipHelp, kChipNumbers);
  out << "\n## Video back-end: `vpb`\n\n"
         "Requests to the stream driver \"VBE1:\". Each is skipped while the driver is closed, "
         "and\n"
         "its result is not looked at. An input record is 32-bit slots; numbers are the driver's\n"
         "own business.\n\n";
  AddSection(out, kBackEndHeader, kBackEndHelp, kBackEndNumbers);
  return out.str();
}

}  // namespace script
