// The filter over the list: its field, what it says, and that commands act on what is shown.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/editor_fixture.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::ElementsAre;

const std::vector<std::string> kSatellites = {"SDB1", "Satellites"};

class Filter : public EditorTest {
 protected:
  HWND Field() { return FindWindowExW(driver_->ActiveChild(), nullptr, L"Edit", nullptr); }
  std::string Status() { return driver_->Labels().back(); }
  // As its user types it.
  void Enter(const std::string& text) {
    Send(Field(), EM_SETSEL, 0, -1);
    for (const char c : text) Send(Field(), WM_CHAR, static_cast<WPARAM>(c));
  }
};

TEST_F(Filter, LeavesRowsOutAndSaysHowMany) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem(kSatellites));
  driver_->Command(kCmdViewServices);
  EXPECT_THAT(driver_->ListColumns(), testing::IsSupersetOf({"Satellite Name", "Frequency"}));
  EXPECT_EQ(Status(), "");
  driver_->Command(kCmdFilter);
  EXPECT_EQ(driver_->Focused(), Field());
  Enter("bee");
  EXPECT_THAT(Column(2), ElementsAre("Low", "High"));
  EXPECT_EQ(Status(), "2 of 4");
  Enter("sid=2 fta");
  EXPECT_THAT(Column(1), ElementsAre("ant"));
  Enter("frq=1");
  EXPECT_EQ(Status(), "\"frq\" is no field; the nearest is \"freq\"");
  EXPECT_EQ(driver_->ListCount(), 4);
  // Enter goes to what is shown; what is selected and deleted is that alone.
  Enter("bee");
  PostKey(Field(), VK_RETURN);
  EXPECT_TRUE(driver_->Until("the focus in the list", [&] { return driver_->Focused() == List(); }));
  driver_->Command(kCmdSelectAll);
  EXPECT_EQ(Send(List(), LVM_GETSELECTEDCOUNT), 2);
  driver_->Command(kCmdDelete);
  EXPECT_EQ(driver_->ListCount(), 0);
  EXPECT_EQ(Status(), "0 of 2");
  // Esc ends it, in the list too.
  PostKey(List(), VK_ESCAPE);
  EXPECT_TRUE(driver_->Until("all rows", [&] { return driver_->ListCount() == 2; }));
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant"));
  EXPECT_EQ(driver_->Title(Field()), "");
  // What an undo has to show is not hidden.
  driver_->Command(kCmdFilter);
  Enter("cap");
  EXPECT_EQ(driver_->ListCount(), 1);
  driver_->Command(kCmdUndo);
  EXPECT_EQ(driver_->ListCount(), 4);
  EXPECT_EQ(Send(List(), LVM_GETSELECTEDCOUNT), 2);
  // In the field Ctrl+Z is about its text.
  driver_->Command(kCmdDelete);
  driver_->Command(kCmdFilter);
  Enter("x");
  SetForegroundWindow(driver_->frame());
  for (const auto& [key, up] :
       {std::pair(VK_CONTROL, 0), {'Z', 0}, {'Z', KEYEVENTF_KEYUP}, {VK_CONTROL, KEYEVENTF_KEYUP}})
    keybd_event(static_cast<BYTE>(key), 0, static_cast<DWORD>(up), 0);
  EXPECT_TRUE(driver_->Until("the text taken back", [&] { return driver_->Title(Field()).empty(); }));
  EXPECT_EQ(driver_->ListCount(), 2);
  driver_->Command(kCmdUndo);
  driver_->Command(kCmdFilter);
  Enter("x");
  PostKey(Field(), VK_ESCAPE);
  EXPECT_TRUE(driver_->Until("the focus in the list", [&] { return driver_->Focused() == List(); }));
  EXPECT_EQ(driver_->ListCount(), 4);
  End();
}

}  // namespace
}  // namespace vexa
