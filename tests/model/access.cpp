#include "tests/model/access.h"

#include <iomanip>
#include <ostream>

namespace test {

std::ostream& operator<<(std::ostream& out, const Access& access) {
  const std::ios_base::fmtflags flags = out.flags();
  out << std::hex << std::uppercase << std::setfill('0') << access.kind << "(0x" << std::setw(2)
      << +access.chip << ", " << +access.page << ", 0x" << std::setw(2) << +access.reg << ", 0x"
      << std::setw(2) << +access.value << ")";
  out.flags(flags);
  return out;
}

}  // namespace test
