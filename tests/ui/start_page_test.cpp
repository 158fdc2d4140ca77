// The empty frame says where to begin, by buttons that the keyboard reaches.
#include "view/start_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/editor_fixture.h"
#include "ui/frame/start_resource.h"

namespace vexa {

namespace {

class StartPage : public EditorTest {
 protected:
  HWND Page() {
    HWND page = FindWindowExW(driver_->frame(), nullptr, L"#32770", nullptr);
    return page && IsWindowVisible(page) ? page : nullptr;
  }
  std::vector<std::string> Shown() {
    std::vector<std::string> texts;
    for (int i = 0; i < static_cast<int>(kStartEntries); ++i) {
      HWND button = GetDlgItem(Page(), IDC_START_FIRST + i);
      if (IsWindowVisible(button)) texts.push_back(driver_->Title(button));
    }
    return texts;
  }
  bool HasFocus(int entry) {
    return driver_->Until("the focus", [&] {
      return driver_->Focused() == GetDlgItem(Page(), IDC_START_FIRST + entry) && driver_->Focused();
    });
  }
  // As the message loop gets it.
  void TypeKey(WPARAM key) {
    for (const UINT message : {WM_KEYDOWN, WM_KEYUP}) PostMessageW(driver_->Focused(), message, key, 1);
  }
  bool Gone() {
    return driver_->Until("no page", [&] { return !Page() && driver_->Children().size() == 1; });
  }
  void CloseWindow() {
    Send(driver_->Children().at(0), WM_CLOSE);
    ASSERT_TRUE(driver_->Until("the page", [&] { return Page() && driver_->Children().empty(); }));
  }
};

TEST_F(StartPage, ItsButtonsAreWorkedByTheKeyboardWhileNoWindowIsOpen) {
  Start({L"--test-mode"});
  ASSERT_TRUE(driver_->Until("the page", [&] { return Page() != nullptr; }));
  EXPECT_THAT(Shown(), testing::ElementsAre("New (Ctrl+N)", "Open (Ctrl+O)", "Import"));
  EXPECT_EQ(driver_->Title(GetDlgItem(Page(), IDC_START_HINT)), kStartHint);
  ASSERT_TRUE(HasFocus(0));
  TypeKey(VK_TAB);
  ASSERT_TRUE(HasFocus(1));
  TypeKey(VK_RETURN);
  driver_->ChooseFile("Open", PutSample("a&b.bin"));
  ASSERT_TRUE(Gone());
  CloseWindow();
  ASSERT_EQ(Shown().size(), 4u);
  EXPECT_THAT(Shown()[3], testing::EndsWith("a&&b.bin"));
  ASSERT_TRUE(HasFocus(0));
  driver_->Push(Page(), IDC_START_FIRST + 3);
  ASSERT_TRUE(Gone());
  CloseWindow();
  ASSERT_TRUE(HasFocus(0));
  TypeKey(VK_SPACE);
  ASSERT_TRUE(Gone());
  End();
}

}  // namespace

}  // namespace vexa
