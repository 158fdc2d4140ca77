// Text encodings at the edges. Names in records are single bytes (Windows-1252); everything that is
// shown, printed or reported in a message is UTF-8; Windows takes UTF-16.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vexa {

// Windows-1252 to UTF-8; the five bytes that 1252 leaves open map to the C1 characters of equal value.
std::string Utf8FromLatin(std::string_view bytes);
// The other way; a character that Windows-1252 does not have becomes '?'. Invalid UTF-8 likewise.
std::string LatinFromUtf8(std::string_view text);
// Whether it has every character of the text.
bool FitsLatin(std::string_view text);

inline constexpr char32_t kReplacementCharacter = 0xFFFD;
// Appends the character, below 0x110000, in UTF-8.
void AppendUtf8(std::string& text, char32_t character);
// Takes the first character off a text that is not empty; kReplacementCharacter for one byte that begins
// none.
char32_t TakeUtf8(std::string_view& text);
// The small letter of a letter of the Latin (to U+017E), Greek and Cyrillic alphabets; others stay.
char32_t SmallLetter(char32_t character);
// The same of a whole text, UTF-8.
std::string SmallText(std::string_view text);
// Whether the text is UTF-8 throughout.
bool IsUtf8(std::string_view text);
// Foreign text as a message quotes it: at most 60 characters, "..." behind them where there are more, and '?'
// for what cannot be printed.
std::string ShownText(std::string_view text);

// Without blanks and tabs at both ends.
std::string_view Trimmed(std::string_view text);
// The pieces between the separators, of which there is one at least.
std::vector<std::string_view> SplitText(std::string_view text, char separator);

// What is no right text of its encoding becomes kReplacementCharacter.
std::u16string Utf16FromUtf8(std::string_view text);
std::string Utf8FromUtf16(std::u16string_view text);

// Windows gives a program UTF-16 arguments; the program works on UTF-8.
class Utf8Arguments {
 public:
  // Copies `count` arguments.
  Utf8Arguments(int count, wchar_t** wide);
  int count() const { return static_cast<int>(texts_.size()); }
  char** values() { return pointers_.data(); }  // followed by a null pointer

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

}  // namespace vexa
