// A running editor over a small database, and the ways by which its dialogs are worked from outside.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/bin_file.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/ui/driver.h"
#include "ui/controls/windows_api.h"

namespace vexa {

class EditorTest : public testing::Test {
 protected:
  // A satellite "Zeta" with two carriers, "Low" with the services "Cap", "ant", "Bee", then "High" with
  // "Bee"; a satellite "Alpha" without. Program numbers 3, 2, 1; video PIDs from 255 up; no other PID.
  Path PutSample(const std::string& name = "sample.bin") {
    Document document = NewDocument();
    StaticDatabase& database = *document.sdbs[0].database;
    database.lnb_count = 1;
    for (const char* satellite : {"Zeta", "Alpha"}) AddTestSatellite(database, satellite)->record.angle = 192;
    for (const char* carrier : {"Low", "High"}) SetName(AddTestCarrier(database, 0)->record.name, carrier);
    uint16_t number = 3;
    for (const char* service : {"Cap", "ant", "Bee", "Bee"}) {
      Service* added = AddTestService(database, database.carriers[database.services.size() / 3]);
      SetName(added->record.name, service);
      added->record.program_number = number == 0 ? uint16_t{1} : number;
      added->record.video_pid = (255u + 3 - number) & 0x3FFF;
      added->record.audio_pid = added->record.pcr_pid = kNoPid;
      number = static_cast<uint16_t>(number - 1);
    }
    const auto bytes = BuildBin(recorder_.context, document, {}, {});
    const Path path = recorder_.context.temporary_folder / name;
    EXPECT_TRUE(bytes.has_value());
    if (bytes) PutFile(path, *bytes);
    return path;
  }

  void Start(std::vector<std::wstring> arguments = {L"--test-mode"}, const Path& file = {}) {
    if (!file.empty()) arguments.push_back(file.native());
    driver_.reset();
    driver_ = std::make_unique<EditorDriver>(EditorProgram(), arguments);
    ASSERT_TRUE(driver_->WaitForFrame());
    if (file.empty()) return;
    ASSERT_TRUE(driver_->Until("the database window", [&] { return driver_->Children().size() == 1; }));
    ASSERT_TRUE(driver_->Answers());
  }
  void StartWithSample() { Start({L"--test-mode"}, PutSample()); }
  bool SelectLow() { return driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low"}); }

  static LRESULT Send(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
    DWORD_PTR result = 0;
    EXPECT_TRUE(SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, kAnswerTime, &result));
    return static_cast<LRESULT>(result);
  }
  static void Type(HWND box, int id, const std::string& text) {
    const std::wstring wide = Wide(text);
    Send(GetDlgItem(box, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(wide.c_str()));
  }
  std::string Shown(HWND box, int id) { return driver_->Title(GetDlgItem(box, id)); }
  static void Pick(HWND box, int id, int entry) {
    HWND control = GetDlgItem(box, id);
    Send(control, CB_SETCURSEL, static_cast<WPARAM>(entry));
    Send(box, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(control));
  }
  static bool Enabled(HWND box, int id) { return IsWindowEnabled(GetDlgItem(box, id)) != 0; }
  // A push of a button that may show another box; not waited for.
  static void Push(HWND box, int id) {
    PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(id), reinterpret_cast<LPARAM>(GetDlgItem(box, id)));
  }
  // A key that the program's message loop sees first.
  static void PostKey(HWND control, unsigned key) { PostMessageW(control, WM_KEYDOWN, key, 1); }
  // The dialog or message box that stands over `dialog`.
  HWND BoxOver(HWND dialog) {
    HWND box = nullptr;
    const bool there = driver_->Until("a box over the dialog", [&] {
      for (box = nullptr; (box = FindWindowExW(nullptr, box, L"#32770", nullptr)) != nullptr;) {
        if (GetWindow(box, GW_OWNER) == dialog && IsWindowVisible(box)) return true;
      }
      return false;
    });
    if (!there) throw std::runtime_error("no box over the dialog");
    return box;
  }
  // Answers a message over `dialog`; its text.
  std::string AnswerOver(HWND dialog, int button = IDOK) {
    HWND box = BoxOver(dialog);
    const std::string text = driver_->MessageText(box);
    driver_->Press(box, button);
    return text;
  }
  HWND Tree() { return FindWindowExW(driver_->ActiveChild(), nullptr, WC_TREEVIEWW, nullptr); }
  static POINT Middle(const RECT& place) {
    return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
  }
  HWND List() { return FindWindowExW(driver_->ActiveChild(), nullptr, WC_LISTVIEWW, nullptr); }
  int SelectedRow() {
    return static_cast<int>(Send(List(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
  }
  std::vector<std::string> Column(int column) {
    std::vector<std::string> cells;
    for (int i = 0; i < driver_->ListCount(); ++i) cells.push_back(driver_->Cell(i, column));
    return cells;
  }
  std::string Caption() { return driver_->Title(driver_->Children().at(0)); }
  void End() {
    driver_->Close();
    EXPECT_EQ(driver_->ExitCode(), 0u);
  }

  Recorder recorder_;
  std::unique_ptr<EditorDriver> driver_;
};

}  // namespace vexa
