#include "core/complete.h"

#include <algorithm>
#include <array>

#include "core/edit.h"
#include "core/match.h"
#include "core/rules.h"

namespace vexa {

namespace {

// Orbital positions of television satellites, tenths of a degree.
constexpr uint16_t kEast[] = {
    19,   28,   30,   31,   48,   49,   50,   70,   90,   100,  130,  160,  170,  192,  200,  201,  215,
    216,  235,  255,  259,  260,  282,  285,  305,  308,  310,  315,  330,  331,  360,  380,  382,  390,
    400,  420,  425,  445,  450,  451,  460,  475,  480,  490,  500,  505,  515,  520,  525,  530,  549,
    560,  570,  585,  600,  620,  642,  650,  660,  685,  705,  720,  721,  740,  744,  750,  765,  785,
    800,  820,  830,  848,  850,  852,  865,  875,  880,  900,  915,  922,  935,  950,  965,  973,  980,
    1005, 1030, 1035, 1055, 1080, 1082, 1100, 1105, 1130, 1155, 1160, 1180, 1181, 1191, 1195, 1200, 1220,
    1222, 1240, 1250, 1280, 1285, 1300, 1320, 1340, 1360, 1380, 1400, 1420, 1440, 1450, 1460, 1500, 1505,
    1520, 1540, 1560, 1590, 1600, 1620, 1640, 1660, 1690, 1720, 1800};
constexpr uint16_t kWest[] = {
    8,    10,   30,   40,   50,   70,   73,   80,   110,  125,  140,  150,  180,  200,  220,  245,  248,
    275,  295,  300,  315,  345,  375,  405,  430,  431,  450,  475,  500,  530,  555,  580,  610,  615,
    630,  650,  670,  700,  718,  720,  727,  740,  750,  770,  780,  790,  810,  820,  830,  840,  850,
    870,  872,  890,  910,  931,  950,  970,  990,  992,  1010, 1030, 1050, 1051, 1073, 1100, 1111, 1130,
    1149, 1168, 1170, 1188, 1190, 1210, 1230, 1250, 1270, 1290, 1310, 1330, 1350, 1390, 1770};

// Tenths to the nearest known position.
template <size_t N>
uint32_t DistanceTo(const uint16_t (&known)[N], uint32_t tenths) {
  uint32_t nearest = ~0u;
  for (const uint32_t one : known) nearest = std::min(nearest, one > tenths ? one - tenths : tenths - one);
  return nearest;
}

struct Band {
  uint32_t lowest, highest;  // MHz
  uint32_t type, frequency1, frequency2;
};
constexpr std::array<Band, 3> kBands = {Band{950, 2150, kLnbIfInput, 0, 0},
                                        Band{3000, 4200, kLnbNormal, 5150, 0},
                                        Band{10700, 12750, kLnbUniversal, 9750, 10600}};

// How many of the satellite's carriers lie in each band.
std::array<size_t, kBands.size()> CarriersByBand(const Satellite& satellite) {
  std::array<size_t, kBands.size()> counts{};
  for (const Carrier* carrier : satellite.carriers) {
    for (size_t i = 0; i < kBands.size(); ++i) {
      const uint32_t frequency = carrier->record.frequency;
      if (frequency >= kBands[i].lowest && frequency <= kBands[i].highest) ++counts[i];
    }
  }
  return counts;
}

}  // namespace

size_t NumberPositions(StaticDatabase& database) {
  size_t numbered = 0, left = 0;
  for (Satellite* satellite : database.satellites) {
    if (IsUnusedPlace(*satellite)) continue;
    if (numbered == static_cast<size_t>(kHighestPosition)) {
      ++left;
    } else {
      satellite->record.position = ++numbered & 0xFF;
    }
  }
  return left;
}

std::vector<size_t> SetKnownSides(StaticDatabase& database) {
  std::vector<size_t> unknown;
  for (size_t i = 0; i < database.satellites.size(); ++i) {
    Satellite& satellite = *database.satellites[i];
    if (IsUnusedPlace(satellite) || satellite.record.angle == 0) continue;
    if (const auto east = KnownSide(satellite.record.angle)) {
      satellite.record.east = *east;
    } else {
      unknown.push_back(i);
    }
  }
  return unknown;
}

void SetLnbsByBand(StaticDatabase& database, const DefaultRecords& defaults) {
  std::array<size_t, kBands.size()> all{}, index{};
  for (const Satellite* satellite : database.satellites) {
    const auto counts = CarriersByBand(*satellite);
    for (size_t i = 0; i < all.size(); ++i) all[i] += counts[i];
  }
  uint32_t made = 0;
  for (size_t i = 0; i < kBands.size(); ++i) {
    if (all[i] == 0) continue;
    LnbRecord& lnb = database.lnbs[made] = defaults.lnb;
    lnb.type = kBands[i].type & 3;
    lnb.frequency1 = kBands[i].frequency1 & 0x3FFF;
    lnb.frequency2 = kBands[i].frequency2 & 0x3FFF;
    index[i] = made++;
  }
  database.lnb_count = std::max(database.lnb_count, made);
  for (Satellite* satellite : database.satellites) {
    const auto counts = CarriersByBand(*satellite);
    const auto* most = std::max_element(counts.begin(), counts.end());
    if (*most > 0) satellite->record.lnb_index = index[static_cast<size_t>(most - counts.begin())] & 0xFF;
  }
}

void AddEmptySlots(StaticDatabase& database, const DefaultRecords& defaults) {
  SatelliteRecord empty = defaults.satellite;
  for (unsigned number = 1; database.satellites.size() < kMaximumSatellites; ++number) {
    SetName(empty.name, EmptySlotName(number));
    PutSatellite(database, empty, database.satellites.size());
  }
}

std::vector<std::string> Complete(StaticDatabase& database, const Completion& wanted, bool says_sides,
                                  const DefaultRecords& defaults) {
  std::vector<std::string> warnings;
  if (wanted.number_positions) {
    if (const size_t left = NumberPositions(database); left > 0)
      warnings.push_back(Format("%zu satellites keep their position: there are %d", left,
                                static_cast<int>(kHighestPosition)));
  }
  if (wanted.lnbs_by_band) SetLnbsByBand(database, defaults);
  if (wanted.empty_slots) AddEmptySlots(database, defaults);
  if (wanted.sides && !says_sides) {
    if (const auto unknown = SetKnownSides(database); !unknown.empty())
      warnings.push_back(Format("East or West of %zu satellites is not known, the first is satellite %zu",
                                unknown.size(), unknown.front() + 1));
  }
  return warnings;
}

std::optional<bool> KnownSide(uint32_t tenths) {
  constexpr uint32_t kFarthest = 2;
  const uint32_t east = DistanceTo(kEast, tenths), west = DistanceTo(kWest, tenths);
  if (std::min(east, west) > kFarthest || east == west) return std::nullopt;
  return east < west;
}

}  // namespace vexa
