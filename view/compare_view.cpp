#include "view/compare_view.h"

#include <algorithm>
#include <iterator>

#include "core/messages.h"
#include "view/svg.h"

namespace vexa {

namespace {

struct KindRow {
  DifferenceKind kind;
  const char* text;
};
constexpr KindRow kKinds[] = {{DifferenceKind::kLnb, "LNBs"},
                              {DifferenceKind::kSatellite, "Satellites"},
                              {DifferenceKind::kCarrier, "Carriers"},
                              {DifferenceKind::kService, "Services"},
                              {DifferenceKind::kFavourite, "Favourites"},
                              {DifferenceKind::kUbi, "User boxes"},
                              {DifferenceKind::kSdb, "SDB"},
                              {DifferenceKind::kFile, "File"}};

struct ChangeRow {
  char sign;
  const char* text;
};
constexpr ChangeRow kChanges[] = {{'+', "Added"}, {'-', "Removed"}, {'~', "Changed"}, {'>', "Moved"}};

template <class Rows>
std::vector<std::string> Choices(const char* all, const Rows& rows) {
  std::vector<std::string> texts = {all};
  for (const auto& row : rows) texts.emplace_back(row.text);
  return texts;
}

const char* ChangeText(char sign) {
  for (const ChangeRow& row : kChanges) {
    if (row.sign == sign) return row.text;
  }
  return "";
}

bool LetsThrough(const CompareFilter& filter, const Difference& difference) {
  if (filter.kind > 0 && kKinds[filter.kind - 1].kind != difference.kind) return false;
  if (difference.sign == '=') return filter.equal && filter.change == 0;
  return filter.change == 0 || kChanges[filter.change - 1].sign == difference.sign;
}

// What one side says of a changed record.
std::string FieldsText(const Difference& difference, bool second) {
  if (difference.moved > 0)
    return second ? Format("order, %zu moved", difference.moved) : std::string("order");
  std::string text;
  for (const FieldChange& change : difference.fields)
    text += (text.empty() ? "" : ", ") + change.key + " " + ValueText(second ? change.after : change.before);
  return text;
}

std::string SideOf(const Difference& difference, bool second) {
  const std::string name = difference.name.empty() ? "(without a name)" : difference.name;
  switch (difference.sign) {
    case '+':
      return second ? name : "";
    case '-':
      return second ? "" : name;
    case '>':
      return second ? difference.path : difference.from;
    case '=':
      return name;
    default:
      return FieldsText(difference, second);
  }
}

std::string InMarkup(const std::string& text) {
  std::string escaped;
  AppendMarkup(escaped, text);
  return escaped;
}

constexpr const char* kComparisonHead = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">
<style>
:root{color-scheme:light dark}
body{font:14px sans-serif;margin:1.5em}
table{border-collapse:collapse;margin-top:1em}
td,th{padding:.15em .6em;text-align:left;vertical-align:top;border-bottom:1px solid #8884}
tr.added td:first-child{color:#2f8f46}tr.removed td:first-child{color:#cc3333}
tr.changed td:first-child{color:#3778c2}tr.moved td:first-child{color:#a87400}
</style>
)";

const char* ClassOf(char sign) {
  return sign == '+' ? "added" : sign == '-' ? "removed" : sign == '>' ? "moved" : "changed";
}

}  // namespace

std::vector<std::string> CompareKinds() {
  return Choices("All kinds", kKinds);
}
std::vector<std::string> CompareChanges() {
  return Choices("All changes", kChanges);
}

void CompareInto(CompareView& view, const Document& document, size_t sdb, const Document& other,
                 size_t other_sdb, const CompareFilter& filter) {
  view.records = CompareDocuments(document, sdb, other, other_sdb, filter.equal);
  FilterComparison(view, filter);
}

void FilterComparison(CompareView& view, const CompareFilter& filter) {
  view.shown.clear();
  for (size_t i = 0; i < view.records.size(); ++i) {
    if (LetsThrough(filter, view.records[i])) view.shown.push_back(i);
  }
}

std::vector<std::string> CompareColumns() {
  return {"Change", "Record", "This database", "Other database"};
}

std::string CompareCell(const Difference& difference, size_t column) {
  if (column == 0) return ChangeText(difference.sign);
  if (column > 1) return SideOf(difference, column == 3);
  std::string text = difference.path.empty() ? "File" : difference.path;
  if (difference.has_name) text += " " + difference.name;
  return text;
}

std::optional<size_t> NextDifference(const CompareView& view, std::optional<size_t> row, bool before) {
  const auto differs = [&](size_t place) { return view.records[view.shown[place]].sign != '='; };
  if (before) {
    for (size_t place = std::min(row.value_or(view.shown.size()), view.shown.size()); place-- > 0;)
      if (differs(place)) return place;
    return std::nullopt;
  }
  for (size_t place = row ? *row + 1 : 0; place < view.shown.size(); ++place)
    if (differs(place)) return place;
  return std::nullopt;
}

std::vector<size_t> ChosenDifferences(const CompareView& view, const std::vector<size_t>& rows,
                                      TakeOverRange range) {
  std::vector<bool> kinds(std::size(kKinds)), chosen(view.records.size(), range == TakeOverRange::kAll);
  for (const size_t row : rows) {
    if (row >= view.shown.size()) continue;
    chosen[view.shown[row]] = true;
    kinds[static_cast<size_t>(view.records[view.shown[row]].kind)] = true;
  }
  std::vector<size_t> places;
  for (size_t i = 0; i < view.records.size(); ++i) {
    const Difference& difference = view.records[i];
    const bool of_kind = range == TakeOverRange::kKinds && kinds[static_cast<size_t>(difference.kind)];
    if ((chosen[i] || of_kind) && difference.sign != '=') places.push_back(i);
  }
  return places;
}

std::string CompareStatus(const CompareView& view) {
  size_t all = 0;
  std::string counts;
  for (const ChangeRow& row : kChanges) {
    size_t count = 0;
    for (const Difference& difference : view.records) count += difference.sign == row.sign;
    all += count;
    std::string word = row.text;
    word[0] = static_cast<char>(word[0] - 'A' + 'a');
    counts += (counts.empty() ? "" : ", ") + Format("%zu %s", count, word.c_str());
  }
  return all == 0 ? "Nothing differs." : Format("Differences: %zu: %s", all, counts.c_str());
}

std::string TakenOverText(const TakenOver& taken) {
  std::string text = Format("Taken over: %zu", taken.taken);
  if (taken.left_out == 1)
    text += "; 1 favourite entry was left out, as its service is not here";
  else if (taken.left_out > 1)
    text += Format("; %zu favourite entries were left out, as their services are not here", taken.left_out);
  if (taken.left_lists > 0)
    text += Format("; removed from favourite lists, as services changed between TV and radio: %zu",
                   taken.left_lists);
  return text;
}

TreePath PathOfDifference(const Document& document, size_t sdb, const Difference& difference) {
  const auto place = static_cast<uint32_t>(sdb);
  const DifferencePlace& at = difference.first;
  TreePath path = {place};
  switch (difference.kind) {
    case DifferenceKind::kUbi:
      path = {static_cast<uint32_t>(document.sdbs.size())};
      break;
    case DifferenceKind::kLnb:
      path.push_back(kLnbLevelPosition);
      break;
    case DifferenceKind::kFavourite:
      path.push_back(at[1] == 1 ? kRadioGroupLevelPosition : kTvGroupLevelPosition);
      if (at[0] != kNoPlace) path.push_back(at[0]);
      if (at[0] != kNoPlace && at[2] != kNoPlace) path.push_back(at[2]);
      return path;
    case DifferenceKind::kSdb:
    case DifferenceKind::kFile:
      return path;
    default:
      path.push_back(kSatelliteLevelPosition);
  }
  for (const uint32_t step : at) {
    if (step == kNoPlace) break;
    path.push_back(step);
  }
  return path;
}

std::string ComparisonText(const std::vector<Difference>& records) {
  std::string text;
  for (const char c : DifferenceLines(records)) {
    if (c == '\n') text += '\r';
    text += c;
  }
  return text;
}

std::string ComparisonPage(const std::vector<Difference>& records, const std::string& first,
                           const std::string& second) {
  const std::string title = InMarkup(first + " and " + second);
  std::string page = kComparisonHead;
  page += "<title>" + title + "</title></head>\n<body>\n<h1>" + title + "</h1>\n<pre>" +
          DifferenceSummary(records) + "</pre>\n<table><tr><th>Change</th><th>Record</th><th>" +
          InMarkup(first) + "</th><th>" + InMarkup(second) + "</th></tr>\n";
  for (const Difference& difference : records) {
    if (difference.sign == '=') continue;
    page += Format("<tr class=\"%s\">", ClassOf(difference.sign));
    for (size_t column = 0; column < 4; ++column)
      page += "<td>" + InMarkup(CompareCell(difference, column)) + "</td>";
    page += "</tr>\n";
  }
  return page + "</table>\n</body></html>\n";
}

}  // namespace vexa
