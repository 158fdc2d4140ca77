// UTF-8 to Windows' UTF-16 and back.
#pragma once

#include <string>
#include <string_view>

#include "platform/text.h"

namespace vexa {

inline std::wstring Wide(std::string_view utf8) {
  const std::u16string text = Utf16FromUtf8(utf8);
  return {text.begin(), text.end()};
}

inline std::string Utf8(std::wstring_view wide) {
  return Utf8FromUtf16(std::u16string(wide.begin(), wide.end()));
}

}  // namespace vexa
