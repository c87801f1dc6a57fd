// The bus windows: their emulation against the processor, on bytes of this program; and what the
// kit refuses.
#include <array>
#include <cstring>
#include <thread>

#include "byte_access.h"
#include "checks.h"
#include "host.h"
#include "io_pages.h"

namespace checks {
namespace {

constexpr unsigned kSelect = 0;
constexpr unsigned kAddress = 1;

// What is behind this program's own pages.
std::array<std::uint8_t, kit::kIoPages> g_cells;
std::array<std::uint64_t, kit::kIoPages> g_stores;
std::array<std::uint64_t, kit::kIoPages> g_loads;

void Store(int window, std::uint32_t value, unsigned) {
  const auto index = static_cast<std::size_t>(window);
  g_cells[index] = static_cast<std::uint8_t>(value);
  ++g_stores[index];
}
std::uint8_t Load(int window, unsigned) {
  const auto index = static_cast<std::size_t>(window);
  ++g_loads[index];
  return g_cells[index];
}
void Refuse(const char* reason, const std::uint8_t*) { throw std::runtime_error(reason); }

volatile std::uint8_t* Page(unsigned window) {
  static const bool open = kit::OpenIoPages({Store, Load, Refuse});
  Require(open, "there are no pages");
  g_stores = {};
  g_loads = {};
  return static_cast<volatile std::uint8_t*>(kit::IoPage(window));
}

#ifdef _WIN64

constexpr unsigned kRegisters = 16;
constexpr unsigned kStackPointer = 4;
using Registers = std::array<std::uint64_t, kRegisters>;
using Code = std::vector<std::uint8_t>;

void Append(Code& code, std::initializer_list<unsigned> bytes) {
  for (const unsigned byte : bytes) code.push_back(static_cast<std::uint8_t>(byte));
}

void AppendNumber(Code& code, std::uint64_t number, unsigned bytes) {
  for (unsigned i = 0; i < bytes; ++i) code.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

// Code that runs one instruction on given registers.
class Runner {
 public:
  Runner()
      : page_(static_cast<std::uint8_t*>(
            VirtualAlloc(nullptr, 0x1000, MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE))) {}
  ~Runner() { VirtualFree(page_, 0, MEM_RELEASE); }
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  Registers Run(const Code& instruction, const Registers& in) {
    Registers out{};
    Code code;
    Append(code, {0x53, 0x55, 0x56, 0x57});                          // push rbx, rbp, rsi, rdi
    Append(code, {0x41, 0x54, 0x41, 0x55, 0x41, 0x56, 0x41, 0x57});  // push r12-r15
    Append(code, {0x48, 0xB8});                                      // mov rax, &in
    AppendNumber(code, reinterpret_cast<std::uint64_t>(in.data()), 8);
    for (unsigned i = 1; i < kRegisters; ++i) Move(code, 0x8B, i);
    Append(code, {0x48, 0x8B, 0x00});  // mov rax, [rax]
    code.insert(code.end(), instruction.begin(), instruction.end());
    Append(code, {0x48, 0xA3});  // mov [&out], rax
    AppendNumber(code, reinterpret_cast<std::uint64_t>(out.data()), 8);
    Append(code, {0x48, 0xB8});  // mov rax, &out
    AppendNumber(code, reinterpret_cast<std::uint64_t>(out.data()), 8);
    for (unsigned i = 1; i < kRegisters; ++i) Move(code, 0x89, i);
    Append(code, {0x41, 0x5F, 0x41, 0x5E, 0x41, 0x5D, 0x41, 0x5C});
    Append(code, {0x5F, 0x5E, 0x5D, 0x5B, 0xC3});
    std::memcpy(page_, code.data(), code.size());
    FlushInstructionCache(GetCurrentProcess(), page_, code.size());
    reinterpret_cast<void (*)()>(reinterpret_cast<void*>(page_))();
    return out;
  }

 private:
  // mov between register i and its place behind rax.
  static void Move(Code& code, unsigned opcode, unsigned i) {
    if (i == kStackPointer) return;
    Append(code, {i < 8 ? 0x48u : 0x4Cu, opcode, 0x40 | (i & 7) << 3, 8 * i});
  }
  std::uint8_t* page_;
};

enum class Addressing { Plain, Displacement8, Displacement32, Index };

struct Form {
  const char* name;
  std::vector<unsigned> prefix;  // before REX
  std::vector<unsigned> opcode;
  bool wide;  // REX.W
  bool store;
  bool immediate;
  bool partial;  // a load leaves bits of its register alone
};

const std::vector<Form>& Forms() {
  static const std::vector<Form> forms = {
      {"mov m8, r8", {}, {0x88}, false, true, false, false},
      {"mov r8, m8", {}, {0x8A}, false, false, false, true},
      {"mov m8, imm8", {}, {0xC6}, false, true, true, false},
      {"movzx r32, m8", {}, {0x0F, 0xB6}, false, false, false, false},
      {"movzx r64, m8", {}, {0x0F, 0xB6}, true, false, false, false},
      {"movzx r16, m8", {0x66}, {0x0F, 0xB6}, false, false, false, true},
      {"movsx r32, m8", {}, {0x0F, 0xBE}, false, false, false, false},
      {"movsx r64, m8", {}, {0x0F, 0xBE}, true, false, false, false},
      {"movsx r16, m8", {0x66}, {0x0F, 0xBE}, false, false, false, true},
  };
  return forms;
}

constexpr std::uint64_t kIndexValue = 3;
constexpr unsigned kScale = 2;  // times four

std::int32_t Displacement(Addressing addressing) {
  switch (addressing) {
    case Addressing::Displacement8:
      return -77;
    case Addressing::Displacement32:
      return 0x12345;
    default:
      return 0;
  }
}

// The instruction with register `reg` and an operand at base + displacement (+ index).
Code Encode(const Form& form, unsigned reg, unsigned base, unsigned index, Addressing addressing,
            bool rex_always) {
  Code code;
  for (const unsigned byte : form.prefix) Append(code, {byte});
  const bool indexed = addressing == Addressing::Index;
  const unsigned rex = 0x40u | (form.wide ? 8u : 0u) | (reg >= 8 ? 4u : 0u) |
                       (indexed && index >= 8 ? 2u : 0u) | (base >= 8 ? 1u : 0u);
  if (rex != 0x40 || rex_always) Append(code, {rex});
  for (const unsigned byte : form.opcode) Append(code, {byte});
  // rbp and r13 have no form without displacement.
  const bool needs_displacement = (base & 7) == 5;
  unsigned mod = 0;
  unsigned displacement_bytes = 0;
  if (addressing == Addressing::Displacement32) {
    mod = 2;
    displacement_bytes = 4;
  } else if (addressing == Addressing::Displacement8 || needs_displacement) {
    mod = 1;
    displacement_bytes = 1;
  }
  const unsigned field = form.immediate ? 0 : reg & 7;
  const bool sib = indexed || (base & 7) == kStackPointer;
  Append(code, {mod << 6 | field << 3 | (sib ? 4 : base & 7)});
  if (sib) {
    Append(code, {indexed ? kScale << 6 | (index & 7) << 3 | (base & 7) : 0x20 | (base & 7)});
  }
  AppendNumber(code, static_cast<std::uint32_t>(Displacement(addressing)), displacement_bytes);
  if (form.immediate) Append(code, {0xA7});
  return code;
}

std::string InHex(const Code& code) {
  std::string text;
  char digits[4];
  for (const std::uint8_t byte : code) {
    std::snprintf(digits, sizeof(digits), " %02X", byte);
    text += digits;
  }
  return text;
}

class Differential {
 public:
  explicit Differential(volatile std::uint8_t* window) : window_(window) {}
  unsigned cases = 0;

  void Try(const Form& form, unsigned reg, unsigned base, unsigned index, Addressing addressing,
           bool rex_always, std::uint8_t byte) {
    if (index == kStackPointer || index == base || base == kStackPointer) return;
    if (!form.immediate && reg == kStackPointer && (form.wide || !IsByteRegister(form))) return;
    const bool high = IsByteRegister(form) && !rex_always && !form.wide && reg >= 4 && reg < 8;
    if (high && (base >= 8 || (addressing == Addressing::Index && index >= 8))) return;  // has REX
    if (IsByteRegister(form) && reg == kStackPointer && !high) return;
    const unsigned real = high ? reg - 4 : reg;
    // The address itself differs between the two runs.
    const bool touches = !form.immediate && real == base;
    if (touches && (form.store || form.partial || high)) return;
    const Code code = Encode(form, reg, base, index, addressing, rex_always);

    Registers in{};
    for (unsigned i = 0; i < kRegisters; ++i) in[i] = 0x1111111111111111u * i ^ 0x80C0A0F0908070F1u;
    if (addressing == Addressing::Index) in[index] = kIndexValue;
    const std::uint64_t offset = static_cast<std::uint64_t>(Displacement(addressing)) +
                                 (addressing == Addressing::Index ? kIndexValue << kScale : 0);

    std::uint8_t memory = byte;
    in[base] = reinterpret_cast<std::uint64_t>(&memory) - offset;
    Registers wanted = runner_.Run(code, in);
    g_cells.fill(byte);
    in[base] = reinterpret_cast<std::uint64_t>(window_) - offset;
    Registers found = runner_.Run(code, in);
    if (!touches) wanted[base] = found[base] = 0;
    ++cases;
    Require(found == wanted, std::string(form.name) + ": other registers:" + InHex(code));
    Require(g_cells[0] == memory, std::string(form.name) + ": another byte:" + InHex(code));
  }

 private:
  static bool IsByteRegister(const Form& form) {
    return !form.immediate && form.opcode.size() == 1;
  }
  volatile std::uint8_t* window_;
  Runner runner_;
};

void AsTheProcessor() {
  Differential differential(Page(kSelect));
  for (const Form& form : Forms()) {
    for (unsigned reg = 0; reg < kRegisters; ++reg) {
      if (form.immediate && reg != 0) continue;
      for (unsigned base = 0; base < kRegisters; ++base) {
        for (const Addressing addressing : {Addressing::Plain, Addressing::Displacement8,
                                            Addressing::Displacement32, Addressing::Index}) {
          const unsigned index = (base + 3) % kRegisters;
          const std::uint8_t byte = (reg + base) % 2 == 0 ? 0x5A : 0xC3;
          differential.Try(form, reg, base, index, addressing, false, byte);
          if (base % 4 == 1) differential.Try(form, reg, base, index, addressing, true, byte);
        }
      }
    }
  }
  Require(differential.cases > 3000, std::to_string(differential.cases) + " cases alone");
  RequireEqual(g_stores[0] + g_loads[0], std::uint64_t{differential.cases}, "the accesses");
}

#endif

// One after the other or at once: none gets lost.
void TwoThreads() {
  constexpr unsigned kAccesses = 20'000;
  volatile std::uint8_t* const select = Page(kSelect);
  volatile std::uint8_t* const address = Page(kAddress);
  std::array<unsigned, 2> wrong{};
  const auto use = [&](volatile std::uint8_t* window, unsigned& errors) {
    for (unsigned i = 0; i < kAccesses; ++i) {
      *window = static_cast<std::uint8_t>(i * 7);
      if (*window != static_cast<std::uint8_t>(i * 7)) ++errors;
    }
  };
  std::thread one([&] { use(select, wrong[0]); });
  std::thread two([&] { use(address, wrong[1]); });
  one.join();
  two.join();
  RequireEqual(wrong[0] + wrong[1], 0u, "the number of wrong bytes");
  for (const std::size_t window : {0u, 1u}) {
    RequireEqual(g_stores[window], std::uint64_t{kAccesses}, "the number of stores");
    RequireEqual(g_loads[window], std::uint64_t{kAccesses}, "the number of loads");
  }
}

struct Decoding {
  std::array<std::uint8_t, 12> code;
  bool long_mode;
  bool known;
  bool store;
  unsigned bytes;
  unsigned length;
};

void Decodings() {
  static constexpr Decoding kDecodings[] = {
      {{0x88, 0x10}, false, true, true, 1, 2},                     // mov [eax], dl
      {{0x8A, 0x42, 0x08}, false, true, false, 1, 3},              // mov al, [edx+8]
      {{0xC6, 0x04, 0x24, 0x07}, false, true, true, 1, 4},         // mov [esp], 7
      {{0x0F, 0xB6, 0x05, 1, 2, 3, 4}, false, true, false, 1, 7},  // movzx eax, [abs]
      {{0x88, 0x04, 0x8D, 1, 2, 3, 4}, false, true, true, 1, 7},   // mov [ecx*4+d], al
      {{0xA2, 1, 2, 3, 4}, false, true, true, 1, 5},               // mov [abs], al
      {{0xA0, 1, 2, 3, 4, 5, 6, 7, 8}, true, true, false, 1, 9},   // mov al, [abs]
      {{0x88, 0x05, 1, 2, 3, 4}, true, true, true, 1, 6},          // mov [rip+d], al
      {{0xC6, 0x80, 1, 2, 3, 4, 9}, true, true, true, 1, 7},       // mov [rax+d], 9
      {{0x89, 0x10}, true, true, true, 4, 2},                      // mov [rax], edx
      {{0x66, 0x89, 0x10}, true, true, true, 2, 3},                // mov [rax], dx
      {{0x48, 0x8B, 0x10}, true, true, false, 8, 3},               // mov rdx, [rax]
      {{0x0F, 0xB7, 0x10}, true, true, false, 2, 3},               // movzx edx, m16
      {{0xC7, 0x00, 1, 2, 3, 4}, true, true, true, 4, 6},          // mov m32, imm
      {{0x80, 0x08, 0x01}, true, false, false, 0, 0},              // or m8, 1
      {{0xFE, 0x00}, true, false, false, 0, 0},                    // inc m8
      {{0x22, 0x00}, true, false, false, 0, 0},                    // and al, m8
      {{0xA4}, true, false, false, 0, 0},                          // movsb
  };
  for (const Decoding& row : kDecodings) {
    const std::string what = "row " + std::to_string(&row - kDecodings) + ": ";
    const auto access = DecodeAccess(row.code.data(), row.long_mode);
    RequireEqual(access.has_value(), row.known, what + "known");
    if (!access) continue;
    RequireEqual(access->store, row.store, what + "store");
    RequireEqual(access->bytes, row.bytes, what + "width");
    RequireEqual(access->length, row.length, what + "length");
  }
}

// A process that makes a wide access to the board, or one that is no plain move, is ended, and told
// why.
void Refusals() {
  constexpr std::uint32_t kRefused = 3;
  for (const wchar_t* access : {L"wide-store", L"wide-load", L"read-modify-write", L"beside"}) {
    Child child(std::wstring(L"role ") + access);
    RequireEqual(child.Wait(), kRefused, "the exit status of a forbidden access");
    RequireText(child.Texts(), "no byte's plain move");
  }
}

constexpr std::array kChecks = {
#ifdef _WIN64
    Check{"byte accesses are emulated as the processor does them", AsTheProcessor},
#endif
    Check{"instructions are told apart", Decodings},
    Check{"two threads lose no access", TwoThreads},
    Check{"an access that is no byte's plain move ends the process", Refusals},
};

}  // namespace

std::span<const Check> AccessChecks() { return kChecks; }

int ForbiddenAccess(const std::string& which) {
  constexpr DWORD kSelectWindow = 0x06600000;
  constexpr WORD kMap = 8;
  using Map = void*(WINAPI*)(DWORD low, DWORD high, DWORD bytes, DWORD cached);
  const auto map = reinterpret_cast<Map>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"CEDDK.dll"), MAKEINTRESOURCEA(kMap))));
  auto* const window = static_cast<volatile std::uint8_t*>(map(kSelectWindow, 0, 4, 0));
  if (window == nullptr) return 2;
  if (which == "wide-store") *reinterpret_cast<volatile std::uint32_t*>(window) = 1;
  if (which == "wide-load") return *reinterpret_cast<volatile std::uint16_t*>(window) != 0;
  if (which == "read-modify-write") {
    asm volatile("orb $1, %0" : "+m"(*window));
  }
  if (which == "beside") window[1] = 1;
  return 0;
}

}  // namespace checks
