#include "import/lyngsat.h"

#include <gtest/gtest.h>

#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

WorkRecords Read(const std::string& list) {
  WorkRecords work;
  ReadLyngsat(BytesOf(list), DefaultRecords{}, work);
  return work;
}

const std::string kSat = ":SAT \"Astra\" 19.2 E\n";
const std::string kTrp = ":TRP 11778 27500H 0 V 0 3/4\n";

TEST(Lyngsat, Satellites) {
  const struct {
    const char *line, *name;
    uint32_t angle, east;
  } cases[] = {
      {":SAT \"Astra 1\" 19.2 E", "Astra 1", 192, 1},
      {":SAT \"Hispasat\" 30.0 W", "Hispasat", 300, 0},
      {":SAT \"Any letter\" 5 x", "Any letter", 50, 1},
      {":SAT \"Trailing   \" 0.8 W", "Trailing", 8, 0},
      {":SAT \"Digits dropped\" 5.49 E", "Digits dropped", 54, 1},
      {":SAT \"No digit\" 5. E", "No digit", 50, 1},
      {":SAT \"Point\" .7 E", "Point", 7, 1},
      {":SAT \"Number ends\" 19x.2 E", "Number ends", 190, 1},
      {":SAT \"Decimal\" 57.3 E", "Decimal", 573, 1},  // 57.3 * 10 is below 573 in binary fractions
      {":SAT \"Wraps\" 409.6 E", "Wraps", 0, 1},
      {":SAT \"A name of more than nineteen\" 1.0 E", "A name of more than", 10, 1},
  };
  for (const auto& c : cases) {
    const WorkRecords work = Read(std::string(c.line) + "\r\n");
    ASSERT_EQ(work.satellites.size(), 1u) << c.line;
    const WorkSatellite& satellite = work.satellites[0];
    EXPECT_EQ(std::tuple(Name(satellite.name), satellite.angle, satellite.east, satellite.read),
              std::tuple(c.name, c.angle, c.east, 1u))
        << c.line;
    EXPECT_EQ(satellite.carrier_options, 0u);
  }
}

TEST(Lyngsat, Transponders) {
  const struct {
    const char* line;
    uint32_t frequency, rate, polarization, fec;
  } cases[] = {
      {":TRP 11778 27500H 0 H 0 3/4", 11778, 27500, kHorizontal, 3},
      {":TRP 1177850 27500H 0 V 0 Auto", 11778, 27500, kVertical, 0},
      {":TRP 15000 27500H 0 L 0 1/2", 15000, 27500, kLeft, 1},
      {":TRP 15001 27500H 0 R 0 2/3", 150, 27500, kRight, 2},
      {":TRP 11778 2750000 0 x 0 5/6", 11778, 27500, kRight, 4},
      {":TRP 11778 45000S 0 Hv 0 7/8", 11778, 45000, kHorizontal, 5},
      {":TRP 11778 45001S 0 H 0  7/8 ", 11778, 4500, kHorizontal, 5},
      {":TRP 11778 27500 0 H 0 7/8x", 11778, 2750, kHorizontal, 0},
      {":TRP 11778 27500H 0 H 0 9/10", 11778, 27500, kHorizontal, 0},
      {":TRP 11778 27500H 0 H", 11778, 27500, kHorizontal, 0},
      {":TRP 11778 9 0 H 0 3/4", 11778, 0, kHorizontal, 3},
  };
  for (const auto& c : cases) {
    const WorkRecords work = Read(kSat + c.line);
    ASSERT_EQ(work.carriers.size(), 1u) << c.line;
    const WorkCarrier& carrier = work.carriers[0];
    EXPECT_EQ(std::tuple(carrier.frequency, carrier.symbol_rate, carrier.polarization, carrier.fec),
              std::tuple(c.frequency, c.rate, c.polarization, c.fec))
        << c.line;
  }
}

TEST(Lyngsat, Services) {
  const WorkRecords work =
      Read(kSat + kTrp + ":CHN \"ARTE \" 28724 T\r\n:CHN \"Radio 1\" 65537x R\r\n:CHN \"Data\" 7 D\r\n");
  EXPECT_EQ(Names(work.services), "ARTE|Radio 1|Data");
  EXPECT_EQ(Ids(work), (std::vector<uint32_t>{28724, 1, 7}));
  EXPECT_EQ(work.services[0].type, kTv);
  EXPECT_EQ(work.services[1].type, kRadio);
  EXPECT_EQ(work.services[2].type, kRadio);
  for (const WorkService& service : work.services) {
    EXPECT_EQ(std::tuple(service.video_pid, service.audio_pid, service.pcr_pid),
              std::tuple(8192u, 8192u, 8192u));
    EXPECT_EQ(service.carrier_index, 0u);
    EXPECT_EQ(service.free & service.read & service.read_service, 1u);
  }
}

TEST(Lyngsat, EveryTransponderIsACarrier) {
  const WorkRecords work = Read(kSat + kTrp + kTrp + ":CHN \"A\" 1 T\n" + ":SAT \"Hotbird\" 13.0 E\n" + kTrp);
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1|Carrier2_S1|Carrier1_S2");
  EXPECT_EQ(work.carriers[0].service_count, 0u);
  EXPECT_EQ(work.carriers[1].service_count, 1u);
  EXPECT_EQ(work.carriers[2].first_service, 1u);
  EXPECT_EQ(work.carriers[2].satellite_index, 1u);
  EXPECT_EQ(work.satellites[0].carrier_count, 2u);
  EXPECT_EQ(work.satellites[1].first_carrier, 2u);
}

TEST(Lyngsat, DuplicatesAndProgramNumbers) {
  const struct {
    const char* name;
    std::string lines;
    std::vector<uint32_t> ids;
  } cases[] = {
      {"equal name and type", ":CHN \"A\" 1 T\n:CHN \"A\" 2 T\n", {1}},
      {"other type", ":CHN \"A\" 1 T\n:CHN \"A\" 2 R\n", {1, 2}},
      {"other name", ":CHN \"A\" 1 T\n:CHN \"a\" 2 T\n", {1, 2}},
      {"another between", ":CHN \"A\" 1 T\n:CHN \"B\" 2 T\n:CHN \"A\" 3 T\n", {1, 2, 3}},
      {"across carriers", ":CHN \"A\" 1 T\n" + kTrp + ":CHN \"A\" 1 T\n", {1, 1}},
      {"raised past the second entry on", ":CHN \"A\" 8 T\n:CHN \"B\" 7 T\n:CHN \"C\" 7 T\n", {8, 7, 8}},
      {"a dropped one takes no number", ":CHN \"A\" 1 T\n:CHN \"A\" 2 T\n:CHN \"B\" 2 T\n", {1, 2}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Ids(Read(kSat + kTrp + c.lines)), c.ids) << c.name;
  }
}

TEST(Lyngsat, Lines) {
  const std::string chn = ":CHN \"A\" 1 T\n";
  const struct {
    const char* name;
    std::string list;
    size_t satellites, carriers, services;
  } cases[] = {
      {"nothing", "", 0, 0, 0},
      {"no line end", kSat + kTrp + ":CHN \"A\" 1 T", 1, 1, 1},
      {"other lines", "x\n:sat \"A\" 1 E\n " + kSat + ":NEW\n", 0, 0, 0},
      {"transponder first", kTrp + kSat + chn, 1, 0, 0},
      {"no closing quote", ":SAT \"Astra 19.2 E\n" + kSat + kTrp + ":CHN \"A 1 T\n", 1, 1, 0},
      {"no letter", ":SAT \"Astra\" 19.2\n:SAT \"Astra\" 19.2 \n:SAT \"Astra\"\n", 0, 0, 0},
      {"no fields of a service", kSat + kTrp + ":CHN \"A\"\n:CHN \"A\" 1\n:CHN\n:CHN \"\n", 1, 1, 0},
      {"no fields of a transponder", kSat + ":TRP\n:TRP \n:TRP 11778\n:TRP 11778 27500\n", 1, 0, 0},
      {"control Z goes on", kSat + "\x1A\n" + kTrp, 1, 1, 0},
      {"no CR", kSat + kTrp + chn, 1, 1, 1},
      // The 256th character begins a line of its own.
      {"a piece that looks like a line", kSat + std::string(255, 'x') + kTrp, 1, 1, 0},
      {"a piece that does not", kSat + std::string(254, 'x') + kTrp, 1, 0, 0},
      {"a cut line", kSat + ":SAT \"" + std::string(250, 'y') + "\" 1.0 E\n", 1, 0, 0},
  };
  for (const auto& c : cases) {
    const WorkRecords work = Read(c.list);
    EXPECT_EQ(std::tuple(work.satellites.size(), work.carriers.size(), work.services.size()),
              std::tuple(c.satellites, c.carriers, c.services))
        << c.name;
  }
}

}  // namespace
}  // namespace vexa
