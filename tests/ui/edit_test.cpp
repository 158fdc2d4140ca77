// What the database window hands to the engine: the rows that the user chose, for each kind of record, and
// edits at random with the tree opened and scrolled anywhere.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "tests/ui/editor_fixture.h"
#include "ui/forms/options_resource.h"
#include "ui/forms/records_resource.h"
#include "view/command_table.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

using Labels = std::vector<std::string>;
using RowPlaces = std::vector<int>;

const Labels kLnbList = {"SDB1", "LNBs"}, kSatelliteList = {"SDB1", "Satellites"},
             kCarrierList = {"SDB1", "Satellites", "[ 1 ] S1"},
             kServiceList = {"SDB1", "Satellites", "[ 1 ] S1", "[ 1 ] C1"},
             kTvList = {"SDB1", "TV Groups", "Favourite2"},
             kRadioList = {"SDB1", "Radio Groups", "Favourite2"}, kBoxList = {"Box Infos"},
             kSdbNode = {"SDB1"};

class Edits : public EditorTest {
 protected:
  void Choose(const RowPlaces& rows) {
    driver_->Click(List(), Middle(driver_->RowPlace(List(), rows[0])));
    driver_->SelectRows(List(), rows);
  }
  void MoveTo(const std::string& target) {
    HWND box = driver_->WaitForBox();
    if (HWND to_place = GetDlgItem(box, IDC_MOVE_SERVICE_TO_PLACE)) Send(to_place, BM_CLICK);
    Type(box, IDC_MOVE_TARGET, target);
    driver_->Press(box, IDOK);
    EXPECT_TRUE(driver_->HasCaughtUp());
  }
  // The first rows of the list, by their names.
  Labels Names(int count) {
    Labels names;
    for (int i = 0; i < std::min(count, driver_->ListCount()); ++i) names.push_back(driver_->Cell(i, 1));
    return names;
  }
  Path PutDocument(const Document& document) {
    const Path path = recorder_.context.temporary_folder / "edits.bin";
    PutFile(path, *BuildBin(recorder_.context, document, {}, {}));
    return path;
  }
};

// Six of each kind: satellites S1-S6 (S1 with the carriers C1-C6, S2 with D1 and D2), services V1-V6 of C1,
// all TV, and R1-R6 of C2, all radio; the second group lists all of them. LNBs are told apart by their first
// frequency, 9001-9006.
Document SixOfEach() {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 6;
  for (uint32_t i = 0; i < 6; ++i) database.lnbs[i].frequency1 = (9001 + i) & 0x3FFF;
  for (int i = 1; i <= 6; ++i) AddTestSatellite(database, Format("S%d", i));
  const auto carrier = [&](size_t satellite, const std::string& name) {
    SetName(AddTestCarrier(database, satellite)->record.name, name);
  };
  for (int i = 1; i <= 6; ++i) carrier(0, Format("C%d", i));
  for (int i = 1; i <= 2; ++i) carrier(1, Format("D%d", i));
  for (const bool radio : {false, true}) {
    for (int i = 1; i <= 6; ++i) {
      Service* service = AddTestService(database, database.satellites[0]->carriers[radio ? 1 : 0]);
      SetName(service->record.name, Format(radio ? "R%d" : "V%d", i));
      service->record.type = radio ? kRadio : kTv;
      service->record.program_number = static_cast<uint16_t>(radio ? 6 + i : i);
      (radio ? database.favourites[1].radio : database.favourites[1].tv).push_back(service);
    }
  }
  for (int i = 1; i <= 6; ++i) document.ubis.push_back({Format("U%d", i), {}});
  return document;
}

struct ChosenRows {
  Labels node;
  unsigned command;
  RowPlaces rows;
  const char* target;  // of the dialog
  Labels left;         // the list's first names afterwards; "*" stands for a new one
  unsigned view = 0;
};

const ChosenRows kChosenRows[] = {
    {kLnbList, kCmdDelete, {1, 3}, "", {"9001", "9003", "9005", "9006"}},
    {kSatelliteList, kCmdDelete, {1, 2, 4}, "", {"S1", "S4", "S6"}},
    {kSatelliteList, kCmdSwap, {1}, "5", {"S1", "S5", "S3", "S4", "S2", "S6"}},
    {kCarrierList, kCmdInsert, {3}, "", {"C1", "C2", "C3", "*", "C4", "C5", "C6"}},
    {kCarrierList, kCmdMove, {4, 5}, "2", {"C1", "C5", "C6", "C2", "C3", "C4"}},
    {kServiceList, kCmdDelete, {0, 2}, "", {"V2", "V4", "V5", "V6"}},
    {kServiceList, kCmdInsert, {1}, "", {"V1", "*", "V2", "V3", "V4", "V5", "V6"}},
    {kServiceList, kCmdMove, {0, 1}, "4", {"V3", "V4", "V1", "V2", "V5", "V6"}},
    {kServiceList, kCmdSwap, {1, 4}, "", {"V1", "V5", "V3", "V4", "V2", "V6"}},
    {kTvList, kCmdDelete, {1, 5}, "", {"V1", "V3", "V4", "V5"}},
    {kTvList, kCmdSwap, {0}, "3", {"V3", "V2", "V1", "V4", "V5", "V6"}},
    {kRadioList, kCmdMove, {1, 2}, "6", {"R1", "R4", "R5", "R6", "R2", "R3"}},
    {kSdbNode, kCmdDelete, {0, 7}, "", {"V2", "V3", "V4", "V5", "V6", "R1", "R3"}, kCmdViewServices},
    {kSdbNode, kCmdInsert, {7}, "", {"V1", "V2", "V3", "V4", "V5", "V6", "R1", "*", "R2"}, kCmdViewServices},
    {kSdbNode, kCmdInsert, {1}, "", {"R1", "*", "R2"}, kCmdViewRadio},
    {kSdbNode, kCmdAdd, {1}, "", {"V1", "V2", "V3", "V4", "V5", "V6", "*"}, kCmdViewTv},
    {kSatelliteList, kCmdDelete, {0, 6}, "", {"C2", "C3", "C4", "C5", "C6", "D2"}, kCmdViewCarriers},
    {kCarrierList, kCmdDelete, {1, 2}, "", {"R1", "R4", "R5", "R6"}, kCmdViewRadio},
    {kBoxList, kCmdDelete, {0, 4}, "", {"U2", "U3", "U4", "U6"}},
    {kBoxList, kCmdAdd, {2}, "", {"U1", "U2", "U3", "U4", "U5", "U6", "UBI7"}},
};

// Each row is undone again, and the list is as it was.
TEST_F(Edits, TheRowsThatWereChosenAreTheOnesChanged) {
  Start({L"--test-mode"}, PutDocument(SixOfEach()));
  for (const ChosenRows& row : kChosenRows) {
    const std::string what = Format("%s, command %u", row.node.back().c_str(), row.command);
    const auto show = [&] {
      EXPECT_TRUE(driver_->SelectItem(kBoxList[0] == row.node[0] ? kSdbNode : kBoxList));
      EXPECT_TRUE(driver_->SelectItem(row.node));
      if (row.view) driver_->Command(row.view);
      return Column(1);
    };
    const Labels before = show();
    Choose(row.rows);
    driver_->Command(row.command);
    if (row.target[0]) MoveTo(row.target);
    Labels left = Names(static_cast<int>(row.left.size()));
    for (size_t i = 0; i < std::min(left.size(), row.left.size()); ++i) {
      if (row.left[i] == "*" && std::find(before.begin(), before.end(), left[i]) == before.end())
        left[i] = "*";
    }
    EXPECT_THAT(left, ElementsAreArray(row.left)) << what;
    ASSERT_EQ(driver_->FindBox(), nullptr) << what;
    driver_->Command(kCmdUndo);
    EXPECT_EQ(show(), before) << what;
    EXPECT_THAT(Caption(), Not(HasSubstr("*"))) << what << ": one step";
  }
  End();
}

// With the focus in the tree its node is meant, whatever rows the list has selected.
TEST_F(Edits, TheTreesNodeIsMeantWhereTheTreeHasTheFocus) {
  Start({L"--test-mode"}, PutDocument(SixOfEach()));
  ASSERT_TRUE(driver_->SelectItem(kServiceList));
  Choose({1, 2});
  driver_->Click(Tree(), Middle(driver_->ItemPlace(kServiceList)));
  ASSERT_TRUE(driver_->Until("the focus", [&] { return driver_->Focused() == Tree(); }));
  driver_->Command(kCmdDelete);
  ASSERT_TRUE(driver_->SelectItem(kCarrierList));
  EXPECT_THAT(Names(2), testing::ElementsAre("C2", "C3"));
  driver_->Command(kCmdUndo);
  End();
}

struct DroppedRows {
  Labels node;
  RowPlaces rows;
  int target;
  Labels left;  // first names of the list of `shown`
  Labels shown;
  unsigned view = 0;
};

// Several rows with one drag of the first of them; each is undone again.
TEST_F(Edits, TheRowsThatWereDraggedAreTheOnesMoved) {
  const Labels other_carrier = {"SDB1", "Satellites", "[ 1 ] S1", "[ 2 ] C2"};
  const DroppedRows rows[] = {
      {kSatelliteList, {1, 2}, 4, {"S1", "S4", "S5", "S2", "S3", "S6"}, kSatelliteList},
      {kServiceList, {1, 2}, 4, {"V1", "V4", "V5", "V2", "V3", "V6"}, kServiceList},
      {kRadioList, {0, 1}, 5, {"R3", "R4", "R5", "R6", "R1", "R2"}, kRadioList},
      {kSdbNode, {1, 2}, 7, {"R1", "V2", "V3", "R2", "R3"}, other_carrier, kCmdViewServices},
      {kSdbNode, {0, 7}, 3, {"R1", "R2"}, other_carrier, kCmdViewServices},
  };
  Start({L"--test-mode"}, PutDocument(SixOfEach()));
  for (const DroppedRows& row : rows) {
    const std::string what = row.node.back() + " to row " + std::to_string(row.target);
    ASSERT_TRUE(driver_->SelectItem(row.node));
    if (row.view) driver_->Command(row.view);
    const auto middle = [&](int place) { return Middle(driver_->RowPlace(List(), place)); };
    Choose(row.rows);
    driver_->Drag(List(), middle(row.rows[0]), middle(row.target));
    const bool refused = row.rows.back() - row.rows.front() > 5;
    if (refused) {
      EXPECT_EQ(driver_->Answer(IDOK), "Invalid Sequence. Can not continue.");
    }
    ASSERT_TRUE(driver_->SelectItem(row.shown));
    EXPECT_THAT(Names(static_cast<int>(row.left.size())), ElementsAreArray(row.left)) << what;
    if (!refused) driver_->Command(kCmdUndo);
    EXPECT_THAT(Caption(), Not(HasSubstr("*"))) << what << ": one step";
  }
  End();
}

// Three SDBs: commands act on the one of the tree's selection, wherever in it that is.
TEST_F(Edits, TheSdbOfTheSelectionIsTheOneChanged) {
  Document document = SixOfEach();
  for (const char* name : {"Two", "Three"}) {
    OpenSdb* added = AppendSdb(document, name);
    added->database = CopyDatabase(*document.sdbs[0].database);
  }
  SetName(document.sdbs[1].database->satellites[2]->record.name, "Third");
  Start({L"--test-mode"}, PutDocument(document));
  const auto roots = [&] {
    Labels names;
    for (const std::string& line : driver_->Tree(false)) {
      if (line[0] != ' ') names.push_back(line);
    }
    return names;
  };
  const struct {
    Labels node;
    unsigned command;
    Labels left;
  } rows[] = {{{"Two"}, kCmdDelete, {"SDB1", "Three", "Box Infos"}},
              {{"Three"}, kCmdDelete, {"SDB1", "Two", "Box Infos"}},
              {{"Two"}, kCmdAdd, {"SDB1", "Two", "Three", "SDB4", "Box Infos"}}};
  for (const auto& row : rows) {
    ASSERT_TRUE(driver_->SelectItem(row.node));
    driver_->Command(row.command);
    EXPECT_EQ(roots(), row.left);
    driver_->Command(kCmdUndo);
    EXPECT_THAT(Caption(), Not(HasSubstr("*")));
  }
  const Path saved = recorder_.context.temporary_folder / "saved.bin";
  const auto in_file = [&](unsigned command, const char* title) {
    std::filesystem::remove(saved);
    driver_->Command(command);
    driver_->ChooseFile(title, saved);
    EXPECT_TRUE(driver_->Until("the file", [&] { return std::filesystem::exists(saved); }));
    EXPECT_TRUE(driver_->HasCaughtUp());
    Document read;
    EXPECT_TRUE(OpenBin(recorder_.context, saved, read));
    return read;
  };
  ASSERT_TRUE(driver_->SelectItem({"Two", "Satellites"}));
  Choose({2});
  driver_->Command(kCmdCompressSdb);
  Document read = in_file(kCmdSaveSatellites, "Save selected Satellite(s) as");
  EXPECT_EQ(NamesOf(read.sdbs.at(0).database->satellites).at(0), "Third");
  read = in_file(kCmdSaveSdb, "Save selected SDB as");
  ASSERT_EQ(read.sdbs.size(), 1u);
  EXPECT_EQ(read.sdbs[0].name, "Two");
  EXPECT_TRUE(read.sdbs[0].database->compressed);
  driver_->Command(kCmdUndo);
  End();
}

// ---- Edits at random, beside a slow model of what the tree shows.

struct ModelItem {
  int id = 0;
  std::string name;
  std::vector<ModelItem> items;
};

class RandomEdits : public Edits {
 protected:
  int Below(int limit) { return limit <= 0 ? 0 : static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  bool OneIn(int chances) { return Below(chances) == 0; }

  // The tree's visible items in their order.
  std::vector<HTREEITEM> Visible() {
    std::vector<HTREEITEM> items;
    auto item = reinterpret_cast<HTREEITEM>(Send(Tree(), TVM_GETNEXTITEM, TVGN_ROOT));
    for (; item; item = reinterpret_cast<HTREEITEM>(
                     Send(Tree(), TVM_GETNEXTITEM, TVGN_NEXTVISIBLE, reinterpret_cast<LPARAM>(item))))
      items.push_back(item);
    return items;
  }

  // What the model expects there: the lines, and for each the way to its item (empty for other nodes).
  using Way = std::vector<size_t>;
  struct Line {
    std::string text;
    Way way;
  };
  void Add(std::vector<Line>& lines, const std::vector<ModelItem>& items, const Way& above) const {
    for (size_t i = 0; i < items.size(); ++i) {
      Way way = above;
      way.push_back(i);
      lines.push_back({Format("[ %d ] %s", static_cast<int>(i) + 1, items[i].name.c_str()), way});
      if (opened_.contains(items[i].id)) Add(lines, items[i].items, way);
    }
  }
  std::vector<Line> Expected() const {
    std::vector<Line> lines = {{"SDB1", {}}, {"LNBs", {}}, {"Satellites", {}}};
    Add(lines, satellites_, {});
    for (const char* text : {"TV Groups", "Radio Groups", "Box Infos"}) lines.push_back({text, {}});
    return lines;
  }
  ModelItem& At(const Way& way) {
    ModelItem* item = &satellites_[way[0]];
    for (size_t i = 1; i < way.size(); ++i) item = &item->items[way[i]];
    return *item;
  }
  // The list of what is below the selected node.
  std::vector<ModelItem>& Selected() { return selected_.empty() ? satellites_ : At(selected_).items; }

  // A changed model is a step for undo.
  void Change(std::vector<ModelItem> before) {
    undo_.push_back(std::move(before));
    redo_.clear();
    ForgetOpened();
  }
  void ForgetOpened() {
    std::set<int> left;
    const std::function<void(const std::vector<ModelItem>&)> walk = [&](const std::vector<ModelItem>& items) {
      for (const ModelItem& item : items) {
        if (opened_.contains(item.id)) left.insert(item.id);
        walk(item.items);
      }
    };
    walk(satellites_);
    opened_ = left;
  }

  void SelectWay(const Way& way) {
    const auto lines = Expected();
    const auto items = Visible();
    ASSERT_EQ(items.size(), lines.size());
    for (size_t i = 0; i < lines.size(); ++i) {
      if (way.empty() ? lines[i].text != "Satellites" : lines[i].way != way) continue;
      Send(Tree(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(items[i]));
      selected_ = way;
      return;
    }
  }

  void SelectAny() {
    std::vector<Way> ways = {{}};
    for (const Line& line : Expected()) {
      if (!line.way.empty() && line.way.size() < 3) ways.push_back(line.way);
    }
    SelectWay(ways[static_cast<size_t>(Below(static_cast<int>(ways.size())))]);
  }

  // By the keys of the user: only then is the window told.
  void Toggle() {
    if (selected_.empty() || Selected().empty()) return;
    ModelItem& item = At(selected_);
    const bool open = opened_.contains(item.id);
    if (open && std::any_of(item.items.begin(), item.items.end(),
                            [&](const ModelItem& below) { return opened_.contains(below.id); }))
      return;  // those would be open or closed afterwards, as it comes
    driver_->Key(Tree(), open ? VK_SUBTRACT : VK_ADD);
    if (open)
      opened_.erase(item.id);
    else
      opened_.insert(item.id);
  }

  void Scroll() {
    const auto items = Visible();
    Send(Tree(), TVM_SELECTITEM, TVGN_FIRSTVISIBLE,
         reinterpret_cast<LPARAM>(items[static_cast<size_t>(Below(static_cast<int>(items.size())))]));
  }

  // `count` rows from `first` on; the list has the focus then.
  void ChooseRun(int first, int count) {
    RowPlaces rows;
    for (int i = first; i < first + count; ++i) rows.push_back(i);
    SetFocusToList();
    driver_->SelectRows(List(), rows);
  }
  void SetFocusToList() {
    if (driver_->Focused() != List()) driver_->Click(List(), {30, 60});
  }

  // One that has nothing below it stays open for what comes there again.
  void Close(const Way& way) {
    if (!opened_.contains(At(way).id) || At(way).items.empty()) return;
    for (size_t i = 0; i < At(way).items.size(); ++i) {
      Way below = way;
      below.push_back(i);
      Close(below);
    }
    SelectWay(way);
    driver_->Key(Tree(), VK_SUBTRACT);
    opened_.erase(At(way).id);
  }

  // Records that say the same cannot be told apart when one of them goes: both are closed then.
  void TakeBackATwin(const std::vector<ModelItem>& before) {
    const Way list = selected_;
    const std::vector<ModelItem> items = Selected();
    for (size_t i = 0; i < items.size(); ++i) {
      for (size_t k = 0; k < i; ++k) {
        if (items[i].name != items[k].name) continue;
        for (const size_t place : {i, k}) {
          Way twin = list;
          twin.push_back(place);
          Close(twin);
        }
        // The second one of them is taken for the first one when that goes.
        if (items[k].id == last_id_) opened_.erase(items[i].id);
        driver_->Command(kCmdUndo);
        undo_.pop_back();
        satellites_ = before;
        ForgetOpened();
        return LeaveView();
      }
    }
  }
  void AddOne() {
    if (selected_.empty() && satellites_.size() >= kMaximumSatellites) return;
    const auto before = satellites_;
    driver_->Command(kCmdAdd);
    Selected().push_back({++last_id_, driver_->Cell(static_cast<int>(Selected().size()), 1), {}});
    if (!selected_.empty()) opened_.insert(At(selected_).id);
    Change(before);
    TakeBackATwin(before);
  }
  void InsertOne() {
    const int count = static_cast<int>(Selected().size());
    if (count == 0 || (selected_.empty() && satellites_.size() >= kMaximumSatellites)) return;
    const int row = Below(count);
    ChooseRun(row, 1);
    const auto before = satellites_;
    driver_->Command(kCmdInsert);
    Selected().insert(Selected().begin() + row, {++last_id_, driver_->Cell(row, 1), {}});
    Change(before);
    TakeBackATwin(before);
  }
  void DeleteSome() {
    const int count = static_cast<int>(Selected().size());
    if (count == 0 || (selected_.empty() && count < 3)) return;
    const int first = Below(count), rows = std::min(count - first, 1 + Below(2));
    ChooseRun(first, rows);
    const auto before = satellites_;
    driver_->Command(kCmdDelete);
    Selected().erase(Selected().begin() + first, Selected().begin() + first + rows);
    Change(before);
  }
  void MoveSome() {
    const int count = static_cast<int>(Selected().size());
    if (count < 2) return;
    const int first = Below(count - 1), rows = 1 + Below(std::min(2, count - first));
    const int target = Below(count);
    if (target >= first && target < first + rows) return;
    ChooseRun(first, rows);
    const auto before = satellites_;
    driver_->Command(kCmdMove);
    MoveTo(std::to_string(target + 1));
    auto& items = Selected();
    const std::vector<ModelItem> moved(items.begin() + first, items.begin() + first + rows);
    items.erase(items.begin() + first, items.begin() + first + rows);
    // Downwards the target is where the last row lands.
    const int place = target < first ? target : target - rows + 1;
    items.insert(items.begin() + place, moved.begin(), moved.end());
    Change(before);
  }
  // What an undo changed in several places is shown in a view of all, which another node's list ends.
  void LeaveView() {
    driver_->SelectItem({"SDB1"});
    SelectWay({});
  }
  // A sort that changes nothing is no step; the step before, if there is one, was none either.
  void SortAndTakeBack() {
    if (undo_.empty()) return;
    HWND box = driver_->Open(kCmdSort);
    driver_->Press(box, IDOK);
    ASSERT_TRUE(driver_->HasCaughtUp());
    for (const MenuLine& line : driver_->Menus()) {
      if (line.id != kCmdUndo || line.text.find("Sorting") == std::string::npos) continue;
      driver_->Command(kCmdUndo);
      redo_.clear();
    }
    LeaveView();
  }
  void Step(bool back) {
    auto& from = back ? undo_ : redo_;
    auto& to = back ? redo_ : undo_;
    if (from.empty()) return;
    driver_->Command(back ? kCmdUndo : kCmdRedo);
    to.push_back(satellites_);
    satellites_ = from.back();
    from.pop_back();
    ForgetOpened();
    LeaveView();
  }

  void Play() {
    switch (Below(14)) {
      case 0:
      case 1:
        return SelectAny();
      case 2:
        return Toggle();
      case 3:
      case 4:
        return Scroll();
      case 5:
        return AddOne();
      case 6:
        return InsertOne();
      case 7:
        return DeleteSome();
      case 8:
      case 9:
        return MoveSome();
      case 10:
        return SortAndTakeBack();
      case 11:
        return Step(false);
      default:
        return Step(true);
    }
  }

  bool Matches() {
    Labels expected, shown;
    for (const Line& line : Expected()) expected.push_back(line.text);
    for (HTREEITEM item : Visible()) shown.push_back(driver_->ItemText(Tree(), item));
    EXPECT_EQ(shown, expected);
    return shown == expected && !HasFailure();
  }

  std::mt19937 random_;
  std::vector<ModelItem> satellites_;
  std::vector<std::vector<ModelItem>> undo_, redo_;
  std::set<int> opened_;  // ids
  Way selected_;          // empty: "Satellites"
  int last_id_ = 0;
};

// VEXA_RANDOM_STEPS and VEXA_RANDOM_SEED ask for more of it.
int NumberFrom(const char* variable, int otherwise) {
  const char* text = std::getenv(variable);
  return text ? std::atoi(text) : otherwise;
}

TEST_F(RandomEdits, TheTreeFollowsWhateverIsOpenAndScrolled) {
  const int steps = NumberFrom("VEXA_RANDOM_STEPS", 250), seed = NumberFrom("VEXA_RANDOM_SEED", 1);
  random_.seed(static_cast<unsigned>(seed));
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  for (int i = 0; i < 5; ++i) {
    satellites_.push_back({++last_id_, Format("S%d", i), {}});
    AddTestSatellite(database, satellites_.back().name);
    for (int k = 0; k < 12; ++k) {
      Carrier* carrier = AddTestCarrier(database, static_cast<size_t>(i));
      ModelItem item{++last_id_, Format("C%d-%d", i, k), {}};
      SetName(carrier->record.name, item.name);
      for (int n = 0; n < 3; ++n) {
        item.items.push_back({++last_id_, Format("V%d-%d-%d", i, k, n), {}});
        SetName(AddTestService(database, carrier)->record.name, item.items.back().name);
      }
      satellites_.back().items.push_back(item);
    }
  }
  Start({L"--test-mode"}, PutDocument(document));
  ASSERT_TRUE(driver_->SelectItem(kSatelliteList));
  ChooseRun(5, driver_->ListCount() - 5);
  driver_->Command(kCmdDelete);  // what fills the table
  driver_->Key(Tree(), VK_ADD);
  for (int step = 0; step < steps; ++step) {
    Play();
    ASSERT_TRUE(driver_->Answers() && driver_->Running()) << "seed " << seed << ", step " << step;
    ASSERT_TRUE(Matches()) << "seed " << seed << ", step " << step;
  }
  driver_->Close();
  driver_->Answer(IDNO);
  EXPECT_EQ(driver_->ExitCode(), 0u);
}

}  // namespace
}  // namespace vexa
