// Toy images whose code calls the system one call after the other.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/device/emulator/toy_image.h"

namespace emulator {

// An argument of a call.
struct ToyArgument {
  enum class Kind { Number, Address, Word, Register };
  Kind kind = Kind::Number;
  std::uint32_t value = 0;
};
// Made of a number, the address of what lies in the image, the word that lies there, or of one of
// the entry's own arguments.
inline ToyArgument Number(std::uint32_t value) { return {ToyArgument::Kind::Number, value}; }
inline ToyArgument AddressOf(std::uint32_t rva) { return {ToyArgument::Kind::Address, rva}; }
inline ToyArgument WordAt(std::uint32_t rva) { return {ToyArgument::Kind::Word, rva}; }
inline ToyArgument Given(std::uint32_t argument) {
  return {ToyArgument::Kind::Register, 4 + argument};
}

class ToyProgram {
 public:
  // An EXE, or a DLL whose entry runs the code for each reason.
  explicit ToyProgram(bool program = true);

  // Room in the data.
  std::uint32_t Text(const std::u16string& text);
  std::uint32_t Word(std::uint32_t value = 0);
  std::uint32_t Room(std::uint32_t bytes);
  // Texts of at most 15 units, for Say.
  std::uint32_t Texts(const std::vector<std::u16string>& texts);

  // A function begins here; its four arguments are Given(0) to Given(3). The first is the entry.
  std::uint32_t Begin();
  // Calls the system; the result goes into the word, when one is given.
  void Call(const std::string& name, std::initializer_list<ToyArgument> arguments,
            std::uint32_t result = 0, const std::string& dll = "COREDLL.dll");
  // Calls where the word points to.
  void CallWord(std::uint32_t word, std::initializer_list<ToyArgument> arguments,
                std::uint32_t result = 0);
  void Store(std::uint32_t word, ToyArgument value);
  // A byte to where the word points to.
  void StoreByte(std::uint32_t word, std::uint8_t value);
  // One more into a word.
  void Count(std::uint32_t word);
  // Writes the text that is this many texts of 16 units behind the first.
  void Say(std::uint32_t first_text, ToyArgument number);
  void Return(ToyArgument value);
  void Export(const std::string& name, std::uint32_t function) {
    toy_.exports[name] = function - ToyImage::kCode;
  }

  ToyImage& Image() { return toy_; }
  std::vector<std::uint8_t> Bytes() const { return toy_.Bytes(); }

 private:
  void Put(std::uint32_t instruction) { toy_.code.push_back(instruction); }
  void Load(unsigned reg, ToyArgument argument);
  void Arguments(std::initializer_list<ToyArgument> arguments);
  void Jump(std::size_t arguments, std::uint32_t result);
  std::uint32_t SlotOf(const std::string& dll, const std::string& name);

  ToyImage toy_;
  std::uint32_t free_ = ToyImage::kData + 0x200;
};

}  // namespace emulator
