// SatcoDX lists as televisions write them, and what is said when the default reading does not fit a list.
#include <gtest/gtest.h>

#include "import/list_format.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

// A record of version 105, 132 characters; `rest` fills 115-131.
std::string Text105(SdxRecord record, const std::string& rest = "") {
  record.version = "05";
  std::string text = SdxText(record);
  text[7] = '1';
  text.resize(132, '_');
  return text.replace(115, 17, rest + std::string(17 - rest.size(), '_'));
}

WorkRecords Read(const std::string& list, SatcodxLayout layout, size_t length = 0) {
  WorkRecords work;
  ReadSatcodx(BytesOf(list), {}, work, {}, {layout, length});
  return work;
}

// "Satellite/Carrier frequency:service id type,..." in the order of the records.
std::string LayoutOutline(const WorkRecords& work) {
  std::string text;
  for (const WorkSatellite& satellite : work.satellites) {
    text += Format("%s%s %u", text.empty() ? "" : " | ", Name(satellite.name).c_str(), satellite.angle);
    for (size_t i = 0; i < satellite.carrier_count; ++i) {
      const WorkCarrier& carrier = work.carriers.at(satellite.first_carrier + i);
      text += Format(" / %s %u:", Name(carrier.name).c_str(), carrier.frequency);
      for (size_t j = 0; j < carrier.service_count; ++j) {
        const WorkService& service = work.services.at(carrier.first_service + j);
        text += Format(" %s %u%s", Name(service.name).c_str(), service.program_number,
                       service.type == kTv ? "" : "r");
      }
    }
  }
  return text;
}

// Channels in an order of their own, without PIDs.
std::vector<std::string> TelevisionRecords() {
  const SdxRecord none = {.name = "Das Erst", .video = "____", .audio = "____", .pcr = "____", .id = "00001"};
  const auto with = [&](auto change) {
    SdxRecord record = none;
    change(record);
    return record;
  };
  return {
      Text105(none, "e HD"),
      Text105(with(
          [](SdxRecord& r) { r.satellite = "HOTBIRD 13   ", r.position = "0130", r.name = "Rai 1___"; })),
      Text105(with([](SdxRecord& r) { r.frequency = "012000", r.name = "\x05Sky Cin", r.id = "00007"; }),
              "ema "),
      Text105(with([](SdxRecord& r) { r.name = "ZDF_____", r.id = "00002"; })),
      Text105(none, "e HD"),  // once more
      Text105(with([](SdxRecord& r) { r.name = "Other___"; })),
      Text105(with([](SdxRecord& r) { r.name = "________", r.id = "00009", r.type = "R"; })),
      Text105(with([](SdxRecord& r) { r.type = "D", r.frequency = "012500"; })),
      Text105(with([](SdxRecord& r) { r.symbol_rate = "_____", r.position = "0070"; })),
      Text105(with([](SdxRecord& r) { r.polarization = "1", r.access = "LCKD"; }), "e HD"),
  };
}
const char* const kTelevision =
    "ASTRA 1 192 / Carrier1_S1 11778: Das Erste HD 1 ZDF 2 Other 3 Service4 9r"
    " / Carrier2_S1 12000: Sky Cinema 7 / Carrier3_S1 12500: / Carrier4_S1 11778: Das Erste HD 1"
    " | HOTBIRD 13 130 / Carrier1_S2 11778: Rai 1 1";

std::string Joined(const std::vector<std::string>& records, const std::string& between) {
  std::string list;
  for (const std::string& record : records) list += record + between;
  return list;
}

TEST(SatcodxLayout, TelevisionListsInEveryDress) {
  const auto records = TelevisionRecords();
  const std::string plain = Joined(records, "");
  const std::string lists[] = {
      plain,
      plain +
          "text behind the last record, as long as a record and longer than that: " + std::string(200, 'x'),
      Joined(records, "\n"),
      Joined(records, "\r\n"),
      "\xEF\xBB\xBF" + Joined(records, "\r\n"),
      Joined(records, "\r\n").substr(0, records.size() * 134 - 2),
      Joined(records, std::string(9, '.'))};
  for (const std::string& list : lists) {
    for (const SatcodxLayout layout : {SatcodxLayout::kAuto, SatcodxLayout::k105}) {
      EXPECT_EQ(LayoutOutline(Read(list, layout)), kTelevision) << list.size();
    }
  }
  const WorkRecords work = Read(plain, SatcodxLayout::kAuto);
  EXPECT_EQ(std::tuple(work.services[0].video_pid, work.services[0].audio_pid, work.services[0].pcr_pid),
            std::tuple(8192u, 8192u, 8192u));
  EXPECT_EQ(std::pair(work.services[0].free, work.services[5].free), (std::pair{1u, 0u}));
  EXPECT_EQ(std::pair(work.carriers[0].polarization, work.carriers[3].polarization), (std::pair{1u, 0u}));
  EXPECT_EQ(work.services.back().carrier_index, 4u);
  // A length that is given holds; the second record then begins nowhere.
  EXPECT_EQ(Names(Read(plain, SatcodxLayout::k105, 131).services), "Das Erste HD");
  EXPECT_EQ(Names(Read(Joined(records, ".."), SatcodxLayout::k105, 134 * 3).services),
            "Das Erste HD|ZDF|Service3|Das Erste HD");
  EXPECT_EQ(LayoutOutline(Read(records[0], SatcodxLayout::kAuto)),
            "ASTRA 1 192 / Carrier1_S1 11778: Das Erste HD 1");
  EXPECT_EQ(LayoutOutline(Read(records[0].substr(0, 126), SatcodxLayout::kAuto)), "");
}

// A record's fields may part a character of UTF-8.
TEST(SatcodxLayout, NamesOfUtf8AreConverted) {
  const std::string list = Text105({.name = "ABCDEFG\xC3", .id = "00001"}, "\xBC Radio") +
                           Text105({.name = "\xC3\xBC \xC5\x81___", .id = "00002"});
  WorkRecords work;
  ListLosses losses;
  ReadSatcodx(BytesOf(list), {}, work, {}, {SatcodxLayout::k105, 0}, {FindCodePage("Windows-1252"), nullptr},
              &losses);
  EXPECT_EQ(Names(work.services), "ABCDEFG\xFC Radio|\xFC ?");
  EXPECT_EQ(losses.lacking, 1u);
  EXPECT_EQ(losses.page, "Windows-1252");
}

TEST(SatcodxLayout, OneDigitOfFec) {
  const char digits[] = "0123456789_ ";
  const uint32_t codes[] = {0, 1, 2, 3, 0, 4, 0, 5, 0, 0, 0, 0};
  for (size_t i = 0; digits[i] != '\0'; ++i) {
    const WorkRecords work =
        Read(Text105({.fec = std::string(1, digits[i]), .video = "1234"}), SatcodxLayout::k105);
    EXPECT_EQ(work.carriers.at(0).fec, codes[i]) << digits[i];
  }
}

// The format's own layouts: chosen by hand, and with the rest of a name behind its start.
TEST(SatcodxLayout, OwnLayouts) {
  const std::string list = SdxText({.name = "SPORT___", .rest = "ABC_________"}) +
                           SdxText({.name = "WHOLE 12", .video = "1", .id = "2", .rest = "345678901234"});
  EXPECT_EQ(Names(Read(list, SatcodxLayout::kDefault).services), "ABCRT|WHOLE 1234567890123");
  EXPECT_EQ(Names(Read(list, SatcodxLayout::kA).services), "ABCRT|WHOLE 1234567890123");
  EXPECT_EQ(Names(Read(list, SatcodxLayout::kAuto).services), "SPORTABC|WHOLE 1234567890123");
  const WorkRecords b = Read(list, SatcodxLayout::kB);
  EXPECT_EQ(Names(b.services), "SPORT|WHOLE 12");
  EXPECT_EQ(Names(b.satellites), "ABC_________");
  std::string other = list;
  other[9] = '4';
  EXPECT_EQ(Names(Read(other, SatcodxLayout::kDefault).services), "SPORT|WHOLE 12");
  EXPECT_EQ(Names(Read(other, SatcodxLayout::kA).services), "ABCRT|WHOLE 1234567890123");
  // CR LF behind each record, where the default length drifts.
  const std::string lines = list.substr(0, 128) + "\r\n" + list.substr(128) + "\r\n";
  EXPECT_EQ(Names(Read(lines, SatcodxLayout::kAuto).services), "SPORTABC|WHOLE 1234567890123");
  EXPECT_EQ(Names(Read(lines, SatcodxLayout::kA, 130).services), "ABCRT|WHOLE 1234567890123");
  EXPECT_NE(Names(Read(lines, SatcodxLayout::kA).services), "ABCRT|WHOLE 1234567890123");
}

TEST(SatcodxLayout, Doubts) {
  const std::string one = SdxText({.version = "03"}), behind = "1 bytes stand behind the last record";
  const struct {
    std::string list, doubt;
  } cases[] = {
      {"", ""},
      {one + one, ""},
      {one + "\n" + one + "\n", ""},
      {SdxText({.version = "00"}) + one, ""},
      {SdxText({.version = "04"}) + one, ""},
      {SdxText({.version = "05"}) + one, "its version is _05"},
      {SdxText({.version = "13"}) + one, "its version is _13"},
      {Text105({}) + Text105({}), "its version is 105"},
      {one + "\r\n" + one + "\r\n", "record 2 does not begin with \"SATCODX\""},
      {one + one + "x" + one, "record 3 does not begin with \"SATCODX\""},
      {one + "satcodx" + one.substr(7), "127 bytes stand behind the last record"},  // no capital at 128
      {one + one + "x", behind},
      {one + "\n" + one, "128 bytes stand behind the last record"},
      {one, "128 bytes stand behind the last record"},
      {"\xEF\xBB\xBF" + one + one, "a byte-order mark stands before its first record"},
  };
  for (const auto& c : cases) EXPECT_EQ(SatcodxDoubt(BytesOf(c.list)), c.doubt) << c.list.size();
}

// Told of a file before it is read, and only where neither layout nor length was chosen.
TEST(SatcodxLayout, DoubtIsToldOfTheDefaultAlone) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "a.sdx";
  PutFile(path, BytesOf(Joined(TelevisionRecords(), "")));
  for (const SatcodxOptions& chosen :
       {SatcodxOptions{}, {SatcodxLayout::kA}, {SatcodxLayout::kDefault, 132}}) {
    ListOptions options = {.satcodx = chosen};
    std::vector<std::string> told;
    options.satcodx.doubt = [&](const std::string& why) { told.push_back(why); };
    WorkRecords work;
    ListLosses losses;
    EXPECT_TRUE(ReadList(recorder.context, path, ListFormat::kSatcodx, {}, options, work, losses));
    const bool is_default = chosen.layout == SatcodxLayout::kDefault && chosen.record_length == 0;
    EXPECT_EQ(told.size(), is_default ? 1u : 0u);
  }
}

}  // namespace
}  // namespace vexa
