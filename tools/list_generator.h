// Makes channel lists of any size that look like the real ones: satellites at their places, transponders in
// both bands, TV and radio, data services, transponder-only entries, repeated entries. The same seed gives
// the same list on every system.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace vexa {

struct ListSettings {
  size_t records = 300;  // entries: services and transponders
  uint32_t seed = 1;
  bool layout_b = false;       // SatcoDX: format version 04
  bool line_ends = false;      // SatcoDX: 129 bytes a record
  size_t per_transponder = 8;  // services at most
  size_t per_satellite = 0;    // entries; 0: spread over the known satellites
};

struct ListEntry {
  size_t satellite = 0;  // place in the list's own order, so that a name may come twice
  uint32_t frequency = 0, symbol_rate = 0, polarization = 0, fec = 0;  // codes of the database
  char type = 'T';                                                     // T, R, D, _
  std::string name;
  uint32_t video = 0, audio = 0, pcr = 0, id = 0;  // PID 0: none
  bool free = true;
};

struct ListSatellite {
  const char* name;
  uint32_t angle;  // tenths of a degree
  bool west;
};

inline constexpr ListSatellite kListSatellites[] = {
    {"Astra 1KR 1L 1M", 192, false}, {"Hot Bird 13", 130, false},  {"Astra 2E 2F 2G", 282, false},
    {"Astra 3B", 235, false},        {"Eutelsat 16A", 160, false}, {"Eutelsat 9B", 90, false},
    {"Eutelsat 7A", 70, false},      {"Thor 5 6 7", 8, true},      {"Hispasat 30W", 300, true},
    {"Turksat 42E", 420, false},     {"Nilesat 201", 70, true},    {"Badr 4 5 6", 260, false},
    {"Eutelsat 5 West A", 50, true}, {"Amos 3", 40, true},         {"Astra 4A", 48, false},
    {"Astra 5B", 315, false},        {"Eutelsat 36A", 360, false}, {"Eutelsat 21B", 216, false},
    {"Intelsat 10-02", 10, true},    {"Telstar 12", 150, true},    {"Hellas Sat 2", 390, false},
    {"Express AM22", 530, false},    {"Yamal 202", 490, false},    {"Intelsat 904", 600, false},
    {"Intelsat 906", 642, false},    {"ABS 1", 750, false},        {"Thaicom 5", 785, false},
    {"Insat 4A", 830, false},        {"NSS 6", 950, false},        {"AsiaSat 3S", 1055, false}};

inline constexpr size_t kListSatelliteCount = std::size(kListSatellites);

class ListRandom {
 public:
  explicit ListRandom(uint32_t seed) : engine_(seed) {}
  uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(engine_() % limit); }
  bool Percent(uint32_t share) { return Below(100) < share; }

 private:
  std::mt19937 engine_;
};

inline std::string ListServiceName(ListRandom& random, char type) {
  static constexpr const char* kFirst[] = {"Canal",  "Euro",   "Tele",  "Nova",  "Global", "City",
                                           "Alpine", "Baltic", "Sun",   "First", "Orbit",  "Polar",
                                           "Delta",  "Omega",  "Metro", "Vista"};
  static constexpr const char* kTv[] = {"News",     "Sport", "Cinema", "Kids",
                                        "Music TV", "Docu",  "Family", "Shop"};
  static constexpr const char* kRadio[] = {"FM", "Radio", "Classic", "Jazz", "Hits", "Talk", "Gold", "Rock"};
  std::string name =
      std::string(kFirst[random.Below(16)]) + ' ' + (type == 'R' ? kRadio : kTv)[random.Below(8)];
  if (random.Percent(40)) name += ' ' + std::to_string(1 + random.Below(9));
  return name;
}

inline void ListTransponder(ListRandom& random, ListEntry& entry) {
  static constexpr uint32_t kRates[] = {27500, 22000, 30000, 29900, 4340, 6111, 13333, 45000};
  entry.frequency = random.Percent(15) ? 3600 + random.Below(600) : 10714 + random.Below(2026);
  entry.symbol_rate = kRates[random.Below(8)];
  entry.polarization = random.Percent(4) ? 2 + random.Below(2) : random.Below(2);
  entry.fec = random.Below(6);
}

inline void ListService(ListRandom& random, ListEntry& entry, uint32_t& pid) {
  entry.type = random.Percent(3) ? 'D' : random.Percent(25) ? 'R' : 'T';
  entry.name = ListServiceName(random, entry.type);
  entry.video = entry.type == 'R' ? 0 : pid;
  entry.audio = pid + 1;
  entry.pcr = random.Percent(90) ? pid : pid + 2;
  entry.id = random.Percent(5) ? 1 + random.Below(20) : 1 + random.Below(65534);
  entry.free = random.Percent(60);
  pid += 8;
}

inline std::vector<ListEntry> MakeListEntries(const ListSettings& settings) {
  ListRandom random(settings.seed);
  std::vector<ListEntry> entries;
  const size_t share = settings.per_satellite != 0
                           ? settings.per_satellite
                           : (settings.records + kListSatelliteCount - 1) / kListSatelliteCount;
  size_t on_transponder = 0, satellite = 0, on_satellite = 0;
  uint32_t pid = 0;
  ListEntry entry;
  while (entries.size() < settings.records) {
    if (on_satellite == share) {
      ++satellite;
      on_satellite = on_transponder = 0;
    }
    entry.satellite = satellite;
    if (on_transponder == 0) {
      ListTransponder(random, entry);
      on_transponder = 1 + random.Below(static_cast<uint32_t>(settings.per_transponder));
      pid = 33 + random.Below(7000);
    }
    if (random.Percent(2)) {
      entry.type = '_';
      entry.name = "Transponder " + std::to_string(1 + random.Below(120));
    } else {
      ListService(random, entry, pid);
    }
    entries.push_back(entry);
    ++on_satellite;
    // Real lists repeat a service when two sources were joined.
    if (random.Percent(2) && on_satellite < share && entries.size() < settings.records) {
      entries.push_back(entry);
      ++on_satellite;
    }
    --on_transponder;
  }
  return entries;
}

inline const ListSatellite& SatelliteOfEntry(const ListEntry& entry) {
  return kListSatellites[entry.satellite % kListSatelliteCount];
}

inline void PutColumn(std::string& record, size_t offset, size_t width, const std::string& value) {
  record.replace(offset, value.size() < width ? value.size() : width, value, 0, width);
}

inline std::string ZeroFilled(uint32_t value, size_t width) {
  std::string text = std::to_string(value);
  return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

inline std::string SatcodxRecord(const ListEntry& entry, const ListSettings& settings) {
  static constexpr char kPolarizationDigits[] = {'1', '0', '2', '3'};
  static constexpr char kFecDigits[] = {'_', '1', '2', '3', '5', '7'};
  std::string record(128, '_');
  const ListSatellite& satellite = SatelliteOfEntry(entry);
  PutColumn(record, 0, 10, settings.layout_b ? "SATCODX_04" : "SATCODX_03");
  if (!settings.layout_b) PutColumn(record, 10, 18, satellite.name);
  record[28] = entry.type;
  PutColumn(record, 29, 4, "MPG2");
  PutColumn(record, 33, 6, ZeroFilled(entry.frequency, 6));
  record[42] = kPolarizationDigits[entry.polarization];
  PutColumn(record, 43, 8, entry.name);
  PutColumn(record, 51, 4, ZeroFilled(satellite.angle, 4));
  PutColumn(record, 69, 5, ZeroFilled(entry.symbol_rate, 5));
  record[74] = kFecDigits[entry.fec];
  if (entry.type != '_') {
    if (entry.video != 0) PutColumn(record, 75, 4, ZeroFilled(entry.video, 4));
    PutColumn(record, 79, 4, ZeroFilled(entry.audio, 4));
    PutColumn(record, 83, 4, ZeroFilled(entry.pcr, 4));
    PutColumn(record, 87, 5, ZeroFilled(entry.id, 5));
    if (!entry.free) PutColumn(record, 111, 4, "C_0A");
  }
  if (settings.layout_b) {
    PutColumn(record, 115, 12, satellite.name);
  } else if (entry.name.size() > 8) {
    // Blanks, so that the rest continues the name.
    std::string rest = entry.name.substr(8);
    rest.resize(12, ' ');
    PutColumn(record, 115, 12, rest);
  }
  return record + (settings.line_ends ? "\n" : "");
}

inline std::string MakeSatcodxList(const ListSettings& settings) {
  std::string list;
  for (const ListEntry& entry : MakeListEntries(settings)) list += SatcodxRecord(entry, settings);
  return list;
}

inline void PutBig(std::string& record, size_t offset, uint32_t value) {
  record[offset] = static_cast<char>(value >> 8 & 0xFF);
  record[offset + 1] = static_cast<char>(value & 0xFF);
}

inline std::string Dvb2000Record(const ListEntry& entry) {
  static constexpr char kFecBytes[] = {0, 2, 3, 4, 6, 7};
  std::string record(64, '\0');
  PutBig(record, 4, entry.id);
  PutBig(record, 8, entry.frequency);
  PutBig(record, 10, entry.symbol_rate);
  record[12] = kFecBytes[entry.fec];
  record[14] = static_cast<char>(entry.polarization);
  PutBig(record, 16, entry.video);
  PutBig(record, 18, entry.audio);
  PutBig(record, 20, entry.pcr);
  record[27] = entry.type == 'T' ? 1 : entry.type == 'R' ? 2 : 3;
  PutColumn(record, 32, 18, entry.name);
  return record;
}

inline std::string MakeDvb2000List(const ListSettings& settings) {
  std::string list;
  size_t satellite = ~size_t{0};
  for (const ListEntry& entry : MakeListEntries(settings)) {
    if (entry.type == '_') continue;  // every entry of these lists is a service
    if (entry.satellite != satellite) {
      satellite = entry.satellite;
      const ListSatellite& place = SatelliteOfEntry(entry);
      std::string name = place.name;
      for (char& c : name) c = c == '-' ? ' ' : c;
      std::string record(64, '\0');
      PutColumn(record, 32, 32, name + '-' + std::to_string(place.angle) + '\xB0' + (place.west ? 'W' : 'E'));
      list += record;
    }
    list += Dvb2000Record(entry);
  }
  if (list.size() >= 4) list.replace(0, 4, "DVSO");
  return list;
}

inline std::string MakeLyngsatList(const ListSettings& settings) {
  static constexpr const char* kFecs[] = {"Auto", "1/2", "2/3", "3/4", "5/6", "7/8"};
  std::string list;
  const ListEntry* previous = nullptr;
  const auto entries = MakeListEntries(settings);
  for (const ListEntry& entry : entries) {
    const ListSatellite& place = SatelliteOfEntry(entry);
    const bool new_satellite = !previous || previous->satellite != entry.satellite;
    if (new_satellite) {
      list += std::string(":SAT \"") + place.name + "\" " + std::to_string(place.angle / 10) + '.' +
              std::to_string(place.angle % 10) + (place.west ? " W\r\n" : " E\r\n");
    }
    if (new_satellite || entry.type == '_' || previous->frequency != entry.frequency) {
      list += ":TRP " + std::to_string(entry.frequency) + ' ' + std::to_string(entry.symbol_rate) + "S 0 " +
              "HVLR"[entry.polarization] + " 0 " + kFecs[entry.fec] + "\r\n";
    }
    if (entry.type == 'T' || entry.type == 'R') {
      list += ":CHN \"" + entry.name + "\" " + std::to_string(entry.id) + ' ' + entry.type + "\r\n";
    }
    previous = &entry;
  }
  return list;
}

}  // namespace vexa
