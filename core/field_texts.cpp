#include "core/field_texts.h"

#include <iterator>

#include "core/messages.h"

namespace vexa {

namespace {

const char* Named(const char* const* names, size_t count, uint32_t code) {
  return code < count ? names[code] : "";
}

}  // namespace

std::string LnbTypeName(uint32_t type) {
  static constexpr const char* kNames[] = {"Normal", "LNBF", "Universal", "IF Input"};
  return Named(kNames, std::size(kNames), type);
}

std::string PolarizationName(uint32_t polarization) {
  static constexpr const char* kNames[] = {"Horizontal", "Vertical", "Left", "Right"};
  return Named(kNames, std::size(kNames), polarization);
}

std::string FecName(uint32_t fec) {
  static constexpr const char* kNames[] = {"Auto", "1/2", "2/3", "3/4", "5/6", "7/8"};
  return Named(kNames, std::size(kNames), fec);
}

std::string ViewAngleText(uint32_t tenths) {
  return tenths == 0 ? "000.0" : Format("%05.1f", static_cast<double>(tenths) / 10.0);
}

std::string PidText(uint32_t pid, bool hexadecimal) {
  return hexadecimal ? Format("%X", static_cast<unsigned>(pid)) : Format("%u", static_cast<unsigned>(pid));
}

std::string AngleText(uint32_t tenths) {
  return tenths == 0 ? "000.00" : Format("%u.%u", tenths / 10, tenths % 10);
}

}  // namespace vexa
