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

// All bits that nothing is told of are 1.
template <class Record>
void SetAllOnes(Record& record) {
  std::memset(&record, 0xFF, sizeof record);
}

void Convert(const WorkSatellite& work, SatelliteRecord& record) {
  SetAllOnes(record);
  record.carrier_count = work.carrier_count;
  record.east = work.east;
  record.angle = work.angle;
  std::memcpy(record.name, work.name, kNameSize);
}

void Convert(const WorkCarrier& work, CarrierRecord& record) {
  SetAllOnes(record);
  record.symbol_rate = work.symbol_rate;
  record.first_service = work.first_service;
  record.service_count = work.service_count;
  record.satellite_index = work.satellite_index;
  record.polarization = work.polarization;
  record.fec = work.fec;
  record.frequency = work.frequency;
  std::memcpy(record.name, work.name, kNameSize);
}

void Convert(const WorkService& work, ServiceRecord& record) {
  SetAllOnes(record);
  record.program_number = work.program_number;
  record.carrier_index = work.carrier_index;
  record.video_pid = work.video_pid;
  record.audio_pid = work.audio_pid;
  record.pcr_pid = work.pcr_pid;
  record.type = work.type;
  record.free = work.free;
  std::memcpy(record.name, work.name, kNameSize);
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

template <class Record, class Work>
void WriteRecords(ByteWriter& stream, std::string_view name, const std::vector<Work>& works) {
  WriteBlockHeader(stream, name, sizeof(Record), works.size());
  RecordWriter<Record> records(stream);
  for (const Work& work : works) Convert(work, records.Next());
  records.End();
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
  for (size_t i = 0; i < kMaximumLnbs; ++i) stream.Write(defaults.lnb);
  WriteRecords<SatelliteRecord>(stream, "Satelli", work.satellites);
  WriteRecords<CarrierRecord>(stream, "Carrier", work.carriers);
  WriteRecords<ServiceRecord>(stream, "Service", work.services);
  WriteBlockHeader(stream, "OSL", sizeof(uint16_t), work.services.size());
  RecordWriter<uint16_t> order(stream);
  for (size_t i = 0; i < work.services.size(); ++i) order.Next() = static_cast<uint16_t>(i);
  order.End();
  return std::move(stream.bytes());
}

}  // namespace vexa
