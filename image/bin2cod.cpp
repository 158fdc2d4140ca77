#include "image/bin2cod.h"

#include <algorithm>

namespace vexa {

namespace {

constexpr size_t kWindow = 4096, kShortest = 3, kLongest = 18;
constexpr size_t kHashSize = 1 << 14;
constexpr int kChainLimit = 64;  // candidates looked at for one position
constexpr uint32_t kNowhere = 0xFFFFFFFF;

struct Match {
  size_t length = 0, distance = 0;
};

// Finds earlier places by the hash of three bytes, latest first.
class Finder {
 public:
  explicit Finder(std::span<const uint8_t> source)
      : source_(source), heads_(kHashSize, kNowhere), previous_(kWindow, kNowhere) {}

  Match Longest(size_t position) const {
    Match best;
    const size_t limit = std::min(kLongest, source_.size() - position);
    if (limit < kShortest) return best;
    uint32_t candidate = heads_[Hash(position)];
    for (int i = 0; i < kChainLimit && candidate != kNowhere && position - candidate <= kWindow; ++i) {
      size_t length = 0;
      while (length < limit && source_[candidate + length] == source_[position + length]) ++length;
      if (length > best.length) best = {length, position - candidate};
      if (best.length == limit) break;
      const uint32_t next = previous_[candidate % kWindow];
      if (next == kNowhere || next >= candidate) break;  // overwritten: out of the window
      candidate = next;
    }
    return best.length < kShortest ? Match{} : best;
  }

  void Add(size_t position) {
    if (source_.size() - position < kShortest) return;
    uint32_t& head = heads_[Hash(position)];
    previous_[position % kWindow] = head;
    head = static_cast<uint32_t>(position);
  }

 private:
  size_t Hash(size_t position) const {
    const uint32_t three =
        static_cast<uint32_t>(source_[position] << 16 | source_[position + 1] << 8 | source_[position + 2]);
    return (three * 2654435761u) >> 18;
  }
  std::span<const uint8_t> source_;
  std::vector<uint32_t> heads_, previous_;
};

}  // namespace

Bytes CompressBin2Cod(std::span<const uint8_t> source) {
  Bytes stream;
  stream.reserve(source.size() / 2 + 16);
  Finder finder(source);
  size_t flags = 0;
  int item = 8;
  for (size_t position = 0; position < source.size();) {
    if (item == 8) {
      flags = stream.size();
      stream.push_back(0);
      item = 0;
    }
    const Match match = finder.Longest(position);
    size_t step = 1;
    if (match.length == 0) {
      stream[flags] = static_cast<uint8_t>(stream[flags] | 1 << item);
      stream.push_back(source[position]);
    } else {
      const size_t distance = match.distance - 1;
      stream.push_back(static_cast<uint8_t>(distance));
      stream.push_back(static_cast<uint8_t>((distance >> 8) << 4 | (match.length - kShortest)));
      step = match.length;
    }
    for (size_t i = 0; i < step; ++i) finder.Add(position + i);
    position += step;
    ++item;
  }
  return stream;
}

std::optional<Bytes> ExpandBin2Cod(std::span<const uint8_t> stream, uint64_t size) {
  // A match of two bytes, with its eighth of a flag byte, gives at most 18.
  if (size > uint64_t{stream.size()} * 9) return std::nullopt;
  Bytes result;
  result.reserve(static_cast<size_t>(size));
  size_t position = 0;
  while (position < stream.size()) {
    const uint8_t flags = stream[position++];
    for (int item = 0; item < 8 && position < stream.size(); ++item) {
      if (flags >> item & 1) {
        if (result.size() == size) return std::nullopt;
        result.push_back(stream[position++]);
        continue;
      }
      if (stream.size() - position < 2) return std::nullopt;
      const size_t distance = (stream[position] | size_t{stream[position + 1]} >> 4 << 8) + 1;
      const size_t length = (stream[position + 1] & 15u) + kShortest;
      position += 2;
      if (distance > result.size() || length > size - result.size()) return std::nullopt;
      for (size_t i = 0; i < length; ++i) result.push_back(result[result.size() - distance]);
    }
  }
  if (result.size() != size) return std::nullopt;
  return result;
}

}  // namespace vexa
