// The database window beside other programs and other windows: its file, its menus, its controls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cwctype>
#include <map>

#include "tests/ui/editor_fixture.h"
#include "ui/forms/lists_resource.h"
#include "ui/forms/records_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

using Labels = std::vector<std::string>;

class Window : public EditorTest {
 protected:
  Path Folder() { return recorder_.context.temporary_folder; }
  Document Read(const Path& path) {
    Document document;
    EXPECT_TRUE(OpenBin(recorder_.context, path, document));
    return document;
  }
  bool WaitForWindows(size_t count) {
    return driver_->Until("the database windows", [&] { return driver_->Children().size() == count; });
  }
  std::map<unsigned, MenuLine> Items() {
    std::map<unsigned, MenuLine> items;
    for (const MenuLine& line : driver_->Menus()) {
      if (line.id) items.emplace(line.id, line);
    }
    return items;
  }
};

// The second of three SDBs is damaged: the first one opens, and cannot take the place of all three.
TEST_F(Window, WhatWasNotReadWholeHasNoPath) {
  Document document = Read(PutSample());
  for (const char* name : {"Two", "Three"}) {
    OpenSdb* added = AppendSdb(document, name);
    added->database = CopyDatabase(*document.sdbs[0].database);
  }
  auto bytes = *BuildBin(recorder_.context, document, {}, {});
  const size_t second =
      kBinHeaderSize + 3 * kBinEntrySize + (bytes.size() - kBinHeaderSize - 3 * kBinEntrySize) / 3;
  bytes[second] = 'x';
  const Path path = Folder() / "damaged.bin", other = Folder() / "other.bin";
  PutFile(path, bytes);
  Start();
  driver_->DropFiles({path});
  EXPECT_EQ(driver_->Answer(IDOK), "StaticDB file magic ID mismatch. Input a valid SDB.");
  ASSERT_TRUE(WaitForWindows(1));
  EXPECT_EQ(Caption(), "Untitled1");
  EXPECT_THAT(driver_->Labels(), Contains("SDB:SDB1  Index 1/1"));
  driver_->Command(kCmdSave);
  driver_->ChooseFile("Save", other);
  ASSERT_TRUE(driver_->Until("the saved file", [&] { return Caption() == Utf8FromPath(other); }));
  EXPECT_EQ(ReadWholeFile(path), bytes);
  End();
}

// By whatever name it comes, its window comes to the front; and what others wrote to it is not lost unasked.
TEST_F(Window, AFileHasOneWindowAndKeepsWhatOthersWrote) {
  const Path first = PutSample("first file.bin"), second = PutSample("second.bin");
  const auto front = [&](const Path& path) {
    return driver_->Until("the window in front",
                          [&] { return driver_->Title(driver_->ActiveChild()) == Utf8FromPath(path); });
  };
  std::wstring upper = first.native();
  std::transform(upper.begin(), upper.end(), upper.begin(), [](wchar_t c) { return std::towupper(c); });
  wchar_t brief[MAX_PATH] = L"";
  ASSERT_NE(GetShortPathNameW(first.c_str(), brief, MAX_PATH), 0u);
  Start();
  for (const Path& name : {Path(upper), Path(brief), Folder() / "." / "first file.bin", first}) {
    driver_->DropFiles({first, second});
    ASSERT_TRUE(front(second));
    driver_->DropFiles({name});
    ASSERT_TRUE(front(first)) << name;
    ASSERT_EQ(driver_->Children().size(), 2u) << name;
  }
  const auto theirs = *ReadWholeFile(second);
  auto changed = theirs;
  changed.push_back(0);
  driver_->Command(kCmdCompressBin);
  PutFile(first, changed);
  const std::string question =
      "\"" + Utf8FromPath(first) + "\" was changed by another program.\nDo you want to replace it ?";
  driver_->Command(kCmdSave);
  EXPECT_EQ(driver_->Answer(IDNO), question);
  EXPECT_EQ(ReadWholeFile(first), changed);
  EXPECT_THAT(driver_->Title(driver_->ActiveChild()), HasSubstr("*"));
  driver_->Command(kCmdSave);
  EXPECT_EQ(driver_->Answer(IDYES), question);
  ASSERT_TRUE(front(first)) << "saved";
  EXPECT_NE(ReadWholeFile(first), changed);
  driver_->Command(kCmdCompressBin);
  driver_->Command(kCmdSave);
  EXPECT_TRUE(front(first)) << "its own save is no other program's";
  End();
}

TEST_F(Window, ASecondStartHandsItsFileOver) {
  const std::wstring kind = L"--hand-over=window-" + std::to_wstring(GetCurrentProcessId());
  const Path first = PutSample("first file.bin"), second = PutSample("second.bin");
  std::wstring upper = first.native();
  std::transform(upper.begin(), upper.end(), upper.begin(), [](wchar_t c) { return std::towupper(c); });
  const auto start_with = [&](const std::wstring& file) {
    EditorDriver started(EditorProgram(), {L"--test-mode", kind, file});
    EXPECT_EQ(started.ExitCode(), 0u) << "still runs, or failed";
    EXPECT_TRUE(driver_->HasCaughtUp());
  };
  Start({L"--test-mode", kind});
  EditorDriver holder(EditorProgram(), {L"--test-mode", L"--hand-over=another", first.native()});
  ASSERT_TRUE(holder.WaitForFrame()) << "programs of another kind do not meet";
  start_with(first.native());
  start_with(second.native());
  ASSERT_TRUE(WaitForWindows(2));
  start_with(upper);
  EXPECT_EQ(driver_->Title(driver_->ActiveChild()), Utf8FromPath(first));
  EXPECT_EQ(driver_->Children().size(), 2u);
  driver_->Command(kCmdClose);
  HWND box = driver_->Open(kCmdAbout);
  start_with(first.native());
  EXPECT_EQ(driver_->Children().size(), 1u) << "it waits for the dialog";
  driver_->Press(box, IDOK);
  ASSERT_TRUE(WaitForWindows(2));
  ExpectCleanEnd(holder);
  End();
}

TEST_F(Window, DroppedFilesWaitForTheDialog) {
  const Path sample = PutSample(), dropped = PutSample("dropped.bin");
  Start({L"--test-mode"}, sample);
  ASSERT_TRUE(SelectLow());
  driver_->Command(kCmdMove);  // no row: the carrier of the tree
  HWND box = driver_->WaitForBox();
  driver_->DropFiles({dropped});
  EXPECT_TRUE(driver_->HasCaughtUp());
  EXPECT_EQ(driver_->Children().size(), 1u);
  Type(box, IDC_MOVE_TARGET, "2");
  driver_->Press(box, IDOK);
  ASSERT_TRUE(WaitForWindows(2));
  ASSERT_TRUE(driver_->HasCaughtUp());
  EXPECT_EQ(driver_->Title(driver_->ActiveChild()), Utf8FromPath(dropped));
  size_t changed = 0;
  for (HWND child : driver_->Children()) changed += driver_->Title(child) == Utf8FromPath(sample) + " *";
  EXPECT_EQ(changed, 1u) << "the move was made where it was asked for";
}

// The first carrier was closed and is so again; the second one, which took its place, stays open.
TEST_F(Window, ADeletedRecordComesBackAsItWas) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta", "[ 2 ] High", "[ 1 ] Bee"}));
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low"}));
  const auto open = [&](const Labels& way) {
    EXPECT_TRUE(driver_->SelectItem(way));
    const LRESULT item = Send(Tree(), TVM_GETNEXTITEM, TVGN_CARET);
    return (Send(Tree(), TVM_GETITEMSTATE, static_cast<WPARAM>(item), TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
  };
  driver_->Command(kCmdDelete);
  EXPECT_TRUE(open({"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] High"}));
  driver_->Command(kCmdUndo);
  EXPECT_TRUE(open({"SDB1", "Satellites", "[ 1 ] Zeta", "[ 2 ] High"}));
  EXPECT_FALSE(open({"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low"}));
  End();
}

TEST_F(Window, TheSatellitesOfALevelAreSavedFromItsMenu) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  const auto saved = [&](const char* name) {
    const Path path = Folder() / name;
    const RECT place = driver_->ItemPlace({"SDB1", "Satellites"});
    driver_->Click(Tree(), {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
    driver_->Command(kCmdSaveSatellites);
    driver_->ChooseFile("Save selected Satellite(s) as", path);
    EXPECT_TRUE(driver_->Until("the file", [&] { return std::filesystem::exists(path); }));
    EXPECT_TRUE(driver_->HasCaughtUp());
    return NamesOf(Read(path).sdbs.at(0).database->carriers);
  };
  EXPECT_THAT(saved("all.bin"), ElementsAre("Low", "High"));
  driver_->SelectRows(List(), {1});
  EXPECT_THAT(saved("alpha.bin"), ElementsAre());
  End();
}

TEST_F(Window, ViewsAreOfferedWhereTheyShowSomethingElse) {
  StartWithSample();
  const struct {
    Labels node;
    bool offered;
  } rows[] = {{{"SDB1"}, true},
              {{"SDB1", "LNBs"}, false},
              {{"SDB1", "Satellites"}, true},
              {{"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low"}, true},
              {{"SDB1", "TV Groups", "Favourite1"}, false},
              {{"Box Infos"}, false}};
  for (const auto& row : rows) {
    ASSERT_TRUE(driver_->SelectItem(row.node));
    EXPECT_EQ(Items().at(kCmdViewRadio).greyed, !row.offered) << row.node.back();
    HWND button = FindWindowExW(driver_->ActiveChild(), nullptr, L"Button", L"&Radio");
    EXPECT_EQ(IsWindowEnabled(button) != 0, row.offered) << row.node.back();
  }
  End();
}

TEST_F(Window, TheMultiplyKeyOpensEverythingBelow) {
  StartWithSample();
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  PostMessageW(Tree(), WM_KEYDOWN, VK_MULTIPLY, 1);
  ASSERT_TRUE(driver_->HasCaughtUp());
  Labels visible;
  auto item = reinterpret_cast<HTREEITEM>(Send(Tree(), TVM_GETNEXTITEM, TVGN_CARET));
  for (int i = 0; i < 9 && item; ++i) {
    visible.push_back(driver_->ItemText(Tree(), item));
    item = reinterpret_cast<HTREEITEM>(
        Send(Tree(), TVM_GETNEXTITEM, TVGN_NEXTVISIBLE, reinterpret_cast<LPARAM>(item)));
  }
  EXPECT_THAT(visible, ElementsAre("Satellites", "[ 1 ] Zeta", "[ 1 ] Low", "[ 1 ] Cap", "[ 2 ] ant",
                                   "[ 3 ] Bee", "[ 2 ] High", "[ 1 ] Bee", "[ 2 ] Alpha"));
  End();
}

TEST_F(Window, NarrowWindowsShowAllButtons) {
  StartWithSample();
  HWND child = driver_->ActiveChild();
  PostMessageW(child, WM_SYSCOMMAND, SC_RESTORE, 0);
  ASSERT_TRUE(driver_->Until("the restored window", [&] { return !IsZoomed(child); }));
  for (const int width : {640, 420, 300}) {
    SetWindowPos(child, nullptr, 0, 0, width, 500, SWP_NOZORDER | SWP_NOACTIVATE);
    ASSERT_TRUE(driver_->HasCaughtUp());
    RECT area{};
    GetClientRect(child, &area);
    std::vector<RECT> places;
    for (HWND button = nullptr; (button = FindWindowExW(child, button, L"Button", nullptr)) != nullptr;) {
      RECT place{};
      GetWindowRect(button, &place);
      MapWindowPoints(nullptr, child, reinterpret_cast<POINT*>(&place), 2);
      if (width > 400) {
        EXPECT_LE(place.right, area.right) << width;
      }
      for (const RECT& other : places) {
        RECT both{};
        EXPECT_FALSE(IntersectRect(&both, &place, &other)) << width;
      }
      places.push_back(place);
    }
    EXPECT_EQ(places.size(), 5u);
  }
  End();
}

// A focus that a form sets when it opens is not put back to the first control.
TEST_F(Window, TheDefaultButtonOfTheMergerHasTheFocus) {
  Start();
  HWND box = driver_->Open(kCmdMergeSatcodx);
  EXPECT_TRUE(
      driver_->Until("the focus", [&] { return driver_->Focused() == GetDlgItem(box, IDC_MERGE_FILES); }));
  driver_->Press(box, IDCANCEL);
  End();
}

}  // namespace

}  // namespace vexa
