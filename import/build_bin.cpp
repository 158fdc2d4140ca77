#include "import/build_bin.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

#include "core/bytes.h"

namespace vexa {

namespace {

constexpr uint8_t kHeader[24] = {'Q',  'z',  2,    0,    0,   0xFF, 5,   0,    0xFF, 0xFF, 0xFF, 0xFF,
                                 0xFF, 0xFF, 0xFF, 0xFF, 'Q', 'M',  'V', 0xFF, 1,    0,    0xFF, 0xFF};
constexpr size_t kBlockHeaderSize = 16;

template <class Record>
Record AllOnes() {
  Record record;
  std::memset(&record, 0xFF, sizeof record);
  return record;
}

SatelliteRecord Convert(const WorkSatellite& work) {
  auto record = AllOnes<SatelliteRecord>();
  record.carrier_count = work.carrier_count;
  record.east = work.east;
  record.angle = work.angle;
  std::memcpy(record.name, work.name, kNameSize);
  return record;
}

CarrierRecord Convert(const WorkCarrier& work) {
  auto record = AllOnes<CarrierRecord>();
  record.symbol_rate = work.symbol_rate;
  record.first_service = work.first_service;
  record.service_count = work.service_count;
  record.satellite_index = work.satellite_index;
  record.polarization = work.polarization;
  record.fec = work.fec;
  record.frequency = work.frequency;
  std::memcpy(record.name, work.name, kNameSize);
  return record;
}

ServiceRecord Convert(const WorkService& work) {
  auto record = AllOnes<ServiceRecord>();
  record.program_number = work.program_number;
  record.carrier_index = work.carrier_index;
  record.video_pid = work.video_pid;
  record.audio_pid = work.audio_pid;
  record.pcr_pid = work.pcr_pid;
  record.type = work.type;
  record.free = work.free;
  std::memcpy(record.name, work.name, kNameSize);
  return record;
}

void WriteBlockHeader(ByteWriter& stream, std::string_view name, uint32_t record_size, size_t count) {
  std::array<uint8_t, kBlockHeaderSize> header;
  header.fill(0xFF);
  std::copy(name.begin(), name.end(), header.begin());
  header[name.size()] = 0;
  header[8] = static_cast<uint8_t>(record_size);
  header[9] = 0;
  header[12] = static_cast<uint8_t>(count);
  header[13] = static_cast<uint8_t>(count >> 8);
  stream.Append(header);
}

// In groups, so that the stream grows by copying and not byte by byte.
template <class Item, class Make>
void WriteItems(ByteWriter& stream, size_t count, Make make) {
  std::array<Item, 64> group;
  for (size_t start = 0; start < count; start += group.size()) {
    const size_t used = std::min(group.size(), count - start);
    for (size_t i = 0; i < used; ++i) group[i] = make(start + i);
    stream.Append({reinterpret_cast<const uint8_t*>(group.data()), used * sizeof(Item)});
  }
}

template <class Record, class Work>
void WriteRecords(ByteWriter& stream, std::string_view name, const std::vector<Work>& records) {
  WriteBlockHeader(stream, name, sizeof(Record), records.size());
  WriteItems<Record>(stream, records.size(), [&](size_t i) { return Convert(records[i]); });
}

}  // namespace

Bytes BuildBinFromWorkFiles(const WorkRecords& work, const DefaultRecords& defaults) {
  ByteWriter stream;
  stream.bytes().assign(std::begin(kHeader), std::end(kHeader));
  stream.bytes().reserve(sizeof kHeader + 5 * kBlockHeaderSize + kMaximumLnbs * sizeof(LnbRecord) +
                         work.satellites.size() * sizeof(SatelliteRecord) +
                         work.carriers.size() * sizeof(CarrierRecord) +
                         work.services.size() * (sizeof(ServiceRecord) + sizeof(uint16_t)));
  WriteBlockHeader(stream, "lnb", 12, kMaximumLnbs);
  WriteItems<LnbRecord>(stream, kMaximumLnbs, [&](size_t) { return defaults.lnb; });
  WriteRecords<SatelliteRecord>(stream, "Satelli", work.satellites);
  WriteRecords<CarrierRecord>(stream, "Carrier", work.carriers);
  WriteRecords<ServiceRecord>(stream, "Service", work.services);
  WriteBlockHeader(stream, "OSL", sizeof(uint16_t), work.services.size());
  WriteItems<uint16_t>(stream, work.services.size(), [](size_t i) { return static_cast<uint16_t>(i); });
  return std::move(stream.bytes());
}

}  // namespace vexa
