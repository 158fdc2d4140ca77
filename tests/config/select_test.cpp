// Choosing a configuration by its name.
#include <gtest/gtest.h>

#include "config/ecf_select.h"

namespace vexa {
namespace {

EcfConfiguration Named(const std::string& name) {
  return {name, {}, false, false, false};
}

TEST(Select, NamesWholeOrInPartChooseWhatIsUnique) {
  EcfTree tree;
  tree.manufacturers = {
      {0x1A, {{"Box", 0, {Named("Flash"), Named("EEPROM")}}, {"Box Plus", 0, {Named("Flash large")}}}},
      {0xA1,
       {{"Terrace",
         0,
         {Named("Fl\xE4"
                "che")}},
        {"Box", 0, {Named("Only \xC4")}},
        {"Last", 0, {Named("only"), Named("EEPROM 2")}}}}};
  struct Row {
    const char* text;
    const char* name;  // empty: nothing, or several
    size_t candidates;
  };
  const Row rows[] = {
      {"large", "1A/Box Plus/Flash large", 0},
      {"FLASH", "1A/Box/Flash", 0},  // whole, beside "Flash large"
      {"eeprom", "1A/Box/EEPROM", 0},
      {"EEPRO", "", 2},
      {"only", "A1/Last/only", 0},
      {"fl\xC3\x84"
       "che",
       "A1/Terrace/Fl\xC3\xA4"
       "che",
       0},
      {"terr",
       "A1/Terrace/Fl\xC3\xA4"
       "che",
       0},  // a product of one configuration
      {"Plus", "1A/Box Plus/Flash large", 0},
      {"Last", "", 2},
      {"Box", "", 3},  // two products, three configurations
      {"1a/box/eep", "1A/Box/EEPROM", 0},
      {"1/plus/flash", "1A/Box Plus/Flash large", 0},
      {"a/box/ee", "1A/Box/EEPROM", 0},
      {"A1/Box/Only", "A1/Box/Only \xC3\x84", 0},
      {"a/bo/o", "", 2},  // "EEPROM" and "Only"
      {"1A/Terrace/Flash", "", 7},
      {"none", "", 7},
      {"\xE2\x82\xAC", "", 7},
      {"", "", 7},
      {"1A//Flash", "", 7},
      {"Box/Flash", "", 7},
  };
  for (const Row& row : rows) {
    const SelectionFound found = FindSelection(tree, row.text);
    EXPECT_EQ(found.selection ? SelectionName(tree, *found.selection) : "", row.name) << row.text;
    EXPECT_EQ(found.candidates.size(), row.candidates) << row.text;
  }
}

}  // namespace
}  // namespace vexa
