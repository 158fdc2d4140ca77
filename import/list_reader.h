// What every list reader does with what it has read: satellites, their carriers and their services, in the
// order of the list, into the work files.
#pragma once

#include <cstdint>

#include "import/list_losses.h"
#include "import/list_names.h"
#include "import/list_text.h"
#include "import/work_files.h"

namespace vexa {

struct ListReader {
  ListReader(WorkRecords& files, const DefaultRecords& defaults)
      : work(files),
        new_satellite(NewWorkSatellite(defaults)),
        new_carrier(NewWorkCarrier(defaults)),
        new_service(NewWorkService(defaults)) {}
  // Names are converted by `converter`; what their page lacks is counted in `losses` where there are any.
  ListReader(WorkRecords& files, const DefaultRecords& defaults, NameConverter converter,
             ListLosses* list_losses)
      : ListReader(files, defaults) {
    names = converter;
    losses = list_losses;
  }

  WorkRecords& work;
  const WorkSatellite new_satellite;
  const WorkCarrier new_carrier;
  const WorkService new_service;
  uint32_t carriers_of_satellite = 0;  // the current one
  WorkService previous_service{};      // the last that was added, as long as the reader keeps it
  ServiceIds ids;                      // of the current carrier
  NameConverter names;
  ListLosses* losses = nullptr;
  size_t lacking = 0;  // characters of the name that was set last; they count when its record is added

  uint32_t satellites() const { return static_cast<uint32_t>(work.satellites.size()); }
  uint32_t carriers() const { return static_cast<uint32_t>(work.carriers.size()); }

  // A record's name from the list's text.
  void SetListedName(char (&field)[kNameSize], std::string_view name) {
    lacking = 0;
    names.SetName(field, name, lacking);
  }
  // The same of one that stands in the field already.
  void ConvertName(char (&field)[kNameSize]) {
    lacking = 0;
    names.Convert(field, lacking);
  }
  void CountLacking() {
    if (losses) losses->lacking += lacking;
    lacking = 0;
  }

  // Each becomes the current one; links and counts are set here.
  void Add(const WorkSatellite& satellite) {
    work.satellites.push_back(satellite);
    work.satellites.back().first_carrier = carriers() & 0xFFFF;
    CountLacking();
    carriers_of_satellite = 0;
  }
  void Add(const WorkCarrier& carrier) {
    work.carriers.push_back(carrier);
    work.carriers.back().satellite_index = (satellites() - 1) & 0x3FF;
    work.carriers.back().first_service = static_cast<uint32_t>(work.services.size()) & 0xFFFF;
    CountLacking();
    ++carriers_of_satellite;
    work.satellites.back().carrier_count = carriers_of_satellite & 0xFFFF;
    ids.Clear();
  }
  void Add(const WorkService& service) {
    work.services.push_back(service);
    CountLacking();
    WorkCarrier& carrier = work.carriers.back();
    carrier.service_count = (carrier.service_count + 1) & 0xFFFF;
    previous_service = work.services.back();
    ids.Add(service.program_number);
  }
  // "Carrier%d_S%d" for the carrier that comes next.
  void NameByNumber(WorkCarrier& carrier) {
    lacking = 0;
    SetCarrierNumberName(carrier.name, carriers_of_satellite + 1, satellites());
  }
};

}  // namespace vexa
