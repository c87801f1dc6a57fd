// docs/quirks.md and the quirk marks in the sources, in step: each row has its marks, each mark its
// row, and each row a test or a script's check that exists.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string ReadText(const fs::path& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

fs::path Root() { return VEXO_SOURCE_DIR; }

bool IsSource(const fs::path& path) {
  const std::string extension = path.extension().string();
  return extension == ".cpp" || extension == ".h";
}

template <typename Function>
void ForEachSource(const char* room, const Function& take) {
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Root() / room)) {
    if (entry.is_regular_file() && IsSource(entry.path())) take(entry.path());
  }
}

std::vector<std::string> AllMatches(const std::string& text, const std::regex& wanted) {
  std::vector<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), wanted), end; match != end; ++match) {
    found.push_back((*match)[1]);
  }
  return found;
}

// Number of marks by file.
using Marks = std::map<std::string, int>;

Marks MarksInSources() {
  Marks marks;
  const std::regex mark("(Quirk:)");
  for (const char* room :
       {"src", "include", "sim", "harness", "script", "tools", "device", "windows", "tests"}) {
    ForEachSource(room, [&](const fs::path& path) {
      if (path.filename() == "quirks_test.cpp") return;
      const auto count = static_cast<int>(AllMatches(ReadText(path), mark).size());
      if (count != 0) marks[path.lexically_relative(Root()).generic_string()] = count;
    });
  }
  return marks;
}

// A row's cells: what, where, who relies on it, held by.
using Row = std::vector<std::string>;

std::vector<Row> Rows() {
  std::vector<Row> rows;
  std::istringstream page(ReadText(Root() / "docs/quirks.md"));
  for (std::string line; std::getline(page, line);) {
    if (!line.starts_with("| ") || line.starts_with("| What |")) continue;
    rows.push_back(AllMatches(line, std::regex(R"(\| ([^|]*[^ |]) (?=\|))")));
  }
  return rows;
}

std::vector<std::string> CodeWords(const std::string& cell) {
  return AllMatches(cell, std::regex("`([^`]+)`"));
}

std::set<std::string> TestNames() {
  std::set<std::string> names;
  const std::regex test(R"(\nTEST(?:_F|_P)?\(\s*(\w+,\s*\w+)\s*\))");
  ForEachSource("tests", [&](const fs::path& path) {
    for (const std::string& name : AllMatches(ReadText(path), test)) {
      names.insert(std::regex_replace(name, std::regex(R"(,\s*)"), "."));
    }
  });
  return names;
}

// The names that a script gives its checks: `expect "NAME" ...`.
bool HasCheck(const std::string& script, const std::string& name) {
  return ReadText(Root() / script).find("expect \"" + name + "\" ") != std::string::npos;
}

TEST(Quirks, HaveFourCellsARow) {
  const std::vector<Row> rows = Rows();
  ASSERT_GT(rows.size(), 50u);
  for (const Row& row : rows) {
    ASSERT_EQ(row.size(), 4u) << row.front();
    EXPECT_FALSE(CodeWords(row[1]).empty()) << row.front();
    EXPECT_FALSE(CodeWords(row[3]).empty()) << row.front();
  }
}

TEST(Quirks, AreMarkedInTheirFilesAsOftenAsRowsNameThem) {
  Marks named;
  for (const Row& row : Rows()) {
    for (const std::string& file : CodeWords(row.at(1))) ++named[file];
  }
  EXPECT_EQ(MarksInSources(), named);
}

TEST(Quirks, AreHeldByTestsAndChecksThatExist) {
  const std::set<std::string> tests = TestNames();
  for (const Row& row : Rows()) {
    for (const std::string& name : CodeWords(row.at(3))) {
      if (name.ends_with(".sh")) continue;
      EXPECT_TRUE(tests.contains(name)) << name;
    }
    const std::regex check("`([^`]+\\.sh` \"[^\"]+)\"");
    for (const std::string& script : AllMatches(row.at(3), check)) {
      const std::size_t end = script.find('`');
      EXPECT_TRUE(HasCheck(script.substr(0, end), script.substr(end + 3))) << script;
    }
  }
}

}  // namespace
