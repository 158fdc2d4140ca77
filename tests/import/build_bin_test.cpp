#include "import/build_bin.h"

#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "import/dvb2000.h"
#include "import/satcodx.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes joined;
  for (const Bytes& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

Bytes NameBytes(std::string name) {
  name.resize(20, '\0');
  return BytesOf(name);
}

Bytes BlockHeader(const std::string& name, uint8_t size, uint8_t count) {
  Bytes header(16, 0xFF);
  std::copy(name.begin(), name.end(), header.begin());
  header[name.size()] = 0;
  header[8] = size;
  header[9] = 0;
  header[12] = count;
  header[13] = 0;
  return header;
}

TEST(BuildBin, EveryByteOfASmallStream) {
  WorkRecords work;
  // The underscores of the video column end the FEC number behind its digit.
  ReadSatcodx(BytesOf(SdxList({{.satellite = "ASTRA1____________", .video = "____"}})), {}, work);
  work.satellites[0].east = 1;
  work.satellites[0].chosen = 1;  // marks of the wizard never reach the database
  work.carriers[0].chosen = 1;
  work.carriers[0].service_options = 31;
  work.services[0].chosen = 1;
  Bytes expected = {0x51, 0x7A, 2,    0,    0,   0xFF, 5,   0,    0xFF, 0xFF, 0xFF, 0xFF,
                    0xFF, 0xFF, 0xFF, 0xFF, 'Q', 'M',  'V', 0xFF, 1,    0,    0xFF, 0xFF};
  expected = Joined({expected, BlockHeader("lnb", 12, 16)});
  for (int i = 0; i < 16; ++i) expected = Joined({expected, {0x16, 0x26, 0x5A, 0x6A, 0, 0, 1, 0}});
  expected = Joined({
      expected,
      BlockHeader("Satelli", 28, 1),
      // carrier count, LNB 255, position 255; user and east set, 192 tenths, all other bits ones
      {1, 0, 0xFF, 0xFF, 0x03, 0xC3, 0xFF, 0xFF},
      NameBytes("ASTRA1____________"),
      BlockHeader("Carrier", 36, 1),
      // 27500, LNB 255; first service 0, one service; satellite 0, vertical, FEC 3/4, user and the rest ones
      {0x6C, 0x6B, 0x00, 0xFF, 0, 0, 1, 0, 0x00, 0xB4, 0xFF, 0xFF},
      NameBytes("Carrier1_S1"),
      {0x02, 0x2E, 0, 0},
      BlockHeader("Service", 32, 1),
      // 28724, carrier 0; no video, audio 402; PCR 401, TV, free; kept bits ones
      {0x34, 0x70, 0, 0, 0x00, 0xA0, 0x64, 0xF0, 0x91, 0x41, 0xFF, 0xFF},
      NameBytes("ARTE"),
      BlockHeader("OSL", 2, 1),
      {0, 0},
  });
  EXPECT_EQ(BuildBinFromWorkFiles(work, {}), expected);
}

TEST(BuildBin, NothingFoundGivesEmptyBlocksAndDefaultLnbs) {
  DefaultRecords defaults;
  defaults.lnb.frequency1 = 5150;
  const Bytes stream = BuildBinFromWorkFiles({}, defaults);
  ASSERT_EQ(stream.size(), 24u + 16 + 128 + 4 * 16);
  for (size_t i = 0; i < 16; ++i) EXPECT_EQ(stream[40 + 8 * i], 5150 & 0xFF) << i;
  EXPECT_EQ(Bytes(stream.end() - 16, stream.end()), BlockHeader("OSL", 2, 0));
}

TEST(BuildBin, ServiceOrderIsTheFileOrderWithoutFiller) {
  WorkRecords work;
  work.services.resize(259);
  const Bytes stream = BuildBinFromWorkFiles(work, {});
  const size_t list = stream.size() - 2 * 259;
  EXPECT_EQ(stream[list - 16], 'O');
  for (size_t i = 0; i < 259; ++i)
    EXPECT_EQ(stream[list + 2 * i] | stream[list + 2 * i + 1] << 8, static_cast<int>(i));
}

// The carrier index that stands one too high in these lists must not be believed.
TEST(BuildBin, Dvb2000ListOpensWithServicesUnderTheirCarriers) {
  Recorder recorder;
  WorkRecords work;
  ReadDvb2000(BytesOf(DvbList(
                  {{.text = "Sat-1\260E"},
                   {.id = 1, .frequency = 11000, .symbol_rate = 27500, .video = 1, .type = 1, .text = "A"},
                   {.id = 2, .frequency = 12000, .symbol_rate = 27500, .video = 2, .type = 1, .text = "B"}})),
              {}, work);
  ASSERT_EQ(work.services.size(), 2u);
  EXPECT_EQ(work.services[1].carrier_index, 2u);
  Document document;
  ASSERT_TRUE(OpenBinBytes(recorder.context, BuildBinFromWorkFiles(work, {}), document));
  EXPECT_TRUE(recorder.shown.empty());
  ASSERT_EQ(document.sdbs.size(), 1u);
  EXPECT_EQ(document.sdbs[0].name, "SDB1");
  const StaticDatabase& database = *document.sdbs[0].database;
  EXPECT_EQ(CheckLinks(database), "");
  ASSERT_EQ(database.carriers.size(), 2u);
  EXPECT_EQ(Name(database.carriers[0]->services.at(0)->record.name), "A");
  EXPECT_EQ(Name(database.carriers[1]->services.at(0)->record.name), "B");
}

}  // namespace
}  // namespace vexa
