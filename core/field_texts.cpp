#include "core/field_texts.h"

#include "core/code_names.h"
#include "core/messages.h"

namespace vexa {

namespace {

template <size_t N>
const char* Named(const char* const (&names)[N], uint32_t code) {
  return code < N ? names[code] : "";
}

}  // namespace

std::string LnbTypeName(uint32_t type) {
  return Named(kLnbTypes, type);
}

std::string PolarizationName(uint32_t polarization) {
  return Named(kPolarizations, polarization);
}

std::string FecName(uint32_t fec) {
  return Named(kFecs, fec);
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
