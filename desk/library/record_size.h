// How much of a caller's record is looked at.
#pragma once

#include <cstddef>
#include <cstdint>

namespace desk {

// Bytes of the record that the library may read or write, on a board of so many channels: what a
// program must have there, and so what the trace may tell of. Reads the bytes that say so. 0 for a
// code without a record and for null.
std::size_t RecordBytes(std::uint32_t code, const void* record, unsigned channels);

}  // namespace desk
