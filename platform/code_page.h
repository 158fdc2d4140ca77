// Single-byte code pages, in which names stand in databases and lists. Bytes that a page does not define
// stand for the characters of equal value (U+0081 and so on), so that every byte survives a way there and
// back.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

struct CodePage {
  std::string name;  // "Windows-1252", "ISO 8859-1"
  std::array<char32_t, 256> characters;
};

// The page of the name; letter case, blanks and hyphens do not matter. nullptr: there is none. Owned by the
// program.
const CodePage* FindCodePage(std::string_view name);
// The page of records and of the receiver.
const CodePage& Windows1252();
// Names of all pages: Windows-1250 to 1254 and 1256, ISO 8859-1, -2, -5, -9, -15.
std::vector<std::string> CodePageNames();

// Every byte has a character.
std::string Utf8FromPage(const CodePage& page, std::string_view bytes);
// Nothing when the text is no UTF-8 or has a character that the page lacks.
std::optional<std::string> PageFromUtf8(const CodePage& page, std::string_view text);
// What the page lacks becomes '?' and is added to `lacking`; so does each byte that is no UTF-8.
std::string PageFromUtf8(const CodePage& page, std::string_view text, size_t& lacking);

// The operating system's knowledge of a page, by its Windows number and its name elsewhere: 0xFFFD where a
// byte is not defined.
std::array<char32_t, 256> SystemCodePage(unsigned windows_number, const char* name);

}  // namespace vexa
