#include "tests/device/image/system_record.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "device/emulator/imports.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {

// Kinds of arguments, a letter each: n number, h handle or memory, t wide text, a narrow text,
// T place for the address of a text.
struct SystemRecord::Signature {
  const char* import;
  const char* arguments;
  const char* result;          // the kind of what it gives; empty: a number, null: nothing
  const char* name = nullptr;  // where it is imported by ordinal
};

namespace {

constexpr std::uint32_t kLeastInHex = 0x10000;
constexpr std::uint32_t kInvalidHandle = 0xFFFFFFFF;

std::string InWords(std::uint32_t value) {
  return value < kLeastInHex ? std::to_string(value) : sim::Hex(value, 8);
}

}  // namespace

const SystemRecord::Signature& SystemRecord::SignatureOf(const ImageImport& import) {
  static constexpr std::array kSignatures = {
      Signature{"CreateMutexW", "nnt", "mutex"},
      Signature{"CreateEventW", "nnnt", "event"},
      Signature{"WaitForSingleObject", "hn", ""},
      Signature{"ReleaseMutex", "h", ""},
      Signature{"CloseHandle", "h", ""},
      Signature{"CreateThread", "nnhhnh", "thread"},
      Signature{"GetExitCodeThread", "hh", ""},
      Signature{"TerminateThread", "hn", ""},
      Signature{"CeSetThreadQuantum", "hn", ""},
      Signature{"Sleep", "n", nullptr},
      Signature{"GetTickCount", "", ""},
      Signature{"GetLastError", "", ""},
      Signature{"SetLastError", "n", nullptr},
      Signature{"DisableThreadLibraryCalls", "h", ""},
      Signature{"LocalAlloc", "nn", "block"},
      Signature{"LocalFree", "h", ""},
      Signature{"CreateFileW", "tnnnnnn", "driver"},
      Signature{"DeviceIoControl", "hnhnnnhn", ""},
      Signature{"LoadLibraryExW", "tnn", "module"},
      Signature{"FreeLibrary", "h", ""},
      Signature{"GetFileVersionInfoSizeW", "th", ""},
      Signature{"GetFileVersionInfoW", "tnnh", ""},
      Signature{"VerQueryValueW", "hthh", ""},
      Signature{"OutputDebugStringW", "t", nullptr},
      Signature{"NKDbgPrintfW", "tt", nullptr},
      Signature{"FormatMessageW", "nhnnTnn", ""},
      Signature{"GetSystemDefaultLangID", "", ""},
      Signature{"MultiByteToWideChar", "nnanhn", ""},
      Signature{"IsWindow", "h", ""},
      Signature{"PostMessageW", "hnnn", ""},
      Signature{"SendMessageTimeout", "hnnnnnh", ""},
      Signature{"_vsnwprintf", "hnth", ""},
      Signature{"atoi", "a", ""},
      Signature{"strcmp", "aa", ""},
      Signature{"strlen", "a", ""},
      Signature{"strncmp", "aan", ""},
      Signature{"strstr", "aa", ""},
      Signature{"#8", "nnnn", "window", "MmMapIoSpace"},
      Signature{"#9", "hn", nullptr, "MmUnmapIoSpace"},
      Signature{"RTCNVRAM_Init", "", ""},
      Signature{"RTCNVRAM_Read", "nh", ""},
      Signature{"RTCNVRAM_Write", "nh", ""},
      Signature{"RTCNVRAM_DeInit", "", ""},
  };
  const std::string name = import.name.empty() ? '#' + std::to_string(import.ordinal) : import.name;
  const auto* const found =
      std::find_if(kSignatures.begin(), kSignatures.end(),
                   [&name](const Signature& signature) { return signature.import == name; });
  if (found == kSignatures.end()) throw std::logic_error("no signature of " + import.InWords());
  return *found;
}

SystemRecord::SystemRecord(Process& process) {
  process.Observe([this](const SystemCall& call, Cpu& cpu) { return OnCall(call, cpu); });
}

std::uint32_t SystemRecord::OnCall(const SystemCall& call, Cpu& cpu) {
  const Signature& signature = SignatureOf(call.import);
  const std::string name = signature.name == nullptr ? signature.import : signature.name;
  const std::string kinds = signature.arguments;
  std::string line = name + '(';
  for (unsigned i = 0; i < kinds.size(); ++i) {
    line += (i == 0 ? "" : ", ") + Argument(kinds[i], cpu, i);
  }
  line += ')';
  Call& recorded = calls_.emplace_back(Call{cpu.Number(), name, line});
  const std::uint32_t result = AnswerTo(name, call, cpu);
  if (signature.result == nullptr) return result;
  const std::string kind = signature.result;
  if (!kind.empty() && result != 0 && result != kInvalidHandle) Name(result, kind);
  const std::size_t text = kinds.find('T');
  if (text != std::string::npos && result != 0) {
    Name(cpu.ReadWord(cpu.Argument(static_cast<unsigned>(text))), "text");
  }
  recorded.line += " = " + Named(cpu, result);
  return result;
}

std::string SystemRecord::Argument(char kind, Cpu& cpu, unsigned index) const {
  const std::uint32_t value = cpu.Argument(index);
  if (kind == 'n' || value == 0) return InWords(value);
  if (kind == 't') return '\'' + Narrow(cpu, value) + '\'';
  if (kind == 'a') return '\'' + cpu.Text(value) + '\'';
  return Named(cpu, value);
}

std::uint32_t SystemRecord::AnswerTo(const std::string& name, const SystemCall& call, Cpu& cpu) {
  for (auto answer = answers_.begin(); answer != answers_.end(); ++answer) {
    if (answer->name != name || --answer->nth != 0) continue;
    const GivenAnswer given = *answer;
    answers_.erase(answer);
    for (const auto& [argument, word] : given.words) cpu.WriteWord(cpu.Argument(argument), word);
    if (given.look) given.look(cpu);
    if (given.error) sim::TheWorld().kernel.SetLastError(*given.error);
    return given.result;
  }
  return call.handler(cpu);
}

std::string SystemRecord::Named(const Cpu& cpu, std::uint32_t value) const {
  const auto found = names_.find(value);
  if (found != names_.end()) return found->second;
  Process& process = cpu.Owner();
  const auto& sections = process.Sections();
  const bool memory =
      cpu.Stack().Holds(value, 1) || process.Heap().Find(value) != nullptr ||
      std::any_of(sections.begin(), sections.end(),
                  [value](const MappedSection& section) { return section.extent.Holds(value, 1); });
  return memory ? "&" : InWords(value);
}

void SystemRecord::Name(std::uint32_t value, const std::string& kind) {
  names_[value] = kind + std::to_string(++named_[kind]);
}

std::vector<std::string> SystemRecord::TakeIf(const std::function<bool(const Call&)>& wanted) {
  std::vector<std::string> lines;
  for (; taken_ < calls_.size(); ++taken_) {
    if (wanted(calls_[taken_])) lines.push_back(calls_[taken_].line);
  }
  return lines;
}

std::vector<std::string> SystemRecord::Take() {
  return TakeIf([](const Call&) { return true; });
}

std::vector<std::string> SystemRecord::Take(const std::set<std::string>& names) {
  return TakeIf([&names](const Call& call) { return names.contains(call.name); });
}

std::vector<std::string> SystemRecord::TakeOfHost(const std::set<std::string>& without) {
  return TakeIf(
      [&without](const Call& call) { return call.processor == 0 && !without.contains(call.name); });
}

}  // namespace emulator
