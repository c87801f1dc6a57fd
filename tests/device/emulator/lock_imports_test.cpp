// Events that programs signal, and their critical sections.
#include <gmock/gmock.h>

#include <functional>

#include "tests/device/emulator/device_fixture.h"

namespace emulator {
namespace {

using testing::ElementsAre;

using LockImportsTest = DeviceTest;

void Say(ToyProgram& program, const std::u16string& text) {
  const std::uint32_t at = program.Text(text);
  program.Call("OutputDebugStringW", {AddressOf(at)});
}

// A program whose second thread runs `thread` beside the first one's `body`, and is awaited. Both
// have the record of a critical section, and an event.
struct Shared {
  std::uint32_t section;
  std::uint32_t event;
};
using Part = std::function<void(ToyProgram&, const Shared&)>;

ToyProgram TwoThreads(const Part& body, const Part& thread) {
  constexpr std::uint32_t kThread = ToyImage::kCode + 0xA00;
  ToyProgram program;
  const Shared shared = {program.Room(20), program.Word()};
  const std::uint32_t handle = program.Word();
  program.Begin();
  program.Call("InitializeCriticalSection", {AddressOf(shared.section)});
  program.Call("CreateEventW", {Number(0), Number(0), Number(0), Number(0)}, shared.event);
  program.Call("CreateThread",
               {Number(0), Number(0), AddressOf(kThread), Number(0), Number(0), Number(0)}, handle);
  body(program, shared);
  program.Call("WaitForSingleObject", {WordAt(handle), Number(0xFFFFFFFF)});
  program.Call("DeleteCriticalSection", {AddressOf(shared.section)});
  program.Return(Number(0));
  program.Image().code.resize(0xA00 / 4);
  program.Begin();
  thread(program, shared);
  program.Return(Number(0));
  return program;
}

TEST_F(LockImportsTest, WakesAThreadThatWaitsForAnEvent) {
  Put("A.exe",
      TwoThreads(
          [](ToyProgram& program, const Shared& shared) {
            program.Call("WaitForSingleObject", {WordAt(shared.event), Number(0xFFFFFFFF)});
            Say(program, u"woken");
          },
          [](ToyProgram& program, const Shared& shared) {
            program.Call("Sleep", {Number(30)});
            Say(program, u"set");
            program.Call("EventModify", {WordAt(shared.event), Number(3)});
          }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("set", "woken"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 30u);
}

TEST_F(LockImportsTest, LetsOneThreadAtATimeIntoACriticalSectionWhichMayEnterItAgain) {
  const auto enter = [](ToyProgram& program, const Shared& shared) {
    program.Call("EnterCriticalSection", {AddressOf(shared.section)});
  };
  const auto leave = [](ToyProgram& program, const Shared& shared) {
    program.Call("LeaveCriticalSection", {AddressOf(shared.section)});
  };
  Put("A.exe", TwoThreads(
                   [=](ToyProgram& program, const Shared& shared) {
                     enter(program, shared);
                     enter(program, shared);
                     program.Call("Sleep", {Number(10)});
                     leave(program, shared);
                     program.Call("Sleep", {Number(10)});
                     Say(program, u"first out");
                     leave(program, shared);
                   },
                   [=](ToyProgram& program, const Shared& shared) {
                     Say(program, u"second waits");
                     enter(program, shared);
                     Say(program, u"second in");
                     leave(program, shared);
                   }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("second waits", "first out", "second in"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 20u);
  EXPECT_EQ(sim::TheWorld().kernel.OpenHandles(), 0u);
}

TEST_F(LockImportsTest, EndsARunThatLeavesACriticalSectionWhichItIsNotIn) {
  Put("A.exe", TwoThreads(
                   [](ToyProgram& program, const Shared& shared) {
                     program.Call("EnterCriticalSection", {AddressOf(shared.section)});
                     program.Call("Sleep", {Number(10)});
                   },
                   [](ToyProgram& program, const Shared& shared) {
                     program.Call("LeaveCriticalSection", {AddressOf(shared.section)});
                   }));
  EXPECT_THROW(Run(), harness::ImageFault);
}

}  // namespace
}  // namespace emulator
