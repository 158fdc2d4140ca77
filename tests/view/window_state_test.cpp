#include "view/window_state.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/support/random_database.h"

namespace vexa {

namespace {

std::set<int> CheckedIn(const WindowState& state) {
  std::set<int> checked;
  for (const CommandInfo& command : Commands()) {
    if (CommandChecked(command, state)) checked.insert(command.id);
  }
  return checked;
}

TEST(WindowState, ChecksFollowIt) {
  EXPECT_EQ(CheckedIn({}), std::set<int>{});
  WindowState state;
  state.payload_compressed = true;
  state.view = ListView::kBelow;
  EXPECT_EQ(CheckedIn(state), std::set<int>{kCmdCompressBin});
  state = {};
  state.part_compressed = true;
  EXPECT_EQ(CheckedIn(state), std::set<int>{kCmdCompressSdb});
  const std::pair<ListView, std::set<int>> views[] = {{ListView::kServices, {kCmdViewServices, kCmdViewBoth}},
                                                      {ListView::kCarriers, {kCmdViewCarriers}},
                                                      {ListView::kTvServices, {kCmdViewTv}},
                                                      {ListView::kRadioServices, {kCmdViewRadio}}};
  for (const auto& [view, commands] : views) {
    state = {};
    state.view = view;
    EXPECT_EQ(CheckedIn(state), commands);
  }
  state = {};
  state.details = true;
  EXPECT_EQ(CheckedIn(state), std::set<int>{kCmdInformation});
  const std::pair<ConsoleOptions, std::set<int>> options[] = {
      {{}, {kCmdConsoleSendCr}},
      {{.line_ending = LineEnding::kLineFeed, .hexadecimal_view = true},
       {kCmdConsoleSendLf, kCmdConsoleHexadecimalView}},
      {{.line_ending = LineEnding::kBoth, .hexadecimal_input = true},
       {kCmdConsoleSendCrLf, kCmdConsoleHexadecimalInput}},
      {{.line_ending = LineEnding::kNone, .time_stamps = true, .reconnect = true},
       {kCmdConsoleSendNothing, kCmdConsoleTimeStamps, kCmdConsoleReconnect}}};
  for (const auto& [chosen, checked] : options) {
    state = {};
    state.console = chosen;
    EXPECT_EQ(CheckedIn(state), checked);
  }
}

TEST(WindowState, TextsAndPicturesFollowIt) {
  const CommandInfo& undo = *FindCommand(kCmdUndo);
  const CommandInfo& connect = *FindCommand(kCmdConnect);
  WindowState state;
  EXPECT_EQ(MenuText(undo, state), "&Undo Sorting\tCtrl+Z");
  EXPECT_EQ(MenuText(connect, state), "Connec&t\tF10");
  EXPECT_FALSE(connect.button.has_other_picture(state));
  state.can_undo_other = true;
  EXPECT_EQ(MenuText(undo, state), "&Undo\tCtrl+Z");
  // The port is lost and waited for, then it is there.
  state.port_wanted = true;
  EXPECT_EQ(MenuText(connect, state), "&Disconnect\tF10");
  EXPECT_FALSE(connect.button.has_other_picture(state));
  state.port_open = true;
  EXPECT_TRUE(connect.button.has_other_picture(state));
}

struct Looks : testing::Test {
  Document document = NewDocument();
  UndoHistory history;

  void SetUp() override {
    StaticDatabase& database = *document.sdbs[0].database;
    AddTestSatellite(database, "Empty");
    AddTestService(database, AddTestCarrier(database, 0));
    document.ubis.resize(1);
    StartHistory(history, document);
  }
  // With the node selected in the tree.
  WindowState See(const NodeRef& node) {
    WindowState state;
    SeeDatabase(state,
                {.document = document, .history = history, .selected = node, .record = node, .row = {}});
    return state;
  }
};

TEST_F(Looks, WhatIsSelectedDecidesWhatCanBeDone) {
  const uint32_t all = kNeedsEditable | kNeedsAddable | kNeedsInsertable | kNeedsDeletable | kNeedsMovable;
  const uint32_t box = kNeedsEditable | kNeedsAddable | kNeedsDeletable;
  const uint32_t views = kNeedsViews | kNeedsCarrierView;
  const NodeRef sdb = RootNodes(document)[0], ubis = RootNodes(document)[1];
  const auto below = [&](const NodeRef& node, size_t place) { return ChildNodes(document, node).at(place); };
  const NodeRef level = below(sdb, 1), satellite = below(level, 0), carrier = below(satellite, 0);
  const struct {
    NodeRef node;
    uint32_t present;
  } rows[] = {{{}, kNeedsSdb},
              {sdb, kNeedsSdb | box | views},
              {level, kNeedsSdb | kNeedsAddable | kNeedsSatellite | views},
              {satellite, kNeedsSdb | all | kNeedsSatellite | views | kNeedsDetails},
              {carrier, kNeedsSdb | all | kNeedsViews | kNeedsDetails},
              {below(carrier, 0), kNeedsSdb | all | kNeedsDetails},
              {ubis, kNeedsAddable},
              {below(ubis, 0), box | kNeedsDetails}};
  for (const auto& row : rows) {
    EXPECT_EQ(See(row.node).present, row.present | kNeedsEditor) << static_cast<int>(row.node.kind);
  }
  document.sdbs.clear();
  EXPECT_EQ(See({}).present, uint32_t{kNeedsEditor});
}

TEST_F(Looks, ListAndHistory) {
  const NodeRef sdb = RootNodes(document)[0],
                satellite = ChildNodes(document, ChildNodes(document, sdb)[1])[0];
  WindowState state;
  // A row of the list is what is changed and where is added; the tree's selection has the views.
  SeeDatabase(state, {document, history, sdb, satellite, satellite, ListView::kCarriers, true});
  EXPECT_EQ(state.present & (kNeedsRows | kNeedsMovable | kNeedsViews),
            kNeedsRows | kNeedsMovable | kNeedsViews);
  EXPECT_EQ(state.view, ListView::kCarriers);
  for (const bool sort : {true, false}) {
    document.sdbs[0].name[0] = sort ? 'A' : 'B';
    ASSERT_TRUE(RecordChange(history, document, sort));
    EXPECT_EQ(See(sdb).can_undo_other, !sort);
    EXPECT_EQ(See(sdb).present & (kNeedsUndo | kNeedsRedo), uint32_t{kNeedsUndo});
  }
  ASSERT_TRUE(Undo(history, document));
  EXPECT_FALSE(See(sdb).can_undo_other);
  ASSERT_TRUE(Undo(history, document));
  EXPECT_EQ(See(sdb).present & (kNeedsUndo | kNeedsRedo), uint32_t{kNeedsRedo});
  EXPECT_FALSE(See(sdb).can_undo_other);
}

// What is checked in the menu and pressed below the list: the view that the list shows, whichever way it came
// to it.
TEST_F(Looks, TheViewIsTheOneThatIsSeen) {
  const NodeRef sdb = RootNodes(document)[0], level = ChildNodes(document, sdb)[1],
                satellite = ChildNodes(document, level)[0], carrier = ChildNodes(document, satellite)[0];
  const struct {
    NodeRef node;
    ListView chosen;
    std::optional<ListView> seen;
  } rows[] = {{sdb, ListView::kBelow, ListView::kBelow},
              {sdb, ListView::kRadioServices, ListView::kRadioServices},
              {satellite, ListView::kBelow, ListView::kCarriers},
              {satellite, ListView::kServices, ListView::kServices},
              {carrier, ListView::kBelow, ListView::kServices},
              {ChildNodes(document, carrier)[0], ListView::kBelow, {}}};
  for (const auto& row : rows) {
    for (const bool details : {false, true}) {
      WindowState state;
      SeeDatabase(state, {document, history, row.node, row.node, {}, row.chosen, true, details});
      EXPECT_EQ(state.view, details ? std::nullopt : row.seen) << static_cast<int>(row.node.kind);
      EXPECT_EQ(state.details, details);
    }
  }
}

TEST_F(Looks, CompressionIsThatOfTheSelection) {
  const NodeRef sdb = RootNodes(document)[0], ubis = RootNodes(document)[1];
  for (const int flag : {0, 1, 2, 4}) {
    document.compress_payload = flag & 1;
    document.compress_ubis = flag & 2;
    document.sdbs[0].database->compressed = flag & 4;
    EXPECT_EQ(See(sdb).payload_compressed, flag == 1);
    EXPECT_EQ(See(ubis).part_compressed, flag == 2);
    EXPECT_EQ(See(sdb).part_compressed, flag == 4);
  }
}

}  // namespace

}  // namespace vexa
