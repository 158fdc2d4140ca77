// What the tools of the database window decide: places in the tree, order of the list, merging, the sort
// dialog.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "core/check.h"
#include "core/edit.h"
#include "core/merge.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/row_order.h"
#include "view/sort_form.h"
#include "view/tree_path.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A satellite, two carriers, on the second one services.
struct Tools : testing::Test {
  Recorder recorder;
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  Tools() {
    database.lnb_count = 1;
    AddTestSatellite(database, "Astra")->record.angle = 192;
    for (int i = 0; i < 2; ++i) SetName(AddTestCarrier(database, 0)->record.name, i ? "High" : "Low");
  }
  Service* Add(const std::string& name, uint32_t video, uint16_t number) {
    Service* service = AddTestService(database, database.carriers[1]);
    SetName(service->record.name, name);
    service->record.video_pid = video & 0x3FFF;
    service->record.program_number = number;
    return service;
  }
  // The services of the second carrier in the order of a column.
  std::vector<std::string> Ordered(const RowOrder& order, bool hexadecimal = false) {
    const auto nodes = NodesAlong(document, {0, 1, 0, 1});
    ListModel list = ListBelow(document, nodes.back(), ListView::kBelow, hexadecimal);
    OrderRows(document, list, order, hexadecimal);
    std::vector<std::string> names;
    for (size_t i = 0; i < list.rows.size(); ++i) names.push_back(CellText(document, list, i, 1, false));
    return names;
  }
  Path Put(const std::string& name, const Document& content) {
    const auto bytes = BuildBin(recorder.context, content, {}, {});
    const Path path = recorder.context.temporary_folder / name;
    EXPECT_TRUE(bytes.has_value());
    if (bytes) PutFile(path, *bytes);
    return path;
  }
};

TEST_F(Tools, PathsLeadToTheRecordAndBack) {
  Add("One", 100, 1);
  Service* two = Add("Two", 100, 2);
  const RecordPlace place{0, 0, 1, 1};
  const auto nodes = NodesAlong(document, PathOf(place));
  ASSERT_EQ(nodes.size(), 5u);
  EXPECT_EQ(nodes.back().service, two);
  EXPECT_EQ(PlaceOf(document, nodes.back()), place);
  EXPECT_EQ(PlaceOf(document, nodes[2]), (RecordPlace{0, 0, -1, -1}));
  EXPECT_EQ(PlaceOf(document, nodes[1]), (RecordPlace{0, -1, -1, -1}));
  NodeRef gone = nodes.back();
  gone.sdb = static_cast<uint32_t>(document.sdbs.size());
  EXPECT_EQ(PlaceOf(document, gone), RecordPlace{});
  // A favourite entry stands for its service.
  database.favourites[3].tv.push_back(two);
  const auto group = NodesAlong(document, {0, kTvGroupLevelPosition, 3});
  const NodeRef entry = ListBelow(document, group.back(), ListView::kBelow, false).rows.at(0);
  EXPECT_EQ(PlaceOf(document, entry), place);
  EXPECT_EQ(NodesAlong(document, PathOf(document, entry)).back(), entry);
}

TEST_F(Tools, PathsEndWhereNothingIs) {
  EXPECT_EQ(NodesAlong(document, {0, 1, 0, 7, 2}).size(), 3u);
  EXPECT_THAT(NodesAlong(document, {9}), IsEmpty());
  EXPECT_EQ(NodesAlong(document, {1, 0}).size(), 1u) << "no box";
  document.ubis.push_back({"UBI1", {}});
  EXPECT_EQ(NodesAlong(document, {1, 0}).back().kind, NodeKind::kUbi);
}

TEST_F(Tools, FindingsLeadToTheirRecords) {
  Add("", 100, 1);
  database.carriers[0]->record.symbol_rate = 1;
  database.favourites[2].record.radio_name[0] = 0;
  database.favourites[4].record.tv_name[0] = 0;
  database.satellites[0]->record.position = 65;
  document.ubis.push_back({"", {}});
  std::vector<TreePath> places;
  for (const Finding& finding : FindFaults(document)) places.push_back(PathOf(document, finding.place));
  EXPECT_THAT(places, ElementsAre(TreePath{0, 1, 0}, TreePath{0, 1, 0, 0}, TreePath{0, 1, 0, 1, 0},
                                  TreePath{0, 3, 2}, TreePath{0, 2, 4}, TreePath{1, 0}));
}

TEST_F(Tools, RowsFollowAColumn) {
  Add("channel 10", 0x1A, 300);
  Add("Channel 9", 0xF, 20);
  Add("Alpha", 0x100, 100);
  Add("channel 09", 0x10, 20);
  using Names = std::vector<std::string>;
  const struct {
    int column;
    bool descending, hexadecimal;
    Names names;
  } rows[] = {
      {-1, false, false, {"channel 10", "Channel 9", "Alpha", "channel 09"}},
      {99, false, false, {"channel 10", "Channel 9", "Alpha", "channel 09"}},
      {1, false, false, {"Alpha", "Channel 9", "channel 09", "channel 10"}},
      {1, true, false, {"channel 10", "Channel 9", "channel 09", "Alpha"}},
      {3, false, false, {"Channel 9", "channel 09", "Alpha", "channel 10"}},
      {5, false, true, {"Channel 9", "channel 09", "channel 10", "Alpha"}},
      {0, true, false, {"channel 09", "Alpha", "Channel 9", "channel 10"}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Ordered({row.column, row.descending}, row.hexadecimal), row.names) << row.column;
  EXPECT_EQ(NameOf(database.services[0]->record.name), "channel 10") << "the database is left alone";
}

TEST(RowOrder, ClicksGoRound) {
  EXPECT_EQ(OrderAfterClick({}, 2), (RowOrder{2, false}));
  EXPECT_EQ(OrderAfterClick({2, false}, 2), (RowOrder{2, true}));
  EXPECT_EQ(OrderAfterClick({2, true}, 1), (RowOrder{1, false}));
  EXPECT_EQ(OrderAfterClick({2, true}, 2), RowOrder{});
}

TEST_F(Tools, EveryListKnowsItsColumns) {
  document.ubis.push_back({"UBI1", {}});
  Add("One", 100, 1);
  const struct {
    TreePath path;
    ColumnSet set;
  } rows[] = {{{0}, ColumnSet::kSatellites},          {{0, 0}, ColumnSet::kLnbs},
              {{0, 0, 0}, ColumnSet::kSatellites},    {{0, 1}, ColumnSet::kSatellites},
              {{0, 1, 0}, ColumnSet::kCarriers},      {{0, 1, 0, 1}, ColumnSet::kServices},
              {{0, 1, 0, 1, 0}, ColumnSet::kDetails}, {{0, 2}, ColumnSet::kFavourites},
              {{0, 2, 0}, ColumnSet::kServices},      {{1}, ColumnSet::kUbis}};
  for (const auto& row : rows) {
    const NodeRef node = NodesAlong(document, row.path).back();
    EXPECT_EQ(ColumnSetOf(ListBelow(document, node, ListView::kBelow, true)), row.set) << row.path.size();
  }
}

Document OtherDocument(const char* sdb) {
  Document document = NewDocument();
  document.sdbs[0].name = sdb;
  document.sdbs[0].database->lnb_count = 1;
  AddTestSatellite(*document.sdbs[0].database, "Other");
  return document;
}

TEST_F(Tools, MergeAddsTheContentOfFilesInTheirOrder) {
  Document first = OtherDocument("First"), second = OtherDocument("Second");
  first.compress_payload = second.compress_payload = true;
  second.sdbs[0].database->compressed = true;
  second.ubis.push_back({"BOX", {}});
  ASSERT_TRUE(MergeBins(recorder.context, {Put("2.bin", second), Put("1.bin", first)}, document));
  ASSERT_EQ(document.sdbs.size(), 3u);
  EXPECT_EQ(document.sdbs[1].name, "Second");
  EXPECT_TRUE(document.sdbs[1].database->compressed);
  EXPECT_EQ(document.sdbs[2].name, "First");
  EXPECT_EQ(document.slot_mask, 7u);
  EXPECT_EQ(document.sdbs[2].slot, 2u);
  EXPECT_EQ(document.ubis.at(0).name, "BOX");
  EXPECT_FALSE(document.compress_payload) << "the document's own";
  EXPECT_EQ(CheckLinks(*document.sdbs[1].database), "");
  EXPECT_THAT(recorder.Texts(), IsEmpty());
}

TEST_F(Tools, MergeBeyondALimitOrOfADamagedFileAddsNothing) {
  const Path good = Put("good.bin", OtherDocument("Other"));
  Document boxes = OtherDocument("Boxes");
  for (int i = 0; i < 9; ++i) boxes.ubis.push_back({"BOX", {}});
  const Path nine = Put("boxes.bin", boxes), damaged = recorder.context.temporary_folder / "damaged.bin";
  PutFile(damaged, BytesOf("Qz"));
  const struct {
    std::vector<Path> files;
    const char* text;
  } rows[] = {
      {std::vector<Path>(16, good), "SDB count exceeds the allowed numbers.Cannot add more SDB's."},
      {{nine, nine}, "Can't add USER BOX information. It exceeds the limit 16."},
      {{good, damaged}, "Invalid or unknown file format."},
      {{good, recorder.context.temporary_folder / "none.bin"}, "Error No: -3 \n File Access Error!!!"},
  };
  for (const auto& row : rows) {
    EXPECT_FALSE(MergeBins(recorder.context, row.files, document));
    EXPECT_TRUE(recorder.EachHasDetail()) << row.text;
    EXPECT_THAT(recorder.shown.front().detail, testing::StartsWith(Utf8FromPath(row.files.back()) + ": "));
    EXPECT_THAT(recorder.Texts(), ElementsAre(row.text));
    EXPECT_EQ(document.sdbs.size(), 1u);
    EXPECT_EQ(document.slot_mask, 1u);
    EXPECT_THAT(document.ubis, IsEmpty());
  }
  EXPECT_TRUE(MergeBins(recorder.context, std::vector<Path>(15, good), document)) << "just the limit";
  EXPECT_EQ(document.sdbs.size(), 16u);
}

TEST(SortForm, KeysAreTakenOnceAndInOrder) {
  SortForm form;
  form.satellites = {{3, 0, 1}, true};
  form.carriers.keys = {2, 2, 3};
  form.services.keys = {0, 0, 0};
  const SortOptions options = SortOptionsOf(form);
  EXPECT_THAT(options.satellites.keys, ElementsAre(SatelliteKey::kAngle, SatelliteKey::kName));
  EXPECT_TRUE(options.satellites.descending);
  EXPECT_THAT(options.carriers.keys, ElementsAre(CarrierKey::kFrequency, CarrierKey::kSymbolRate));
  EXPECT_FALSE(options.carriers.descending);
  EXPECT_THAT(options.services.keys, IsEmpty());
  EXPECT_FALSE(CanSort(form)) << "no SDB";
  form.sdbs = {0};
  EXPECT_TRUE(CanSort(form));
  form.satellites.keys = form.carriers.keys = {0, 0, -1};
  EXPECT_FALSE(CanSort(form)) << "no key";
}

}  // namespace
}  // namespace vexa
