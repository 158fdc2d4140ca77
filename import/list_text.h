// What the list readers share: numbers as lists write them, names, program numbers unique within a carrier,
// progress.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/context.h"
#include "core/records.h"
#include "platform/text.h"

namespace vexa {

// Leading blanks and a sign are skipped, then digits are taken up to the first other character, modulo 2^32.
// No digits: 0. `text` moves behind the digits.
inline uint32_t TakeDecimalPrefix(std::string_view& text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  uint32_t value = 0;
  for (; i < text.size(); ++i) {
    const uint32_t digit = static_cast<uint8_t>(text[i]) - uint32_t{'0'};
    if (digit > 9) break;
    value = value * 10 + digit;
  }
  text.remove_prefix(i);
  return value;
}
// The same of a text that stays as it is.
inline uint32_t DecimalPrefix(std::string_view text) {
  return TakeDecimalPrefix(text);
}

// All of the text as a number, in base 10 or 16; nothing for other text, and beyond 32 bits.
std::optional<uint32_t> WholeNumber(std::string_view text, int base = 10);
// "3/4" as a CarrierRecord has it; Auto for what that cannot name.
uint32_t FecCodeOf(std::string_view text);

// Before the text of some lists in UTF-8.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// `name` up to its first NUL, cut to 19 characters, NUL-padded.
void SetListName(char (&field)[kNameSize], std::string_view name);
// "Satellite%d", cut like a list's names.
void SetSatelliteNumberName(char (&field)[kNameSize], uint32_t number);
// "Carrier%d_S%d", likewise.
void SetCarrierNumberName(char (&field)[kNameSize], uint32_t carrier, uint32_t satellite);

// The program numbers of the current carrier, in the order in which they were given.
//
// A number that is taken is raised by one until it is free. The search for a raised number leaves out the
// list's first entry, so a raised number may equal the first one; receivers' lists made so far depend on it.
class ServiceIds {
 public:
  void Clear();  // for the next carrier
  // The number that `id`, of which 16 bits count, gets; with all 65,536 numbers taken it stays as it is.
  uint32_t Unique(uint32_t id) const;
  void Add(uint32_t id);  // below 65,536

 private:
  static constexpr size_t kWords = 65536 / 64;
  bool any_ = false;
  uint32_t first_ = 0;
  std::array<uint64_t, kWords> later_{};  // a bit for each number of the list but its first
  std::vector<uint16_t> used_words_;
};

// The lines of a text, which end with LF or CR LF.
class ListLines {
 public:
  explicit ListLines(std::string_view text) : rest_(text) {}
  // False at the end. The line stands in `line`, its number, from 1, in `number`.
  bool Next();
  std::string_view line;
  size_t number = 0;

 private:
  std::string_view rest_;
};
size_t LineCount(std::string_view text);  // for progress

// Tells the progress bar how far a reader is, not oftener than it can be seen.
class ListProgress {
 public:
  // Announces `total` steps.
  ListProgress(const Progress& progress, uint64_t total) : progress_(progress) {
    if (progress_.range) progress_.range(total);
    if (progress_.position) progress_.position(0);
  }
  void Step() {  // one more is done
    if (++done_ % 256 == 0) End();
  }
  void End() const {
    if (progress_.position) progress_.position(done_);
  }

 private:
  const Progress& progress_;
  uint64_t done_ = 0;
};

// The longest list that is read, in bytes: twenty times what the 65,535 services of an SDB take.
inline constexpr uint64_t kLargestList = uint64_t{256} << 20;
// The whole list in `list`. kFailed after a message: no list ends where reading it broke off. kCannotOpen
// without one.
ReadResult ReadListFile(const Context& context, const Path& path, Bytes& list);
// The message of a list that could be opened and not be read.
void TellUnreadList(const Context& context, const Path& path, const std::error_code& error);
// Whether `text` begins with `start`, without regard to the case of A-Z.
bool StartsWithIgnoringCase(std::string_view text, std::string_view start);
// The extension is given with its point, ".sdx"; the case of A-Z does not count.
bool HasExtension(const Path& path, std::string_view extension);

}  // namespace vexa
