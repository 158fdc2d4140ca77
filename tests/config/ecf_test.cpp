#include "config/ecf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/ecf_maker.h"
#include "tests/support/failing_memory.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kDamaged = "Invalid Configuration file.";

struct EcfTest : testing::Test {
  Recorder recorder;
  Path path = recorder.context.temporary_folder / "test.ecf";
  ProjectConfig config;

  bool Load(const Bytes& file) {
    PutFile(path, file);
    return InitConfig(recorder.context, path, config);
  }
  bool Load(const EcfConfigurationSpec& configuration) {
    return Load(MakeEcf({{0x1A, {{.configurations = {configuration}}}}}));
  }
};

EcfConfigurationSpec FullConfiguration(const std::string& name) {
  EcfConfigurationSpec spec;
  spec.name = name;
  spec.version_a = 3;
  spec.version_b = 4;
  spec.regions = {{"ADB", 3, 0x1000, 0x2000}, {"SDB", 4, 5, 0xFFFFFFFF}};
  spec.partitions = {{0, 0, 0, 0, 16, 100}, {2, 1, 1, 12, 200, 60}};
  spec.languages = {{"LG", 1, {7, 8}}, {"LG", 0, {9}}};
  spec.extra_flag = 1;
  const uint8_t loader[8] = {0xF1, 0xEE, 0xF2, 0xEE, 64, 0, 0, 4};
  std::copy(std::begin(loader), std::end(loader), std::begin(spec.loader));
  return spec;
}

Bytes FullFile() {
  const EcfConfigurationSpec plain{.name = "plain"};
  return MakeEcf({{0x0A, {{.name = "other", .configurations = {plain}}}},
                  {0x2B,
                   {{.name = "first", .byte = 1, .configurations = {plain, plain}},
                    {.name = "second",
                     .byte = 9,
                     .variant = 2,
                     .first_records = 2,
                     .second_records = 1,
                     .configurations = {plain, FullConfiguration("full"), plain}},
                    {.name = "third"}}}});
}

TEST_F(EcfTest, EachLoadFindsEverythingAndKeepsTheUsersChoices) {
  config.manufacturer_index = config.product_index = config.configuration_index = 1;
  ASSERT_TRUE(Load(FullFile()));
  EXPECT_EQ(Listing(config),
            "maker 2B\nproduct second 9 2\ntable 1-1\ntable 2-2\ntable 3-3\n"
            "configuration full 3.4\n"
            "region ADB 3 1000-2000\nregion SDB 4 5-ffffffff\nloader f1 f2 64 1024\n"
            "partition 1 0 16-116\npartition 2 2 200-264\nsizes 100 0 64 0 0 0 0\n"
            "extra 1 2 3 4 5 6 7 8\n"
            "languages \a\a\a\a 7 \b\b\b\b 8\nlanguages \t\t\t\t 9");
  EXPECT_EQ(config.product_table_count, 3);
  EXPECT_EQ(config.first_languages.header[5], 0xEE);
  config.manufacturer_index = config.product_index = config.configuration_index = 0;
  config.software_major = 7;
  config.port_name = "COM3";
  ASSERT_TRUE(Load(FullFile()));
  EXPECT_EQ(Listing(config),
            "maker A\nproduct other 0 0\nconfiguration plain 0.0\nloader 0 0 0 0\n"
            "no sizes 0 0 0 0 0 0 0\nextra 0 0 0 0 0 0 0 0\nlanguages\nlanguages");
  EXPECT_EQ(config.software_major, 7);
  EXPECT_EQ(config.port_name, "COM3");
  EXPECT_TRUE(recorder.shown.empty());
}

TEST_F(EcfTest, IndicesBeyondTheCountsLoadTheLevelsAbove) {
  const struct {
    uint8_t manufacturer, product, configuration;
    const char* loaded;
  } rows[] = {
      {2, 0, 0, "0//"},
      {1, 3, 0, "2B//"},
      {1, 2, 0, "2B/third/"},
      {1, 0, 2, "2B/first/"},
      {1, 0, 1, "2B/first/plain found"},
  };
  for (const auto& row : rows) {
    config = {};
    config.manufacturer_index = row.manufacturer;
    config.product_index = row.product;
    config.configuration_index = row.configuration;
    ASSERT_TRUE(Load(FullFile()));
    EXPECT_EQ(Format("%X/%s/%s%s", config.manufacturer_id, config.product_name.c_str(),
                     config.configuration_name.c_str(), config.configuration_found ? " found" : ""),
              row.loaded);
  }
  ASSERT_TRUE(Load(MakeEcf({})));
  EXPECT_EQ(config.manufacturer_id, 0);
}

TEST_F(EcfTest, BitmapsAreRoundedUpWithAnExtraWord) {
  struct {
    uint8_t bits;
    uint32_t added;
  } const rows[] = {{0, 4}, {1, 4}, {12, 4}, {24, 4}, {25, 8}, {32, 8}, {40, 8}, {64, 12}, {255, 36}};
  for (const auto& row : rows) {
    ASSERT_TRUE(Load(EcfConfigurationSpec{.partitions = {{4, 0, 1, row.bits, 1000, 50}}}));
    EXPECT_EQ(config.partitions.at(0).end, 1050 + row.added) << int{row.bits};
    EXPECT_EQ(config.partition_sizes[4], 50 + row.added);
  }
  ASSERT_TRUE(Load(EcfConfigurationSpec{.partitions = {{4, 0, 0, 32, 1000, 50}}}));
  EXPECT_EQ(config.partition_sizes[4], 50u);
}

// Neither numbers nor types follow from the place of an entry.
TEST_F(EcfTest, PartitionSizesFollowTheConfigurationsOwnCount) {
  EcfConfigurationSpec spec;
  for (uint8_t i = 0; i < 8; ++i)
    spec.partitions.push_back({static_cast<uint8_t>(6 - i), static_cast<uint8_t>(40 - i), 0, 0, 0, 10u + i});
  spec.partition_flag = 2;
  ASSERT_TRUE(Load(spec));
  EXPECT_EQ(config.partitions.size(), 6u);
  EXPECT_EQ(config.partition_sizes, (std::array<uint32_t, 7>{0, 0, 0, 0, 0, 11, 10}));
  spec.partition_flag = 8;
  spec.partitions[1].type = 7;  // beyond the table, kept in the list
  spec.partitions[2].number_less_one = 255;
  ASSERT_TRUE(Load(spec));
  EXPECT_EQ(config.partition_sizes, (std::array<uint32_t, 7>{0, 15, 14, 13, 12, 0, 10}));
  std::vector<std::pair<int, int>> numbers;
  for (const PartitionEntry& partition : config.partitions)
    numbers.emplace_back(partition.number, partition.type);
  EXPECT_EQ(numbers, (std::vector<std::pair<int, int>>{{41, 6}, {40, 7}, {0, 4}, {38, 3}, {37, 2}, {36, 1}}));
}

TEST_F(EcfTest, TheImageFlagOnlySaysThatThereIsABlock) {
  EcfConfigurationSpec spec{.regions = {{"A", 3, 0, 1}, {"B", 3, 0, 2}}};
  spec.image_flag = 9;
  ASSERT_TRUE(Load(spec));
  EXPECT_EQ(config.regions.size(), 2u);
  EXPECT_EQ(config.image_entry_count, 9);
  spec.regions.clear();  // then no loader parameters follow
  spec.partitions = {{0, 0, 0, 0, 0, 77}};
  ASSERT_TRUE(Load(spec));
  EXPECT_EQ(config.partition_sizes[0], 77u);
}

TEST_F(EcfTest, ProductTableGroups) {
  struct {
    uint8_t first, second;
  } const rows[] = {{0, 0}, {1, 0}, {3, 2}, {0, 4}, {200, 55}};
  for (const auto& row : rows) {
    EcfProductSpec product{.first_records = row.first, .second_records = row.second};
    product.configurations = {{}};
    ASSERT_TRUE(Load(MakeEcf({{1, {product, {}}}})));
    ASSERT_EQ(config.product_table.size(), size_t{row.first} + row.second);
    for (size_t i = 0; i < config.product_table.size(); ++i) {
      EXPECT_EQ(config.product_table[i][0], static_cast<uint8_t>(i + 1));
      EXPECT_EQ(config.product_table[i][19], static_cast<uint8_t>(i + 1));
    }
  }
}

TEST_F(EcfTest, TheLastLanguageBlockOfAKindWins) {
  ASSERT_TRUE(Load(EcfConfigurationSpec{
      .languages = {{"LG", 1, {1, 2}}, {"LG", 0, {3}}, {"LG", 9, {}}, {"LG", 0, {4, 5}}}}));
  EXPECT_THAT(Listing(config), testing::EndsWith("languages\nlanguages \4\4\4\4 4 \5\5\5\5 5"));
  EXPECT_EQ(config.first_languages.header[0], 'L');
}

TEST_F(EcfTest, MessagesOfAFailedLoadAndTheOldConfigurationStays) {
  ASSERT_TRUE(Load(FullConfiguration("old")));
  EXPECT_FALSE(InitConfig(recorder.context, path.string() + "none", config));
  EXPECT_EQ(recorder.Texts(), Texts{"File access error - UpdateConfig"});
  // Product tables, one record in each group, that say to be longer than their product.
  const auto tables = [](size_t at, uint8_t count) {
    Bytes file = MakeEcf({{1, {{.first_records = 1, .second_records = 1, .configurations = {{}}}}}});
    file[32 + at] = count;
    return file;
  };
  struct {
    Bytes file;
    const char* text;
  } const rows[] = {
      {{}, "Magic Id mismatch - InitConfig"},
      {BytesOf("Qy" + std::string(30, '\0')), "Magic Id mismatch - InitConfig"},
      {BytesOf("Qx" + std::string(21, '\0')), kDamaged},
      {MakeEcf({{1, {{.configurations = {{.languages = {{"LG", 1, {1}}, {"LH", 1, {}}}}}}}}}),
       "Language block name mismatch - InitConfig"},
      {MakeEcf({{1, {{.configurations = {{.languages = {{"LGX", 1, {}}}}}}}}}),
       "Language block name mismatch - InitConfig"},
      {tables(39, 200), kDamaged},
      {tables(42, 3), kDamaged},
  };
  for (const auto& row : rows) {
    EXPECT_FALSE(Load(row.file));
    ASSERT_EQ(recorder.shown.size(), 1u);
    EXPECT_EQ(recorder.shown[0].icon, Icon::kStop);
    EXPECT_THAT(recorder.shown[0].detail,
                testing::EndsWith(!testing::Matches(testing::StartsWith("Magic"))(row.text)
                                      ? ": use another copy of the file."
                                      : ": choose another one."));
    EXPECT_EQ(recorder.Texts(), Texts{row.text});
    EXPECT_EQ(config.configuration_name, "old");
    EXPECT_EQ(config.regions.size(), 2u);
  }
}

void SetWord(Bytes& file, size_t at, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) file[at + i] = static_cast<uint8_t>(value >> 8 * i);
}

TEST_F(EcfTest, OffsetsMustMoveForwardWhenSomethingIsReadThroughThem) {
  const Bytes whole = FullFile();
  // What stands where the offset at `at` leads to.
  const auto behind = [&](size_t at) { return ByteReader(std::span(whole).subspan(at, 4)).U32(); };
  const size_t maker1 = 24 + 4, maker2 = behind(maker1) + 4;
  const size_t product1 = maker2 + 4 + 44, product2 = behind(product1) + 44, product3 = behind(product2) + 44;
  const size_t configuration1 = product2 + 4 + 144, configuration2 = behind(configuration1) + 144,
               configuration3 = behind(configuration2) + 144;
  for (const size_t at :
       {maker1, maker2, product1, product2, product3, configuration1, configuration2, configuration3}) {
    const bool last = at == maker2 || at == product3 || at == configuration3;
    for (const uint32_t value :
         {0u, 24u, static_cast<uint32_t>(at), static_cast<uint32_t>(whole.size() + 1), ~0u}) {
      SCOPED_TRACE(Format("%zu %u", at, value));
      Bytes file = whole;
      SetWord(file, at, value);
      config = {};
      config.manufacturer_index = config.product_index = config.configuration_index = 1;
      EXPECT_EQ(Load(file), last);
      EXPECT_EQ(ReadEcfTree(recorder.context, path).has_value(), last);
      EXPECT_EQ(recorder.Texts(), last ? Texts{} : Texts({kDamaged, kDamaged}));
    }
  }
}

TEST_F(EcfTest, MemoryThatRunsOutIsAMessageAndKeepsTheConfiguration) {
  PutFile(path, FullFile());
  config.manufacturer_index = config.product_index = config.configuration_index = 1;
  config.configuration_name = "before";
  bool loaded = false;
  int n = 0;
  while (!loaded) {
    const FailingMemory failing(++n);
    loaded = InitConfig(recorder.context, path, config);
    EXPECT_EQ(config.configuration_name, loaded ? "full" : "before") << n;
    EXPECT_EQ(recorder.Texts(), loaded ? Texts{} : Texts{"malloc failed - InitConfig"}) << n;
  }
  EXPECT_GT(n, 5) << "the failures did not reach the load";
}

TEST_F(EcfTest, EveryMutatedByteEndsWellOrWithOneMessage) {
  const Bytes whole = FullFile();
  for (size_t at = 2; at < whole.size(); ++at) {
    for (const uint8_t value : {uint8_t{0}, uint8_t{0x7F}, uint8_t{0xFF}}) {
      Bytes file = whole;
      file[at] = value;
      config = {};
      config.manufacturer_index = config.product_index = config.configuration_index = 1;
      const bool loaded = Load(file);
      const Texts texts = recorder.Texts();
      EXPECT_EQ(texts.size(), loaded ? 0u : 1u) << at;
      ReadEcfTree(recorder.context, path);
      IsConfigurationAvailable(recorder.context, path, 1, {true, true, true});
      recorder.Texts();
    }
  }
}

TEST_F(EcfTest, ManyHeadersThatOverlapEndSoon) {
  // Every next offset is one byte further: without a forward walk, a quarter of a billion steps.
  Bytes file(60000, 0xFF);
  file[0] = 'Q';
  file[1] = 'x';
  for (size_t at = 24; at + 4 <= file.size(); at += 4) SetWord(file, at, static_cast<uint32_t>(at + 1));
  config.manufacturer_index = 255;
  EXPECT_FALSE(Load(file));
  EXPECT_FALSE(ReadEcfTree(recorder.context, path));
  EXPECT_FALSE(IsConfigurationAvailable(recorder.context, path, 255, {true, true, true}));
}

TEST_F(EcfTest, TreeListsEverything) {
  PutFile(path, FullFile());
  const auto tree = ReadEcfTree(recorder.context, path);
  ASSERT_TRUE(tree);
  ASSERT_EQ(tree->manufacturers.size(), 2u);
  EXPECT_EQ(tree->manufacturers[0].id, 0x0A);
  ASSERT_EQ(tree->manufacturers[1].products.size(), 3u);
  const EcfProduct& product = tree->manufacturers[1].products[1];
  EXPECT_EQ(product.name, "second");
  EXPECT_EQ(product.database_variant, 2);
  ASSERT_EQ(product.configurations.size(), 3u);
  const EcfConfiguration* full = FindConfiguration(*tree, 1, 1, 1);
  ASSERT_TRUE(full);
  EXPECT_EQ(full->region_names, (Texts{"ADB", "SDB"}));
  EXPECT_TRUE(full->has_images && full->has_partitions && full->has_extra);
  EXPECT_FALSE(product.configurations[2].has_images || product.configurations[2].has_extra);
  EXPECT_FALSE(FindConfiguration(*tree, 2, 0, 0) || FindConfiguration(*tree, 1, 3, 0) ||
               FindConfiguration(*tree, 1, 1, 3));
  EXPECT_FALSE(ReadEcfTree(recorder.context, path / "none"));
  EXPECT_EQ(recorder.Texts(), Texts{"File access error - AddConfigurationListToComboBox"});
  PutFile(path, BytesOf("MZ"));
  EXPECT_FALSE(ReadEcfTree(recorder.context, path));
  EXPECT_EQ(recorder.Texts(), Texts{"Config magic id mismatch - AddConfigurationListToComboBox"});
}

TEST_F(EcfTest, AvailabilityLooksAtEveryManufacturer) {
  const EcfConfigurationSpec images{.regions = {{"A", 3, 0, 1}}};
  EcfConfigurationSpec both = images;
  both.partitions = {{0, 0, 0, 0, 0, 1}};
  PutFile(path, MakeEcf({{1, {{.configurations = {images}}, {.configurations = {{}}}}},
                         {2, {{.configurations = {{}, both}}, {}, {.configurations = {both}}}}}));
  struct {
    uint8_t product;
    Facilities needs;
    bool available;
  } const rows[] = {
      {0, {true, false, false}, true},
      {0, {true, true, false}, true},  // of the second maker, second configuration
      {0, {true, true, true}, false},
      {1, {true, false, false}, false},
      {1, {}, true},
      {2, {false, true, false}, true},
      {3, {}, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(IsConfigurationAvailable(recorder.context, path, row.product, row.needs), row.available)
        << int{row.product};
  }
  EXPECT_FALSE(IsConfigurationAvailable(recorder.context, path / "none", 0, {}));
  EXPECT_TRUE(recorder.Texts().empty());
  PutFile(path, BytesOf("QX.........................."));
  EXPECT_FALSE(IsConfigurationAvailable(recorder.context, path, 0, {}));
  EXPECT_EQ(recorder.Texts(), Texts{"Config magic id mismatch - AddConfigurationListToComboBox"});
}

}  // namespace
}  // namespace vexa
