#include "view/list_filter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/random_database.h"
#include "view/tree_path.h"

namespace vexa {

namespace {

using testing::HasSubstr;

struct Filters : testing::Test {
  Document document = SmallDocument();
  std::string error;

  void SetUp() override {
    StaticDatabase& database = *document.sdbs[0].database;
    database.satellites[1]->record.east = 0;
    database.carriers[1]->record.polarization = kVertical;
    database.carriers[1]->record.fec = 3;
    for (Service* service : database.services) service->record.free = service == database.services[0];
    database.services[4]->record.type = kRadio;
    database.services[4]->record.pcr_pid = 0x1F4;
    SetName(database.services[7]->record.name, "\xC9t\xE9 tv");
  }
  ListModel List(ListView view, const TreePath& path = {0}) {
    return ListBelow(document, NodesAlong(document, path).back(), view, false);
  }
  // Places of the rows that stay.
  std::vector<size_t> Kept(const std::string& text, ListModel list) {
    const ListModel all = list;
    const ListFilter filter = ParseFilter(text);
    error = filter.error;
    if (error.empty()) error = FilterRows(document, list, filter, false);
    std::vector<size_t> places;
    for (size_t i = 0, next = 0; i < all.rows.size() && next < list.rows.size(); ++i) {
      if (all.rows[i] == list.rows[next]) places.push_back(i), ++next;
    }
    EXPECT_EQ(places.size(), list.rows.size()) << "in their order: " << text;
    return places;
  }
};

// Services 0 to 11: three of each of the carriers S1C1, S1C2, S2C1, S2C2.
TEST_F(Filters, TextsAndFields) {
  using Places = std::vector<size_t>;
  const Places first = {0, 1, 2}, second = {3, 4, 5}, third = {6, 7, 8}, fourth = {9, 10, 11};
  const struct {
    const char* text;
    Places kept;
  } rows[] = {{"s1c2", second},
              {"S1C2 p3", {5}},
              {"\"s1c2 p3\"", {}},
              {"!s1 !s2c1", fourth},
              {"\xC3\x89T\xC3\x89", {7}},
              {"\xD0\x96", {}},
              {"pol=v", second},
              {"pol!=v sat=S1", first},
              {"freq>11000 sat=s2", fourth},
              {"freq>=11040 freq<11041 sat=1", second},
              {"freq<=0x2AF8 sat=S2", third},
              {"angle=13.0 carrier=c1", third},
              {"angle<13 side=east fec=3/4", second},
              {"sid=2 !pol=v", {1, 7, 10}},
              {"fta", {0}},
              {"radio", {4}},
              {"!tv pcr=500", {4}},
              {"\"tv\" name=t\xC3\xA9", {7}},
              {"name=\"\xC3\xA9 t\"", {7}},
              {"vpid=100 apid=100 type=r", {4}},
              {"west scrambled services=3 carriers=2 lnb=1 pos=2 sr=27500 sid>2", {8, 11}},
              {"  \t ", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
              {"! p1 !", Kept("p1", List(ListView::kServices))}};
  for (const auto& row : rows) {
    EXPECT_EQ(Kept(row.text, List(ListView::kServices)), row.kept) << row.text;
    EXPECT_EQ(error, "") << row.text;
  }
  EXPECT_EQ(Kept("user", List(ListView::kCarriers)), (Places{}));
  EXPECT_EQ(Kept("factory pol=v", List(ListView::kCarriers)), (Places{1}));
  EXPECT_EQ(Kept("west", List(ListView::kBelow)), (Places{1}));
  EXPECT_EQ(Kept("name=9750", List(ListView::kBelow, {0, 0})), (Places{0, 1}));
}

TEST_F(Filters, WhatIsWrongIsSaidAndAllRowsStay) {
  const struct {
    const char *text, *error;
  } rows[] = {{"frq>3", "\"frq\" is no field; the nearest is \"freq\""},
              {"freq>", "freq> needs a value"},
              {"freq=11k", "\"11k\" is no number for freq"},
              {"freq=99999999999", "is no number for freq"},
              {"angle=19.25", "\"19.25\" is no number for angle"},
              {"pol>v", "pol takes = and != only"},
              {"sr=<3", "\"=<\" compares nothing"},
              {"freq > 11700", "without blanks"},
              {"one \"two", "A quotation mark is not closed"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Kept(row.text, List(ListView::kServices)).size(), 12u) << row.text;
    EXPECT_THAT(error, HasSubstr(row.error)) << row.text;
  }
  EXPECT_EQ(Kept("freq>3", List(ListView::kBelow)).size(), 2u);
  EXPECT_EQ(error, "freq is no field of this list");
  EXPECT_EQ(Kept("fta", List(ListView::kCarriers)).size(), 4u);
  EXPECT_EQ(error, "fta is no field of this list");
  EXPECT_EQ(FilterStatus(ParseFilter("a"), "", 3, 12), "3 of 12");
  EXPECT_EQ(FilterStatus(ParseFilter("a"), error, 3, 12), error);
  EXPECT_EQ(FilterStatus(ParseFilter(""), "", 12, 12), "");
}

TEST_F(Filters, TheServicesOfAnSdbNameSatelliteAndFrequency) {
  const ListModel list = List(ListView::kServices);
  std::vector<std::string> titles, cells;
  for (size_t i = 0; i < list.columns.size(); ++i) {
    titles.push_back(list.columns[i].title);
    cells.push_back(CellText(document, list, 3, i, false));
  }
  EXPECT_THAT(titles, testing::ElementsAre("No.", "Service Name", "Carrier Name", "Satellite Name",
                                           "Frequency", "Program No", "Service Type", "Video (Dec)",
                                           "Audio (Dec)", "PCR (Dec)", "Scrambled"));
  EXPECT_THAT(cells, testing::ElementsAre("1", "S1C2P1", "S1C2", "S1", "11040", "1", "TV", "100", "100",
                                          "100", "Yes"));
  EXPECT_EQ(ColumnSetOf(list), ColumnSet::kSdbServices);
  EXPECT_EQ(ColumnSetOf(List(ListView::kServices, {0, 1, 0})), ColumnSet::kServices);
  EXPECT_EQ(List(ListView::kRadioServices, {0, 1}).columns.size(), 11u);
}

// Random terms over random databases: a row stays when each of its terms, asked alone, keeps it.
}  // namespace

}  // namespace vexa
