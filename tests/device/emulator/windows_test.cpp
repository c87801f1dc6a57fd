// Windows of programs, the messages and timers of their loops, and messages of threads.
#include "device/emulator/windows.h"

#include <gmock/gmock.h>

#include <functional>

#include "tests/device/emulator/device_fixture.h"

namespace emulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using WindowsTest = DeviceTest;

// A program with a window whose procedure says "create", "destroy" and "message 3"; `body` runs
// between the first two, and `thread` is what a thread at kThread does.
constexpr std::uint32_t kThread = ToyImage::kCode + 0xA00;

template <typename Body, typename Thread>
ToyProgram WithWindow(const Body& body, const Thread& thread) {
  ToyProgram program;
  const std::uint32_t text = program.Text(u"Check");
  const std::uint32_t record = program.Room(40);
  const std::uint32_t window = program.Word();
  const std::uint32_t procedure = ToyImage::kCode + 0x800;
  program.Begin();
  program.Store(record + 4, AddressOf(procedure));
  program.Store(record + 36, AddressOf(text));
  program.Call("RegisterClassW", {AddressOf(record)});
  program.Call("CreateWindowExW",
               {Number(0), AddressOf(text), AddressOf(text), Number(0), Number(0), Number(0),
                Number(0), Number(0), Number(0), Number(0), Number(0), Number(0)},
               window);
  body(program, window);
  program.Call("DestroyWindow", {WordAt(window)});
  program.Return(Number(0));
  program.Image().code.resize(0x800 / 4);
  const std::uint32_t texts = program.Texts({u"message 0", u"create", u"destroy", u"message 3"});
  program.Begin();
  program.Say(texts, Given(1));
  program.Return(Number(5));
  program.Image().code.resize(0xA00 / 4);
  program.Begin();
  thread(program);
  program.Return(Number(0));
  return program;
}

void Peek(ToyProgram& program, std::uint32_t record, std::uint32_t result) {
  program.Call("PeekMessageW", {AddressOf(record), Number(0), Number(0), Number(0), Number(1)},
               result);
}

TEST_F(WindowsTest, CallsTheWindowsProcedureForAPostedMessageWhenItIsDispatched) {
  Put("A.exe",
      WithWindow(
          [](ToyProgram& program, std::uint32_t window) {
            const std::uint32_t posted = program.Text(u"posted");
            const std::uint32_t record = program.Room(28);
            const std::uint32_t got = program.Word();
            program.Call("PostMessageW", {WordAt(window), Number(3), Number(0), Number(0)});
            program.Call("OutputDebugStringW", {AddressOf(posted)});
            Peek(program, record, got);
            program.Call("DispatchMessageW", {AddressOf(record)});
          },
          [](ToyProgram&) {}));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("create", "posted", "message 3", "destroy"));
}

TEST_F(WindowsTest, CallsTheWindowsProcedureInItsOwnThreadForWhatAnotherSends) {
  std::uint32_t answer = 0;
  Put("A.exe",
      WithWindow(
          [&](ToyProgram& program, std::uint32_t window) {
            const std::uint32_t not_yet = program.Text(u"not yet");
            const std::uint32_t record = program.Room(28);
            const std::uint32_t thread = program.Word();
            answer = program.Word();
            program.Call(
                "CreateThread",
                {Number(0), Number(0), AddressOf(kThread), WordAt(window), Number(0), Number(0)},
                thread);
            program.Call("Sleep", {Number(10)});
            program.Call("OutputDebugStringW", {AddressOf(not_yet)});
            Peek(program, record, thread + 4);
            program.Call("WaitForSingleObject", {WordAt(thread), Number(0xFFFFFFFF)});
          },
          [&](ToyProgram& program) {
            const std::uint32_t answered = program.Text(u"answered");
            program.Call("SendMessageTimeout", {Given(0), Number(3), Number(0), Number(0),
                                                Number(0), Number(5000), AddressOf(answer)});
            program.Call("OutputDebugStringW", {AddressOf(answered)});
          }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("create", "not yet", "message 3", "answered", "destroy"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 10u);
}

// ---- Loops --------------------------------------------------------------------------------------

// Where a program has a message that it took; Tell says the call's result, the message's number and
// its wParam.
class Loop {
 public:
  explicit Loop(ToyProgram& program)
      : program_(program),
        record_(program.Room(28)),
        result_(program.Word()),
        format_(program.Text(u"%u: %04X %u")),
        text_(program.Room(64)) {}

  void Get() {
    program_.Call("GetMessageW", {AddressOf(record_), Number(0), Number(0), Number(0)}, result_);
    Tell();
  }
  void Peek(std::uint32_t first, std::uint32_t last, bool take) {
    program_.Store(record_ + 4, Number(0));
    program_.Store(record_ + 8, Number(0));
    program_.Call("PeekMessageW",
                  {AddressOf(record_), Number(0), Number(first), Number(last), Number(take)},
                  result_);
    Tell();
  }
  void Dispatch() { program_.Call("DispatchMessageW", {AddressOf(record_)}); }

 private:
  void Tell() {
    program_.Call("wsprintfW", {AddressOf(text_), AddressOf(format_), WordAt(result_),
                                WordAt(record_ + 4), WordAt(record_ + 8)});
    program_.Call("OutputDebugStringW", {AddressOf(text_)});
  }

  ToyProgram& program_;
  std::uint32_t record_;
  std::uint32_t result_;
  std::uint32_t format_;
  std::uint32_t text_;
};

const auto kNoThread = [](ToyProgram&) {};

TEST_F(WindowsTest, TakesWhatWasPostedBeforeTheEndOfTheLoop) {
  Put("A.exe",
      WithWindow(
          [](ToyProgram& program, std::uint32_t window) {
            Loop loop(program);
            program.Call("PostQuitMessage", {Number(5)});
            program.Call("PostMessageW", {WordAt(window), Number(3), Number(7), Number(0)});
            loop.Get();
            loop.Get();
          },
          kNoThread));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("create", "1: 0003 7", "0: 0012 5", "destroy"));
}

// The thread gets the window.
void StartThreadAndLoop(ToyProgram& program, std::uint32_t window) {
  Loop loop(program);
  program.Call("CreateThread",
               {Number(0), Number(0), AddressOf(kThread), WordAt(window), Number(0), Number(0)});
  loop.Get();
}

TEST_F(WindowsTest, WaitsForAMessageAsLongAsNothingComes) {
  Put("A.exe", WithWindow(StartThreadAndLoop, [](ToyProgram& program) {
        program.Call("Sleep", {Number(30'000)});
        program.Call("PostMessageW", {Given(0), Number(3), Number(1), Number(0)});
      }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("create", "1: 0003 1", "destroy"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 30'000u);
}

TEST_F(WindowsTest, AnswersWhatIsSentWhileItWaitsForAMessage) {
  Put("A.exe", WithWindow(StartThreadAndLoop, [](ToyProgram& program) {
        const std::uint32_t answered = program.Text(u"answered");
        const std::uint32_t answer = program.Word();
        program.Call("SendMessageTimeout", {Given(0), Number(3), Number(0), Number(0), Number(0),
                                            Number(5000), AddressOf(answer)});
        program.Call("OutputDebugStringW", {AddressOf(answered)});
        program.Call("PostMessageW", {Given(0), Number(2), Number(0), Number(0)});
      }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("create", "message 3", "answered", "1: 0002 0", "destroy"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 0u);
}

TEST_F(WindowsTest, EndsARunThatWaitsForAMessageWhichNobodyIsThereToSend) {
  ToyProgram program;
  program.Begin();
  Loop(program).Get();
  program.Return(Number(0));
  Put("A.exe", program);
  try {
    Run();
    ADD_FAILURE() << "it went on";
  } catch (const sim::Deadlock& deadlock) {
    EXPECT_THAT(deadlock.what(), HasSubstr("the main host thread waits for a message"));
  }
}

TEST_F(WindowsTest, ChoosesAmongMessagesAndLeavesThemWhereTheyAreWhenAsked) {
  Put("A.exe",
      WithWindow(
          [](ToyProgram& program, std::uint32_t window) {
            Loop loop(program);
            for (const std::uint32_t message : {2u, 3u}) {
              program.Call("PostMessageW", {WordAt(window), Number(message), Number(0), Number(0)});
            }
            loop.Peek(3, 3, false);
            loop.Peek(3, 9, true);
            loop.Peek(3, 9, true);
            loop.Peek(0, 0, true);
          },
          kNoThread));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(),
              ElementsAre("create", "1: 0003 0", "1: 0003 0", "0: 0000 0", "1: 0002 0", "destroy"));
}

TEST_F(WindowsTest, TellsOfATimerAgainAndAgainUntilItIsKilled) {
  std::uint32_t killed = 0;
  Put("A.exe", WithWindow(
                   [&](ToyProgram& program, std::uint32_t window) {
                     Loop loop(program);
                     killed = program.Word();
                     program.Call("SetTimer", {WordAt(window), Number(1), Number(250), Number(0)});
                     program.Call("SetTimer", {WordAt(window), Number(2), Number(600), Number(0)});
                     for (int i = 0; i < 3; ++i) loop.Get();
                     program.Call("KillTimer", {WordAt(window), Number(1)});
                     program.Call("KillTimer", {WordAt(window), Number(1)}, killed);
                     loop.Get();
                   },
                   kNoThread));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(),
              ElementsAre("create", "1: 0113 1", "1: 0113 1", "1: 0113 2", "1: 0113 2", "destroy"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 1200u);
}

// ---- Threads ------------------------------------------------------------------------------------

// The first thread posts to the second, which is at kThread; it says what the post returned, and
// the error.
ToyProgram PostsToAThread(const std::function<void(ToyProgram&)>& thread) {
  ToyProgram program;
  const std::uint32_t id = program.Word();
  const std::uint32_t handle = program.Word();
  const std::uint32_t posted = program.Word();
  const std::uint32_t error = program.Word();
  const std::uint32_t format = program.Text(u"posted %u, %u");
  const std::uint32_t text = program.Room(64);
  program.Begin();
  program.Call("CreateThread",
               {Number(0), Number(0), AddressOf(kThread), Number(0), Number(0), AddressOf(id)},
               handle);
  program.Call("Sleep", {Number(10)});
  program.Call("PostThreadMessageW", {WordAt(id), Number(0x8001), Number(7), Number(0)}, posted);
  program.Call("GetLastError", {}, error);
  program.Call("wsprintfW", {AddressOf(text), AddressOf(format), WordAt(posted), WordAt(error)});
  program.Call("OutputDebugStringW", {AddressOf(text)});
  program.Call("WaitForSingleObject", {WordAt(handle), Number(1000)});
  program.Return(Number(0));
  program.Image().code.resize(0xA00 / 4);
  program.Begin();
  thread(program);
  program.Return(Number(0));
  return program;
}

TEST_F(WindowsTest, GivesAThreadWhatIsPostedToIt) {
  Put("A.exe", PostsToAThread([](ToyProgram& program) { Loop(program).Get(); }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("posted 1, 0", "1: 8001 7"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 10u);
}

TEST_F(WindowsTest, KeepsWhatIsPostedToAThreadThatHasLookedForMessagesOnce) {
  Put("A.exe", PostsToAThread([](ToyProgram& program) {
        Loop loop(program);
        loop.Peek(0x8000, 0x8000, false);
        program.Call("Sleep", {Number(20)});
        loop.Get();
      }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("0: 0000 0", "posted 1, 0", "1: 8001 7"));
}

TEST_F(WindowsTest, RefusesAMessageToAThreadThatHasNeverLookedForOne) {
  Put("A.exe", PostsToAThread([](ToyProgram& program) { program.Call("Sleep", {Number(100)}); }));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("posted 0, 1444"));
}

// ---- Two programs -------------------------------------------------------------------------------

TEST_F(WindowsTest, GivesEachProgramTheMessagesOfItsOwnWindowsAndClassesOfItsOwn) {
  const auto program = [](std::uint32_t message) {
    return WithWindow(
        [=](ToyProgram& toy, std::uint32_t window) {
          Loop loop(toy);
          const std::uint32_t other = toy.Text(u"B.exe");
          if (message == 3) {
            toy.Call("CreateProcessW",
                     {AddressOf(other), Number(0), Number(0), Number(0), Number(0), Number(0),
                      Number(0), Number(0), Number(0), Number(0)});
          }
          toy.Call("PostMessageW", {WordAt(window), Number(message), Number(1), Number(0)});
          toy.Call("Sleep", {Number(10)});
          toy.Call("PostMessageW", {WordAt(window), Number(message), Number(2), Number(0)});
          loop.Get();
          loop.Get();
          toy.Call("Sleep", {Number(10 * message)});  // the first one ends last
        },
        kNoThread);
  };
  Put("A.exe", program(3));
  Put("B.exe", program(2));
  EXPECT_EQ(Run(), 0u);
  EXPECT_THAT(Said(), ElementsAre("create", "create", "1: 0003 1", "1: 0003 2", "1: 0002 1",
                                  "1: 0002 2", "destroy", "destroy"));
}

// B.exe ends with its window still there, and tells which one.
TEST_F(WindowsTest, TakesTheWindowsOfAProgramAwayWhenItEnds) {
  const auto run = [this](std::uint32_t sleep_ms) {
    ToyProgram first;
    const std::uint32_t other = first.Text(u"B.exe");
    const std::uint32_t window = first.Word(0x10010);  // the first one that is made
    const std::uint32_t is_there = first.Word();
    first.Begin();
    first.Call("CreateProcessW", {AddressOf(other), Number(0), Number(0), Number(0), Number(0),
                                  Number(0), Number(0), Number(0), Number(0), Number(0)});
    first.Call("Sleep", {Number(sleep_ms)});
    first.Call("IsWindow", {WordAt(window)}, is_there);
    first.Return(WordAt(is_there));
    Put("A.exe", first);
    Put("B.exe", WithWindow(
                     [](ToyProgram& program, std::uint32_t) {
                       program.Call("Sleep", {Number(50)});
                       program.Call("TerminateProcess", {Number(0x42), Number(0)});
                     },
                     kNoThread));
    return Run();
  };
  EXPECT_EQ(run(10), 1u);
  EXPECT_EQ(run(100), 0u);
}

}  // namespace
}  // namespace emulator
