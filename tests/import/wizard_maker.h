// Work records for the tests of the wizard and its steps.
#pragma once

#include "import/wizard.h"
#include "tests/support/list_maker.h"

namespace vexa {

struct CarrierSketch {
  uint32_t frequency, polarization;
};

// Satellites A, B and so on with the given carriers; each carrier has four services: free TV, scrambled TV,
// free radio, scrambled radio. Carriers are named by their place, services by carrier and kind.
inline WorkRecords MakeWork(const std::vector<std::vector<CarrierSketch>>& satellites) {
  WorkRecords work;
  for (const auto& carriers : satellites) {
    WorkSatellite satellite{};
    SetName(satellite.name, std::string(1, static_cast<char>('A' + work.satellites.size())));
    satellite.first_carrier = work.carriers.size() & 0xFFFF;
    satellite.carrier_count = carriers.size() & 0xFFFF;
    work.satellites.push_back(satellite);
    for (const CarrierSketch& sketch : carriers) {
      WorkCarrier carrier{};
      SetName(carrier.name, std::to_string(work.carriers.size()));
      carrier.frequency = sketch.frequency;
      carrier.polarization = sketch.polarization & 3;
      carrier.satellite_index = (work.satellites.size() - 1) & 0x3FF;
      carrier.first_service = work.services.size() & 0xFFFF;
      carrier.service_count = 4;
      for (uint32_t i = 0; i < 4; ++i) {
        WorkService service{};
        SetName(service.name, std::to_string(work.carriers.size()) + "tTrR"[i]);
        service.carrier_index = work.carriers.size() & 0xFFFF;
        service.type = i < 2 ? 1 : 2;
        service.free = i % 2 == 0;
        work.services.push_back(service);
      }
      work.carriers.push_back(carrier);
    }
  }
  return work;
}

// A: C band horizontal, Ku vertical, Ku horizontal. B: C vertical at the limit. C: Ku left.
inline WorkRecords MakeWork() {
  return MakeWork({{{4000, 0}, {11000, 1}, {12000, 0}}, {{5000, 1}}, {{5001, 2}}});
}

}  // namespace vexa
