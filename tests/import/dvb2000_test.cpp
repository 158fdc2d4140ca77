#include "import/dvb2000.h"

#include <gtest/gtest.h>

#include "import/list_format.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

WorkRecords Read(const std::vector<DvbRecord>& records) {
  WorkRecords work;
  ReadDvb2000(BytesOf(DvbList(records)), DefaultRecords{}, work);
  return work;
}

DvbRecord Satellite(const std::string& text) {
  return {.text = text};
}

DvbRecord Service(const char* name, uint16_t id, uint16_t video, uint16_t audio, uint16_t frequency = 11778) {
  return {.id = id,
          .frequency = frequency,
          .symbol_rate = 27500,
          .video = video,
          .audio = audio,
          .pcr = video,
          .fec = 4,
          .polarization = 1,
          .type = 1,
          .text = name};
}

const char* const kAstra = "Astra-192\260E";  // \260: the degree sign

TEST(Dvb2000, SatelliteRecords) {
  const struct {
    const char *text, *name;
    uint32_t angle, east;
  } cases[] = {
      {kAstra, "Astra", 192, 0},
      {"Hispasat-300\260W", "Hispasat", 300, 1},  // West sets the flag
      {"Sat-19.2\260E", "Sat", 19, 0},            // whole numbers only
      {"Sat- 70\260w", "Sat", 70, 0},
      {"Sat-70W", "Sat", 70, 0},        // no degree sign
      {"\260W-1\260E", "\260W", 1, 0},  // only the sign behind the dash counts
      {"A-B-3\260W", "A", 0, 1},
      {"-5\260E", "", 5, 0},
      {"Name of a satellite-5000\260E", "Name of a satellite", 904, 0},
  };
  for (const auto& c : cases) {
    const WorkRecords work = Read({Satellite(c.text)});
    ASSERT_EQ(work.satellites.size(), 1u) << c.text;
    const WorkSatellite& satellite = work.satellites[0];
    EXPECT_EQ(std::tuple(Name(satellite.name), satellite.angle, satellite.east, satellite.read),
              std::tuple(c.name, c.angle, c.east, 1u))
        << c.text;
  }
}

TEST(Dvb2000, AnyValueOfACarrierOrAPidMakesAService) {
  for (uint16_t DvbRecord::*const field : {&DvbRecord::frequency, &DvbRecord::symbol_rate, &DvbRecord::video,
                                           &DvbRecord::audio, &DvbRecord::pcr}) {
    DvbRecord record = Satellite("X-1\260E");
    record.*field = 1;
    const WorkRecords work = Read({Satellite(kAstra), record});
    EXPECT_EQ(Names(work.satellites), "Astra");
    EXPECT_EQ(Names(work.services), "X-1\260E");
  }
}

TEST(Dvb2000, TextEndsAtNul) {
  EXPECT_TRUE(Read({Satellite(std::string("Astra\0-192\260E", 12))}).satellites.empty());
  DvbRecord record = Service("", 1, 1, 1);
  record.text = std::string("ARTE\0HD", 7);
  EXPECT_EQ(Names(Read({Satellite(kAstra), record}).services), "ARTE");
}

TEST(Dvb2000, SkippedRecords) {
  // A satellite without dash, and a service before any satellite.
  const WorkRecords work =
      Read({Satellite("No dash"), Service("A", 1, 1, 1), Satellite(kAstra), Service("B", 1, 1, 1)});
  EXPECT_EQ(Names(work.satellites), "Astra");
  EXPECT_EQ(Names(work.services), "B");
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1");
}

TEST(Dvb2000, ServiceFields) {
  DvbRecord record = Service("1234567890123456789", 0x1234, 0xC191, 0, 0xABCD);  // a byte too long
  record.pcr = 0x3FFF;
  record.polarization = 0xFE;
  const WorkRecords work = Read({Satellite(kAstra), record});
  ASSERT_EQ(work.services.size(), 1u);
  const WorkService& service = work.services[0];
  EXPECT_EQ(Name(service.name), "123456789012345678");
  EXPECT_EQ(std::tuple(service.program_number, service.video_pid, service.audio_pid, service.pcr_pid),
            std::tuple(0x1234u, 0x191u, 8192u, 0x3FFFu));
  EXPECT_EQ(service.carrier_index, 1u);  // one higher than its carrier's place
  EXPECT_EQ(std::tuple(service.free, service.read, service.read_service), std::tuple(1u, 1u, 1u));
  const WorkCarrier& carrier = work.carriers.at(0);
  EXPECT_EQ(std::tuple(carrier.frequency, carrier.symbol_rate, carrier.polarization, carrier.read),
            std::tuple(0xABCDu, 27500u, kLeft, 1u));
}

TEST(Dvb2000, CodesOfTheFile) {
  const uint32_t fec[] = {0, 0, 1, 2, 3, 0, 4, 5, 0, 0};
  for (uint8_t value = 0; value < 10; ++value) {
    DvbRecord record = Service("A", 1, 1, 1);
    record.fec = value;
    record.type = value;
    const WorkRecords work = Read({Satellite(kAstra), record});
    EXPECT_EQ(work.carriers.at(0).fec, fec[value]) << int{value};
    EXPECT_EQ(work.services.at(0).type, value & 3u) << int{value};
  }
}

TEST(Dvb2000, CarriersAndSatellites) {
  DvbRecord rate = Service("C", 3, 3, 3), polarization = Service("D", 4, 4, 4);
  rate.symbol_rate = 22000;
  polarization.polarization = 0;
  const WorkRecords work = Read({Satellite(kAstra), Service("A", 1, 1, 1), Service("B", 2, 2, 2), rate,
                                 polarization, Satellite("Hotbird-130\260E"), polarization});
  EXPECT_EQ(Names(work.carriers), "Carrier1_S1|Carrier2_S1|Carrier3_S1|Carrier1_S2");
  EXPECT_EQ(work.satellites[0].carrier_count, 3u);
  EXPECT_EQ(work.satellites[1].first_carrier, 3u);
  EXPECT_EQ(work.satellites[1].carrier_count, 1u);
  EXPECT_EQ(work.carriers[3].satellite_index, 1u);
  EXPECT_EQ(work.carriers[0].service_count, 2u);
  EXPECT_EQ(work.carriers[1].first_service, 2u);
}

TEST(Dvb2000, Duplicates) {
  const struct {
    const char* name;
    uint16_t video[2], audio[2];
    size_t kept;
  } cases[] = {
      {"equal video, other audio", {5, 5}, {1, 2}, 1},
      {"no video, other audio", {0, 0}, {1, 2}, 2},
      {"no video, equal audio", {0, 0}, {1, 1}, 1},
      {"other video", {5, 6}, {1, 1}, 2},
  };
  for (const auto& c : cases) {
    const WorkRecords work = Read({Satellite(kAstra), Service("A", 1, c.video[0], c.audio[0]),
                                   Service("B", 2, c.video[1], c.audio[1])});
    EXPECT_EQ(work.services.size(), c.kept) << c.name;
    EXPECT_EQ(work.carriers.at(0).service_count, c.kept) << c.name;
  }
  // The same service on the next carrier is another one.
  EXPECT_EQ(Read({Satellite(kAstra), Service("A", 1, 5, 5), Service("A", 1, 5, 5, 12000)}).services.size(),
            2u);
}

TEST(Dvb2000, ProgramNumbers) {
  EXPECT_EQ(Ids(Read({Satellite(kAstra), Service("A", 8, 1, 1), Service("B", 7, 2, 1), Service("C", 7, 3, 1),
                      Service("D", 8, 4, 1, 12000)})),
            (std::vector<uint32_t>{8, 7, 8, 8}));
}

TEST(Dvb2000, FileSizes) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "list.dvb";
  const std::string list = DvbList({Satellite(kAstra)});
  for (const size_t size : {0u, 63u, 64u, 127u}) {
    std::string content = list + list;
    PutFile(path, BytesOf(content.substr(0, size)));
    WorkRecords work;
    ListLosses losses;
    EXPECT_TRUE(ReadList(recorder.context, path, ListFormat::kDvb2000, {}, {}, work, losses)) << size;
    EXPECT_EQ(work.satellites.size(), size / 64);
  }
}

}  // namespace
}  // namespace vexa
