#include "import/dvb2000.h"

#include <string_view>

#include "core/bytes.h"
#include "import/list_reader.h"

namespace vexa {

namespace {

constexpr size_t kRecordSize = 64, kTextOffset = 32, kServiceNameWidth = 18;
constexpr char kDegree = '\xB0';

struct Entry {
  uint32_t program_number, frequency, symbol_rate, fec, polarization, video_pid, audio_pid, pcr_pid, type;
  std::string_view text;  // up to its NUL
};

Entry ReadEntry(std::span<const uint8_t> record) {
  ByteReader bytes(record);
  Entry entry{};
  bytes.Skip(4);
  entry.program_number = bytes.U16Big();
  bytes.Skip(2);
  entry.frequency = bytes.U16Big();
  entry.symbol_rate = bytes.U16Big();
  entry.fec = bytes.U8();
  bytes.Skip(1);
  entry.polarization = bytes.U8() & 3;
  bytes.Skip(1);
  entry.video_pid = bytes.U16Big() & 0x3FFF;
  entry.audio_pid = bytes.U16Big() & 0x3FFF;
  entry.pcr_pid = bytes.U16Big() & 0x3FFF;
  bytes.Skip(5);
  entry.type = bytes.U8();
  const auto text = record.subspan(kTextOffset);
  entry.text = std::string_view(reinterpret_cast<const char*>(text.data()), text.size());
  entry.text = entry.text.substr(0, entry.text.find('\0'));
  return entry;
}

bool IsSatellite(const Entry& entry) {
  return (entry.frequency | entry.symbol_rate | entry.video_pid | entry.audio_pid | entry.pcr_pid) == 0;
}

void TakeSatellite(ListReader& reader, const Entry& entry) {
  const size_t dash = entry.text.find('-');
  if (dash == std::string_view::npos) return;
  const std::string_view place = entry.text.substr(dash + 1);
  const size_t degree = place.find(kDegree);
  WorkSatellite satellite = reader.new_satellite;
  reader.SetListedName(satellite.name, entry.text.substr(0, dash));
  satellite.angle = DecimalPrefix(place) & 0xFFF;
  // The lists of this program count the other way round: West sets the flag.
  satellite.east = degree != std::string_view::npos && place.substr(degree + 1).starts_with('W');
  reader.Add(satellite);
}

uint32_t FecCode(uint32_t value) {
  constexpr uint32_t kCodes[] = {0, 0, 1, 2, 3, 0, 4, 5};
  return value < std::size(kCodes) ? kCodes[value] : 0;
}

void TakeCarrier(ListReader& reader, const Entry& entry) {
  const auto& carriers = reader.work.carriers;
  WorkCarrier carrier = reader.new_carrier;
  carrier.symbol_rate = entry.symbol_rate & 0xFFFFFF;
  carrier.frequency = entry.frequency;
  carrier.polarization = entry.polarization & 3;
  carrier.fec = FecCode(entry.fec) & 7;
  carrier.satellite_index = (reader.satellites() - 1) & 0x3FF;
  if (!carriers.empty()) {
    const WorkCarrier& previous = carriers.back();
    if (previous.satellite_index == carrier.satellite_index && previous.symbol_rate == carrier.symbol_rate &&
        previous.polarization == carrier.polarization && previous.frequency == carrier.frequency) {
      return;
    }
  }
  reader.NameByNumber(carrier);
  reader.Add(carrier);
  reader.previous_service = {};
}

uint32_t Pid(uint32_t value) {
  return value == 0 ? kNoPid : value;
}

bool IsDuplicate(const ListReader& reader, const WorkService& service) {
  const WorkService& previous = reader.previous_service;
  if (previous.video_pid != service.video_pid) return false;
  if (previous.video_pid == kNoPid && previous.audio_pid != service.audio_pid) return false;
  return previous.carrier_index == service.carrier_index && !reader.work.services.empty();
}

void TakeService(ListReader& reader, const Entry& entry) {
  WorkService service = reader.new_service;
  reader.SetListedName(service.name, entry.text.substr(0, kServiceNameWidth));
  service.video_pid = Pid(entry.video_pid) & 0x3FFF;
  service.audio_pid = Pid(entry.audio_pid) & 0x3FFF;
  service.pcr_pid = Pid(entry.pcr_pid) & 0x3FFF;
  service.carrier_index = reader.carriers() & 0xFFFF;
  service.type = entry.type & 3;
  service.free = 1;
  service.program_number = reader.ids.Unique(entry.program_number) & 0xFFFF;
  if (IsDuplicate(reader, service)) return;
  reader.Add(service);
}

}  // namespace

void ReadDvb2000(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                 const Progress& progress, const ListPages& pages, ListLosses* losses) {
  work = {};
  const size_t count = list.size() / kRecordSize;
  if (count == 0) return;
  ListReader reader(work, defaults, NameConverter(list, pages, false), losses);
  work.services.reserve(count);
  ListProgress bar(progress, count);
  for (size_t i = 0; i < count; ++i) {
    bar.Step();
    const Entry entry = ReadEntry(list.subspan(i * kRecordSize, kRecordSize));
    if (IsSatellite(entry)) {
      TakeSatellite(reader, entry);
    } else if (!work.satellites.empty()) {
      TakeCarrier(reader, entry);
      TakeService(reader, entry);
    }
  }
  bar.End();
}

}  // namespace vexa
