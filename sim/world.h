// The whole simulated PC: the board and everything of the platform around it.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform.h"
#include "sim/board.h"
#include "sim/kernel.h"
#include "sim/reports.h"
#include "sim/trace.h"

namespace sim {

// Failures that the platform can be told to produce.
enum class Fault : std::uint8_t {
  Mutex,        // the mutex cannot be created
  EventExists,  // the named event is there already: another process has the library
  MapSelect,    // a bus window cannot be mapped
  MapAddress,
  MapData,
  Thread,     // the thread cannot be created
  Send,       // SendMessageTimeout fails
  Post,       // PostMessage fails
  Allocate,   // no memory for version information
  Terminate,  // a thread that is terminated goes on
};
inline constexpr std::size_t kFaultCount = 10;

class Faults {
 public:
  void Set(Fault fault, bool on) { on_[Index(fault)] = on; }
  // Asked where the failure would happen; counts when it is on.
  bool Fires(Fault fault) {
    if (on_[Index(fault)]) ++hits_[Index(fault)];
    return on_[Index(fault)];
  }
  unsigned Hits(Fault fault) const { return hits_[Index(fault)]; }

 private:
  static std::size_t Index(Fault fault) { return static_cast<std::size_t>(fault); }
  std::array<bool, kFaultCount> on_{};
  std::array<unsigned, kFaultCount> hits_{};
};

// Battery-backed memory: block 1 alone.
class Nvram {
 public:
  enum class Failure { None, Read, Write };
  void SetBlank();  // six bytes 0xFF
  // A magic is cut or zero-filled to four characters.
  void SetRecord(const std::string& magic, std::uint8_t standard, std::uint8_t channels);
  // The default record, made at the first attach unless something was set before.
  void MakeDefault(std::uint8_t channels);
  void SetFailure(Failure failure) { failure_ = failure; }
  const Bytes& Content() const { return content_; }
  unsigned Hits() const { return hits_; }  // failures produced

  bool Read(std::uint32_t block, std::uint32_t offset, std::uint32_t length, std::uint8_t* buffer);
  bool Write(std::uint32_t block, std::uint32_t offset, std::uint32_t length,
             const std::uint8_t* buffer);

 private:
  Bytes content_;
  bool made_ = false;
  Failure failure_ = Failure::None;
  unsigned hits_ = 0;
};

// The three bus windows as the processor sees them. Each has an address of its own; mapped twice,
// it must be unmapped twice.
class BusWindows {
 public:
  static constexpr std::size_t kCount = 3;
  // The window at a physical address, none for an address that is no bus window.
  static std::optional<BusWindow> AtPhysical(std::uint32_t physical);
  static volatile std::uint8_t* Address(BusWindow window);

  void Map(BusWindow window) { ++mapped_[static_cast<std::size_t>(window)]; }
  // False when it is not mapped.
  bool Unmap(BusWindow window);

  // The window that an address belongs to, none when nothing is mapped there.
  std::optional<BusWindow> Find(const volatile std::uint8_t* address) const {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(address) -
                               reinterpret_cast<std::uintptr_t>(memory_.data());
    if (offset >= sizeof(memory_) || offset % kBytes != 0 || mapped_[offset / kBytes] == 0) {
      return std::nullopt;
    }
    return static_cast<BusWindow>(offset / kBytes);
  }

 private:
  static constexpr std::size_t kBytes = 4;
  static std::array<std::uint8_t, kCount * kBytes> memory_;  // addresses only, never accessed
  std::array<unsigned, kCount> mapped_{};
};

// A file with a version resource.
struct VersionFile {
  enum class State { Present, Unreadable, NoRoot };  // size known; reading fails; no root block
  State state = State::Present;
  std::array<std::uint16_t, 4> version{};
};

// Paths compare without regard to case.
class Files {
 public:
  Files();  // the library's and the host's default files
  void Set(const std::string& path, const VersionFile& file);
  void Remove(const std::string& path);
  const VersionFile* Find(const std::string& path) const;
  // Paths whose size was asked, in order.
  std::vector<std::string> asked;

 private:
  std::map<std::string, VersionFile> files_;
};

// Stream drivers "CAM1:" and "VBE1:".
class Drivers {
 public:
  enum class State { Present, Absent, Null };  // absent: invalid handle, null: zero handle
  // Names compare without regard to case.
  void Set(const std::string& name, State state);
  State Get(const std::string& name) const;

  // What an open yields: `fresh` as the new handle, the invalid handle or 0.
  PlatHandle Open(const std::string& name, PlatHandle fresh);
  // The driver behind an open handle, null when there is none.
  const std::string* Find(PlatHandle handle) const;
  bool Close(PlatHandle handle);
  std::size_t OpenCount() const { return open_.size(); }
  // The driver that a call on a handle is meant for, empty when nobody can tell. For the invalid
  // handle it is the one whose open failed last and that was not closed since.
  std::string NameOf(PlatHandle handle) const;

 private:
  std::map<std::string, State> states_;
  std::map<PlatHandle, std::string> open_;
  std::vector<std::string> failed_;  // opens that gave the invalid handle, which is still in use
};

// All registers of the board at one moment; an empty position has none.
struct RegisterSnapshot {
  using Pages = std::array<std::array<std::uint8_t, kRegistersPerPage>, kPageCount>;
  std::array<std::optional<Pages>, kChipsMax> chips;
};
// Looks at the board without a bus cycle.
RegisterSnapshot TakeSnapshot(const Board& board);

// A message that reached the host window's procedure.
struct ReceivedMessage {
  std::uint32_t t = 0;  // virtual ms of its handling
  std::uint32_t message = 0;
  std::uint32_t wparam = 0;  // 0 where it is an address
  Bytes record;              // what wparam pointed to
  bool posted = false;
};

// The host's windows.
class Windows {
 public:
  PlatWindow Create();
  void Destroy(PlatWindow window);
  bool Exists(PlatWindow window) const;
  bool deaf = false;  // does not answer sent messages
  std::vector<ReceivedMessage> received;
  std::function<void(PlatWindow)> on_destroyed;  // told after a window is gone
  // What the window does with a message when it comes, sent or posted; its record may be written.
  std::function<void(std::uint32_t message, std::uintptr_t wparam)> procedure;

 private:
  std::vector<PlatWindow> windows_;
  PlatWindow next_ = 0x10010;  // window handles are never reused
};

class World {
 public:
  World();
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  Reports reports;
  Trace trace;
  Board board;
  Faults faults;
  Nvram nvram;
  Files files;
  Drivers drivers;
  Windows windows;
  BusWindows bus_windows;
  // Texts of system error codes; what is not here has no text.
  std::map<std::uint32_t, std::string> system_texts;
  unsigned system_text_asks = 0;  // how often a text was asked for
  unsigned thread_calls_off = 0;  // how often thread notifications were turned off
  unsigned long allocations = 0;  // live allocations
  // The registers when the library was last attached, none before the first attach.
  std::optional<RegisterSnapshot> at_attach;
  Kernel kernel;  // last: its threads use all of the above

  // Adds an event at the current time by the current thread.
  void Record(EventDetail detail);
};

// The one world that platform.h acts on. The thread that resets it is the main host thread.
extern World* g_the_world;  // null before the first use
World& MakeTheWorld();
inline World& TheWorld() { return g_the_world != nullptr ? *g_the_world : MakeTheWorld(); }
// A fresh world: ends left-over threads, forgets everything.
void ResetWorld();

// Text between the platform's form and the trace's; a null text is empty, an unpaired surrogate
// or a malformed byte becomes U+FFFD.
std::string ToUtf8(const char16_t* text);
std::u16string ToUtf16(const std::string& text);
// ASCII letters to lower case, for names that compare without regard to case.
std::string ToLower(std::string text);

}  // namespace sim
