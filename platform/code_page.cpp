#include "platform/code_page.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/text.h"

namespace vexa {

namespace {

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

CodePage LoadPage(const PageName& page) {
  CodePage loaded{page.name, SystemCodePage(page.windows_number, page.system_name)};
  for (size_t byte = 0; byte < loaded.characters.size(); ++byte) {
    char32_t& character = loaded.characters[byte];
    const bool private_use = character >= 0xE000 && character <= 0xF8FF;
    if (character == kReplacementCharacter || private_use) character = static_cast<char32_t>(byte);
  }
  return loaded;
}

// Loaded once somebody asks for it: the system takes longer to find all pages than a small database to open.
template <size_t kNumber>
const CodePage& Page() {
  static const CodePage page = LoadPage(kPages[kNumber]);
  return page;
}

template <size_t... kNumbers>
const CodePage& PageAt(size_t number, std::index_sequence<kNumbers...>) {
  constexpr const CodePage& (*kLoaded[])() = {Page<kNumbers>...};
  return kLoaded[number]();
}

std::string Folded(std::string_view name) {
  std::string folded;
  for (const char c : name) {
    if (c != ' ' && c != '-') folded += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return folded;
}

// -1: the page lacks it.
int ByteOf(const CodePage& page, char32_t c) {
  if (c < 0x80 && page.characters[c] == c) return static_cast<int>(c);
  const auto found = std::find(page.characters.begin(), page.characters.end(), c);
  return found == page.characters.end() ? -1 : static_cast<int>(found - page.characters.begin());
}

}  // namespace

const CodePage* FindCodePage(std::string_view name) {
  const std::string folded = Folded(name);
  for (size_t i = 0; i < std::size(kPages); ++i) {
    if (Folded(kPages[i].name) == folded) return &PageAt(i, std::make_index_sequence<std::size(kPages)>());
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
    const int byte = ByteOf(page, TakeUtf8(text));
    if (byte < 0) ++lacking;
    bytes += byte < 0 ? '?' : static_cast<char>(byte);
  }
  return bytes;
}

}  // namespace vexa
