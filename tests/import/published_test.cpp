// Lists of other receivers: what becomes of each kind of line, as one text of the work records.
#include <gtest/gtest.h>

#include "import/dvbv5.h"
#include "import/import_command.h"
#include "import/lamedb.h"
#include "import/vdr.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

// "NAME 192E{11778H 27500 fec3{'Service' 7 TV free 1/2/3} }" and so on, then the notes.
std::string TextOf(const WorkRecords& work, const ListLosses& losses) {
  std::string text;
  size_t carrier = 0, service = 0;
  for (const WorkSatellite& satellite : work.satellites) {
    text += Format("%s %u%c{", Name(satellite.name).c_str(), satellite.angle, satellite.east ? 'E' : 'W');
    for (uint32_t c = 0; c < satellite.carrier_count; ++c, ++carrier) {
      const WorkCarrier& found = work.carriers[carrier];
      text +=
          Format("%u%c %u fec%u{", found.frequency, "HVLR"[found.polarization], found.symbol_rate, found.fec);
      for (uint32_t s = 0; s < found.service_count; ++s, ++service) {
        const WorkService& one = work.services[service];
        text += Format("'%s' %u %s%s %u/%u/%u ", Name(one.name).c_str(), one.program_number,
                       one.type == kTv ? "TV" : "radio", one.free ? "" : " locked", one.video_pid,
                       one.audio_pid, one.pcr_pid);
      }
      text += "}";
    }
    text += "}";
  }
  for (const ListNote& note : NotesOf(losses)) text += (note.icon == Icon::kWarning ? "!" : "|") + note.text;
  return text;
}

struct ListCase {
  std::string list, expected;
};

template <class Read>
void ExpectTexts(const std::vector<ListCase>& cases, const Read& read) {
  for (const ListCase& c : cases) {
    for (const bool spreads : {false, true}) {
      std::string list = c.list;
      // A byte-order mark and CR LF change nothing.
      for (size_t at = 0; spreads && (at = list.find('\n', at)) != std::string::npos; at += 2)
        list.insert(at, "\r");
      WorkRecords work;
      ListLosses losses;
      read(BytesOf((spreads ? "\xEF\xBB\xBF" : "") + list), work, losses);
      EXPECT_EQ(TextOf(work, losses), c.expected) << c.list;
    }
  }
}

TEST(PublishedLists, Vdr) {
  const auto line = [](const char* name, const char* tuning, const char* rest) {
    return std::string(name) + ":" + tuning + ":" + rest + ":1:1:0\n";
  };
  const char* const kRtl = "12187:HC34M2S0:S19.2E:27500";
  ExpectTexts(
      {{":Group\n\n" + line("RTL Television,RTL;CBC", kRtl, "163=2:104=deu@3,105;106=deu@106:105:0:12003") +
            line("A,B,C;P;Q", "12188:hs0c99:s19.2e:27500", "1+7:0;9=x@1:0:1702,1722:65535") +
            line("Radio|One", kRtl, "0:104:0:0:2") + line("Data", kRtl, "0:0:0:0:3"),
        "19.2E 192E{12187H 27500 fec3{'RTL Television' 12003 TV 163/104/163 'Radio:One' 2 radio "
        "8192/104/8192 }"
        "12188H 27500 fec0{'A,B' 65535 radio locked 8192/9/7 }}|1 services of other kinds left out"},
       // Rounding, positions without decimals and at 0, doubles, raised ids, names that are empty or too
       // long.
       {line("X", "11493500:VC56:S5W:22000", "9000:8191:0:0:7") +
            line("X", "11494:V:S5.09W:22000", "1:1:0:0:7") +
            line("Y", "11494:V:S5.0W:22000", "2:0:0:0000:7") +
            line(" ", "100000:R:S0W:1", "300+301:0:0:0:8") +
            line("\xC2\x86 123456789012345678901 \x01", "100001:L:S0.0E:1", "2::0:0:8"),
        "5.0W 50W{11494V 22000 fec4{'X' 7 TV 8192/8191/8192 'Y' 8 TV 2/8192/2 }}"
        "0.0E 0E{100000R 1 fec0{'Service1' 8 TV 300/8192/301 }100L 1 fec0{'1234567890123456789' 8 TV "
        "2/8192/2 }}"},
       // Left out, and what cannot be read.
       {line("S2", "11493:HC23M5S1:S19.2E:22000", "1:1:0:0:1") +
            line("S2", "11493:HC34S1:S19.2E:22000", "2:1:0:0:2") +
            line("S2", "11494:HS1:S19.2E:22000", "2:1:0:0:2") + line("T", "410:M64:C:6900", "101:102:0:0:1") +
            line("T", "410:M64:C:6900", "101:102:0:0:2") + line("T", "410:M64:T:6900", "101:102:0:0:2") +
            "\n#\n" + line("no side", "1:H:S19.2:1", "1:1:0:0:1") +
            line("no pol", "1:C34:S1E:1", "1:1:0:0:1") + line("far", "1:H:S180.1E:1", "1:1:0:0:1") +
            line("id", "1:H:S1E:1", "1:1:0:0:65536") + line("rate", "1:H:S1E:16777216", "1:1:0:0:1") +
            line("pid", "1:H:S1E:1", "x:1:0:0:1") + "a:1:H:S1E:1:1:1:0:0",
        "!8 lines cannot be read, the first is line 8|2 DVB-S2 carriers left out|2 carriers of other "
        "delivery "
        "systems left out"}},
      [](const Bytes& list, WorkRecords& work, ListLosses& losses) {
        ReadVdr(list, {}, work, {}, {}, losses);
      });
}

TEST(PublishedLists, Lamedb) {
  const std::string kFour = "eDVB services /4/\ntransponders\n";
  const std::string kAstra = "00c00000:03ea:0001\n\ts 11229499:21999500:1:2:192:2:0\n/\n";
  const std::string kAstraText = "19.2E 192E{11229V 22000 fec2{";
  ExpectTexts(
      {{kFour + kAstra +
            "1:1:1\n\ts 12000000:27500000:3:9:-8:2:0:1:2:0:2\n/\n2:1:1\n\tt 498000000:0\n/\n3:1:1\n\ts "
            "12000500:1:2:5:3592:2\n/\nend\nservices\n"
            "1B2:00C00000:3ea:1:25:0\n\xC2\x86"
            "A\xC2\x87 B\np:P,c:00faa,c:010FAB,c:032,c:0400ff,C:0000,f:4\n"
            "1b3:c00000:03ea:0001:10:0:0\n\np:,c:040123,c:7f0001\n"
            "5:3:1:1:31:0\nend\nf:1\n6:1:1:1:1:0\nS2\np:\n7:2:1:1:1:0\nT\np:\n8:9:1:1:1:0\nNo carrier\np:\n"
            "9:3:1:1:3:0\nData\np:\nend\nrest:\n",
        kAstraText + "'A B' 434 TV locked 4010/4011/2 'Service2' 435 radio 8192/291/8192 }}"
                     "0.8W 8W{12001L 0 fec5{'end' 5 TV 8192/8192/8192 }}|1 DVB-S2 carriers left out|1 "
                     "carriers of other "
                     "delivery systems left out|1 services of other kinds left out|1 services without a "
                     "carrier left out"},
       // What cannot be read takes the lines that belong to it along, and no others.
       {kFour + kAstra +
            "x:1:1\n\ts 1:1:1:1:1:1\n/\n7:1:1\n/\n8:1:1\n\ts 1:1:4:1:1:1\n/\nend\nservices\n"
            "x:c00000:3ea:1:1:0\nLost\np:,c:000001\njunk\n1:c00000:3ea:1:1:0\nKept\np:,c:00ffff\n"
            "2:c00000:3ea:1:1:0\nCut",
        kAstraText +
            "'Kept' 1 TV 8192/8192/8192 'Cut' 2 TV 8192/8192/8192 }}!5 lines cannot be read, the first is "
            "line 6"},
       {"eDVB services /5/\n# comment\nt:c00000:3ea:1,s:11229000:22000000:0:1:1800:2:0:0\nt:2:1:1,s:12000000:"
        "27500000:1:3:3600:2:0:1:2:0:2,MIS/PLS:1:2:3\nt:3:1:1,c:1:2\ns:1:c00000:3ea:1:7:0:0,\"A \"B\", "
        "C\",p:P,c:"
        "010001\ns:2:2:1:1:1:0,\"S2\",p:\ns:3:c00000:3ea:1:1:0,\"no "
        "end\ns:4:c00000:3ea:1:1:0,\"C\"\nend\nx\n",
        "180.0E 1800E{11229H 22000 fec1{'A \"B\", C' 1 radio 8192/1/8192 'C' 4 TV 8192/8192/8192 }}!1 lines "
        "cannot "
        "be read, the first is line 8|1 DVB-S2 carriers left out|1 carriers of other delivery systems left "
        "out"},
       {"eDVB services /3/\n" + kFour, ""}},
      [](const Bytes& list, WorkRecords& work, ListLosses& losses) {
        ReadLamedb(list, {}, work, {}, {}, losses);
      });
}

TEST(PublishedLists, Dvbv5) {
  const auto section = [](const char* system, const char* frequency, const char* polarization,
                          const char* rest) {
    return Format("[Any] # x\n  DELIVERY_SYSTEM = %s\n\tFREQUENCY=%s\nPOLARIZATION = %s\n%s\n", system,
                  frequency, polarization, rest);
  };
  const char* const kRate = "SYMBOL_RATE = 27499500\nINNER_FEC = 5/6\nPILOT = OFF";
  ExpectTexts({{"# head\n" + section("DVBS", "11739499", "VERTICAL", kRate) +
                    section("DVBS2", "11739500", "LEFT", kRate) +
                    section("DVBS", "11739", "VERTICAL", "SYMBOL_RATE=27500000") +
                    section("DVBT", "1", "", "") + section("dvbs", "99999", "right", kRate),
                "Any-19.2E 192E{11739V 27500 fec4{}99999R 27500 fec4{}}|1 DVB-S2 carriers left out|1 "
                "carriers of other "
                "delivery systems left out"},
               {section("DVBS", "1x", "LEFT", kRate) + section("DVBS", "1", "LEFT", "") +
                    section("DVBS", "1", "OFF", kRate) + "[None]\njunk\n",
                "!5 lines cannot be read, the first is line 3"},
               {"S 11739000 V 27500000 3/4 35\nS2 11739500 h 22000000\nS 100000  L\t1 9/10\nT 498 8MHz\nS 1 "
                "V\nS 1 X 1\n",
                "Any-19.2E 192E{11739V 27500 fec3{}100L 0 fec0{}}!2 lines cannot be read, the first is line "
                "5|1 DVB-S2 "
                "carriers left out|1 carriers of other delivery systems left out"}},
              [](const Bytes& list, WorkRecords& work, ListLosses& losses) {
                ReadDvbv5(list, "Any-19.2E", {}, work, {}, {}, losses);
              });
  const struct {
    const char *file, *satellite;
    uint32_t angle, east;
  } names[] = {{"Hotbird-13E", "Hotbird-13E", 130, 1}, {"Sat_A-5.08w.conf", "Sat_A-5.08w", 50, 0},
               {"Zero_0W.list", "Zero_0W", 0, 1},      {"Far-181E", "Far-181E", 0, 0},
               {"None.2E.txt", "None.2E", 0, 0},       {"19.2E", "19.2E", 192, 1},
               {"A\xC5\x81-1E", "A?-1E", 10, 1}};
  for (const auto& c : names) {
    WorkRecords work;
    ListLosses losses;
    ReadDvbv5(BytesOf("S 11739 V 1 3/4"), c.file, {}, work, {}, {}, losses);
    ASSERT_EQ(work.satellites.size(), 1u);
    const WorkSatellite& satellite = work.satellites[0];
    EXPECT_EQ(std::tuple(Name(satellite.name), satellite.angle, satellite.east),
              std::tuple(c.satellite, c.angle, c.east));
    EXPECT_EQ(losses.warnings.size(), c.angle == 0 && c.east == 0 ? 1u : 0u) << c.file;
    EXPECT_EQ(losses.lacking, std::string(c.satellite).find('?') == std::string::npos ? 0u : 1u);
  }
}

// The same carrier as DVB-S and DVB-S2 is one when both stay.
TEST(PublishedLists, KeptDvbS2) {
  const std::string list = "S2 11739000 V 27500000 3/4\nS 11739000 V 27500000 5/6\nS2 11740000 H 1000000\n";
  for (const bool keep : {false, true}) {
    WorkRecords work;
    ListLosses losses;
    ReadDvbv5(BytesOf(list), "A-1E", {}, work, {}, {.keep_s2 = keep}, losses);
    EXPECT_EQ(TextOf(work, losses), keep ? "A-1E 10E{11739V 27500 fec3{}11740H 1000 fec0{}}"
                                         : "A-1E 10E{11739V 27500 fec4{}}|2 DVB-S2 carriers left out");
  }
}

TEST(PublishedLists, AreKnownByTheirContent) {
  const struct {
    const char *file, *content;
    std::optional<ListFormat> format;
  } cases[] = {
      {"channels.conf", "\xEF\xBB\xBF:Group\r\n", ListFormat::kVdr},
      {"any.conf", "a:b", ListFormat::kVdr},
      {"any", "\n:Group\nA:11778:H:S19.2E:27500:1:1:0:0:1\n", ListFormat::kVdr},
      {"any", "A:11778:H:19.2E:27500:1:1:0:0:1\n", std::nullopt},
      {"any", ":Group\n", std::nullopt},
      {"list.dat", "A:11778:H:S19.2E:27500:1:1:0:0:1\n", std::nullopt},
      {"lamedb", "eDVB services /4/\n", ListFormat::kLamedb},
      {"a.txt", "\n eDVB services /5/\n", ListFormat::kLamedb},
      {"lamedb", "eDVB services /3/\n", std::nullopt},
      {"Astra-19.2E", "# a\n\n[x]\n", ListFormat::kDvbv5},
      {"a.conf", "S 11778000 V 1 3/4", ListFormat::kDvbv5},
      {"a", "[C21 # MPE2]\n", ListFormat::kDvbv5},
      {"a", "[x\n", std::nullopt},
      {"a", "S x", std::nullopt},
      {"a", "# nothing", std::nullopt},
  };
  Recorder recorder;
  for (const auto& c : cases) {
    const Path path = recorder.context.temporary_folder / c.file;
    PutFile(path, BytesOf(c.content));
    EXPECT_EQ(RecognizeList(path), c.format) << c.file << ' ' << c.content;
    EXPECT_EQ(IsListFile(path), c.format || std::string(c.file) == "list.dat") << c.file << ' ' << c.content;
  }
}

// Names in every format, from UTF-8 and from another page, with what the database's page lacks counted.
TEST(PublishedLists, CodePages) {
  const CodePage& cyrillic = *FindCodePage("Windows-1251");
  const std::string kUtf8 = "\xD0\x96\xC3\xA9", kBytes = "\xC6\xE9";  // a letter of 1251, one of 1252
  SdxRecord record{.satellite = kUtf8, .name = "A" + kUtf8};
  SdxRecord bytes{.satellite = kBytes, .name = "A" + kBytes};
  const auto lyngsat = [](const std::string& name) {
    return ":SAT \"" + name + "\" 19.2 E\n:TRP 11778 27500H 0 V 0 3/4\n:CHN \"" + name + "\" 1 T\n:CHN \"" +
           name + "\" 1 T\n";
  };
  const auto dvb = [](const std::string& name) {
    return DvbList({{.text = name + "-19\260E"}, {.id = 1, .frequency = 1, .symbol_rate = 1, .text = name}});
  };
  const auto vdr = [](const std::string& name) { return name + ":11778:H:S19.2E:27500:1:1:0:0:1\n"; };
  const struct {
    ListFormat format;
    std::string list;
    const CodePage *database, *page;
    std::string service;
    size_t lacking;
  } cases[] = {
      {ListFormat::kSatcodx, SdxList({record}), nullptr, nullptr, "A" + kUtf8, 0},
      {ListFormat::kSatcodx, SdxList({record}), &Windows1252(), nullptr, "A?\xE9", 2},
      {ListFormat::kSatcodx, SdxList({record}), &cyrillic, nullptr, "A\xC6?", 2},
      {ListFormat::kSatcodx, SdxList({bytes}), &cyrillic, nullptr, "A" + kBytes, 0},
      {ListFormat::kSatcodx, SdxList({bytes}), nullptr, &cyrillic, "A??", 4},
      {ListFormat::kSatcodx, SdxList({bytes}), &cyrillic, &Windows1252(), "A??", 4},
      {ListFormat::kLyngsat, lyngsat(kUtf8), nullptr, nullptr, kUtf8, 0},
      {ListFormat::kLyngsat, lyngsat(kUtf8), &cyrillic, nullptr, "\xC6?", 2},
      {ListFormat::kLyngsat, lyngsat(kBytes), nullptr, &cyrillic, "??", 4},
      {ListFormat::kDvb2000, dvb(kBytes), &cyrillic, nullptr, kBytes, 0},
      {ListFormat::kDvb2000, dvb("\xA8"), &cyrillic, FindCodePage("ISO 8859-5"), "\xA3", 0},
      {ListFormat::kVdr, vdr(kUtf8), nullptr, nullptr, "?\xE9", 1},
      {ListFormat::kVdr, vdr(kUtf8), &cyrillic, nullptr, "\xC6?", 1},
      {ListFormat::kVdr, vdr(kBytes), nullptr, nullptr, kBytes, 0},
      {ListFormat::kVdr, vdr(kBytes), &cyrillic, &cyrillic, kBytes, 0},
  };
  Recorder recorder;
  for (const auto& c : cases) {
    const Path path = recorder.context.temporary_folder / "list";
    PutFile(path, BytesOf(c.list));
    WorkRecords work;
    ListLosses losses;
    ASSERT_TRUE(
        ReadList(recorder.context, path, c.format, {}, {.pages = {c.database, c.page}}, work, losses));
    ASSERT_EQ(work.services.size(), 1u);
    EXPECT_EQ(Name(work.services[0].name), c.service) << c.list;
    EXPECT_EQ(losses.lacking, c.lacking) << c.list;
  }
}

// Converted before it is cut: 25 characters of two bytes each are 19 in the record.
TEST(PublishedLists, LongNamesOfTelevisionLists) {
  std::string record = SdxText({.version = "05", .name = "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"});
  record[7] = '1';
  record.resize(132, ' ');
  record.replace(115, 17, "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC2\x86\xC3\xA9 ");
  WorkRecords work;
  ReadSatcodx(BytesOf(record), {}, work, {}, {.layout = SatcodxLayout::k105}, {&Windows1252(), nullptr});
  ASSERT_EQ(work.services.size(), 1u);
  EXPECT_EQ(Name(work.services[0].name), std::string(11, '\xE9'));
}

}  // namespace
}  // namespace vexa
