#include "core/nearest_word.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <tuple>

namespace vexa {

namespace {

constexpr size_t kOtherLetter = 4, kOtherCase = 1, kOneMore = 2;  // what a change costs

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

size_t CostOf(char a, char b) {
  if (a == b) return 0;
  return Lower(a) == Lower(b) ? kOtherCase : kOtherLetter;
}

size_t Distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j < row.size(); ++j) row[j] = j * kOneMore;
  for (size_t i = 0; i < a.size(); ++i) {
    size_t corner = row[0];
    row[0] = (i + 1) * kOneMore;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t above = row[j + 1];
      row[j + 1] = std::min({above + kOneMore, row[j] + kOneMore, corner + CostOf(a[i], b[j])});
      corner = above;
    }
  }
  return row.back();
}

// Nothing for what is no number.
std::optional<double> ValueOf(std::string_view word) {
  if (word.empty() || word[0] < '0' || word[0] > '9') return std::nullopt;
  double value = 0;
  const char* const end = word.data() + word.size();
  const auto read = std::from_chars(word.data(), end, value, std::chars_format::fixed);
  return read.ec == std::errc{} && read.ptr == end ? std::optional(value) : std::nullopt;
}

bool IsBeginOf(std::string_view word, std::string_view whole) {
  return !word.empty() && word.size() <= whole.size() &&
         std::equal(word.begin(), word.end(), whole.begin(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

}  // namespace

const std::string& NearestWord(std::string_view word, const std::vector<std::string>& words) {
  const auto number = ValueOf(word);
  const auto away = [&](const std::string& other) {
    const auto value = number ? ValueOf(other) : std::nullopt;
    const double by_value = value ? std::abs(*value - *number) : std::numeric_limits<double>::infinity();
    return std::tuple(by_value, !IsBeginOf(word, other), Distance(word, other));
  };
  return *std::min_element(words.begin(), words.end(),
                           [&](const std::string& a, const std::string& b) { return away(a) < away(b); });
}

std::string NearestText(std::string_view word, const std::vector<std::string>& words) {
  return words.empty() ? "" : "; the nearest is \"" + NearestWord(word, words) + "\"";
}

}  // namespace vexa
