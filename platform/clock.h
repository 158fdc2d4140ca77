// Local calendar time, as files and reports carry it.
#pragma once

#include <optional>
#include <string_view>

namespace vexa {

struct LocalTime {
  int year = 1970, month = 1, day = 1;  // month 1-12, day 1-31
  int hour = 0, minute = 0, second = 0;
};

// The system's clock in the user's time zone.
LocalTime LocalTimeNow();
// "YYYY-MM-DD HH:MM:SS"; nothing when the text has another form or names no real date and time.
std::optional<LocalTime> ParseLocalTime(std::string_view text);

}  // namespace vexa
