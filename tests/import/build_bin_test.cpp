#include "import/build_bin.h"

#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "import/dvb2000.h"
#include "import/satcodx.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

Bytes Part(const Bytes& bytes, size_t start, size_t size) {
  if (start + size > bytes.size()) return {};
  return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(start),
               bytes.begin() + static_cast<std::ptrdiff_t>(start + size));
}

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

WorkFiles OneOfEach() {
  WorkFiles work;
  SdxRecord record;
  record.satellite = "ASTRA1____________";
  record.video = "____";  // ends the FEC number behind its digit
  ReadSatcodx(BytesOf(SdxList({record})), DefaultRecords{}, work);
  work.satellites[0].east = 1;
  work.satellites[0].chosen = 1;  // marks of the wizard never reach the database
  work.carriers[0].chosen = 1;
  work.carriers[0].service_options = 31;
  work.services[0].chosen = 1;
  return work;
}

TEST(BuildBin, EveryByteOfASmallStream) {
  const Bytes stream = BuildBinFromWorkFiles(OneOfEach(), DefaultRecords{});
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
  EXPECT_EQ(stream, expected);
}

TEST(BuildBin, NothingFoundGivesEmptyBlocks) {
  const Bytes stream = BuildBinFromWorkFiles({}, DefaultRecords{});
  EXPECT_EQ(stream.size(), 24u + 16 + 128 + 4 * 16);
  EXPECT_EQ(Part(stream, stream.size() - 16, 16), BlockHeader("OSL", 2, 0));
}

TEST(BuildBin, UsesTheDefaultLnb) {
  DefaultRecords defaults;
  defaults.lnb.frequency1 = 5150;
  const Bytes stream = BuildBinFromWorkFiles({}, defaults);
  for (size_t i = 0; i < 16; ++i) EXPECT_EQ(stream[40 + 8 * i], 5150 & 0xFF) << i;
}

TEST(BuildBin, ServiceOrderIsTheFileOrderWithoutFiller) {
  WorkFiles work;
  work.services.resize(259);
  const Bytes stream = BuildBinFromWorkFiles(work, DefaultRecords{});
  const size_t list = stream.size() - 2 * 259;
  EXPECT_EQ(Part(stream, list - 16, 4), (Bytes{'O', 'S', 'L', 0}));
  for (size_t i = 0; i < 259; ++i)
    EXPECT_EQ(stream[list + 2 * i] | stream[list + 2 * i + 1] << 8, static_cast<int>(i));
}

TEST(BuildBin, OpensAsADatabase) {
  Recorder recorder;
  Document document;
  ASSERT_TRUE(OpenBinBytes(recorder.context, BuildBinFromWorkFiles(OneOfEach(), DefaultRecords{}), document));
  EXPECT_TRUE(recorder.shown.empty());
  ASSERT_EQ(document.sdbs.size(), 1u);
  EXPECT_EQ(document.sdbs[0].name, "SDB1");
  const StaticDatabase& database = *document.sdbs[0].database;
  EXPECT_EQ(CheckLinks(database), "");
  EXPECT_EQ(database.lnb_count, 16u);
  ASSERT_EQ(database.satellites.size(), 1u);
  EXPECT_EQ(database.satellites[0]->record.lnb_index, 0u);
  EXPECT_EQ(database.satellites[0]->record.position, 255u);
  EXPECT_EQ(database.satellites[0]->record.user, 1u);
}

// The carrier index that stands one too high in these lists must not be believed.
TEST(BuildBin, Dvb2000ListOpensWithServicesUnderTheirCarriers) {
  Recorder recorder;
  WorkFiles work;
  ReadDvb2000(BytesOf(DvbList(
                  {{.text = "Sat-1\xB0"
                            "E"},
                   {.id = 1, .frequency = 11000, .symbol_rate = 27500, .video = 1, .type = 1, .text = "A"},
                   {.id = 2, .frequency = 12000, .symbol_rate = 27500, .video = 2, .type = 1, .text = "B"}})),
              DefaultRecords{}, work);
  ASSERT_EQ(work.services.size(), 2u);
  EXPECT_EQ(work.services[1].carrier_index, 2u);
  Document document;
  ASSERT_TRUE(OpenBinBytes(recorder.context, BuildBinFromWorkFiles(work, DefaultRecords{}), document));
  const StaticDatabase& database = *document.sdbs[0].database;
  ASSERT_EQ(database.carriers.size(), 2u);
  EXPECT_EQ(Name(database.carriers[0]->services.at(0)->record.name), "A");
  EXPECT_EQ(Name(database.carriers[1]->services.at(0)->record.name), "B");
}

}  // namespace
}  // namespace vexa
