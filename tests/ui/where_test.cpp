// Where the user is: the view that buttons and menu show, the details of a record and the way out of them,
// what an undo selects, what a new record does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/editor_fixture.h"
#include "ui/forms/records_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::ElementsAre;

using Labels = std::vector<std::string>;

const Labels kSdb = {"SDB1"}, kSatellites = {"SDB1", "Satellites"},
             kZeta = {"SDB1", "Satellites", "[ 1 ] Zeta"},
             kLow = {"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low"},
             kHigh = {"SDB1", "Satellites", "[ 1 ] Zeta", "[ 2 ] High"}, kLnbs = {"SDB1", "LNBs"};

class Where : public EditorTest {
 protected:
  HWND Button(const wchar_t* text) { return FindWindowExW(driver_->ActiveChild(), nullptr, L"Button", text); }
  // Texts of the buttons that are pressed; '-' before those that are grey.
  Labels Buttons() {
    Labels shown;
    for (const wchar_t* text : {L"Ser&vice", L"&Carrier", L"TV / R&adio", L"&Radio", L"Information"}) {
      const std::string name = Utf8(text);
      if (!IsWindowEnabled(Button(text))) shown.push_back("-" + name);
      if (Send(Button(text), BM_GETCHECK) == BST_CHECKED) shown.push_back(name);
    }
    return shown;
  }
  std::vector<unsigned> Checked() {
    std::vector<unsigned> checked;
    for (const MenuLine& line : driver_->Menus()) {
      if (line.checked && line.id >= kCmdViewTv && line.id <= kCmdViewServices) checked.push_back(line.id);
    }
    return checked;
  }
  std::string SelectedName() { return driver_->Cell(SelectedRow(), 1); }
  std::string TreeSelection() {
    return driver_->ItemText(Tree(), reinterpret_cast<HTREEITEM>(Send(Tree(), TVM_GETNEXTITEM, TVGN_CARET)));
  }
  void ClickRow(int row) {
    const RECT place = driver_->RowPlace(List(), row);
    driver_->Click(List(), {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
    ASSERT_TRUE(driver_->Until("the selected row", [&] { return SelectedRow() == row; }));
  }
};

TEST_F(Where, ButtonsAndMenuShowTheView) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kSatellites));
  EXPECT_THAT(Buttons(), ElementsAre("-Information"));
  driver_->Command(kCmdViewCarriers);
  EXPECT_THAT(Buttons(), ElementsAre("&Carrier", "-Information"));
  ClickRow(0);
  EXPECT_THAT(Buttons(), ElementsAre("&Carrier"));
  EXPECT_THAT(Checked(), ElementsAre(unsigned{kCmdViewCarriers}));
  driver_->Command(kCmdViewTv);
  EXPECT_THAT(Buttons(), ElementsAre("-Information"));
  EXPECT_THAT(Checked(), ElementsAre(unsigned{kCmdViewTv}));
  ASSERT_TRUE(driver_->SelectItem(kZeta));
  EXPECT_THAT(Buttons(), ElementsAre("&Carrier"));
  ASSERT_TRUE(driver_->SelectItem(kLow));
  EXPECT_THAT(Buttons(), ElementsAre("Ser&vice", "-&Carrier", "TV / R&adio"));
  driver_->Click(Button(L"&Radio"), {5, 5});
  EXPECT_TRUE(driver_->Until("no radio service", [&] { return driver_->ListCount() == 0; }));
  EXPECT_THAT(Buttons(), ElementsAre("-&Carrier", "&Radio"));
  ASSERT_TRUE(driver_->SelectItem(kLnbs));
  EXPECT_THAT(Buttons(), ElementsAre("-Ser&vice", "-&Carrier", "-TV / R&adio", "-&Radio", "-Information"));
  EXPECT_THAT(Checked(), ElementsAre());
  End();
}

TEST_F(Where, InformationIsLeftByItsKeyEscAndBackspace) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  ClickRow(1);
  for (const unsigned key : {0u, unsigned{VK_ESCAPE}, unsigned{VK_BACK}}) {
    driver_->Command(kCmdInformation);
    ASSERT_EQ(driver_->ListColumns().at(0), "Info - ant");
    EXPECT_THAT(Buttons(), testing::Contains("Information"));
    if (key == 0)
      driver_->Command(kCmdInformation);
    else
      PostKey(List(), key);
    EXPECT_TRUE(driver_->Until("the list again", [&] { return driver_->ListCount() == 3; })) << key;
    EXPECT_EQ(SelectedName(), "ant");
    EXPECT_EQ(driver_->Focused(), List());
    EXPECT_THAT(Buttons(), testing::Not(testing::Contains("Information")));
  }
  End();
}

TEST_F(Where, UndoAndRedoGoToWhatChanged) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  ClickRow(1);
  driver_->Key(List(), VK_DELETE);
  ASSERT_TRUE(driver_->Until("one less", [&] { return driver_->ListCount() == 2; }));
  ASSERT_TRUE(driver_->SelectItem(kLnbs));
  driver_->Command(kCmdUndo);
  EXPECT_EQ(TreeSelection(), "[ 1 ] Low");
  EXPECT_EQ(SelectedName(), "ant");
  EXPECT_EQ(Send(List(), LVM_GETSELECTEDCOUNT), 1);
  ASSERT_TRUE(driver_->SelectItem(kSdb));
  driver_->Command(kCmdRedo);
  EXPECT_EQ(TreeSelection(), "[ 1 ] Low") << "where it is gone from";
  EXPECT_EQ(driver_->ListCount(), 2);
  EXPECT_EQ(SelectedRow(), -1);
  driver_->Command(kCmdUndo);
  // Where the list shows it, the view stays.
  ASSERT_TRUE(driver_->SelectItem(kSatellites));
  driver_->Command(kCmdViewServices);
  ClickRow(2);
  driver_->Key(List(), VK_DELETE);
  ASSERT_TRUE(driver_->Until("one less", [&] { return driver_->ListCount() == 3; }));
  driver_->Command(kCmdUndo);
  EXPECT_EQ(TreeSelection(), "Satellites");
  EXPECT_EQ(driver_->ListCount(), 4);
  EXPECT_EQ(SelectedRow(), 2);
  End();
}

TEST_F(Where, ANewRecordIsSelected) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kSdb));
  driver_->Key(Tree(), VK_F2);
  EXPECT_TRUE(driver_->Until("the new SDB", [&] { return TreeSelection() == "SDB2"; }));
  // A saved file holds sixteen of them.
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "LNBs", "[ 16 ] LNB"}));
  driver_->Key(Tree(), VK_DELETE);
  ASSERT_TRUE(driver_->HasCaughtUp());
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "LNBs", "[ 1 ] LNB"}));
  driver_->Key(Tree(), VK_F2);
  EXPECT_TRUE(driver_->Until("the new LNB", [&] { return TreeSelection() == "[ 16 ] LNB"; }));
  ASSERT_TRUE(driver_->SelectItem(kZeta));
  driver_->Command(kCmdViewServices);
  driver_->Key(Tree(), VK_F2);
  EXPECT_TRUE(driver_->Until("the new carrier", [&] { return driver_->ListCount() == 3; }));
  EXPECT_EQ(SelectedName(), "Carrier3");
  driver_->Close();
  driver_->Answer(IDNO);
  EXPECT_EQ(driver_->ExitCode(), 0u);
}

TEST_F(Where, ServicesAreNotProposedToStay) {
  StartWithSample();
  const struct {
    Labels carrier;
    const char* proposed;
  } rows[] = {{kLow, "Zeta - High"}, {kHigh, "Zeta - Low"}};
  for (const auto& row : rows) {
    ASSERT_TRUE(driver_->SelectItem(row.carrier));
    ClickRow(0);
    driver_->Key(List(), VK_F3);
    HWND box = driver_->WaitForBox();
    EXPECT_EQ(Shown(box, IDC_MOVE_SERVICE_CARRIER), row.proposed);
    driver_->Press(box, IDCANCEL);
  }
  ASSERT_TRUE(driver_->SelectItem(kZeta));
  ClickRow(1);
  driver_->Key(List(), VK_DELETE);
  ASSERT_TRUE(driver_->Until("one less", [&] { return driver_->ListCount() == 1; }));
  ASSERT_TRUE(SelectLow());
  ClickRow(0);
  driver_->Key(List(), VK_F3);
  HWND box = driver_->WaitForBox();
  EXPECT_FALSE(Enabled(box, IDC_MOVE_SERVICE_TO_CARRIER)) << "there is no other carrier";
  EXPECT_TRUE(Enabled(box, IDC_MOVE_TARGET));
  driver_->Press(box, IDCANCEL);
  driver_->Command(kCmdUndo);
  End();
}

}  // namespace
}  // namespace vexa
