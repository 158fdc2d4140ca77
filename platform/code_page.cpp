#include "platform/code_page.h"

#include <algorithm>

namespace vexa {

namespace {

constexpr char32_t kUndefined = 0xFFFD;

struct PageName {
  const char* name;
  const char* system_name;
  unsigned windows_number;
};
constexpr PageName kPages[] = {{"Windows-1250", "CP1250", 1250},     {"Windows-1251", "CP1251", 1251},
                               {"Windows-1252", "CP1252", 1252},     {"Windows-1253", "CP1253", 1253},
                               {"Windows-1254", "CP1254", 1254},     {"Windows-1256", "CP1256", 1256},
                               {"ISO 8859-1", "ISO-8859-1", 28591},  {"ISO 8859-2", "ISO-8859-2", 28592},
                               {"ISO 8859-5", "ISO-8859-5", 28595},  {"ISO 8859-9", "ISO-8859-9", 28599},
                               {"ISO 8859-15", "ISO-8859-15", 28605}};

std::vector<CodePage> LoadPages() {
  std::vector<CodePage> pages;
  for (const PageName& page : kPages) {
    pages.push_back({page.name, SystemCodePage(page.windows_number, page.system_name)});
    auto& characters = pages.back().characters;
    for (size_t byte = 0; byte < characters.size(); ++byte) {
      const bool private_use = characters[byte] >= 0xE000 && characters[byte] <= 0xF8FF;
      if (characters[byte] == kUndefined || private_use) characters[byte] = static_cast<char32_t>(byte);
    }
  }
  return pages;
}

const std::vector<CodePage>& Pages() {
  static const std::vector<CodePage> pages = LoadPages();
  return pages;
}

std::string Folded(std::string_view name) {
  std::string folded;
  for (const char c : name) {
    if (c != ' ' && c != '-') folded += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return folded;
}

void AppendUtf8(std::string& text, char32_t c) {
  const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (c < 0x80) {
    append(c);
  } else if (c < 0x800) {
    append(0xC0 | c >> 6);
    append(0x80 | (c & 0x3F));
  } else {
    append(0xE0 | c >> 12);
    append(0x80 | (c >> 6 & 0x3F));
    append(0x80 | (c & 0x3F));
  }
}

// The character at the front of the text, which it leaves; kUndefined for one byte that begins none.
char32_t TakeCharacter(std::string_view& text) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
  const uint8_t first = byte(0);
  const size_t length = first < 0x80   ? 1
                        : first < 0xC2 ? 0
                        : first < 0xE0 ? 2
                        : first < 0xF0 ? 3
                        : first < 0xF5 ? 4
                                       : 0;
  char32_t c = length < 2 ? first : first & (0x7Fu >> length);
  bool good = length > 0 && length <= text.size();
  for (size_t i = 1; good && i < length; ++i) {
    good = (byte(i) & 0xC0) == 0x80;
    c = c << 6 | (byte(i) & 0x3Fu);
  }
  const bool too_long = (length == 3 && c < 0x800) || (length == 4 && c < 0x10000);
  if (!good || too_long || (c >= 0xD800 && c < 0xE000) || c > 0x10FFFF) {
    text.remove_prefix(1);
    return kUndefined;
  }
  text.remove_prefix(length);
  return c;
}

// -1: the page lacks it.
int ByteOf(const CodePage& page, char32_t c) {
  if (c < 0x80 && page.characters[c] == c) return static_cast<int>(c);
  const auto found = std::find(page.characters.begin(), page.characters.end(), c);
  return found == page.characters.end() ? -1 : static_cast<int>(found - page.characters.begin());
}

}  // namespace

const CodePage* FindCodePage(std::string_view name) {
  for (const CodePage& page : Pages()) {
    if (Folded(page.name) == Folded(name)) return &page;
  }
  return nullptr;
}

const CodePage& Windows1252() {
  static const CodePage& page = *FindCodePage("Windows-1252");
  return page;
}

std::vector<std::string> CodePageNames() {
  std::vector<std::string> names;
  for (const PageName& page : kPages) names.emplace_back(page.name);
  return names;
}

std::string Utf8FromPage(const CodePage& page, std::string_view bytes) {
  std::string text;
  for (const char c : bytes) AppendUtf8(text, page.characters[static_cast<uint8_t>(c)]);
  return text;
}

std::optional<std::string> PageFromUtf8(const CodePage& page, std::string_view text) {
  size_t lacking = 0;
  std::string bytes = PageFromUtf8(page, text, lacking);
  if (lacking > 0) return std::nullopt;
  return bytes;
}

std::string PageFromUtf8(const CodePage& page, std::string_view text, size_t& lacking) {
  std::string bytes;
  while (!text.empty()) {
    const int byte = ByteOf(page, TakeCharacter(text));
    if (byte < 0) ++lacking;
    bytes += byte < 0 ? '?' : static_cast<char>(byte);
  }
  return bytes;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const bool written = text.starts_with("\xEF\xBF\xBD");  // the replacement character itself
    if (TakeCharacter(text) == kUndefined && !written) return false;
  }
  return true;
}

}  // namespace vexa
