#include <gtest/gtest.h>

#include "config/ecf.h"
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
regions = [{ name = "R", type = 3, start = 0x10, end = 4294967295 }]
loader = { header_tag = 1, packet_tag = 2, block_size = 256, packet_size = 2979 }
partitions = [{ type = 6, start = 1, length = 2 }, { type = 0, number = 9, start = 3, length = 4, bitmap_bits = 40 }]
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
            "region R 3 10-ffffffff\nloader 1 2 256 2979\npartition 1 6 1-3\npartition 9 0 3-15\n"
            "sizes 12 0 0 0 0 0 2\nextra 0 0 0 0 0 0 0 1\nlanguages eng 0\nlanguages fra 0 deu 0");
  EXPECT_EQ(LanguageName(config.first_languages.records[0]), "English");
  EXPECT_EQ(LanguageName(config.second_languages.records[0]),
            "Fran\xE7"
            "ais");
}

TEST_F(CompileTest, EveryFaultIsOneMessageWithItsLine) {
  const auto expect_fault = [&](const std::string& text, const std::string& message) {
    EXPECT_FALSE(Compile(text)) << text;
    const Texts texts = recorder.Texts();
    ASSERT_EQ(texts.size(), 1u) << text << testing::PrintToString(texts);
    EXPECT_NE(texts[0].find("s.toml" + message), std::string::npos) << texts[0] << "\n" << message;
  };
  struct Fault {
    const char *text, *message;
  };
  const Fault of_the_file[] = {
      {"x = ", "(1): "},
      {"", ": \"manufacturer\" is missing in the file."},
      {"colour = 1", "(1): Unknown key \"colour\"."},
      {"manufacturer = 1", "(1): \"manufacturer\" must be a list."},
      {"manufacturer = [1]", "(1): \"manufacturer\" must be a table."},
      {"[[manufacturer]]\nproducts = []", ": \"id\" is missing in a manufacturer."},
      {"[[manufacturer]]\nid = 256\nproducts = []", "(2): \"id\" must be a number from 0 to 255."},
      {"[[manufacturer]]\nid = \"7\"\nproducts = []", "(2): \"id\" must be a number from 0 to 255."},
      {"[[manufacturer]]\nid = 1", ": \"products\" is missing in a manufacturer."},
      {kMaker, "(3): There is no product \"p\"."},
  };
  for (const Fault& row : of_the_file) expect_fault(row.text, row.message);
  const Fault of_a_product[] = {
      {"parent = \"q\"", "(5): There is no product \"q\"."},
      {"parent = \"p\"", "(5): The product \"p\" is its own parent."},
      {"parent = \"q\"\n[product.q]\nparent = \"p\"", "(7): The product \"p\" is its own parent."},
      {"parent = 3", "(5): \"parent\" must be a name."},
      {"name = \"P\"", ": \"configurations\" is missing in the product \"p\"."},
      {"configurations = []", ": \"name\" is missing in the product \"p\"."},
      {"configurations = []\nname = \"123456789012345678901234567890123\"",
       "(6): \"name\" has more than 32 characters."},
      {"configurations = []\nname = \"\\u0416\"",
       "(6): \"name\" has a character that the single-byte text cannot hold."},
      {"configurations = []\nname = \"P\"\ntable = [\"00\"]",
       "(7): \"table\" must be 20 bytes in hexadecimal digits."},
      {"name = \"P\"\nconfigurations = [\"c\"]", "(6): There is no configuration \"c\"."},
  };
  for (const Fault& row : of_a_product)
    expect_fault(std::string(kMaker) + "[product.p]\n" + row.text, row.message);
  const char* const region = "regions = [{name=\"R\",type=3,start=0,end=1}]\n";
  const Fault of_a_configuration[] = {
      {"version = [1]", "(9): \"version\" must be a list of two numbers."},
      {"version = [1, 300]", "(9): \"version\" must be a number from 0 to 255."},
      {"extra = \"00 0\"", "(9): \"extra\" must be 8 bytes in hexadecimal digits."},
      {"extra = 5", "(9): \"extra\" must be 8 bytes in hexadecimal digits."},
      {region, ": \"loader\" is missing in the configuration \"c\"."},
      {"regions = [{name=\"R\",type=3,start=2,end=1}]\n"
       "loader = {header_tag=1,packet_tag=2,block_size=1,packet_size=1}",
       "(9): The region \"R\" ends before it starts."},
      {"partitions = [{type=7,start=0,length=0}]", "(9): \"type\" must be a number from 0 to 6."},
      {"partitions = [{type=1,start=0,length=0,size=1}]", "(9): Unknown key \"size\"."},
      {"partitions = [{},{},{},{},{},{},{}]", "(9): \"partitions\" has more than 6 entries."},
      {"menu_languages = [[\"eng\"]]", "(9): \"menu_languages\" must be a list of pairs of code and name."},
      {"audio_languages = [[\"engl\", \"English\"]]", "(9): \"audio_languages\" has more than 3 characters."},
  };
  const std::string configuration = std::string(kMaker) + kProduct + kConfiguration;  // 8 lines
  for (const Fault& row : of_a_configuration) expect_fault(configuration + row.text, row.message);
  const Fault of_a_loader[] = {
      {"packet_tag=1,block_size=1,packet_size=1", "(10): The two tags of the loader must differ."},
      {"packet_tag=2,block_size=1,packet_size=2980",
       "(10): \"packet_size\" must be a number from 1 to 2979."},
      {"packet_tag=2,block_size=0,packet_size=1", "(10): \"block_size\" must be a number from 1 to 256."},
  };
  for (const Fault& row : of_a_loader)
    expect_fault(configuration + region + "loader = {header_tag=1," + row.text + "}", row.message);
  EXPECT_FALSE(CompileEcf(recorder.context, source / "none"));
  EXPECT_EQ(recorder.Texts().size(), 1u);
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
        EXPECT_NE(config.loader.byte0, config.loader.byte2);
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
