#include "tests/device/emulator/toy_program.h"

namespace emulator {
namespace {

constexpr unsigned kIp = 12;
constexpr unsigned kSp = 13;
constexpr std::size_t kInRegisters = 4;

std::uint32_t LoadFrom(unsigned reg, unsigned base) { return 0xE5900000 | base << 16 | reg << 12; }
std::uint32_t StoreTo(unsigned reg, unsigned base, std::uint32_t offset = 0) {
  return 0xE5800000 | base << 16 | reg << 12 | offset;
}

}  // namespace

ToyProgram::ToyProgram(bool program) { toy_.program = program; }

std::uint32_t ToyProgram::Room(std::uint32_t bytes) {
  const std::uint32_t at = free_;
  free_ += (bytes + 3) / 4 * 4;
  return at;
}

std::uint32_t ToyProgram::Text(const std::u16string& text) {
  const std::uint32_t at = Room(static_cast<std::uint32_t>(2 * (text.size() + 1)));
  toy_.texts[at] = text;
  return at;
}

std::uint32_t ToyProgram::Texts(const std::vector<std::u16string>& texts) {
  constexpr std::uint32_t kBytes = 32;
  const std::uint32_t first = Room(kBytes * static_cast<std::uint32_t>(texts.size()));
  for (std::uint32_t i = 0; i < texts.size(); ++i) toy_.texts[first + kBytes * i] = texts[i];
  return first;
}

std::uint32_t ToyProgram::Word(std::uint32_t value) {
  const std::uint32_t at = Room(4);
  toy_.texts[at] = {static_cast<char16_t>(value), static_cast<char16_t>(value >> 16)};
  Room(4);  // the text's end
  return at;
}

std::uint32_t ToyProgram::Begin() {
  const auto at = ToyImage::kCode + static_cast<std::uint32_t>(4 * toy_.code.size());
  Put(0xE92D41F0);  // push {r4-r8, lr}
  for (unsigned i = 0; i < kInRegisters; ++i) Put(0xE1A00000 | (4 + i) << 12 | i);  // mov
  return at;
}

// The number stands behind a jump over it.
void ToyProgram::Load(unsigned reg, ToyArgument argument) {
  if (argument.kind == ToyArgument::Kind::Register) {
    Put(0xE1A00000 | reg << 12 | argument.value);  // mov
    return;
  }
  Put(0xE59F0000 | reg << 12);  // ldr reg, [pc]
  Put(0xEA000000);              // b to what follows the number
  if (argument.kind == ToyArgument::Kind::Number) {
    Put(argument.value);
    return;
  }
  toy_.relocations.push_back(ToyImage::kCode + static_cast<std::uint32_t>(4 * toy_.code.size()));
  Put(ToyImage::kBase + argument.value);
  if (argument.kind == ToyArgument::Kind::Word) Put(LoadFrom(reg, reg));
}

std::uint32_t ToyProgram::SlotOf(const std::string& dll, const std::string& name) {
  std::uint32_t i = 0;
  for (; i < toy_.imports.size(); ++i) {
    if (toy_.imports[i].dll == dll && toy_.imports[i].name == name) break;
  }
  if (i == toy_.imports.size()) toy_.imports.push_back({dll, name});
  return ToyImage::kData + 8 * i;
}

void ToyProgram::Arguments(std::initializer_list<ToyArgument> arguments) {
  const std::size_t on_stack =
      arguments.size() > kInRegisters ? arguments.size() - kInRegisters : 0;
  if (on_stack != 0) Put(0xE24DD000 | static_cast<std::uint32_t>(4 * on_stack));  // sub sp, sp
  std::uint32_t i = 0;
  for (const ToyArgument& argument : arguments) {
    if (i >= kInRegisters) {
      Load(kIp, argument);
      Put(StoreTo(kIp, kSp, 4 * (i - static_cast<std::uint32_t>(kInRegisters))));
    }
    ++i;
  }
  i = 0;
  for (const ToyArgument& argument : arguments) {
    if (i < kInRegisters) Load(i, argument);
    ++i;
  }
}

void ToyProgram::Jump(std::size_t arguments, std::uint32_t result) {
  Put(0xE1A0E00F);  // mov lr, pc
  Put(0xE12FFF1C);  // bx ip
  if (arguments > kInRegisters) {
    Put(0xE28DD000 | static_cast<std::uint32_t>(4 * (arguments - kInRegisters)));  // add sp, sp
  }
  if (result == 0) return;
  Load(1, AddressOf(result));
  Put(StoreTo(0, 1));
}

void ToyProgram::Call(const std::string& name, std::initializer_list<ToyArgument> arguments,
                      std::uint32_t result, const std::string& dll) {
  Arguments(arguments);
  Load(kIp, WordAt(SlotOf(dll, name)));
  Jump(arguments.size(), result);
}

void ToyProgram::CallWord(std::uint32_t word, std::initializer_list<ToyArgument> arguments,
                          std::uint32_t result) {
  Arguments(arguments);
  Load(kIp, WordAt(word));
  Jump(arguments.size(), result);
}

void ToyProgram::Store(std::uint32_t word, ToyArgument value) {
  Load(0, value);
  Load(1, AddressOf(word));
  Put(StoreTo(0, 1));
}

void ToyProgram::StoreByte(std::uint32_t word, std::uint8_t value) {
  Load(0, Number(value));
  Load(1, WordAt(word));
  Put(0xE5C10000);  // strb r0, [r1]
}

void ToyProgram::Count(std::uint32_t word) {
  Load(1, AddressOf(word));
  Put(LoadFrom(0, 1));
  Put(0xE2800001);  // add r0, r0, #1
  Put(StoreTo(0, 1));
}

void ToyProgram::Say(std::uint32_t first_text, ToyArgument number) {
  Load(1, number);
  Load(0, AddressOf(first_text));
  Put(0xE0800281);  // add r0, r0, r1, lsl #5
  Load(kIp, WordAt(SlotOf("COREDLL.dll", "OutputDebugStringW")));
  Jump(1, 0);
}

void ToyProgram::Return(ToyArgument value) {
  Load(0, value);
  Put(0xE8BD41F0);  // pop {r4-r8, lr}
  Put(0xE12FFF1E);  // bx lr
}

}  // namespace emulator
