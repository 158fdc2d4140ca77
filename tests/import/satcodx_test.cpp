#include "import/satcodx.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "import/list_text.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

WorkRecords Read(const std::string& list, const DefaultRecords& defaults = {}) {
  WorkRecords work;
  ReadSatcodx(BytesOf(list), defaults, work);
  return work;
}

WorkRecords Read(const std::vector<SdxRecord>& records) {
  return Read(SdxList(records));
}

// Names as they are read, less the underscores that fill a column.
template <class Record>
std::string VisibleNames(const std::vector<Record>& records) {
  std::string names = Names(records);
  std::erase(names, '_');
  return names;
}

// Names of every length, cut at every place of the first double space.
TEST(Satcodx, NamesEndAtTheirFirstDoubleSpace) {
  for (size_t length = 0; length <= kNameSize; ++length) {
    for (size_t at = 0; at <= length; ++at) {
      std::string text(length, 'n');
      for (size_t i = 1; i + 1 < at; i += 2) text[i] = ' ';  // single ones end nothing
      if (at < length) text[at] = ' ';
      if (at + 1 < length) text[at + 1] = ' ';
      char name[kNameSize] = {};
      std::copy(text.begin(), text.end(), name);
      const size_t cut = text.find("  ");
      EXPECT_EQ(TrimAtDoubleSpace(name), cut != std::string::npos) << text;
      std::string expected = text.substr(0, cut);
      expected.resize(kNameSize, '\0');
      EXPECT_EQ(std::string(name, kNameSize), expected) << text;
    }
  }
}

TEST(Satcodx, NamesEndAtTheirFirstNul) {
  char name[kNameSize];
  std::memset(name, 'x', kNameSize);
  SetListName(name, std::string_view("AB\0CD", 5));
  EXPECT_EQ(std::string(name, kNameSize), std::string("AB").append(kNameSize - 2, '\0'));
}

TEST(Satcodx, OneRecordFillsEveryColumn) {
  const WorkRecords work = Read({SdxRecord{}});
  ASSERT_EQ(std::tuple(work.satellites.size(), work.carriers.size(), work.services.size()),
            std::tuple(1u, 1u, 1u));
  const WorkSatellite& satellite = work.satellites[0];
  EXPECT_EQ(Name(satellite.name), "ASTRA 1___________");
  EXPECT_EQ(std::tuple(satellite.angle, satellite.east, satellite.read, satellite.carrier_count),
            std::tuple(192u, 0u, 1u, 1u));
  const WorkCarrier& carrier = work.carriers[0];
  EXPECT_EQ(Name(carrier.name), "Carrier1_S1");
  EXPECT_EQ(std::tuple(carrier.frequency, carrier.symbol_rate, carrier.polarization, carrier.service_count,
                       carrier.read),
            std::tuple(11778u, 27500u, kVertical, 1u, 1u));
  const WorkService& service = work.services[0];
  EXPECT_EQ(Name(service.name), "ARTE");
  EXPECT_EQ(std::tuple(service.video_pid, service.audio_pid, service.pcr_pid, service.program_number,
                       service.type, service.free),
            std::tuple(401u, 402u, 401u, 28724u, kTv, 1u));
}

// Marks of the readers stand at fixed bits of fixed words.
TEST(Satcodx, WorkRecordBytes) {
  const WorkRecords work =
      Read({{.position = "0001", .video = "____", .audio = "____", .pcr = "____", .id = "00001"}});
  const Bytes satellite = BytesOfRecords(work.satellites), service = BytesOfRecords(work.services);
  EXPECT_EQ(Bytes(satellite.begin(), satellite.begin() + 8), (Bytes{0, 0, 1, 0, 0, 1, 2, 0}));
  EXPECT_EQ(Bytes(service.begin(), service.begin() + 8), (Bytes{0, 0, 0, 0x60, 1, 0, 0, 0}));
  EXPECT_EQ(Bytes(service.begin() + 28, service.end()), (Bytes{0x00, 0x20, 0x00, 0x78}));
}

TEST(Satcodx, RecordLengthFollowsTheByteAt128) {
  const std::string one = SdxText({}), other = SdxText({.video = "0500"});
  const struct {
    const char* name;
    std::string list;
    size_t services;
  } cases[] = {
      {"nothing", "", 0},
      {"127 bytes", one.substr(0, 127), 0},
      {"128 bytes", one, 0},
      {"129 bytes, line end", one + "\n", 1},
      {"129 bytes, S", one + "S", 1},
      {"two of 128", one + other, 2},
      {"two of 129", one + "\n" + other + "\n", 2},
      {"part record behind", one + other + other.substr(0, 127), 2},
      {"small s counts as a line end", one + "s" + other, 1},
  };
  for (const auto& c : cases) EXPECT_EQ(Read(c.list).services.size(), c.services) << c.name;
}

TEST(Satcodx, NamesOfServicesAndTransponders) {
  const struct {
    const char *version, *type, *name, *rest, *expected;
  } cases[] = {
      {"03", "T", "SPORT___", "ABC_________", "ABCRT"},  // replaces the start
      {"02", "T", "SPORT___", "AB__________", "ABORT"},
      {"03", "T", "RTL TELE", "VISION HD PL", "RTL TELEVISION HD P"},  // appended, the 20th character cut
      {"03", "T", "AB______", "WXYZ________", "WXYZ"},                 // longer than what it replaces
      {"03", "T", "________", "____________", ""},
      {"03", "T", "AB______", "CD  EF  GHIJ", "ABCD"},  // cut before two blanks
      {"03", "T", "TV 5    ", "____________", "TV 5"},
      {"03", "T", "TV5 MON ", "____________", "TV5 MON "},  // a single blank stays
      {"03", "T", "RAI_1___", "____________", "RAI"},
      {"04", "T", "SPORT___", "ABC_________", "SPORT"},  // layout B has its satellite there
      {"04", "T", "12345678", "ABC_________", "12345678"},
      {"03", "_", "TRANSPON", "DER 12      ", "TRANSPONDER 12"},
      {"03", "_", "AB______", "CD__________", "AB______CD_________"},
      {"04", "_", "AB______", "EUTELSAT____", "AB______"},
      {"04", "_", "AB  CD__", "EUTELSAT____", "AB"},
  };
  for (const auto& c : cases) {
    const WorkRecords work = Read({{.version = c.version, .type = c.type, .name = c.name, .rest = c.rest}});
    const bool transponder = *c.type == '_';
    EXPECT_EQ(transponder ? Names(work.carriers) : Names(work.services), c.expected) << c.name << c.rest;
    EXPECT_EQ(work.services.empty(), transponder);
  }
}

SdxRecord At(const char* position, const char* satellite, const char* frequency = "011778") {
  return {.satellite = satellite, .frequency = frequency, .position = position};
}

TEST(Satcodx, SatelliteGrouping) {
  const char* empty = "__________________";
  const struct {
    const char* name;
    std::vector<SdxRecord> records;
    const char* names;
    std::vector<uint32_t> carrier_counts;
  } cases[] = {
      {"equal positions, other names", {At("0192", "A"), At("0192", "B", "011800")}, "A", {2}},
      {"another between",
       {At("0192", "A"), At("0130", "B", "011800"), At("0192", "A", "011900")},
       "A|B|A",
       {1, 1, 1}},
      {"other positions, equal names", {At("0192", "A"), At("2240", "A", "011800")}, "A|A", {1, 1}},
      {"position 0 goes by name",
       {At("0000", "A"), At("0000", "A", "011800"), At("0000", "B", "011900")},
       "A|B",
       {2, 1}},
      {"position 0 joins by name", {At("0192", "A"), At("____", "A", "011800")}, "A", {2}},
      {"unnamed", {At("0192", empty), At("0130", empty, "011800")}, "Satellite0|Satellite1", {1, 1}},
      {"unnamed without position",
       {At("0000", empty), At("0000", empty, "011800"), At("0000", empty, "011900")},
       "Satellite0|Satellite1|Satellite2",
       {1, 1, 1}},
      {"the carrier is not asked for its satellite", {At("0192", "A"), At("0130", "B")}, "A|B", {1, 0}},
      {"position of 4096 and more wraps", {At("4096", "A"), At("8192", "A", "011800")}, "A", {2}},
  };
  for (const auto& c : cases) {
    const WorkRecords work = Read(c.records);
    EXPECT_EQ(VisibleNames(work.satellites), c.names) << c.name;
    std::vector<uint32_t> counts;
    for (const WorkSatellite& satellite : work.satellites) counts.push_back(satellite.carrier_count);
    EXPECT_EQ(counts, c.carrier_counts) << c.name;
  }
}

TEST(Satcodx, RecordWithoutTransponderMakesItsSatelliteOnly) {
  for (const char* rate : {"_____", "00000"}) {
    const WorkRecords work = Read({{.symbol_rate = rate}, At("0130", "HOTBIRD")});
    EXPECT_EQ(work.satellites.size(), 2u) << rate;
    EXPECT_EQ(work.satellites[0].carrier_count, 0u);
    EXPECT_EQ(work.satellites[1].first_carrier, 0u);
    EXPECT_EQ(work.carriers.size(), 1u);
  }
  EXPECT_EQ(Read({{.symbol_rate = "ABCDE"}}).carriers.size(), 1u);
}

TEST(Satcodx, Fec) {
  // Digits behind the column make the number longer; only its low three bits count.
  const struct {
    const char *fec, *video, *audio;
    uint32_t code;
  } cases[] = {{"_", "0401", "____", 0}, {"1", "____", "____", 1}, {"2", "____", "____", 2},
               {"3", "____", "____", 3}, {"4", "____", "____", 4}, {"5", "____", "____", 4},
               {"6", "____", "____", 0}, {"7", "____", "____", 5}, {"8", "____", "____", 0},
               {"9", "____", "____", 1}, {"3", "0004", "____", 4}, {"5", "0005", "____", 5},
               {"x", "0401", "____", 0}, {"-", "5___", "____", 4}, {" ", "7___", "____", 5},
               {"9", "9999", "9994", 2}, {"4", "2949", "67301", 4}};  // the last wraps at 2^32
  for (const auto& c : cases) {
    const WorkRecords work =
        Read({{.fec = c.fec, .video = c.video, .audio = std::string(c.audio, 4), .pcr = c.audio + 4}});
    EXPECT_EQ(work.carriers.at(0).fec, c.code) << c.fec << c.video << c.audio;
  }
}

TEST(Satcodx, Polarization) {
  const std::pair<const char*, uint32_t> cases[] = {{"0", kVertical}, {"1", kHorizontal}, {"2", kLeft},
                                                    {"3", kRight},    {"4", kHorizontal}, {"9", kHorizontal},
                                                    {"_", kVertical}};
  for (const auto& [digit, code] : cases)
    EXPECT_EQ(Read({{.polarization = digit}}).carriers.at(0).polarization, code) << digit;
}

TEST(Satcodx, DefaultsFillWhatTheListLacks) {
  DefaultRecords defaults;
  defaults.satellite.east = 1;
  defaults.carrier.polarization = kRight;
  defaults.carrier.fec = 5;
  const WorkRecords work = Read(SdxList({{.polarization = "7", .fec = "_"}}), defaults);
  EXPECT_EQ(work.satellites[0].east, 1u);
  EXPECT_EQ(work.carriers[0].polarization, kRight);
  EXPECT_EQ(work.carriers[0].fec, 5u);
}

TEST(Satcodx, DuplicatesAndProgramNumbers) {
  struct Row {
    const char *type, *video, *audio, *id;
  };
  const struct {
    const char* name;
    std::vector<Row> rows;
    std::vector<uint32_t> ids;
  } cases[] = {
      {"equal ids", {{"T", "0001", "1", "00007"}, {"T", "0002", "1", "00007"}}, {7, 8}},
      {"a raised id meets the first entry unseen",
       {{"T", "0001", "1", "00008"}, {"T", "0002", "1", "00007"}, {"T", "0003", "1", "00007"}},
       {8, 7, 8}},
      {"an empty id column is 0", {{"T", "0001", "1", "_____"}, {"T", "0002", "1", "_____"}}, {0, 1}},
      {"id of 65536 and more wraps", {{"T", "0001", "1", "65537"}}, {1}},
      {"equal video", {{"T", "0001", "1", "00001"}, {"T", "0001", "2", "00002"}}, {1}},
      {"video 0, other audio", {{"R", "0000", "1", "00001"}, {"R", "0000", "2", "00002"}}, {1, 2}},
      {"video 0, equal audio", {{"R", "0000", "1", "00001"}, {"R", "0000", "1", "00002"}}, {1}},
      {"no video, other audio: dropped", {{"R", "____", "1", "00001"}, {"R", "____", "2", "00002"}}, {1}},
      {"a dropped id is not taken",
       {{"T", "0001", "1", "00001"}, {"T", "0001", "1", "00002"}, {"T", "0002", "1", "00002"}},
       {1, 2}},
      {"nothing is equal to no previous", {{"R", "0000", "0", "00001"}}, {1}},
      {"data services are nobody's previous",
       {{"T", "0001", "1", "00001"}, {"D", "0002", "1", "00001"}, {"T", "0001", "1", "00001"}},
       {1}},
      {"not adjacent",
       {{"T", "0001", "1", "00001"}, {"T", "0002", "1", "00002"}, {"T", "0001", "1", "00003"}},
       {1, 2, 3}},
  };
  for (const auto& c : cases) {
    std::vector<SdxRecord> records;
    for (const Row& row : c.rows)
      records.push_back({.type = row.type, .video = row.video, .audio = row.audio, .id = row.id});
    const WorkRecords work = Read(records);
    EXPECT_EQ(Ids(work), c.ids) << c.name;
    EXPECT_EQ(work.carriers.at(0).service_count, c.ids.size()) << c.name;
  }
}

// The same numbers as from a walk over all that the carrier has: one that is taken is raised and looked for
// again from the second entry on.
TEST(Satcodx, ProgramNumbersAsAWalkGivesThem) {
  std::mt19937 random(1);
  for (int round = 0; round < 100; ++round) {
    std::vector<SdxRecord> records(1 + random() % 60);
    std::vector<uint32_t> expected;
    size_t carrier_start = 0;
    for (size_t n = 0; n < records.size(); ++n) {
      uint32_t id = (65520 + random() % 40) % 65536;
      records[n].video = Format("%04u", static_cast<unsigned>(n));
      records[n].id = Format("%05u", id);
      if (n >= records.size() / 2) records[n].frequency = "012000";
      if (n == records.size() / 2) carrier_start = n;
      for (size_t i = carrier_start; i < n;) {
        const bool taken = expected[i] == id;
        if (taken) id = (id + 1) % 65536;
        i = taken ? carrier_start + 1 : i + 1;
      }
      expected.push_back(id);
    }
    ASSERT_EQ(Ids(Read(records)), expected) << round;
  }
}

TEST(Satcodx, CarriersOfServiceAndTransponderRecords) {
  const SdxRecord service, transponder{.type = "_", .name = "TP______"};
  // A transponder record is always a carrier of its own; a service behind it with equal values joins it.
  WorkRecords work = Read({service, transponder, transponder, service});
  EXPECT_EQ(VisibleNames(work.carriers), "Carrier1S1|TP|TP");
  EXPECT_EQ(work.carriers[2].service_count, 1u);
  EXPECT_EQ(work.carriers[2].first_service, 1u);
  EXPECT_EQ(work.services[1].carrier_index, 2u);
  EXPECT_EQ(work.satellites[0].carrier_count, 3u);
  // A data service makes its carrier and nothing else.
  work = Read({{.type = "D", .video = "0999"}});
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1");
  EXPECT_TRUE(work.services.empty());
  // Only symbol rate, frequency and polarisation tell carriers apart.
  work = Read({service,
               {.fec = "1", .video = "0500"},
               {.polarization = "1"},
               {.polarization = "1", .symbol_rate = "27501"},
               {.polarization = "1", .position = "0130", .symbol_rate = "27501"},
               {.frequency = "011779", .position = "0130", .video = "0000", .audio = "0000"}});
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1|Carrier2_S1|Carrier3_S1|Carrier1_S2");
  EXPECT_EQ(work.carriers[0].service_count, 2u);
  EXPECT_EQ(work.carriers[3].satellite_index, 1u);
  EXPECT_EQ(work.carriers[3].service_count, 1u) << "0 and 0 are no duplicate of a carrier before";
}

TEST(Satcodx, FreeOnlyWithFourUnderscores) {
  const std::pair<const char*, uint32_t> cases[] = {{"____", 1}, {"___1", 0}, {"    ", 0}, {"0000", 0}};
  for (const auto& [access, free] : cases)
    EXPECT_EQ(Read({{.access = access}}).services.at(0).free, free) << access;
}

TEST(Satcodx, LayoutIsTheFirstRecords) {
  const WorkRecords work = Read({{.version = "04", .rest = "HOTBIRD_____"},
                                 {.satellite = "IGNORED", .position = "0130", .rest = "EUTELSAT____"},
                                 {.satellite = "IGNORED", .position = "0070", .rest = "____________"}});
  EXPECT_EQ(Names(work.satellites), "HOTBIRD_____|EUTELSAT____|Satellite2");
}

TEST(Satcodx, NumbersLeaveOutBlanksAndSigns) {
  const WorkRecords work = Read({{.frequency = "\r 1177", .position = " 192", .symbol_rate = "+2750"}});
  EXPECT_EQ(work.carriers[0].frequency, 1177u);
  EXPECT_EQ(work.carriers[0].symbol_rate, 2750u);
  EXPECT_EQ(work.satellites[0].angle, 192u);
}

// A carrier whose 65,536 numbers are all taken must not hang the reader.
TEST(Satcodx, ManyServicesOnOneCarrier) {
  const std::string pair = SdxText({.video = "0001", .id = "0"}) + SdxText({.video = "0002", .id = "0"});
  std::string list;
  for (int i = 0; i < 35000; ++i) list += pair;
  const WorkRecords work = Read(list);
  EXPECT_EQ(work.services.size(), 70000u);
  EXPECT_EQ(work.carriers[0].service_count, 70000u - 65536u);
  EXPECT_EQ(work.services[65535].program_number, 65535u);
}

TEST(Satcodx, ProgressEndsAtTheRecordCount) {
  uint64_t total = 0, last = 0;
  Progress progress;
  progress.range = [&](uint64_t value) { total = value; };
  progress.position = [&](uint64_t value) { last = value; };
  WorkRecords work;
  ReadSatcodx(BytesOf(SdxList(std::vector<SdxRecord>(600))), DefaultRecords{}, work, progress);
  EXPECT_EQ(total, 600u);
  EXPECT_EQ(last, 600u);
}

}  // namespace
}  // namespace vexa
