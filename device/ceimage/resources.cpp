#include "device/ceimage/resources.h"

#include <algorithm>
#include <map>

namespace ceimage {
namespace {

using Languages = std::map<std::uint16_t, const Resource*>;
using Names = std::map<std::uint16_t, Languages>;
using Types = std::map<std::uint16_t, Names>;

constexpr std::uint32_t kDirectoryBytes = 16;
constexpr std::uint32_t kEntryBytes = 8;
constexpr std::uint32_t kDataEntryBytes = 16;
constexpr std::uint32_t kIsDirectory = 0x80000000;

std::uint16_t ReadNumber(ByteView file, std::size_t offset, const char* what) {
  constexpr std::uint16_t kNumberFollows = 0xFFFF;
  if (Get16(file, offset) != kNumberFollows) {
    throw Refusal(std::string("A resource's ") + what + " is a text; only numbers are known.");
  }
  return Get16(file, offset + 2);
}

template <typename Map>
std::uint32_t DirectoryBytes(const Map& map) {
  return kDirectoryBytes + kEntryBytes * static_cast<std::uint32_t>(map.size());
}

template <typename Map>
void AppendDirectory(Bytes& bytes, const Map& map) {
  for (int i = 0; i < 3; ++i) Append32(bytes, 0);  // flags, time, version
  Append16(bytes, 0);                              // entries with names
  Append16(bytes, static_cast<std::uint32_t>(map.size()));
}

}  // namespace

std::vector<Resource> ReadResources(ByteView file) {
  std::vector<Resource> resources;
  for (std::size_t at = 0; at < file.size();) {
    const std::size_t size = Get32(file, at);
    const std::size_t header = Get32(file, at + 4);
    const std::uint16_t type = ReadNumber(file, at + 8, "type");
    const std::uint16_t name = ReadNumber(file, at + 12, "name");
    constexpr std::size_t kHeaderBytes = 32;  // when both are numbers
    if (header != kHeaderBytes) throw Refusal("A resource header of an unknown form.");
    const ByteView content = Part(file, at + header, size);
    // The first one is empty and only says that this is such a file.
    if (at == 0 ? size != 0 || type != 0 : type == 0) throw Refusal("This is no resource file.");
    if (at != 0) {
      resources.push_back({type, name, Get16(file, at + 22), {content.begin(), content.end()}});
    }
    at += header + (size + 3) / 4 * 4;
  }
  if (resources.empty()) throw Refusal("The resource file is empty.");
  return resources;
}

Bytes EncodeResources(const std::vector<Resource>& resources, std::uint32_t section_offset) {
  Types types;
  std::uint32_t directories = 0;
  for (const Resource& resource : resources) {
    if (!types[resource.type][resource.name].emplace(resource.language, &resource).second) {
      throw Refusal("Two resources have the same type, name and language.");
    }
  }
  directories = DirectoryBytes(types);
  for (const auto& [type, names] : types) {
    directories += DirectoryBytes(names);
    for (const auto& [name, languages] : names) directories += DirectoryBytes(languages);
  }

  // Level by level, each below the one before; then what describes the data; then the data.
  Bytes bytes;
  std::uint32_t below = DirectoryBytes(types);
  AppendDirectory(bytes, types);
  for (const auto& [type, names] : types) {
    Append32(bytes, type);
    Append32(bytes, below | kIsDirectory);
    below += DirectoryBytes(names);
  }
  for (const auto& [type, names] : types) {
    AppendDirectory(bytes, names);
    for (const auto& [name, languages] : names) {
      Append32(bytes, name);
      Append32(bytes, below | kIsDirectory);
      below += DirectoryBytes(languages);
    }
  }
  std::vector<const Resource*> in_order;
  for (const auto& [type, names] : types) {
    for (const auto& [name, languages] : names) {
      AppendDirectory(bytes, languages);
      for (const auto& [language, resource] : languages) {
        Append32(bytes, language);
        Append32(bytes,
                 directories + kDataEntryBytes * static_cast<std::uint32_t>(in_order.size()));
        in_order.push_back(resource);
      }
    }
  }
  Bytes data;
  const std::uint32_t data_offset =
      directories + kDataEntryBytes * static_cast<std::uint32_t>(in_order.size());
  for (const Resource* resource : in_order) {
    Append32(bytes, section_offset + data_offset + static_cast<std::uint32_t>(data.size()));
    Append32(bytes, static_cast<std::uint32_t>(resource->content.size()));
    Append32(bytes, 0);  // code page
    Append32(bytes, 0);
    Append(data, resource->content);
    Align(data, 4);
  }
  Append(bytes, data);
  return bytes;
}

}  // namespace ceimage
