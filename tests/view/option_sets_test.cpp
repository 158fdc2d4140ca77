// Named sets of port, configuration and options, and the dialog that makes and takes them.
#include "config/option_sets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/settings.h"
#include "tests/support/ecf_maker.h"
#include "tests/support/recorder.h"
#include "view/settings_form.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> Names(const std::vector<OptionSet>& sets) {
  std::vector<std::string> names;
  for (const OptionSet& set : sets) names.push_back(set.name);
  return names;
}

struct SetsTest : testing::Test {
  Recorder recorder;
  SettingsStore store = MemorySettingsStore();
  Path first = recorder.context.temporary_folder / "first.ecf",
       second = recorder.context.temporary_folder / "second.ecf";
  ProjectConfig config;

  SetsTest() {
    const EcfConfigurationSpec one{.name = "one", .regions = {{"R1", 3, 0, 1}, {"R2", 4, 0, 1}}};
    const EcfConfigurationSpec two{.name = "two", .regions = {{"R3", 3, 0, 1}, {"R4", 4, 0, 1}}};
    PutFile(first, MakeEcf({{0x1A, {{.name = "A", .configurations = {one}}}}}));
    PutFile(second, MakeEcf({{1, {{.name = "B", .configurations = {one}}}},
                             {2, {{.name = "C"}, {.name = "D", .configurations = {one, one, two}}}}}));
    EXPECT_TRUE(InitConfig(recorder.context, first, config));
  }
  SettingsForm Open() {
    return OpenSettingsForm(recorder.context, {{true, true, true}, true, true}, first, config, false);
  }
  // A form with another value in every field.
  SettingsForm Changed() {
    SettingsForm form = Open();
    BrowseConfiguration(recorder.context, form, second);
    ChooseManufacturer(recorder.context, form, 1);
    ChooseProduct(recorder.context, form, 1);
    ChooseConfiguration(recorder.context, form, 2);
    form.image_type = 1;
    form.software_major = "9";
    form.software_minor = "15";
    form.sdb_format = form.radix = 0;
    form.compressed = true;
    form.compression_type = 1;
    form.compression_level = 8;
    form.port_name = "COM7";
    form.baud = 3;
    form.data_bits = 1;
    form.parity = 4;
    form.stop_bits = 2;
    return form;
  }
};

TEST_F(SetsTest, ASetBringsEveryFieldOfTheDialogBack) {
  std::vector<OptionSet> sets;
  SettingsForm changed = Changed();
  ASSERT_EQ(KeepSettingsSet(recorder.context, changed, sets, "  Bench \xC3\x84 "), SettingsField::kNone);
  SaveOptionSets(store, sets);
  sets = LoadOptionSets(store);
  ASSERT_THAT(Names(sets), ElementsAre("Bench \xC3\x84"));
  SettingsForm form = Open();
  ASSERT_TRUE(TakeSettingsSet(recorder.context, form, sets[0]));
  const auto fields = [](const SettingsForm& f) {
    return std::tuple(f.file, f.manufacturers, f.manufacturer, f.products, f.product, f.configurations,
                      f.configuration, f.image_types, f.image_type, f.software_major, f.software_minor,
                      f.sdb_format, f.radix, f.compressed, f.compression_type, f.compression_level,
                      f.port_name, f.baud, f.data_bits, f.parity, f.stop_bits);
  };
  EXPECT_EQ(fields(form), fields(changed));
  Path ecf = first;
  const SettingsOutcome outcome = AcceptSettings(recorder.context, form, ecf, config);
  EXPECT_TRUE(outcome.loaded && outcome.hexadecimal_pids);
  EXPECT_EQ(ecf, second);
  EXPECT_EQ(config.configuration_name, "two");
  EXPECT_TRUE(config.image_type_chosen) << "as it was when the set was kept";
  EXPECT_TRUE(recorder.Texts().empty());
}

TEST_F(SetsTest, NamesAreJudgedAndOneOfTheSameNameIsReplaced) {
  std::vector<OptionSet> sets;
  SettingsForm form = Open();
  const auto keep = [&](const std::string& name) {
    return KeepSettingsSet(recorder.context, form, sets, name);
  };
  const std::string longest(kMaximumSetName, 'x');
  for (const std::string& name : {std::string(" \t"), longest + "x", std::string("a\nb")}) {
    EXPECT_EQ(keep(name), SettingsField::kSet) << name;
    EXPECT_THAT(recorder.Texts(), ElementsAre("The name of a set has 1 to 40 characters."));
  }
  for (const char* name : {"b", "\xC3\xA4", "C", longest.c_str()})
    EXPECT_EQ(keep(name), SettingsField::kNone);
  form.port_name = "COM3";
  EXPECT_EQ(keep("\xC3\x84"), SettingsField::kNone);
  EXPECT_THAT(Names(sets), ElementsAre("b", "C", longest, "\xC3\x84"));
  EXPECT_EQ(sets[3].choices.port_name, "COM3");
  form.port_name = "too long";
  EXPECT_EQ(keep("d"), SettingsField::kPort);
  form.port_name = "COM3";
  form.software_minor = "16";
  EXPECT_EQ(keep("d"), SettingsField::kMinor);
  form.software_minor = "1";
  EXPECT_EQ(sets.size(), 4u) << "nothing that the dialog would refuse";
  for (int i = 0; sets.size() < kMaximumSets; ++i) keep(std::to_string(i));
  recorder.Texts();
  EXPECT_EQ(keep("one more"), SettingsField::kSet);
  EXPECT_THAT(recorder.Texts(), ElementsAre("There are 32 sets, the most that are kept. Delete one first."));
  EXPECT_EQ(keep("B"), SettingsField::kNone) << "another is no more";
  SaveOptionSets(store, sets);
  EXPECT_EQ(LoadOptionSets(store).size(), kMaximumSets);
  sets.resize(2);
  SaveOptionSets(store, sets);
  EXPECT_THAT(Names(LoadOptionSets(store)), ElementsAre("0", "1"));
}

TEST_F(SetsTest, WhatMakesNoSenseIsPassedOver) {
  std::vector<OptionSet> sets;
  SettingsForm form = Changed();
  KeepSettingsSet(recorder.context, form, sets, "right");
  SaveOptionSets(store, sets);
  const std::string key = SettingsKey(kSetsKey), right = store.read(key, "1").value();
  ASSERT_TRUE(right.ends_with("\t3 1 4 2 1 1 2 9 15 0 1 1 8 1 1 1")) << right;
  const std::string start = right.substr(0, right.rfind('\t') + 1);
  const std::string wrong[] = {"",
                               "x",
                               right + " 1",
                               right.substr(0, right.size() - 2),
                               start + "15 1 4 2 1 1 2 9 15 0 1 1 8 1 1 1",
                               start + "3 5 4 2 1 1 2 9 15 0 1 1 8 1 1 1",
                               start + "3 1 5 2 1 1 2 9 15 0 1 1 8 1 1 1",
                               start + "3 1 4 3 1 1 2 9 15 0 1 1 8 1 1 1",
                               start + "3 1 4 2 256 1 2 9 15 0 1 1 8 1 1 1",
                               start + "3 1 4 2 1 1 2 9 16 0 1 1 8 1 1 1",
                               start + "3 1 4 2 1 1 2 9 15 2 1 1 8 1 1 1",
                               start + "3 1 4 2 1 1 2 9 15 0 1 2 8 1 1 1",
                               start + "3 1 4 2 1 1 2 9 15 0 1 1 9 1 1 1",
                               start + "3 1 4 2 1 1 2 9 15 0 1 1 8 1 1 2",
                               start + "-3 1 4 2 1 1 2 9 15 0 1 1 8 1 1 1",
                               "a\ttoo long" + right.substr(right.find('\t', 6)),
                               right.substr(5)};
  for (const std::string& text : wrong) {
    store.write(key, "1", text);
    store.write(key, "2", right);
    EXPECT_THAT(Names(LoadOptionSets(store)), ElementsAre("right")) << text;
    store.write(key, "2", "");
    EXPECT_TRUE(LoadOptionSets(store).empty()) << text;
  }
}

TEST_F(SetsTest, ASetWhoseConfigurationHasGoneChangesNothing) {
  std::vector<OptionSet> sets;
  SettingsForm changed = Changed();
  KeepSettingsSet(recorder.context, changed, sets, "gone");
  PutFile(second, MakeEcf({{1, {{.name = "B", .configurations = {{}}}}}}));
  SettingsForm form = Open();
  EXPECT_FALSE(TakeSettingsSet(recorder.context, form, sets[0]));
  EXPECT_THAT(recorder.Texts(), ElementsAre("The configuration of the set \"gone\" is not in its file."));
  std::filesystem::remove(second);
  EXPECT_FALSE(TakeSettingsSet(recorder.context, form, sets[0]));
  EXPECT_FALSE(recorder.Texts().empty());
  EXPECT_EQ(form.file, Utf8FromPath(first));
  EXPECT_EQ(form.port_name, "COM1");
  ProjectConfig untouched = config;
  EXPECT_FALSE(LoadOptionSet(recorder.context, sets[0], untouched));
  EXPECT_EQ(untouched.configuration_name, config.configuration_name);
}

}  // namespace
}  // namespace vexa
