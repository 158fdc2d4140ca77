#include "platform/code_page.h"

#include <windows.h>

namespace vexa {

std::array<char32_t, 256> SystemCodePage(unsigned windows_number, const char*) {
  std::array<char32_t, 256> characters;
  characters.fill(0xFFFD);
  for (size_t byte = 0; byte < characters.size(); ++byte) {
    const char in = static_cast<char>(byte);
    wchar_t out = 0;
    if (MultiByteToWideChar(windows_number, MB_ERR_INVALID_CHARS, &in, 1, &out, 1) == 1)
      characters[byte] = out;
  }
  return characters;
}

}  // namespace vexa
