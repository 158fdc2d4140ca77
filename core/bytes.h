// Bounds-checked reading and writing of file bytes in either byte order.
//
// Both fail sticky: after the first step beyond the end every further read gives zeros and `ok()` stays
// false, so a parser checks once at the end of each group.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vexa {

class ByteReader {
 public:
  explicit ByteReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  bool ok() const { return ok_; }
  size_t position() const { return position_; }
  size_t size() const { return bytes_.size(); }
  size_t remaining() const { return bytes_.size() - position_; }
  // Absolute; beyond the end fails.
  void Seek(size_t position) {
    if (position > bytes_.size()) return Fail();
    position_ = position;
  }
  void Skip(size_t count) {
    if (count > remaining()) return Fail();
    position_ += count;
  }
  // All from here on; none of them is taken.
  std::span<const uint8_t> Rest() const { return bytes_.subspan(position_); }
  // `count` bytes from here; empty and failed when they are not all there.
  std::span<const uint8_t> Take(size_t count) {
    if (!ok_ || count > remaining()) {
      Fail();
      return {};
    }
    const auto part = bytes_.subspan(position_, count);
    position_ += count;
    return part;
  }
  uint8_t U8() { return static_cast<uint8_t>(Little(1)); }
  uint16_t U16() { return static_cast<uint16_t>(Little(2)); }
  uint32_t U32() { return Little(4); }
  uint16_t U16Big() { return static_cast<uint16_t>(Big(2)); }
  uint32_t U24Big() { return Big(3); }
  uint32_t U32Big() { return Big(4); }
  // A record that is its bytes; left as it is when they are not all there.
  template <class Record>
  bool Read(Record& record) {
    static_assert(std::is_trivially_copyable_v<Record>);
    const auto part = Take(sizeof record);
    if (part.empty()) return false;
    std::memcpy(&record, part.data(), sizeof record);
    return true;
  }

 private:
  void Fail() { ok_ = false; }
  uint32_t Little(size_t count) {
    uint32_t value = 0;
    size_t shift = 0;
    for (const uint8_t byte : Take(count)) value |= static_cast<uint32_t>(byte) << (8 * shift++);
    return value;
  }
  uint32_t Big(size_t count) {
    uint32_t value = 0;
    for (const uint8_t byte : Take(count)) value = value << 8 | byte;
    return value;
  }
  std::span<const uint8_t> bytes_;
  size_t position_ = 0;
  bool ok_ = true;
};

class ByteWriter {
 public:
  std::vector<uint8_t>& bytes() { return bytes_; }
  const std::vector<uint8_t>& bytes() const { return bytes_; }
  size_t size() const { return bytes_.size(); }
  void U8(uint32_t value) { bytes_.push_back(static_cast<uint8_t>(value)); }
  void U16(uint32_t value) { Little(value, 2); }
  void U32(uint32_t value) { Little(value, 4); }
  void U16Big(uint32_t value) { Big(value, 2); }
  void U24Big(uint32_t value) { Big(value, 3); }
  void U32Big(uint32_t value) { Big(value, 4); }
  void Fill(size_t count, uint8_t value) { bytes_.insert(bytes_.end(), count, value); }
  void Append(std::span<const uint8_t> part) { bytes_.insert(bytes_.end(), part.begin(), part.end()); }
  // At most `width` bytes of `text`, then `fill` up to `width`.
  void Text(std::string_view text, size_t width, uint8_t fill = 0) {
    for (size_t i = 0; i < width; ++i)
      bytes_.push_back(i < text.size() ? static_cast<uint8_t>(text[i]) : fill);
  }
  template <class Record>
  void Write(const Record& record) {
    static_assert(std::is_trivially_copyable_v<Record>);
    const auto* start = reinterpret_cast<const uint8_t*>(&record);
    bytes_.insert(bytes_.end(), start, start + sizeof record);
  }
  // Overwrites four bytes already written.
  void PatchU32(size_t position, uint32_t value) {
    for (size_t i = 0; i < 4; ++i) bytes_.at(position + i) = static_cast<uint8_t>(value >> (8 * i));
  }

 private:
  void Little(uint32_t value, size_t count) {
    for (size_t i = 0; i < count; ++i) U8(value >> (8 * i) & 0xFF);
  }
  void Big(uint32_t value, size_t count) {
    for (size_t i = count; i-- > 0;) U8(value >> (8 * i) & 0xFF);
  }
  std::vector<uint8_t> bytes_;
};

// Writes many records, each made where it stays until a group of them is copied: to copy a record just after
// some of its fields were set costs more than to set them.
template <class Record>
class RecordWriter {
 public:
  explicit RecordWriter(ByteWriter& out) : out_(out) {}
  // The place of the next record, of any content, to be filled before the next call.
  Record& Next() {
    if (used_ == group_.size()) End();
    return group_[used_++];
  }
  // Behind the last record.
  void End() {
    out_.Append({reinterpret_cast<const uint8_t*>(group_.data()), used_ * sizeof(Record)});
    used_ = 0;
  }

 private:
  static_assert(std::is_trivially_copyable_v<Record>);
  ByteWriter& out_;
  std::array<Record, 64> group_;
  size_t used_ = 0;
};

}  // namespace vexa
