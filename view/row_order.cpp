#include "view/row_order.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "core/rules.h"

namespace vexa {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

char Folded(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The digits at the start, without leading zeros; they leave `text`.
std::string_view TakeNumber(std::string_view& text) {
  size_t end = 0, start = 0;
  while (end < text.size() && IsDigit(text[end])) ++end;
  while (start + 1 < end && text[start] == '0') ++start;
  const std::string_view digits = text.substr(start, end - start);
  text.remove_prefix(end);
  return digits;
}

// Below, at or above 0.
int Compare(std::string_view left, std::string_view right) {
  while (!left.empty() && !right.empty()) {
    if (IsDigit(left[0]) && IsDigit(right[0])) {
      const std::string_view a = TakeNumber(left), b = TakeNumber(right);
      if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
      if (const int order = a.compare(b)) return order;
      continue;
    }
    const auto a = static_cast<unsigned char>(Folded(left[0])),
               b = static_cast<unsigned char>(Folded(right[0]));
    if (a != b) return a < b ? -1 : 1;
    left.remove_prefix(1);
    right.remove_prefix(1);
  }
  if (left.empty() && right.empty()) return 0;
  return left.empty() ? -1 : 1;
}

struct RowKey {
  int64_t number = 0;
  std::string text;
};

int Compare(const RowKey& left, const RowKey& right) {
  if (left.number != right.number) return left.number < right.number ? -1 : 1;
  return Compare(left.text, right.text);
}

bool EndsWith(const std::string& text, std::string_view end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

RowOrder OrderAfterClick(const RowOrder& order, int column) {
  if (order.column != column) return {column, false};
  return order.descending ? RowOrder{} : RowOrder{column, true};
}

void OrderRows(const Document& document, ListModel& list, const RowOrder& order, bool hexadecimal) {
  if (order.column < 0 || static_cast<size_t>(order.column) >= list.columns.size()) return;
  const auto column = static_cast<size_t>(order.column);
  // Only hexadecimal digits need more than the comparison of texts, which knows decimal numbers.
  const bool digits = EndsWith(list.columns[column].title, "(Hex)");
  std::vector<RowKey> keys(list.rows.size());
  for (size_t i = 0; i < keys.size(); ++i) {
    std::string text = CellText(document, list, i, column, hexadecimal);
    if (digits)
      keys[i].number = NumberOf(text, true);
    else
      keys[i].text = std::move(text);
  }
  std::vector<uint32_t> places(keys.size());
  std::iota(places.begin(), places.end(), 0u);
  std::stable_sort(places.begin(), places.end(), [&](uint32_t a, uint32_t b) {
    const int comparison = Compare(keys[a], keys[b]);
    return order.descending ? comparison > 0 : comparison < 0;
  });
  std::vector<NodeRef> rows;
  rows.reserve(places.size());
  for (const uint32_t place : places) rows.push_back(list.rows[place]);
  list.rows = std::move(rows);
}

std::vector<bool> RowsOfNodes(const std::vector<NodeRef>& rows, const std::vector<NodeRef>& nodes) {
  const auto before = [](const NodeRef& a, const NodeRef& b) {
    const auto key = [](const NodeRef& node) {
      return std::tuple(node.kind, node.sdb, node.index, node.group, node.satellite, node.carrier,
                        node.service);
    };
    return key(a) < key(b);
  };
  std::vector<size_t> order(rows.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return before(rows[a], rows[b]); });
  std::vector<bool> chosen(rows.size());
  for (const NodeRef& node : nodes) {
    const auto at =
        std::lower_bound(order.begin(), order.end(), node,
                         [&](size_t row, const NodeRef& wanted) { return before(rows[row], wanted); });
    if (at == order.end() || !(rows[*at] == node)) return std::vector<bool>(rows.size());
    chosen[*at] = true;
  }
  return chosen;
}

}  // namespace vexa
