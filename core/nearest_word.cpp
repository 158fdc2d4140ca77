#include "core/nearest_word.h"

#include <algorithm>

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

}  // namespace

const std::string& NearestWord(std::string_view word, const std::vector<std::string>& words) {
  return *std::min_element(words.begin(), words.end(), [&](const std::string& a, const std::string& b) {
    return Distance(word, a) < Distance(word, b);
  });
}

std::string NearestText(std::string_view word, const std::vector<std::string>& words) {
  return words.empty() ? "" : "; the nearest is \"" + NearestWord(word, words) + "\"";
}

}  // namespace vexa
