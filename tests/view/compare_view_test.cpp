// The window of a comparison as data, and the order of a sorted list made the records' own.
#include "view/compare_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "core/edit.h"
#include "core/take_over.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/node_edit.h"
#include "view/row_order.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct Comparisons : testing::Test {
  Document document = SmallDocument(), other = SmallDocument();
  CompareView view;

  void SetUp() override {
    StaticDatabase &own = *document.sdbs[0].database, &others = *other.sdbs[0].database;
    DeleteServices(own, {own.services[1]});
    DeleteServices(others, {others.services[11]});
    others.carriers[2]->record.fec = 3;
    std::swap(others.satellites[0]->carriers[0], others.satellites[0]->carriers[1]);
    RefillAll(others);
    NumberCarriers(*others.satellites[0]);
    SetName(others.favourites[0].record.tv_name, "<Best>");
    other.compress_payload = true;
  }
  std::vector<std::string> Rows(const CompareFilter& filter) {
    CompareInto(view, document, 0, other, 0, filter);
    std::vector<std::string> rows;
    for (const size_t place : view.shown) {
      std::string row;
      for (size_t column = 0; column < CompareColumns().size(); ++column)
        row += (column ? "|" : "") + CompareCell(view.records[place], column);
      rows.push_back(row);
    }
    return rows;
  }
};

TEST_F(Comparisons, ShowBothSidesAndFilterThem) {
  EXPECT_THAT(
      Rows({}),
      ElementsAre(
          "Moved|SDB1 satellite 1 carrier 1 S1C2|SDB1 satellite 1 carrier 2|SDB1 satellite 1 carrier 1",
          "Added|SDB1 satellite 1 carrier 2 service 2 S1C1P2||S1C1P2",
          "Changed|SDB1 satellite 2 carrier 1 S2C1|fec 0|fec 3",
          "Removed|SDB1 satellite 2 carrier 2 service 3 S2C2P3|S2C2P3|",
          "Changed|SDB1 TV group 1|name \"Favourite1\"|name \"<Best>\"",
          "Changed|File|compressed 0|compressed 1"));
  EXPECT_EQ(CompareStatus(view), "Differences: 6: 1 added, 1 removed, 3 changed, 1 moved");
  EXPECT_EQ(TakenOverText({3}), "Taken over: 3");
  EXPECT_EQ(TakenOverText({3, 1, 2}),
            "Taken over: 3; 1 favourite entry was left out, as its service is not here; removed from "
            "favourite lists, as "
            "services changed between TV and radio: 2");
  EXPECT_THAT(Rows({.kind = 4}), ElementsAre(HasSubstr("Added"), HasSubstr("Removed")));
  EXPECT_THAT(Rows({.change = 4}), ElementsAre(HasSubstr("Moved")));
  EXPECT_THAT(Rows({.kind = 2, .equal = true}),
              ElementsAre("|SDB1 satellite 1 S1|S1|S1", "|SDB1 satellite 2 S2|S2|S2"));
  EXPECT_EQ(Rows({.kind = 1, .equal = true})[1], "|SDB1 LNB 2|Universal 9750 / 10600|Universal 9750 / 10600");
  other.sdbs[0].database->lnb_count = 1;
  EXPECT_THAT(Rows({.kind = 1}), ElementsAre("Removed|SDB1 LNB 2|Universal 9750 / 10600|"));
  EXPECT_THAT(DifferenceLines(view.records), HasSubstr("- SDB1 LNB 2\n"));
  other.sdbs[0].database->lnb_count = 2;
  EXPECT_EQ(Rows({.equal = true}).size(), 23u);
  EXPECT_EQ(NextDifference(view, std::nullopt, false), std::optional(size_t{3}));
  const auto last = NextDifference(view, std::nullopt, true);
  EXPECT_EQ(last, std::optional(view.shown.size() - 1));
  EXPECT_EQ(NextDifference(view, last, false), std::nullopt);
  EXPECT_EQ(NextDifference(view, size_t{3}, true), std::nullopt);
  std::vector<size_t> walk;
  for (auto row = NextDifference(view, std::nullopt, false); row; row = NextDifference(view, row, false))
    walk.push_back(view.shown[*row]);
  EXPECT_EQ(walk, ChosenDifferences(view, {}, TakeOverRange::kAll));
  EXPECT_EQ(ChosenDifferences(view, {0, 3}, TakeOverRange::kRows), std::vector<size_t>{3});
  std::vector<std::string> kinds;
  for (const size_t place : ChosenDifferences(view, {0, 3}, TakeOverRange::kKinds))
    kinds.push_back(CompareCell(view.records[place], 1));
  EXPECT_THAT(kinds, ElementsAre("SDB1 satellite 1 carrier 1 S1C2", "SDB1 satellite 2 carrier 1 S2C1"));
}

TEST_F(Comparisons, LeadToTheRecordsOfTheWindow) {
  Rows({});
  std::vector<TreePath> paths;
  for (const Difference& difference : view.records) {
    if (difference.sign != '=') paths.push_back(PathOfDifference(document, 0, difference));
  }
  EXPECT_THAT(paths, ElementsAre(TreePath{0, 1, 0, 1}, TreePath{0, 1, 0, 0}, TreePath{0, 1, 1, 0},
                                 TreePath{0, 1, 1, 1, 2}, TreePath{0, 2, 0}, TreePath{0}));
}

TEST_F(Comparisons, ThePageHoldsAllOfThemEscaped) {
  Rows({});
  const std::string page = ComparisonPage(view.records, "a.bin", "b<.bin");
  EXPECT_THAT(page, HasSubstr("name &quot;&lt;Best&gt;&quot;"));
  EXPECT_THAT(page, HasSubstr("<th>b&lt;.bin</th>"));
  EXPECT_THAT(page, HasSubstr("services: 1 added, 1 removed, 0 changed, 0 moved"));
  size_t rows = 0;
  for (size_t at = 0; (at = page.find("<tr class", at)) != std::string::npos; ++at) ++rows;
  EXPECT_EQ(rows, 6u);
  EXPECT_EQ(DifferenceLines(view.records).find('='), std::string::npos);
  EXPECT_THAT(ComparisonText(view.records), testing::AllOf(testing::EndsWith("\r\n"), HasSubstr("\r\n~ ")));
}

// Each list keeps the places that its shown records had; a model goes through the names list by list.
TEST(RandomOrders, TheShownOrderBecomesTheRecords) {
  std::mt19937 random(9);
  for (int round = 0; round < 60; ++round) {
    Document document = MakeRandomDocument(random);
    StaticDatabase& database = *document.sdbs[0].database;
    const ListView view = round % 3 == 0   ? ListView::kBelow
                          : round % 3 == 1 ? ListView::kCarriers
                                           : ListView::kServices;
    ListModel list = ListBelow(document, RootNodes(document)[0], view, false);
    std::shuffle(list.rows.begin(), list.rows.end(), random);
    if (random() % 2) list.rows.resize(list.rows.size() / 2);
    // For each owner the shown places, and the shown records in their order.
    std::map<const void*, std::vector<std::pair<size_t, const void*>>> shown;
    const auto owner = [&](const NodeRef& row) -> const void* {
      return row.service ? static_cast<const void*>(row.carrier) : row.carrier ? row.satellite : nullptr;
    };
    const auto record = [](const NodeRef& row) -> const void* {
      return row.service   ? static_cast<const void*>(row.service)
             : row.carrier ? static_cast<const void*>(row.carrier)
                           : row.satellite;
    };
    for (const NodeRef& row : list.rows) shown[owner(row)].push_back({row.index, record(row)});
    const std::vector<Service*> order = database.service_order;
    UseOrder(document, list.rows);
    ASSERT_EQ(CheckLinks(database), "");
    EXPECT_EQ(database.service_order, order);
    for (auto& [key, rows] : shown) {
      std::vector<size_t> places;
      for (const auto& row : rows) places.push_back(row.first);
      std::sort(places.begin(), places.end());
      for (size_t i = 0; i < rows.size(); ++i) {
        const void* at = nullptr;
        if (view == ListView::kBelow) at = database.satellites[places[i]];
        if (view == ListView::kCarriers) at = static_cast<const Satellite*>(key)->carriers[places[i]];
        if (view == ListView::kServices) at = static_cast<const Carrier*>(key)->services[places[i]];
        ASSERT_EQ(at, rows[i].second) << round;
      }
    }
  }
  Document document = SmallDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.favourites[1].tv = {database.services[2], database.services[0], database.services[1]};
  const NodeRef group = NodesAlong(document, {0, 2, 1}).back();
  ListModel list = ListBelow(document, group, ListView::kBelow, false);
  EXPECT_FALSE(UseOrder(document, list.rows));
  OrderRows(document, list, {1, false}, false);
  EXPECT_TRUE(UseOrder(document, list.rows));
  EXPECT_EQ(NamesOf(database.favourites[1].tv), (std::vector<std::string>{"S1C1P1", "S1C1P2", "S1C1P3"}));
}

}  // namespace

}  // namespace vexa
