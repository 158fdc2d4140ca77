// Default values and what is kept of the windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "config/settings.h"
#include "tests/support/recorder.h"
#include "view/defaults_form.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DefaultsForm, WhatWasShownIsStoredUnchanged) {
  Recorder recorder;
  DefaultRecords records;
  records.service.video_pid = 0x1FF;
  records.satellite.angle = 1305;
  records.satellite.lnb_index = 7;
  records.lnb.diseqc_switch = 3;
  records.lnb.switch_type = kSwitchDiseqc;
  for (const bool hexadecimal : {false, true}) {
    DefaultRecords stored = records;
    EXPECT_FALSE(
        StoreDefaults(recorder.context.messages, DefaultsFormOf(records, hexadecimal), hexadecimal, stored));
    EXPECT_EQ(std::memcmp(&stored, &records, sizeof records), 0);
  }
  EXPECT_THAT(recorder.Texts(), IsEmpty()) << "an angle of 0 is a default like any other";
}

TEST(DefaultsForm, TheRulesOfTheRecordsHoldAndNothingIsStoredByHalves) {
  struct {
    void (*change)(DefaultsForm&);
    int field;
  } const rows[] = {
      {[](DefaultsForm& f) { f.satellite.position = "65"; }, kFieldPosition},
      {[](DefaultsForm& f) { f.satellite.position = ""; }, kFieldPosition},
      {[](DefaultsForm& f) { f.satellite.angle = ""; }, kFieldAngle},
      {[](DefaultsForm& f) { f.carrier.symbol_rate = ""; }, kFieldSymbolRate},
      {[](DefaultsForm& f) { f.service.video_pid = ""; }, kFieldVideoPid},
      {[](DefaultsForm& f) { f.service.pcr_pid = ""; }, kFieldPcrPid},
      {[](DefaultsForm& f) { f.lnb.frequency2 = ""; }, kFieldOscillator2},
      {[](DefaultsForm& f) { f.carrier.frequency = "950"; }, kFieldFrequency},
  };
  for (const auto& row : rows) {
    Recorder recorder;
    DefaultRecords records;
    DefaultsForm form = DefaultsFormOf(records, false);
    form.lnb.frequency1 = "5150";
    row.change(form);
    const auto refusal = StoreDefaults(recorder.context.messages, form, false, records);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->field, row.field);
    EXPECT_THAT(recorder.Texts(), IsEmpty());
    EXPECT_EQ(records.lnb.frequency1, 9750u);
  }
}

TEST(DefaultsForm, TheCarriersRangeIsThatOfTheLnbInTheForm) {
  Recorder recorder;
  DefaultRecords records;
  DefaultsForm form = DefaultsFormOf(records, false);
  form.lnb.type = kLnbIfInput;
  form.carrier.frequency = "950";
  EXPECT_FALSE(StoreDefaults(recorder.context.messages, form, false, records));
  EXPECT_EQ(records.carrier.frequency, 950u);
}

TEST(DefaultsForm, AWrongPidIsReplacedOnlyByAnswer) {
  for (const bool answer : {false, true}) {
    Recorder recorder;
    recorder.answer = answer;
    DefaultRecords records;
    records.service.audio_pid = 100;
    DefaultsForm form = DefaultsFormOf(records, true);
    form.service.audio_pid = "1F";
    const auto refusal = StoreDefaults(recorder.context.messages, form, true, records);
    EXPECT_THAT(recorder.Texts(), ElementsAre("Invalid Audio PID.\nDo you want to update default PID ?"));
    EXPECT_EQ(refusal.has_value(), !answer);
    if (refusal) {
      EXPECT_EQ(refusal->field, kFieldAudioPid);
    }
    EXPECT_EQ(records.service.audio_pid, answer ? 8192u : 100u);
  }
}

TEST(WindowSettings, AreReadAsTheyWereWritten) {
  const SettingsStore store = MemorySettingsStore();
  EXPECT_EQ(LoadWindowSettings(store).width, 0) << "nothing is known at the first start";
  WindowSettings window;
  window.left = -1200;
  window.top = 40;
  window.width = 1;
  window.height = 700;
  window.split = 333;
  window.picture_height = 210;
  window.columns[static_cast<size_t>(ColumnSet::kServices)] = {44, 0, 150};
  window.column_orders[static_cast<size_t>(ColumnSet::kServices)] = {2, 0, 1};
  SaveWindowSettings(store, window);
  const WindowSettings read = LoadWindowSettings(store);
  EXPECT_EQ((std::array{read.left, read.top, read.width, read.height, read.split, read.picture_height}),
            (std::array{-1200, 40, 1, 700, 333, 210}));
  EXPECT_EQ(read.columns, window.columns);
  EXPECT_EQ(read.column_orders, window.column_orders);
}

TEST(WindowSettings, ValuesWithoutSenseAreNotTaken) {
  const struct {
    const char *name, *value;
  } rows[] = {{"Width", "0"},      {"Height", "-5"},          {"Left", "99999999999"},
              {"TreeWidth", "0"},  {"LnbColumns", "10 -1 5"}, {"LnbColumns", "40000"},
              {"LnbOrder", "0 2"}, {"LnbOrder", "1 0 1"}};
  for (const auto& row : rows) {
    const SettingsStore store = MemorySettingsStore();
    WindowSettings good;
    good.width = good.height = 500;
    SaveWindowSettings(store, good);
    store.write(SettingsKey(kWindowKey), row.name, row.value);
    const WindowSettings read = LoadWindowSettings(store);
    const bool place = !std::string(row.name).starts_with("Lnb") && std::string(row.name) != "TreeWidth";
    EXPECT_EQ(read.width, place ? 0 : 500) << row.name;
    EXPECT_EQ(read.split, 280) << row.name;
    EXPECT_THAT(read.columns[static_cast<size_t>(ColumnSet::kLnbs)], IsEmpty()) << row.value;
    EXPECT_THAT(read.column_orders[static_cast<size_t>(ColumnSet::kLnbs)], IsEmpty()) << row.value;
  }
}

TEST(ConsoleSettings, AreReadAsTheyWereWrittenAndKeepTheirDefaultsElse) {
  const SettingsStore store = MemorySettingsStore();
  const auto values = [&store] {
    const ConsoleSettings console = LoadConsoleSettings(store);
    return std::array<int, 4>{console.hexadecimal_view, console.time_stamps, console.reconnect,
                              console.line_ending};
  };
  EXPECT_EQ(values(), (std::array{0, 0, 0, 0}));
  for (const std::array<int, 4>& kept :
       {std::array{1, 0, 0, 3}, std::array{0, 1, 0, 1}, std::array{0, 0, 1, 2}, std::array{0, 0, 0, 0}}) {
    SaveConsoleSettings(store, {kept[0] == 1, kept[1] == 1, kept[2] == 1, kept[3]});
    EXPECT_EQ(values(), kept);
  }
  for (const char* wrong : {"4", "-1", ""}) {
    for (const char* name : {"HexadecimalView", "TimeStamps", "ConnectAgain", "LineEnding"})
      store.write(SettingsKey(kConsoleKey), name, wrong);
    EXPECT_EQ(values(), (std::array{0, 0, 0, 0})) << wrong;
  }
}

TEST(TransferSettings, EachValueIsKept) {
  const SettingsStore store = MemorySettingsStore();
  const auto transfer = [&] {
    const TransferSettings kept = LoadTransferSettings(store);
    return std::tuple(kept.verify, kept.keep_copy, kept.copy_folder);
  };
  EXPECT_EQ(transfer(), std::tuple(false, false, ""));
  for (const auto& [verify, copy] : {std::pair(true, false), {false, true}}) {
    SaveTransferSettings(store, {verify, copy, "C:\\c"});
    EXPECT_EQ(transfer(), std::tuple(verify, copy, "C:\\c"));
  }
  EXPECT_EQ(LoadProductionSettings(store).sdb, "1");
  SaveProductionSettings(store, {"d", "2", "l", "COM1 COM3", true, "Bench"});
  const ProductionSettings kept = LoadProductionSettings(store);
  EXPECT_EQ(std::tuple(kept.database, kept.sdb, kept.log, kept.ports, kept.keep_copy, kept.set),
            std::tuple("d", "2", "l", "COM1 COM3", true, "Bench"));
}

TEST(NamesSettings, ThePageIsKept) {
  const SettingsStore store = MemorySettingsStore();
  EXPECT_EQ(&LoadNamesPage(store), &Windows1252());
  SaveNamesPage(store, *FindCodePage("ISO 8859-5"));
  EXPECT_EQ(LoadNamesPage(store).name, "ISO 8859-5");
  store.write(SettingsKey(kNamesKey), "CodePage", "ISO 8859-99");
  EXPECT_EQ(&LoadNamesPage(store), &Windows1252());
}

}  // namespace
}  // namespace vexa
