#include <gtest/gtest.h>

#include <span>

#include "config/ecf.h"
#include "config/ecf_content.h"
#include "tests/support/data_folder.h"
#include "tests/support/ecf_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

struct CompileTest : testing::Test {
  Recorder recorder;
  Path source = recorder.context.temporary_folder / "s.toml";
  Path ecf = recorder.context.temporary_folder / "s.ecf";

  std::optional<Bytes> Compile(const std::string& text) {
    PutFile(source, BytesOf(text));
    return CompileEcf(recorder.context, source);
  }
  bool Load(const std::string& text, ProjectConfig& config) {
    const auto file = Compile(text);
    if (!file) return false;
    PutFile(ecf, *file);
    return InitConfig(recorder.context, ecf, config);
  }
};

constexpr const char* kMaker = "[[manufacturer]]\nid = 7\nproducts = [\"p\"]\n";
constexpr const char* kProduct = "[product.p]\nname = \"P\"\nconfigurations = [\"c\"]\n";
// What every configuration with partitions needs, one a table of the image.
constexpr const char* kFourTables =
    "{ type = 3, start = 100000, length = 2508 }, { type = 4, start = 200000, length = 220000 }, "
    "{ type = 5, start = 500000, length = 9998 }, { type = 2, start = 600000, length = 2248 }";
constexpr const char* kConfiguration = "[configuration.c]\nname = \"C\"\n";

TEST_F(CompileTest, ReaderFindsWhatTheSourceStates) {
  ProjectConfig config;
  config.configuration_index = 1;
  ASSERT_TRUE(Load(std::string(kMaker) + R"(
[product.base]
name = "Base"
byte = 5
variant = 1
configurations = ["c", "d"]
table = ["00 01 02 03 04 05 06 07 08 09 0a 0B 0c 0d 0e 0f 10 11 12 13"]
second_table = ["ffffffffffffffffffffffffffffffffffffffff"]
[product.p]
parent = "base"
name = "Péri"
[configuration.c]
name = "C"
version = [1, 2]
regions = [{ name = "ADB Application", type = 3, start = 0x1, end = 4294967294 }]
loader = { header_tag = 1, packet_tag = 2, block_size = 256, packet_size = 2979 }
partitions = [{ type = 6, start = 1, length = 56352 }, { type = 0, number = 9, start = 60000, length = 3360, bitmap_bits = 40 },
  )" + kFourTables + R"(]
extra = "0102030405060708"
menu_languages = [["eng", "English"]]
audio_languages = [["fra", "Français"], ["deu", "Deutsch"]]
[configuration.d]
parent = "c"
name = "D"
extra = "00 00 00 00 00 00 00 01"
)",
                   config))
      << testing::PrintToString(recorder.Texts());
  EXPECT_EQ(Listing(config),
            "maker 7\nproduct P\xE9ri 5 1\ntable 0-13\ntable ff-ff\nconfiguration D 1.2\n"
            "region ADB Application 3 1-fffffffe\nloader 1 2 256 2979\npartition 1 6 1-56353\n"
            "partition 9 0 60000-63368\npartition 10 3 100000-102508\npartition 11 4 200000-420000\n"
            "partition 12 5 500000-509998\npartition 13 2 600000-602248\nsizes 3368 0 2248 2508 220000 9998 "
            "56352\nextra 0 0 0 0 0 0 0 1\nlanguages eng "
            "0\nlanguages fra 0 deu 0");
  EXPECT_EQ(LanguageName(config.first_languages.records[0]), "English");
  EXPECT_EQ(LanguageName(config.second_languages.records[0]),
            "Fran\xE7"
            "ais");
}

struct Fault {
  const char *text, *message;  // several lines: several faults
};

struct CompileFaults : CompileTest {
  // Each text behind `start` has just these faults.
  void Expect(const std::string& start, std::span<const Fault> faults) {
    for (const Fault& fault : faults) {
      EXPECT_FALSE(Compile(start + fault.text)) << fault.text;
      std::string told;
      for (const std::string& each : recorder.Texts())
        told += (told.empty() ? "" : "\n") + each.substr(each.find("s.toml") + 6);
      EXPECT_EQ(told, fault.message) << fault.text;
    }
  }
};

TEST_F(CompileFaults, OfAFile) {
  const Fault faults[] = {
      {"", "(1,1): manufacturer: \"manufacturer\" is missing in the file."},
      {"colour = 1\nmanufacturer = 1",
       "(1,1): colour: Unknown key \"colour\".\n(2,16): manufacturer: \"manufacturer\" must be a list."},
      {"manufacturer = [{ id = 1, products = [] }, 1]",
       "(1,44): manufacturer[1]: \"manufacturer\" must be a table."},
      {"[[manufacturer]]\nproducts = []", "(1,1): manufacturer[0].id: \"id\" is missing in a manufacturer."},
      {"[[manufacturer]]\nid = 256\nproducts = []",
       "(2,6): manufacturer[0].id: \"id\" must be a number from 0 to 255."},
      {"[[manufacturer]]\nid = \"7\"",
       "(1,1): manufacturer[0].products: \"products\" is missing in a manufacturer.\n"
       "(2,6): manufacturer[0].id: \"id\" must be a number from 0 to 255."},
      {"manufacturer = []\nproduct = 5", "(2,11): product: \"product\" must be tables by their keys."},
      {"manufacturer = []\nconfiguration.a = 5", "(2,19): configuration.a: \"a\" must be a table."},
      {kMaker, "(3,13): manufacturer[0].products[0]: There is no product \"p\"."},
      {"[[manufacturer]]\nid = 26\nproducts = []\n[[manufacturer]]\nid = 0x1A\nproducts = []\n"
       "[[manufacturer]]\nid = \"x\"\nproducts = [\"p\"]\n[product]\np = 5",
       "(5,6): manufacturer[1].id: There are two manufacturers of id 0x1A.\n"
       "(8,6): manufacturer[2].id: \"id\" must be a number from 0 to 255.\n"
       "(11,5): product.p: \"p\" must be a table."},
      {"[[manufacturer]]\nid = 7\nproducts = [\"p\", \"q\", \"p\"]\n[[manufacturer]]\nid = 8\n"
       "products = [\"q\"]\n[product.p]\nname = \"P\"\nconfigurations = []\n[product.q]\nparent = \"p\"",
       "(3,23): manufacturer[0].products[2]: The product \"p\" stands twice in the list."},
      {"[[manufacturer]]\nid = 7\nproducts = [1]",
       "(3,13): manufacturer[0].products[0]: \"products\" must be a list of names."},
  };
  Expect("", faults);
  Compile("x = \ny = 1");
  const Texts texts = recorder.Texts();
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_NE(texts[0].find("s.toml(1,"), std::string::npos) << texts[0];
  EXPECT_FALSE(CompileEcf(recorder.context, source / "none"));
  EXPECT_EQ(recorder.Texts().size(), 1u);
}

TEST_F(CompileFaults, OfAProduct) {
  const Fault faults[] = {
      {"parent = \"q\"", "(5,10): product.p.parent: There is no product \"q\"."},
      {"parent = \"p\"", "(5,10): product.p.parent: The product \"p\" is its own parent."},
      {"parent = \"q\"\n[product.q]\nparent = \"p\"",
       "(5,10): product.p.parent: The product \"q\" is its own parent.\n"
       "(7,10): product.q.parent: The product \"p\" is its own parent."},
      {"parent = 3", "(5,10): product.p.parent: \"parent\" must be a name."},
      {"name = \"P\"",
       "(4,1): product.p.configurations: \"configurations\" is missing in the product \"p\"."},
      {"configurations = []\nname = \"123456789012345678901234567890123\"",
       "(6,8): product.p.name: \"name\" has more than 32 characters."},
      {"configurations = []\nname = \"\\u0416\"",
       "(6,8): product.p.name: \"name\" has a character that the single-byte text cannot hold."},
      {"configurations = []\nname = \"P\"\ntable = [\"00\"]",
       "(7,10): product.p.table[0]: \"table\" must be 20 bytes in hexadecimal digits."},
      {"name = \"P\"\nconfigurations = [\"c\"]",
       "(6,19): product.p.configurations[0]: There is no configuration \"c\"."},
  };
  Expect(std::string(kMaker) + "[product.p]\n", faults);
  // What is wrong in a list moves no other configuration to another place, where more would be wrong.
  const std::string eeprom =
      "\nregions = [{name=\"123456789012345\",type=3,start=0,end=900000}]\n"
      "loader = {header_tag=1,packet_tag=2,block_size=1,packet_size=1}\n"
      "partitions = [{type=6,start=800000,length=56352},{type=0,start=0,length=96},"
      "{type=2,start=96,length=64},{type=3,start=100000,length=2508},"
      "{type=4,start=200000,length=220000},{type=5,start=500000,length=9998}]";
  const Fault lists[] = {
      {"[\"d\", \"c\"]", "(6,19): product.p.configurations[0]: There is no configuration \"d\"."},
      {"[\"f\", \"c\", \"f\", \"c\", 1]",
       "(6,29): product.p.configurations[2]: The configuration \"f\" stands twice in the list.\n"
       "(6,34): product.p.configurations[3]: The configuration \"c\" stands twice in the list.\n"
       "(6,39): product.p.configurations[4]: \"configurations\" must be a list of names."},
  };
  for (const Fault& list : lists) {
    const std::string text =
        list.text + ("\n" + std::string(kConfiguration)) + eeprom + "\n[configuration.f]\nname = \"F\"";
    const Fault whole[] = {{text.c_str(), list.message}};
    Expect(std::string(kMaker) + "[product.p]\nname = \"P\"\nconfigurations = ", whole);
  }
}

TEST_F(CompileFaults, OfAConfiguration) {
  const Fault faults[] = {
      {"version = [1]", "(9,11): configuration.c.version: \"version\" must be a list of two numbers."},
      {"version = [256, 16]",
       "(9,12): configuration.c.version[0]: \"version\" must be a number from 0 to 255.\n"
       "(9,17): configuration.c.version[1]: \"version\" must be a number from 0 to 15."},
      {"extra = \"00 0\"", "(9,9): configuration.c.extra: \"extra\" must be 8 bytes in hexadecimal digits."},
      {"extra = \"000102030405060708\"",
       "(9,9): configuration.c.extra: \"extra\" must be 8 bytes in hexadecimal digits."},
      {"regions = [{name=\"R\\u0001\",type=3,start=2,end=1}]",
       "(7,1): configuration.c.loader: \"loader\" is missing in the configuration \"c\".\n"
       "(9,12): configuration.c.regions[0]: The region \"R\x01\" ends before it starts.\n"
       "(9,18): configuration.c.regions[0].name: \"name\" has a character that receivers cannot show."},
      {"loader = {header_tag=1,packet_tag=1,block_size=0,packet_size=2980}\n"
       "regions = [{name=\"R\",type=3,start=0,end=65}]",
       "(9,10): configuration.c.loader: The two tags of the loader must differ.\n"
       "(9,48): configuration.c.loader.block_size: \"block_size\" must be a number from 1 to 256.\n"
       "(9,62): configuration.c.loader.packet_size: \"packet_size\" must be a number from 1 to 2979."},
      {"loader = {header_tag=1,packet_tag=2,block_size=1,packet_size=1}\n"
       "regions = [{name=\"R\",type=3,start=9,end=10},{name=\"S\",type=3,start=0,end=64},\n"
       "{name=\"T\",type=3,start=0,end=0xFFFFFFFF},{name=\"U\",type=3,start=4294967229,end=0xFFFFFFFE}]",
       "(10,12): configuration.c.regions[0]: The region \"R\" has 1 bytes; an image takes more than the 64 "
       "of "
       "its header.\n"
       "(10,45): configuration.c.regions[1]: The region \"S\" has 64 bytes; an image takes more than the 64 "
       "of its header.\n"
       "(11,30): configuration.c.regions[2].end: \"end\" must be a number from 0 to 4294967294."},
      {"partitions = [{type=7,start=0,length=0}]",
       "(7,1): configuration.c.regions: There is no region of type 3, which the partitions lie in.\n"
       "(9,21): configuration.c.partitions[0].type: \"type\" must be a number from 0 to 6."},
      {"loader = {header_tag=1,packet_tag=2,block_size=1,packet_size=1}\n"
       "regions = [{name=\"\",type=99,start=0,end=65},{name=\"\",type=16,start=0,end=65}]\n"
       "partitions = [{type=7,start=0,length=0}]\n[configuration.e]\nname = \"\"",
       "(10,18): configuration.c.regions[0].name: \"name\" is empty.\n"
       "(10,26): configuration.c.regions[0].type: \"type\" must be a number from 0 to 15.\n"
       "(10,51): configuration.c.regions[1].name: \"name\" is empty.\n"
       "(10,59): configuration.c.regions[1].type: \"type\" must be a number from 0 to 15.\n"
       "(11,21): configuration.c.partitions[0].type: \"type\" must be a number from 0 to 6.\n"
       "(13,8): configuration.e.name: \"name\" is empty."},
      {"menu_languages = [[\"eng\"]]",
       "(9,19): configuration.c.menu_languages[0]: \"menu_languages\" must be a list of pairs of code and "
       "name."},
      {"audio_languages = [[\"engl\", \"English\"]]",
       "(9,21): configuration.c.audio_languages[0][0]: \"audio_languages\" has more than 3 characters."},
      {"[configuration.unused]\nname = 5\nversoin = [1, 1]",
       "(10,8): configuration.unused.name: \"name\" must be a text.\n"
       "(11,1): configuration.unused.versoin: Unknown key \"versoin\"."},
  };
  Expect(std::string(kMaker) + kProduct + kConfiguration, faults);  // which have 8 lines
}

// The sizes in an EEPROM, place 1, and those in a journal, all other places.
constexpr struct {
  int type, eeprom, journal;
} kTables[] = {{3, 2508, 2508},   {4, 220000, 220000}, {5, 9998, 9998},
               {6, 56352, 56352}, {0, 96, 3368},       {2, 64, 2248}};

struct CompilePartitions : CompileTest {
  // With one partition of each type behind the other, the first of this length; `region` bytes for all of
  // them.
  bool Compiles(int type, int length, const char* places, int region = 300000) {
    const std::string configurations = Format("[product.p]\nname = \"P\"\nconfigurations = [%s]\n", places);
    std::string partitions = Format("{type=%d,start=0,length=%d}", type, length);
    int start = length;
    for (const auto& row : kTables) {
      if (row.type == type) continue;
      partitions += Format(",{type=%d,start=%d,length=%d}", row.type, start, row.journal);
      start += row.journal;
    }
    return Compile(kMaker + configurations + kConfiguration +
                   Format("regions = [{name=\"123456789012345\",type=3,start=0,end=%d}]\n", region) +
                   "loader = {header_tag=1,packet_tag=2,block_size=1,packet_size=1}\npartitions = [" +
                   partitions + "]\n[configuration.d]\nname = \"D\"\n[configuration.e]\nname = \"E\"\n")
        .has_value();
  }
};

TEST_F(CompilePartitions, HoldTheirTables) {
  for (const auto& row : kTables) {
    SCOPED_TRACE(row.type);
    for (const char* places : {"\"d\"", "\"d\", \"c\""}) {  // unused, and in the EEPROM's place
      EXPECT_TRUE(Compiles(row.type, row.eeprom, places));
      EXPECT_FALSE(Compiles(row.type, row.eeprom - 1, places));
    }
    const char* const in_two = "\"d\", \"c\"]\n[product.q]\nname = \"Q\"\nconfigurations = [\"c\"";
    for (const std::string places : {"\"c\"", "\"d\", \"e\", \"c\"", in_two}) {
      EXPECT_TRUE(Compiles(row.type, row.journal, places.c_str()));
      recorder.Texts();
      EXPECT_FALSE(Compiles(row.type, row.journal - 1, places.c_str()));
      const std::string text = recorder.Texts().at(0);
      EXPECT_NE(text.find(Format(
                    "(%d,%d): configuration.c.partitions[0].length: A partition of type %d has at least "
                    "%d bytes for its table",
                    places == in_two ? 14 : 11, 38, row.type, row.journal)),
                std::string::npos)
          << text;
    }
    recorder.Texts();
  }
}

TEST_F(CompilePartitions, FitTheirRegion) {
  // Of a journal all tables, of an EEPROM's place the four before it.
  const int four = 2508 + 220000 + 9998 + 56352, all = four + 3368 + 2248;
  for (const auto& [places, needed] : {std::pair("\"c\"", all), std::pair("\"d\", \"c\"", four)}) {
    EXPECT_TRUE(Compiles(3, 2508, places, needed));
    EXPECT_FALSE(Compiles(3, 2508, places, needed - 1));
    EXPECT_NE(
        recorder.Texts().at(0).find(Format("(11,14): configuration.c.partitions: The partitions take %d "
                                           "bytes, the region \"123456789012345\" has %d.",
                                           needed, needed - 1)),
        std::string::npos);
  }
}

TEST_F(CompilePartitions, AreThereOnceEach) {
  EXPECT_FALSE(Compile(std::string(kMaker) + kProduct + kConfiguration +
                       "regions = [{name=\"12345678901234\",type=3,start=0,end=300000}]\n"
                       "loader = {header_tag=1,packet_tag=2,block_size=1,packet_size=1}\n"
                       "partitions = [{type=1,start=0,length=0}, {type=1,start=0,length=0}]"));
  const Texts texts = recorder.Texts();
  ASSERT_EQ(texts.size(), 8u) << testing::PrintToString(texts);
  EXPECT_NE(texts[0].find(
                "(9,18): configuration.c.regions[0].name: Receivers show the region of type 3 by a name of "
                "15 characters; this one has 14."),
            std::string::npos);
  const int missing[] = {0, 2, 3, 4, 5, 6};
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_NE(texts[i + 1].find(Format(
                  "(11,14): configuration.c.partitions: There is no partition of type %d.", missing[i])),
              std::string::npos)
        << texts[i + 1];
  }
  EXPECT_NE(texts[7].find("partitions[1].type: There are two partitions of type 1."), std::string::npos);
}

TEST_F(CompileTest, PartitionsStandBesideEachOther) {
  // `place`: the product's configurations; `last`: the partitions behind those of types 3, 4 and 5.
  const auto told = [&](const char* place, const std::string& last, const char* regions = "") {
    const auto file =
        Compile(std::string(kMaker) + "[product.p]\nname = \"P\"\nconfigurations = [" + place + "]\n" +
                kConfiguration + "regions = [{name=\"123456789012345\",type=3,start=0,end=900000}" + regions +
                "]\nloader = {header_tag=1,packet_tag=2,block_size=1,packet_size=1}\npartitions = [" +
                "{type=3,start=0,length=2508,bitmap_bits=101},{type=4,start=2524,length=220000}," +
                "{type=5,start=500000,length=9998},\n" + last + "]\n[configuration.d]\nname = \"D\"\n");
    std::string told;
    for (const std::string& each : recorder.Texts()) told += each.substr(each.find("s.toml") + 6) + "\n";
    EXPECT_EQ(file.has_value(), told.empty());
    return told;
  };
  const std::string six = "{type=6,start=600000,length=56352},";
  EXPECT_EQ(told("\"c\"", six + "{type=0,start=700000,length=3368},{type=2,start=800000,length=2248}"), "");
  EXPECT_EQ(told("\"c\"",
                 "{type=6,number=2,start=600000,length=56352},{type=0,start=656351,length=3368},"
                 "{type=2,start=4294965048,length=2248}",
                 ",{name=\"R\",type=3,start=0,end=900000}"),
            "(9,11): configuration.c.regions: There are 2 regions of type 3; the partitions lie in one.\n"
            "(12,16): configuration.c.partitions[3].number: There are two partitions of number 2.\n"
            "(12,45): configuration.c.partitions[4]: The partition overlaps the one of type 6 at "
            "configuration.c.partitions[3].\n"
            "(12,45): configuration.c.partitions[4].number: There are two partitions of number 3.\n"
            "(12,79): configuration.c.partitions[5]: The partition ends behind the last address.\n");
  // In the region from its first address to its last, of a journal all tables.
  const auto last_at = [&](int start) {
    return six + Format("{type=0,start=700000,length=3368},{type=2,start=%d,length=2248}", start);
  };
  EXPECT_EQ(told("\"c\"", last_at(900000 - 2248)), "");
  EXPECT_EQ(told("\"c\"", last_at(900001 - 2248)),
            "(12,70): configuration.c.partitions[5]: The partition does not lie in the region "
            "\"123456789012345\", from 0x00000000 to 0x000DBBA0.\n");
  // An EEPROM has addresses of its own.
  const std::string eeprom = six + "{type=0,start=0,length=96},{type=2,start=96,length=64}";
  EXPECT_EQ(told("\"d\",\"c\"", eeprom), "");
  EXPECT_EQ(told("\"d\",\"c\"", six + "{type=0,start=0,length=96},{type=2,start=95,length=64}"),
            "(12,63): configuration.c.partitions[5]: The partition overlaps the one of type 0 at "
            "configuration.c.partitions[4].\n");
  EXPECT_EQ(told("\"d\",\"c\"",
                 "{type=6,start=2523,length=56352},{type=0,start=0,length=96},{type=2,start=96,length=64}"),
            "(12,1): configuration.c.partitions[3]: The partition overlaps the one of type 3 at "
            "configuration.c.partitions[0].\n"
            "(12,1): configuration.c.partitions[3]: The partition overlaps the one of type 4 at "
            "configuration.c.partitions[1].\n");
}

struct DescribeTest : CompileTest {
  // The file comes back from its description.
  void ExpectRoundTrip(const Bytes& file) {
    bool compiles = false;
    const auto text = DescribeEcf(recorder.context, "x", file, compiles);
    ASSERT_TRUE(compiles) << testing::PrintToString(recorder.Texts());
    const auto back = Compile(text);
    ASSERT_TRUE(back) << text << testing::PrintToString(recorder.Texts());
    EXPECT_EQ(*back, file) << text;
  }
  // The warnings of a file that does not come back; its description states what it can.
  Texts Warnings(const std::string& name, std::span<const uint8_t> file) {
    bool compiles = true;
    EXPECT_NE(DescribeEcf(recorder.context, name, file, compiles).find("[[manufacturer]]"),
              std::string::npos);
    EXPECT_FALSE(compiles);
    for (const Message& message : recorder.shown) EXPECT_EQ(message.icon, Icon::kWarning) << message.text;
    return recorder.Texts();
  }
};

TEST_F(DescribeTest, CompilesToTheSameBytes) {
  const auto shipped = CompileEcf(recorder.context, DataFolder() / "receivers.toml");
  ASSERT_TRUE(shipped);
  ExpectRoundTrip(*shipped);
  for (const char* text :
       {"manufacturer = []", "[[manufacturer]]\nid = 255\nproducts = []",
        "[[manufacturer]]\nid = 1\nproducts = [\"p\", \"q\"]\n[product.p]\nname = "
        "\"\"\nconfigurations = []\n"
        "second_table = [\"000102030405060708090a0b0c0d0e0f10111213\"]\n"
        "[product.q]\nname = \"a\\\"b\\\\c\\u0007\\u0081\\u20AC\"\nbyte = 255\nvariant = 9\n"
        "configurations = [\"c\", \"d\"]\n"
        "[configuration.c]\nname = \"A b\"\nversion = [255, 15]\nmenu_languages = []\nextra = "
        "\"0102030405060708\"\n"
        "[configuration.d]\nname = \"a-B\"\naudio_languages = [[\"\", \"\"], [\"abc\", \"\\u0001\"]]\n"
        "regions = [{name=\"123456789012345\",type=3,start=0,end=4294967294},"
        "{name=\"\\u0081\",type=15,start=0,end=65}]\n"
        "loader = {header_tag=0,packet_tag=255,block_size=256,packet_size=2979}\n"
        "partitions = "
        "[{type=0,number=255,start=1,length=96,bitmap_bits=0},{type=5,number=3,start=300000,length=9998},"
        "{type=2,start=200,length=64,bitmap_bits=255},{type=6,start=400000,length=56352},"
        "{type=3,start=500000,length=2508},{type=4,start=0,length=220000}]\n"}) {
    const auto file = Compile(text);
    ASSERT_TRUE(file) << testing::PrintToString(recorder.Texts());
    ExpectRoundTrip(*file);
  }
  // One configuration at several places of a product, one product at several of a manufacturer, as a file may
  // have them.
  EcfContent content;
  content.configurations.resize(2);
  content.configurations[0].name = "A";
  content.configurations[1].name = "a";
  content.products = {{.name = "P", .configurations = {0, 1, 0, 0}, .table = {}, .second_table = {}},
                      {.name = "Q", .configurations = {0, 0}, .table = {}, .second_table = {}}};
  content.manufacturers = {{1, {0, 1, 0, 0}}, {2, {0, 1}}};
  ExpectRoundTrip(WriteEcf(content).value_or(Bytes{}));
}

TEST_F(DescribeTest, OfWhatNoDescriptionStatesNamesThePlace) {
  const auto shipped = *CompileEcf(recorder.context, DataFolder() / "receivers.toml");
  // One byte that is not read in each: file, manufacturer, product, configuration, block, region, the name of
  // a language.
  for (const size_t at : {size_t{5}, size_t{25}, size_t{32}, size_t{80 + 131}, size_t{228 + 3},
                          size_t{244 + 70}, size_t{6502}}) {
    Bytes file = shipped;
    file[at] ^= 0x40;
    EXPECT_EQ(Warnings("x.ecf", file),
              Texts{Format("x.ecf: No description states what this file holds at byte %zu.", at)});
  }
  Bytes longer = shipped;
  longer.push_back(0);
  EXPECT_EQ(Warnings("x", longer).size(), 1u);
  EXPECT_FALSE(Warnings("x", std::span(shipped).first(300)).empty());
  Bytes refused = shipped;
  refused[80 + 129] = 16;  // version B
  const Texts texts = Warnings("x", refused);
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_NE(texts[0].find("settings-in-flash.version[1]: \"version\" must be a number from 0 to 15."),
            std::string::npos)
      << texts[0];
}

TEST(ShippedConfiguration, FitsTheImagesThatAreMadeForIt) {
  Recorder recorder;
  const auto file = CompileEcf(recorder.context, DataFolder() / "receivers.toml");
  ASSERT_TRUE(file) << testing::PrintToString(recorder.Texts());
  const Path ecf = recorder.context.temporary_folder / "r.ecf";
  PutFile(ecf, *file);
  const auto tree = ReadEcfTree(recorder.context, ecf);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->manufacturers.size(), 2u);
  bool variant = false, flash = false, eeprom = false;
  for (uint8_t m = 0; m < tree->manufacturers.size(); ++m) {
    for (uint8_t p = 0; p < tree->manufacturers[m].products.size(); ++p) {
      for (uint8_t c = 0; FindConfiguration(*tree, m, p, c); ++c) {
        ProjectConfig config;
        config.manufacturer_index = m;
        config.product_index = p;
        config.configuration_index = c;
        ASSERT_TRUE(InitConfig(recorder.context, ecf, config));
        variant = variant || config.database_variant != 0;
        EXPECT_NE(config.loader.header_tag, config.loader.packet_tag);
        if (!config.partitions_loaded) continue;
        const auto& size = config.partition_sizes;
        EXPECT_GE(size[3], 128u + 85 * 28);
        EXPECT_GE(size[4], 220000u);
        EXPECT_GE(size[5], 2u * 4999);
        EXPECT_GE(size[6], 8u * (44 + 5000 + 2000));
        const uint32_t tables = size[3] + size[4] + size[5] + size[6];
        const RegionEntry& region = config.regions.at(0);
        EXPECT_EQ(region.type, 3);
        EXPECT_EQ(region.name.size(), 15u);
        if (c == 0) {
          EXPECT_GE(size[0], 8u + 35 * 96);
          EXPECT_GE(size[2], 8u + 35 * 64);
          EXPECT_GE(region.end - region.start, tables + size[0] + size[2] + 64);
          flash = true;
        } else {
          EXPECT_EQ(size[0], 96u);
          EXPECT_EQ(size[2], 64u);
          EXPECT_GE(region.end - region.start, tables);
          eeprom = true;
        }
        EXPECT_FALSE(config.first_languages.records.empty());
        EXPECT_FALSE(config.second_languages.records.empty());
      }
    }
  }
  EXPECT_TRUE(variant && flash && eeprom);
}

}  // namespace
}  // namespace vexa
