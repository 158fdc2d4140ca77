#include "image/line_frame.h"

#include <algorithm>
#include <numeric>

#include "core/bytes.h"

namespace vexa {

namespace {

uint8_t* PutBig(uint8_t* out, size_t value, int count) {
  while (count-- > 0) *out++ = static_cast<uint8_t>(value >> (8 * count));
  return out;
}

// The sum that stands behind the payload. Parts of 256 bytes, whose sum fits 16 bits, take a fraction of the
// time.
uint32_t FrameSum(std::span<const uint8_t> payload) {
  constexpr ptrdiff_t kPart = 256;
  uint32_t sum = 0;
  auto at = payload.begin();
  for (; payload.end() - at >= kPart; at += kPart) sum += std::accumulate(at, at + kPart, uint16_t{0});
  return std::accumulate(at, payload.end(), sum);
}

}  // namespace

uint8_t* BeginFrame(uint8_t* out, size_t length) {
  *out++ = kStx;
  return PutBig(out, length, 3);
}

uint8_t* EndFrame(std::span<const uint8_t> payload, uint8_t* out) {
  out = PutBig(out, FrameSum(payload), 4);
  *out++ = kEtx;
  return out;
}

std::vector<uint8_t> FrameOf(std::span<const uint8_t> payload) {
  std::vector<uint8_t> frame(payload.size() + kFrameOverhead);
  uint8_t* const body = BeginFrame(frame.data(), payload.size());
  EndFrame(payload, std::copy(payload.begin(), payload.end(), body));
  return frame;
}

FrameView LookAtFrame(std::span<const uint8_t> bytes) {
  FrameView frame;
  ByteReader reader(bytes);
  frame.start = reader.U8();
  const uint32_t length = reader.U24Big();
  if (!reader.ok()) return frame;
  frame.length = length;
  if (bytes.size() < frame.size()) return frame;
  frame.whole = true;
  frame.payload = reader.Take(length);
  frame.stated = reader.U32Big();
  frame.end = reader.U8();
  frame.sum = FrameSum(frame.payload);
  return frame;
}

}  // namespace vexa
