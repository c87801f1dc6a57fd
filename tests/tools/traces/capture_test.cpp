#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/traces/trace_file.h"

namespace vexosim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kAll =
    "select,address,data,write,read,enable_select,enable_address,enable_data\n";

std::vector<std::string> Csv(const std::string& text, const CaptureColumns& columns = {}) {
  const TempFile file("capture.csv", text);
  return CyclesOf(file.Path(), columns);
}

std::vector<std::string> Vcd(const std::string& text, const CaptureColumns& columns = {}) {
  const TempFile file("capture.vcd", text);
  return CyclesOf(file.Path(), columns);
}

CaptureColumns Columns(const std::vector<std::string>& assignments) {
  CaptureColumns columns;
  for (const std::string& assignment : assignments) EXPECT_EQ(columns.Set(assignment), "");
  return columns;
}

TEST(Capture, TakesTheWindowThatIsEnabledWhenTheStrobeEnds) {
  EXPECT_THAT(Csv(std::string(kAll) + "252,x,x,1,0,1,0,0\n"
                                      "252,x,x,0,0,0,0,0\n"
                                      "252,254,x,1,0,0,1,0\n"
                                      "252,254,x,0,0,0,0,0\n"
                                      "252,254,40,0,1,0,0,1\n"
                                      "252,254,40,0,0,0,0,0\n"),
              ElementsAre("store select 0xFC", "store address 0xFE", "load data 0x28"));
}

TEST(Capture, MakesOneCycleOfSamplesThatRepeatWithTheLastOfItsValues) {
  EXPECT_THAT(Csv(std::string(kAll) + "0,0,0,0,0,0,0,0\n"
                                      "0,0,3,1,0,0,0,1\n"
                                      "0,0,0x5A,1,0,0,0,1\n"
                                      "0,0,0x5A,1,0,0,0,1\n"
                                      "0,0,7,0,0,0,0,1\n"
                                      "0,0,7,0,0,0,0,0\n"),
              ElementsAre("store data 0x5A"));
}

TEST(Capture, LeavesOutStrobesThatAreForSomethingElse) {
  EXPECT_THAT(Csv(std::string(kAll) + "0,0,1,1,0,0,0,0\n0,0,1,0,0,0,0,0\n"), ElementsAre());
}

TEST(Capture, LeavesOutACycleThatTheEndCutsOff) {
  EXPECT_THAT(Csv(std::string(kAll) + "0,0,1,1,0,0,0,1\n"), ElementsAre());
}

TEST(Capture, TakesTheStrobesForThoseOfTheChipsWithoutEnables) {
  EXPECT_THAT(Csv("select,address,data,write,read\n"
                  "252,48,1,1,0\n252,48,1,0,0\n"  // an access
                  "252,48,2,1,0\n252,48,2,0,0\n"  // the next register
                  "255,48,2,0,0\n"                // idle
                  "252,48,9,0,1\n252,48,9,0,0\n"  // the first again
                  "252,52,9,0,1\n252,52,9,0,0\n"),
              ElementsAre("store select 0xFC", "store address 0x30", "store data 0x01",
                          "store data 0x02", "store select 0xFC", "store address 0x30",
                          "load data 0x09", "store address 0x34", "load data 0x09"));
}

TEST(Capture, TakesNamesPolaritiesAndBitsAsTheyAreTold) {
  EXPECT_THAT(Csv("; made by a logic analyser\n\nTime [s];nWR;nRD;D7;D6;D5;D4;D3;D2;D1;D0;a;s\n"
                  "-0.5;1;1;0;0;0;0;0;0;0;0;30;fc\n"
                  "0.0;0;1;0;1;0;1;1;0;1;0;30;fc\n"
                  "0.1;1;1;0;0;0;0;0;0;0;0;30;fc\n",
                  [] {
                    CaptureColumns columns = Columns(
                        {"write=nWR:low", "read=nRD:low", "data=D", "address=a", "select=s"});
                    columns.hexadecimal = true;
                    return columns;
                  }()),
              ElementsAre("store select 0xFC", "store address 0x30", "store data 0x5A"));
}

TEST(Capture, ReadsVectorsAndBitsOfAVcd) {
  EXPECT_THAT(Vcd("$timescale 10 ns $end $scope module top $end\n"
                  "$var wire 8 s select [7:0] $end $var wire 8 a address[7:0] $end\n"
                  "$var wire 1 0 data[0] $end $var wire 1 1 data [1] $end\n"
                  "$var wire 1 2 data[2] $end $var wire 1 3 data[3] $end\n"
                  "$var wire 1 4 data[4] $end $var wire 1 5 data[5] $end\n"
                  "$var wire 1 6 data[6] $end $var wire 1 7 data[7] $end\n"
                  "$var wire 1 w WR $end $var wire 1 r read $end $upscope $end\n"
                  "$enddefinitions $end\n"
                  "$dumpvars 0w 0r bx s bx a $end\n"
                  "#5 b11111100 s b110 a 00 11 02 13 04 15 06 07 1w\n#6 0w\n"
                  "#7 b11 a 1r\n#9 0r\n",
                  Columns({"write=top.WR"})),
              ElementsAre("store select 0xFC", "store address 0x06", "store data 0x2A",
                          "store address 0x03", "load data 0x2A"));
}

struct Case {
  std::string text;
  const char* what;
};

TEST(Capture, TellsWhatIsWrongWithACsv) {
  const std::vector<Case> cases = {
      {"", ": expected column names, found nothing"},
      {"a,b\n",
       ":1: expected columns named select, address, data, write and read, found none named select"},
      {"select,address,data,write\n", "found none named read (--column read=NAME"},
      {"select,address,data,write,read,enable_data\n",
       "enables of all three windows or of none, found 1"},
      {std::string(kAll) + "1,2\n", ":2: expected 8 fields, found 2"},
      {std::string(kAll) + "256,0,0,0,0,0,0,0\n",
       ":2: expected a number 0 to 255 in the column select, found '256'"},
      {std::string(kAll) + "FC,0,0,0,0,0,0,0\n", "found 'FC' (--hex reads"},
      {std::string(kAll) + "0,0,0,2,0,0,0,0\n", "expected 0 or 1 in the column write, found '2'"},
      {std::string(kAll) + "0,0,0,1,1,0,0,1\n",
       ":2: expected write or read, found both strobes at once"},
      {std::string(kAll) + "0,0,0,1,0,1,0,1\n",
       "expected one window enabled during a strobe, found two"},
      {std::string(kAll) + "0,0,x,1,0,0,0,1\n0,0,0,0,0,0,0,1\n",
       ":3: expected a value of data when the strobe ends"},
      {"\x1B[31m\n", "found none named select"},
  };
  for (const Case& c : cases) EXPECT_THAT(WrongWith("wrong.csv", c.text), HasSubstr(c.what));
}

TEST(Capture, TellsWhatIsWrongWithAVcd) {
  const std::string header =
      "$timescale 1 ns $end $var wire 8 s select $end $var wire 8 a address $end\n"
      "$var wire 8 d data $end $var wire 1 w write $end $var wire 1 r read $end\n";
  const std::string whole = header + "$enddefinitions $end\n";
  const std::vector<Case> cases = {
      {"#0\n1!\n", ":1: expected a header that ends with $enddefinitions, found '#0'"},
      {"", "expected a header that ends with $enddefinitions, found the end of the file"},
      {header, "found the end of the file"},
      {"$comment", "expected $end, found the end of the file"},
      {"$timescale 3 ns $end", "expected a timescale of 1, 10 or 100 and a unit, found '3ns'"},
      {"$enddefinitions $end\n", "expected signals named select"},
      {"$var wire 4 s select $end $enddefinitions $end",
       "expected 8 bits of the signal select, found 4"},
      {"$var wire many s select $end", "found a width 'many'"},
      {whole + "#x\n", ":4: expected a time, a whole number, found '#x'"},
      {whole + "#99999999999999999999999\n", "expected a time, a whole number"},
      {whole + "#5\n#4\n", ":5: expected a time of 5 or later, found 4"},
      {whole + "#5\nb12 s\n", "expected bits and a signal, found 'b12'"},
      {whole + "#5\nb101010101 s\n", "expected 8 bits at most, found '101010101'"},
      {whole + "#5\n\x1B[31m\n", "expected a time or a change of value, found '\\x1B[31m'"},
  };
  for (const Case& c : cases) EXPECT_THAT(WrongWith("wrong.vcd", c.text), HasSubstr(c.what));
}

TEST(Capture, TellsWhatIsNoColumn) {
  CaptureColumns columns;
  EXPECT_THAT(columns.Set("clock=clk"), HasSubstr("found 'clock=clk'"));
  EXPECT_THAT(columns.Set("write"), HasSubstr("expected LINE=NAME"));
  EXPECT_THAT(columns.Set("write="), HasSubstr("expected a name behind '='"));
  EXPECT_THAT(columns.Set("data=D:low"), HasSubstr("expected a name without :low"));
}

}  // namespace
}  // namespace vexosim
