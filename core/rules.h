// The rules that records keep, one by one, on stored values: what the record dialogs, the check of a whole
// database and scripts judge by. Each answers with the text to show; an empty text means that the rule holds.
// Names are single-byte text as records hold it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/database.h"
#include "platform/code_page.h"

namespace vexa {

// Not empty.
std::string SatelliteNameText(std::string_view name);
inline constexpr int64_t kHighestPosition = 64;  // of a receiver
// From 0.
std::string SatellitePositionText(int64_t position);
// Whole degrees, 0 to 360.
std::string SatelliteAngleText(int64_t degrees);
// A warning: an angle of 0 is stored all the same.
std::string SatelliteZeroAngleText(uint32_t tenths);

// Not empty.
std::string CarrierNameText(std::string_view name);
// MHz, within the range of the LNB's type.
std::string CarrierFrequencyText(uint32_t lnb_type, int64_t frequency);
// 1000 to 45000 kS/s.
std::string CarrierSymbolRateText(int64_t symbol_rate);

// Not empty.
std::string ServiceNameText(std::string_view name);
// No two services of a carrier have one program number: the text for those who look.
inline constexpr const char* kProgramNumberText = "Service program number already exists.";
// 32 to 8192, and only of TV services. The text asks whether the default shall take its place.
std::string VideoPidText(uint32_t type, int64_t pid);
// 32 to 8192; the texts ask likewise.
std::string AudioPidText(int64_t pid);
std::string PcrPidText(int64_t pid);

// Not empty.
std::string SdbNameText(std::string_view name);
std::string GroupNameText(std::string_view name);
std::string UbiNameText(std::string_view name);

// Every character of the UTF-8 text is one of Windows-1252, so that a record can hold it.
std::string CharactersText(std::string_view utf8);
// Every character is one of the page; the text names those that it lacks.
std::string LackingText(std::string_view utf8, const CodePage& page);

// `number` lies in `lowest` to `highest`; the text is "NAME should be in the range of LOWEST - HIGHEST."
std::string RangeText(const char* name, int64_t number, int lowest, int highest);

// What a number field holds: leading blanks, a sign, digits; 0 without digits; far values saturate.
int64_t NumberOf(std::string_view text, bool hexadecimal = false);
// The same of a field that must be filled: without digits -1, which lies in no range.
int64_t FilledNumberOf(std::string_view text);

}  // namespace vexa
