#include "import/work_files.h"

namespace vexa {

namespace {

template <class Record>
Bytes BytesOfRecords(const std::vector<Record>& records) {
  const auto* start = reinterpret_cast<const uint8_t*>(records.data());
  return {start, start + records.size() * sizeof(Record)};
}

}  // namespace

WorkSatellite NewWorkSatellite(const DefaultRecords& defaults) {
  WorkSatellite satellite{};
  satellite.read = 1;
  satellite.east = defaults.satellite.east;
  satellite.angle = defaults.satellite.angle;
  return satellite;
}

WorkCarrier NewWorkCarrier(const DefaultRecords& defaults) {
  WorkCarrier carrier{};
  carrier.read = 1;
  carrier.symbol_rate = defaults.carrier.symbol_rate;
  carrier.polarization = defaults.carrier.polarization;
  carrier.fec = defaults.carrier.fec;
  carrier.frequency = defaults.carrier.frequency;
  return carrier;
}

WorkService NewWorkService(const DefaultRecords& defaults) {
  WorkService service{};
  service.read = service.read_service = 1;
  service.video_pid = defaults.service.video_pid;
  service.audio_pid = defaults.service.audio_pid;
  service.pcr_pid = defaults.service.pcr_pid;
  service.free = defaults.service.free;
  service.type = defaults.service.type;
  return service;
}

std::array<Path, 3> WorkFilePaths(const Path& folder) {
  return {folder / "~001sat.bin", folder / "~001car.bin", folder / "~001ser.bin"};
}

std::array<FileContent, 3> WorkFileContents(const WorkRecords& work, const Path& folder) {
  const auto paths = WorkFilePaths(folder);
  return {FileContent{paths[0], BytesOfRecords(work.satellites)},
          FileContent{paths[1], BytesOfRecords(work.carriers)},
          FileContent{paths[2], BytesOfRecords(work.services)}};
}

}  // namespace vexa
