// What a database window shows, from a small database made by hand.
#include "view/view_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/replace_file.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/node_edit.h"
#include "view/row_order.h"
#include "view/tree_path.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::Pair;

// SDB1: two LNBs; "Astra" on LNB 2 with carriers C1 (TV "Eins", radio "Zwei") and C2 (nothing); "Empty" on
// LNB 1.
class ViewModel : public testing::Test {
 protected:
  ViewModel() : document_(NewDocument()) {
    StaticDatabase& database = *document_.sdbs[0].database;
    database.lnb_count = 2;
    database.lnbs[0].type = kLnbNormal;
    AddTestSatellite(database, "Astra")->record = {0, 1, 7, 1, 1, 192, 0, "Astra"};
    AddTestSatellite(database, "Empty");
    Carrier* first = AddTestCarrier(database, 0);
    first->record.frequency = 11778;
    first->record.polarization = kVertical;
    first->record.fec = 3;
    SetName(first->record.name, "C1");
    SetName(AddTestCarrier(database, 0)->record.name, "C2");
    Service* eins = AddTestService(database, first);
    eins->record.program_number = 28106;
    eins->record.video_pid = 255;
    SetName(eins->record.name, "Eins \xE4");
    zwei_ = AddTestService(database, first);
    zwei_->record.type = kRadio;
    SetName(zwei_->record.name, "Zwei");
    database.favourites[2].tv.push_back(eins);
    database.favourites[3].radio.push_back(zwei_);
    document_.ubis.push_back({"UBI1", {}});
  }

  NodeRef At(const TreePath& path) { return NodesAlong(document_, path).back(); }

  ListModel List(const TreePath& path, ListView view = ListView::kBelow, bool hexadecimal = false) {
    return ListBelow(document_, At(path), view, hexadecimal);
  }

  std::vector<std::string> Column(const ListModel& list, size_t column) {
    std::vector<std::string> texts;
    for (size_t row = 0; row < list.size(); ++row)
      texts.push_back(CellText(document_, list, row, column, false));
    return texts;
  }

  Document document_;
  Service* zwei_;
};

TEST_F(ViewModel, TreeHoldsEveryRecordUnderItsOwner) {
  const struct {
    TreePath path;
    std::vector<std::string> below;
  } rows[] = {
      {{0}, {"LNBs", "Satellites", "TV Groups", "Radio Groups"}},
      {{0, 0}, {"[ 1 ] LNB", "[ 2 ] LNB"}},
      {{0, 0, 0}, {}},
      {{0, 1}, {"[ 1 ] Astra", "[ 2 ] Empty"}},
      {{0, 1, 0}, {"[ 1 ] C1", "[ 2 ] C2"}},
      {{0, 1, 0, 0}, {"[ 1 ] Eins \xC3\xA4", "[ 2 ] Zwei"}},
      {{0, 1, 0, 1}, {}},
      {{1}, {"UBI1"}},
  };
  for (const auto& test : rows) {
    const NodeRef node = At(test.path);
    std::vector<std::string> labels;
    for (const NodeRef& child : ChildNodes(document_, node)) labels.push_back(NodeLabel(document_, child));
    EXPECT_EQ(labels, test.below) << NodeLabel(document_, node);
    EXPECT_EQ(HasChildNodes(document_, node), !test.below.empty()) << NodeLabel(document_, node);
  }
  EXPECT_EQ(NodeLabel(document_, RootNodes(document_)[0]), "SDB1");
  EXPECT_EQ(NodeLabel(document_, RootNodes(document_)[1]), "Box Infos");
  EXPECT_EQ(ChildNodes(document_, At({0, 2})).size(), 8u);
  EXPECT_EQ(NodeLabel(document_, At({0, 3, 7})), "Favourite8");
}

TEST_F(ViewModel, ColoursTellWhatIsInUse) {
  zwei_->record.type = 0;  // every type but TV is radio
  const std::pair<TreePath, ColourRole> rows[] = {
      {{0, 1, 0}, ColourRole::kActiveSatellite},  {{0, 1, 1}, ColourRole::kInactiveSatellite},
      {{0, 1, 0, 0}, ColourRole::kActiveCarrier}, {{0, 1, 0, 1}, ColourRole::kInactiveCarrier},
      {{0, 1, 0, 0, 0}, ColourRole::kTvService},  {{0, 1, 0, 0, 1}, ColourRole::kRadioService},
      {{0, 3, 3}, ColourRole::kActiveFavourite},  {{0, 3, 2}, ColourRole::kInactiveFavourite},
  };
  for (const auto& [path, role] : rows) EXPECT_EQ(NodeColour(document_, At(path)), role);
  EXPECT_EQ(IconOf(At({0, 1, 0})), NodeIcon::kUserSatellite);
  EXPECT_EQ(IconOf(At({0, 1, 0, 0})), NodeIcon::kFactoryCarrier);
}

TEST_F(ViewModel, TheSystemsColourStandsInForOneThatTheUserDidNotChoose) {
  constexpr uint32_t kText = 0xFEFEFE, kChosen = 0x123456, kWhite = 0xFFFFFF, kBlack = 0;
  EditorColourTable colours = DefaultColours();
  colours[static_cast<size_t>(ColourRole::kTvService)] = kChosen;
  const auto own = [&](ColourRole role) { return colours[static_cast<size_t>(role)]; };
  for (const uint32_t surface : {kWhite, 0xC0C0C0u, kBlack, 0x303030u}) {
    for (const bool high : {false, true}) {
      const auto colour = [&](ColourRole role) { return TextColour(colours, role, {high, kText, surface}); };
      const bool dark = surface < 0x808080;
      EXPECT_EQ(colour(ColourRole::kTvService), kChosen);
      EXPECT_EQ(colour(ColourRole::kPlain), kText);
      EXPECT_EQ(colour(ColourRole::kActiveSatellite),
                high || dark ? kText : own(ColourRole::kActiveSatellite));
      EXPECT_EQ(colour(ColourRole::kInactiveCarrier),
                high || dark ? kText : own(ColourRole::kInactiveCarrier));
      EXPECT_EQ(colour(ColourRole::kInactiveFavourite), high ? kText : own(ColourRole::kInactiveFavourite));
    }
  }
}

TEST_F(ViewModel, ListShowsWhatIsBelowTheNode) {
  EXPECT_THAT(Column(List({0}), 1), ElementsAre("Astra", "Empty"));
  EXPECT_THAT(Column(List({0, 0, 1}), 1), ElementsAre("Astra")) << "on the second LNB";
  EXPECT_THAT(Column(List({0, 0}), 3), ElementsAre("Normal", "Universal"));
  const ListModel carriers = List({0, 1, 0});
  std::vector<std::string> cells;
  for (size_t column = 0; column < carriers.columns.size(); ++column)
    cells.push_back(CellText(document_, carriers, 0, column, false));
  EXPECT_THAT(cells, ElementsAre("1", "C1", "Astra", "11778", "27500", "Vertical", "3/4", "Yes", "2"));
  EXPECT_EQ(CellText(document_, carriers, 2, 0, false), "") << "beyond the last row";
  EXPECT_EQ(CellText(document_, carriers, 0, 99, false), "") << "beyond the last column";
}

TEST_F(ViewModel, ViewsChooseServicesAndCarriersOfAllThatIsBelow) {
  const struct {
    TreePath path;
    ListView view;
    std::vector<std::string> names;
  } rows[] = {
      {{0}, ListView::kCarriers, {"C1", "C2"}},
      {{0}, ListView::kServices, {"Eins \xC3\xA4", "Zwei"}},
      {{0, 1, 0}, ListView::kTvServices, {"Eins \xC3\xA4"}},
      {{0, 1, 0}, ListView::kRadioServices, {"Zwei"}},
      {{0, 1, 1}, ListView::kServices, {}},
      {{0, 1, 0, 0}, ListView::kRadioServices, {"Zwei"}},
      {{0, 0}, ListView::kServices, {"9750", "9750"}},  // a view of services says nothing here
  };
  for (const auto& row : rows)
    EXPECT_EQ(Column(List(row.path, row.view), 1), row.names) << static_cast<int>(row.view);
}

TEST_F(ViewModel, PidsFollowTheDisplayOption) {
  const ListModel decimal = List({0, 1, 0, 0});
  const ListModel hexadecimal = List({0, 1, 0, 0}, ListView::kBelow, true);
  EXPECT_EQ(decimal.columns[5].title, "Video (Dec)");
  EXPECT_EQ(hexadecimal.columns[6].title, "Audio (Hex)");
  EXPECT_EQ(CellText(document_, decimal, 0, 5, false), "255");
  EXPECT_EQ(CellText(document_, hexadecimal, 0, 5, true), "FF");
  EXPECT_EQ(CellText(document_, hexadecimal, 0, 6, true), "2000");
}

TEST_F(ViewModel, DetailsNameEveryField) {
  const ListModel satellite = DetailsOf(document_, At({0, 1, 0}), false);
  EXPECT_EQ(satellite.title, "Info - Astra");
  EXPECT_THAT(satellite.details,
              ElementsAre(Pair("Satellite Name", "Astra"), Pair("LNB Index", "LNB2"),
                          Pair("EastWest Flag", "East"), Pair("Angle", "019.2"), Pair("Position", "7"),
                          Pair("Factory Default", "No"), Pair("Total Carrier", "2")));
  const ListModel lnb = DetailsOf(document_, At({0, 0, 1}), false);
  EXPECT_EQ(lnb.title, "Info - LNB2");
  EXPECT_THAT(lnb.details, ElementsAre(Pair("LNB freq 1", "9750"), Pair("LNB freq 2", "10600"),
                                       Pair("LNB Type", "Universal"), Pair("Power Control", "On")));
  const ListModel carrier = DetailsOf(document_, At({0, 1, 0, 0}), false);
  EXPECT_THAT(carrier.details, ElementsAre(Pair("Satellite Name", "Astra"), Pair("Angle", "019.2"),
                                           Pair("Carrier Name", "C1"), Pair("Frequency", "11778"),
                                           Pair("SymbolRate", "27500"), Pair("Polarization", "Vertical")));
  EXPECT_EQ(DetailsOf(document_, At({0}), false).size(), 0u);
}

TEST_F(ViewModel, RecordsThatAreGoneAreNotRead) {
  const struct {
    TreePath place;
    const char* text;
  } rows[] = {{{0, 1, 0}, "Error reading satellite information. Cannot proceed."},
              {{0, 1, 0, 0}, "Error reading satellite information. Cannot proceed."},
              {{0, 1, 0, 0, 0}, "Error No: -10 \n( Invalid Process ) Display Service Information"}};
  for (const auto& row : rows) {
    NodeRef node = At(row.place);
    EXPECT_EQ(UnreadableText(document_, node), nullptr);
    Document other = NewDocument();
    EXPECT_STREQ(UnreadableText(other, node), row.text);
    node.sdb = 1;
    EXPECT_STREQ(UnreadableText(document_, node), row.text);
  }
  EXPECT_EQ(UnreadableText(document_, At({0, 0, 1})), nullptr);
}

// Every text with a name, in a page where the byte E4 is another letter.
TEST_F(ViewModel, NamesAreShownInThePageOfTheDocument) {
  StaticDatabase& database = *document_.sdbs[0].database;
  document_.names = FindCodePage("Windows-1251");
  document_.sdbs[0].name = document_.ubis[0].name = "\xE4";
  for (char* name : {database.satellites[0]->record.name, database.carriers[0]->record.name,
                     database.favourites[2].record.tv_name, database.favourites[2].record.radio_name})
    name[0] = '\xE4', name[1] = 0;
  const std::string letter = "\xD0\xB4";
  using Path = TreePath;
  const Path carrier = {0, 1, 0, 0};
  EXPECT_EQ(NodeLabel(document_, At({0})), letter);
  EXPECT_EQ(NodeLabel(document_, At({1, 0})), letter);
  EXPECT_EQ(NodeLabel(document_, At({0, 1, 0})), "[ 1 ] " + letter);
  EXPECT_EQ(NodeLabel(document_, At(carrier)), "[ 1 ] " + letter);
  EXPECT_EQ(NodeLabel(document_, At({0, 1, 0, 0, 0})), "[ 1 ] Eins " + letter);
  EXPECT_EQ(NodeLabel(document_, At({0, 2, 2})), letter);
  const auto cell = [&](const ListModel& list, size_t row, size_t column) {
    return CellText(document_, list, row, column, false);
  };
  EXPECT_EQ(cell(List({0}), 0, 1), letter);
  EXPECT_EQ(cell(List({0}, ListView::kCarriers), 0, 2), letter);
  EXPECT_EQ(cell(List(carrier), 0, 1), "Eins " + letter);
  EXPECT_EQ(cell(List(carrier), 0, 2), letter);
  EXPECT_EQ(cell(List({0, 3}), 2, 1), letter);
  EXPECT_EQ(cell(List({1}), 0, 1), letter);
  EXPECT_EQ(DetailsOf(document_, At(carrier), false).title, "Info - " + letter);
  EXPECT_EQ(DetailsOf(document_, At(carrier), false).details[0].second, letter);
  EXPECT_EQ(PanelLabels(document_, At({0}))[0], "SDB:" + letter + "  Index 1/1");
}

TEST_F(ViewModel, PanelCountsTheSelectedPart) {
  EXPECT_THAT(PanelLabels(document_, At({0, 1})),
              ElementsAre("SDB:SDB1  Index 1/1", "LNBs\t2", "Satellites  2", "Carriers\t2", "Services  2"));
  EXPECT_THAT(PanelLabels(document_, At({1, 0})), ElementsAre("No of UBIs:1", "", "", "", ""));
  EXPECT_THAT(PanelLabels(document_, {}), ElementsAre("", "", "", "", ""));
}

// What is above or below a record, or around it, is no part of what it says; equal siblings differ.
TEST_F(ViewModel, RecordsAreKnownAgainByWhatTheySay) {
  StaticDatabase& database = *document_.sdbs[0].database;
  const auto contents = [](const Document& document, const TreePath& path) {
    return NodeContents(ChildNodes(document, NodesAlong(document, path).back()));
  };
  const auto before = contents(document_, {0, 1}), carriers = contents(document_, {0, 1, 0});
  Document rebuilt = NewDocument();
  rebuilt.sdbs[0].database = CopyDatabase(database);
  EXPECT_EQ(contents(rebuilt, {0, 1, 0}), carriers);
  EXPECT_EQ(contents(rebuilt, {0, 1, 0, 0}), contents(document_, {0, 1, 0, 0}));
  AddTestSatellite(database, "Empty");
  AddTestService(database, database.carriers[1]);
  AddTestCarrier(database, 1);
  const auto after = contents(document_, {0, 1});
  ASSERT_EQ(after.size(), 3u);
  EXPECT_EQ(after[0], before[0]);
  EXPECT_EQ(after[1], before[1]);
  EXPECT_NE(after[2], after[1]);
  EXPECT_EQ(contents(document_, {0, 1, 0}), carriers);
  database.carriers[0]->record.frequency += 1;
  EXPECT_NE(contents(document_, {0, 1, 0})[0], carriers[0]);
  EXPECT_THAT(contents(document_, {0}), ElementsAre(0, 0, 0, 0)) << "levels have places";
}

TEST_F(ViewModel, NewRecordsBelongToTheTreesNodeOrWhereTheRowIs) {
  const NodeRef sdb = At({0}), level = At({0, 1}), astra = At({0, 1, 0}), c1 = At({0, 1, 0, 0}),
                eins = At({0, 1, 0, 0, 0}), empty = At({0, 1, 1});
  const struct {
    NodeRef tree, row;
    NodeKind kind;
  } rows[] = {{sdb, {}, NodeKind::kSdb},
              {sdb, eins, NodeKind::kService},
              {sdb, c1, NodeKind::kSatellite},
              {sdb, astra, NodeKind::kSdb},
              {level, empty, NodeKind::kSatelliteLevel},
              {level, c1, NodeKind::kSatellite},
              {astra, c1, NodeKind::kSatellite},
              {astra, eins, NodeKind::kService},
              {c1, eins, NodeKind::kCarrier},
              {c1, c1, NodeKind::kSatellite}};
  for (const auto& row : rows) {
    const NodeRef at = NodeToAddAt(row.tree, row.row);
    EXPECT_EQ(at.kind, row.kind);
    if (row.kind == NodeKind::kSatellite) {
      EXPECT_EQ(at.satellite, astra.satellite);
      EXPECT_EQ(at.carrier, nullptr);
    }
  }
  EXPECT_THAT(SatelliteRows(document_, {empty, astra}, {}), ElementsAre(0u, 1u));
  EXPECT_THAT(SatelliteRows(document_, {level}, {}), ElementsAre(0u, 1u));
  EXPECT_THAT(SatelliteRows(document_, {level}, {empty}), ElementsAre(1u));
  EXPECT_THAT(SatelliteRows(document_, {c1}, {empty}), ElementsAre());
  const std::vector<NodeRef> shown[] = {{empty}, {}, {c1}};  // by a filter
  EXPECT_THAT(SatelliteRows(document_, {level}, {}, &shown[0]), ElementsAre(1u));
  EXPECT_THAT(SatelliteRows(document_, {level}, {}, &shown[1]), ElementsAre());
  EXPECT_THAT(SatelliteRows(document_, {level}, {}, &shown[2]), ElementsAre(0u, 1u));
  EXPECT_THAT(RowsOfNodes({level, astra, empty}, {empty, level}), ElementsAre(true, false, true));
  EXPECT_THAT(RowsOfNodes({level, astra}, {astra, empty}), ElementsAre(false, false));
}

TEST(ReplaceFile, AsksAboutWhatAnotherProgramWrote) {
  Recorder recorder;
  const Path file = recorder.context.temporary_folder / "file.bin";
  EXPECT_TRUE(MayReplaceFile(recorder.context.messages, file, std::nullopt));
  PutFile(file, BytesOf("one"));
  const auto known = StateOf(file);
  recorder.answer = false;
  EXPECT_TRUE(MayReplaceFile(recorder.context.messages, file, known));
  EXPECT_TRUE(recorder.Texts().empty());
  PutFile(file, BytesOf("another"));
  EXPECT_FALSE(MayReplaceFile(recorder.context.messages, file, known));
  EXPECT_THAT(recorder.Texts(),
              ElementsAre("\"" + Utf8FromPath(file) +
                          "\" was changed by another program.\nDo you want to replace it ?"));
  recorder.answer = true;
  EXPECT_TRUE(MayReplaceFile(recorder.context.messages, file, known));
  std::filesystem::remove(file);
  recorder.answer = false;
  EXPECT_TRUE(MayReplaceFile(recorder.context.messages, file, known)) << "there is nothing to lose";
}

TEST(ViewTexts, AnglesAndCodes) {
  const std::pair<uint32_t, const char*> angles[] = {
      {0, "000.0"}, {1, "000.1"}, {192, "019.2"}, {1800, "180.0"}, {4095, "409.5"}};
  for (const auto& [tenths, text] : angles) EXPECT_EQ(ViewAngleText(tenths), text);
  EXPECT_EQ(FecName(5), "7/8");
  EXPECT_EQ(FecName(6), "") << "a code without a name";
}

}  // namespace

}  // namespace vexa
