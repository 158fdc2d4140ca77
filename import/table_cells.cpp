#include "import/table_cells.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <type_traits>

#include "core/code_names.h"
#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr TableColumn kLnbColumns[] = {
    {"lnb", CellKind::kNumber},        {"frequency1", CellKind::kField}, {"frequency2", CellKind::kField},
    {"type", CellKind::kField},        {"power", CellKind::kField},      {"tone_22khz", CellKind::kField},
    {"switch_type", CellKind::kField}, {"switch", CellKind::kSwitch},    {"motor", CellKind::kField}};
constexpr TableColumn kSatelliteColumns[] = {
    {"satellite", CellKind::kNumber}, {"name", CellKind::kName},       {"angle", CellKind::kAngle},
    {"east", CellKind::kField},       {"position", CellKind::kField},  {"lnb", CellKind::kLnb},
    {"user", CellKind::kYesNo},       {"carriers", CellKind::kFollows}};
constexpr TableColumn kCarrierColumns[] = {
    {"satellite", CellKind::kNumber},   {"satellite_name", CellKind::kFollows},
    {"carrier", CellKind::kNumber},     {"name", CellKind::kName},
    {"frequency", CellKind::kField},    {"symbol_rate", CellKind::kField},
    {"polarization", CellKind::kField}, {"fec", CellKind::kField},
    {"user", CellKind::kYesNo},         {"services", CellKind::kFollows}};
constexpr TableColumn kServiceColumns[] = {
    {"satellite", CellKind::kNumber},     {"satellite_name", CellKind::kFollows},
    {"carrier", CellKind::kNumber},       {"carrier_name", CellKind::kFollows},
    {"frequency", CellKind::kFollows},    {"polarization", CellKind::kFollows},
    {"service", CellKind::kNumber},       {"number", CellKind::kFollows},
    {"order", CellKind::kOrder},          {"name", CellKind::kName},
    {"program_number", CellKind::kField}, {"type", CellKind::kServiceType},
    {"free", CellKind::kYesNo},           {"video_pid", CellKind::kPid},
    {"audio_pid", CellKind::kPid},        {"pcr_pid", CellKind::kPid}};
// The table of favourites is read and written by itself; these name its columns.
constexpr TableColumn kFavouriteColumns[] = {{"group", CellKind::kNumber},    {"list", CellKind::kNumber},
                                             {"group_name", CellKind::kName}, {"entry", CellKind::kNumber},
                                             {"number", CellKind::kNumber},   {"name", CellKind::kFollows}};

std::string LowerWord(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}

std::optional<int64_t> CellNumber(std::string_view text) {
  int64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

template <class Record>
const Field<Record>& FieldNamed(std::string_view key) {
  const auto fields = FieldsOf<Record>();
  return *std::find_if(fields.begin(), fields.end(), [&](const auto& field) { return key == field.key; });
}

// The code of a word, or of the number of one.
std::optional<int64_t> CodeOf(std::span<const char* const> words, const std::string& cell) {
  for (size_t code = 0; code < words.size(); ++code) {
    if (words[code] && LowerWord(words[code]) == LowerWord(cell)) return static_cast<int64_t>(code);
  }
  return CellNumber(cell);
}

std::string WordOfCode(std::span<const char* const> words, int64_t code) {
  const bool has_word =
      code >= 0 && static_cast<size_t>(code) < words.size() && words[static_cast<size_t>(code)];
  return has_word ? words[static_cast<size_t>(code)] : std::to_string(code);
}

constexpr const char* kNoYes[] = {"No", "Yes"};

// The field of an LNB that the selection of its switch type stands in.
const Field<LnbRecord>& SwitchField(const LnbRecord& record) {
  return FieldNamed<LnbRecord>(record.switch_type == kSwitchDiseqc      ? "diseqc_switch"
                               : record.switch_type == kSwitchToneBurst ? "tone_burst_switch"
                                                                        : "plain_switch");
}

// Degrees to tenths: digits, perhaps a point or comma and digits of which the first counts.
std::optional<int64_t> TenthsOfCell(const std::string& cell) {
  const size_t point = cell.find_first_of(".,");
  const auto degrees = CellNumber(std::string_view(cell).substr(0, point));
  if (!degrees || *degrees < 0 || *degrees > 409) return std::nullopt;
  const std::string decimals = point == std::string::npos ? "0" : cell.substr(point + 1) + "0";
  if (decimals.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  return *degrees * 10 + (decimals[0] - '0');
}

// What kinds of cells that hold a number mean by their text; nothing: no such number. `key` of the field.
template <class Record>
std::optional<int64_t> NumberOfCell(const TableColumn& column, const Field<Record>& field,
                                    const std::string& cell) {
  switch (column.kind) {
    case CellKind::kAngle:
      return TenthsOfCell(cell);
    case CellKind::kLnb: {
      const auto number = CellNumber(cell);
      return number && *number <= kMaximumLnbs ? std::optional(*number - 1) : std::nullopt;
    }
    case CellKind::kYesNo:
      return CodeOf(kNoYes, cell);
    case CellKind::kPid:
      return cell.empty() ? std::optional<int64_t>(kNoPid) : CellNumber(cell);
    case CellKind::kServiceType:
      return CodeOf(kServiceTypes, cell);
    default:
      return CodeOf(field.words, cell);
  }
}

template <class Record>
const Field<Record>& FieldOf(const Record& record, const TableColumn& column) {
  if constexpr (std::is_same_v<Record, LnbRecord>) {
    if (column.kind == CellKind::kSwitch) return SwitchField(record);
  }
  return FieldNamed<Record>(column.kind == CellKind::kLnb ? "lnb_index" : column.name);
}

template <class Record>
std::string SetName(Record& record, const std::string& cell, const CodePage& page) {
  if constexpr (std::is_same_v<Record, LnbRecord>) {
    return "";
  } else {
    const auto bytes = PageFromUtf8(page, cell);
    if (!bytes || bytes->find('\0') != std::string::npos)
      return "has characters that " + page.name + " lacks";
    if (bytes->size() > kNameSize) return Format("is longer than %u characters", kNameSize);
    std::memset(record.name, 0, kNameSize);
    std::memcpy(record.name, bytes->data(), bytes->size());
    return "";
  }
}

}  // namespace

std::span<const TableColumn> ColumnsOf(TableKind kind) {
  switch (kind) {
    case TableKind::kLnbs:
      return kLnbColumns;
    case TableKind::kSatellites:
      return kSatelliteColumns;
    case TableKind::kCarriers:
      return kCarrierColumns;
    case TableKind::kServices:
      return kServiceColumns;
    default:
      return kFavouriteColumns;
  }
}

template <class Record>
std::string CellText(const Record& record, const TableColumn& column, const CodePage& page) {
  if (column.kind == CellKind::kName) {
    if constexpr (!std::is_same_v<Record, LnbRecord>) return Utf8FromPage(page, NameOf(record.name));
  }
  const Field<Record>& field = FieldOf(record, column);
  const int64_t value = field.get(record);
  switch (column.kind) {
    case CellKind::kAngle:
      return std::to_string(value / 10) + "." + std::to_string(value % 10);
    case CellKind::kLnb:
      return std::to_string(value + 1);
    case CellKind::kYesNo:
      return WordOfCode(kNoYes, value);
    case CellKind::kPid:
      return value == kNoPid ? "" : std::to_string(value);
    case CellKind::kServiceType:
      return kServiceTypes[value == kTv ? kTv : kRadio];
    default:
      return WordOfCode(field.words, value);
  }
}

template <class Record>
std::string SetCell(Record& record, const TableColumn& column, const std::string& cell,
                    const CodePage& page) {
  if (CellText(record, column, page) == cell) return "";
  if (column.kind == CellKind::kName) return SetName(record, cell, page);
  const Field<Record>& field = FieldOf(record, column);
  const auto number = NumberOfCell(column, field, cell);
  const int64_t largest = column.kind == CellKind::kYesNo ? 1 : field.largest;
  if (!number || *number < field.smallest || *number > largest)
    return "\"" + ShownText(cell) + "\" does not fit";
  field.set(record, *number);
  return "";
}

template <class Record>
std::string WordOf(std::string_view key, const Record& record) {
  const Field<Record>& field = FieldNamed<Record>(key);
  return WordOfCode(field.words, field.get(record));
}

template std::string CellText(const LnbRecord&, const TableColumn&, const CodePage&);
template std::string CellText(const SatelliteRecord&, const TableColumn&, const CodePage&);
template std::string CellText(const CarrierRecord&, const TableColumn&, const CodePage&);
template std::string CellText(const ServiceRecord&, const TableColumn&, const CodePage&);
template std::string SetCell(LnbRecord&, const TableColumn&, const std::string&, const CodePage&);
template std::string SetCell(SatelliteRecord&, const TableColumn&, const std::string&, const CodePage&);
template std::string SetCell(CarrierRecord&, const TableColumn&, const std::string&, const CodePage&);
template std::string SetCell(ServiceRecord&, const TableColumn&, const std::string&, const CodePage&);
template std::string WordOf(std::string_view, const CarrierRecord&);

const char* ListWord(GroupKind list) {
  return list == GroupKind::kTv ? "TV" : "Radio";
}

std::string GuardedCell(const std::string& cell) {
  const std::string_view start = std::string_view(cell).substr(cell.starts_with('\'') ? 1 : 0, 1);
  constexpr std::string_view kFormulaStarts = "=+-@\t";
  return !start.empty() && kFormulaStarts.find(start) != std::string_view::npos ? "'" + cell : cell;
}

std::string PlainCell(const std::string& cell) {
  const bool guarded = cell.starts_with('\'') && GuardedCell(cell.substr(1)) != cell.substr(1);
  return guarded ? cell.substr(1) : cell;
}

}  // namespace vexa
