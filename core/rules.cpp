#include "core/rules.h"

#include <algorithm>

#include "core/edit.h"
#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr int64_t kFullCircle = 361;  // degrees, first refused
constexpr int64_t kLowestSymbolRate = 1000, kHighestSymbolRate = 45000;
constexpr int64_t kLowestPid = 32;

}  // namespace

int64_t NumberOf(std::string_view text, bool hexadecimal) {
  constexpr int64_t kFar = int64_t{1} << 40;
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  const bool negative = i < text.size() && text[i] == '-';
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  if (hexadecimal && i + 1 < text.size() && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X'))
    i += 2;
  int64_t number = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    int digit = -1;
    if (c >= '0' && c <= '9') digit = c - '0';
    if (hexadecimal && c >= 'a' && c <= 'f') digit = c - 'a' + 10;
    if (hexadecimal && c >= 'A' && c <= 'F') digit = c - 'A' + 10;
    if (digit < 0) break;
    number = std::min(number * (hexadecimal ? 16 : 10) + digit, kFar);
  }
  return negative ? -number : number;
}

int64_t FilledNumberOf(std::string_view text) {
  return text.find_first_of("0123456789") == std::string_view::npos ? -1 : NumberOf(text);
}

std::string SatelliteNameText(std::string_view name) {
  return name.empty() ? "Satellite name can not be empty.\nEnter a valid name." : "";
}

std::string SatellitePositionText(int64_t position) {
  return position < 0 || position > kHighestPosition ? "Satellite Position should be less then 64." : "";
}

std::string SatelliteAngleText(int64_t degrees) {
  return degrees < 0 || degrees >= kFullCircle ? "Satellite angle should be 0 - 360." : "";
}

std::string SatelliteZeroAngleText(uint32_t tenths) {
  return tenths == 0 ? "Invalid satellite angle." : "";
}

std::string RangeText(const char* name, int64_t number, int lowest, int highest) {
  if (number >= lowest && number <= highest) return "";
  return Format("%s should be in the range of %d - %d.", name, lowest, highest);
}

std::string CarrierNameText(std::string_view name) {
  return name.empty() ? "Carrier name can not be empty.\nEnter a valid name." : "";
}

std::string CarrierFrequencyText(uint32_t lnb_type, int64_t frequency) {
  const FrequencyRange range = RangeOf(lnb_type);
  if (frequency >= range.lowest && frequency <= range.highest) return "";
  return Format("Carrier frequency should be in the range of %d - %d", static_cast<int>(range.lowest),
                static_cast<int>(range.highest));
}

std::string CarrierSymbolRateText(int64_t symbol_rate) {
  const bool valid = symbol_rate >= kLowestSymbolRate && symbol_rate <= kHighestSymbolRate;
  return valid ? "" : "Carrier symbol rate should be in the range of 1000 - 45000.";
}

std::string ServiceNameText(std::string_view name) {
  return name.empty() ? "Service name can not be empty.\nEnter a valid name." : "";
}

std::string VideoPidText(uint32_t type, int64_t pid) {
  const bool valid = type != kTv || (pid >= kLowestPid && pid <= kNoPid);
  return valid ? "" : "Invalid Video PID.\nDo you want to update default value ?";
}

std::string AudioPidText(int64_t pid) {
  return pid >= kLowestPid && pid <= kNoPid ? "" : "Invalid Audio PID.\nDo you want to update default PID ?";
}

std::string PcrPidText(int64_t pid) {
  return pid >= kLowestPid && pid <= kNoPid ? "" : "Invalid PCR PID.\nDo you want to update default PID ?";
}

std::string SdbNameText(std::string_view name) {
  return name.empty() ? "SDB Name can not be empty. Enter a valid name." : "";
}

std::string GroupNameText(std::string_view name) {
  return name.empty() ? "FGL Name can not be empty. Enter a valid name." : "";
}

std::string UbiNameText(std::string_view name) {
  return name.empty() ? "UBI name can not be empty. Enter a valid name." : "";
}

std::string CharactersText(std::string_view utf8) {
  return FitsLatin(utf8) ? "" : "\"" + std::string(utf8) + "\" has characters that no database holds.";
}

std::string LackingText(std::string_view utf8, const CodePage& page) {
  std::string lacking;
  for (std::string_view rest = utf8; !rest.empty();) {
    std::string character;
    const std::string_view before = rest;
    AppendUtf8(character, TakeUtf8(rest));
    const std::string_view bytes = before.substr(0, before.size() - rest.size());
    if (PageFromUtf8(page, bytes)) continue;
    if (lacking.find(character) == std::string::npos) lacking += (lacking.empty() ? "" : " ") + character;
  }
  if (lacking.empty()) return "";
  return "\"" + std::string(utf8) + "\" has characters that " + page.name + " lacks: " + lacking;
}

}  // namespace vexa
