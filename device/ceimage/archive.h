// A library of objects, as Microsoft's linker reads it: with two directories of its symbols.
#pragma once

#include <string>
#include <vector>

#include "device/ceimage/bytes.h"

namespace ceimage {

struct ArchiveMember {
  std::string name;                  // of 15 characters at most; several may have the same
  std::vector<std::string> symbols;  // that it defines
  Bytes content;
};

Bytes EncodeArchive(const std::vector<ArchiveMember>& members);

}  // namespace ceimage
