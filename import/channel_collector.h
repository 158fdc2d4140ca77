// What the readers of other receivers' lists share: carriers and services as such a list describes them
// become work records, in any order; what the receiver cannot have is left out and counted.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

#include "import/list_gatherer.h"
#include "import/list_losses.h"
#include "import/list_names.h"

namespace vexa {

// An orbital position: tenths of a degree, 0 to 1800. Position 0 lies East.
struct OrbitalPosition {
  uint32_t tenths = 0;
  bool east = true;
};
// "19.2E": one decimal, none of them dropped.
std::string PositionName(const OrbitalPosition& position);
// Degrees with or without decimals and a side, "19.2E" or "5w"; digits behind the first decimal are dropped.
// Nothing for other text, and beyond 180 degrees.
std::optional<OrbitalPosition> ParsePosition(std::string_view text);

enum class DeliverySystem { kDvbS, kDvbS2, kOther };

struct ListedCarrier {
  DeliverySystem system = DeliverySystem::kDvbS;
  std::string satellite;  // its name, UTF-8
  OrbitalPosition position;
  uint32_t frequency = 0, symbol_rate = 0;  // MHz, kS/s; the rate below 2^24
  uint32_t polarization = 0, fec = 0;       // as in CarrierRecord
};

struct ListedService {
  std::string name;  // UTF-8, plain
  uint32_t program_number = 0;
  uint32_t type = 0;  // kTv or kRadio; others are left out
  uint32_t video_pid = kNoPid, audio_pid = kNoPid, pcr_pid = kNoPid;
  bool free = true;
};

// To the nearest whole unit, halves up, of which `value` counts thousandths.
inline uint32_t RoundedThousandths(uint32_t value) {
  return static_cast<uint32_t>((uint64_t{value} + 500) / 1000);
}
// What a list gives as a PID: those that no receiver can tune count as none.
inline uint32_t ListedPid(uint32_t pid) {
  return pid < kNoPid ? pid : kNoPid;
}

class ChannelCollector {
 public:
  // `keep_s2`: DVB-S2 carriers are taken like others.
  ChannelCollector(const DefaultRecords& defaults, const ListPages& pages, bool keep_s2, ListLosses& losses);
  // Names the carrier in AddService; nothing: it is left out, and its services go with it.
  std::optional<size_t> AddCarrier(const ListedCarrier& carrier);
  // Counts a carrier of another delivery system, once for each of its names.
  void LeaveOut(const std::string& carrier);
  void AddService(size_t carrier, const ListedService& service);
  void Finish(WorkRecords& work) const { gatherer_.Finish(defaults_, work); }

 private:
  using S2Carrier = std::tuple<uint32_t, bool, uint32_t, uint32_t, uint32_t>;

  const DefaultRecords& defaults_;
  const CodePage& page_;
  const bool keep_s2_;
  ListLosses& losses_;
  ListGatherer gatherer_;
  std::set<S2Carrier> s2_left_out_;
  std::set<std::string> others_left_out_;
};

}  // namespace vexa
