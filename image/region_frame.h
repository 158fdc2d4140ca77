// The frames in which the receiver's loader hands out a region of its memory, big-endian. They are framed
// like an upload's (line_frame.h); the first byte of a payload says what it is, any other than these is taken
// and ignored.
//
// Header, the first frame of a region: an image description (urt.h) whose name has 15 bytes, N blocks
//   0 1 0xF1                  1 2 0x8000 | (14 N + 47 mod 4096)      8 1 15   9 15 name
//   24 4 length of the data   36 4 start address   40 4 end address  44 3 N
//   47 14 N block table, the number of packets at +4                 47+14N 4 CRC of the data
// Data, a frame for each packet: a packet body (urt.h)
//   0 1 0xF2                  1 2 0x8000 | (d + 9)                   3 3 offset in the block mod 2^18
//   6 3 block                 9 1 packet in the block mod 256        10 2 d         12 d data
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexa {

inline constexpr uint8_t kRegionHeaderTag = 0xF1, kRegionDataTag = 0xF2;

inline constexpr size_t kRegionNameSize = 15;
inline constexpr size_t kRegionLengthAt = 24, kRegionBlockCountAt = 44;  // places in the header
inline constexpr size_t kRegionDataAt = 12;                              // place in a data frame

}  // namespace vexa
