// Checks.exe: a program beside the kit. Each check runs in a process of its own, on a board of its
// own.
#include <array>
#include <iostream>

#include "checks.h"

namespace checks {
namespace {

std::vector<Check> All() {
  std::vector<Check> all;
  for (const auto& some :
       {AccessChecks(), LockChecks(), ProcessChecks(), WorkerChecks(), LoadChecks()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

// In a process of its own. Gives its exit status.
int RunOne(const Check& check) {
  try {
    check.run();
    std::cout << "ok: " << check.sentence << std::endl;
    return 0;
  } catch (const std::exception& error) {
    std::cout << "FAILED: " << check.sentence << ": " << error.what() << std::endl;
    return 1;
  }
}

bool RunAside(const Check& check, std::size_t index) {
  constexpr std::uint32_t kFailed = 1;
  std::string ended;
  try {
    Child child(L"run " + std::to_wstring(index));
    const std::uint32_t status = child.Wait();
    if (status == 0) return true;
    if (status == kFailed) return false;
    ended = "its process ended with " + std::to_string(status) + "; it said:\n" + child.Texts();
  } catch (const std::exception& error) {
    ended = error.what();
  }
  std::cout << "FAILED: " << check.sentence << ": " << ended << std::endl;
  return false;
}

// Those whose sentence contains the word (all without one). Gives the exit status.
int RunAll(const std::string& word) {
  unsigned done = 0;
  unsigned passed = 0;
  const std::vector<Check> all = All();
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (std::string_view(all[i].sentence).find(word) == std::string_view::npos) continue;
    ++done;
    if (RunAside(all[i], i)) ++passed;
  }
  std::cout << passed << " of " << done << " checks passed" << std::endl;
  return done == 0 || passed != done ? 1 : 0;
}

}  // namespace
}  // namespace checks

int wmain(int count, wchar_t** words) {
  const auto narrow = [](const wchar_t* text) {
    std::string result;
    for (; *text != L'\0'; ++text) result += static_cast<char>(*text);
    return result;
  };
  const std::string what = count > 1 ? narrow(words[1]) : "";
  if (count == 4 && (what == "run" || what == "role")) {
    checks::SetOwnTexts(words[3]);
    if (what == "role") return checks::PlayRole(narrow(words[2]));
    return checks::RunOne(checks::All().at(std::stoul(words[2])));
  }
  if (count > 2) {
    std::cerr << "usage: Checks [WORD]\n";
    return 2;
  }
  return checks::RunAll(what);
}
