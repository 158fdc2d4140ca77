#include "import/list_names.h"

#include <algorithm>
#include <cstring>

#include "import/list_text.h"
#include "platform/text.h"

namespace vexa {

const CodePage& DatabasePage(const ListPages& pages) {
  return pages.database ? *pages.database : Windows1252();
}

std::string TextOfList(std::span<const uint8_t> list, const ListPages& pages) {
  std::string_view text(reinterpret_cast<const char*>(list.data()), list.size());
  if (!IsUtf8(text)) return Utf8FromPage(pages.list ? *pages.list : Windows1252(), text);
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return std::string(text);
}

std::string WithoutControls(std::string_view name) {
  std::string plain;
  for (size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<uint8_t>(name[i]);
    // U+0080 to U+009F are two bytes.
    const bool pair = byte == 0xC2 && i + 1 < name.size() && static_cast<uint8_t>(name[i + 1]) < 0xA0;
    if (pair) ++i;
    if (!pair && byte >= 0x20 && byte != 0x7F) plain += name[i];
  }
  return plain;
}

std::string PlainName(std::string_view name) {
  std::string plain = WithoutControls(name);
  plain.erase(plain.find_last_not_of(' ') + 1);
  plain.erase(0, plain.find_first_not_of(' '));
  return plain;
}

NameConverter::NameConverter(std::span<const uint8_t> list, const ListPages& pages, bool may_be_utf8)
    : database_(&DatabasePage(pages)), list_(pages.list) {
  if (!pages.database && !pages.list) return;
  const bool ascii = std::all_of(list.begin(), list.end(), [](uint8_t byte) { return byte < 0x80; });
  if (may_be_utf8 && !ascii && IsUtf8({reinterpret_cast<const char*>(list.data()), list.size()})) {
    way_ = Way::kFromUtf8;
  } else if (list_ && list_ != database_) {
    way_ = Way::kFromPage;
  }
}

std::string NameConverter::Converted(std::string_view name, size_t& lacking) const {
  const bool utf8 = way_ == Way::kFromUtf8;
  return PageFromUtf8(*database_, utf8 ? WithoutControls(name) : Utf8FromPage(*list_, name), lacking);
}

void NameConverter::SetName(char (&field)[kNameSize], std::string_view name, size_t& lacking) const {
  if (way_ == Way::kNone) return SetListName(field, name);
  SetListName(field, Converted(name, lacking));
}

void NameConverter::Convert(char (&name)[kNameSize], size_t& lacking) const {
  if (way_ == Way::kNone) return;
  const std::string converted = Converted(NameOf(name), lacking);
  std::memset(name, 0, kNameSize);
  std::memcpy(name, converted.data(), std::min<size_t>(converted.size(), kNameSize));
}

}  // namespace vexa
