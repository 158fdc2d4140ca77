#include "platform/text.h"

#include <cstdint>

namespace vexa {

namespace {

// Windows-1252 between 0x80 and 0x9F; everything else equals Unicode.
constexpr char16_t kUpperControls[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                         0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                         0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                         0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

void AppendUtf8(std::string& text, char32_t c) {
  const auto add = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (c < 0x80) return add(c);
  if (c < 0x800) {
    add(0xC0 | c >> 6);
  } else if (c < 0x10000) {
    add(0xE0 | c >> 12);
    add(0x80 | (c >> 6 & 0x3F));
  } else {
    add(0xF0 | c >> 18);
    add(0x80 | (c >> 12 & 0x3F));
    add(0x80 | (c >> 6 & 0x3F));
  }
  add(0x80 | (c & 0x3F));
}

char32_t TakeUtf8(std::string_view& text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  text.remove_prefix(1);
  if (lead < 0x80) return lead;
  const size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || more > text.size()) return kReplacementCharacter;
  char32_t c = lead & (0x3Fu >> more);
  for (size_t i = 0; i < more; ++i) {
    const auto next = static_cast<uint8_t>(text[i]);
    if ((next & 0xC0) != 0x80) return kReplacementCharacter;
    c = c << 6 | (next & 0x3F);
  }
  constexpr char32_t kSmallest[] = {0x80, 0x800, 0x10000};
  if (c < kSmallest[more - 1] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return kReplacementCharacter;
  text.remove_prefix(more);
  return c;
}

std::string ShownText(std::string_view text) {
  constexpr int kMost = 60;
  std::string shown;
  for (int count = 0; !text.empty() && count < kMost; ++count) {
    const char32_t c = TakeUtf8(text);
    const bool printable = c >= 0x20 && (c < 0x7F || c >= 0xA0) && c != kReplacementCharacter;
    AppendUtf8(shown, printable ? c : U'?');
  }
  return text.empty() ? shown : shown + "...";
}

char32_t SmallLetter(char32_t c) {
  // Letters from `first` to `last` in steps of `step` have their small ones `distance` behind. In ascending
  // order.
  static constexpr struct {
    char32_t first, last, step, distance;
  } kLetters[] = {{'A', 'Z', 1, 0x20},     {0xC0, 0xD6, 1, 0x20},   {0xD8, 0xDE, 1, 0x20},
                  {0x100, 0x12E, 2, 1},    {0x132, 0x136, 2, 1},    {0x139, 0x147, 2, 1},
                  {0x14A, 0x176, 2, 1},    {0x179, 0x17D, 2, 1},    {0x386, 0x386, 1, 0x26},
                  {0x388, 0x38A, 1, 0x25}, {0x38C, 0x38C, 1, 0x40}, {0x38E, 0x38F, 1, 0x3F},
                  {0x391, 0x3A1, 1, 0x20}, {0x3A3, 0x3AB, 1, 0x20}, {0x400, 0x40F, 1, 0x50},
                  {0x410, 0x42F, 1, 0x20}, {0x490, 0x490, 1, 1}};
  if (c < 'A') return c;
  if (c == 0x178) return 0xFF;
  for (const auto& row : kLetters) {
    if (c <= row.last) return c >= row.first && (c - row.first) % row.step == 0 ? c + row.distance : c;
  }
  return c;
}

std::string SmallText(std::string_view text) {
  std::string small;
  while (!text.empty()) AppendUtf8(small, SmallLetter(TakeUtf8(text)));
  return small;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const bool written = text.starts_with("\xEF\xBF\xBD");  // the replacement character itself
    if (TakeUtf8(text) == kReplacementCharacter && !written) return false;
  }
  return true;
}

std::string Utf8FromLatin(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char byte : bytes) {
    const uint8_t c = static_cast<uint8_t>(byte);
    AppendUtf8(text, c >= 0x80 && c < 0xA0 ? kUpperControls[c - 0x80] : c);
  }
  return text;
}

std::string LatinFromUtf8(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const char32_t c = TakeUtf8(text);
    char byte = '?';
    if (c < 0x80 || (c >= 0xA0 && c < 0x100)) byte = static_cast<char>(c);
    for (size_t i = 0; i < 32; ++i) {
      if (kUpperControls[i] == c) byte = static_cast<char>(0x80 + i);
    }
    bytes.push_back(byte);
  }
  return bytes;
}

bool FitsLatin(std::string_view text) {
  return Utf8FromLatin(LatinFromUtf8(text)) == text;
}

std::string_view Trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

std::vector<std::string_view> SplitText(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (size_t end = 0; end != std::string_view::npos;) {
    end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
  }
  return pieces;
}

std::u16string Utf16FromUtf8(std::string_view text) {
  std::u16string wide;
  while (!text.empty()) {
    const char32_t c = TakeUtf8(text);
    if (c < 0x10000) {
      wide.push_back(static_cast<char16_t>(c));
    } else {
      wide.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      wide.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
  }
  return wide;
}

std::string Utf8FromUtf16(std::u16string_view text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    const bool high = c >= 0xD800 && c < 0xDC00;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
    } else if (c >= 0xD800 && c < 0xE000) {
      c = kReplacementCharacter;
    }
    AppendUtf8(bytes, c);
  }
  return bytes;
}

Utf8Arguments::Utf8Arguments(int count, wchar_t** wide) {
  for (int i = 0; i < count; ++i) {
    std::u16string text;
    for (const wchar_t* c = wide[i]; *c; ++c) text.push_back(static_cast<char16_t>(*c));
    texts_.push_back(Utf8FromUtf16(text));
  }
  for (std::string& text : texts_) pointers_.push_back(text.data());
  pointers_.push_back(nullptr);
}

}  // namespace vexa
