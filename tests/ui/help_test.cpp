// Walks through all windows and dialogs: each one shows its page of the help. With VEXA_PICTURES set to a
// folder, the pictures of the help are taken there on the way (tools/take_pictures.sh).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "config/settings.h"
#include "tests/support/data_folder.h"
#include "tests/ui/editor_fixture.h"
#include "tests/ui/picture.h"
#include "ui/controls/application.h"
#include "ui/forms/lists_resource.h"
#include "ui/forms/options_resource.h"
#include "ui/forms/records_resource.h"
#include "ui/line/console_resource.h"
#include "ui/line/transfer_resource.h"
#include "view/dialog_ids.h"
#include "view/help_pages.h"
#include "view/menu_table.h"
#include "view/upload_steps.h"

namespace vexa {

namespace {

using testing::HasSubstr;

using Labels = std::vector<std::string>;

const Labels kSatelliteLevel = {"SDB1", "Satellites"};
const Labels kFirstSatellite = {"SDB1", "Satellites", "[ 1 ] Astra 1KR 1L 1M___"};
const Labels kFirstCarrier = {"SDB1", "Satellites", "[ 1 ] Astra 1KR 1L 1M___", "[ 1 ] Carrier1_S1"};

Path PictureFolder() {
  const char* folder = std::getenv("VEXA_PICTURES");
  return folder ? PathFromUtf8(folder) : Path();
}

// A dialog that a command opens for the selected node and Cancel closes.
struct Stop {
  CommandId command;
  const char* title;
  const char* picture;
  int dialog;
  Labels node = {};  // empty: the node selected before
};

class Help : public EditorTest {
 protected:
  // The program in a folder of its own, with an empty page for each that it may show. The pictures show the
  // folder.
  void StartWithPages() {
    home_ = PictureFolder().empty() ? recorder_.context.temporary_folder / "home" : Path(L"C:\\Vexa Editor");
    std::filesystem::remove_all(home_);
    std::filesystem::create_directories(home_ / "help");
    for (const char* name : {"VexaEditor.exe", "receivers.ecf"})
      std::filesystem::copy_file(ProgramFolder() / name, home_ / name);
    for (const auto& entry : std::filesystem::directory_iterator(DataFolder().parent_path() / "help"))
      PutFile(home_ / "help" / entry.path().filename().replace_extension("html"), {});
    for (const char* name : {"list.sdx", "more.sdx"})
      std::filesystem::copy_file(DataFolder() / "sample.sdx", home_ / name);
    PutFile(home_ / "help" / "commands.html", {});
    driver_ = std::make_unique<EditorDriver>(home_ / "VexaEditor.exe");
    ASSERT_TRUE(driver_->WaitForFrame());
    if (PictureFolder().empty()) return;
    ShowWindow(driver_->frame(), SW_RESTORE);
    MoveWindow(driver_->frame(), 20, 20, 1100, 760, TRUE);
    SetCursorPos(1275, 955);  // no tip of what it points at
    ASSERT_TRUE(driver_->HasCaughtUp());
  }
  void Picture(HWND window, const std::string& name) {
    if (PictureFolder().empty()) return;
    ASSERT_TRUE(driver_->HasCaughtUp());
    Sleep(300);  // for what is still painted by timers
    EXPECT_TRUE(TakePicture(window, PictureFolder() / (name + ".bmp"))) << name;
  }
  // The page that was shown last.
  std::string ShownPage() {
    const auto log = ReadWholeFile(driver_->TemporaryFolder() / "help.txt");
    return log ? std::string(log->begin(), log->end()) : "";
  }
  void ExpectPage(std::string_view page, const std::string& where) {
    EXPECT_TRUE(driver_->HasCaughtUp());
    EXPECT_EQ(ShownPage(), Utf8FromPath(home_ / "help" / (std::string(page) + ".html"))) << where;
    std::error_code error;
    std::filesystem::remove(driver_->TemporaryFolder() / "help.txt", error);
  }
  // What F1 sends to the control with the focus.
  void PressF1(HWND control) {
    HELPINFO information{};
    information.cbSize = sizeof information;
    information.iContextType = HELPINFO_WINDOW;
    information.hItemHandle = control;
    Send(control, WM_HELP, 0, reinterpret_cast<LPARAM>(&information));
  }
  void See(HWND window, const std::string& picture, std::string_view page) {
    ASSERT_NE(window, nullptr) << picture;
    Picture(window, picture);
    const auto source =
        ReadWholeFile(DataFolder().parent_path() / "help" / (std::string(page) + ".md")).value_or(Bytes());
    EXPECT_THAT(std::string(source.begin(), source.end()), HasSubstr("(pictures/" + picture + ".png)"))
        << "its page shows it";
    HWND focus = driver_->Focused();
    PressF1(IsChild(window, focus) ? focus : window);
    ExpectPage(page, picture + ", F1");
    wchar_t kind[16] = L"";
    GetClassNameW(window, kind, 16);
    const bool is_dialog = std::wstring_view(kind) == L"#32770";
    EXPECT_EQ(GetDlgItem(window, IDHELP) != nullptr, is_dialog) << picture;
    if (!is_dialog) return;
    Send(window, WM_COMMAND, IDHELP, reinterpret_cast<LPARAM>(GetDlgItem(window, IDHELP)));
    ExpectPage(page, picture + ", the button");
  }
  void See(const Stop& stop) {
    SCOPED_TRACE(stop.picture);
    if (!stop.node.empty()) {
      ASSERT_NO_FATAL_FAILURE(ChooseNode(stop.node));
    }
    HWND box = driver_->Open(stop.command, stop.title);
    See(box, stop.picture, HelpPage(stop.dialog));
    driver_->Press(box, IDCANCEL);
    ASSERT_TRUE(driver_->Answers());
  }
  // With the focus in the tree, so that its node is meant.
  void ChooseNode(const Labels& node) {
    ASSERT_TRUE(driver_->SelectItem(node));
    HWND tree = FindWindowExW(driver_->ActiveChild(), nullptr, WC_TREEVIEWW, nullptr);
    const RECT place = driver_->ItemPlace(node);
    driver_->Click(tree, {place.left + 5, (place.top + place.bottom) / 2});
    driver_->Until("the focus in the tree", [&] { return driver_->Focused() == tree; });
  }
  // With the focus in the list, so that its rows are meant.
  void ChooseRows(const std::vector<int>& rows) {
    const RECT place = driver_->RowPlace(List(), rows[0]);
    driver_->Click(List(), {place.left + 5, (place.top + place.bottom) / 2});
    driver_->Until("the focus", [&] { return driver_->Focused() == List(); });
    driver_->SelectRows(List(), rows);
  }
  void ImportSample() {
    driver_->Command(kCmdImportSatcodx);
    driver_->ChooseFile("Open a File", home_ / "list.sdx");
    driver_->Answer(IDYES);
    HWND box = driver_->WaitForBox("Import Wizard ( 1/3 ) Steps - Satellite Selection");
    driver_->Push(box, IDC_WIZARD_ALL);
    See(box, "wizard-satellites", HelpPage(IDD_WIZARD_SATELLITES));
    driver_->Press(box, IDOK);
    box = driver_->WaitForBox("Import Wizard ( 2/3 ) Steps - Carrier Selection");
    driver_->Push(box, IDC_WIZARD_OPTION);
    driver_->GoTo(GetDlgItem(box, IDC_WIZARD_OWNERS), 1);
    See(box, "wizard-carriers", HelpPage(IDD_WIZARD_CARRIERS));
    driver_->Press(box, IDOK);
    box = driver_->WaitForBox("Import Wizard ( 3/3 ) Steps - Service Selection");
    driver_->Push(box, IDC_WIZARD_OPTION);
    driver_->GoTo(GetDlgItem(box, IDC_WIZARD_OWNERS), 1);
    See(box, "wizard-services", HelpPage(IDD_WIZARD_SERVICES));
    driver_->Press(box, IDOK);
    box = driver_->WaitForBox("Complete the List");
    See(box, "completion", HelpPage(IDD_COMPLETION));
    driver_->Press(box, IDCANCEL);
    ASSERT_TRUE(driver_->Until("the list's window", [&] { return driver_->Children().size() == 1; }));
    ASSERT_TRUE(driver_->Answers());
  }
  void End() {
    driver_->Close();
    driver_->Answer(IDNO);
    EXPECT_EQ(driver_->ExitCode(), 0u);
  }
  HWND ConsoleWindow() {
    HWND client = FindWindowExW(driver_->frame(), nullptr, L"MDIClient", nullptr);
    return FindWindowExW(client, nullptr, kConsoleClass, nullptr);
  }

  // The dialogs that act on rows of the list, and the findings.
  void SeeDialogsOfRows() {
    ASSERT_TRUE(driver_->SelectItem(kSatelliteLevel));
    ChooseRows({1, 2});
    ASSERT_NO_FATAL_FAILURE(See({kCmdMove, "Move Satellite Information", "move", IDD_MOVE}));
    ASSERT_TRUE(driver_->SelectItem(kFirstCarrier));
    ChooseRows({0});
    ASSERT_NO_FATAL_FAILURE(See({kCmdEdit, "Service Information", "service", IDD_SERVICE}));
    HWND box = driver_->Open(kCmdMove, "Move Service Information");
    See(box, "move-service", HelpPage(IDD_MOVE_SERVICE));
    Push(box, IDC_MOVE_SERVICE_CHANGE);
    HWND carriers = driver_->WaitForBox("Change Carriers");
    See(carriers, "change-carriers", HelpPage(IDD_CHANGE_CARRIERS));
    driver_->Press(carriers, IDCANCEL);
    driver_->Press(box, IDCANCEL);

    ASSERT_TRUE(driver_->SelectItem({"SDB1", "TV Groups", "Favourite1"}));
    ChooseRows({0});
    ASSERT_NO_FATAL_FAILURE(See({kCmdEdit, "Detailed Service Information", "details", IDD_DETAILED_SERVICE}));
    box = driver_->Open(kCmdCheck, "Check Database - " + Caption());
    See(box, "findings", HelpPage(IDD_FINDINGS));
    driver_->Press(box, IDCANCEL);
    driver_->Command(kCmdCompare);
    driver_->ChooseFile("Compare with", home_ / "more.sdx");
    box = driver_->WaitForBox("Compare");
    See(box, "compare", HelpPage(IDD_COMPARE));
    driver_->Press(box, IDCANCEL);
  }

  // With something in them, for their pictures.
  void SeeCopiesAndProduction() {
    HWND box = driver_->Open(kCmdSettings, "Settings");
    Type(box, IDC_SETTINGS_COPIES, Utf8FromPath(home_ / "Copies"));
    driver_->Press(box, IDOK);
    for (int i = 0; i < 2; ++i) {
      driver_->Command(kCmdUploadAdb);
      if (i == 1) {
        box = driver_->WaitForBox(kKeepingCopy);
        driver_->Until(
            "the copy", [&] { return !IsWindow(box); }, 60);
      }
      box = driver_->WaitForBox("Transfer Data ( PC to STB )");
      driver_->Until("packets", [&] { return Send(GetDlgItem(box, IDC_TRANSFER_BAR), PBM_GETPOS) > 2; });
      Send(GetDlgItem(box, IDC_TRANSFER_COPY), BM_CLICK);
      driver_->Until(
          "the upload", [&] { return !IsWindow(box); }, 60);
    }
    ASSERT_NO_FATAL_FAILURE(See({kCmdRestore, "Restore", "restore", IDD_RESTORE}));
    box = driver_->Open(kCmdProduction, "Production");
    Type(box, IDC_PRODUCTION_LOG, Utf8FromPath(home_ / "log.csv"));
    for (const char* serial : {"4711-0042", "4711-0043"}) {
      driver_->Until(
          "the place", [&] { return Enabled(box, IDC_PRODUCTION_LOG); }, 60);
      Type(box, IDC_PRODUCTION_SERIAL, serial);
      Push(box, IDOK);
      driver_->Until("the start", [&] { return !Enabled(box, IDC_PRODUCTION_LOG); });
    }
    driver_->Until(
        "the end", [&] { return Enabled(box, IDC_PRODUCTION_LOG); }, 60);
    See(box, "production", HelpPage(IDD_PRODUCTION));
    driver_->Press(box, IDCANCEL);
  }

  Path home_;
};

TEST_F(Help, EveryDialogOfTheDatabaseShowsItsPage) {
  ASSERT_NO_FATAL_FAILURE(StartWithPages());
  PressF1(driver_->frame());
  ExpectPage("frame", "the frame");
  driver_->Command(kCmdContents);
  ExpectPage("index", "the contents");
  ASSERT_NO_FATAL_FAILURE(ImportSample());
  // Something for the dialogs to show: favourites, a user box.
  ASSERT_TRUE(driver_->SelectItem(kFirstCarrier));
  ChooseRows({0, 1, 2});
  driver_->Command(kFirstGroupCommand);
  ASSERT_NO_FATAL_FAILURE(ChooseNode({"Box Infos"}));
  driver_->Command(kCmdAdd);
  ASSERT_TRUE(driver_->SelectItem(kSatelliteLevel));
  ASSERT_TRUE(driver_->SelectItem(kFirstCarrier));
  Picture(driver_->frame(), "editor");
  PressF1(List());
  ExpectPage("editor", "the database window");

  const Stop stops[] = {
      {kCmdEdit, "LNB Information", "lnb", IDD_LNB, {"SDB1", "LNBs", "[ 1 ] LNB"}},
      {kCmdEdit, "Satellite Information", "satellite", IDD_SATELLITE, kFirstSatellite},
      {kCmdEdit, "Carrier Information", "carrier", IDD_CARRIER, kFirstCarrier},
      {kCmdEdit, "Edit SDB", "edit-sdb", IDD_EDIT_SDB, {"SDB1"}},
      {kCmdEdit, "FGL Information (TV)", "favourites", IDD_FAVOURITES, {"SDB1", "TV Groups", "Favourite1"}},
      {kCmdEdit, "UserBox Information", "user-box", IDD_USER_BOX, {"Box Infos", "UBI1"}},
      {kCmdSaveParts, "Select SDB/UBI", "save-parts", IDD_SELECT_PARTS},
      {kCmdVersion, "StaticDatabase Version", "version", IDD_VERSION},
      {kCmdSort, "Sort SDB information", "sort", IDD_SORT, {"SDB1"}},
      {kCmdFind, "Find", "find", IDD_FIND},
      {kCmdUploadSdb, "Upload as SDB", "upload-sdbs", IDD_UPLOAD_SDBS},
  };
  for (const Stop& stop : stops) ASSERT_NO_FATAL_FAILURE(See(stop));

  ASSERT_NO_FATAL_FAILURE(SeeDialogsOfRows());
  HWND box = driver_->Open(kCmdSdbInformation, "Bin file information");
  Picture(box, "bin-information");
  driver_->Press(box, IDOK);
  End();
}

TEST_F(Help, EveryOtherDialogShowsItsPage) {
  ASSERT_NO_FATAL_FAILURE(StartWithPages());
  const Stop stops[] = {{kCmdAbout, "About software", "about", IDD_ABOUT},
                        {kCmdSettings, "Settings", "settings", IDD_SETTINGS},
                        {kCmdDefaultValues, "Default Values", "defaults", IDD_DEFAULTS},
                        {kCmdColour, "Color", "colors", IDD_COLOURS},
                        {kCmdSingleImage, "Single Image", "single-image", IDD_SINGLE_IMAGE},
                        {kCmdMultipleImage, "Multiple Image", "multiple-image", IDD_MULTIPLE_IMAGE},
                        {kCmdCompression, "Compression", "compression", IDD_COMPRESSION},
                        {kCmdRestore, "Restore", "restore", IDD_RESTORE},
                        {kCmdProduction, "Production", "production", IDD_PRODUCTION}};
  for (const Stop& stop : stops) ASSERT_NO_FATAL_FAILURE(See(stop));
  Bytes list = ReadWholeFile(DataFolder() / "sample.sdx").value_or(Bytes());
  list.insert(list.end(), 7, '\n');
  PutFile(home_ / "list2.sdx", list);
  driver_->Command(kCmdImportSatcodx);
  driver_->ChooseFile("Open a File", home_ / "list2.sdx");
  driver_->Answer(IDNO);
  HWND question = driver_->WaitForBox("Import - How the list is read");
  See(question, "import-question", HelpPage(IDD_IMPORT_QUESTION));
  driver_->Press(question, IDCANCEL);
  HWND box = driver_->Open(kCmdMergeSatcodx, "SatcoDX [ SDX ] File Merger");
  for (const char* name : {"list.sdx", "more.sdx"}) {
    Push(box, IDC_MERGE_FILES);
    driver_->ChooseFile("Select a SatcoDX file", home_ / name);
  }
  ASSERT_TRUE(
      driver_->Until("both lists", [&] { return Send(GetDlgItem(box, IDC_MERGE_LIST), LB_GETCOUNT) == 2; }));
  See(box, "merger", HelpPage(IDD_MERGER));
  driver_->Press(box, IDCANCEL);

  driver_->Command(kCmdPortload);
  ASSERT_TRUE(driver_->Until("the console", [&] { return ConsoleWindow() != nullptr; }));
  PressF1(GetDlgItem(ConsoleWindow(), IDC_CONSOLE_LOG));
  ExpectPage("console", "the console");
  ASSERT_NO_FATAL_FAILURE(See({kCmdConsoleFind, "Find in Log", "console-find", IDD_CONSOLE_FIND}));
  driver_->Close();
  EXPECT_EQ(driver_->ExitCode(), 0u);
}

TEST_F(Help, TheTransferShowsItsPage) {
  if (!std::getenv("VEXA_TEST_LINE")) GTEST_SKIP() << "no receiver at COM1";
  ASSERT_NO_FATAL_FAILURE(StartWithPages());
  driver_->Command(kCmdImportSatcodx);
  driver_->ChooseFile("Open a File", home_ / "list.sdx");
  driver_->Answer(IDNO);
  driver_->DeclineCompletion();
  ASSERT_TRUE(driver_->Until("the list's window", [&] { return driver_->Children().size() == 1; }));
  ASSERT_TRUE(driver_->Answers());
  HWND box = driver_->Open(kCmdUploadAdb, "Transfer Data ( PC to STB )");
  driver_->Until("packets", [&] {
    return driver_->Title(GetDlgItem(box, IDC_TRANSFER_FIGURES)).find("bytes/s") != std::string::npos;
  });
  See(box, "transfer", HelpPage(IDD_TRANSFER));
  driver_->Click(GetDlgItem(box, IDCANCEL), {5, 5});
  ASSERT_TRUE(driver_->Until("the end", [&] { return !IsWindow(box); }));
  if (!PictureFolder().empty()) {
    const Path list = home_ / "list.bin";
    driver_->Command(kCmdSaveAs);
    driver_->ChooseFile("Save", list);
    ASSERT_NO_FATAL_FAILURE(SeeCopiesAndProduction());
    driver_->Command(kCmdPortload);
    driver_->Command(kCmdConnect);
    driver_->Command(kCmdConsoleUpload);
    driver_->ChooseFile("Open", list);
    HWND log = GetDlgItem(ConsoleWindow(), IDC_CONSOLE_LOG);
    driver_->Until("the report", [&] { return driver_->Title(log).find("Upload") != std::string::npos; });
    Picture(ConsoleWindow(), "console");
    driver_->Command(kCmdConnect);
  }
  driver_->Kill();
}

}  // namespace

}  // namespace vexa
