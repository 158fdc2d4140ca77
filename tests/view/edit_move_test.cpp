#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/node_edit.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Two satellites of five carriers each, numbered in turns: the first holds the even places of the array, its
// carriers are A to E; those of the second a to e. The first carrier has five services, numbers 1 to 5, the
// second one two.
struct MovedSample {
  Recorder recorder;
  const Messages& messages = recorder.context.messages;
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;

  MovedSample() {
    database.lnb_count = 1;
    for (const char* name : {"1", "2", "3", "4", "5"}) AddTestSatellite(database, name);
    for (const char* name : {"A", "a", "B", "b", "C", "c", "D", "d", "E", "e"}) {
      const size_t satellite = name[0] >= 'a' ? 1 : 0;
      SetName(AddTestCarrier(database, satellite)->record.name, name);
    }
    for (const char* name : {"v", "w", "x", "y", "z"}) AddService(0, name);
    for (const char* name : {"6", "7"}) AddService(1, name);
  }
  void AddService(size_t carrier, const char* name) {
    Service* service = AddTestService(database, First().carriers[carrier]);
    SetName(service->record.name, name);
    service->record.program_number = database.services.size() & 0xFFFF;
  }
  Satellite& First() { return *database.satellites[0]; }
  Carrier& At(size_t carrier) { return *First().carriers[carrier]; }

  template <class T>
  static std::string Names(const std::vector<T*>& records) {
    std::string names;
    for (const T* record : records) names += NameOf(record->record.name);
    return names;
  }
};

struct Moves : testing::Test, MovedSample {
  void TearDown() override { EXPECT_EQ(CheckLinks(database), ""); }
};

struct MoveCase {
  Rows rows;
  const char* target;
  const char* order;  // of five, or the message
};

const char* const kSequence = "Invalid Sequence. Can not continue.";
const char* const kTooLow = "Invalid record index. Enter a index between 1 and 5";
const char* const kTooHigh = "Record Index should not exceed 5";
const char* const kInside = "Invalid Index for current process";

TEST_F(Moves, TargetsOfAMoveAndOfASwap) {
  const MoveCase moves[] = {
      {{2, 3, 4}, "1", "34512"}, {{4}, "1", "51234"},   {{1, 2}, "4", "14235"},
      {{1, 2}, "2", "12345"},    {{1}, " 3 ", "13245"}, {{0, 1, 2}, "3", kInside},
      {{1, 3}, "5", kSequence},  {{}, "1", kSequence},  {{5}, "1", kSequence},
      {{2}, "0", kTooLow},       {{2}, "", kTooLow},    {{2}, "-1", kTooLow},
      {{2}, "2x", kTooLow},      {{2}, "6", kTooHigh},  {{2}, "99999999999999999999", kTooHigh},
  };
  const MoveCase swaps[] = {
      {{0}, "5", "52341"},  {{3}, "2", "14325"}, {{1}, "2", kInside},  {{1, 2}, "5", kSequence},
      {{}, "5", kSequence}, {{1}, "0", kTooLow}, {{1}, "6", kTooHigh},
  };
  const auto check = [&](const MoveCase& row, auto operation) {
    SCOPED_TRACE(testing::PrintToString(row.rows) + " and " + row.target);
    const auto before = database.satellites;
    const auto landed = operation(messages, database, row.rows, row.target);
    const auto texts = recorder.Texts();
    EXPECT_EQ(CheckLinks(database), "");
    if (landed) {
      EXPECT_EQ(Names(database.satellites), row.order);
      EXPECT_EQ(database.satellites[*landed], before[row.rows[0]]);
      EXPECT_THAT(texts, IsEmpty());
    } else {
      EXPECT_EQ(database.satellites, before);
      EXPECT_THAT(texts, ElementsAre(row.order));
    }
    database.satellites = before;
    NumberSatellites(database);
  };
  for (const MoveCase& row : moves) check(row, MoveSatellites);
  for (const MoveCase& row : swaps) check(row, SwapSatellites);
}

TEST_F(Moves, RowsAreJudgedBeforeTheDialogOpens) {
  EXPECT_TRUE(CheckMoveRows(messages, {3, 4, 5}));
  EXPECT_TRUE(CheckSwapRows(messages, {3}));
  EXPECT_FALSE(CheckMoveRows(messages, {3, 5}));
  EXPECT_FALSE(CheckMoveRows(messages, {}));
  EXPECT_FALSE(CheckSwapRows(messages, {3, 4}));
  EXPECT_THAT(recorder.Texts(), ElementsAre(kSequence, kSequence, kSequence));
}

TEST_F(Moves, CarriersRefillThePlacesOfTheirSatellite) {
  EXPECT_TRUE(MoveCarriers(messages, database, First(), {0, 1, 2}, "5"));
  EXPECT_EQ(Names(First().carriers), "DEABC");
  EXPECT_EQ(Names(database.carriers), "DaEbAcBdCe");
  EXPECT_TRUE(SwapCarriers(messages, database, First(), {0}, "5"));
  EXPECT_EQ(Names(database.carriers), "CaEbAcBdDe");
  EXPECT_EQ(At(2).services[0]->carrier_position, 2);
}

TEST_F(Moves, ServicesRefillThePlacesOfTheirCarrierAndKeepTheirOrderAndFavourites) {
  const auto order = database.service_order;
  AddFavourites(messages, database.favourites[0], GroupKind::kTv, {order[4], order[0]});
  EXPECT_TRUE(MoveServices(messages, database, At(0), {3, 4}, "1"));
  EXPECT_EQ(Names(database.services), "yzvwx67");
  EXPECT_EQ(database.service_order, order);
  EXPECT_EQ(Names(database.favourites[0].tv), "zv");
  EXPECT_TRUE(SwapFavourites(messages, database.favourites[0], GroupKind::kTv, {0}, "2"));
  EXPECT_EQ(Names(database.favourites[0].tv), "vz");
  EXPECT_TRUE(MoveFavourites(messages, database.favourites[0], GroupKind::kTv, {1}, "1"));
  EXPECT_EQ(Names(database.favourites[0].tv), "zv");
}

TEST_F(Moves, SwapOfServicesWantsTwo) {
  Service *v = At(0).services[0], *x = At(0).services[2], *seven = At(1).services[1];
  for (const auto& chosen : {std::vector{v}, {v, x, seven}, {v, v}}) {
    EXPECT_FALSE(SwapServices(messages, database, chosen));
    EXPECT_THAT(recorder.Texts(), ElementsAre("Select two services to be swapped."));
  }
  EXPECT_TRUE(SwapServices(messages, database, {x, v}));
  EXPECT_EQ(Names(database.services), "xwvyz67");
  EXPECT_TRUE(SwapServices(messages, database, {x, seven}));
  EXPECT_EQ(Names(At(0).services), "7wvyz");
  EXPECT_EQ(Names(database.services), "7wvyz6x");
  EXPECT_EQ(x->carrier_position, 1);
  v->record.program_number = 6;  // the number of the other carrier's remaining service
  EXPECT_FALSE(SwapServices(messages, database, {v, x}));
  EXPECT_THAT(recorder.Texts(), ElementsAre("Service program number already exists."));
  EXPECT_EQ(Names(database.services), "7wvyz6x");
}

TEST_F(Moves, ServicesMoveBetweenCarriers) {
  Service *w = At(0).services[1], *y = At(0).services[3];
  EXPECT_FALSE(MoveServicesToCarrier(messages, database, {}, At(1)));
  EXPECT_FALSE(MoveServicesToCarrier(messages, database, {w, At(1).services[0]}, At(1)));
  w->record.program_number = 7;
  EXPECT_FALSE(MoveServicesToCarrier(messages, database, {y, w}, At(1)));
  EXPECT_THAT(
      recorder.Texts(),
      ElementsAre("Select  service(s) to  move",
                  "Both selected and destination carriers are same. Select a valid destination carrier.",
                  "Service program number already exists."));
  EXPECT_EQ(Names(At(0).services), "vwxyz");
  w->record.program_number = 2;
  EXPECT_TRUE(MoveServicesToCarrier(messages, database, {y, w}, At(1)));
  EXPECT_EQ(Names(At(0).services), "vxz");
  EXPECT_EQ(Names(At(1).services), "67yw");
  EXPECT_EQ(Names(database.services), "v6x7zyw");
  EXPECT_EQ(w->carrier_position, 1);
}

// Two SDBs alike; entries in the order "zyxwv" stand in the second TV group, "vw" in the third, "67" in the
// third radio group.
struct DropSample : MovedSample {
  std::vector<Satellite*> satellites = database.satellites;  // as they are called, wherever they stand
  Carrier *a = &At(0), *b = &At(1);
  DropSample() {
    const auto& v = At(0).services;
    for (Service* service : At(1).services) service->record.type = kRadio;
    database.favourites[1].tv = {v[4], v[3], v[2], v[1], v[0]};
    database.favourites[2].tv = {v[0], v[1]};
    database.favourites[2].radio = At(1).services;
    document.sdbs.push_back({1, "SDB2", CopyDatabase(database)});
  }
  // By places in the tree; below a group, its entries.
  NodeRef Node(const TreePath& path) const {
    if (path.size() < 4 || path[1] < kTvGroupLevelPosition) return NodesAlong(document, path).back();
    const TreePath group(path.begin(), path.end() - 1);
    return ListBelow(document, NodesAlong(document, group).back(), ListView::kBelow, false).rows.at(path[3]);
  }
  std::vector<NodeRef> Nodes(const std::vector<TreePath>& paths) const {
    std::vector<NodeRef> nodes;
    for (const TreePath& path : paths) nodes.push_back(Node(path));
    return nodes;
  }
  std::string Picture() const {
    return Names(database.satellites) + " " + Names(satellites[0]->carriers) + " " +
           Names(satellites[1]->carriers) + " " + Names(a->services) + " " + Names(b->services) + " " +
           Names(database.favourites[1].tv) + " " + Names(database.favourites[2].tv) + " " +
           Names(database.favourites[2].radio);
  }
};

const char* const kMismatch = "Can not drop in mismatched record type.";
const char* const kUntouched = "12345 ABCDE abcde vwxyz 67 zyxwv vw 67";

TEST(Drops, RowsComeToTheMarkedPlace) {
  const struct {
    std::vector<TreePath> rows;
    TreePath target;
    const char* after;
    bool behind;
  } cases[] = {
      {{{0, 1, 0}}, {0, 1, 1}, "21345 ABCDE abcde vwxyz 67 zyxwv vw 67", true},
      {{{0, 1, 2}, {0, 1, 3}}, {0, 1, 1}, "13425 ABCDE abcde vwxyz 67 zyxwv vw 67", false},
      {{{0, 1, 0, 0}}, {0, 1, 0, 2}, "12345 BCADE abcde vwxyz 67 zyxwv vw 67", true},
      {{{0, 1, 1, 3}, {0, 1, 1, 4}}, {0, 1, 1, 0}, "12345 ABCDE deabc vwxyz 67 zyxwv vw 67", false},
      {{{0, 1, 0, 0, 1}, {0, 1, 0, 0, 2}}, {0, 1, 0, 0, 3}, "12345 ABCDE abcde vywxz 67 zyxwv vw 67", true},
      {{{0, 1, 0, 0, 4}, {0, 1, 0, 0, 1}}, {0, 1, 0, 1, 0}, "12345 ABCDE abcde vxy wz67 zyxwv vw 67", false},
      {{{0, 1, 0, 1, 1}}, {0, 1, 0, 0, 4}, "12345 ABCDE abcde vwxy7z 6 zyxwv vw 67", false},
      {{{0, 2, 1, 3}, {0, 2, 1, 4}}, {0, 2, 1, 1}, "12345 ABCDE abcde vwxyz 67 zwvyx vw 67", false},
      {{{0, 3, 2, 1}}, {0, 3, 2, 0}, "12345 ABCDE abcde vwxyz 67 zyxwv vw 76", false},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.after);
    DropSample sample;
    const auto rows = sample.Nodes(row.rows);
    const NodeRef target = sample.Node(row.target);
    const DropMark mark = DropMarkOf(rows, target);
    EXPECT_TRUE(mark.fits);
    EXPECT_EQ(mark.behind, row.behind);
    EXPECT_TRUE(DropNodes(sample.messages, sample.document, rows, target));
    EXPECT_EQ(CheckLinks(sample.database), "");
    EXPECT_THAT(sample.recorder.Texts(), IsEmpty());
    EXPECT_EQ(sample.Picture(), row.after);
  }
}

enum class Edit { kDelete, kInsert, kMove, kSwap };

TEST(ChosenRows, AreThoseThatAnEditMeans) {
  const struct {
    Edit edit;
    std::vector<TreePath> rows;
    const char* target;
    const char* after;
  } cases[] = {
      {Edit::kDelete, {{0, 1, 2}, {0, 1, 4}}, "", "124 ABCDE abcde vwxyz 67 zyxwv vw 67"},
      {Edit::kDelete, {{0, 1, 0, 2}, {0, 1, 1, 4}}, "", "12345 ABDE abcd vwxyz 67 zyxwv vw 67"},
      {Edit::kDelete, {{0, 1, 0, 0, 1}, {0, 1, 0, 1, 1}}, "", "12345 ABCDE abcde vxyz 6 zyxv v 6"},
      {Edit::kDelete, {{0, 2, 1, 0}, {0, 2, 1, 2}, {0, 2, 2, 1}}, "", "12345 ABCDE abcde vwxyz 67 ywv v 67"},
      {Edit::kInsert, {{0, 1, 4}}, "", "1234Satellite55 ABCDE abcde vwxyz 67 zyxwv vw 67"},
      {Edit::kInsert, {{0, 1, 0, 2}}, "", "12345 ABCarrier6CDE abcde vwxyz 67 zyxwv vw 67"},
      {Edit::kInsert, {{0, 1, 0, 0, 0}}, "", "12345 ABCDE abcde Service6vwxyz 67 zyxwv vw 67"},
      {Edit::kMove, {{0, 2, 1, 0}}, "3", "12345 ABCDE abcde vwxyz 67 yxzwv vw 67"},
      {Edit::kMove, {{0, 1, 0, 0, 0}, {0, 1, 0, 0, 1}}, "4", "12345 ABCDE abcde xyvwz 67 zyxwv vw 67"},
      {Edit::kSwap, {{0, 1, 0}}, "2", "21345 ABCDE abcde vwxyz 67 zyxwv vw 67"},
      {Edit::kSwap, {{0, 1, 1, 4}}, "2", "12345 ABCDE aecdb vwxyz 67 zyxwv vw 67"},
      {Edit::kSwap, {{0, 2, 1, 1}}, "5", "12345 ABCDE abcde vwxyz 67 zvxwy vw 67"},
      {Edit::kSwap, {{0, 3, 2, 0}}, "2", "12345 ABCDE abcde vwxyz 67 zyxwv vw 76"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.after);
    DropSample sample;
    const auto rows = sample.Nodes(row.rows);
    const bool swap = row.edit == Edit::kSwap;
    if (swap || row.edit == Edit::kMove) {
      EXPECT_TRUE(CheckMoveNodes(sample.messages, rows, swap));
    }
    const bool done = row.edit == Edit::kDelete ? DeleteNodes(sample.messages, sample.document, rows)
                      : row.edit == Edit::kInsert
                          ? InsertAtRows(sample.messages, sample.document, rows, {}).has_value()
                          : MoveNodes(sample.messages, sample.document, rows, swap, row.target);
    EXPECT_TRUE(done);
    EXPECT_EQ(CheckLinks(sample.database), "");
    EXPECT_EQ(sample.Picture(), row.after);
  }
}

TEST(Drops, AreRefused) {
  const char* const between = "Carrier move between satellites is not supported.";
  const struct {
    std::vector<TreePath> rows;
    TreePath target;
    const char* text;  // empty: nothing is said
  } cases[] = {
      {{{0, 1, 0, 0, 1}}, {0, 1, 0, 1}, kMismatch},
      {{{0, 1, 0, 1}}, {0, 1, 1}, kMismatch},
      {{{0, 1, 1}}, {1, 1, 1}, kMismatch},
      {{{0, 1, 1}, {0, 1, 2}}, {1, 1, 4}, kMismatch},
      {{{0, 1, 0, 1}}, {1, 1, 0, 2}, kMismatch},
      {{{0, 1, 0, 1}, {0, 1, 0, 2}}, {1, 1, 0, 0}, kMismatch},
      {{{0, 1, 0, 0, 1}}, {1, 1, 0, 0, 0}, kMismatch},
      {{{0, 1, 0, 0, 1}, {0, 1, 0, 0, 2}}, {1, 1, 0, 1, 0}, kMismatch},
      {{{0, 2, 1, 0}}, {0, 2, 2, 0}, kMismatch},
      {{{0, 2, 2, 0}}, {0, 3, 2, 0}, kMismatch},
      {{{0, 2, 1, 0}, {0, 2, 1, 1}}, {1, 2, 1, 3}, kMismatch},
      {{{0}}, {1}, kMismatch},
      {{{0, 1, 0, 1}}, {0, 1, 1, 1}, between},
      {{{0, 1, 0, 1}, {0, 1, 0, 2}}, {0, 1, 1, 1}, between},
      {{{0, 1, 0, 1}, {0, 1, 1, 2}}, {0, 1, 0, 4}, kSequence},
      {{{0, 1, 0, 0, 1}, {0, 1, 0, 1, 0}}, {0, 1, 0, 0, 4}, kSequence},
      {{{0, 1, 0, 0, 0}, {0, 1, 0, 0, 2}}, {0, 1, 0, 0, 4}, kSequence},
      {{{0, 1, 1}, {1, 1, 2}}, {0, 1, 4}, kSequence},
      {{{0, 2, 1, 0}, {0, 2, 2, 1}}, {0, 2, 1, 3}, kSequence},
      {{{0, 1, 2}}, {0, 1, 2}, ""},
      {{{0, 1, 2}, {0, 1, 3}}, {0, 1, 3}, ""},
  };
  DropSample sample;
  for (const auto& row : cases) {
    SCOPED_TRACE(testing::PrintToString(row.rows) + " on " + testing::PrintToString(row.target));
    EXPECT_FALSE(
        DropNodes(sample.messages, sample.document, sample.Nodes(row.rows), sample.Node(row.target)));
    EXPECT_EQ(sample.recorder.Texts(),
              *row.text ? std::vector<std::string>{row.text} : std::vector<std::string>());
    EXPECT_EQ(sample.Picture(), kUntouched);
    if (row.text != kSequence && *row.text) {
      EXPECT_FALSE(DropMarkOf(sample.Nodes(row.rows), sample.Node(row.target)).fits);
    }
  }
  sample.At(1).services[0]->record.program_number = 3;
  EXPECT_FALSE(DropNodes(sample.messages, sample.document, sample.Nodes({{0, 1, 0, 0, 2}}),
                         sample.Node({0, 1, 0, 1, 0})));
  EXPECT_THAT(sample.recorder.Texts(), ElementsAre("Service program number already exists."));
  EXPECT_FALSE(
      MoveNodes(sample.messages, sample.document, sample.Nodes({{0, 1, 0, 1}, {0, 1, 1, 2}}), false, "5"));
  EXPECT_FALSE(CheckMoveNodes(sample.messages, sample.Nodes({{0, 1, 0, 0, 1}, {0, 1, 0, 1, 0}}), false));
  EXPECT_FALSE(MayDragRows(sample.messages, sample.Nodes({{0, 1, 0, 0}, {0, 1, 1, 2}}), false));
  EXPECT_TRUE(MayDragRows(sample.messages, sample.Nodes({{0, 1, 0, 0}, {0, 1, 1, 2}}), true)) << "a copy";
  NodeRef entry;
  entry.kind = NodeKind::kFavouriteTvEntry;
  EXPECT_TRUE(MayDragRows(sample.messages, {entry, entry}, false)) << "to another group";
  EXPECT_THAT(sample.recorder.Texts(), ElementsAre(kSequence, kSequence, kSequence));
  EXPECT_EQ(sample.Picture(), kUntouched);
}

TEST_F(Moves, TextsOfTheDialogs) {
  const struct {
    NodeKind kind;
    uint32_t place;
    bool swap;
    const char *title, *prompt, *tip;
  } rows[] = {{NodeKind::kSatellite, 2, false, "Move Satellite Information",
               "Move Satellite Information from \"3\" to ", "Click to move satellite record."},
              {NodeKind::kSatellite, 0, true, "Swap Satellite Information",
               "Swap Satellite Information \"1\" with ", "Click to swap satellite record."},
              {NodeKind::kCarrier, 9, false, "Move Carrier Information",
               "Move Carrier Information from \"10\" to ", "Click to move carrier record."},
              {NodeKind::kCarrier, 9, true, "Swap Carrier Information",
               "Swap Carrier Information \"10\" with ", "Click to swap carrier record."},
              {NodeKind::kFavouriteTvEntry, 0, false, "Move Information", "Move Information from \"1\" to ",
               "Click to move record."}};
  for (const auto& row : rows) {
    NodeRef node;
    node.kind = row.kind;
    node.index = row.place;
    const MoveDialogTexts texts = MoveTextsOf({node}, row.swap);
    EXPECT_EQ(texts.title, row.title);
    EXPECT_EQ(texts.prompt, row.prompt);
    EXPECT_EQ(texts.tip, row.tip);
  }
}

}  // namespace
}  // namespace vexa
