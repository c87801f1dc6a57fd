#include "script/variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "script/parse.h"
#include "script/words.h"
#include "tests/script/script_run.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::vector<Script> Parse(const std::string& text) {
  std::istringstream in(text);
  return ParseScript(in, "s.vexo");
}

std::string MistakeOf(const std::string& text) {
  try {
    Parse(text);
  } catch (const ScriptError& error) {
    return error.what();
  }
  return "none";
}

std::vector<std::string> TextsOf(const Script& script) {
  std::vector<std::string> texts;
  texts.reserve(script.statements.size());
  for (const Statement& statement : script.statements) texts.push_back(statement.text);
  return texts;
}

// ---- Reading ------------------------------------------------------------------------------------

TEST(ScriptVariants, ReadAScriptOnceForEach) {
  const std::vector<Script> scripts = Parse(
      "# of two standards\n\nvariants ntsc pal  # both\n"
      "only pal camera all pal\n"
      "attach\n"
      "  command 0xF0{01|0E} {|01 02 }03\n"
      "expect debug \">> {NTSC|PAL}\"\n"
      "only\tntsc expect return 0\n");
  ASSERT_EQ(scripts.size(), 2U);
  EXPECT_EQ(scripts[0].variant, "ntsc");
  EXPECT_EQ(scripts[0].name, "s.vexo (ntsc)");
  EXPECT_THAT(TextsOf(scripts[0]), ElementsAre("attach", "command 0xF001 03",
                                               "expect debug \">> NTSC\"", "expect return 0"));
  EXPECT_EQ(scripts[1].variant, "pal");
  EXPECT_EQ(scripts[1].name, "s.vexo (pal)");
  EXPECT_THAT(TextsOf(scripts[1]),
              ElementsAre("camera all pal", "attach", "command 0xF00E 01 02 03",
                          "expect debug \">> PAL\""));
  EXPECT_EQ(scripts[1].statements.front().line, 4U);
  EXPECT_EQ(scripts[1].statements.back().line, 7U);
}

TEST(ScriptVariants, MayBeMoreThanTwo) {
  const std::vector<Script> scripts = Parse("variants a b c\nrun {1|2|3}\n");
  ASSERT_EQ(scripts.size(), 3U);
  EXPECT_THAT(TextsOf(scripts[2]), ElementsAre("run 3"));
}

TEST(ScriptVariants, LeaveCommentsAlone) {
  const std::vector<Script> scripts =
      Parse("variants ntsc pal\n# {x\nattach # {x\ntext \"#{a|b}\\\"#\" # {y|\n");
  EXPECT_THAT(TextsOf(scripts[1]), ElementsAre("attach # {x", "text \"#b\\\"#\" # {y|"));
}

TEST(ScriptVariants, AreNeededForBracesToMeanAnything) {
  EXPECT_THAT(TextsOf(Parse("text \"{a|b}\"\n").front()), ElementsAre("text \"{a|b}\""));
}

TEST(ScriptVariants, SayWhatIsWrongInTheirLines) {
  const std::string two = "variants ntsc pal\n";
  EXPECT_EQ(MistakeOf("variants"),
            "s.vexo:1: expected two variants or more (variants NAME NAME...)");
  EXPECT_EQ(MistakeOf("\nvariants ntsc"),
            "s.vexo:2: expected two variants or more (variants NAME NAME...)");
  EXPECT_EQ(MistakeOf("variants ntsc pal ntsc"),
            "s.vexo:1: expected each variant once, found 'ntsc' again");
  EXPECT_EQ(MistakeOf("attach\nvariants ntsc pal"),
            "s.vexo:2: expected 'variants' before every other line, found it behind one");
  EXPECT_EQ(MistakeOf(two + "variants ntsc pal"),
            "s.vexo (ntsc):2: expected 'variants' before every other line, found it behind one");
  EXPECT_EQ(MistakeOf("attach\nonly pal attach"),
            "s.vexo:2: expected 'variants NAME NAME...' before every other line, found 'only'");
  EXPECT_EQ(MistakeOf(two + "only secam attach"),
            "s.vexo (ntsc):2: expected ntsc or pal, found 'secam' (only VARIANT LINE)");
  EXPECT_EQ(MistakeOf(two + "only"),
            "s.vexo (ntsc):2: expected ntsc or pal, found '' (only VARIANT LINE)");
  EXPECT_EQ(MistakeOf(two + "run {1|2|3}"),
            "s.vexo (ntsc):2: expected 2 alternatives, one for each variant, found '{1|2|3}'");
  EXPECT_EQ(MistakeOf(two + "run {1}"),
            "s.vexo (ntsc):2: expected 2 alternatives, one for each variant, found '{1}'");
  EXPECT_EQ(MistakeOf(two + "run {1|2"),
            "s.vexo (ntsc):2: expected '}', found the end of the line");
}

TEST(ScriptVariants, NameTheOneInWhichALineIsWrong) {
  EXPECT_THAT(MistakeOf("variants ntsc pal\nattach\nrun {1|x}"),
              HasSubstr("s.vexo (pal):3: expected a number of milliseconds, found 'x'"));
  // Only an action of its own comes before it.
  EXPECT_EQ(MistakeOf("variants ntsc pal\nonly ntsc attach\nexpect return 1"),
            "s.vexo (pal):3: expected an action before the first expectation, found 'expect'");
}

// ---- Running ------------------------------------------------------------------------------------

class ScriptVariantRun : public ScriptRunTest {};

TEST_F(ScriptVariantRun, StartsEachOnAFreshLibraryAndAFreshBoard) {
  const unsigned resets = harness::TheFake().resets;
  EXPECT_EQ(Run("variants ntsc pal\nattach\nexpect registers master 2 0x60 00\n"
                "poke master 2 0x60 0x11\nrun {5|6}\nexpect registers master 2 0x60 11"),
            kExitDone)
      << Err();
  EXPECT_EQ(harness::TheFake().resets, resets + 2);
  EXPECT_EQ(Out(),
            "variant ntsc\n"
            "       0 ms  attach\n"
            "      = 1\n"
            "       0 ms  poke master 2 0x60 0x11\n"
            "       0 ms  run 5\n"
            "ntsc: 2 expectations met\n"
            "variant pal\n"
            "       0 ms  attach\n"
            "      = 1\n"
            "       0 ms  poke master 2 0x60 0x11\n"
            "       0 ms  run 6\n"
            "pal: 2 expectations met\n");
}

TEST_F(ScriptVariantRun, NamesTheOneThatFailsAndGoesOn) {
  options_.quiet = true;
  EXPECT_EQ(Run("variants ntsc pal\nattach\nexpect return {7|1}"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo (ntsc):3: expect return 7: returned 1\n");
  EXPECT_EQ(Out(), "ntsc: 1 of 1 expectation not met\npal: 1 expectation met\n");
  EXPECT_EQ(Run("variants ntsc pal\nattach\nexpect return {1|7}"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo (pal):3: expect return 7: returned 1\n");
}

TEST_F(ScriptVariantRun, RunsTheChosenOneAlone) {
  options_.variant = "pal";
  EXPECT_EQ(Run("variants ntsc pal\nattach\nrun {5|6}"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("run 6"));
  EXPECT_THAT(Out(), Not(HasSubstr("run 5")));
}

TEST_F(ScriptVariantRun, RefusesToChooseOneThatThereIsNot) {
  options_.variant = "secam";
  EXPECT_EQ(Run("variants ntsc pal\nattach"), kExitWrong);
  EXPECT_EQ(Err(), "s.vexo: expected ntsc or pal, found 'secam'\n");
  EXPECT_EQ(Run("attach"), kExitWrong);
  EXPECT_EQ(Err(), "s.vexo: expected no variant, it has none, found 'secam'\n");
  EXPECT_THAT(harness::TheFake().calls, IsEmpty());
}

TEST_F(ScriptVariantRun, RefusesATraceOrAPictureOfSeveral) {
  std::ostringstream trace;
  options_.trace = &trace;
  const std::string refusal =
      "s.vexo: a trace or a picture is of one variant: choose ntsc or pal (--variant)\n";
  EXPECT_EQ(Run("variants ntsc pal\nattach"), kExitWrong);
  EXPECT_EQ(Err(), refusal);
  options_.variant = "pal";
  EXPECT_EQ(Run("variants ntsc pal\nattach"), kExitDone) << Err();
  EXPECT_THAT(trace.str(), HasSubstr("DllMain"));

  options_ = {};
  options_.picture = "x.png";
  EXPECT_EQ(Run("variants ntsc pal\nattach"), kExitWrong);
  EXPECT_EQ(Err(), refusal);
}

}  // namespace
}  // namespace script
