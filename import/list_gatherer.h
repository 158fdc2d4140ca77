// For lists that hold their channels in any order: collects satellites by the order of their first carrier,
// the carriers of one satellite and the services of one carrier together, each by its first appearance.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "import/work_files.h"

namespace vexa {

class ListGatherer {
 public:
  // The carrier with these values, made when it is the first: satellites are told apart by angle and side, at
  // angle 0 by name; carriers of one satellite by frequency, polarisation and symbol rate. What else the
  // records say counts at the first appearance. The result names the carrier in AddService.
  size_t AddCarrier(const WorkSatellite& satellite, const WorkCarrier& carrier);
  // `listed_name`: the name as the list has it, however long. False when the carrier holds a service of this
  // program number and name already; it is left out then.
  bool AddService(size_t carrier, const WorkService& service, std::string_view listed_name);
  size_t satellites() const { return satellites_.size(); }
  // Fills `work` (emptied first): links and counts set, carriers named "Carrier%d_S%d", program numbers
  // unique within a carrier, nameless satellites "Satellite%d" by the number of those before, nameless
  // services "Service%d" by their place on the carrier.
  void Finish(const DefaultRecords& defaults, WorkRecords& work) const;

 private:
  struct Carrier {
    WorkCarrier record;
    std::vector<WorkService> services;
    std::set<std::pair<uint32_t, std::string>> listed;  // program numbers and names
  };
  struct Satellite {
    WorkSatellite record;
    std::vector<size_t> carriers;
  };
  std::vector<Satellite> satellites_;
  std::vector<Carrier> carriers_;
  std::map<std::tuple<uint32_t, uint32_t, std::string>, size_t> satellite_places_;
  std::map<std::tuple<size_t, uint32_t, uint32_t, uint32_t>, size_t> carrier_places_;
};

}  // namespace vexa
