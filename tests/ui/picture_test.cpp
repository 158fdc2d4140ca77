// The picture below the list, and how full the receiver would be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "tests/ui/editor_fixture.h"
#include "view/command_table.h"
#include "view/report_page.h"

namespace vexa {

namespace {

using testing::ElementsAre;

class PicturePane : public EditorTest {
 protected:
  // With the carriers' frequencies in the order High, Low.
  void Start() {
    const Path path = PutSample();
    Document document;
    ASSERT_TRUE(OpenBin(recorder_.context, path, document));
    document.sdbs[0].database->carriers[0]->record.frequency = 12000;
    document.sdbs[0].database->carriers[1]->record.frequency = 11000;
    PutFile(path, *BuildBin(recorder_.context, document, {}, {}));
    EditorTest::Start({L"--test-mode"}, path);
  }
  HWND Pane() { return FindWindowExW(driver_->ActiveChild(), nullptr, L"VexaPicture", nullptr); }
  HWND List() { return FindWindowExW(driver_->ActiveChild(), nullptr, WC_LISTVIEWW, nullptr); }
  std::vector<int> Selected() {
    std::vector<int> rows;
    int row = -1;
    while ((row = static_cast<int>(Send(List(), LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED))) >=
           0)
      rows.push_back(row);
    return rows;
  }
  // How many different colours the pane shows.
  size_t Colours() {
    RECT place{};
    GetWindowRect(Pane(), &place);
    HDC screen = GetDC(nullptr);
    std::set<COLORREF> colours;
    for (LONG x = place.left; x < place.right; x += 2)
      for (LONG y = place.top; y < place.bottom; y += 2) colours.insert(GetPixel(screen, x, y));
    ReleaseDC(nullptr, screen);
    return colours.size();
  }
};

TEST_F(PicturePane, KeysAndMouseSelectAndZoom) {
  Start();
  EXPECT_FALSE(IsWindowVisible(Pane()));
  driver_->Command(kCmdPicture);
  ASSERT_TRUE(driver_->Until("the picture", [&] { return IsWindowVisible(Pane()); }));
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta"}));
  ASSERT_TRUE(driver_->Answers());
  EXPECT_GT(Colours(), 4u);
  driver_->Click(Pane(), {2, 2});
  driver_->Key(Pane(), VK_RIGHT);  // the leftmost one first
  ASSERT_TRUE(driver_->Answers());
  EXPECT_THAT(Selected(), ElementsAre(1));
  driver_->Key(Pane(), VK_RIGHT);
  ASSERT_TRUE(driver_->Answers());
  EXPECT_THAT(Selected(), ElementsAre(0));
  driver_->Key(Pane(), VK_RIGHT);  // there is none
  ASSERT_TRUE(driver_->Answers());
  EXPECT_THAT(Selected(), ElementsAre(0));
  // A part of the band in which nothing lies: nothing is hit, until all of it is shown again.
  RECT area{};
  GetClientRect(Pane(), &area);
  const LONG y = 30;
  for (const unsigned whole : {VK_HOME + 0u, VK_ESCAPE + 0u}) {
    Send(Pane(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(area.right / 2 - 40, y));
    Send(Pane(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(area.right / 2, y));
    Send(Pane(), WM_LBUTTONUP, 0, MAKELPARAM(area.right / 2 + 20, y));
    ASSERT_TRUE(driver_->Answers());
    driver_->Key(Pane(), VK_LEFT);
    ASSERT_TRUE(driver_->Answers());
    EXPECT_THAT(Selected(), ElementsAre(0));
    driver_->Key(Pane(), whole);
    driver_->Key(Pane(), VK_LEFT);
    ASSERT_TRUE(driver_->Answers());
    EXPECT_THAT(Selected(), ElementsAre(1));
    driver_->Key(Pane(), VK_RIGHT);
  }
  driver_->Command(kCmdPicture);
  ASSERT_TRUE(driver_->Until("the picture", [&] { return !IsWindowVisible(Pane()); }));
}

// From the orbit into a satellite; what is edited is drawn anew.
TEST_F(PicturePane, FollowsTheTreeAndTheDocument) {
  Start();
  driver_->Command(kCmdPicture);
  ASSERT_TRUE(driver_->Until("the picture", [&] { return IsWindowVisible(Pane()); }));
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  driver_->Click(Pane(), {2, 2});
  driver_->Key(Pane(), VK_RIGHT);
  ASSERT_TRUE(driver_->Answers());
  EXPECT_THAT(Selected(), ElementsAre(0));
  driver_->Key(Pane(), VK_RETURN);
  ASSERT_TRUE(driver_->Answers());
  ASSERT_THAT(driver_->ListColumns(), testing::Contains("Carrier Name"));
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta"}));
  driver_->Click(List(), {5, 150});
  driver_->SelectRows(List(), {0, 1});
  driver_->Command(kCmdDelete);
  ASSERT_TRUE(driver_->Until("no carrier", [&] { return driver_->ListCount() == 0; }));
  driver_->Key(Pane(), VK_RIGHT);  // nothing to go to, and nothing of the deleted records is touched
  EXPECT_TRUE(driver_->Answers());
  driver_->Command(kCmdUndo);
  ASSERT_TRUE(driver_->Until("the carriers", [&] { return Selected().size() == 2; }));
  EXPECT_TRUE(driver_->HasCaughtUp());
  driver_->Key(Pane(), VK_LEFT);  // of both, which are selected, from the first
  ASSERT_TRUE(driver_->Answers());
  EXPECT_THAT(Selected(), ElementsAre(1));
}

TEST_F(PicturePane, ThePageOfTheSdbIsWritten) {
  Start();
  const Path page = recorder_.context.temporary_folder / "page.html";
  driver_->Command(kCmdHtmlPage);
  driver_->ChooseFile("Save", page);
  ASSERT_TRUE(driver_->Until("the page", [&] { return std::filesystem::exists(page); }));
  ASSERT_TRUE(driver_->Answers());
  Document document;
  ASSERT_TRUE(OpenBin(recorder_.context, recorder_.context.temporary_folder / "sample.bin", document));
  EXPECT_EQ(ReadWholeFile(page), BytesOf(ReportPage(document, 0, Windows1252())));
}

}  // namespace

}  // namespace vexa
