#include "import/satcodx.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "import/list_gatherer.h"
#include "import/list_reader.h"

namespace vexa {

namespace {

constexpr std::string_view kSignature = "SATCODX", kVersion105 = "105";
constexpr size_t kNominalLength105 = 132, kLongestRecord = 1024;  // bytes
constexpr char kUnderscores[] = "__________________";

struct Column {
  size_t offset, width;
};
constexpr Column kVersion{8, 2}, kSatelliteNameA{10, 18}, kSatelliteNameB{115, 12}, kFrequency{33, 6},
    kPolarization{42, 1}, kServiceName{43, 8}, kPosition{51, 4}, kSymbolRate{69, 5}, kVideoPid{75, 4},
    kAudioPid{79, 4}, kPcrPid{83, 4}, kProgramNumber{87, 5}, kAccess{111, 4}, kNameRest{115, 12},
    kVersion3{7, 3}, kNameRest105{115, 17};
constexpr size_t kType = 28, kFec = 74;

// One record's text: at least kSatcodxReadLength bytes, so that no column but kNameRest105 lies outside.
using Record = std::string_view;

// Columns are template arguments: each is read with its own fixed width, which is what makes long lists
// quick.
template <Column kColumn>
std::string_view Text(Record record) {
  return {record.data() + kColumn.offset, kColumn.width};
}

template <Column kColumn>
uint32_t Number(Record record) {
  uint32_t value = 0;
  for (size_t i = 0; i < kColumn.width; ++i) {
    const uint32_t digit = static_cast<uint8_t>(record[kColumn.offset + i]) - uint32_t{'0'};
    if (digit > 9) return DecimalPrefix(Text<kColumn>(record));
    value = value * 10 + digit;
  }
  return value;
}

template <Column kColumn>
bool IsEmpty(Record record) {
  return std::memcmp(record.data() + kColumn.offset, kUnderscores, kColumn.width) == 0;
}

template <Column kColumn>
uint32_t Pid(Record record) {
  return IsEmpty<kColumn>(record) ? kNoPid : Number<kColumn>(record) & 0x3FFF;
}

struct Reader : ListReader {
  using ListReader::ListReader;
  bool layout_a = false;
  bool appends = false;  // the rest of a name goes behind its start, however short
};

template <Column kColumn>
void NameSatellite(Reader& reader, Record record, WorkSatellite& satellite) {
  reader.lacking = 0;
  if (IsEmpty<kColumn>(record)) {
    SetSatelliteNumberName(satellite.name, reader.satellites());
  } else {
    std::memcpy(satellite.name, record.data() + kColumn.offset, kColumn.width);
    reader.ConvertName(satellite.name);
  }
}

// Adjacent records belong to one satellite by their position; only records without one are told apart by
// name.
void TakeSatellite(Reader& reader, Record record) {
  const auto& satellites = reader.work.satellites;
  const uint32_t position = Number<kPosition>(record) & 0xFFF;
  const WorkSatellite* last = satellites.empty() ? nullptr : &satellites.back();
  if (last && position != 0 && position == last->angle) return;
  WorkSatellite satellite = reader.new_satellite;
  if (reader.layout_a) {
    NameSatellite<kSatelliteNameA>(reader, record, satellite);
  } else {
    NameSatellite<kSatelliteNameB>(reader, record, satellite);
  }
  if (last && position == 0 && std::memcmp(satellite.name, last->name, kNameSize) == 0) return;
  satellite.angle = position & 0xFFF;
  reader.Add(satellite);
}

void TakeTransponder(Record record, WorkCarrier& carrier) {
  constexpr uint32_t kCodes[] = {kVertical, kHorizontal, kLeft, kRight};
  carrier.symbol_rate = Number<kSymbolRate>(record) & 0xFFFFFF;
  carrier.frequency = Number<kFrequency>(record);
  const uint32_t digit = Number<kPolarization>(record);
  if (digit < 4) carrier.polarization = kCodes[digit] & 3;
}

void TakeFec(Record record, WorkCarrier& carrier) {
  if (record[kFec] == '_') return;
  // The number has no width of its own: it ends at the first character that is no digit.
  const uint32_t number = DecimalPrefix(record.substr(kFec));
  const uint32_t code = number == 5 ? 4 : number == 7 ? 5 : number & 7;
  carrier.fec = code > 5 ? 0 : code & 7;
}

void AddCarrier(Reader& reader, const WorkCarrier& carrier) {
  reader.Add(carrier);
  reader.previous_service = {};
}

void TrimName(char (&name)[kNameSize]) {
  if (!TrimAtDoubleSpace(name)) name[kNameSize - 1] = '\0';
}

void TakeTransponderRecord(Reader& reader, Record record) {
  WorkCarrier carrier = reader.new_carrier;
  std::memcpy(carrier.name, record.data() + kServiceName.offset, kServiceName.width);
  if (reader.layout_a) {
    std::memcpy(carrier.name + kServiceName.width, record.data() + kNameRest.offset, kNameRest.width);
  }
  reader.ConvertName(carrier.name);
  TrimName(carrier.name);
  TakeTransponder(record, carrier);
  TakeFec(record, carrier);
  AddCarrier(reader, carrier);
}

// Which satellite the previous carrier belongs to is not asked.
bool IsPreviousCarrier(const Reader& reader, const WorkCarrier& carrier) {
  if (reader.work.carriers.empty()) return false;
  const WorkCarrier& previous = reader.work.carriers.back();
  return previous.symbol_rate == carrier.symbol_rate && previous.frequency == carrier.frequency &&
         previous.polarization == carrier.polarization;
}

// Place of the column's first underscore, its width when there is none.
template <Column kColumn>
size_t UnderscoreIn(Record record) {
  size_t i = 0;
  while (i < kColumn.width && record[kColumn.offset + i] != '_') ++i;
  return i;
}

void NameService(Reader& reader, Record record, WorkService& service) {
  const size_t length = UnderscoreIn<kServiceName>(record);
  std::memcpy(service.name, record.data() + kServiceName.offset, length);
  if (reader.layout_a) {
    const size_t rest = UnderscoreIn<kNameRest>(record);
    // A rest that ends early replaces the start of the name instead of continuing it.
    const size_t place = reader.appends || rest == kNameRest.width ? length : 0;
    std::memcpy(service.name + place, record.data() + kNameRest.offset, rest);
  }
  reader.ConvertName(service.name);
  TrimName(service.name);
}

bool IsDuplicate(const Reader& reader, const WorkService& service) {
  const WorkService& previous = reader.previous_service;
  if (previous.video_pid != service.video_pid) return false;
  if (previous.video_pid == 0 && previous.audio_pid != service.audio_pid) return false;
  return previous.carrier_index == service.carrier_index && !reader.work.services.empty();
}

void TakeServiceColumns(Record record, WorkService& service) {
  service.video_pid = Pid<kVideoPid>(record) & 0x3FFF;
  service.audio_pid = Pid<kAudioPid>(record) & 0x3FFF;
  service.pcr_pid = Pid<kPcrPid>(record) & 0x3FFF;
  service.free = IsEmpty<kAccess>(record);
}

void TakeService(Reader& reader, Record record) {
  WorkService service = reader.new_service;
  const char type = record[kType];
  service.type = type == 'T' ? uint32_t{kTv} : type == 'R' ? uint32_t{kRadio} : 0;
  if (service.type == 0) return;  // other services only make their carrier
  NameService(reader, record, service);
  service.carrier_index = (reader.carriers() - 1) & 0xFFFF;
  TakeServiceColumns(record, service);
  service.program_number = reader.ids.Unique(Number<kProgramNumber>(record)) & 0xFFFF;
  if (IsDuplicate(reader, service)) return;
  reader.Add(service);
}

void TakeRecord(Reader& reader, Record record) {
  TakeSatellite(reader, record);
  if (IsEmpty<kSymbolRate>(record) || Text<kSymbolRate>(record) == "00000") return;
  if (record[kType] == '_') return TakeTransponderRecord(reader, record);
  WorkCarrier carrier = reader.new_carrier;
  TakeTransponder(record, carrier);
  if (!IsPreviousCarrier(reader, carrier)) {
    TakeFec(record, carrier);
    reader.NameByNumber(carrier);
    AddCarrier(reader, carrier);
  }
  TakeService(reader, record);
}

// A name of layout 105 without its fill, its control codes and the blanks at its ends.
std::string PlainName105(std::string_view start, std::string_view rest) {
  std::string name(start.substr(0, start.find_last_not_of('_') + 1));
  name += rest;
  std::erase_if(name, [](char c) { return static_cast<uint8_t>(c) < 0x20; });
  name.erase(name.find_last_not_of(" _") + 1);
  name.erase(0, name.find_first_not_of(' '));
  return name;
}

WorkSatellite Satellite105(Record record, const WorkSatellite& from, const NameConverter& names,
                           size_t& lacking) {
  WorkSatellite satellite = from;
  names.SetName(satellite.name, PlainName105(Text<kSatelliteNameA>(record), {}), lacking);
  satellite.angle = Number<kPosition>(record) & 0xFFF;
  return satellite;
}

WorkCarrier Carrier105(Record record, const WorkCarrier& from) {
  WorkCarrier carrier = from;
  TakeTransponder(record, carrier);
  const size_t code = std::string_view("_123_5_7").find(record[kFec]);
  if (record[kFec] != '_') carrier.fec = code == 5 ? 4 : code == 7 ? 5 : code <= 3 ? code & 7 : 0;
  return carrier;
}

std::string ServiceName105(Record record) {
  return PlainName105(Text<kServiceName>(record), record.substr(kNameRest105.offset));
}

// All names, by which UTF-8 is told from single bytes: the fields of a record may part a character.
std::string Names105(const std::vector<Record>& records) {
  std::string names;
  for (const Record record : records)
    names += PlainName105(Text<kSatelliteNameA>(record), {}) + '\n' + ServiceName105(record) + '\n';
  return names;
}

// Records that name no transponder, and services that are neither television nor radio, are left out.
void Read105(const std::vector<Record>& records, const DefaultRecords& defaults, WorkRecords& work,
             const Progress& progress, const NameConverter& names, ListLosses& losses) {
  ListGatherer gatherer;
  ListProgress bar(progress, records.size());
  for (const Record record : records) {
    bar.Step();
    if (Number<kSymbolRate>(record) == 0) continue;
    const size_t satellites = gatherer.satellites();
    size_t lacking = 0;
    const size_t carrier =
        gatherer.AddCarrier(Satellite105(record, NewWorkSatellite(defaults), names, lacking),
                            Carrier105(record, NewWorkCarrier(defaults)));
    if (gatherer.satellites() != satellites) losses.lacking += lacking;
    const char type = record[kType];
    if (type != 'T' && type != 'R') continue;
    WorkService service = NewWorkService(defaults);
    const std::string name = ServiceName105(record);
    lacking = 0;
    names.SetName(service.name, name, lacking);
    service.type = type == 'T' ? kTv : kRadio;
    TakeServiceColumns(record, service);
    service.program_number = Number<kProgramNumber>(record) & 0xFFFF;
    if (gatherer.AddService(carrier, service, name)) losses.lacking += lacking;
  }
  bar.End();
  gatherer.Finish(defaults, work);
}

bool IsRecord(std::string_view text) {
  return StartsWithIgnoringCase(text, kSignature);
}

size_t DefaultLength(std::string_view text) {
  return text.size() > 128 && text[128] == 'S' ? 128 : 129;
}

// The length at which most records begin as they should; of several the nominal one, else the shortest.
size_t LikeliestLength(std::string_view text, size_t nominal) {
  const auto records_at = [&](size_t length) {
    size_t count = 0;
    for (size_t at = 0; at < text.size(); at += length) count += IsRecord(text.substr(at)) ? 1 : 0;
    return count;
  };
  size_t best = nominal, most = records_at(nominal);
  for (size_t length = kSatcodxReadLength; length <= std::min(text.size(), kLongestRecord); ++length) {
    const size_t count = records_at(length);
    if (count <= most) continue;
    most = count;
    best = length;
  }
  return best;
}

// The records of a list, cut to `width` bytes where they are longer.
std::vector<Record> RecordsOf(std::string_view text, const SatcodxOptions& options, size_t length,
                              size_t width) {
  std::vector<Record> records;
  records.reserve(text.size() / length + 1);
  for (size_t at = 0; at < text.size(); at += length) {
    const Record record = text.substr(at, std::min(length, width));
    // The last record may lack the line end that belongs to the others.
    const size_t least = options.LooksForRecords() ? kSatcodxReadLength : length;
    if (text.size() - at < least || (options.LooksForRecords() && !IsRecord(record))) continue;
    records.push_back(record);
  }
  return records;
}

// The list without a byte-order mark, where the layout knows of one.
std::string_view RecordText(std::span<const uint8_t> list, const SatcodxOptions& options) {
  std::string_view text(reinterpret_cast<const char*>(list.data()), list.size());
  if (options.LooksForRecords() && text.starts_with(kByteOrderMark))
    text.remove_prefix(kByteOrderMark.size());
  return text;
}

bool Is105(std::string_view text, const SatcodxOptions& options) {
  if (options.layout != SatcodxLayout::kAuto) return options.layout == SatcodxLayout::k105;
  return text.size() >= kSatcodxReadLength && Text<kVersion3>(text) == kVersion105;
}

}  // namespace

bool TrimAtDoubleSpace(char (&name)[kNameSize]) {
  for (size_t i = 0; i + 1 < kNameSize && name[i] != '\0'; ++i) {
    if (name[i] != ' ' || name[i + 1] != ' ') continue;
    std::memset(name + i, 0, kNameSize - i);
    return true;
  }
  return false;
}

void ReadSatcodx(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                 const Progress& progress, const SatcodxOptions& options, const ListPages& pages,
                 ListLosses* list_losses) {
  work = {};
  ListLosses own;
  ListLosses& losses = list_losses ? *list_losses : own;
  losses.page = DatabasePage(pages).name;
  const std::string_view text = RecordText(list, options);
  if (text.size() < kSatcodxReadLength) return;
  const bool is_105 = Is105(text, options);
  const std::vector<Record> records = RecordsOf(text, options, SatcodxRecordLength(list, options),
                                                is_105 ? kNominalLength105 : kSatcodxReadLength);
  if (is_105) {
    const std::string all = Names105(records);
    const NameConverter names_105({reinterpret_cast<const uint8_t*>(all.data()), all.size()}, pages);
    return Read105(records, defaults, work, progress, names_105, losses);
  }
  if (records.empty()) return;
  const NameConverter names(list, pages);
  const std::string_view version = Text<kVersion>(text);
  Reader reader(work, defaults, names, &losses);
  reader.layout_a = version == "02" || version == "03";
  if (options.layout == SatcodxLayout::kA) reader.layout_a = true;
  if (options.layout == SatcodxLayout::kB) reader.layout_a = false;
  reader.appends = options.layout == SatcodxLayout::kAuto;
  work.services.reserve(records.size());
  ListProgress bar(progress, records.size());
  for (const Record record : records) {
    TakeRecord(reader, record);
    bar.Step();
  }
  bar.End();
}

size_t SatcodxRecordLength(std::span<const uint8_t> list, const SatcodxOptions& options) {
  if (options.record_length != 0) return std::max(options.record_length, kSatcodxReadLength);
  const std::string_view text = RecordText(list, options);
  const size_t length = DefaultLength(text);
  if (!options.LooksForRecords()) return length;
  return LikeliestLength(text, Is105(text, options) ? kNominalLength105 : length);
}

std::string SatcodxDoubt(std::span<const uint8_t> list) {
  const std::string_view text(reinterpret_cast<const char*>(list.data()), list.size());
  if (text.starts_with(kByteOrderMark)) return kByteOrderMarkDoubt;
  const size_t length = DefaultLength(text), count = text.size() / length;
  if (text.size() >= kSatcodxReadLength) {
    const std::string_view version = Text<kVersion>(text);
    if (version[0] != '0' || version[1] < '0' || version[1] > '4')
      return "its version is " + std::string(Text<kVersion3>(text));
  }
  for (size_t i = 1; i < count; ++i) {
    if (!IsRecord(text.substr(i * length)))
      return "record " + std::to_string(i + 1) + " does not begin with \"SATCODX\"";
  }
  const size_t behind = text.size() - count * length;
  return behind == 0 ? std::string() : std::to_string(behind) + " bytes stand behind the last record";
}

}  // namespace vexa
