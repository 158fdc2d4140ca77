// What crosses the line between the editor and the receiver's loader: frames and, between them, single
// control bytes. A URT file and the file of a download request hold the same frames, one behind the other.
//
// Frame, big-endian, L bytes of payload
//   0 1 STX (0x02)            1 3 L                                  4 L payload
//   4+L 4 sum of the payload's bytes modulo 2^32                     8+L 1 ETX (0x03)
// The payload "AB" (41 42) as a frame:
//   02  00 00 02  41 42  00 00 00 83  03
//
// The payload may hold any byte, also those of the table below: only the length says where a frame ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vexa {

// The single bytes that the two ends send each other between frames, with what the sender means by each.
enum ControlByte : uint8_t {
  kStx = 0x02,  // a frame begins
  kEtx = 0x03,  // a frame ends
  kEot = 0x04,
  kEnq = 0x05,  // the next frame is asked for
  kAck = 0x06,  // ready
  kXon = 0x11,  // woken
  kXoff = 0x13,
  kNak = 0x15,  // the last frame is asked for again
  kSyn = 0x16,  // behind a wake-up
  kEtb = 0x17,  // anybody ready?
  kCan = 0x18,  // all is received
};

inline constexpr size_t kFrameHead = 4;      // bytes in front of the payload
inline constexpr size_t kFrameOverhead = 9;  // bytes beside the payload

// Writes a frame in place. `out` has room for `length` + kFrameOverhead bytes; the payload, of below 2^24
// bytes, goes where BeginFrame's result points. EndFrame gives the place behind the frame.
uint8_t* BeginFrame(uint8_t* out, size_t length);
uint8_t* EndFrame(std::span<const uint8_t> payload, uint8_t* out);
// The frame of a payload of below 2^24 bytes.
std::vector<uint8_t> FrameOf(std::span<const uint8_t> payload);

// What the bytes of a frame say, as far as they are there.
struct FrameView {
  std::optional<uint32_t> length;    // of the payload; nothing when fewer than kFrameHead bytes are there
  bool whole = false;                // all bytes are there; only then what follows is filled in
  uint8_t start = 0, end = 0;        // STX and ETX in a right frame
  std::span<const uint8_t> payload;  // part of what was looked at
  uint32_t stated = 0, sum = 0;      // in the frame, and of its payload

  // Bytes of the frame; the length must be there.
  size_t size() const { return size_t{*length} + kFrameOverhead; }
};
// The frame that begins with the first of the bytes; more may stand behind it. Where frames arrive piece by
// piece, look again with more of the same bytes: as long as the frame is not whole, that takes no time.
FrameView LookAtFrame(std::span<const uint8_t> bytes);

}  // namespace vexa
