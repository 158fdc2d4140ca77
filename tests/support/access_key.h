// Access keys of menus and dialogs, of which none may stand twice beside another.
#pragma once

#include <string_view>

namespace vexa {

// The access key of a menu's or control's text in upper case; 0 for none.
inline char AccessKey(std::string_view text) {
  for (size_t i = 0; i + 1 < text.size() && text[i] != '\t'; ++i) {
    if (text[i] != '&') continue;
    if (text[i + 1] == '&') {
      ++i;
      continue;
    }
    const char key = text[i + 1];
    return key >= 'a' && key <= 'z' ? static_cast<char>(key - 'a' + 'A') : key;
  }
  return 0;
}

}  // namespace vexa
