// Copies of receivers, sets of options and the window "Production" as their user meets them. The tests of the
// line need the ports of tests/ui/line/run.sh.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "config/settings.h"
#include "import/csv.h"
#include "tests/ui/editor_fixture.h"
#include "tests/ui/test_key.h"
#include "ui/forms/options_resource.h"
#include "ui/line/transfer_resource.h"
#include "view/command_table.h"
#include "view/upload_steps.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Receivers : public EditorTest {
 protected:
  // With settings of the test's own, and the sample open.
  void StartKept() {
    key_.Set(kTransferKey, L"CopyFolder", copies_.native());
    Start({key_.mode}, PutSample());
  }
  void AwaitVerdict(HWND box, const std::string& start) {
    EXPECT_TRUE(driver_->Until("the verdict", [&] {
      return Shown(box, IDC_PRODUCTION_VERDICT).starts_with(start);
    })) << Shown(box, IDC_PRODUCTION_VERDICT);
  }
  void Press(unsigned key) {
    PostMessageW(driver_->Focused(), WM_KEYDOWN, key, 1);
    EXPECT_TRUE(driver_->HasCaughtUp());
  }
  // The controls that Tab goes through from the one with the focus on.
  std::vector<int> TabOrder(size_t count) {
    std::vector<int> order;
    for (size_t i = 0; i < count; ++i) {
      Press(VK_TAB);
      order.push_back(GetDlgCtrlID(driver_->Focused()));
    }
    return order;
  }
  static bool Ticked(HWND box, int id) { return Send(GetDlgItem(box, id), BM_GETCHECK) == BST_CHECKED; }
  static void Click(HWND box, int id) { Send(GetDlgItem(box, id), BM_CLICK); }
  void AwaitEnd(HWND box, double seconds = 120) {
    driver_->Until(
        "the end of the dialog", [&] { return !IsWindow(box); }, seconds);
  }
  // The title of the next transfer dialog, whose end is awaited.
  std::string Transfer(const char* title) {
    HWND box = driver_->WaitForBox(title);
    const std::string shown = driver_->Title(box);
    AwaitEnd(box);
    return shown;
  }
  std::string Outcome() {
    return driver_->Title(FindWindowExW(driver_->frame(), nullptr, STATUSCLASSNAMEW, nullptr));
  }
  size_t CopyFiles() {
    size_t count = 0;
    for (const auto& file : std::filesystem::directory_iterator(copies_)) count += file.is_regular_file();
    return count;
  }
  const TestKey key_;
  const Path copies_ = recorder_.context.temporary_folder / "copies";
};

class ReceiverLine : public Receivers {
 protected:
  void SetUp() override {
    if (!std::getenv("VEXA_TEST_LINE")) GTEST_SKIP() << "no receiver at COM1";
  }
};

TEST_F(Receivers, SetsAreSavedTakenAndDeletedInTheSettings) {
  StartKept();
  HWND box = driver_->Open(kCmdSettings, "Settings");
  Type(box, IDC_SETTINGS_PORT, "COM4");
  Pick(box, IDC_SETTINGS_CONFIGURATION, 1);
  Pick(box, IDC_SETTINGS_BAUD, 3);
  Push(box, IDC_SETTINGS_SET_SAVE);
  EXPECT_EQ(AnswerOver(box), "The name of a set has 1 to 40 characters.");
  Type(box, IDC_SETTINGS_SET, " Bench 1 ");
  Click(box, IDC_SETTINGS_SET_SAVE);
  driver_->Press(box, IDCANCEL);
  ASSERT_TRUE(driver_->Answers());

  box = driver_->Open(kCmdSettings, "Settings");
  HWND sets = GetDlgItem(box, IDC_SETTINGS_SET);
  ASSERT_EQ(Send(sets, CB_GETCOUNT), 1) << "kept, though the dialog was cancelled";
  EXPECT_EQ(Shown(box, IDC_SETTINGS_PORT), "COM1");
  Pick(box, IDC_SETTINGS_SET, 0);
  EXPECT_EQ(Shown(box, IDC_SETTINGS_PORT), "COM4");
  EXPECT_EQ(Send(GetDlgItem(box, IDC_SETTINGS_CONFIGURATION), CB_GETCURSEL), 1);
  EXPECT_EQ(Send(GetDlgItem(box, IDC_SETTINGS_BAUD), CB_GETCURSEL), 3);
  Type(box, IDC_SETTINGS_COPIES, "C:\\copies");
  driver_->Press(box, IDOK);
  ASSERT_TRUE(driver_->Answers());

  box = driver_->Open(kCmdSettings, "Settings");
  EXPECT_EQ(Shown(box, IDC_SETTINGS_PORT), "COM4");
  EXPECT_EQ(Shown(box, IDC_SETTINGS_COPIES), "C:\\copies");
  Push(box, IDC_SETTINGS_SET_DELETE);
  EXPECT_EQ(AnswerOver(box), "Choose the set that is to be deleted.");
  sets = GetDlgItem(box, IDC_SETTINGS_SET);
  Send(sets, CB_SETCURSEL, 0);
  Click(box, IDC_SETTINGS_SET_DELETE);
  EXPECT_EQ(Send(sets, CB_GETCOUNT), 0);
  driver_->Press(box, IDCANCEL);
  End();
}

TEST_F(Receivers, RestoreRefusesWhatIsNoWholeCopy) {
  std::filesystem::create_directory(copies_);
  PutFile(copies_ / "20240506-070809-A.bin", BytesOf("damaged"));
  PutFile(copies_ / "20240507-070809-1.raw", Bytes(3000));
  StartKept();
  HWND box = driver_->Open(kCmdRestore, "Restore");
  EXPECT_THAT(Shown(box, IDC_RESTORE_COUNT), StartsWith("2 copies in "));
  HWND list = GetDlgItem(box, IDC_RESTORE_LIST);
  ASSERT_EQ(driver_->RowsOf(list), 2);
  EXPECT_EQ(driver_->CellOf(list, 0, 0), "2024-05-07") << "the newest first";
  EXPECT_EQ(driver_->CellOf(list, 0, 6), "3 KB");
  EXPECT_EQ(driver_->CellOf(list, 0, 7), "Half a copy: its file .bin is missing.");
  EXPECT_EQ(driver_->CellOf(list, 1, 2), "A");
  EXPECT_EQ(GetDlgCtrlID(driver_->Focused()), IDC_RESTORE_LIST);
  EXPECT_THAT(TabOrder(7), ElementsAre(IDC_RESTORE_VERIFY, IDC_RESTORE_COPY, IDHELP, IDOK, IDCANCEL,
                                       IDC_RESTORE_FOLDER, IDC_RESTORE_LIST));
  Push(box, IDOK);
  HWND refusal = BoxOver(box);
  EXPECT_EQ(driver_->MessageText(refusal), "This copy cannot be sent back.");
  EXPECT_EQ(driver_->MessageDetail(refusal), "Half a copy: its file .bin is missing.");
  driver_->Press(refusal, IDOK);
  driver_->Press(box, IDCANCEL);
  End();
}

TEST_F(ReceiverLine, WhatTheReceiverHeldIsKeptAndGoesBack) {
  StartKept();
  HWND box = driver_->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(box, IDC_TRANSFER_SET))) << "there are no sets";
  EXPECT_FALSE(Ticked(box, IDC_TRANSFER_COPY));
  EXPECT_THAT(TabOrder(4), ElementsAre(IDHELP, IDC_TRANSFER_VERIFY, IDC_TRANSFER_COPY, IDCANCEL));
  driver_->Until("packets", [&] { return Send(GetDlgItem(box, IDC_TRANSFER_BAR), PBM_GETPOS) > 2; });
  Click(box, IDC_TRANSFER_COPY);
  EXPECT_TRUE(IsWindow(box)) << "the receiver is being written";
  EXPECT_EQ(Shown(box, IDC_TRANSFER_COPY), CopyBoxText(false, true));
  AwaitEnd(box);
  EXPECT_FALSE(std::filesystem::exists(copies_));

  // Another database with a copy before it and a comparison behind it.
  driver_->Command(kCmdNew);
  driver_->Command(kCmdClose);
  box = driver_->Open(kCmdUploadAdb, kKeepingCopy);
  EXPECT_FALSE(IsWindowVisible(GetDlgItem(box, IDC_TRANSFER_COPY)));
  driver_->Until("its bar", [&] { return Send(GetDlgItem(box, IDC_TRANSFER_BAR), PBM_GETPOS) > 2; });
  AwaitEnd(box);
  box = driver_->WaitForBox("Transfer Data ( PC to STB )");
  EXPECT_EQ(CopyFiles(), 2u) << "kept before anything is sent";
  EXPECT_EQ(Shown(box, IDC_TRANSFER_COPY), CopyBoxText(true, false));
  Click(box, IDC_TRANSFER_COPY);
  AwaitEnd(box);

  PutFile(copies_ / "20240506-070809.bin", BytesOf("damaged"));
  box = driver_->Open(kCmdRestore, "Restore");
  HWND list = GetDlgItem(box, IDC_RESTORE_LIST);
  ASSERT_EQ(driver_->RowsOf(list), 2);
  std::vector<std::string> cells;
  for (const int column : {3, 4, 5, 7}) cells.push_back(driver_->CellOf(list, 0, column));
  EXPECT_THAT(cells, ElementsAre("2", "2", "4", "Whole"));
  Click(box, IDC_RESTORE_VERIFY);
  Push(box, IDOK);
  EXPECT_EQ(Transfer("Transfer Data ( PC to STB )"), "Transfer Data ( PC to STB )");
  EXPECT_EQ(Transfer("Verifying"), "Verifying");
  EXPECT_THAT(Outcome(),
              testing::MatchesRegex("ADB upload completed.   .* packets   .* s   Verification - Success"));
  EXPECT_EQ(driver_->FindBox(), nullptr);
  End();
}

TEST_F(ReceiverLine, NothingIsSentWhenTheCopyIsCancelledOrCannotBeKept) {
  key_.Set(kTransferKey, L"KeepCopies", L"1");
  StartKept();
  HWND box = driver_->Open(kCmdUploadAdb, kKeepingCopy);
  driver_->Click(GetDlgItem(box, IDCANCEL), {5, 5});
  EXPECT_EQ(driver_->Answer(IDOK), kNothingSent);
  EXPECT_TRUE(driver_->HasCaughtUp());
  EXPECT_EQ(driver_->FindBox(), nullptr) << "no upload";
  EXPECT_EQ(CopyFiles(), 0u);
  std::filesystem::remove(copies_);
  PutFile(copies_, {});  // a file in the folder's place
  driver_->Command(kCmdUploadAdb);
  EXPECT_THAT(driver_->Answer(IDOK), StartsWith("No copy can be kept in "));
  EXPECT_EQ(driver_->Answer(IDOK), kNothingSent);
  EXPECT_EQ(driver_->FindBox(), nullptr);
  End();
}

// While nobody answers, the box for a copy and the sets change the upload that has begun.
TEST_F(ReceiverLine, AnUploadThatNobodyAnsweredBeginsAnewAsTheUserWants) {
  key_.Set(kPortSettingsKey, L"Port", L"COM3");
  StartKept();
  HWND box = driver_->Open(kCmdSettings, "Settings");
  Type(box, IDC_SETTINGS_PORT, "COM1");
  Type(box, IDC_SETTINGS_SET, "Bench 1");
  Click(box, IDC_SETTINGS_SET_SAVE);
  driver_->Press(box, IDCANCEL);
  box = driver_->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
  HWND sets = GetDlgItem(box, IDC_TRANSFER_SET);
  EXPECT_TRUE(IsWindowVisible(sets));
  PostMessageW(GetDlgItem(box, IDC_TRANSFER_COPY), BM_CLICK, 0, 0);
  HWND copy = driver_->WaitForBox(kKeepingCopy);
  driver_->Click(GetDlgItem(copy, IDCANCEL), {5, 5});
  EXPECT_EQ(driver_->Answer(IDOK), kNothingSent);

  box = driver_->Open(kCmdRestore, "Restore");
  Click(box, IDC_RESTORE_COPY);  // not with the next one
  driver_->Press(box, IDCANCEL);
  box = driver_->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
  sets = GetDlgItem(box, IDC_TRANSFER_SET);
  EXPECT_EQ(Send(sets, CB_GETCOUNT), 1);
  Send(sets, CB_SETCURSEL, 0);
  PostMessageW(box, WM_COMMAND, MAKEWPARAM(IDC_TRANSFER_SET, CBN_SELCHANGE), reinterpret_cast<LPARAM>(sets));
  AwaitEnd(box);
  EXPECT_EQ(Transfer("Transfer Data ( PC to STB )"), "Transfer Data ( PC to STB )");
  EXPECT_THAT(Outcome(), StartsWith("ADB upload completed.")) << "at the port of the set";
  End();
}

// A scanner types wherever the keyboard is, its letters being no access keys.
TEST_F(Receivers, InProductionAScanArrivesWhateverWasClicked) {
  key_.Set(kProductionKey, L"Set", L"Gone");
  StartKept();
  HWND box = driver_->Open(kCmdProduction, "Production");
  for (const int id : {IDC_PRODUCTION_COPY, IDC_PRODUCTION_PLACES, IDC_PRODUCTION_SET,
                       IDC_PRODUCTION_LOG_BROWSE, IDOK, IDCANCEL}) {
    Send(box, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(box, id)), TRUE);
    for (const char c : std::string("Ck-7")) {
      PostMessageW(driver_->Focused(), WM_CHAR, static_cast<WPARAM>(c), 1);
      ASSERT_TRUE(driver_->HasCaughtUp()) << id;
    }
    ASSERT_EQ(driver_->FindBox(), box) << id;
    EXPECT_EQ(Shown(box, IDC_PRODUCTION_SERIAL), "Ck-7") << id;
    EXPECT_FALSE(Ticked(box, IDC_PRODUCTION_COPY)) << id;
  }
  EXPECT_EQ(Send(GetDlgItem(box, IDC_PRODUCTION_SET), CB_GETCURSEL), CB_ERR) << "the set is gone";
  EXPECT_EQ(Shown(box, IDC_PRODUCTION_CONFIGURATION), "");
  // A refusal is no box that the next scan would close, and that scan takes the refused number's place.
  Push(box, IDOK);
  AwaitVerdict(box, "NOT BEGUN\nChoose a set, or \"As in Settings\".");
  EXPECT_EQ(GetDlgCtrlID(driver_->Focused()), IDC_PRODUCTION_SERIAL);
  PostMessageW(driver_->Focused(), WM_CHAR, 'X', 1);
  ASSERT_TRUE(driver_->HasCaughtUp());
  EXPECT_EQ(Shown(box, IDC_PRODUCTION_SERIAL), "X");
  driver_->Press(box, IDCANCEL);
  End();
}

TEST_F(Receivers, ProductionRefusesWhatItsWindowHasNotSaved) {
  StartKept();
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta"}));
  driver_->Command(kCmdDelete);
  HWND box = driver_->Open(kCmdProduction, "Production");
  Type(box, IDC_PRODUCTION_SERIAL, "S1");
  Push(box, IDOK);
  AwaitVerdict(box, "NOT BEGUN\nThe database is open and has changes");
  driver_->Press(box, IDCANCEL);
  driver_->Command(kCmdUndo);
  End();
}

constexpr int kProductionTabs[] = {IDOK,
                                   IDHELP,
                                   IDCANCEL,
                                   IDC_PRODUCTION_DATABASE,
                                   IDC_PRODUCTION_DATABASE_BROWSE,
                                   IDC_PRODUCTION_SDB,
                                   IDC_PRODUCTION_SET,
                                   IDC_PRODUCTION_LOG,
                                   IDC_PRODUCTION_LOG_BROWSE,
                                   IDC_PRODUCTION_COPY,
                                   IDC_PRODUCTION_PLACES,
                                   IDC_PRODUCTION_SERIAL,
                                   IDOK};

// Two ports side by side; the receiver at one of them goes half way.
TEST_F(ReceiverLine, ProductionServesOneReceiverAfterTheOther) {
  const Path log = recorder_.context.temporary_folder / "log.csv";
  StartKept();
  HWND box = driver_->Open(kCmdProduction, "Production");
  HWND list = GetDlgItem(box, IDC_PRODUCTION_PLACES);
  EXPECT_THAT(Shown(box, IDC_PRODUCTION_DATABASE), HasSubstr("sample.bin"));
  EXPECT_EQ(GetDlgCtrlID(driver_->Focused()), IDC_PRODUCTION_SERIAL);
  EXPECT_THAT(TabOrder(13), testing::ElementsAreArray(kProductionTabs));
  Type(box, IDC_PRODUCTION_LOG, Utf8FromPath(log));
  EXPECT_TRUE(driver_->IsTicked(list, 0) && !driver_->IsTicked(list, 1));
  driver_->Tick(list, 1);
  driver_->GoTo(list, 0);
  EXPECT_EQ(Shown(box, IDC_PRODUCTION_SERIAL_TITLE), "Serial &number for COM1");
  const auto scan = [&](const std::string& serial) {
    Send(box, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(box, IDC_PRODUCTION_SERIAL)), TRUE);
    Type(box, IDC_PRODUCTION_SERIAL, serial);
    Press(VK_RETURN);
  };
  const auto verdict = [&](int row) { return driver_->CellOf(list, row, 2); };
  scan("A-1");
  EXPECT_EQ(Shown(box, IDC_PRODUCTION_SERIAL_TITLE), "Serial &number for COM2") << "the next free one";
  EXPECT_EQ(Shown(box, IDC_PRODUCTION_SERIAL), "");
  EXPECT_FALSE(Enabled(box, IDC_PRODUCTION_DATABASE)) << "while something is at work";
  scan("B-1");
  driver_->Until("work at the second port", [&] { return verdict(1).starts_with("Uploading "); });
  std::ofstream{PathFromUtf8(std::getenv("VEXA_TEST_END2"))};
  driver_->Until(
      "the verdicts", [&] { return verdict(0).starts_with("OK: ") && verdict(1).starts_with("FAILED: "); },
      120);
  EXPECT_THAT(verdict(1), HasSubstr("The receiver may hold a part of the data"));
  driver_->Until("the fields", [&] { return Enabled(box, IDC_PRODUCTION_DATABASE); });
  EXPECT_EQ(Shown(box, IDC_PRODUCTION_COUNT), "1 OK, 1 failed");
  driver_->GoTo(list, 0);
  scan("A-2");
  scan("");
  driver_->Until(
      "the second verdict", [&] { return driver_->CellOf(list, 0, 3) == "2"; }, 120);
  EXPECT_EQ(driver_->FindBox(), box) << "no boxes over it";
  driver_->GoTo(list, 0);
  scan("A-3");
  driver_->GoTo(list, 0);
  HWND stop = GetDlgItem(box, IDC_PRODUCTION_STOP);
  Send(box, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(stop), TRUE);
  Send(stop, BM_CLICK);
  driver_->Until("the stop", [&] { return verdict(0).starts_with("STOPPED: ") && !IsWindowEnabled(stop); });
  EXPECT_EQ(GetDlgCtrlID(driver_->Focused()), IDC_PRODUCTION_SERIAL) << "where the next scan goes";
  driver_->Press(box, IDCANCEL);
  End();
  const Bytes bytes = ReadWholeFile(log).value_or(Bytes{});
  std::vector<std::string> rows;
  for (const CsvRow& row : ParseCsv(std::string(bytes.begin(), bytes.end())))
    rows.push_back(row.cells[1] + " " + row.cells[8] + " " + row.cells[9]);
  std::sort(rows.begin(), rows.end());
  EXPECT_THAT(rows, ElementsAre("A-1 yes ok", "A-2 yes ok", "A-3  cancelled", "B-1  failed",
                                "serial verified result"));
}

}  // namespace

}  // namespace vexa
