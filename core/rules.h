// The rules that records keep, one by one, on stored values: what the record dialogs, the check of a whole
// database and scripts judge by. Each answers with the text to show; an empty text means that the rule holds.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/database.h"

namespace vexa {

std::string SatelliteNameText(std::string_view name);
std::string SatellitePositionText(int64_t position);
std::string SatelliteAngleText(int64_t degrees);
std::string SatelliteZeroAngleText(uint32_t tenths);
std::string CarrierNameText(std::string_view name);
std::string CarrierFrequencyText(uint32_t lnb_type, int64_t frequency);
std::string CarrierSymbolRateText(int64_t symbol_rate);
std::string ServiceNameText(std::string_view name);
inline constexpr const char* kProgramNumberText = "Service program number already exists.";
std::string VideoPidText(uint32_t type, int64_t pid);
std::string AudioPidText(int64_t pid);
std::string PcrPidText(int64_t pid);
std::string SdbNameText(std::string_view name);
std::string GroupNameText(std::string_view name);
std::string UbiNameText(std::string_view name);
std::string CharactersText(std::string_view utf8);
// "NAME should be in the range of LOWEST - HIGHEST."
std::string RangeText(const char* name, int64_t number, int lowest, int highest);

// What a number field holds: leading blanks, a sign, digits; 0 without digits; far values saturate.
int64_t NumberOf(std::string_view text, bool hexadecimal = false);
// The same of a field that must be filled: without digits -1, which lies in no range.
int64_t FilledNumberOf(std::string_view text);

}  // namespace vexa
