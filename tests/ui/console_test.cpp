// The uploader console as its user meets it. The tests of the line run against a simulated receiver at COM1
// when VEXA_TEST_LINE says that there is one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <memory>

#include "config/settings.h"
#include "core/messages.h"
#include "image/transfer_files.h"
#include "image/urt.h"
#include "tests/support/recorder.h"
#include "tests/ui/driver.h"
#include "tests/ui/test_key.h"
#include "ui/controls/windows_api.h"
#include "ui/frame/test_mode.h"
#include "ui/line/console_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::HasSubstr;

constexpr const char* kTitle = "Vexa Editor " VEXA_VERSION;

class ConsoleUi : public testing::Test {
 protected:
  void Start(const std::wstring& mode = L"--test-mode") {
    editor_ = std::make_unique<EditorDriver>(EditorProgram(), std::vector<std::wstring>{mode});
    ASSERT_TRUE(editor_->WaitForFrame());
    editor_->Command(kCmdPortload);
    console_ = editor_->ActiveChild();
    wchar_t name[64] = L"";
    GetClassNameW(console_, name, 64);
    ASSERT_EQ(Utf8(name), "PortloadChild");
    panel_ = FindWindowExW(console_, nullptr, L"#32770", nullptr);
    ASSERT_NE(panel_, nullptr);
  }
  LRESULT Send(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
    DWORD_PTR result = 0;
    EXPECT_TRUE(SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, 15000, &result));
    return static_cast<LRESULT>(result);
  }
  std::string Panel(int id) { return editor_->Title(GetDlgItem(panel_, id)); }
  std::string Log() {
    HWND log = GetDlgItem(console_, IDC_CONSOLE_LOG);
    std::wstring text(static_cast<size_t>(Send(log, WM_GETTEXTLENGTH)) + 1, L'\0');
    const auto length = Send(log, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(length));
    return Utf8(text);
  }
  bool Enabled(int id) { return IsWindowEnabled(GetDlgItem(panel_, id)) != 0; }
  MenuLine Item(unsigned id) {
    for (const MenuLine& line : editor_->Menus()) {
      if (line.id == id) return line;
    }
    ADD_FAILURE() << "no menu item " << id;
    return {};
  }
  std::string Told(const std::string& title, int button) {
    HWND box = editor_->WaitForBox(title);
    const std::string text = editor_->MessageText(box);
    editor_->Press(box, button);
    return text;
  }
  void Type(const std::string& text) {
    HWND line = GetDlgItem(console_, IDC_CONSOLE_LINE);
    for (const char character : text) PostMessageW(line, WM_CHAR, static_cast<WPARAM>(character), 0);
    EXPECT_TRUE(editor_->Answers());
  }
  std::string Line() { return editor_->Title(GetDlgItem(console_, IDC_CONSOLE_LINE)); }
  void ExpectCleanEnd() {
    const Path folder = editor_->TemporaryFolder();
    editor_->Close();
    EXPECT_EQ(editor_->ExitCode(), 0u);
    EXPECT_FALSE(std::filesystem::exists(folder)) << "the temporary folder is left behind";
  }
  Path Folder() { return recorder_.context.temporary_folder; }

  Recorder recorder_;
  std::unique_ptr<EditorDriver> editor_;
  HWND console_ = nullptr, panel_ = nullptr;
};

TEST_F(ConsoleUi, OpensOnceWithItsMenuPanelAndLog) {
  Start();
  const Path log = editor_->TemporaryFolder() / kConsoleLogFile;
  EXPECT_TRUE(std::filesystem::exists(log));
  EXPECT_EQ(Panel(IDC_CONSOLE_PORT), PortStatusText(ProjectConfig{}));
  EXPECT_EQ(Panel(IDC_CONSOLE_STATE), "Disconnected");
  EXPECT_FALSE(Enabled(IDC_CONSOLE_UPLOAD));
  EXPECT_FALSE(Enabled(IDC_CONSOLE_CANCEL));
  EXPECT_EQ(Item(kCmdConnect).text, "Connec&t|F10");
  EXPECT_FALSE(Item(kCmdConnect).greyed);
  EXPECT_TRUE(Item(kCmdConsoleUpload).greyed);
  EXPECT_TRUE(Item(kCmdConsoleCancel).greyed);
  EXPECT_TRUE(Item(kCmdConsoleSendCr).checked);
  editor_->Command(kCmdPortload);  // a second time: nothing
  HWND client = FindWindowExW(editor_->frame(), nullptr, L"MDIClient", nullptr);
  EXPECT_EQ(FindWindowExW(client, console_, L"PortloadChild", nullptr), nullptr);
  EXPECT_EQ(editor_->ActiveChild(), console_);
  // Closing always asks; Cancel keeps it.
  editor_->Command(kCmdConsoleClose);
  EXPECT_EQ(Told(kTitle, IDCANCEL), "Do you want to close application ?");
  EXPECT_TRUE(IsWindow(console_));
  editor_->Command(kCmdConsoleClose);
  EXPECT_EQ(Told(kTitle, IDOK), "Do you want to close application ?");
  editor_->Until("the console to go", [&] { return !IsWindow(console_); });
  EXPECT_FALSE(std::filesystem::exists(log));
  ExpectCleanEnd();
}

TEST_F(ConsoleUi, CommandLineComesAndGoesAndTheLogKeepsItsHeight) {
  Start();
  HWND line = GetDlgItem(console_, IDC_CONSOLE_LINE), log = GetDlgItem(console_, IDC_CONSOLE_LOG);
  const auto height = [&] {
    RECT area{};
    GetWindowRect(log, &area);
    return area.bottom - area.top;
  };
  EXPECT_GE(height(), 418);
  for (const bool shown : {false, true}) {
    Send(GetDlgItem(panel_, IDC_CONSOLE_COMMAND), BM_CLICK);
    EXPECT_EQ(IsWindowVisible(line) != 0, shown);
    EXPECT_GE(height(), 418);
  }
  SetWindowPos(console_, nullptr, 0, 0, 300, 100, SWP_NOMOVE | SWP_NOZORDER);
  EXPECT_TRUE(editor_->Answers());
  EXPECT_GE(height(), 418);
  ExpectCleanEnd();
}

TEST_F(ConsoleUi, OptionsAreTickedAndAMissingTextIsTold) {
  Start();
  for (const unsigned id : {kCmdConsoleHexadecimalView, kCmdConsoleHexadecimalInput, kCmdConsoleTimeStamps,
                            kCmdConsoleReconnect}) {
    EXPECT_FALSE(Item(id).checked) << id;
    editor_->Command(id);
    EXPECT_TRUE(Item(id).checked) << id;
  }
  editor_->Command(kCmdConsoleSendLf);
  EXPECT_TRUE(Item(kCmdConsoleSendLf).checked);
  EXPECT_FALSE(Item(kCmdConsoleSendCr).checked);
  editor_->Command(kCmdFind);  // the key of both
  HWND dialog = editor_->WaitForBox("Find in Log");
  Send(GetDlgItem(dialog, IDC_CONSOLE_FIND_TEXT), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"absent"));
  PostMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
  EXPECT_EQ(Told(kTitle, IDOK), "\"absent\" is not in the log.");
  editor_->Arrange(kFillLog, 3);
  ASSERT_TRUE(editor_->Until("the log", [&] { return !Log().empty(); }));
  Send(GetDlgItem(dialog, IDC_CONSOLE_FIND_TEXT), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"LINE 2"));
  Send(GetDlgItem(dialog, IDC_CONSOLE_FIND_CASE), BM_CLICK);
  PostMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
  EXPECT_EQ(Told(kTitle, IDOK), "\"LINE 2\" is not in the log.");
  Send(GetDlgItem(dialog, IDC_CONSOLE_FIND_CASE), BM_CLICK);
  PostMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
  ASSERT_TRUE(editor_->HasCaughtUp());
  EXPECT_EQ(editor_->FindBox(kTitle), nullptr);
  Send(GetDlgItem(dialog, IDC_CONSOLE_FIND_TEXT), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"absent"));
  PostMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
  EXPECT_EQ(Told(kTitle, IDOK), "\"absent\" is not in the log.");
  editor_->Press(dialog, IDCANCEL);
  // The key that finds again works in every control of the console.
  for (const int id : {IDC_CONSOLE_LOG, IDC_CONSOLE_LINE}) {
    PostMessageW(GetDlgItem(console_, id), WM_KEYDOWN, VK_F3, 0);
    EXPECT_EQ(Told(kTitle, IDOK), "\"absent\" is not in the log.");
  }
  ExpectCleanEnd();
}

// The last line of the log stands in the view.
TEST_F(ConsoleUi, LogFollowsAfterClearAndAfterMoreThanTheViewHolds) {
  Start();
  HWND log = GetDlgItem(console_, IDC_CONSOLE_LOG);
  const auto follows = [&](const std::string& line) {
    return editor_->Until(line + " in sight", [&] {
      if (!Log().ends_with(line + "\r\n")) return false;
      RECT area{};
      GetClientRect(log, &area);
      const auto first = Send(log, EM_GETFIRSTVISIBLELINE), last = Send(log, EM_GETLINECOUNT) - 1;
      const auto length = Send(log, WM_GETTEXTLENGTH);
      // A view holds some 20 lines at least and 200 at most.
      return length < 30 || (last - first >= 5 && last - first < 200);
    });
  };
  editor_->Arrange(kFillLog, 500);
  EXPECT_TRUE(follows("Line 500 of many"));
  for (int round = 0; round < 2; ++round) {
    editor_->Command(kCmdConsoleClear);
    ASSERT_TRUE(editor_->Until("an empty log", [&] { return Log().empty(); }));
    editor_->Arrange(kFillLog, 300);
    EXPECT_TRUE(follows("Line 300 of many"));
  }
  // Some 1.4 MB, which is more than waits for the view and more than it keeps.
  for (int i = 0; i < 5; ++i) editor_->Arrange(kFillLog, 15000);
  EXPECT_TRUE(follows("Line 15000 of many"));
  EXPECT_GT(Log().size(), 100000u);
  EXPECT_TRUE(GetWindowLongPtrW(log, GWL_STYLE) & WS_VSCROLL);
  ExpectCleanEnd();
}

TEST_F(ConsoleUi, SelectedPartsOfTheLogAreCopied) {
  Start();
  editor_->Arrange(kFillLog, 3);
  ASSERT_TRUE(editor_->Until("the log", [&] { return !Log().empty(); }));
  EXPECT_TRUE(Item(kCmdConsoleCopy).greyed) << "nothing is selected";
  editor_->Command(kCmdConsoleSelectAll);
  EXPECT_FALSE(Item(kCmdConsoleCopy).greyed);
  editor_->Command(kCmdConsoleCopy);
  std::string copied;
  editor_->Until("the clipboard", [&] {
    if (!OpenClipboard(nullptr)) return false;
    const HANDLE data = GetClipboardData(CF_UNICODETEXT);
    if (const auto* text = data ? static_cast<const wchar_t*>(GlobalLock(data)) : nullptr) {
      copied = Utf8(text);
      GlobalUnlock(data);
    }
    CloseClipboard();
    return !copied.empty();
  });
  EXPECT_EQ(copied, "Line 1 of many\r\nLine 2 of many\r\nLine 3 of many\r\n");
  ExpectCleanEnd();
}

TEST_F(ConsoleUi, OptionsComeBackInALaterRun) {
  const TestKey key;
  for (const bool second : {false, true}) {
    Start(key.mode);
    for (const unsigned id :
         {kCmdConsoleHexadecimalView, kCmdConsoleTimeStamps, kCmdConsoleReconnect, kCmdConsoleSendCrLf}) {
      EXPECT_EQ(Item(id).checked, second) << id;
      if (!second) editor_->Command(id);
    }
    EXPECT_FALSE(Item(kCmdConsoleHexadecimalInput).checked);
    ExpectCleanEnd();
    editor_.reset();
  }
}

TEST_F(ConsoleUi, OpensAtItsPlaceAndGivesTheDatabaseWindowsTheirSizeBack) {
  editor_ = std::make_unique<EditorDriver>(EditorProgram());
  ASSERT_TRUE(editor_->WaitForFrame());
  for (const bool maximised : {true, false}) {
    editor_->Command(kCmdNew);
    HWND database = editor_->ActiveChild();
    HWND client = GetParent(database);
    if (!maximised) Send(client, WM_MDIRESTORE, reinterpret_cast<WPARAM>(database));
    ASSERT_EQ(IsZoomed(database) != 0, maximised);
    editor_->Command(kCmdPortload);
    HWND console = editor_->ActiveChild();
    EXPECT_FALSE(IsZoomed(console));
    RECT place{};
    GetWindowRect(console, &place);
    MapWindowPoints(nullptr, client, reinterpret_cast<POINT*>(&place), 2);
    EXPECT_EQ(place.left, 50);
    EXPECT_EQ(place.top, 50);
    RECT room{};
    GetClientRect(client, &room);
    EXPECT_LE(place.bottom, room.bottom) << "its buttons are in sight";
    editor_->Command(kCmdConsoleClose);
    EXPECT_EQ(Told(kTitle, IDOK), "Do you want to close application ?");
    ASSERT_TRUE(editor_->Until("the console to go", [&] { return !IsWindow(console); }));
    EXPECT_TRUE(editor_->HasCaughtUp());
    EXPECT_EQ(IsZoomed(database) != 0, maximised);
    editor_->Command(kCmdClose);
  }
  ExpectCleanEnd();
}

// --- against the simulated receiver ---

class ConsoleLine : public ConsoleUi {
 protected:
  void SetUp() override {
    if (!std::getenv("VEXA_TEST_LINE")) GTEST_SKIP() << "no receiver at COM1";
    Start();
    editor_->Command(kCmdConnect);
    ASSERT_TRUE(editor_->Until("the connection", [&] { return Panel(IDC_CONSOLE_STATE) == "Connected"; }));
  }
  // A URT file with so many bytes of data.
  Path MakeUrt(size_t size) {
    const Path image = Folder() / "image.bin", urt = Folder() / "image.urt";
    Bytes content(size);
    for (size_t i = 0; i < size; ++i) content[i] = static_cast<uint8_t>(i * 7 + i / 256);
    PutFile(image, content);
    ProjectConfig config;
    config.loader = {0xF0, 0xF5, 64, 2979};
    ImageDescription description = DescribeImage(config);
    description.type = 4;
    description.kind = 3;
    description.flag = 1;
    description.name = "SDB Data";
    description.end = static_cast<uint32_t>(size + 4096);
    const auto parameters = SetConversionParameters(config, {2024, 1, 1, 0, 0, 0});
    EXPECT_EQ(ConvertToUrt(recorder_.context, parameters, description, image, urt), ConversionResult::kDone);
    return urt;
  }
  void Upload(const Path& urt) {
    editor_->Command(kCmdConsoleUpload);
    editor_->ChooseFile("Open", urt);
    editor_->Until("the upload", [&] { return Enabled(IDC_CONSOLE_CANCEL); });
  }
};

TEST_F(ConsoleLine, UploadsCancelsSavesAndClearsAndClosesWithAQuestion) {
  EXPECT_EQ(Item(kCmdConnect).text, "&Disconnect|F10");
  EXPECT_TRUE(Enabled(IDC_CONSOLE_UPLOAD));
  Type("version\r");
  PostMessageW(GetDlgItem(console_, IDC_CONSOLE_LINE), WM_KEYDOWN, VK_UP, 0);
  editor_->Until("the line sent before", [&] { return Line() == "version\r\nversion"; });
  // Of a pasted text, what is complete is sent behind what stood there already.
  Type("\rab");
  ASSERT_TRUE(OpenClipboard(nullptr));
  EmptyClipboard();
  constexpr wchar_t kPasted[] = L"cd\r\nef";
  if (HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, sizeof kPasted)) {
    std::copy(std::begin(kPasted), std::end(kPasted), static_cast<wchar_t*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    SetClipboardData(CF_UNICODETEXT, memory);
  }
  CloseClipboard();
  PostMessageW(GetDlgItem(console_, IDC_CONSOLE_LINE), WM_PASTE, 0, 0);
  editor_->Until("the rest of the text", [&] { return Line().ends_with("\r\nef"); });
  PostMessageW(GetDlgItem(console_, IDC_CONSOLE_LINE), WM_KEYDOWN, VK_UP, 0);
  editor_->Until("the pasted line", [&] { return Line().ends_with("\r\nabcd"); });
  Upload(MakeUrt(900000));
  editor_->Until("some packets", [&] { return std::atoi(Panel(IDC_CONSOLE_COUNT).c_str()) > 2; });
  editor_->Command(kCmdConsoleCancel);
  editor_->Until("the report", [&] { return Log().find("Terminated by user") != std::string::npos; });
  editor_->Until("the upload's end", [&] { return Enabled(IDC_CONSOLE_UPLOAD); });
  editor_->Command(kCmdConsoleClear);
  editor_->Until("an empty log", [&] { return Log().find("Terminated") == std::string::npos; });
  Upload(MakeUrt(20000));
  editor_->Until("the success", [&] { return Log().find("Upload Success") != std::string::npos; });
  const Path copy = Folder() / "log.txt";
  editor_->Command(kCmdConsoleSaveLog);
  editor_->ChooseFile("Save as log file", copy);
  EXPECT_EQ(Told(kTitle, IDOK), Utf8FromPath(copy) + " log file is saved successfully.");
  const auto saved = ReadWholeFile(copy);
  ASSERT_TRUE(saved.has_value());
  EXPECT_THAT(std::string(saved->begin(), saved->end()),
              HasSubstr("\r\n<========== Upload Success ==========>\r\n"));
  // The frame asks once, for a connected port only.
  editor_->Close();
  EXPECT_EQ(Told(kTitle, IDCANCEL), "Do you want to close application ?");
  EXPECT_EQ(Panel(IDC_CONSOLE_STATE), "Connected");
  editor_->Close();
  EXPECT_EQ(Told(kTitle, IDOK), "Do you want to close application ?");
  EXPECT_EQ(editor_->ExitCode(), 0u);
}

}  // namespace

}  // namespace vexa
