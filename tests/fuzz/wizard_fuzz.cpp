// The wizard over damaged work files: choices at random, then the compaction, whose ranges must lie in the
// files and whose result must open or be refused. The first byte says how the rest is divided, the next eight
// are choices.
#include <cstdlib>
#include <cstring>

#include "core/bin_file.h"
#include "import/build_bin.h"
#include "import/wizard.h"

namespace {

using namespace vexa;

template <class Record>
std::vector<Record> TakeRecords(std::span<const uint8_t>& bytes, size_t share) {
  std::vector<Record> records(std::min(share, bytes.size()) / sizeof(Record));
  if (records.empty()) return records;
  std::memcpy(records.data(), bytes.data(), records.size() * sizeof(Record));
  bytes = bytes.subspan(records.size() * sizeof(Record));
  return records;
}

void Choose(Wizard& wizard, const uint8_t* choices) {
  const size_t satellites = wizard.work.satellites.size(), services = wizard.work.services.size();
  if (choices[0] & 1) ChooseEverySatellite(wizard, true);
  if (satellites != 0) ChooseSatellite(wizard, choices[1] % satellites, choices[0] & 2);
  wizard.carrier_options = choices[2] & 31;
  BeginCarrierStep(wizard);
  const auto option = static_cast<uint8_t>(1u << choices[3] % 5);
  SetCarrierOption(wizard, std::nullopt, static_cast<CarrierOption>(option), choices[0] & 4);
  if (satellites != 0)
    SetCarrierOption(wizard, choices[4] % satellites, static_cast<CarrierOption>(option), choices[0] & 8);
  wizard.service_options = choices[5] & 31;
  BeginServiceStep(wizard);
  SetServiceOption(wizard, std::nullopt, static_cast<ServiceOption>(option), choices[0] & 16);
  if (services != 0) ChooseService(wizard, choices[6] % services, choices[0] & 32);
  TotalSelectedCarriersText(wizard);
  TotalSelectedServicesText(wizard);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 9) return 0;
  std::span<const uint8_t> rest(data + 9, size - 9);
  WorkRecords work;
  work.satellites = TakeRecords<WorkSatellite>(rest, rest.size() * (data[0] & 15) / 32);
  work.carriers = TakeRecords<WorkCarrier>(rest, rest.size() * (data[0] >> 4) / 16);
  work.services = TakeRecords<WorkService>(rest, rest.size());
  Wizard wizard(work);
  Choose(wizard, data + 1);
  const bool only_services = IsEverySatelliteChosen(wizard) && (wizard.carrier_options & kAllCarriers) != 0;
  CompactWorkRecords(wizard);
  for (size_t i = 0; i < work.carriers.size(); ++i) {
    if (work.carriers[i].first_service + work.carriers[i].service_count > work.services.size()) std::abort();
  }
  for (size_t i = 0; i < work.satellites.size() && !only_services; ++i) {
    if (work.satellites[i].first_carrier + work.satellites[i].carrier_count > work.carriers.size())
      std::abort();
  }
  Context context;
  context.messages.tell = [](const Message&) {};
  Document document;
  const Bytes stream = BuildBinFromWorkFiles(work, DefaultRecords{});
  if (OpenBinBytes(context, stream, document) && !CheckLinks(*document.sdbs.at(0).database).empty())
    std::abort();
  return 0;
}
