// Texts of fields as all faces show them.
#pragma once

#include <cstdint>
#include <string>

#include "core/database.h"
#include "platform/code_page.h"
#include "platform/text.h"

namespace vexa {

// The names of code_names.h; empty for a code without a name.
std::string LnbTypeName(uint32_t type);
std::string PolarizationName(uint32_t polarization);
std::string FecName(uint32_t fec);
// Degrees from tenths: "019.2", "000.0".
std::string ViewAngleText(uint32_t tenths);
// Decimal or hexadecimal digits, without a prefix.
std::string PidText(uint32_t pid, bool hexadecimal);
// The page that the document's names stand in.
inline const CodePage& NamesPage(const Document& document) {
  return document.names ? *document.names : Windows1252();
}
// A record's name field as UTF-8.
template <size_t N>
std::string NameText(const CodePage& page, const char (&field)[N]) {
  return Utf8FromPage(page, NameOf(field));
}
// The same, and other names of the document.
template <size_t N>
std::string NameText(const Document& document, const char (&field)[N]) {
  return NameText(NamesPage(document), field);
}
inline std::string NameText(const Document& document, const std::string& name) {
  return Utf8FromPage(NamesPage(document), name);
}
// Tenths of a degree as a dialog and the lists show them: "19.2", "000.00" for 0.
std::string AngleText(uint32_t tenths);

}  // namespace vexa
