#include "import/satcodx.h"

#include <gtest/gtest.h>

#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

WorkFiles Read(const std::string& list) {
  WorkFiles work;
  ReadSatcodx(BytesOf(list), DefaultRecords{}, work);
  return work;
}

WorkFiles Read(const std::vector<SdxRecord>& records) {
  return Read(SdxList(records));
}

TEST(Satcodx, OneRecordFillsEveryColumn) {
  const WorkFiles work = Read({SdxRecord{}});
  ASSERT_EQ(work.satellites.size(), 1u);
  ASSERT_EQ(work.carriers.size(), 1u);
  ASSERT_EQ(work.services.size(), 1u);
  const WorkSatellite& satellite = work.satellites[0];
  EXPECT_EQ(Name(satellite.name), "ASTRA 1___________");
  EXPECT_EQ(satellite.angle, 192u);
  EXPECT_EQ(satellite.east, 0u);  // the default's
  EXPECT_EQ(satellite.read, 1u);
  EXPECT_EQ(satellite.carrier_count, 1u);
  const WorkCarrier& carrier = work.carriers[0];
  EXPECT_EQ(Name(carrier.name), "Carrier1_S1");
  EXPECT_EQ(carrier.frequency, 11778u);
  EXPECT_EQ(carrier.symbol_rate, 27500u);
  EXPECT_EQ(carrier.polarization, kVertical);
  EXPECT_EQ(carrier.service_count, 1u);
  EXPECT_EQ(carrier.read, 1u);
  const WorkService& service = work.services[0];
  EXPECT_EQ(Name(service.name), "ARTE");
  EXPECT_EQ(service.video_pid, 401u);
  EXPECT_EQ(service.audio_pid, 402u);
  EXPECT_EQ(service.pcr_pid, 401u);
  EXPECT_EQ(service.program_number, 28724u);
  EXPECT_EQ(service.type, kTv);
  EXPECT_EQ(service.free, 1u);
  EXPECT_EQ(service.read, 1u);
  EXPECT_EQ(service.read_service, 1u);
}

// Marks of the readers stand at fixed bits of fixed words.
TEST(Satcodx, WorkRecordBytes) {
  SdxRecord record;
  record.video = record.audio = record.pcr = "____";
  record.id = "00001";
  record.position = "0001";
  const WorkFiles work = Read({record});
  const Bytes satellite = BytesOfRecords(work.satellites), service = BytesOfRecords(work.services);
  EXPECT_EQ(Bytes(satellite.begin(), satellite.begin() + 8), (Bytes{0, 0, 1, 0, 0, 1, 2, 0}));
  EXPECT_EQ(Bytes(service.begin(), service.begin() + 8), (Bytes{0, 0, 0, 0x60, 1, 0, 0, 0}));
  EXPECT_EQ(Bytes(service.begin() + 28, service.end()), (Bytes{0x00, 0x20, 0x00, 0x78}));
}

struct CountCase {
  const char* name;
  std::string list;
  size_t services;
};

TEST(Satcodx, RecordLengthFollowsTheByteAt128) {
  const std::string one = SdxText({});
  std::string other = one;
  other.replace(75, 4, "0500");
  const CountCase cases[] = {
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
  for (const CountCase& c : cases) EXPECT_EQ(Read(c.list).services.size(), c.services) << c.name;
}

struct NameCase {
  const char *version, *name, *rest, *expected;
};

TEST(Satcodx, ServiceNames) {
  const NameCase cases[] = {
      {"03", "SPORT___", "ABC_________", "ABCRT"},  // replaces the start
      {"02", "SPORT___", "____________", "SPORT"},
      {"03", "RTL TELE", "VISION HD PL", "RTL TELEVISION HD P"},  // appended, the 20th character cut
      {"03", "AB______", "WXYZ________", "WXYZ"},                 // longer than what it replaces
      {"03", "________", "____________", ""},
      {"03", "AB______", "CD  EF  GHIJ", "ABCD"},  // cut before two blanks
      {"03", "TV 5    ", "____________", "TV 5"},
      {"03", "TV5 MON ", "____________", "TV5 MON "},  // a single blank stays
      {"03", "RAI_1___", "____________", "RAI"},
      {"04", "SPORT___", "ABC_________", "SPORT"},  // layout B has its satellite there
      {"04", "12345678", "ABC_________", "12345678"},
  };
  for (const NameCase& c : cases) {
    SdxRecord record;
    record.version = c.version;
    record.name = c.name;
    record.rest = c.rest;
    EXPECT_EQ(Names(Read({record}).services), c.expected) << c.name << '/' << c.rest;
  }
}

TEST(Satcodx, TransponderNames) {
  const NameCase cases[] = {
      {"03", "TRANSPON", "DER 12      ", "TRANSPONDER 12"},
      {"03", "AB______", "CD__________", "AB______CD_________"},
      {"04", "AB______", "EUTELSAT____", "AB______"},
      {"04", "AB  CD__", "EUTELSAT____", "AB"},
  };
  for (const NameCase& c : cases) {
    SdxRecord record;
    record.type = "_";
    record.version = c.version;
    record.name = c.name;
    record.rest = c.rest;
    const WorkFiles work = Read({record});
    EXPECT_EQ(Names(work.carriers), c.expected);
    EXPECT_TRUE(work.services.empty());
  }
}

SdxRecord At(const char* position, const char* satellite, const char* frequency = "011778",
             const char* video = "0401") {
  SdxRecord record;
  record.position = position;
  record.satellite = satellite;
  record.frequency = frequency;
  record.video = video;
  return record;
}

struct SatelliteCase {
  const char* name;
  std::vector<SdxRecord> records;
  const char* names;
  std::vector<uint32_t> carrier_counts;
};

TEST(Satcodx, SatelliteGrouping) {
  const char* empty = "__________________";
  const SatelliteCase cases[] = {
      {"equal positions, other names",
       {At("0192", "A"), At("0192", "B", "011800")},
       "A_________________",
       {2}},
      {"another between",
       {At("0192", "A"), At("0130", "B", "011800"), At("0192", "A", "011900")},
       "A_________________|B_________________|A_________________",
       {1, 1, 1}},
      {"other positions, equal names",
       {At("0192", "A"), At("0193", "A", "011800")},
       "A_________________|A_________________",
       {1, 1}},
      {"position 0 goes by name",
       {At("0000", "A"), At("0000", "A", "011800"), At("0000", "B", "011900")},
       "A_________________|B_________________",
       {2, 1}},
      {"position 0 joins by name", {At("0192", "A"), At("____", "A", "011800")}, "A_________________", {2}},
      {"unnamed", {At("0192", empty), At("0130", empty, "011800")}, "Satellite0|Satellite1", {1, 1}},
      {"unnamed without position",
       {At("0000", empty), At("0000", empty, "011800"), At("0000", empty, "011900")},
       "Satellite0|Satellite1|Satellite2",
       {1, 1, 1}},
      {"the carrier is not asked for its satellite",
       {At("0192", "A"), At("0130", "B", "011778", "0500")},
       "A_________________|B_________________",
       {1, 0}},
      {"position of 4096 and more wraps",
       {At("4096", "A"), At("8192", "A", "011800")},
       "A_________________",
       {2}},
  };
  for (const SatelliteCase& c : cases) {
    const WorkFiles work = Read(c.records);
    EXPECT_EQ(Names(work.satellites), c.names) << c.name;
    std::vector<uint32_t> counts;
    for (const WorkSatellite& satellite : work.satellites) counts.push_back(satellite.carrier_count);
    EXPECT_EQ(counts, c.carrier_counts) << c.name;
  }
}

TEST(Satcodx, RecordWithoutTransponderMakesItsSatelliteOnly) {
  for (const char* rate : {"_____", "00000"}) {
    SdxRecord record;
    record.symbol_rate = rate;
    SdxRecord next = At("0130", "HOTBIRD");
    const WorkFiles work = Read({record, next});
    EXPECT_EQ(work.satellites.size(), 2u) << rate;
    EXPECT_EQ(work.satellites[0].carrier_count, 0u);
    EXPECT_EQ(work.satellites[1].first_carrier, 0u);
    EXPECT_EQ(work.carriers.size(), 1u);
  }
  SdxRecord letters;
  letters.symbol_rate = "ABCDE";
  EXPECT_EQ(Read({letters}).carriers.size(), 1u);
}

struct CodeCase {
  const char* column;
  const char* next;  // the four characters behind
  uint32_t code;
};

TEST(Satcodx, Fec) {
  // 0401 behind the digit makes the number longer; only its low three bits count.
  const CodeCase cases[] = {{"_", "0401", 0}, {"1", "____", 1}, {"2", "____", 2}, {"3", "____", 3},
                            {"4", "____", 4}, {"5", "____", 4}, {"6", "____", 0}, {"7", "____", 5},
                            {"8", "____", 0}, {"9", "____", 1}, {"3", "0004", 4}, {"5", "0005", 5},
                            {"x", "0401", 0}, {"-", "5___", 4}, {" ", "7___", 5}};
  for (const CodeCase& c : cases) {
    SdxRecord record;
    record.fec = c.column;
    record.video = c.next;
    record.audio = "____";
    EXPECT_EQ(Read({record}).carriers.at(0).fec, c.code) << c.column << c.next;
  }
  // Digits up to the next column that has none; the number is taken modulo 2^32.
  SdxRecord record;
  record.fec = "9";
  record.video = record.audio = "9999";
  record.pcr = "____";
  EXPECT_EQ(Read({record}).carriers.at(0).fec, uint32_t{999999999u & 7} > 5 ? 0u : 999999999u & 7);
}

TEST(Satcodx, Polarization) {
  const std::pair<const char*, uint32_t> cases[] = {{"0", kVertical}, {"1", kHorizontal}, {"2", kLeft},
                                                    {"3", kRight},    {"4", kHorizontal}, {"9", kHorizontal},
                                                    {"_", kVertical}};
  for (const auto& [digit, code] : cases) {
    SdxRecord record;
    record.polarization = digit;
    EXPECT_EQ(Read({record}).carriers.at(0).polarization, code) << digit;
  }
}

TEST(Satcodx, DefaultsFillWhatTheListLacks) {
  DefaultRecords defaults;
  defaults.satellite.east = 1;
  defaults.carrier.polarization = kRight;
  defaults.carrier.fec = 5;
  SdxRecord record;
  record.polarization = "7";
  record.fec = "_";
  WorkFiles work;
  ReadSatcodx(BytesOf(SdxList({record})), defaults, work);
  EXPECT_EQ(work.satellites[0].east, 1u);
  EXPECT_EQ(work.carriers[0].polarization, kRight);
  EXPECT_EQ(work.carriers[0].fec, 5u);
}

struct ServiceRow {
  const char *type, *video, *audio, *id;
};
struct ServicesCase {
  const char* name;
  std::vector<ServiceRow> rows;
  std::vector<uint32_t> ids;
};

TEST(Satcodx, DuplicatesAndProgramNumbers) {
  const ServicesCase cases[] = {
      {"equal ids", {{"T", "0001", "0001", "00007"}, {"T", "0002", "0001", "00007"}}, {7, 8}},
      {"a raised id meets the first entry unseen",
       {{"T", "0001", "1", "00008"}, {"T", "0002", "1", "00007"}, {"T", "0003", "1", "00007"}},
       {8, 7, 8}},
      {"raised past all others",
       {{"T", "0001", "1", "00005"},
        {"T", "0002", "1", "00006"},
        {"T", "0003", "1", "00007"},
        {"T", "0004", "1", "00005"}},
       {5, 6, 7, 8}},
      {"an empty id column is 0", {{"T", "0001", "1", "_____"}, {"T", "0002", "1", "_____"}}, {0, 1}},
      {"id of 65536 and more wraps", {{"T", "0001", "1", "65537"}}, {1}},
      {"equal video", {{"T", "0001", "0001", "00001"}, {"T", "0001", "0002", "00002"}}, {1}},
      {"video 0, other audio", {{"R", "0000", "0001", "00001"}, {"R", "0000", "0002", "00002"}}, {1, 2}},
      {"video 0, equal audio", {{"R", "0000", "0001", "00001"}, {"R", "0000", "0001", "00002"}}, {1}},
      {"no video, other audio: dropped",
       {{"R", "____", "0001", "00001"}, {"R", "____", "0002", "00002"}},
       {1}},
      {"a dropped id is not taken",
       {{"T", "0001", "1", "00001"}, {"T", "0001", "1", "00002"}, {"T", "0002", "1", "00002"}},
       {1, 2}},
      {"data services are nobody's previous",
       {{"T", "0001", "1", "00001"}, {"D", "0002", "1", "00001"}, {"T", "0001", "1", "00001"}},
       {1}},
      {"not adjacent",
       {{"T", "0001", "1", "00001"}, {"T", "0002", "1", "00002"}, {"T", "0001", "1", "00003"}},
       {1, 2, 3}},
  };
  for (const ServicesCase& c : cases) {
    std::vector<SdxRecord> records;
    for (const ServiceRow& row : c.rows) {
      SdxRecord record;
      record.type = row.type;
      record.video = row.video;
      record.audio = row.audio;
      record.id = row.id;
      records.push_back(record);
    }
    const WorkFiles work = Read(records);
    std::vector<uint32_t> ids;
    for (const WorkService& service : work.services) ids.push_back(service.program_number);
    EXPECT_EQ(ids, c.ids) << c.name;
    EXPECT_EQ(work.carriers.at(0).service_count, c.ids.size()) << c.name;
  }
}

TEST(Satcodx, CarriersOfServiceAndTransponderRecords) {
  SdxRecord service, transponder, other;
  transponder.type = "_";
  transponder.name = "TP______";
  other.video = "0999";
  other.type = "D";
  // A transponder record is always a carrier of its own; a service behind it with equal values joins it.
  WorkFiles work = Read({service, transponder, transponder, service});
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1|TP_________________|TP_________________");
  EXPECT_EQ(work.carriers[2].service_count, 1u);
  EXPECT_EQ(work.services[1].carrier_index, 2u);
  EXPECT_EQ(work.satellites[0].carrier_count, 3u);
  // A data service makes its carrier and nothing else.
  work = Read({other});
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1");
  EXPECT_TRUE(work.services.empty());
  // Only symbol rate, frequency and polarisation tell carriers apart.
  SdxRecord fec = service, rate = service, polarization = service;
  fec.fec = "1";
  fec.video = "0500";
  rate.symbol_rate = "27501";
  polarization.polarization = "1";
  work = Read({service, fec, rate, polarization});
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1|Carrier2_S1|Carrier3_S1");
  EXPECT_EQ(work.carriers[0].service_count, 2u);
}

TEST(Satcodx, FreeOnlyWithFourUnderscores) {
  const std::pair<const char*, uint32_t> cases[] = {{"____", 1}, {"___1", 0}, {"    ", 0}, {"0000", 0}};
  for (const auto& [access, free] : cases) {
    SdxRecord record;
    record.access = access;
    EXPECT_EQ(Read({record}).services.at(0).free, free) << access;
  }
}

TEST(Satcodx, LayoutIsTheFirstRecords) {
  SdxRecord first, second = At("0130", "IGNORED");
  first.version = "04";
  first.rest = "HOTBIRD_____";
  second.rest = "EUTELSAT____";
  EXPECT_EQ(Names(Read({first, second}).satellites), "HOTBIRD_____|EUTELSAT____");
}

TEST(Satcodx, NumbersLeaveOutBlanksAndSigns) {
  SdxRecord record;
  record.frequency = "  1177";
  record.symbol_rate = "+2750";
  record.position = " 192";
  const WorkFiles work = Read({record});
  EXPECT_EQ(work.carriers[0].frequency, 1177u);
  EXPECT_EQ(work.carriers[0].symbol_rate, 2750u);
  EXPECT_EQ(work.satellites[0].angle, 192u);
}

// A carrier whose 65,536 numbers are all taken must not hang the reader.
TEST(Satcodx, ManyServicesOnOneCarrier) {
  std::string list;
  for (int i = 0; i < 70000; ++i) {
    SdxRecord record;
    record.video = i % 2 == 0 ? "0001" : "0002";
    record.id = "00000";
    list += SdxText(record);
  }
  const WorkFiles work = Read(list);
  EXPECT_EQ(work.services.size(), 70000u);
  EXPECT_EQ(work.carriers[0].service_count, 70000u - 65536u);
  EXPECT_EQ(work.services[65535].program_number, 65535u);
}

TEST(Satcodx, ImportNeverFails) {
  Recorder recorder;
  WorkFiles work;
  work.services.resize(3);
  EXPECT_EQ(ImportSdxFile(recorder.context, recorder.context.temporary_folder / "none.sdx", {}, work), 1);
  EXPECT_TRUE(work.services.empty());
  EXPECT_TRUE(recorder.shown.empty());
}

TEST(Satcodx, ProgressEndsAtTheRecordCount) {
  uint64_t total = 0, last = 0;
  Progress progress;
  progress.range = [&](uint64_t value) { total = value; };
  progress.position = [&](uint64_t value) { last = value; };
  WorkFiles work;
  ReadSatcodx(BytesOf(SdxList(std::vector<SdxRecord>(600))), DefaultRecords{}, work, progress);
  EXPECT_EQ(total, 600u);
  EXPECT_EQ(last, 600u);
}

TEST(Satcodx, TrimAtDoubleSpace) {
  char name[kNameSize] = "AB  CD";
  EXPECT_TRUE(TrimAtDoubleSpace(name));
  EXPECT_EQ(std::string(name, kNameSize), std::string("AB") + std::string(18, '\0'));
  char single[kNameSize] = "A B C ";
  EXPECT_FALSE(TrimAtDoubleSpace(single));
  EXPECT_EQ(Name(single), "A B C ");
}

}  // namespace
}  // namespace vexa
