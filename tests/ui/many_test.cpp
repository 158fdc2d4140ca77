// Several records at once: one dialog for all, favourites by dragging and by their dialog, the clipboard.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/editor_fixture.h"
#include "ui/forms/records_resource.h"
#include "view/command_table.h"
#include "view/menu_table.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Labels = std::vector<std::string>;

const Labels kZeta = {"SDB1", "Satellites", "[ 1 ] Zeta"}, kTv = {"SDB1", "TV Groups", "Favourite2"},
             kHigh = {"SDB1", "Satellites", "[ 1 ] Zeta", "[ 2 ] High"};

class Many : public EditorTest {
 protected:
  void Choose(const std::vector<int>& rows) {
    driver_->Click(List(), Middle(driver_->RowPlace(List(), rows[0])));
    ASSERT_TRUE(driver_->Until("the focus", [&] { return driver_->Focused() == List(); }));
    driver_->SelectRows(List(), rows);
  }
  static unsigned MarkCommand(const char* field, const char* text) {
    const auto& choices = FieldChoices();
    for (unsigned i = 0; i < choices.size(); ++i) {
      if (choices[i].kind == NodeKind::kService && choices[i].field == std::string(field) &&
          choices[i].text == text)
        return kFirstMarkCommand + i;
    }
    ADD_FAILURE() << field;
    return 0;
  }
  // A key with Ctrl held, as the program's thread sees it.
  void ControlKey(HWND control, unsigned key) {
    const DWORD own = GetCurrentThreadId(), program = GetWindowThreadProcessId(control, nullptr);
    ASSERT_TRUE(AttachThreadInput(own, program, TRUE));
    BYTE keys[256] = {};
    keys[VK_CONTROL] = 0x80;
    SetKeyboardState(keys);
    driver_->Key(control, key);
    keys[VK_CONTROL] = 0;
    SetKeyboardState(keys);
    AttachThreadInput(own, program, FALSE);
  }
  std::string StatusLine() {
    return driver_->Title(FindWindowExW(driver_->frame(), nullptr, STATUSCLASSNAMEW, nullptr));
  }
  // Text that another program left.
  void PutOnClipboard(const std::wstring& text) {
    HWND owner = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_TRUE(driver_->Until("the clipboard", [&] { return OpenClipboard(owner) != 0; }));
    EmptyClipboard();
    const size_t size = (text.size() + 1) * sizeof(wchar_t);
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    memcpy(GlobalLock(memory), text.c_str(), size);
    GlobalUnlock(memory);
    EXPECT_TRUE(SetClipboardData(CF_UNICODETEXT, memory));
    CloseClipboard();
    DestroyWindow(owner);
  }
};

TEST_F(Many, OneDialogForAllServices) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  Choose({0, 2});
  driver_->Key(List(), VK_RETURN);
  HWND box = driver_->WaitForBox("Service Information - 2 records");
  EXPECT_EQ(Shown(box, IDC_RECORD_NAME), "");
  EXPECT_EQ(Shown(box, IDC_SERVICE_VIDEO), "");
  EXPECT_EQ(Shown(box, IDC_SERVICE_AUDIO), "8192");
  EXPECT_EQ(Shown(box, IDC_SERVICE_CARRIER), "Low");
  // A number for both is refused, with the record's name, and the dialog stays.
  Type(box, IDC_SERVICE_NUMBER, "9");
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box), "[ 3 ] Bee:\nService program number already exists.");
  Type(box, IDC_SERVICE_NUMBER, "");
  Type(box, IDC_SERVICE_AUDIO, "600");
  driver_->Push(box, IDC_SERVICE_SCRAMBLED);
  driver_->Press(box, IDOK);
  EXPECT_TRUE(driver_->Until("both", [&] { return driver_->Cell(2, 6) == "600"; }));
  EXPECT_THAT(Column(6), ElementsAre("600", "8192", "600"));
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee"));
  EXPECT_THAT(Column(3), ElementsAre("3", "2", "1"));
  EXPECT_THAT(Column(8), ElementsAre("Yes", "---", "Yes"));
  driver_->Command(kCmdUndo);
  EXPECT_THAT(Caption(), Not(HasSubstr("*"))) << "one step";
  End();
}

TEST_F(Many, CarriersThatDifferStayInBetween) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kZeta));
  Choose({0});
  driver_->Key(List(), VK_RETURN);
  HWND box = driver_->WaitForBox("Carrier Information");
  driver_->Push(box, IDC_CARRIER_FACTORY);
  Pick(box, IDC_CARRIER_POLARIZATION, 1);
  driver_->Press(box, IDOK);
  Choose({0, 1});
  driver_->Key(List(), VK_RETURN);
  box = driver_->WaitForBox("Carrier Information - 2 records");
  EXPECT_EQ(Send(GetDlgItem(box, IDC_CARRIER_FACTORY), BM_GETCHECK), BST_INDETERMINATE);
  EXPECT_EQ(Send(GetDlgItem(box, IDC_CARRIER_POLARIZATION), CB_GETCURSEL), CB_ERR);
  Type(box, IDC_CARRIER_SYMBOL_RATE, "22000");
  driver_->Press(box, IDOK);
  EXPECT_TRUE(driver_->Until("both", [&] { return driver_->Cell(1, 4) == "22000"; }));
  EXPECT_THAT(Column(4), ElementsAre("22000", "22000"));
  EXPECT_THAT(Column(5), ElementsAre("Vertical", "Horizontal"));
  EXPECT_NE(driver_->Cell(0, 7), driver_->Cell(1, 7));
  for (int i = 0; i < 2; ++i) driver_->Command(kCmdUndo);
  End();
}

TEST_F(Many, ServicesAreMarkedAndLeaveTheirListsWithAWord) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  Choose({0, 1});
  driver_->Command(kFirstGroupCommand + 1);
  ASSERT_TRUE(driver_->HasCaughtUp());
  driver_->Command(MarkCommand("P&IDs", "No &video PID"));
  EXPECT_THAT(Column(5), ElementsAre("8192", "8192", "257"));
  driver_->Command(MarkCommand("Service &Type", "&Radio"));
  EXPECT_THAT(driver_->Answer(IDOK), HasSubstr("Removed from favourite lists: 2."));
  EXPECT_THAT(Column(4), ElementsAre("Radio", "Radio", "TV"));
  ASSERT_TRUE(driver_->SelectItem(kTv));
  EXPECT_EQ(driver_->ListCount(), 0);
  for (int i = 0; i < 3; ++i) driver_->Command(kCmdUndo);
  EXPECT_THAT(Caption(), Not(HasSubstr("*")));
  End();
}

TEST_F(Many, ServicesGoToAGroupByDraggingAndBackToTheirCarrier) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  driver_->ItemPlace(kTv);
  driver_->Command(kCmdViewServices);
  Choose({1, 3});
  POINT to = Middle(driver_->ItemPlace(kTv)), from = Middle(driver_->RowPlace(List(), 1));
  MapWindowPoints(Tree(), List(), &to, 1);
  driver_->Drag(List(), from, to);
  ASSERT_TRUE(driver_->HasCaughtUp());
  EXPECT_THAT(Caption(), HasSubstr("*"));
  // The menu's command adds what is not there yet.
  Choose({0, 1});
  driver_->Command(kFirstGroupCommand + 1);
  ASSERT_TRUE(driver_->HasCaughtUp());
  EXPECT_EQ(StatusLine(), "1 added, 1 there before, 0 did not fit");
  ASSERT_TRUE(driver_->SelectItem(kTv));
  EXPECT_THAT(Column(1), ElementsAre("ant", "Bee", "Cap"));
  Choose({1});
  driver_->Command(kCmdGoToService);
  EXPECT_THAT(Column(2), ElementsAre("High"));
  EXPECT_EQ(SelectedRow(), 0);
  driver_->Command(kCmdInformation);
  EXPECT_EQ(driver_->Cell(driver_->ListCount() - 1, 1), "Favourite2 (TV)");
  for (int i = 0; i < 2; ++i) driver_->Command(kCmdUndo);
  // What changes in services of two carriers is seen together when it is undone.
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  driver_->Command(kCmdViewServices);
  Choose({1, 3});
  driver_->Command(MarkCommand("Service &Type", "&Radio"));
  ASSERT_TRUE(driver_->SelectItem(kTv));
  driver_->Command(kCmdUndo);
  EXPECT_EQ(driver_->ListCount(), 4);
  EXPECT_EQ(Send(List(), LVM_GETSELECTEDCOUNT), 2);
  End();
}

TEST_F(Many, DraggedWithCtrlRecordsAreCopiedToAnotherSdb) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem({"SDB1"}));
  driver_->Command(kCmdAdd);
  ASSERT_TRUE(driver_->SelectItem({"SDB2", "LNBs"}));
  driver_->Command(kCmdAdd);
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  Choose({0});
  POINT to = Middle(driver_->ItemPlace({"SDB2", "Satellites"})), from = Middle(driver_->RowPlace(List(), 0));
  MapWindowPoints(Tree(), List(), &to, 1);
  driver_->Drag(List(), from, to, true, MK_CONTROL);
  for (const char* sdb : {"SDB1", "SDB2"}) {
    ASSERT_TRUE(driver_->SelectItem({sdb, "Satellites"}));
    EXPECT_THAT(Column(1), testing::Contains("Zeta")) << sdb;
  }
  for (int i = 0; i < 3; ++i) driver_->Command(kCmdUndo);
  End();
}

TEST_F(Many, TheGroupsDialogFiltersAndTicksManyRows) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kTv));
  HWND box = driver_->Open(kCmdEdit, "FGL Information (TV)");
  HWND list = GetDlgItem(box, IDC_FAVOURITES_LIST);
  EXPECT_EQ(driver_->RowsOf(list), 4);
  Type(box, IDC_FAVOURITES_FILTER, "carrier=low");
  EXPECT_EQ(driver_->RowsOf(list), 3);
  EXPECT_EQ(Shown(box, IDC_FAVOURITES_STATUS), "3 of 4");
  driver_->SelectRows(list, {0, 2});
  driver_->Key(list, VK_SPACE);
  EXPECT_TRUE(driver_->IsTicked(list, 0));
  EXPECT_FALSE(driver_->IsTicked(list, 1));
  EXPECT_TRUE(driver_->IsTicked(list, 2));
  EXPECT_EQ(Shown(box, IDC_FAVOURITES_COUNT), "2 of 2500");
  driver_->Key(list, VK_SPACE);
  EXPECT_EQ(Shown(box, IDC_FAVOURITES_COUNT), "0 of 2500") << "the selection stays";
  driver_->Key(list, VK_SPACE);
  // The keys of the filter lead to the list and leave the dialog open.
  HWND field = GetDlgItem(box, IDC_FAVOURITES_FILTER);
  for (const unsigned key : {VK_RETURN, VK_ESCAPE}) {
    Send(box, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
    PostKey(field, key);
    EXPECT_TRUE(driver_->Until("the focus in the list", [&] { return driver_->Focused() == list; }));
    EXPECT_EQ(driver_->RowsOf(list), key == VK_RETURN ? 3 : 4);
  }
  ControlKey(list, 'A');
  EXPECT_EQ(Send(list, LVM_GETSELECTEDCOUNT), 4);
  driver_->Press(box, IDOK);
  ASSERT_TRUE(driver_->HasCaughtUp());
  EXPECT_THAT(Column(1), ElementsAre("Cap", "Bee"));
  driver_->Command(kCmdUndo);
  box = driver_->Open(kCmdEdit, "FGL Information (TV)");
  PostKey(GetDlgItem(box, IDC_FAVOURITES_FILTER), VK_ESCAPE);
  EXPECT_TRUE(driver_->Until("its end", [&] { return !IsWindow(box); })) << "no filter to end";
  End();
}

TEST_F(Many, WhatAPasteDidIsSaid) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  Choose({0});
  driver_->Command(kFirstGroupCommand + 1);
  ASSERT_TRUE(driver_->HasCaughtUp());
  PutOnClipboard(
      L"satellite\tcarrier\tservice\ttype\tname\t\r\n1\t1\t1\tRadio\tCap\t\r\n1\t1\t3\tTV\tNew\t\r\n");
  driver_->Command(kCmdPaste);
  EXPECT_THAT(driver_->Answer(IDOK), HasSubstr("Removed from favourite lists: 1."));
  EXPECT_EQ(StatusLine(), "2 changed");
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "New"));
  EXPECT_EQ(Send(List(), LVM_GETSELECTEDCOUNT), 2);
  EXPECT_EQ(SelectedRow(), 0);
  driver_->Command(kCmdPaste);
  EXPECT_EQ(StatusLine(), "0 changed");
  driver_->Command(kCmdCopy);
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Radio Groups", "Favourite2"}));
  driver_->Command(kCmdPaste);
  EXPECT_EQ(driver_->Answer(IDOK), "1 added, 0 there before, 1 did not fit");
  EXPECT_EQ(StatusLine(), "1 added, 0 there before, 1 did not fit");
  for (int i = 0; i < 3; ++i) driver_->Command(kCmdUndo);
  EXPECT_THAT(Caption(), Not(HasSubstr("*")));
  End();
}

TEST_F(Many, RecordsGoThroughTheClipboard) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kZeta));
  Choose({0});
  driver_->Command(kCmdCopy);
  driver_->Command(kCmdNew);
  ASSERT_TRUE(driver_->Until("a second window", [&] { return driver_->Children().size() == 2; }));
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "LNBs"}));
  driver_->Command(kCmdAdd);
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  driver_->Command(kCmdPaste);
  EXPECT_EQ(driver_->Answer(IDOK), "Select the satellite that the carriers are to go to.");
  driver_->Command(kCmdAdd);
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Satellite1"}));
  driver_->Command(kCmdPaste);
  EXPECT_THAT(Column(1), ElementsAre("Low"));
  EXPECT_EQ(SelectedRow(), 0);
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Satellite1", "[ 1 ] Low"}));
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee"));
  Choose({0});
  driver_->Command(kCmdCut);
  EXPECT_TRUE(driver_->Until("one less", [&] { return driver_->ListCount() == 2; }));
  EXPECT_EQ(StatusLine(), "1 cut");
  driver_->Command(kCmdPaste);
  driver_->Command(kCmdPaste);
  EXPECT_THAT(driver_->Answer(IDOK), HasSubstr("another program number"));
  EXPECT_THAT(Column(3), ElementsAre("2", "1", "3", "4"));
  // What was copied is text for other programs, too.
  std::wstring text;
  ASSERT_TRUE(driver_->Until("the clipboard", [&] {
    if (!OpenClipboard(nullptr)) return false;
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
      text = static_cast<const wchar_t*>(GlobalLock(data));
      GlobalUnlock(data);
    }
    CloseClipboard();
    return true;
  }));
  EXPECT_THAT(Utf8(text), HasSubstr("\tCap\t3\tTV\t"));
  driver_->Close();
  driver_->Answer(IDNO);
  EXPECT_EQ(driver_->ExitCode(), 0u);
}

}  // namespace
}  // namespace vexa
