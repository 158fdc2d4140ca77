// Names on their way from a list to the code page of the database.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "core/records.h"
#include "platform/code_page.h"

namespace vexa {

// nullptr: not said.
struct ListPages {
  const CodePage* database = nullptr;  // of the database's names; else Windows-1252
  const CodePage* list = nullptr;      // of a list in single bytes
};

// The page of the database's names: the one that is named, else Windows-1252.
const CodePage& DatabasePage(const ListPages& pages);

// The list's text as UTF-8, without a byte-order mark. What is no valid UTF-8 is taken whole for single bytes
// in the list's page, or Windows-1252.
std::string TextOfList(std::span<const uint8_t> list, const ListPages& pages);

// A UTF-8 text without its control codes (below 0x20, and 0x7F to 0x9F).
std::string WithoutControls(std::string_view name);
// The same without blanks at both ends.
std::string PlainName(std::string_view name);

// Brings the names of a list into the code page of the database:
//   no page is named                        the bytes stay as they are
//   the list is UTF-8 beyond plain ASCII    converted to the database's page, without control codes
//   another list, and its page is named     converted from that page to the database's
//   another list                            the bytes stay as they are
class NameConverter {
 public:
  NameConverter() = default;  // changes nothing
  // `may_be_utf8`: false for lists that are no text.
  NameConverter(std::span<const uint8_t> list, const ListPages& pages, bool may_be_utf8 = true);
  // A record's name from the list's text. `lacking` grows by the characters that the database's page lacks.
  void SetName(char (&field)[kNameSize], std::string_view name, size_t& lacking) const;
  // A record's name in place, up to its first NUL. One of 20 bytes without NUL may stay one.
  void Convert(char (&name)[kNameSize], size_t& lacking) const;

 private:
  std::string Converted(std::string_view name, size_t& lacking) const;
  enum class Way { kNone, kFromUtf8, kFromPage };
  const CodePage* database_ = nullptr;
  const CodePage* list_ = nullptr;
  Way way_ = Way::kNone;
};

}  // namespace vexa
