#include "view/list_filter.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <variant>

#include "core/messages.h"
#include "core/nearest_word.h"
#include "platform/text.h"

namespace vexa {

namespace {

enum class ValueKind : uint8_t { kNumber, kAngle, kWord, kText, kFlag };
// Whose field it is: rows of these, and of what stands below them, have it.
enum class Owner : uint8_t { kAny, kSatellite, kCarrier, kSatelliteOrCarrier, kService };

using FieldValue = std::variant<int64_t, std::string>;  // a flag is 0 or 1

struct FilterField {
  const char* key;
  ValueKind kind;
  Owner owner;
  FieldValue (*get)(const NodeRef& row);  // a name as it stands in the record
};

FieldValue Number(uint64_t value) {
  return static_cast<int64_t>(value);
}
FieldValue Text(std::string text) {
  return text;
}

bool IsUser(const NodeRef& row) {
  return row.carrier ? row.carrier->record.user : row.satellite->record.user;
}

constexpr FilterField kFields[] = {
    {"name", ValueKind::kText, Owner::kAny, nullptr},  // the second column of the list
    {"sat", ValueKind::kText, Owner::kSatellite,
     [](const NodeRef& row) { return Text(std::string(NameOf(row.satellite->record.name))); }},
    {"angle", ValueKind::kAngle, Owner::kSatellite,
     [](const NodeRef& row) { return Number(row.satellite->record.angle); }},
    {"side", ValueKind::kWord, Owner::kSatellite,
     [](const NodeRef& row) { return Text(row.satellite->record.east ? "East" : "West"); }},
    {"lnb", ValueKind::kNumber, Owner::kSatellite,
     [](const NodeRef& row) { return Number(row.satellite->record.lnb_index + 1); }},
    {"pos", ValueKind::kNumber, Owner::kSatellite,
     [](const NodeRef& row) { return Number(row.satellite->record.position); }},
    {"carriers", ValueKind::kNumber, Owner::kSatellite,
     [](const NodeRef& row) { return Number(row.satellite->carriers.size()); }},
    {"carrier", ValueKind::kText, Owner::kCarrier,
     [](const NodeRef& row) { return Text(std::string(NameOf(row.carrier->record.name))); }},
    {"freq", ValueKind::kNumber, Owner::kCarrier,
     [](const NodeRef& row) { return Number(row.carrier->record.frequency); }},
    {"sr", ValueKind::kNumber, Owner::kCarrier,
     [](const NodeRef& row) { return Number(row.carrier->record.symbol_rate); }},
    {"pol", ValueKind::kWord, Owner::kCarrier,
     [](const NodeRef& row) { return Text(PolarizationName(row.carrier->record.polarization)); }},
    {"fec", ValueKind::kWord, Owner::kCarrier,
     [](const NodeRef& row) { return Text(FecName(row.carrier->record.fec)); }},
    {"services", ValueKind::kNumber, Owner::kCarrier,
     [](const NodeRef& row) { return Number(row.carrier->services.size()); }},
    {"sid", ValueKind::kNumber, Owner::kService,
     [](const NodeRef& row) { return Number(row.service->record.program_number); }},
    {"type", ValueKind::kWord, Owner::kService,
     [](const NodeRef& row) { return Text(row.service->record.type == kTv ? "TV" : "Radio"); }},
    {"vpid", ValueKind::kNumber, Owner::kService,
     [](const NodeRef& row) { return Number(row.service->record.video_pid); }},
    {"apid", ValueKind::kNumber, Owner::kService,
     [](const NodeRef& row) { return Number(row.service->record.audio_pid); }},
    {"pcr", ValueKind::kNumber, Owner::kService,
     [](const NodeRef& row) { return Number(row.service->record.pcr_pid); }},
    {"fta", ValueKind::kFlag, Owner::kService,
     [](const NodeRef& row) { return Number(row.service->record.free); }},
    {"scrambled", ValueKind::kFlag, Owner::kService,
     [](const NodeRef& row) { return Number(!row.service->record.free); }},
    {"tv", ValueKind::kFlag, Owner::kService,
     [](const NodeRef& row) { return Number(row.service->record.type == kTv); }},
    {"radio", ValueKind::kFlag, Owner::kService,
     [](const NodeRef& row) { return Number(row.service->record.type != kTv); }},
    {"user", ValueKind::kFlag, Owner::kSatelliteOrCarrier,
     [](const NodeRef& row) { return Number(IsUser(row)); }},
    {"factory", ValueKind::kFlag, Owner::kSatelliteOrCarrier,
     [](const NodeRef& row) { return Number(!IsUser(row)); }},
    {"east", ValueKind::kFlag, Owner::kSatellite,
     [](const NodeRef& row) { return Number(row.satellite->record.east); }},
    {"west", ValueKind::kFlag, Owner::kSatellite,
     [](const NodeRef& row) { return Number(!row.satellite->record.east); }},
};

bool Has(const NodeRef& row, Owner owner) {
  switch (owner) {
    case Owner::kAny:
      return true;
    case Owner::kCarrier:
      return row.carrier != nullptr;
    case Owner::kService:
      return row.service != nullptr;
    default:
      return row.satellite != nullptr;
  }
}

std::string FoldedAscii(std::string_view text) {
  std::string folded(text);
  for (char& c : folded) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return folded;
}

int FieldNamed(std::string_view word, bool flag) {
  const std::string key = FoldedAscii(word);
  for (size_t i = 0; i < std::size(kFields); ++i) {
    if (key == kFields[i].key && (kFields[i].kind == ValueKind::kFlag) == flag) return static_cast<int>(i);
  }
  return -1;
}

// One term as it is written, quotes taken off.
struct Word {
  std::string_view field;   // empty: no comparison
  std::string_view symbol;  // its operator
  std::string_view text;
  bool negated = false, quoted = false;
};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsOperator(char c) {
  return c == '=' || c == '<' || c == '>' || c == '!';
}

// Takes text up to the next blank, or up to the closing quote. False: it is not closed.
bool TakeText(std::string_view& rest, Word& word) {
  if (!rest.starts_with('"')) {
    const auto end = static_cast<size_t>(std::find_if(rest.begin(), rest.end(), IsBlank) - rest.begin());
    word.text = rest.substr(0, end);
    rest.remove_prefix(end);
    return true;
  }
  rest.remove_prefix(1);
  const size_t end = rest.find('"');
  if (end == rest.npos) return false;
  word.text = rest.substr(0, end);
  word.quoted = true;
  rest.remove_prefix(end + 1);
  return true;
}

// `rest` begins with the term.
bool TakeWord(std::string_view& rest, Word& word) {
  if (rest.size() > 1 && rest[0] == '!' && !IsBlank(rest[1])) {
    word.negated = true;
    rest.remove_prefix(1);
  }
  size_t letters = 0;
  while (letters < rest.size() && IsLetter(rest[letters])) ++letters;
  size_t end = letters;
  while (end < rest.size() && end < letters + 2 && IsOperator(rest[end])) ++end;
  if (letters > 0 && end > letters) {
    word.field = rest.substr(0, letters);
    word.symbol = rest.substr(letters, end - letters);
    rest.remove_prefix(end);
  }
  return TakeText(rest, word);
}

struct OperatorRow {
  const char* symbol;
  FilterOperator comparison;
};
constexpr OperatorRow kOperators[] = {{"=", FilterOperator::kEqual},    {"!=", FilterOperator::kUnequal},
                                      {">", FilterOperator::kAbove},    {"<", FilterOperator::kBelow},
                                      {">=", FilterOperator::kAtLeast}, {"<=", FilterOperator::kAtMost}};

std::optional<int64_t> NumberIn(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  uint32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
  if (text.empty() || result.ec != std::errc{} || result.ptr != text.data() + text.size())
    return std::nullopt;
  return number;
}

// Degrees with up to one digit behind the point, as tenths.
std::optional<int64_t> TenthsIn(std::string_view text) {
  const size_t point = text.find('.');
  const auto degrees = NumberIn(text.substr(0, point));
  if (!degrees) return std::nullopt;
  if (point == text.npos) return *degrees * 10;
  const std::string_view digit = text.substr(point + 1);
  if (digit.size() != 1 || digit[0] < '0' || digit[0] > '9') return std::nullopt;
  return *degrees * 10 + (digit[0] - '0');
}

void SetText(FilterTerm& term, std::string_view text) {
  term.text = SmallText(text);
}

// A comparison; what is wrong with it, or nothing.
std::string ParseComparison(const Word& word, FilterTerm& term) {
  term.field = FieldNamed(word.field, false);
  if (term.field < 0) {
    std::vector<std::string> keys;
    for (const FilterField& field : kFields) {
      if (field.kind != ValueKind::kFlag) keys.emplace_back(field.key);
    }
    return "\"" + std::string(word.field) + "\" is no field" + NearestText(word.field, keys);
  }
  const FilterField& field = kFields[static_cast<size_t>(term.field)];
  const auto* row = std::find_if(std::begin(kOperators), std::end(kOperators),
                                 [&](const OperatorRow& each) { return word.symbol == each.symbol; });
  if (row == std::end(kOperators)) return "\"" + std::string(word.symbol) + "\" compares nothing";
  term.comparison = row->comparison;
  const bool equal = row->comparison == FilterOperator::kEqual || row->comparison == FilterOperator::kUnequal;
  const bool texts = field.kind == ValueKind::kWord || field.kind == ValueKind::kText;
  if (texts && !equal) return std::string(field.key) + " takes = and != only";
  if (word.text.empty()) return std::string(field.key) + std::string(word.symbol) + " needs a value";
  if (texts) {
    SetText(term, word.text);
    return "";
  }
  const auto number = field.kind == ValueKind::kAngle ? TenthsIn(word.text) : NumberIn(word.text);
  if (!number) return "\"" + std::string(word.text) + "\" is no number for " + field.key;
  term.number = *number;
  return "";
}

bool Compares(int64_t value, const FilterTerm& term) {
  switch (term.comparison) {
    case FilterOperator::kEqual:
      return value == term.number;
    case FilterOperator::kUnequal:
      return value != term.number;
    case FilterOperator::kAbove:
      return value > term.number;
    case FilterOperator::kBelow:
      return value < term.number;
    case FilterOperator::kAtLeast:
      return value >= term.number;
    default:
      return value <= term.number;
  }
}

// What is looked at: a row of a list.
struct Look {
  const Document& document;
  const ListModel& list;
  bool hexadecimal;

  std::string Cell(size_t row, size_t column) const {
    return CellText(document, list, row, column, hexadecimal);
  }
};

bool HoldsText(const Look& look, size_t row, const FilterTerm& term) {
  for (size_t column = 0; column < look.list.columns.size(); ++column) {
    if (SmallText(look.Cell(row, column)).find(term.text) != std::string::npos) return true;
  }
  return false;
}

bool HoldsField(const Look& look, size_t row, const FilterTerm& term) {
  const FilterField& field = kFields[static_cast<size_t>(term.field)];
  const NodeRef& node = look.list.rows[row];
  const FieldValue value = field.get ? field.get(node) : look.Cell(row, 1);
  if (const auto* number = std::get_if<int64_t>(&value))
    return field.kind == ValueKind::kFlag ? *number != 0 : Compares(*number, term);
  std::string text = std::get<std::string>(value);
  // Names come as the record has them, the list's own column as it shows them.
  if (field.kind == ValueKind::kText && field.get) text = NameText(look.document, text);
  const size_t at = SmallText(text).find(term.text);
  const bool found = field.kind == ValueKind::kWord ? at == 0 : at != std::string::npos;
  return found == (term.comparison == FilterOperator::kEqual);
}

}  // namespace

ListFilter ParseFilter(std::string_view text) {
  ListFilter filter;
  const auto refuse = [&](std::string error) {
    filter.terms.clear();
    filter.error = std::move(error);
    return filter;
  };
  for (;;) {
    while (!text.empty() && IsBlank(text[0])) text.remove_prefix(1);
    if (text.empty()) return filter;
    Word word;
    if (!TakeWord(text, word)) return refuse("A quotation mark is not closed");
    if (!word.quoted && word.text == "!") continue;  // the first key of a term
    if (!word.quoted && word.field.empty() && !word.text.empty() &&
        std::all_of(word.text.begin(), word.text.end(), IsOperator))
      return refuse("Write a comparison without blanks, such as freq>11700");
    FilterTerm term;
    term.negated = word.negated;
    if (!word.field.empty()) {
      if (std::string error = ParseComparison(word, term); !error.empty()) return refuse(std::move(error));
    } else {
      if (!word.quoted) term.field = FieldNamed(word.text, true);
      SetText(term, word.text);
    }
    filter.terms.push_back(std::move(term));
  }
}

std::string FilterRows(const Document& document, ListModel& list, const ListFilter& filter,
                       bool hexadecimal) {
  if (list.rows.empty() || filter.terms.empty()) return "";
  for (const FilterTerm& term : filter.terms) {
    if (term.field >= 0 && !Has(list.rows[0], kFields[static_cast<size_t>(term.field)].owner))
      return std::string(kFields[static_cast<size_t>(term.field)].key) + " is no field of this list";
  }
  const Look look{document, list, hexadecimal};
  std::vector<NodeRef> kept;
  for (size_t row = 0; row < list.rows.size(); ++row) {
    const bool all = std::all_of(filter.terms.begin(), filter.terms.end(), [&](const FilterTerm& term) {
      return (term.field < 0 ? HoldsText(look, row, term) : HoldsField(look, row, term)) != term.negated;
    });
    if (all) kept.push_back(list.rows[row]);
  }
  list.rows = std::move(kept);
  return "";
}

std::string FilterStatus(const ListFilter& filter, const std::string& error, size_t shown, size_t all) {
  if (!filter.error.empty()) return filter.error;
  if (!error.empty()) return error;
  return filter.terms.empty() ? "" : Format("%zu of %zu", shown, all);
}

}  // namespace vexa
