#include "device/ceimage/archive.h"

#include <cstdint>
#include <map>

namespace ceimage {
namespace {

constexpr std::uint32_t kMagicBytes = 8;
constexpr std::uint32_t kHeaderBytes = 60;
constexpr std::size_t kLongestName = 15;

// Numbers as texts, filled up with blanks; no times or owners: the same members give the same
// library.
void AppendMember(Bytes& archive, const std::string& name, ByteView content) {
  const auto append = [&](const std::string& text, std::size_t size) {
    AppendText(archive, text + std::string(size - text.size(), ' '), size);
  };
  append(name + '/', 16);
  append("0", 12);
  append("0", 6);
  append("0", 6);
  append("0", 8);
  append(std::to_string(content.size()), 10);
  append("`\n", 2);
  Append(archive, content);
  if (content.size() % 2 != 0) archive.push_back('\n');
}

void AppendBig32(Bytes& bytes, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  }
}

// Where the members begin, the first of them at `position`.
std::vector<std::uint32_t> Positions(const std::vector<ArchiveMember>& members,
                                     std::uint32_t position) {
  std::vector<std::uint32_t> positions;
  for (const ArchiveMember& member : members) {
    positions.push_back(position);
    position += kHeaderBytes + AlignUp(static_cast<std::uint32_t>(member.content.size()), 2);
  }
  return positions;
}

// In the order of the members, with numbers of the largest byte first: every archiver's.
Bytes FirstDirectory(const std::vector<ArchiveMember>& members,
                     const std::vector<std::uint32_t>& positions) {
  Bytes places;
  Bytes names;
  for (std::size_t i = 0; i < members.size(); ++i) {
    for (const std::string& symbol : members[i].symbols) {
      AppendBig32(places, positions[i]);
      AppendText(names, symbol, symbol.size() + 1);
    }
  }
  Bytes directory;
  AppendBig32(directory, static_cast<std::uint32_t>(places.size() / 4));
  Append(directory, places);
  Append(directory, names);
  return directory;
}

// In the order of the names (as bytes), which Microsoft's linker looks them up by.
Bytes SecondDirectory(const std::vector<ArchiveMember>& members,
                      const std::vector<std::uint32_t>& positions) {
  std::map<std::string, std::uint32_t> numbers;  // of the members, from 1
  Bytes directory;
  Append32(directory, static_cast<std::uint32_t>(members.size()));
  for (std::size_t i = 0; i < members.size(); ++i) {
    Append32(directory, positions[i]);
    for (const std::string& symbol : members[i].symbols) {
      if (!numbers.emplace(symbol, static_cast<std::uint32_t>(i + 1)).second) {
        throw Refusal("Two members of the library define " + symbol + ".");
      }
    }
  }
  Append32(directory, static_cast<std::uint32_t>(numbers.size()));
  for (const auto& [symbol, number] : numbers) Append16(directory, number);
  for (const auto& [symbol, number] : numbers) AppendText(directory, symbol, symbol.size() + 1);
  return directory;
}

}  // namespace

Bytes EncodeArchive(const std::vector<ArchiveMember>& members) {
  for (const ArchiveMember& member : members) {
    if (member.name.size() > kLongestName) {
      throw Refusal("The name " + member.name + " is too long for a member of a library.");
    }
  }
  // Their sizes do not depend on where the members are.
  std::vector<std::uint32_t> positions = Positions(members, 0);
  const auto behind = [](const Bytes& directory) {
    return kHeaderBytes + AlignUp(static_cast<std::uint32_t>(directory.size()), 2);
  };
  positions = Positions(members, kMagicBytes + behind(FirstDirectory(members, positions)) +
                                     behind(SecondDirectory(members, positions)));
  Bytes archive;
  AppendText(archive, "!<arch>\n", kMagicBytes);
  AppendMember(archive, "", FirstDirectory(members, positions));
  AppendMember(archive, "", SecondDirectory(members, positions));
  for (const ArchiveMember& member : members) AppendMember(archive, member.name, member.content);
  return archive;
}

}  // namespace ceimage
