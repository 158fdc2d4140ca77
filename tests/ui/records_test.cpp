// Records as their user works on them: dialogs, keys, selections, drag and drop.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/ui/editor_fixture.h"
#include "ui/forms/records_resource.h"
#include "ui/frame/test_mode.h"
#include "view/menu_table.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Labels = std::vector<std::string>;

const Labels kSdb = {"SDB1"}, kSatellites = {"SDB1", "Satellites"},
             kZeta = {"SDB1", "Satellites", "[ 1 ] Zeta"},
             kLow = {"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low"},
             kHigh = {"SDB1", "Satellites", "[ 1 ] Zeta", "[ 2 ] High"},
             kCap = {"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low", "[ 1 ] Cap"};

class Records : public EditorTest {
 protected:
  void ClickRow(int row) {
    driver_->Click(List(), Middle(driver_->RowPlace(List(), row)));
    ASSERT_TRUE(driver_->Until("the selected row", [&] { return SelectedRow() == row; }));
  }
  void DragItem(const Labels& from, const Labels& to, bool drop = true) {
    driver_->ItemPlace(to);
    driver_->Drag(Tree(), Middle(driver_->ItemPlace(from)), Middle(driver_->ItemPlace(to)), drop);
  }
  // The command that marks or selects by the choice with these texts.
  static unsigned FieldCommand(unsigned first, const char* field, const char* text) {
    const auto& choices = FieldChoices();
    for (unsigned i = 0; i < choices.size(); ++i) {
      if (choices[i].field == std::string(field) && choices[i].text == text) return first + i;
    }
    ADD_FAILURE() << "no choice " << field << ' ' << text;
    return 0;
  }
};

struct Refused {
  Labels node;
  const char* title;
  int field;
  const char *text, *message;
};

// Each dialog keeps what it refuses, with the focus where the fault is, and the database stays as it was.
TEST_F(Records, DialogsRefuseAndStayOpen) {
  const Refused rows[] = {
      {kZeta, "Satellite Information", IDC_RECORD_NAME, "",
       "Satellite name can not be empty.\nEnter a valid name."},
      {kZeta, "Satellite Information", IDC_SATELLITE_POSITION, "65",
       "Satellite Position should be less then 64."},
      {kZeta, "Satellite Information", IDC_SATELLITE_ANGLE, "1.2.3", "Invalid format of satellite angle"},
      {{"SDB1", "LNBs", "[ 1 ] LNB"},
       "LNB Information",
       IDC_LNB_FREQUENCY2,
       "16384",
       "LNB frequency should be in the range of 0 - 16383."},
      {kLow, "Carrier Information", IDC_CARRIER_FREQUENCY, "10699",
       "Carrier frequency should be in the range of 10700 - 12750"},
      {kLow, "Carrier Information", IDC_CARRIER_SYMBOL_RATE, "999",
       "Carrier symbol rate should be in the range of 1000 - 45000."},
      {kCap, "Service Information", IDC_SERVICE_NUMBER, "2", "Service program number already exists."},
      {kCap, "Service Information", IDC_SERVICE_AUDIO, "31",
       "Invalid Audio PID.\nDo you want to update default PID ?"},
      {kSdb, "Edit SDB", IDC_RECORD_NAME, "", "SDB Name can not be empty. Enter a valid name."},
      {{"SDB1", "TV Groups", "Favourite1"},
       "FGL Information (TV)",
       IDC_RECORD_NAME,
       "",
       "FGL Name can not be empty. Enter a valid name."},
      {{"Box Infos", "UBI1"},
       "UserBox Information",
       IDC_RECORD_NAME,
       "",
       "UBI name can not be empty. Enter a valid name."},
      {{"Box Infos", "UBI1"},
       "UserBox Information",
       IDC_BOX_RF_CHANNEL,
       "70",
       "RF channel should be in the range of 21 - 69."},
  };
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem({"Box Infos"}));
  driver_->Command(kCmdAdd);
  const std::string caption = Caption();
  for (const Refused& row : rows) {
    ASSERT_TRUE(driver_->SelectItem(row.node));
    HWND box = driver_->Open(kCmdEdit, row.title);
    Type(box, row.field, row.text);
    Push(box, IDOK);
    EXPECT_EQ(AnswerOver(box, row.field == IDC_SERVICE_AUDIO ? IDNO : IDOK), row.message);
    EXPECT_TRUE(driver_->Until(std::string("the focus after: ") + row.message,
                               [&] { return driver_->Focused() == GetDlgItem(box, row.field); }));
    driver_->Press(box, IDCANCEL);
  }
  EXPECT_EQ(Caption(), caption);
  driver_->Command(kCmdUndo);
  EXPECT_THAT(Caption(), Not(HasSubstr("*"))) << "but for the added box, nothing was changed";
  End();
}

TEST_F(Records, KeysOfTheListActOnItsRows) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  ClickRow(1);
  driver_->Key(List(), VK_INSERT);
  ASSERT_TRUE(driver_->Until("the inserted service", [&] { return driver_->ListCount() == 4; }));
  EXPECT_THAT(Column(1), ElementsAre("Cap", "Service4", "ant", "Bee"));
  EXPECT_EQ(SelectedRow(), 1);
  driver_->Key(List(), VK_F2);
  ASSERT_TRUE(driver_->Until("the added service", [&] { return driver_->ListCount() == 5; }));
  EXPECT_EQ(driver_->Cell(4, 1), "Service5");
  // The next row stays at hand, so that more can go; when none is left, what they belonged to stays.
  ClickRow(1);
  for (int left = 4; left >= 0; --left) {
    driver_->Key(List(), VK_DELETE);
    ASSERT_TRUE(driver_->Until("a row less", [&] { return driver_->ListCount() == left; }));
    EXPECT_EQ(SelectedRow(), std::min(1, left - 1));
  }
  driver_->Key(List(), VK_DELETE);
  EXPECT_TRUE(driver_->Answers());
  EXPECT_THAT(driver_->Tree(true), testing::Contains("      [ 1 ] Low"))
      << "no row is meant, nor the carrier";
  for (int i = 0; i < 7; ++i) driver_->Command(kCmdUndo);
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee"));
  End();
}

TEST_F(Records, RefusalsOfTheTreeAreTold) {
  const struct {
    Labels node;
    unsigned command;
    const char* text;
  } rows[] = {{kZeta, kCmdDelete, "Satellite record cannot be deleted."},
              {kLow, kCmdDelete, "Carrier record cannot be deleted."},
              {kCap, kCmdAdd, "Error No: -1 \n( Invalid Process ) Can't Add Information"}};
  for (const auto& row : rows) {
    StartWithSample();
    ASSERT_TRUE(driver_->SelectItem(row.node));
    driver_->Lose(kLoseTree);
    driver_->Command(row.command);
    EXPECT_EQ(driver_->Answer(IDOK), row.text);
    EXPECT_THAT(Caption(), HasSubstr("*"));
  }
}

TEST_F(Records, AListThatFailsEndsTheProgramAfterTheQuestionForChanges) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  driver_->Lose(kLoseList);
  driver_->Command(kCmdAdd);
  EXPECT_EQ(driver_->Answer(IDOK), "Updating list view failed. Can not continue.");
  EXPECT_EQ(driver_->Answer(IDCANCEL), "Changes made are not saved. Do you want to save ?");
  EXPECT_EQ(driver_->ExitCode(), 1u);
}

// A saved file holds 85 satellites.
TEST_F(Records, MoveAsksForTheRow) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kSatellites));
  ClickRow(0);
  driver_->Key(List(), VK_F3);
  HWND box = driver_->WaitForBox("Move Satellite Information");
  EXPECT_THAT(driver_->BoxText(box), HasSubstr("Move Satellite Information from \"1\" to "));
  Type(box, IDC_MOVE_TARGET, "86");
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box), "Record Index should not exceed 85");
  Type(box, IDC_MOVE_TARGET, "2");
  driver_->Press(box, IDOK);
  EXPECT_TRUE(driver_->Answers());
  EXPECT_EQ(driver_->Cell(0, 1), "Alpha");
  EXPECT_EQ(driver_->Cell(1, 1), "Zeta");
  EXPECT_EQ(SelectedRow(), 1) << "the selection goes with its record";
  EXPECT_TRUE(driver_->Until("the focus in the list again", [&] { return driver_->Focused() == List(); }));
  driver_->Command(kCmdUndo);
  End();
}

TEST_F(Records, RowsAreSelectedByAFieldMarkedAndInverted) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kSatellites));
  const auto selected = [&] { return Send(List(), LVM_GETSELECTEDCOUNT); };
  const unsigned mark = FieldCommand(kFirstMarkCommand, "&EastWest Flag", "&East");
  driver_->Command(mark);
  EXPECT_EQ(driver_->Cell(0, 3), "West") << "no row is selected";
  ClickRow(1);
  driver_->Command(kCmdInvertSelection);
  EXPECT_EQ(selected(), 84);
  // Whatever has the focus.
  driver_->Click(Tree(), Middle(driver_->ItemPlace(kSatellites)));
  ASSERT_TRUE(driver_->Until("the focus", [&] { return driver_->Focused() == Tree(); }));
  driver_->Command(mark);
  EXPECT_EQ(driver_->Cell(0, 3), "East");
  EXPECT_EQ(driver_->Cell(1, 3), "West");
  driver_->Command(FieldCommand(kFirstSelectCommand, "&EastWest Flag", "&West"));
  EXPECT_EQ(selected(), 1);
  EXPECT_EQ(SelectedRow(), 1);
  driver_->Command(kCmdUndo);
  EXPECT_EQ(driver_->Cell(0, 3), "West");
  EXPECT_EQ(selected(), 84) << "what changed";
  EXPECT_EQ(SelectedRow(), 0);
  End();
}

TEST_F(Records, DraggedItemsMoveOrAreRefused) {
  StartWithSample();
  DragItem(kHigh, kLow);
  const Labels moved = {"      [ 1 ] High", "        [ 1 ] Bee", "      [ 2 ] Low"};
  EXPECT_THAT(driver_->Tree(true), testing::IsSupersetOf(moved));
  driver_->Command(kCmdUndo);
  DragItem(kHigh, kLow, false);
  EXPECT_THAT(Caption(), Not(HasSubstr("*"))) << "Esc leaves it where it was";
  DragItem(kCap, kHigh);
  EXPECT_EQ(driver_->Answer(IDOK), "Can not drop in mismatched record type.");
  EXPECT_THAT(Caption(), Not(HasSubstr("*")));
  // From the list, onto a row of it.
  ASSERT_TRUE(driver_->SelectItem(kLow));
  ClickRow(2);
  driver_->Drag(List(), Middle(driver_->RowPlace(List(), 2)), Middle(driver_->RowPlace(List(), 0)));
  EXPECT_THAT(Column(1), ElementsAre("Bee", "Cap", "ant"));
  driver_->Command(kCmdUndo);
  End();
}

}  // namespace
}  // namespace vexa
