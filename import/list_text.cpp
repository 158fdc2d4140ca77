#include "import/list_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string>
#include <system_error>

#include "core/code_names.h"

namespace vexa {

namespace {

char* Append(char* at, std::string_view text) {
  std::memcpy(at, text.data(), text.size());
  return at + text.size();
}

char* Append(char* at, uint32_t number) {
  return std::to_chars(at, at + 10, number).ptr;
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

void SetListName(char (&field)[kNameSize], std::string_view name) {
  name = name.substr(0, std::min<size_t>(name.find('\0'), kNameSize - 1));
  std::memset(field, 0, kNameSize);
  std::memcpy(field, name.data(), name.size());
}

void SetSatelliteNumberName(char (&field)[kNameSize], uint32_t number) {
  char text[32];
  const char* end = Append(Append(text, "Satellite"), number);
  SetListName(field, std::string_view(text, static_cast<size_t>(end - text)));
}

void SetCarrierNumberName(char (&field)[kNameSize], uint32_t carrier, uint32_t satellite) {
  char text[32];
  const char* end = Append(Append(Append(Append(text, "Carrier"), carrier), "_S"), satellite);
  SetListName(field, std::string_view(text, static_cast<size_t>(end - text)));
}

void ServiceIds::Clear() {
  any_ = false;
  for (const uint16_t word : used_words_) later_[word] = 0;
  used_words_.clear();
}

uint32_t ServiceIds::Unique(uint32_t id) const {
  id &= 0xFFFF;
  if (!any_) return id;
  if (id == first_) id = (id + 1) & 0xFFFF;
  size_t word = id / 64;
  uint64_t taken = later_[word] >> (id % 64);
  // Shifting brought in zeros, which are not numbers of this word.
  const uint32_t run = static_cast<uint32_t>(std::countr_one(taken));
  if (run < 64 - id % 64) return id + run;
  for (size_t i = 0; i < kWords; ++i) {
    word = (word + 1) % kWords;
    if (later_[word] != ~uint64_t{0})
      return static_cast<uint32_t>(word * 64) + static_cast<uint32_t>(std::countr_one(later_[word]));
  }
  return id;
}

void ServiceIds::Add(uint32_t id) {
  if (!any_) {
    any_ = true;
    first_ = id;
    return;
  }
  uint64_t& word = later_[id / 64];
  if (word == 0) used_words_.push_back(static_cast<uint16_t>(id / 64));
  word |= uint64_t{1} << (id % 64);
}

std::optional<uint32_t> WholeNumber(std::string_view text, int base) {
  uint32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

uint32_t FecCodeOf(std::string_view text) {
  const auto* found = std::find(std::begin(kFecs), std::end(kFecs), text);
  return found == std::end(kFecs) ? 0 : static_cast<uint32_t>(found - std::begin(kFecs));
}

bool ListLines::Next() {
  if (rest_.empty()) return false;
  const size_t end = rest_.find('\n');
  line = rest_.substr(0, end);
  rest_ = end == std::string_view::npos ? std::string_view{} : rest_.substr(end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  ++number;
  return true;
}

size_t LineCount(std::string_view text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
}

void TellUnreadList(const Context& context, const Path& path, const std::error_code& error) {
  TellWhy(context.messages, Icon::kStop, ReadReason(path, error), "Could not read file \"%s\".",
          Utf8FromPath(path).c_str());
}

ReadResult ReadListFile(const Context& context, const Path& path, Bytes& list) {
  const ReadResult result = ReadWholeFile(path, list, kLargestList);
  if (result == ReadResult::kFailed) TellUnreadList(context, path, result.error);
  return result;
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view start) {
  if (text.size() < start.size()) return false;
  for (size_t i = 0; i < start.size(); ++i) {
    if (Lower(text[i]) != Lower(start[i])) return false;
  }
  return true;
}

bool HasExtension(const Path& path, std::string_view extension) {
  const std::string own = Utf8FromPath(path.extension());
  return own.size() == extension.size() && StartsWithIgnoringCase(own, extension);
}

}  // namespace vexa
