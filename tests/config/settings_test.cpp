#include "config/settings.h"

#include <gtest/gtest.h>

#include <map>

#include "config/settings_dialog.h"
#include "tests/support/ecf_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

// A store of which a test sees every key and value.
struct VisibleStore {
  std::map<std::string, std::map<std::string, std::string>> keys;
  bool available = true;
  SettingsStore store;

  VisibleStore() {
    store.open = [this](const std::string& key) {
      if (!available) return KeyState::kUnavailable;
      return keys.try_emplace(key).second ? KeyState::kCreated : KeyState::kExisted;
    };
    store.read = [this](const std::string& key, const std::string& name) -> std::optional<std::string> {
      const auto at = keys.find(key);
      if (at == keys.end() || !at->second.contains(name)) return std::nullopt;
      return at->second.at(name);
    };
    store.write = [this](const std::string& key, const std::string& name, const std::string& value) {
      if (available) keys[key][name] = value;
    };
  }
};

TEST(Settings, TheKeyNamesProjectAndVersion) {
  EXPECT_EQ(SettingsKey("Recently"), "Software\\QMV\\VexaEditor\\VEXA\\Version1.0.0\\Recently");
}

TEST(Settings, DecimalTextIsReadLikeTheSystemDoes) {
  struct {
    const char* text;
    int64_t value;
  } const rows[] = {{"12", 12}, {" \t7x", 7}, {"-3", -3},
                    {"+4", 4},  {"", 0},      {"x1", 0},
                    {"-", 0},   {"0012", 12}, {"99999999999999999999999", int64_t{1} << 40}};
  for (const auto& row : rows) EXPECT_EQ(DecimalValue(row.text), row.value) << row.text;
}

TEST(Settings, PortSettingsOfAFirstAndASecondStart) {
  VisibleStore visible;
  ProjectConfig config;
  config.baud_index = 3;
  ASSERT_TRUE(LoadPortSettings(visible.store, config));
  const auto& key = visible.keys.at(SettingsKey("PortSettings"));
  EXPECT_EQ(key, (std::map<std::string, std::string>{{"Port", "COM1"},
                                                     {"BaudRate", "12"},
                                                     {"DataBits", "4"},
                                                     {"Parity", "0"},
                                                     {"StopBits", "0"},
                                                     {"SDBFormat", "1"}}));
  EXPECT_EQ(config.baud_index, 12);
  config.port_name = "COM4";
  config.baud_index = 2;
  config.data_bits_index = 3;
  config.parity_index = 4;
  config.stop_bits_index = 2;
  config.sdb_format = 0;
  ASSERT_TRUE(SavePortSettings(visible.store, config));
  ProjectConfig second;
  ASSERT_TRUE(LoadPortSettings(visible.store, second));
  EXPECT_EQ(second.port_name, "COM4");
  EXPECT_EQ(second.baud_index, 2);
  EXPECT_EQ(second.data_bits_index, 3);
  EXPECT_EQ(second.parity_index, 4);
  EXPECT_EQ(second.stop_bits_index, 2);
  EXPECT_EQ(second.sdb_format, 0);
}

TEST(Settings, ADialogThatCreatesThePortKeyWritesTheDefaults) {
  VisibleStore visible;
  ProjectConfig config;
  config.baud_index = 5;
  ASSERT_TRUE(SavePortSettings(visible.store, config));
  EXPECT_EQ(visible.keys.at(SettingsKey("PortSettings")).at("BaudRate"), "12");
  EXPECT_EQ(config.baud_index, 5);
}

TEST(Settings, EachPortValueThatCannotBeReadKeepsItsDefault) {
  VisibleStore visible;
  visible.keys[SettingsKey("PortSettings")] = {{"Port", "/dev/ttyUSB0"},
                                               {"BaudRate", "13"},
                                               {"DataBits", "-1"},
                                               {"StopBits", "2"},
                                               {"SDBFormat", "2"}};
  ProjectConfig config;
  config.parity_index = 2;
  ASSERT_TRUE(LoadPortSettings(visible.store, config));
  EXPECT_EQ(config.port_name, "COM1");
  EXPECT_EQ(config.baud_index, 12);
  EXPECT_EQ(config.data_bits_index, 4);
  EXPECT_EQ(config.parity_index, 0);
  EXPECT_EQ(config.stop_bits_index, 2);
  EXPECT_EQ(config.sdb_format, 1);
  visible.available = false;
  EXPECT_FALSE(LoadPortSettings(visible.store, config));
}

TEST(Settings, StatusTextNamesTheLine) {
  ProjectConfig config;
  EXPECT_EQ(PortStatusText(config), "COM1 115200 8 N 1");
  const char letters[] = {'N', 'E', 'O', 'N', 'N'};
  for (uint8_t i = 0; i < 5; ++i) {
    config.parity_index = i;
    EXPECT_EQ(PortStatusText(config), std::string("COM1 115200 8 ") + letters[i] + " 1");
  }
  config = {};
  config.port_name = "COM2";
  config.baud_index = 0;
  config.data_bits_index = 0;
  config.stop_bits_index = 1;
  EXPECT_EQ(PortStatusText(config), "COM2 110 4 N 1.5");
}

TEST(Settings, RecentFilesOfAFirstAndASecondRun) {
  VisibleStore visible;
  RecentFiles recent = LoadRecentFiles(visible.store);
  AddRecentFile(recent, "a.bin");
  SaveRecentFiles(visible.store, recent);
  EXPECT_TRUE(visible.keys.at(SettingsKey("Recently")).empty());

  recent = LoadRecentFiles(visible.store);
  EXPECT_TRUE(recent.paths.empty());
  AddRecentFile(recent, "a.bin");
  AddRecentFile(recent, "b.bin");
  SaveRecentFiles(visible.store, recent);
  EXPECT_EQ(visible.keys.at(SettingsKey("Recently")),
            (std::map<std::string, std::string>{{"1", "b.bin"}, {"2", "a.bin"}, {"3", ""}, {"4", ""}}));
  EXPECT_EQ(LoadRecentFiles(visible.store).paths, (Texts{"b.bin", "a.bin"}));
}

TEST(Settings, RecentFilesKeepFourAndMoveAKnownPathUp) {
  RecentFiles recent;
  for (const char* path : {"1", "2", "\xC3\xA4.BIN", "4", "5"}) AddRecentFile(recent, path);
  EXPECT_EQ(recent.paths, (Texts{"5", "4", "\xC3\xA4.BIN", "2"}));
  AddRecentFile(recent, "\xC3\x84.bin");
  EXPECT_EQ(recent.paths, (Texts{"\xC3\x84.bin", "5", "4", "2"}));
  EXPECT_EQ(RecentFileItem(recent, 1), "&2 5");
}

TEST(Settings, ConfigurationFileIsTheStoredOneOrTheFirstOfTheFolder) {
  Recorder recorder;
  VisibleStore visible;
  const Path folder = recorder.context.temporary_folder;
  EXPECT_FALSE(FindConfigurationFile(visible.store, folder));
  EXPECT_FALSE(FindConfigurationFile(visible.store, folder / "none"));
  PutFile(folder / "a.ecf", BytesOf("none"));
  PutFile(folder / "C.ecf", BytesOf("Qx"));
  PutFile(folder / "b.ECF", BytesOf("Qx"));
  PutFile(folder / "a.ecg", BytesOf("Qx"));
  PutFile(folder / "stored", BytesOf("Qx"));
  EXPECT_EQ(FindConfigurationFile(visible.store, folder), folder / "b.ECF");
  SaveConfigurationPaths(visible.store, folder / "stored", "");
  EXPECT_FALSE(visible.keys.contains(SettingsKey("Parser")));
  EXPECT_EQ(FindConfigurationFile(visible.store, folder), folder / "stored");
  SaveConfigurationPaths(visible.store, folder / "a.ecf", "typed");
  EXPECT_EQ(visible.keys.at(SettingsKey("Parser")).at("FileName"), "typed");
  EXPECT_EQ(FindConfigurationFile(visible.store, folder), folder / "b.ECF");
  EXPECT_TRUE(recorder.shown.empty());
}

TEST(Settings, ColoursAreReadOneByOneAndWrittenTogether) {
  VisibleStore visible;
  EXPECT_EQ(LoadColors(visible.store),
            (EditorColorTable{65793, 37120, 65793, 16711680, 8388863, 16711808, 65793, 9868950}));
  auto& key = visible.keys.at(SettingsKey("Color"));
  EXPECT_TRUE(key.empty());
  key = {{"TVService", "255"}, {"FGLInactive", "-1"}, {"ActCarrier", "16777216"}};
  EditorColorTable colors = LoadColors(visible.store);
  EXPECT_EQ(colors[kTvService], 255u);
  EXPECT_EQ(colors[kInactiveFavourite], 9868950u);
  EXPECT_EQ(colors[kActiveCarrier], 65793u);
  colors[kActiveFavourite] = 1;
  SaveColors(visible.store, colors);
  EXPECT_EQ(key.size(), 8u);
  EXPECT_EQ(LoadColors(visible.store), colors);
}

TEST(Settings, EveryFieldOfTheDefaultRecordsComesBack) {
  VisibleStore visible;
  DefaultRecords records;
  const DefaultRecords standard;
  LoadDefaultRecords(visible.store, records);
  records.lnb.frequency1 = 5150;
  records.lnb.tone_22khz = 1;
  records.lnb.motor = 1;
  records.lnb.plain_switch = 16;
  records.satellite.lnb_index = 15;
  records.satellite.angle = 3609;
  records.satellite.east = 1;
  records.carrier.frequency = 12345;
  records.carrier.fec = 5;
  records.carrier.symbol_rate = 45000;
  records.service.type = 2;
  records.service.pcr_pid = 8191;
  SaveDefaultRecords(visible.store, records);
  DefaultRecords loaded;
  LoadDefaultRecords(visible.store, loaded);
  EXPECT_EQ(std::memcmp(&loaded.lnb, &records.lnb, sizeof loaded.lnb), 0);
  EXPECT_EQ(std::memcmp(&loaded.satellite, &records.satellite, sizeof loaded.satellite), 0);
  EXPECT_EQ(std::memcmp(&loaded.carrier, &records.carrier, sizeof loaded.carrier), 0);
  EXPECT_EQ(std::memcmp(&loaded.service, &records.service, sizeof loaded.service), 0);
  // What a field cannot hold, and what is no text at all, leaves the default.
  for (auto& [name, value] : visible.keys.at(SettingsKey("Defaults")))
    value = name == "LnbType" ? "" : "100000";
  loaded = DefaultRecords();
  LoadDefaultRecords(visible.store, loaded);
  EXPECT_EQ(std::memcmp(&loaded.lnb, &standard.lnb, sizeof loaded.lnb), 0);
  EXPECT_EQ(std::memcmp(&loaded.carrier, &standard.carrier, sizeof loaded.carrier), 0);
  EXPECT_EQ(std::memcmp(&loaded.service, &standard.service, sizeof loaded.service), 0);
}

struct DialogTest : testing::Test {
  Recorder recorder;
  Path first = recorder.context.temporary_folder / "first.ecf",
       second = recorder.context.temporary_folder / "second.ecf";
  ProjectConfig config;

  DialogTest() {
    const EcfConfigurationSpec two{.name = "two", .regions = {{"R1", 3, 0, 1}, {"R2", 4, 0, 1}}};
    const EcfConfigurationSpec none{.name = "none"};
    PutFile(first, MakeEcf({{0x1A,
                             {{.name = "A", .configurations = {two, none}},
                              {.name = "B\xE9", .configurations = {none}}}},
                            {0x05, {{.name = "C", .configurations = {none, two}}}}}));
    PutFile(second, MakeEcf({{0xFF, {{.name = "S", .configurations = {two}}}}}));
    EXPECT_TRUE(InitConfig(recorder.context, first, config));
  }
  SettingsDialog Open(const SettingsRequest& request = {}) {
    auto dialog = OpenSettingsDialog(recorder.context, request, first, config, false);
    EXPECT_TRUE(dialog);
    return dialog.value_or(SettingsDialog{});
  }
};

TEST_F(DialogTest, ListsAndSelectionsAtOpening) {
  config.image_type_index = 1;
  SettingsDialog dialog = Open();
  EXPECT_EQ(dialog.manufacturers, (Texts{"1A", "5"}));
  EXPECT_EQ(dialog.products, (Texts{"A", "B\xC3\xA9"}));
  EXPECT_EQ(dialog.configurations, (Texts{"two", "none"}));
  EXPECT_EQ(dialog.image_types, (Texts{"R1", "R2"}));
  EXPECT_EQ(dialog.image_type, 1);
  EXPECT_EQ(dialog.software_major, "1");
  PutFile(first, BytesOf("MZ"));
  EXPECT_FALSE(OpenSettingsDialog(recorder.context, {}, first, config, false));
  EXPECT_EQ(recorder.Texts(), (Texts{"Config magic id mismatch - AddConfigurationListToComboBox",
                                     "Configuration parsing problem"}));
}

TEST_F(DialogTest, ChoicesRefillTheListsBelow) {
  SettingsDialog dialog = Open();
  dialog.image_type = 1;
  ChooseManufacturer(recorder.context, dialog, 1);
  EXPECT_EQ(dialog.products, Texts{"C"});
  EXPECT_EQ(dialog.configurations, (Texts{"none", "two"}));
  EXPECT_EQ(dialog.image_types, (Texts{"R1", "R2"}));  // only a configuration refills these
  ChooseConfiguration(recorder.context, dialog, 0);
  EXPECT_TRUE(dialog.image_types.empty());
  EXPECT_EQ(dialog.image_type, -1);
  ChooseConfiguration(recorder.context, dialog, 1);
  EXPECT_EQ(dialog.image_type, 0);
  ChooseManufacturer(recorder.context, dialog, 0);
  ChooseProduct(recorder.context, dialog, 1);
  EXPECT_EQ(dialog.configurations, Texts{"none"});
  BrowseConfiguration(recorder.context, dialog, second);
  EXPECT_EQ(dialog.manufacturers, Texts{"FF"});
  EXPECT_EQ(dialog.products, Texts{"S"});
  EXPECT_EQ(dialog.image_types, (Texts{"R1", "R2"}));
  EXPECT_EQ(dialog.file, Utf8FromPath(second));
  EXPECT_TRUE(recorder.Texts().empty());
  BrowseConfiguration(recorder.context, dialog, second / "none");
  EXPECT_EQ(recorder.Texts().back(), "Configuration setting problem");
  EXPECT_EQ(dialog.products, Texts{"S"});
  PutFile(second, BytesOf("MZ"));
  ChooseConfiguration(recorder.context, dialog, 0);
  EXPECT_EQ(recorder.Texts(), (Texts{"Config magic id mismatch - AddConfigurationListToComboBox",
                                     "Configuration setting problem"}));
  EXPECT_TRUE(dialog.image_types.empty());
}

TEST_F(DialogTest, TheOpenerDecidesWhatAnswers) {
  SettingsDialog dialog = Open();
  SettingsEnabling enabled = EnabledControls(dialog);
  EXPECT_FALSE(enabled.file || enabled.lists || enabled.image_type || enabled.compression ||
               enabled.compression_level);
  EXPECT_TRUE(enabled.sdb_format && enabled.radix && enabled.serial);
  dialog.request = {{false, false, true}, true, true, true, false};
  dialog.compressed = true;
  enabled = EnabledControls(dialog);
  EXPECT_TRUE(enabled.file && enabled.lists && enabled.image_type && enabled.compression &&
              enabled.compression_level);
  EXPECT_TRUE(enabled.serial);
  EXPECT_FALSE(enabled.sdb_format || enabled.radix);
  dialog.compression_type = 1;
  EXPECT_FALSE(EnabledControls(dialog).compression_level);
  dialog.compression_type = 0;
  dialog.compressed = false;
  EXPECT_FALSE(EnabledControls(dialog).compression_level);
  dialog.request.port_connected = true;
  EXPECT_FALSE(EnabledControls(dialog).serial);
  dialog.image_types.clear();
  EXPECT_FALSE(EnabledControls(dialog).image_type);
}

TEST(PortList, OffersWhatTheSystemHasBesideTheUsual) {
  EXPECT_EQ(
      PortChoices({{"COM3", "USB Serial Port"}, {"COM17", "Modem"}, {"COM1234", "too long for the setting"}}),
      (std::vector<std::string>{"COM1", "COM2", "COM3  USB Serial Port", "COM4", "COM17  Modem"}));
  EXPECT_EQ(PortNameIn("COM17  Modem"), "COM17");
  EXPECT_EQ(PortNameIn("COM5"), "COM5");
}

TEST_F(DialogTest, OkStoresEverything) {
  SettingsDialog dialog = Open({.needs = {}, .from_console = true});
  ChooseManufacturer(recorder.context, dialog, 1);
  ChooseConfiguration(recorder.context, dialog, 1);
  dialog.image_type = 1;
  dialog.software_major = "255";
  dialog.software_minor = "9";
  dialog.compressed = true;
  dialog.compression_level = 8;
  dialog.port_name = "COM2";
  dialog.parity = 1;
  Path ecf = first;
  const SettingsOutcome outcome = AcceptSettings(recorder.context, dialog, ecf, config);
  EXPECT_TRUE(outcome.close && outcome.loaded);
  EXPECT_FALSE(outcome.refill);
  EXPECT_EQ(PortStatusText(config), "COM2 115200 8 E 1");
  EXPECT_EQ(config.manufacturer_id, 5);
  EXPECT_EQ(config.configuration_name, "two");
  EXPECT_EQ(config.image_type_index, 1);
  EXPECT_EQ(config.software_major, 255);
  EXPECT_EQ(config.software_minor, 9);
  EXPECT_TRUE(config.compressed_image);
  EXPECT_EQ(config.compression_level, 8);
}

TEST_F(DialogTest, OkRefusesMissingAndEmptyFiles) {
  SettingsDialog dialog = Open();
  dialog.software_major = "9";
  Path ecf = first;
  for (const bool empty : {false, true}) {
    dialog.file = Utf8FromPath(second) + "x";
    if (empty) PutFile(PathFromUtf8(dialog.file), {});
    const SettingsOutcome outcome = AcceptSettings(recorder.context, dialog, ecf, config);
    EXPECT_FALSE(outcome.close);
    EXPECT_EQ(outcome.focus, SettingsField::kFile);
    EXPECT_EQ(recorder.shown.at(0).icon, Icon::kStop);
    EXPECT_EQ(recorder.Texts(), Texts{empty ? "Configuration file does not contains any information."
                                            : "Configuration file does not exist or invalid path."});
  }
  EXPECT_EQ(config.software_major, 1);
  EXPECT_EQ(ecf, first);
}

TEST_F(DialogTest, AFailedOkClosesAndKeepsTheConfigurationInForce) {
  SettingsDialog dialog = Open();
  ChooseManufacturer(recorder.context, dialog, 1);
  PutFile(second, BytesOf("MZ"));
  dialog.file = Utf8FromPath(second);
  dialog.baud = 3;
  Path ecf = first;
  const SettingsOutcome outcome = AcceptSettings(recorder.context, dialog, ecf, config);
  EXPECT_TRUE(outcome.close);
  EXPECT_FALSE(outcome.loaded);
  ASSERT_EQ(recorder.shown.size(), 2u);
  EXPECT_EQ(recorder.shown[1].icon, Icon::kInformation);
  EXPECT_EQ(recorder.Texts(), (Texts{"Magic Id mismatch - InitConfig", "Invalid configuration selection."}));
  EXPECT_EQ(ecf, first);
  EXPECT_EQ(config.manufacturer_index, 0);
  EXPECT_EQ(config.product_name, "A");
  EXPECT_EQ(config.baud_index, 3);
}

TEST_F(DialogTest, RadixFollowsTheListUnlessTheFormatChanged) {
  struct {
    int format, radix;
    bool hexadecimal, refill;
  } const rows[] = {{1, 1, false, false}, {1, 0, true, true}, {0, 0, false, true}, {0, 1, false, true}};
  for (const auto& row : rows) {
    config.sdb_format = 1;
    SettingsDialog dialog = Open();
    dialog.sdb_format = row.format;
    dialog.radix = row.radix;
    Path ecf = first;
    const SettingsOutcome outcome = AcceptSettings(recorder.context, dialog, ecf, config);
    EXPECT_EQ(outcome.hexadecimal_pids, row.hexadecimal);
    EXPECT_EQ(outcome.refill, row.refill);
  }
  config.sdb_format = 0;
  SettingsDialog dialog = Open();
  dialog.sdb_format = 1;
  Path ecf = first;
  EXPECT_TRUE(AcceptSettings(recorder.context, dialog, ecf, config).hexadecimal_pids);
  EXPECT_STREQ(PidHeaders(true)[0], "Video (Hex)");
  EXPECT_STREQ(PidHeaders(false)[2], "PCR (Dec)");
}

TEST_F(DialogTest, ClosingStoresPortAndPaths) {
  VisibleStore visible;
  LoadPortSettings(visible.store, config);
  SettingsDialog dialog = Open();
  dialog.file = "typed";
  config.baud_index = 1;
  StoreSettingsDialog(visible.store, dialog, first, config);
  EXPECT_EQ(visible.keys.at(SettingsKey("PortSettings")).at("BaudRate"), "1");
  EXPECT_EQ(visible.keys.at(SettingsKey("Parser")).at("FileName"), "typed");
  EXPECT_EQ(visible.keys.at(SettingsKey("Configuration")).at("FileName"), Utf8FromPath(first));
}

}  // namespace
}  // namespace vexa
