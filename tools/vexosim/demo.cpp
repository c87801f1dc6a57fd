#include "tools/vexosim/demo.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <vector>

#include "VexoCtrlSDK.h"
#include "files/file_error.h"
#include "harness/host.h"
#include "script/action_printer.h"
#include "script/message_words.h"
#include "script/report_words.h"
#include "script/run.h"
#include "sim/picture/png.h"
#include "sim/screen/screen.h"
#include "sim/text.h"
#include "tools/vexosim/listing/picture_text.h"

namespace vexosim {
namespace {

// Something in the demo answered as no healthy board would.
struct Failed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Demo {
 public:
  Demo(const DemoOptions& options, std::ostream& out) : options_(options), out_(out) {}

  void Run() {
    harness::Restart();
    const InterruptWatch interrupts;
    World().kernel.SetWatch([] {
      if (Interrupted()) throw Failed("interrupted");
    });
    PowerOn();
    Layouts();
    Cameras();
    Playback();
    BackToLive();
    Dump();
    PowerOff();
    Table();
  }

  // What the board noticed that nothing in the demo explains.
  std::vector<std::string> Warnings() const {
    std::vector<sim::Report> reports = World().reports.All();
    reports.erase(reports.begin() + explained_begin_, reports.begin() + explained_end_);
    return script::WarningsInWords(reports);
  }

 private:
  using Channels = std::vector<std::uint8_t>;

  sim::World& World() const { return sim::TheWorld(); }

  // Announces what comes next.
  void Title(const std::string& title) {
    out_ << '\n'
         << std::string(options_.style.colour ? "\033[1m" : "") << "== " << title
         << (options_.style.colour ? "\033[0m" : "") << std::endl;
  }

  // Does one thing and prints what came of it.
  template <typename Function>
  void Do(const std::string& what, Function function) {
    std::ostringstream events;
    script::ActionPrinter printer(World(), events);
    World().windows.on_received = [&printer](const sim::ReceivedMessage& message) {
      printer.OnReceived(message);
    };
    printer.Begin();
    const std::uint64_t cycles = World().trace.Cycles();
    const std::uint32_t begin = World().kernel.Now();
    function();
    out_ << "   " << what << ": " << World().trace.Cycles() - cycles << " bus cycles, "
         << World().kernel.Now() - begin << " ms\n";
    printer.End();
    World().windows.on_received = nullptr;
    out_ << events.str() << std::flush;
  }

  // Returns the record as the command left it.
  sim::Bytes Command(const std::string& what, std::uint32_t code, sim::Bytes record) {
    Do(what, [&] {
      const int result = harness::CommandProc(code, &record);
      if (result != VEXO_OK) {
        throw Failed("command " + sim::Hex(code) + " (" + what + ") returned " +
                     std::to_string(result));
      }
    });
    return record;
  }

  void Pump(const std::string& what, std::uint32_t ms) {
    Do(what, [&] { World().kernel.Pump(ms); });
  }

  void Picture(const std::string& title, int most_columns) {
    const sim::Image image = sim::ComposeScreen(World().board);
    PictureStyle style = options_.style;
    style.columns = std::min(style.columns, most_columns);
    out_ << "\n   " << title << '\n' << DrawPicture(image, style) << std::flush;
  }

  // Layouts are drawn smaller than the first picture; in plain characters they would say nothing.
  void SmallPicture(const std::string& title) {
    if (options_.style.colour) Picture(title, kSmallColumns);
  }

  void PowerOn() {
    Title("Power on: four chips, sixteen NTSC cameras");
    World().board.FitChips(kChipsMax);
    Do("the process loads the library", [] { harness::Entry(1); });
    Do("the host binds its window", [&] { harness::Initialize(World().windows.Create()); });
    const sim::Bytes record = Command("0xF001 initialize the chips", VEXO_CMD_INIT, {});
    std::memcpy(&found_, record.data(), sizeof found_);
    Pump("the host pumps its messages for 300 ms", 300);

    Title("The live picture");
    Picture("4 x 4", kLargeColumns);
    WritePicture(options_.picture);
  }

  void WritePicture(const std::string& path) {
    sim::WritePng(sim::ComposeScreen(World().board), path);
    out_ << "   the screen is in " << path << '\n';
  }

  // The bytes before a record's list, and the list.
  static sim::Bytes Record(sim::Bytes head, const Channels& list) {
    head.insert(head.end(), list.begin(), list.end());
    return head;
  }

  void Split(const std::string& name, std::uint8_t mode, const Channels& list) {
    Command("0xF005 " + name, VEXO_CMD_LIVE_SPLIT, Record({0, 0, 0, 0, mode, 0}, list));
    SmallPicture(name);
  }

  void Layouts() {
    Title("Layouts");
    Split("4-split", VEXO_SPLIT_4, {0, 1, 2, 3});
    Split("8-split", VEXO_SPLIT_8, {0, 1, 2, 3, 4, 5, 6, 7});
    Split("full screen of channel 5", VEXO_SPLIT_FULL, {5});
    Split("16-split", VEXO_SPLIT_16, all_);
  }

  void Cameras() {
    Title("Cameras");
    sim::Board& board = World().board;
    board.SetCamera(5, sim::Camera::Off);
    Pump("camera 5 is unplugged", 200);
    SmallPicture("without camera 5");
    board.SetCamera(5, sim::Camera::Ntsc);
    Pump("camera 5 is plugged in again", 200);
    board.SetMotion(2, true);
    Pump("somebody walks past camera 2", 200);
    board.SetMotion(2, false);
    Pump("and is gone", 200);
  }

  void PlaySplit(const std::string& name, std::uint8_t mode, std::uint8_t option,
                 const Channels& list) {
    Command("0xF006 " + name, VEXO_CMD_PLAY_SPLIT, Record({0, 0, 0, 0, mode, option}, list));
    SmallPicture("playback, " + name);
  }

  // Leaves every channel blanked.
  void PlayMode(const std::string& name, std::uint8_t mode, const Channels& list) {
    Command("0xF00A " + name, VEXO_CMD_PLAY_MODE, Record({0, 0, 0, 0, 0, mode}, list));
  }

  void Playback() {
    Title("Playback");
    PlayMode("from live pictures to recorded ones", VEXO_SPLIT_16, all_);
    PlaySplit("16-split", VEXO_SPLIT_16, 0, all_);
    WritePicture(PlaybackPicture(options_.picture));
    PlaySplit("9-split", VEXO_SPLIT_9, 0, {0, 1, 2, 3, 4, 5, 6, 7, 8});
    PlaySplit("4-split", VEXO_SPLIT_4, 0, {4, 5, 6, 7});
    PlaySplit("full picture of channel 5", VEXO_SPLIT_FULL, 1, {5});
    PlaySplit("centred picture of channel 5", VEXO_SPLIT_FULL, 0, {5});
    PlayMode("13-split, channel 5 large", VEXO_SPLIT_13,
             {5, 0, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12});
    Command("0xF00D show the channels again", VEXO_CMD_RESTORE_BLANK, {});
    SmallPicture("playback, 13-split");
  }

  void BackToLive() {
    Title("Live again");
    Command("0xF009 16-split", VEXO_CMD_LIVE_MODE, Record({0, 0, 0, 0, VEXO_SPLIT_16}, all_));
    SmallPicture("live, 16-split");
  }

  // A dump reads what has no name too; the board notices, and that is said here.
  void Dump() {
    Title("Register dump");
    const std::size_t begin = World().reports.All().size();
    Command("0xFF04 master, page 1", VEXO_CMD_DUMP_MASTER_P1, {});
    const std::size_t end = World().reports.All().size();
    for (const std::string& text :
         script::WarningsInWords(std::span(World().reports.All()).subspan(begin, end - begin))) {
      out_ << "      (" << text << ")\n";
    }
    explained_begin_ = static_cast<std::ptrdiff_t>(begin);
    explained_end_ = static_cast<std::ptrdiff_t>(end);
  }

  void PowerOff() {
    Title("Power off");
    Command("0xF002 stop the monitor", VEXO_CMD_STOP_MONITOR, {});
    Do("the host leaves", [] { harness::Uninitialize(); });
    Do("the process unloads the library", [] { harness::Entry(0); });
  }

  void Table() {
    const auto real = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begin_);
    Title("Summary");
    const auto row = [&](const std::string& name, const std::string& value) {
      out_ << "   " << name << std::string(name.size() < 16 ? 16 - name.size() : 1, ' ') << value
           << '\n';
    };
    row("chips", std::to_string(found_.chip_count) + ", identification " +
                     sim::HexBytes(found_.chip_id, " "));
    row("standard", script::StandardInWords(found_.video_standard));
    row("bus cycles", std::to_string(World().trace.Cycles()));
    row("virtual time", std::to_string(World().kernel.Now()) + " ms");
    row("real time", std::to_string(real.count()) + " ms");
    if (options_.machine != nullptr) {
      row("instructions", std::to_string(options_.machine->Instructions()));
      row("deepest stack", std::to_string(options_.machine->DeepestStack()) + " bytes");
    }
    out_ << "\nThe same recorder live, in a browser: ./run.sh serve" << std::endl;
  }

  static constexpr int kLargeColumns = 96;
  static constexpr int kSmallColumns = 48;

  const DemoOptions& options_;
  std::ostream& out_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  const Channels all_ = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  VexoInitRecord found_{};  // what initialization told the host
  // Reports of the dump.
  std::ptrdiff_t explained_begin_ = 0;
  std::ptrdiff_t explained_end_ = 0;
};

}  // namespace

std::string PlaybackPicture(const std::string& picture) {
  const std::filesystem::path path(picture);
  std::filesystem::path name = path.stem();
  name += "-playback";
  name += path.extension();
  return std::filesystem::path(path).replace_filename(name).string();
}

int RunDemo(const DemoOptions& options, std::ostream& out, std::ostream& err) {
  Demo demo(options, out);
  try {
    demo.Run();
  } catch (const files::FileError& error) {
    out.flush();
    err << "vexosim demo: " << error.what() << std::endl;
    return script::kExitWrong;
  } catch (const std::exception& error) {
    out.flush();
    err << "vexosim demo: " << error.what() << std::endl;
    return script::kExitUnmet;
  }
  if (options.machine != nullptr && options.machine->FirstFault()) {
    err << "vexosim demo: " << *options.machine->FirstFault() << std::endl;
    return script::kExitUnmet;
  }
  for (const std::string& warning : demo.Warnings()) err << "warning: " << warning << '\n';
  return script::kExitDone;
}

}  // namespace vexosim
