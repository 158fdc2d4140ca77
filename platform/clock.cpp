#include "platform/clock.h"

#include <ctime>
#include <string>

namespace vexa {

LocalTime LocalTimeNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  // Of the two that threads may share, each system has one.
#ifdef _WIN32
  if (localtime_s(&local, &now) != 0) return {};
#else
  if (!localtime_r(&now, &local)) return {};
#endif
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

std::optional<LocalTime> ParseLocalTime(std::string_view text) {
  constexpr std::string_view kForm = "dddd-dd-dd dd:dd:dd";
  if (text.size() != kForm.size()) return std::nullopt;
  int numbers[6] = {};
  size_t field = 0;
  for (size_t i = 0; i < kForm.size(); ++i) {
    if (kForm[i] == 'd') {
      if (text[i] < '0' || text[i] > '9') return std::nullopt;
      numbers[field] = numbers[field] * 10 + (text[i] - '0');
    } else {
      if (text[i] != kForm[i]) return std::nullopt;
      ++field;
    }
  }
  const LocalTime time{numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]};
  const bool leap = time.year % 4 == 0 && (time.year % 100 != 0 || time.year % 400 == 0);
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (time.month < 1 || time.month > 12 || time.day < 1) return std::nullopt;
  if (time.day > kDays[time.month - 1] + (time.month == 2 && leap ? 1 : 0)) return std::nullopt;
  if (time.hour > 23 || time.minute > 59 || time.second > 59) return std::nullopt;
  return time;
}

}  // namespace vexa
