// Texts of fields as all faces show them.
#pragma once

#include <cstdint>
#include <string>

#include "core/records.h"
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
// A record's name field as UTF-8.
template <size_t N>
std::string NameText(const char (&field)[N]) {
  return Utf8FromLatin(NameOf(field));
}
// Tenths of a degree as a dialog and the lists show them: "19.2", "000.00" for 0.
std::string AngleText(uint32_t tenths);

}  // namespace vexa
