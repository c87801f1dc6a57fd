// Programs of a card and their libraries: which file, in which order, and what is refused.
#include "device/emulator/loader.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "device/emulator/imports.h"
#include "device/emulator/system_exports.h"
#include "tests/device/emulator/device_fixture.h"

namespace emulator {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using LoaderTest = DeviceTest;

// Loads what it is told to, and returns the error, 0 when it came.
ToyProgram LoadOf(const std::u16string& name) {
  ToyProgram program;
  const std::uint32_t text = program.Text(name);
  const std::uint32_t error = program.Word();
  program.Begin();
  program.Call("SetLastError", {Number(0)});
  program.Call("LoadLibraryW", {AddressOf(text)});
  program.Call("GetLastError", {}, error);
  program.Return(WordAt(error));
  return program;
}

TEST_F(LoaderTest, GivesAProgramItsCommandLineAndTellsItsExitCode) {
  ToyProgram program;
  program.Begin();
  program.Call("OutputDebugStringW", {Given(2)});
  program.Return(Number(42));
  Put("A.exe", program);
  EXPECT_EQ(Run("a.EXE", {}, "one two"), 42u);
  EXPECT_THAT(Said(), ElementsAre("one two"));
}

TEST_F(LoaderTest, GivesAProgramItsModuleNothingElseAndAShow) {
  for (const auto& [argument, expected] : {std::pair{1u, 0u}, {3u, 1u}}) {
    ToyProgram program;
    program.Begin();
    program.Return(Given(argument));
    Put("A.exe", program);
    EXPECT_EQ(Run(), expected) << argument;
  }
}

TEST_F(LoaderTest, AttachesALibraryBehindWhatItNeedsAndDetachesItBefore) {
  ToyProgram upper = Library(u"B");
  upper.Image().imports.push_back({"C.dll", "Nothing"});
  ToyProgram lower = Library(u"C");
  lower.Export("Nothing", ToyImage::kCode);
  ToyProgram program;
  const std::uint32_t text = program.Text(u"main");
  program.Image().imports = {{"B.dll", "Nothing"}};
  program.Begin();
  program.Call("OutputDebugStringW", {AddressOf(text)});
  program.Return(Number(0));
  upper.Export("Nothing", ToyImage::kCode);
  Put("A.exe", program);
  Put("B.dll", upper);
  Put("C.dll", lower);
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("C attach", "B attach", "main", "B detach", "C detach"));
}

TEST_F(LoaderTest, LooksForALibraryBesideTheProgramThenInWindowsThenInTheRoot) {
  Put("DIR/A.exe", LoadOf(u"b"));
  Put("b.dll", Library(u"R"));
  EXPECT_EQ(Run("\\dir\\A.exe"), 0u);
  EXPECT_THAT(Said(), ElementsAre("R attach", "R detach"));
  Put("Windows/B.DLL", Library(u"W"));
  EXPECT_EQ(Run("\\dir\\A.exe"), 0u);
  EXPECT_THAT(Said(), ElementsAre("W attach", "W detach"));
  Put("Dir/b.dll", Library(u"x"));  // another folder on the PC, and none on the device
  Put("DIR/b.dll", Library(u"P"));
  EXPECT_EQ(Run("\\dir\\A.exe"), 0u);
  EXPECT_THAT(Said(), ElementsAre("P attach", "P detach"));
}

TEST_F(LoaderTest, LoadsByAPathWhatLiesThereAndNothingElse) {
  Put("A.exe", LoadOf(u"\\DLL\\b.dll"));
  Put("b.dll", Library(u"B"));
  EXPECT_EQ(Run(), kErrorModuleNotFound);
  Put("DLL/b.dll", Library(u"D"));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("D attach", "D detach"));
}

TEST_F(LoaderTest, GivesTheSameModuleForASecondLoadAndAttachesItOnce) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"b.dll");
  const std::uint32_t path = program.Text(u"\\B.DLL");
  const std::uint32_t freed = program.Text(u"freed once");
  const std::uint32_t gone = program.Text(u"freed twice");
  const std::uint32_t first = program.Word();
  const std::uint32_t second = program.Word();
  program.Begin();
  program.Call("LoadLibraryW", {AddressOf(name)}, first);
  program.Call("LoadLibraryW", {AddressOf(path)}, second);
  program.Call("FreeLibrary", {WordAt(first)});
  program.Call("OutputDebugStringW", {AddressOf(freed)});
  program.Call("FreeLibrary", {WordAt(second)});
  program.Call("OutputDebugStringW", {AddressOf(gone)});
  program.Call("memcmp", {AddressOf(first), AddressOf(second), Number(4)}, first);
  program.Return(WordAt(first));
  Put("A.exe", program);
  Put("b.dll", Library(u"B"));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("B attach", "freed once", "B detach", "freed twice"));
}

TEST_F(LoaderTest, LoadsAFreshCopyAfterTheLastFree) {
  ToyProgram library(false);
  const std::uint32_t count = library.Word();
  library.Begin();
  library.Count(count);
  library.Return(Number(1));
  library.Export("Count", library.Begin());
  library.Return(WordAt(count));
  ToyProgram program;
  const std::uint32_t name = program.Text(u"b.dll");
  const std::uint32_t export_name = program.Text(u"Count");
  const std::uint32_t module = program.Word();
  const std::uint32_t function = program.Word();
  program.Begin();
  for (int round = 0; round < 2; ++round) {
    program.Call("LoadLibraryW", {AddressOf(name)}, module);
    program.Call("GetProcAddressW", {WordAt(module), AddressOf(export_name)}, function);
    program.CallWord(function, {}, function);
    if (round == 0) program.Call("FreeLibrary", {WordAt(module)});
  }
  program.Return(WordAt(function));
  Put("A.exe", program);
  Put("b.dll", library);
  EXPECT_EQ(Run(), 1u);
}

TEST_F(LoaderTest, FindsAFunctionByNameAndByNumber) {
  for (const bool by_name : {true, false}) {
    ToyProgram library(false);
    library.Begin();
    library.Return(Number(1));
    library.Export("First", ToyImage::kCode);
    library.Export("Second", library.Begin());
    library.Return(Number(7));
    ToyProgram program;
    const std::uint32_t name = program.Text(u"b.dll");
    const std::uint32_t export_name = program.Text(u"Second");
    const std::uint32_t word = program.Word();
    program.Begin();
    program.Call("LoadLibraryW", {AddressOf(name)}, word);
    program.Call("GetProcAddressW", {WordAt(word), by_name ? AddressOf(export_name) : Number(1)},
                 word);
    program.CallWord(word, {}, word);
    program.Return(WordAt(word));
    Put("A.exe", program);
    Put("b.dll", library);
    EXPECT_EQ(Run(), 7u);
  }
}

TEST_F(LoaderTest, TellsThatAFunctionIsNotExported) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"coredll");
  const std::uint32_t function = program.Text(u"CreateWorld");
  const std::uint32_t word = program.Word();
  program.Begin();
  program.Call("LoadLibraryW", {AddressOf(name)}, word);
  program.Call("GetProcAddressW", {WordAt(word), AddressOf(function)});
  program.Call("GetLastError", {}, word);
  program.Return(WordAt(word));
  Put("A.exe", program);
  EXPECT_EQ(Run(), kErrorProcedureNotFound);
}

TEST_F(LoaderTest, KnowsTheFilesOfModules) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"b.dll");
  const std::uint32_t module = program.Word();
  const std::uint32_t text = program.Room(64);
  program.Begin();
  program.Call("LoadLibraryW", {AddressOf(name)}, module);
  program.Call("GetModuleFileNameW", {WordAt(module), AddressOf(text), Number(32)});
  program.Call("OutputDebugStringW", {AddressOf(text)});
  program.Call("GetModuleFileNameW", {Number(0), AddressOf(text), Number(5)}, module);
  program.Call("OutputDebugStringW", {AddressOf(text)});
  program.Return(WordAt(module));
  Put("A.exe", program);
  ToyProgram silent(false);
  silent.Begin();
  silent.Return(Number(1));
  Put("Windows/b.dll", silent);
  EXPECT_EQ(Run(), 4u);
  EXPECT_THAT(Said(), ElementsAre("\\Windows\\b.dll", "\\A.e"));
}

// ---- What is refused ---------------------------------------------------------------------------

TEST_F(LoaderTest, RefusesALibraryThatIsNotThereAndSaysWhereItLooked) {
  Put("A.exe", LoadOf(u"b"));
  EXPECT_EQ(Run(), kErrorModuleNotFound);
  EXPECT_THAT(Said(), ElementsAre(AllOf(HasSubstr("! loader: b.dll is neither in \\ nor"),
                                        HasSubstr("error 126"))));
}

TEST_F(LoaderTest, RefusesAFileThatIsNoLibrary) {
  Put("A.exe", LoadOf(u"b"));
  Put("b.dll", std::vector<std::uint8_t>(100, 'x'));
  EXPECT_EQ(Run(), kErrorBadImage);
  EXPECT_THAT(Said(), ElementsAre(HasSubstr("b.dll: no MZ at the start: error 193")));
  Put("b.dll", LoadOf(u"b"));  // a program
  EXPECT_EQ(Run(), kErrorBadImage);
}

TEST_F(LoaderTest, RefusesALibraryWhoseImportIsMissingAndCallsNoEntry) {
  Put("A.exe", LoadOf(u"b"));
  ToyProgram library = Library(u"B");
  library.Image().imports.push_back({"COREDLL.dll", "CreateWorld"});
  Put("b.dll", library);
  EXPECT_EQ(Run(), kErrorProcedureNotFound);
  EXPECT_THAT(Said(), ElementsAre(AllOf(HasSubstr("b.dll imports coredll.dll CreateWorld"),
                                        HasSubstr("error 127"))));
}

TEST_F(LoaderTest, TellsWhatTheSystemHasFromWhatItLacks) {
  const auto refusal = [this](const std::string& name, const DeviceOptions& options) {
    ToyProgram program = LoadOf(u"b");
    program.Image().imports.push_back({"COREDLL.dll", name});
    Put("A.exe", program);
    EXPECT_THROW(Run("A.exe", options), LoaderRefusal);
    return Said().back();
  };
  EXPECT_THAT(refusal("CopyFileW", {}), HasSubstr("CopyFileW, which is not played here"));
  EXPECT_THAT(refusal("wcsstr", {}), HasSubstr("wcsstr, which is not played here"));
  EXPECT_THAT(refusal("CopyFile", {}), HasSubstr("CopyFile, which is not exported"));
  EXPECT_THAT(refusal("CopyFileW", {.without_imports = {"CopyFileW"}}),
              HasSubstr("CopyFileW, which is not exported"));
}

TEST_F(LoaderTest, SaysOfEachOfTheSystemsLibrariesWhereItsNamesComeFrom) {
  std::set<std::string> played;
  for (const auto& imports : {KernelImports(), LockImports(), DeviceImports(), TextImports(),
                              ModuleImports(), FileImports(), WindowImports(), MessageImports()}) {
    for (const Import& import : imports) {
      EXPECT_NE(FindSystemLibrary(import.dll), nullptr) << import.dll;
      if (import.name != nullptr) played.insert(import.name);
    }
  }
  for (const SystemLibrary& library : SystemLibraries()) {
    EXPECT_FALSE(library.documentation.empty());
    std::istringstream names{std::string(library.not_played)};
    std::set<std::string> known;
    for (std::string name; names >> name;) {
      EXPECT_TRUE(known.insert(name).second) << name;
      EXPECT_FALSE(played.contains(name)) << name;
    }
  }
  EXPECT_EQ(FindSystemLibrary("a.dll"), nullptr);
}

TEST_F(LoaderTest, RefusesALibraryThatNeedsOneThatIsNotThere) {
  Put("A.exe", LoadOf(u"b"));
  ToyProgram library = Library(u"B");
  library.Image().imports.push_back({"Missing.dll", "Nothing"});
  Put("b.dll", library);
  EXPECT_EQ(Run(), kErrorModuleNotFound);
  EXPECT_THAT(Said(), ElementsAre(AllOf(HasSubstr("b.dll needs missing.dll"), HasSubstr("126"))));
}

TEST_F(LoaderTest, LetsALibraryGoWhoseEntryRefuses) {
  Put("A.exe", LoadOf(u"b"));
  ToyProgram library(false);
  library.Begin();
  library.Return(Number(0));
  Put("b.dll", library);
  EXPECT_EQ(Run(), kErrorEntryFailed);
}

TEST_F(LoaderTest, RefusesAProgramAndSaysWhy) {
  ToyProgram program = LoadOf(u"b");
  program.Image().imports.push_back({"COREDLL.dll", "CreateWorld"});
  Put("A.exe", program);
  try {
    Run();
    FAIL() << "was loaded";
  } catch (const LoaderRefusal& refusal) {
    EXPECT_EQ(refusal.error, kErrorProcedureNotFound);
    EXPECT_THAT(refusal.what(), HasSubstr("CreateWorld"));
  }
  EXPECT_THAT(Said(), ElementsAre(HasSubstr("CreateWorld")));
  EXPECT_THROW(Run("B.exe"), LoaderRefusal);
}

// ---- A system that is not as it should be ------------------------------------------------------

TEST_F(LoaderTest, LacksTheNamesThatItIsToldToLack) {
  Put("A.exe", LoadOf(u"b"));
  Put("b.dll", Library(u"B"));
  EXPECT_EQ(Run("A.exe", {.without_imports = {"OutputDebugStringW"}}), kErrorProcedureNotFound);
  EXPECT_EQ(Run("A.exe", {.without_imports = {"Sleep"}}), 0u);
}

TEST_F(LoaderTest, TakesOneMachineNumberAloneWhenToldTo) {
  ToyProgram program = LoadOf(u"b");
  program.Image().machine = 0x01C2;
  Put("A.exe", program);
  Put("b.dll", Library(u"B"));
  EXPECT_EQ(Run(), 0u);
  EXPECT_EQ(Run("A.exe", {.thumb_alone = true}), kErrorBadImage);
  EXPECT_THAT(Said(), ElementsAre(HasSubstr("machine 0x01C0, and the system takes 0x01C2 alone")));
}

TEST_F(LoaderTest, PutsALibraryWhereItWantsOrWhereThereIsRoom) {
  const auto base = [this](const DeviceOptions& options) {
    ToyProgram program;
    const std::uint32_t name = program.Text(u"b.dll");
    const std::uint32_t function = program.Text(u"Begin");
    const std::uint32_t word = program.Word();
    program.Begin();
    program.Call("LoadLibraryW", {AddressOf(name)}, word);
    program.Call("GetProcAddressW", {WordAt(word), AddressOf(function)}, word);
    program.Return(WordAt(word));
    Put("A.exe", program);
    ToyProgram library = Library(u"B");
    library.Export("Begin", ToyImage::kCode);
    Put("b.dll", library);
    return Run("A.exe", options) - ToyImage::kCode;
  };
  EXPECT_EQ(base({}), ToyImage::kBase);
  EXPECT_EQ(base({.base_taken = true}), 0x01FF0000u);
  EXPECT_THAT(Said(), ElementsAre("B attach", "B detach"));
}

TEST_F(LoaderTest, PutsTwoLibrariesThatWantTheSameBaseApart) {
  ToyProgram program;
  program.Image().imports = {{"B.dll", "Nothing"}, {"C.dll", "Nothing"}};
  program.Begin();
  program.Return(Number(0));
  Put("A.exe", program);
  for (const char16_t* letter : {u"B", u"C"}) {
    ToyProgram library = Library(letter);
    library.Export("Nothing", ToyImage::kCode);
    Put(sim::ToUtf8(letter) + ".dll", library);
  }
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("B attach", "C attach", "C detach", "B detach"));
}

}  // namespace
}  // namespace emulator
