#include "platform/code_page.h"

#include <iconv.h>

namespace vexa {

std::array<char32_t, 256> SystemCodePage(unsigned, const char* name) {
  std::array<char32_t, 256> characters;
  characters.fill(0xFFFD);
  const iconv_t converter = iconv_open("UCS-4LE", name);
  if (converter == reinterpret_cast<iconv_t>(-1)) return characters;
  for (size_t byte = 0; byte < characters.size(); ++byte) {
    char in = static_cast<char>(byte);
    unsigned char out[4] = {};
    char *from = &in, *to = reinterpret_cast<char*>(out);
    size_t in_left = 1, out_left = sizeof out;
    if (iconv(converter, &from, &in_left, &to, &out_left) == static_cast<size_t>(-1) || out_left != 0) {
      iconv(converter, nullptr, nullptr, nullptr, nullptr);
      continue;
    }
    characters[byte] = static_cast<char32_t>(out[0] | out[1] << 8 | out[2] << 16);
  }
  iconv_close(converter);
  return characters;
}

}  // namespace vexa
