// The window of a comparison, and orders taken from another database and from the list.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/edit.h"
#include "tests/ui/editor_fixture.h"
#include "ui/forms/compare_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using Labels = std::vector<std::string>;

class Comparison : public EditorTest {
 protected:
  // The sample with its carriers at two frequencies, changed by `change`.
  template <class Change>
  Path PutChanged(const char* name, Change change) {
    const Path path = PutSample(name);
    Document document;
    EXPECT_TRUE(OpenBin(recorder_.context, path, document));
    StaticDatabase& database = *document.sdbs[0].database;
    database.carriers[1]->record.frequency = 11000;
    change(database);
    EXPECT_TRUE(SaveBin(recorder_.context, document, path));
    return path;
  }
  void StartWithOwn() {
    Start({L"--test-mode"}, PutChanged("own.bin", [](StaticDatabase&) {}));
  }
  // Without the first service, with another name of the second satellite, carriers turned round.
  Path PutOther() {
    return PutChanged("other.bin", [](StaticDatabase& database) {
      DeleteServices(database, {database.services[0]});
      SetName(database.satellites[0]->record.name, "Eta");
      SetName(database.satellites[1]->record.name, "Beta");
      std::swap(database.satellites[0]->carriers[0], database.satellites[0]->carriers[1]);
      NumberCarriers(*database.satellites[0]);
      RefillAll(database);
    });
  }
  HWND Open(const Path& other) {
    driver_->Command(kCmdCompare);
    driver_->ChooseFile("Compare with", other);
    HWND box = driver_->WaitForBox("Compare");
    EXPECT_NE(box, nullptr);
    return box;
  }
  void ExpectSteps(HWND box, const std::function<int()>& selected) {
    const std::pair<int, int> steps[] = {
        {IDC_COMPARE_NEXT, 0}, {IDC_COMPARE_NEXT, 1}, {IDC_COMPARE_NEXT, 2}, {IDC_COMPARE_PREVIOUS, 1}};
    for (const auto& [button, row] : steps) {
      driver_->Push(box, button);
      EXPECT_TRUE(driver_->Until("the row", [&, row = row] { return selected() == row; })) << row;
    }
  }
  Labels Records(HWND box) {
    Labels records;
    HWND list = GetDlgItem(box, IDC_COMPARE_LIST);
    for (int row = 0; row < driver_->RowsOf(list); ++row)
      records.push_back(driver_->CellOf(list, row, 0) + " " + driver_->CellOf(list, row, 1));
    return records;
  }
};

TEST_F(Comparison, IsFilteredTakenOverAndExported) {
  const Path other = PutOther();
  StartWithOwn();
  HWND box = Open(other);
  HWND list = GetDlgItem(box, IDC_COMPARE_LIST);
  const Labels all = {"Changed SDB1 satellite 1 Eta", "Moved SDB1 satellite 1 carrier 1 High",
                      "Removed SDB1 satellite 1 carrier 1 service 1 Cap", "Changed SDB1 satellite 2 Beta"};
  EXPECT_THAT(Records(box), testing::ElementsAreArray(all));
  EXPECT_EQ(driver_->CellOf(list, 3, 2), "name \"Alpha\"");
  EXPECT_EQ(driver_->CellOf(list, 3, 3), "name \"Beta\"");
  Pick(box, IDC_COMPARE_KIND, 2);
  EXPECT_THAT(Records(box), ElementsAre(all[0], all[3]));
  Pick(box, IDC_COMPARE_KIND, 0);
  Pick(box, IDC_COMPARE_CHANGE, 2);
  EXPECT_THAT(Records(box), ElementsAre(all[2]));
  Pick(box, IDC_COMPARE_CHANGE, 0);
  const auto selected = [&] {
    return static_cast<int>(Send(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
  };
  ExpectSteps(box, selected);
  driver_->Push(box, IDC_COMPARE_EQUAL);
  EXPECT_GT(driver_->RowsOf(list), 20) << "LNBs, too";
  driver_->Push(box, IDC_COMPARE_NEXT);
  EXPECT_TRUE(driver_->Until("a difference", [&] {
    const int row = selected();
    return row >= 0 && driver_->CellOf(list, row, 0) == "Changed";
  }));
  driver_->Push(box, IDC_COMPARE_EQUAL);

  for (const char* name : {"out.txt", "out.html"}) {
    Push(box, IDC_COMPARE_EXPORT);
    const Path target = recorder_.context.temporary_folder / name;
    driver_->ChooseFile("Export", target);
    EXPECT_TRUE(driver_->Until("the export", [&] { return std::filesystem::exists(target); }));
    const Bytes content = ReadWholeFile(target).value_or(Bytes());
    const std::string text(content.begin(), content.end());
    EXPECT_THAT(text, HasSubstr(name[4] == 't' ? "~ SDB1 satellite 2 Beta: name \"Alpha\" -> \"Beta\"\r\n"
                                               : "<tr class=\"moved\">"));
  }

  driver_->SelectRows(list, {3});
  driver_->Push(box, IDC_COMPARE_TAKE);
  EXPECT_TRUE(driver_->Until("one less", [&] { return driver_->RowsOf(list) == 3; }));
  EXPECT_THAT(Shown(box, IDC_COMPARE_STATUS), HasSubstr("Taken over: 1. Differences: 3"));
  driver_->Push(box, IDC_COMPARE_TAKE_ALL);
  EXPECT_TRUE(driver_->Until("nothing", [&] { return driver_->RowsOf(list) == 0; }));
  EXPECT_THAT(Shown(box, IDC_COMPARE_STATUS), HasSubstr("Nothing differs."));
  EXPECT_FALSE(Enabled(box, IDC_COMPARE_TAKE_ALL));
  driver_->Press(box, IDCANCEL);
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Eta"}));
  EXPECT_THAT(Column(1), ElementsAre("High", "Low"));
  driver_->Command(kCmdUndo);
  EXPECT_THAT(driver_->Tree(true), testing::Contains("    [ 1 ] Zeta")) << "all of them were one step";
  driver_->Command(kCmdUndo);
  EXPECT_THAT(Caption(), testing::Not(HasSubstr("*")));
  End();
}

TEST_F(Comparison, LeadsToTheRecord) {
  const Path other = PutOther();
  StartWithOwn();
  HWND box = Open(other);
  driver_->SelectRows(GetDlgItem(box, IDC_COMPARE_LIST), {2});
  driver_->Press(box, IDOK);
  EXPECT_TRUE(driver_->Until("its row", [&] { return SelectedRow() == 0; }));
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee"));
  End();
}

TEST_F(Comparison, OrdersAreTakenFromAnOlderDatabaseAndFromTheList) {
  const Path other = PutOther();
  StartWithOwn();
  driver_->Command(kCmdOrderLike);
  driver_->ChooseFile("Apply order from", other);
  EXPECT_THAT(driver_->Answer(IDOK),
              HasSubstr("2 carriers, 3 of 4 services matched; 0 favourite entries taken, 0 left out"));
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta"}));
  EXPECT_THAT(Column(1), ElementsAre("High", "Low"));
  driver_->Command(kCmdUndo);
  EXPECT_THAT(Column(1), ElementsAre("Low", "High"));
  ASSERT_TRUE(SelectLow());
  driver_->Command(kCmdUseOrder);
  EXPECT_THAT(Caption(), testing::Not(HasSubstr("*"))) << "no column orders the list";
  HWND header = reinterpret_cast<HWND>(Send(List(), LVM_GETHEADER));
  driver_->Click(header, {80, 8});
  EXPECT_TRUE(driver_->Until("the order", [&] { return driver_->Cell(0, 1) == "ant"; }));
  driver_->Command(kCmdUseOrder);
  EXPECT_THAT(driver_->Tree(true), testing::Contains("        [ 1 ] ant"));
  EXPECT_THAT(Column(0), ElementsAre("1", "2", "3"));
  driver_->Command(kCmdUndo);
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee"));
  End();
}

}  // namespace
}  // namespace vexa
