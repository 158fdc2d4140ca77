// A delta is a row of steps until the target is full, all numbers as 7-bit groups, lowest first, the high bit
// set before another group:
//   count of new bytes, the bytes, count of copied bytes, and when that is not 0 the place to copy from,
//   counted from where the copy before it would have gone on behind as many bytes (zigzag: 0, -1, 1, -2, ...)
#include "core/delta.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vexa {

namespace {

using Span = std::span<const uint8_t>;

constexpr size_t kBlock = 16;    // bytes of the source that are found again wherever they stand
constexpr size_t kShortest = 6;  // a copy of less does not pay
constexpr size_t kShort = 64;    // a copy of less may be bettered
constexpr size_t kProbes = 8;
constexpr uint32_t kFree = 0xFFFFFFFF;

void PutNumber(std::vector<uint8_t>& out, uint64_t number) {
  for (; number >= 0x80; number >>= 7) out.push_back(static_cast<uint8_t>(number | 0x80));
  out.push_back(static_cast<uint8_t>(number));
}

uint64_t TakeNumber(Span delta, size_t& at) {
  uint64_t number = 0;
  for (unsigned shift = 0; shift < 64; shift += 7) {
    const uint8_t byte = delta[at++];
    number |= static_cast<uint64_t>(byte & 0x7F) << shift;
    if (byte < 0x80) break;
  }
  return number;
}

// How many bytes from the two places on are equal.
size_t Common(Span one, Span other) {
  const size_t shorter = std::min(one.size(), other.size());
  const auto end = one.begin() + static_cast<std::ptrdiff_t>(shorter);
  return static_cast<size_t>(std::mismatch(one.begin(), end, other.begin()).first - one.begin());
}

size_t CommonEnd(Span one, Span other) {
  const size_t shorter = std::min(one.size(), other.size());
  const auto end = one.rbegin() + static_cast<std::ptrdiff_t>(shorter);
  return static_cast<size_t>(std::mismatch(one.rbegin(), end, other.rbegin()).first - one.rbegin());
}

// Where the blocks of a source stand. Of equal blocks the first is kept, which the longest copy may follow.
class BlockIndex {
 public:
  BlockIndex(Span source, size_t first, size_t last) : source_(source) {
    const size_t blocks = (last - first) / kBlock;
    places_.resize(std::bit_ceil(2 * blocks + 1), kFree);
    for (size_t i = 0; i < blocks; ++i) Put(first + i * kBlock);
  }
  // SIZE_MAX: there is none like the one that `target` starts with.
  size_t Find(Span target) const {
    const size_t slot = SlotOf(target.data());
    for (size_t i = 0; i < kProbes; ++i) {
      const uint32_t place = places_[(slot + i) & (places_.size() - 1)];
      if (place == kFree) break;
      if (std::memcmp(&source_[place], target.data(), kBlock) == 0) return place;
    }
    return SIZE_MAX;
  }

 private:
  size_t SlotOf(const uint8_t* block) const {
    uint64_t low = 0, high = 0;
    std::memcpy(&low, block, sizeof low);
    std::memcpy(&high, block + sizeof low, sizeof high);
    const uint64_t mixed = (low * 0x9E3779B97F4A7C15u ^ std::rotl(high, 29)) * 0xC2B2AE3D27D4EB4Fu;
    return static_cast<size_t>(mixed >> 32) & (places_.size() - 1);
  }
  void Put(size_t place) {
    const size_t slot = SlotOf(&source_[place]);
    for (size_t i = 0; i < kProbes; ++i) {
      uint32_t& there = places_[(slot + i) & (places_.size() - 1)];
      if (there == kFree) {
        there = static_cast<uint32_t>(place);
        return;
      }
      if (std::memcmp(&source_[there], &source_[place], kBlock) == 0) return;
    }
  }
  Span source_;
  std::vector<uint32_t> places_;
};

struct Steps {
  Span target;
  std::vector<uint8_t> bytes;
  size_t next = 0;      // of the target: what is not yet described
  size_t expected = 0;  // in the source: behind the last copy

  void Copy(size_t from, size_t at, size_t count) {
    PutNumber(bytes, at - next);
    bytes.insert(bytes.end(), target.begin() + static_cast<std::ptrdiff_t>(next),
                 target.begin() + static_cast<std::ptrdiff_t>(at));
    PutNumber(bytes, count);
    if (count == 0) return;
    const auto away = static_cast<int64_t>(from) - static_cast<int64_t>(expected + (at - next));
    PutNumber(bytes, (static_cast<uint64_t>(away) << 1) ^ static_cast<uint64_t>(away >> 63));
    next = at + count;
    expected = from + count;
  }
};

}  // namespace

std::vector<uint8_t> MakeDelta(Span source, Span target) {
  const size_t prefix = Common(source, target);
  const size_t suffix = CommonEnd(source.subspan(prefix), target.subspan(prefix));
  const size_t end = target.size() - suffix, source_end = source.size() - suffix;
  const BlockIndex index(source, prefix, source_end);
  Steps steps{target, {}, 0, 0};
  if (prefix > 0) steps.Copy(0, 0, prefix);
  for (size_t at = prefix; at < end;) {
    size_t best = 0, from = 0;
    const auto consider = [&](size_t place) {
      if (place >= source_end) return;
      const size_t count = Common(source.subspan(place, source_end - place), target.subspan(at, end - at));
      if (count > best) best = count, from = place;
    };
    consider(steps.expected);                      // the bytes so far were put in,
    consider(steps.expected + (at - steps.next));  // or stand in place of as many,
    if (at + source.size() >= target.size()) consider(at + source.size() - target.size());  // or end a change
    // Records of one kind are alike in most of their bytes: a short copy may be one of the wrong record, and
    // a block further on, where they differ, tells the right one.
    const size_t near = best < kShort ? std::min(best, end - at) : 0;
    for (size_t ahead = 0; best < kShort && ahead <= near && at + ahead + kBlock <= end; ++ahead) {
      const size_t found = index.Find(target.subspan(at + ahead));
      if (found != SIZE_MAX && found >= ahead) consider(found - ahead);
    }
    if (best < kShortest) {
      ++at;
      continue;
    }
    size_t start = at;
    while (start > steps.next && from > prefix && source[from - 1] == target[start - 1]) --start, --from;
    steps.Copy(from, start, best + (at - start));
    at = steps.next;
  }
  if (suffix > 0 || steps.next < end) steps.Copy(source_end, end, suffix);
  return std::move(steps.bytes);
}

std::vector<uint8_t> ApplyDelta(Span source, Span delta, size_t size) {
  std::vector<uint8_t> target;
  target.reserve(size);
  const auto append = [&](Span bytes) { target.insert(target.end(), bytes.begin(), bytes.end()); };
  size_t expected = 0;
  for (size_t at = 0; target.size() < size;) {
    const auto fresh = static_cast<size_t>(TakeNumber(delta, at));
    append(delta.subspan(at, fresh));
    at += fresh;
    const auto count = static_cast<size_t>(TakeNumber(delta, at));
    if (count == 0) continue;
    const uint64_t coded = TakeNumber(delta, at);
    const uint64_t away = (coded >> 1) ^ (~(coded & 1) + 1);
    const auto from = static_cast<size_t>(expected + fresh + away);  // modulo 2^64: `away` may be below 0
    append(source.subspan(from, count));
    expected = from + count;
  }
  return target;
}

}  // namespace vexa
