// Texts and C functions as the device's system has them.
#include "device/emulator/imports.h"

#include <gtest/gtest.h>

#include <cstring>

#include "device/emulator/machine.h"
#include "sim/world.h"
#include "tests/device/emulator/toy_image.h"

namespace emulator {
namespace {

class EmulatorImports : public testing::Test {
 protected:
  void SetUp() override { sim::ResetWorld(); }
  void TearDown() override { sim::ResetWorld(); }

  static ToyImage Toy() {
    ToyImage toy;
    toy.code = {0xE12FFF1E};
    for (const char* name :
         {"_vsnwprintf", "wsprintfW", "NKDbgPrintfW", "MultiByteToWideChar", "FormatMessageW",
          "LocalFree", "strlen", "strcmp", "strncmp", "strstr", "atoi", "GetFileVersionInfoSizeW",
          "GetFileVersionInfoW", "VerQueryValueW"}) {
      toy.imports.push_back({"COREDLL.dll", name});
    }
    return toy;
  }

  // Memory of the guest with these bytes.
  std::uint32_t Put(const void* data, std::size_t bytes) {
    const std::uint32_t address = machine_.Heap().Allocate(static_cast<std::uint32_t>(bytes));
    std::memcpy(cpu_->Write(address, static_cast<std::uint32_t>(bytes)), data, bytes);
    return address;
  }
  std::uint32_t Put(const std::string& text) { return Put(text.c_str(), text.size() + 1); }
  std::uint32_t Put(const std::u16string& text) { return Put(text.c_str(), 2 * (text.size() + 1)); }
  std::uint32_t Room(std::uint32_t bytes) { return machine_.Heap().Allocate(bytes); }

  // Calls an import as code of the image does.
  std::uint32_t Call(const std::string& name, std::initializer_list<std::uint32_t> arguments) {
    unsigned trap = 1;
    for (const ImageImport& import : machine_.Image().Imports()) {
      if (import.name == name) return cpu_->Call(Machine::TrapAddress(trap), arguments);
      ++trap;
    }
    throw std::logic_error("not imported: " + name);
  }

  std::u16string Format(const std::u16string& format, std::vector<std::uint32_t> words) {
    std::size_t next = 0;
    return FormatForGuest(*cpu_, format, [&] { return words.at(next++); });
  }

  Machine machine_{PeImage::Parse(Toy().Bytes())};
  Machine::Lease cpu_{machine_};
};

TEST_F(EmulatorImports, FormatsNumbersOfTheGuest) {
  EXPECT_EQ(Format(u"%d %u %x %08X|%3d|%-3d|%c", {0xFFFFFFFF, 0xFFFFFFFF, 0xAB, 0x12, 5, 6, 'z'}),
            u"-1 4294967295 ab 00000012|  5|6  |z");
  EXPECT_EQ(Format(u"%*d|%.*d|%%", {4, 7, 3, 7}), u"   7|007|%");
  EXPECT_EQ(Format(u"%p", {0x1234}), u"00001234");
  EXPECT_EQ(Format(u"100%", {}), u"100%");
}

TEST_F(EmulatorImports, CutsATextWithoutABufferSizeAt1024Units) {
  const std::uint32_t room = Room(2 * 1024);
  const std::uint32_t format = Put(std::u16string(u"%s"));
  EXPECT_EQ(Call("wsprintfW", {room, format, Put(std::u16string(1023, u'a'))}), 1023u);
  EXPECT_EQ(Call("wsprintfW", {room, format, Put(std::u16string(2000, u'a'))}), 1023u);
  EXPECT_EQ(cpu_->WideText(room), std::u16string(1023, u'a'));
}

TEST_F(EmulatorImports, FormatsTextsOfTheGuest) {
  const std::uint32_t wide = Put(std::u16string(u"wide"));
  const std::uint32_t narrow = Put(std::string("narrow"));
  EXPECT_EQ(Format(u"[%s] [%S] [%hs] [%s]", {wide, narrow, narrow, 0}),
            u"[wide] [narrow] [narrow] [(null)]");
  EXPECT_EQ(Format(u"[%.2s] [%6s] [%-6s]", {wide, wide, wide}), u"[wi] [  wide] [wide  ]");
}

TEST_F(EmulatorImports, TakesNoMoreOfATextThanItsPrecision) {
  const char16_t units[] = {u'a', u'b'};  // no terminator
  EXPECT_EQ(Format(u"%.2s", {Put(units, sizeof(units))}), u"ab");
  EXPECT_THROW(Format(u"%s", {Put(units, sizeof(units))}), harness::ImageFault);
}

TEST_F(EmulatorImports, RefusesA64BitArgumentInAFormat) {
  EXPECT_THROW(Format(u"%I64d", {1, 2}), harness::ImageFault);
  EXPECT_THROW(Format(u"%lld", {1, 2}), harness::ImageFault);
}

TEST_F(EmulatorImports, CutsAFormattedTextAsTheSystemDoes) {
  const std::uint32_t format = Put(std::u16string(u"%d"));
  const std::uint32_t words[] = {12345};
  const std::uint32_t list = Put(words, sizeof(words));
  struct Case {
    std::uint32_t units;
    std::uint32_t result;
    const char16_t* text;  // with what stood behind it before
  };
  for (const Case& c : {Case{8, 5, u"12345\0~~"}, Case{6, 5, u"12345\0~~"}, Case{5, 5, u"12345~~~"},
                        Case{3, 0xFFFFFFFF, u"123~~~~~"}}) {
    const std::uint32_t buffer = Put(u"~~~~~~~~", 16);
    EXPECT_EQ(Call("_vsnwprintf", {buffer, c.units, format, list}), c.result) << c.units;
    EXPECT_EQ(std::memcmp(cpu_->Read(buffer, 16), c.text, 16), 0) << c.units;
  }
}

TEST_F(EmulatorImports, PrintsToTheKernelWithArgumentsFromRegistersAndStack) {
  const std::uint32_t format = Put(std::u16string(u"%d %d %d %d %s"));
  Call("NKDbgPrintfW", {format, 1, 2, 3, 4, Put(std::u16string(u"five"))});
  const sim::Trace& trace = sim::TheWorld().trace;
  ASSERT_EQ(trace.Events().size(), 1u);
  const auto* event = trace.As<sim::DebugEvent>(trace.Events()[0]);
  ASSERT_NE(event, nullptr);
  EXPECT_TRUE(event->kernel);
  EXPECT_EQ(event->text, "1 2 3 4 five");
}

TEST_F(EmulatorImports, WidensAnAnsiText) {
  const std::uint32_t text = Put(std::string("abc\xE9"));
  const std::uint32_t buffer = Room(16);
  EXPECT_EQ(Call("MultiByteToWideChar", {0, 0, text, 0xFFFFFFFF, buffer, 8}), 5u);
  EXPECT_EQ(cpu_->WideText(buffer), u"abc\u00E9");
  // What does not fit is an error, and has no terminator.
  EXPECT_EQ(Call("MultiByteToWideChar", {0, 0, text, 0xFFFFFFFF, buffer, 2}), 0u);
}

TEST_F(EmulatorImports, GivesAnErrorTextInMemoryThatCanBeFreed) {
  const std::uint32_t where = Room(4);
  EXPECT_EQ(Call("FormatMessageW", {0x1100, 0, 5, 0x0409, where, 0, 0}), 19u);
  EXPECT_EQ(cpu_->WideText(cpu_->ReadWord(where)), u"Access is denied.\r\n");
  EXPECT_EQ(sim::TheWorld().allocations, 1u);
  Call("LocalFree", {cpu_->ReadWord(where)});
  EXPECT_EQ(sim::TheWorld().allocations, 0u);
  EXPECT_THROW(cpu_->Read(cpu_->ReadWord(where), 1), harness::ImageFault);
  EXPECT_EQ(Call("FormatMessageW", {0x1100, 0, 77777, 0x0409, where, 0, 0}), 0u);
}

TEST_F(EmulatorImports, FindsTheVersionInTheInformationThatItRead) {
  const std::uint32_t path = Put(std::u16string(u"\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL"));
  const std::uint32_t zero = Room(4);
  const std::uint32_t bytes = Call("GetFileVersionInfoSizeW", {path, zero});
  ASSERT_GT(bytes, 0u);
  EXPECT_EQ(cpu_->ReadWord(zero), 0u);
  const std::uint32_t buffer = Room(bytes);
  EXPECT_EQ(Call("GetFileVersionInfoW", {path, 0, bytes, buffer}), 1u);
  const std::uint32_t value = Room(4);
  const std::uint32_t length = Room(4);
  EXPECT_EQ(Call("VerQueryValueW", {buffer, Put(std::u16string(u"\\")), value, length}), 1u);
  EXPECT_EQ(cpu_->ReadWord(length), 52u);
  const std::uint32_t info = cpu_->ReadWord(value);
  EXPECT_EQ(cpu_->ReadWord(info), 0xFEEF04BDu);
  EXPECT_EQ(cpu_->ReadWord(info + 8), 0x00010000u);
  EXPECT_EQ(cpu_->ReadWord(info + 12), 0x00010006u);
}

TEST_F(EmulatorImports, TakesVersionInformationAtWholeWordsAlone) {
  const std::uint32_t path = Put(std::u16string(u"\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL"));
  const std::uint32_t bytes = Call("GetFileVersionInfoSizeW", {path, 0});
  const std::uint32_t buffer = Room(bytes + 2);
  EXPECT_EQ(Call("GetFileVersionInfoW", {path, 0, bytes, buffer}), 1u);
  EXPECT_THROW(Call("GetFileVersionInfoW", {path, 0, bytes, buffer + 2}), harness::ImageFault);
}

TEST_F(EmulatorImports, HasTheSystemsCFunctions) {
  const std::uint32_t abc = Put(std::string("abc"));
  const std::uint32_t abd = Put(std::string("abd"));
  EXPECT_EQ(Call("strlen", {abc}), 3u);
  EXPECT_EQ(Call("strcmp", {abc, Put(std::string("abc"))}), 0u);
  EXPECT_LT(static_cast<std::int32_t>(Call("strcmp", {abc, abd})), 0);
  EXPECT_GT(static_cast<std::int32_t>(Call("strcmp", {abd, abc})), 0);
  EXPECT_EQ(Call("strncmp", {abc, abd, 2}), 0u);
  EXPECT_NE(Call("strncmp", {abc, abd, 3}), 0u);
  EXPECT_EQ(Call("strstr", {abc, Put(std::string("bc"))}), abc + 1);
  EXPECT_EQ(Call("strstr", {abc, abd}), 0u);
  EXPECT_EQ(Call("atoi", {Put(std::string(" -42x"))}), static_cast<std::uint32_t>(-42));
}

}  // namespace
}  // namespace emulator
