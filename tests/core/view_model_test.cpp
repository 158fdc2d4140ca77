// What a database window shows, from a small database made by hand.
#include "core/view_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/random_database.h"

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
    astra_ = AddTestSatellite(database, "Astra");
    astra_->record = {0, 1, 7, 1, 1, 192, 0, "Astra"};
    AddTestSatellite(database, "Empty");
    Carrier* first = AddTestCarrier(database, 0);
    first->record.frequency = 11778;
    first->record.polarization = kVertical;
    first->record.fec = 3;
    SetName(first->record.name, "C1");
    SetName(AddTestCarrier(database, 0)->record.name, "C2");
    eins_ = AddTestService(database, first);
    eins_->record.program_number = 28106;
    eins_->record.video_pid = 255;
    SetName(eins_->record.name, "Eins \xE4");
    zwei_ = AddTestService(database, first);
    zwei_->record.type = kRadio;
    SetName(zwei_->record.name, "Zwei");
    database.favourites[2].tv.push_back(eins_);
    database.favourites[2].radio.push_back(zwei_);
    document_.ubis.push_back({"UBI1", {}});
  }

  // The node at the labels, each below the one before.
  NodeRef At(const std::vector<std::string>& path) {
    NodeRef found;
    std::vector<NodeRef> nodes = RootNodes(document_);
    for (const std::string& label : path) {
      const auto next = std::find_if(nodes.begin(), nodes.end(), [&](const NodeRef& node) {
        return NodeLabel(document_, node) == label;
      });
      if (next == nodes.end()) {
        ADD_FAILURE() << "no node " << label;
        return {};
      }
      found = *next;
      nodes = ChildNodes(document_, found);
    }
    return found;
  }

  std::vector<std::string> Column(const ListModel& list, size_t column, bool hexadecimal = false) {
    std::vector<std::string> texts;
    for (size_t row = 0; row < list.size(); ++row)
      texts.push_back(CellText(document_, list, row, column, hexadecimal));
    return texts;
  }

  Document document_;
  Satellite* astra_;
  Service *eins_, *zwei_;
};

struct TreeCase {
  std::vector<std::string> path, below;
};

TEST_F(ViewModel, TreeHoldsEveryRecordUnderItsOwner) {
  const TreeCase cases[] = {
      {{"SDB1"}, {"LNBs", "Satellites", "TV Groups", "Radio Groups"}},
      {{"SDB1", "LNBs"}, {"[ 1 ] LNB", "[ 2 ] LNB"}},
      {{"SDB1", "LNBs", "[ 1 ] LNB"}, {}},
      {{"SDB1", "Satellites"}, {"[ 1 ] Astra", "[ 2 ] Empty"}},
      {{"SDB1", "Satellites", "[ 1 ] Astra"}, {"[ 1 ] C1", "[ 2 ] C2"}},
      {{"SDB1", "Satellites", "[ 1 ] Astra", "[ 1 ] C1"}, {"[ 1 ] Eins \xC3\xA4", "[ 2 ] Zwei"}},
      {{"SDB1", "Satellites", "[ 1 ] Astra", "[ 2 ] C2"}, {}},
      {{"Box Infos"}, {"UBI1"}},
  };
  for (const TreeCase& test : cases) {
    const NodeRef node = At(test.path);
    std::vector<std::string> labels;
    for (const NodeRef& child : ChildNodes(document_, node)) labels.push_back(NodeLabel(document_, child));
    EXPECT_EQ(labels, test.below) << test.path.back();
    EXPECT_EQ(HasChildNodes(document_, node), !test.below.empty()) << test.path.back();
  }
  EXPECT_EQ(ChildNodes(document_, At({"SDB1", "TV Groups"})).size(), 8u);
  EXPECT_EQ(At({"SDB1", "Radio Groups", "Favourite8"}).index, 7u);
}

TEST_F(ViewModel, ColoursTellWhatIsInUse) {
  const NodeRef satellites = At({"SDB1", "Satellites"}), astra = At({"SDB1", "Satellites", "[ 1 ] Astra"});
  EXPECT_EQ(NodeColour(document_, astra), ColourRole::kActiveSatellite);
  EXPECT_EQ(NodeColour(document_, ChildNodes(document_, satellites)[1]), ColourRole::kInactiveSatellite);
  const auto carriers = ChildNodes(document_, astra);
  EXPECT_EQ(NodeColour(document_, carriers[0]), ColourRole::kActiveCarrier);
  EXPECT_EQ(NodeColour(document_, carriers[1]), ColourRole::kInactiveCarrier);
  const auto services = ChildNodes(document_, carriers[0]);
  EXPECT_EQ(NodeColour(document_, services[0]), ColourRole::kTvService);
  zwei_->record.type = 0;  // every type but TV is radio
  EXPECT_EQ(NodeColour(document_, services[1]), ColourRole::kRadioService);
  const auto groups = ChildNodes(document_, At({"SDB1", "Radio Groups"}));
  EXPECT_EQ(NodeColour(document_, groups[2]), ColourRole::kActiveFavourite);
  EXPECT_EQ(NodeColour(document_, groups[3]), ColourRole::kInactiveFavourite);
  EXPECT_EQ(IconOf(astra), NodeIcon::kUserSatellite);
  EXPECT_EQ(IconOf(carriers[0]), NodeIcon::kFactoryCarrier);
}

TEST_F(ViewModel, ListShowsWhatIsBelowTheNode) {
  EXPECT_THAT(Column(ListBelow(document_, At({"SDB1"}), ListView::kBelow, false), 1),
              ElementsAre("Astra", "Empty"));
  const NodeRef second_lnb = At({"SDB1", "LNBs", "[ 2 ] LNB"});
  EXPECT_THAT(Column(ListBelow(document_, second_lnb, ListView::kBelow, false), 1), ElementsAre("Astra"));
  const ListModel lnbs = ListBelow(document_, At({"SDB1", "LNBs"}), ListView::kBelow, false);
  EXPECT_EQ(CellText(document_, lnbs, 1, 1, false), "9750");
  EXPECT_EQ(CellText(document_, lnbs, 1, 3, false), "Universal");
  const ListModel carriers =
      ListBelow(document_, At({"SDB1", "Satellites", "[ 1 ] Astra"}), ListView::kBelow, false);
  std::vector<std::string> cells;
  for (size_t column = 0; column < carriers.columns.size(); ++column)
    cells.push_back(CellText(document_, carriers, 0, column, false));
  EXPECT_THAT(cells, ElementsAre("1", "C1", "Astra", "11778", "27500", "Vertical", "3/4", "Yes", "2"));
  EXPECT_EQ(CellText(document_, carriers, 2, 0, false), "") << "beyond the last row";
  EXPECT_EQ(CellText(document_, carriers, 0, 99, false), "") << "beyond the last column";
}

TEST_F(ViewModel, ViewsChooseServicesAndCarriersOfAllThatIsBelow) {
  const NodeRef sdb = At({"SDB1"}), astra = At({"SDB1", "Satellites", "[ 1 ] Astra"});
  struct Case {
    NodeRef node;
    ListView view;
    std::vector<std::string> names;
  };
  const Case cases[] = {
      {sdb, ListView::kCarriers, {"C1", "C2"}},
      {sdb, ListView::kServices, {"Eins \xC3\xA4", "Zwei"}},
      {astra, ListView::kTvServices, {"Eins \xC3\xA4"}},
      {astra, ListView::kRadioServices, {"Zwei"}},
      {At({"SDB1", "Satellites", "[ 2 ] Empty"}), ListView::kServices, {}},
      {At({"SDB1", "Satellites", "[ 1 ] Astra", "[ 1 ] C1"}), ListView::kRadioServices, {"Zwei"}},
      {At({"SDB1", "LNBs"}), ListView::kServices, {"9750", "9750"}}};  // a view of services says nothing here
  for (const Case& test : cases) {
    EXPECT_EQ(Column(ListBelow(document_, test.node, test.view, false), 1), test.names)
        << static_cast<int>(test.view);
  }
}

TEST_F(ViewModel, PidsFollowTheDisplayOption) {
  const NodeRef carrier = At({"SDB1", "Satellites", "[ 1 ] Astra", "[ 1 ] C1"});
  const ListModel decimal = ListBelow(document_, carrier, ListView::kBelow, false);
  const ListModel hexadecimal = ListBelow(document_, carrier, ListView::kBelow, true);
  EXPECT_EQ(decimal.columns[5].title, "Video (Dec)");
  EXPECT_EQ(hexadecimal.columns[6].title, "Audio (Hex)");
  EXPECT_EQ(CellText(document_, decimal, 0, 5, false), "255");
  EXPECT_EQ(CellText(document_, hexadecimal, 0, 5, true), "FF");
  EXPECT_EQ(CellText(document_, hexadecimal, 0, 6, true), "2000");
}

TEST_F(ViewModel, DetailsNameEveryField) {
  const ListModel satellite = DetailsOf(document_, At({"SDB1", "Satellites", "[ 1 ] Astra"}), false);
  EXPECT_EQ(satellite.title, "Info - Astra");
  EXPECT_THAT(satellite.details,
              ElementsAre(Pair("Satellite Name", "Astra"), Pair("LNB Index", "LNB2"),
                          Pair("EastWest Flag", "East"), Pair("Angle", "019.2"), Pair("Position", "7"),
                          Pair("Factory Default", "No"), Pair("Total Carrier", "2")));
  const ListModel lnb = DetailsOf(document_, At({"SDB1", "LNBs", "[ 2 ] LNB"}), false);
  EXPECT_EQ(lnb.title, "Info - LNB2");
  EXPECT_THAT(lnb.details, ElementsAre(Pair("LNB freq 1", "9750"), Pair("LNB freq 2", "10600"),
                                       Pair("LNB Type", "Universal"), Pair("Power Control", "On")));
  const ListModel carrier =
      DetailsOf(document_, At({"SDB1", "Satellites", "[ 1 ] Astra", "[ 1 ] C1"}), false);
  EXPECT_THAT(carrier.details, ElementsAre(Pair("Satellite Name", "Astra"), Pair("Angle", "019.2"),
                                           Pair("Carrier Name", "C1"), Pair("Frequency", "11778"),
                                           Pair("SymbolRate", "27500"), Pair("Polarization", "Vertical")));
  EXPECT_EQ(DetailsOf(document_, At({"SDB1"}), false).size(), 0u);
}

TEST_F(ViewModel, PanelCountsTheSelectedPart) {
  EXPECT_THAT(PanelLabels(document_, At({"SDB1", "Satellites"})),
              ElementsAre("SDB:SDB1  Index 1/1", "LNBs\t2", "Satellites  2", "Carriers\t2", "Services  2"));
  EXPECT_THAT(PanelLabels(document_, At({"Box Infos", "UBI1"})), ElementsAre("No of UBIs:1", "", "", "", ""));
  EXPECT_THAT(PanelLabels(document_, {}), ElementsAre("", "", "", "", ""));
}

TEST(ViewTexts, AnglesAndCodes) {
  const std::pair<uint32_t, const char*> angles[] = {
      {0, "000.0"}, {1, "000.1"}, {192, "019.2"}, {1800, "180.0"}, {4095, "409.5"}};
  for (const auto& [tenths, text] : angles) EXPECT_EQ(ViewAngleText(tenths), text);
  EXPECT_EQ(FecName(5), "7/8");
  EXPECT_EQ(FecName(6), "") << "a code without a name";
}

TEST(ViewSpeed, LargestDatabaseIsListedAtOnce) {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  AddTestSatellite(database, "S");
  AddTestCarrier(database, 0);
  for (uint32_t i = 0; i < kMaximumServices; ++i) AddTestService(database, database.carriers[0]);
  const auto start = std::chrono::steady_clock::now();
  const ListModel list = ListBelow(document, RootNodes(document)[0], ListView::kServices, false);
  const auto end = std::chrono::steady_clock::now();
  EXPECT_EQ(list.size(), kMaximumServices);
  EXPECT_EQ(CellText(document, list, kMaximumServices - 1, 0, false), "65535");
  EXPECT_LT(std::chrono::duration<double>(end - start).count(), 1.0);
}

}  // namespace

}  // namespace vexa
