#include "import/work_files.h"

#include <cstring>
#include <system_error>

namespace vexa {

namespace {

constexpr const char* kSatelliteFile = "~001sat.bin";
constexpr const char* kCarrierFile = "~001car.bin";
constexpr const char* kServiceFile = "~001ser.bin";

template <class Record>
bool WriteRecords(const Context& context, const std::vector<Record>& records, const Path& path) {
  const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(records.data()),
                                       records.size() * sizeof(Record));
  if (WriteWholeFile(path, bytes, *context.files) == WriteResult::kDone) return true;
  Tell(context.messages, Icon::kStop, "Could not creat file \"%s\".", Utf8FromPath(path).c_str());
  return false;
}

template <class Record>
void ReadRecords(const Path& path, std::vector<Record>& records) {
  const auto content = ReadWholeFile(path);
  if (!content) return;
  records.resize(content->size() / sizeof(Record));
  if (!records.empty()) std::memcpy(records.data(), content->data(), records.size() * sizeof(Record));
}

}  // namespace

WorkSatellite NewWorkSatellite(const DefaultRecords& defaults) {
  WorkSatellite satellite{};
  satellite.east = defaults.satellite.east;
  satellite.angle = defaults.satellite.angle;
  return satellite;
}

WorkCarrier NewWorkCarrier(const DefaultRecords& defaults) {
  WorkCarrier carrier{};
  carrier.symbol_rate = defaults.carrier.symbol_rate;
  carrier.polarization = defaults.carrier.polarization;
  carrier.fec = defaults.carrier.fec;
  carrier.frequency = defaults.carrier.frequency;
  return carrier;
}

WorkService NewWorkService(const DefaultRecords& defaults) {
  WorkService service{};
  service.video_pid = defaults.service.video_pid;
  service.audio_pid = defaults.service.audio_pid;
  service.pcr_pid = defaults.service.pcr_pid;
  service.free = defaults.service.free;
  service.type = defaults.service.type;
  return service;
}

std::array<Path, 3> WorkFilePaths(const Path& folder) {
  return {folder / kSatelliteFile, folder / kCarrierFile, folder / kServiceFile};
}

bool WriteWorkFiles(const Context& context, const WorkFiles& work, const Path& folder) {
  std::error_code ignored;  // a folder that cannot be made shows when the first file cannot
  std::filesystem::create_directories(folder, ignored);
  const auto paths = WorkFilePaths(folder);
  return WriteRecords(context, work.satellites, paths[0]) && WriteRecords(context, work.carriers, paths[1]) &&
         WriteRecords(context, work.services, paths[2]);
}

WorkFiles ReadWorkFiles(const Path& folder) {
  WorkFiles work;
  ReadRecords(folder / kSatelliteFile, work.satellites);
  ReadRecords(folder / kCarrierFile, work.carriers);
  ReadRecords(folder / kServiceFile, work.services);
  return work;
}

}  // namespace vexa
