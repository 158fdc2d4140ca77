#include "config/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/ecf_maker.h"
#include "tests/support/recorder.h"
#include "view/settings_form.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

// Values under a key, '-' for those that are not there, joined by '|'.
std::string Stored(const SettingsStore& store, const char* key, const Texts& names) {
  std::string values;
  for (const std::string& name : names) values += "|" + store.read(SettingsKey(key), name).value_or("-");
  return values.substr(1);
}
// Stores values under a key as another run of the program would have.
void Put(const SettingsStore& store, const char* key,
         const std::vector<std::pair<std::string, std::string>>& values) {
  store.open(SettingsKey(key));
  for (const auto& [name, value] : values) store.write(SettingsKey(key), name, value);
}

const Texts kPortNames = {"Port", "BaudRate", "DataBits", "Parity", "StopBits", "SDBFormat"};
TEST(Settings, TheKeyNamesProjectAndVersion) {
  EXPECT_EQ(SettingsKey("Recently"), "Software\\QMV\\VexaEditor\\VEXA\\Version" VEXA_VERSION "\\Recently");
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

// Port, baud rate, data bits, parity, stop bits and SDB format.
std::string PortOf(const ProjectConfig& config) {
  return Format("%s %d %d %d %d %d", config.port_name.c_str(), config.baud_index, config.data_bits_index,
                config.parity_index, config.stop_bits_index, config.sdb_format);
}

TEST(Settings, PortSettingsOfAFirstAndASecondStart) {
  const SettingsStore store = MemorySettingsStore();
  ProjectConfig config;
  config.baud_index = 3;
  ASSERT_TRUE(LoadPortSettings(store, config));
  EXPECT_EQ(Stored(store, "PortSettings", kPortNames), "COM1|12|4|0|0|1");
  EXPECT_EQ(config.baud_index, 12);
  config.port_name = "COM4";
  config.baud_index = 2;
  config.data_bits_index = 3;
  config.parity_index = 4;
  config.stop_bits_index = 2;
  config.sdb_format = 0;
  ASSERT_TRUE(SavePortSettings(store, config));
  ProjectConfig second;
  ASSERT_TRUE(LoadPortSettings(store, second));
  EXPECT_EQ(PortOf(second), "COM4 2 3 4 2 0");
}

TEST(Settings, ADialogThatCreatesThePortKeyWritesTheDefaults) {
  const SettingsStore store = MemorySettingsStore();
  ProjectConfig config;
  config.baud_index = 5;
  ASSERT_TRUE(SavePortSettings(store, config));
  EXPECT_EQ(Stored(store, "PortSettings", kPortNames), "COM1|12|4|0|0|1");
  EXPECT_EQ(config.baud_index, 5);
}

TEST(Settings, EachPortValueThatCannotBeReadKeepsItsDefault) {
  const SettingsStore store = MemorySettingsStore();
  Put(store, "PortSettings",
      {{"Port", "/dev/ttyUSB0"},
       {"BaudRate", "15"},
       {"DataBits", "-1"},
       {"StopBits", "2"},
       {"SDBFormat", "2"}});
  ProjectConfig config;
  config.parity_index = 2;
  ASSERT_TRUE(LoadPortSettings(store, config));
  EXPECT_EQ(PortOf(config), "COM1 12 4 0 2 1");
  SettingsStore locked = store;
  const auto full = std::make_error_code(std::errc::no_space_on_device);
  locked.open = [&](const std::string&) { return OpenedKey(KeyState::kUnavailable, full); };
  EXPECT_EQ(LoadPortSettings(locked, config).error, full);
}

TEST(Settings, WhatCannotBeKeptIsToldOnceWithItsReason) {
  Recorder recorder;
  const auto full = std::make_error_code(std::errc::no_space_on_device);
  SettingsStore store = MemorySettingsStore();
  store.place = "settings.ini";
  store.write = [&](const std::string&, const std::string&, const std::string&) { return Outcome(full); };
  const SettingsStore told = ToldSettings(store, recorder.context.messages);
  SaveColours(told, DefaultColours());
  SavePortSettings(told, {});
  ASSERT_EQ(recorder.shown.size(), 1u);
  EXPECT_EQ(recorder.shown[0].text, "The settings could not be kept for the next start.");
  EXPECT_EQ(recorder.shown[0].icon, Icon::kWarning);
  EXPECT_EQ(recorder.shown[0].detail, Reason(Attempt::kKeepSettings, "settings.ini", full));
}

TEST(Settings, StatusTextNamesTheLine) {
  ProjectConfig config;
  const char letters[] = {'N', 'E', 'O', 'N', 'N'};
  for (uint8_t i = 0; i < 5; ++i) {
    config.parity_index = i;
    EXPECT_EQ(PortStatusText(config), std::string("COM1 115200 8 ") + letters[i] + " 1");
  }
  config.port_name = "COM2";
  config.baud_index = config.data_bits_index = 0;
  config.stop_bits_index = 1;
  EXPECT_EQ(PortStatusText(config), "COM2 110 4 N 1.5");
}

TEST(Settings, RecentFilesOfAFirstAndASecondRun) {
  const SettingsStore store = MemorySettingsStore();
  RecentFiles recent = LoadRecentFiles(store);
  AddRecentFile(recent, "a.bin");
  SaveRecentFiles(store, recent);
  EXPECT_EQ(Stored(store, "Recently", {"1"}), "-");

  recent = LoadRecentFiles(store);
  EXPECT_TRUE(recent.paths.empty());
  AddRecentFile(recent, "a.bin");
  AddRecentFile(recent, "b.bin");
  SaveRecentFiles(store, recent);
  EXPECT_EQ(Stored(store, "Recently", {"1", "2", "3", "4"}), "b.bin|a.bin||");
  EXPECT_EQ(LoadRecentFiles(store).paths, (Texts{"b.bin", "a.bin"}));
}

TEST(Settings, RecentFilesKeepFourAndMoveAKnownPathUp) {
  RecentFiles recent;
  for (const char* path : {"1", "2", "\xC3\xA4.BIN", "4", "5"}) AddRecentFile(recent, path);
  EXPECT_EQ(recent.paths, (Texts{"5", "4", "\xC3\xA4.BIN", "2"}));
  AddRecentFile(recent, "\xC3\x84.bin");
  EXPECT_EQ(recent.paths, (Texts{"\xC3\x84.bin", "5", "4", "2"}));
  EXPECT_EQ(RecentFileItem(recent, 1), "&2 5");
  AddRecentFile(recent, "R&D");
  EXPECT_EQ(RecentFileItem(recent, 0), "&1 R&&D");
}

TEST(Settings, ConfigurationFileIsTheStoredOneOrTheFirstOfTheFolder) {
  Recorder recorder;
  const SettingsStore store = MemorySettingsStore();
  const Path folder = recorder.context.temporary_folder;
  EXPECT_FALSE(FindConfigurationFile(store, folder));
  EXPECT_FALSE(FindConfigurationFile(store, folder / "none"));
  PutFile(folder / "a.ecf", BytesOf("none"));
  PutFile(folder / "C.ecf", BytesOf("Qx"));
  PutFile(folder / "b.ECF", BytesOf("Qx"));
  PutFile(folder / "a.ecg", BytesOf("Qx"));
  PutFile(folder / "stored", BytesOf("Qx"));
  EXPECT_EQ(FindConfigurationFile(store, folder), folder / "b.ECF");
  SaveConfigurationPaths(store, folder / "stored", "");
  EXPECT_EQ(store.open(SettingsKey("Parser")), KeyState::kCreated) << "left alone so far";
  EXPECT_EQ(FindConfigurationFile(store, folder), folder / "stored");
  SaveConfigurationPaths(store, folder / "a.ecf", "typed");
  EXPECT_EQ(Stored(store, "Parser", {"FileName"}), "typed");
  EXPECT_EQ(FindConfigurationFile(store, folder), folder / "b.ECF");
  EXPECT_TRUE(recorder.shown.empty());
}

TEST(Settings, ColoursAreReadOneByOneAndWrittenTogether) {
  const SettingsStore store = MemorySettingsStore();
  EXPECT_EQ(LoadColours(store),
            (EditorColourTable{65793, 37120, 65793, 16711680, 8388863, 16711808, 65793, 9868950}));
  EXPECT_EQ(Stored(store, "Color", {"TVService"}), "-");
  Put(store, "Color", {{"TVService", "255"}, {"FGLInactive", "-1"}, {"ActCarrier", "16777216"}});
  EditorColourTable colours = LoadColours(store);
  EXPECT_EQ(colours, (EditorColourTable{65793, 37120, 65793, 16711680, 255, 16711808, 65793, 9868950}));
  colours[static_cast<size_t>(ColourRole::kActiveFavourite)] = 1;
  SaveColours(store, colours);
  EXPECT_EQ(LoadColours(store), colours);
}

TEST(Settings, EveryFieldOfTheDefaultRecordsComesBack) {
  const SettingsStore store = MemorySettingsStore();
  DefaultRecords records;
  const DefaultRecords standard;
  LoadDefaultRecords(store, records);
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
  SaveDefaultRecords(store, records);
  DefaultRecords loaded;
  LoadDefaultRecords(store, loaded);
  EXPECT_EQ(std::memcmp(&loaded, &records, sizeof loaded), 0);
  // What a field cannot hold, and what is no text at all, leaves the default.
  SettingsStore senseless = store;
  senseless.read = [](const std::string&, const std::string& name) {
    return std::optional<std::string>(name == "LnbType" ? "" : "100000");
  };
  loaded = DefaultRecords();
  LoadDefaultRecords(senseless, loaded);
  EXPECT_EQ(std::memcmp(&loaded, &standard, sizeof loaded), 0);
}

struct DialogTest : testing::Test {
  Recorder recorder;
  Path first = recorder.context.temporary_folder / "first.ecf",
       second = recorder.context.temporary_folder / "second.ecf";
  Path ecf = first;
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
  SettingsForm Open(const SettingsRequest& request = {}) {
    return OpenSettingsForm(recorder.context, request, first, config, false);
  }
  // What the four lists hold, and the image type that is selected.
  static std::string Lists(const SettingsForm& dialog) {
    std::string text;
    for (const auto* list :
         {&dialog.manufacturers, &dialog.products, &dialog.configurations, &dialog.image_types}) {
      text += text.empty() ? "" : " /";
      for (const std::string& entry : *list) text += (text.empty() ? "" : " ") + entry;
    }
    return text + Format(": %d", dialog.image_type);
  }
  SettingsOutcome Accept(SettingsForm& dialog) {
    return AcceptSettings(recorder.context, dialog, ecf, config);
  }
};

TEST_F(DialogTest, ListsAndSelectionsAtOpening) {
  config.image_type_index = 1;
  const SettingsForm dialog = Open();
  EXPECT_EQ(Lists(dialog), "1A 5 / A B\xC3\xA9 / two none / R1 R2: 1");
  EXPECT_EQ(dialog.software_major, "1");
}

// One letter each for what answers: file, Browse, OK, lists, software version, SDB format, radix, image type,
// compression, its type, its level and the serial line.
std::string Answering(const SettingsForm& dialog) {
  const SettingsEnabling e = EnabledControls(dialog);
  const bool answers[] = {e.file,
                          e.browse,
                          e.ok,
                          e.lists,
                          e.software,
                          e.sdb_format,
                          e.radix,
                          e.image_type,
                          e.compression,
                          e.compression_type,
                          e.compression_level,
                          e.serial};
  std::string letters;
  for (size_t i = 0; i < std::size(answers); ++i) letters += answers[i] ? "fBOlvsricTLp"[i] : '-';
  return letters;
}

TEST_F(DialogTest, ADamagedConfigurationLeavesOnlyBrowse) {
  // Good magic, and the second manufacturer beyond the end.
  Bytes damaged = MakeEcf({{0x1A, {}}});
  damaged[14] = 2;
  damaged[28] = 99;
  const struct {
    Bytes file;
    const char* text;
  } rows[] = {{damaged, "Invalid Configuration file."},
              {BytesOf("MZ"), "Config magic id mismatch - AddConfigurationListToComboBox"}};
  const SettingsRequest all{{true, true, true}, true, true};
  for (const auto& row : rows) {
    PutFile(first, row.file);
    SettingsForm dialog = Open(all);
    EXPECT_EQ(recorder.Texts(), (Texts{row.text, "Configuration parsing problem"}));
    EXPECT_EQ(Lists(dialog) + Answering(dialog), ": -1-B----------");
    EXPECT_EQ(dialog.file, Utf8FromPath(first));
    EXPECT_FALSE(Accept(dialog).close);
    EXPECT_FALSE(config.configuration_name.empty());
    BrowseConfiguration(recorder.context, dialog, second);
    EXPECT_EQ(Lists(dialog) + Answering(dialog), "FF / S / two / R1 R2: 0fBOlvsric--p");
    EXPECT_TRUE(recorder.Texts().empty());
  }
}

TEST_F(DialogTest, ATypedPathBringsItsOwnLists) {
  for (const bool left : {true, false}) {
    SCOPED_TRACE(left);
    ecf = first;
    config.image_type_index = 1;
    SettingsForm dialog = Open();
    ChooseManufacturer(recorder.context, dialog, 1);
    ChooseConfiguration(recorder.context, dialog, 1);
    dialog.image_type = 1;
    dialog.file = Utf8FromPath(first);
    LeaveConfigurationFile(recorder.context, dialog);
    EXPECT_EQ(Lists(dialog), "1A 5 / C / none two / R1 R2: 1") << "still the same file";
    dialog.file = Utf8FromPath(second);
    if (left) {
      LeaveConfigurationFile(recorder.context, dialog);
      EXPECT_EQ(
          Lists(dialog) + Format(" %d %d %d", dialog.manufacturer, dialog.product, dialog.configuration),
          "FF / S / two / R1 R2: 0 0 0 0");
    }
    EXPECT_TRUE(Accept(dialog).loaded);
    EXPECT_EQ(ecf, second);
    EXPECT_EQ(Format("%s/%s %u%u%u%u", config.product_name.c_str(), config.configuration_name.c_str(),
                     unsigned{config.manufacturer_index}, unsigned{config.product_index},
                     unsigned{config.configuration_index}, unsigned{config.image_type_index}),
              "S/two 0000");
    config = {};
    ASSERT_TRUE(InitConfig(recorder.context, first, config));
    EXPECT_TRUE(recorder.Texts().empty());
    PutFile(first.string() + "x", BytesOf("Qy"));
    dialog = Open({{true, true, true}});
    dialog.file = Utf8FromPath(first) + "x";
    if (left) LeaveConfigurationFile(recorder.context, dialog);
    if (!left) {
      EXPECT_FALSE(Accept(dialog).close);
    }
    EXPECT_EQ(recorder.Texts(), (Texts{"Config magic id mismatch - AddConfigurationListToComboBox",
                                       "Configuration parsing problem"}));
    EXPECT_EQ(Lists(dialog) + Answering(dialog), ": -1-B----------");
  }
}

TEST_F(DialogTest, VersionAndPortAreJudged) {
  const char* const major = "The major software version is a number from 0 to 255.";
  const char* const minor = "The minor software version is a number from 0 to 15.";
  const char* const port = "The name of the port has 1 to 5 characters.";
  const struct {
    const char *major, *minor, *port;
    SettingsField field;
    const char* text;
  } rows[] = {
      {"256", "0", "COM1", SettingsField::kMajor, major}, {"", "0", "COM1", SettingsField::kMajor, major},
      {"-1", "0", "COM1", SettingsField::kMajor, major},  {"1 ", "0", "COM1", SettingsField::kMajor, major},
      {"1", "16", "COM1", SettingsField::kMinor, minor},  {"1", "", "COM1", SettingsField::kMinor, minor},
      {"1", "x", "COM1", SettingsField::kMinor, minor},   {"255", "15", "", SettingsField::kPort, port},
      {"0", "0", "COM100", SettingsField::kPort, port},
  };
  for (const auto& row : rows) {
    SettingsForm dialog = Open();
    dialog.software_major = row.major;
    dialog.software_minor = row.minor;
    dialog.port_name = row.port;
    dialog.baud = 3;
    const SettingsOutcome outcome = Accept(dialog);
    EXPECT_FALSE(outcome.close || outcome.loaded);
    EXPECT_EQ(outcome.focus, row.field);
    ASSERT_FALSE(recorder.shown.empty());
    EXPECT_EQ(recorder.shown[0].icon, Icon::kStop);
    EXPECT_EQ(recorder.Texts(), Texts{row.text});
    EXPECT_EQ(PortStatusText(config), "COM1 115200 8 N 1");
  }
  SettingsForm dialog = Open();
  dialog.software_major = "0";
  dialog.software_minor = "15";
  dialog.port_name = "CO\xC3\xA4M2";
  EXPECT_TRUE(Accept(dialog).close);
  EXPECT_EQ(config.software_major * 100 + config.software_minor, 15);
  EXPECT_EQ(config.port_name, "CO\xC3\xA4M2");
}

TEST_F(DialogTest, AStoredBitRateThatIsNotOfferedStaysWhileItIsChosen) {
  const SettingsStore store = MemorySettingsStore();
  for (const int index : {12, 13, 14}) {
    Put(store, "PortSettings", {{"BaudRate", std::to_string(index)}});
    LoadPortSettings(store, config);
    const char* const text = index == 12 ? "115200" : index == 13 ? "128000" : "256000";
    EXPECT_EQ(PortStatusText(config), Format("COM1 %s 8 N 1", text));
    SettingsForm dialog = Open();
    EXPECT_EQ(dialog.bauds.size(), index == 12 ? 13u : 14u);
    EXPECT_EQ(dialog.bauds.at(static_cast<size_t>(dialog.baud)), text);
    EXPECT_TRUE(Accept(dialog).close);
    EXPECT_EQ(config.baud_index, index);
    dialog.baud = 3;
    EXPECT_TRUE(Accept(dialog).close);
    EXPECT_EQ(config.baud_index, 3);
  }
  EXPECT_EQ(Open().bauds.size(), 13u);
  config.baud_index = 15;
  EXPECT_EQ(PortStatusText(config), "COM1 115200 8 N 1");
}

TEST_F(DialogTest, ChoicesRefillTheListsBelow) {
  SettingsForm dialog = Open();
  dialog.image_type = 1;
  ChooseManufacturer(recorder.context, dialog, 1);
  EXPECT_EQ(Lists(dialog), "1A 5 / C / none two / R1 R2: 1");  // only a configuration refills the last
  ChooseConfiguration(recorder.context, dialog, 0);
  EXPECT_EQ(Lists(dialog), "1A 5 / C / none two /: -1");
  ChooseConfiguration(recorder.context, dialog, 1);
  EXPECT_EQ(Lists(dialog), "1A 5 / C / none two / R1 R2: 0");
  ChooseManufacturer(recorder.context, dialog, 0);
  ChooseProduct(recorder.context, dialog, 1);
  EXPECT_EQ(Lists(dialog), "1A 5 / A B\xC3\xA9 / none / R1 R2: 0");
  BrowseConfiguration(recorder.context, dialog, second);
  EXPECT_EQ(Lists(dialog), "FF / S / two / R1 R2: 0");
  EXPECT_EQ(dialog.file, Utf8FromPath(second));
  EXPECT_TRUE(recorder.Texts().empty());
  BrowseConfiguration(recorder.context, dialog, second / "none");
  EXPECT_THAT(recorder.shown.back().detail, testing::StartsWith(Utf8FromPath(second / "none") + ": Choose "));
  EXPECT_EQ(recorder.Texts().back(), "Configuration setting problem");
  EXPECT_EQ(dialog.products, Texts{"S"});
  PutFile(second, BytesOf("MZ"));
  ChooseConfiguration(recorder.context, dialog, 0);
  EXPECT_EQ(recorder.Texts(), (Texts{"Config magic id mismatch - AddConfigurationListToComboBox",
                                     "Configuration setting problem"}));
  EXPECT_TRUE(dialog.image_types.empty());
}

TEST_F(DialogTest, TheOpenerDecidesWhatAnswers) {
  SettingsForm dialog = Open();
  EXPECT_EQ(Answering(dialog), "--O--sr----p");
  dialog.request = {{false, false, true}, true, true, true, false};
  dialog.compressed = true;
  EXPECT_EQ(Answering(dialog), "fBOlv--icTLp");
  dialog.compression_type = 1;
  EXPECT_EQ(Answering(dialog), "fBOlv--icT-p");
  dialog.compression_type = 0;
  dialog.compressed = false;
  EXPECT_EQ(Answering(dialog), "fBOlv--ic--p");
  dialog.request.port_connected = true;
  dialog.image_types.clear();
  EXPECT_EQ(Answering(dialog), "fBOlv---c---");
}

TEST(PortList, OffersWhatTheSystemHasBesideTheUsual) {
  EXPECT_EQ(
      PortChoices({{"COM3", "USB Serial Port"}, {"COM17", "Modem"}, {"COM1234", "too long for the setting"}}),
      (std::vector<std::string>{"COM1", "COM2", "COM3  USB Serial Port", "COM4", "COM17  Modem"}));
  EXPECT_EQ(PortNameIn("COM17  Modem"), "COM17");
  EXPECT_EQ(PortNameIn("COM5"), "COM5");
}

TEST_F(DialogTest, OkStoresEverything) {
  SettingsForm dialog = Open({.needs = {}, .from_console = true});
  ChooseManufacturer(recorder.context, dialog, 1);
  ChooseConfiguration(recorder.context, dialog, 1);
  dialog.image_type = 1;
  dialog.software_major = "255";
  dialog.software_minor = "9";
  dialog.compressed = true;
  dialog.compression_level = 8;
  dialog.port_name = "COM2";
  dialog.parity = 1;
  const SettingsOutcome outcome = Accept(dialog);
  EXPECT_TRUE(outcome.close && outcome.loaded);
  EXPECT_FALSE(outcome.refill);
  EXPECT_EQ(PortStatusText(config), "COM2 115200 8 E 1");
  EXPECT_EQ(std::tuple(config.manufacturer_id, config.configuration_name, config.image_type_index,
                       config.image_type_chosen, config.software_major, config.software_minor,
                       config.compressed_image, config.compression_level),
            std::tuple(5, "two", 1, true, 255, 9, true, 8));
}

TEST_F(DialogTest, OnlyAChangedImageTypeIsAChoice) {
  SettingsForm untouched = Open();
  Accept(untouched);
  EXPECT_FALSE(config.image_type_chosen);
  for (const int type : {1, 1, 0}) {
    SettingsForm dialog = Open();
    dialog.image_type = type;
    Accept(dialog);
    EXPECT_TRUE(config.image_type_chosen) << type;
    EXPECT_EQ(config.image_type_index, type);
  }
}

TEST_F(DialogTest, OkRefusesMissingAndEmptyFiles) {
  SettingsForm dialog = Open();
  dialog.software_major = "9";
  for (const bool empty : {false, true}) {
    dialog.file = Utf8FromPath(second) + "x";
    if (empty) PutFile(PathFromUtf8(dialog.file), {});
    const SettingsOutcome outcome = Accept(dialog);
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
  SettingsForm dialog = Open();
  ChooseManufacturer(recorder.context, dialog, 1);
  PutFile(first, BytesOf("MZ"));
  dialog.baud = 3;
  const SettingsOutcome outcome = Accept(dialog);
  EXPECT_TRUE(outcome.close);
  EXPECT_FALSE(outcome.loaded);
  ASSERT_EQ(recorder.shown.size(), 2u);
  EXPECT_EQ(recorder.shown[1].icon, Icon::kInformation);
  EXPECT_THAT(recorder.shown[1].detail, testing::StartsWith(Utf8FromPath(first) + ": Choose "));
  EXPECT_EQ(recorder.Texts(), (Texts{"Magic Id mismatch - InitConfig", "Invalid configuration selection."}));
  EXPECT_EQ(ecf, first);
  EXPECT_EQ(config.manufacturer_index, 0);
  EXPECT_EQ(config.product_name, "A");
  EXPECT_EQ(config.baud_index, 3);
}

TEST_F(DialogTest, RadixFollowsTheListUnlessTheFormatChanged) {
  struct {
    int had_format, format, radix;
    bool hexadecimal, refill;
  } const rows[] = {{1, 1, 1, false, false},
                    {1, 1, 0, true, true},
                    {1, 0, 0, false, true},
                    {1, 0, 1, false, true},
                    {0, 1, 1, true, true}};
  for (const auto& row : rows) {
    config.sdb_format = static_cast<uint8_t>(row.had_format);
    SettingsForm dialog = Open();
    dialog.sdb_format = row.format;
    dialog.radix = row.radix;
    const SettingsOutcome outcome = Accept(dialog);
    EXPECT_EQ(outcome.hexadecimal_pids, row.hexadecimal);
    EXPECT_EQ(outcome.refill, row.refill);
  }
  EXPECT_STREQ(PidHeaders(true)[0], "Video (Hex)");
  EXPECT_STREQ(PidHeaders(false)[2], "PCR (Dec)");
}

TEST_F(DialogTest, OnlyAnotherPageOfNamesIsAChoice) {
  SettingsForm form =
      OpenSettingsForm(recorder.context, {}, first, config, false, *FindCodePage("Windows-1251"));
  EXPECT_EQ(form.names_pages.at(static_cast<size_t>(form.names_page)), "Windows-1251");
  EXPECT_EQ(Accept(form).names, nullptr);
  form.names_page = 0;
  EXPECT_EQ(Accept(form).names, FindCodePage("Windows-1250"));
}

TEST_F(DialogTest, ClosingStoresPortAndPaths) {
  const SettingsStore store = MemorySettingsStore();
  LoadPortSettings(store, config);
  SettingsForm dialog = Open();
  dialog.file = "typed";
  config.baud_index = 1;
  StoreSettingsForm(store, dialog, first, config);
  EXPECT_EQ(Stored(store, "PortSettings", {"BaudRate"}), "1");
  EXPECT_EQ(Stored(store, "Parser", {"FileName"}), "typed");
  EXPECT_EQ(Stored(store, "Configuration", {"FileName"}), Utf8FromPath(first));
}

}  // namespace
}  // namespace vexa
