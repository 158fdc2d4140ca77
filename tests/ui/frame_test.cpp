// The editor as its user meets it: every test starts the real program, works it by commands, and reads its
// windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "core/bin_file.h"
#include "core/messages.h"
#include "core/out_of_memory.h"
#include "import/text_export.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/ui/driver.h"
#include "tests/ui/test_key.h"
#include "ui/controls/windows_api.h"
#include "ui/frame/test_mode.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;

// One LNB, a satellite "Test Sat" with `carriers` carriers, each with `services` services, TV and radio by
// turns.
Document SampleDocument(int carriers, int services) {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  SatelliteRecord& satellite = AddTestSatellite(database, "Test Sat")->record;
  satellite.east = 1;
  satellite.angle = 192;
  for (int i = 0; i < carriers; ++i) {
    Carrier* carrier = AddTestCarrier(database, 0);
    SetName(carrier->record.name, Format("Carrier %d", i + 1));
    for (int k = 0; k < services; ++k) {
      ServiceRecord& service = AddTestService(database, carrier)->record;
      SetName(service.name, Format("Service %d", k + 1));
      service.type = k % 2 == 0 ? kTv : kRadio;
      service.video_pid = 255;
      service.program_number = static_cast<uint16_t>(k + 1);
    }
  }
  return document;
}

class Frame : public testing::Test {
 protected:
  Path PutSample(const std::string& name, int carriers = 2, int services = 3) {
    const auto bytes = BuildBin(recorder_.context, SampleDocument(carriers, services), {}, {});
    const Path path = recorder_.context.temporary_folder / name;
    EXPECT_TRUE(bytes.has_value());
    if (bytes) PutFile(path, *bytes);
    return path;
  }
  Path Folder() { return recorder_.context.temporary_folder; }
  // The editor, with the file's window if there is a file.
  EditorDriver& Start(const Path& file = {}) {
    std::vector<std::wstring> arguments = {L"--test-mode"};
    if (!file.empty()) arguments.push_back(file.native());
    editor_ = std::make_unique<EditorDriver>(EditorProgram(), arguments);
    EXPECT_TRUE(editor_->WaitForFrame());
    if (!file.empty()) editor_->Until("the database window", [&] { return editor_->Children().size() == 1; });
    return *editor_;
  }

  Recorder recorder_;
  std::unique_ptr<EditorDriver> editor_;
};

// Closes without a question and ends with 0.
TEST_F(Frame, StartsMaximisedWithItsTitleAndFolder) {
  EditorDriver& editor = Start();
  EXPECT_EQ(editor.Title(editor.frame()), "Vexa Editor " VEXA_VERSION);
  EXPECT_TRUE(editor.Until("the maximised frame", [&] { return IsZoomed(editor.frame()) != 0; }));
  EXPECT_TRUE(std::filesystem::is_directory(editor.TemporaryFolder()));
  EXPECT_THAT(editor.Children(), IsEmpty());
  ExpectCleanEnd(editor);
}

TEST_F(Frame, AKilledProgramsFolderGoesAtALaterStartAndARunningOnesStays) {
  EditorDriver running(EditorProgram()), killed(EditorProgram());
  ASSERT_TRUE(running.WaitForFrame() && killed.WaitForFrame());
  const Path kept = running.TemporaryFolder() / "kept.bin", left = killed.TemporaryFolder() / "left.bin";
  PutFile(kept, BytesOf("x"));
  PutFile(left, BytesOf("x"));
  killed.Kill();
  ASSERT_TRUE(std::filesystem::exists(left));
  EditorDriver later(EditorProgram());
  ASSERT_TRUE(later.WaitForFrame());
  EXPECT_FALSE(std::filesystem::exists(left));
  EXPECT_TRUE(std::filesystem::exists(kept));
  ExpectCleanEnd(later);
  ExpectCleanEnd(running);
}

TEST_F(Frame, AboutNamesTheProgram) {
  EditorDriver& editor = Start();
  HWND box = editor.Open(kCmdAbout, "About software");
  const std::string text = editor.BoxText(box);
  for (const char* part : {"Project ID - VEXA", "Version - 1.0.0", "Build Date - ", "Build Time - "}) {
    EXPECT_THAT(text, HasSubstr(part));
  }
  editor.Press(box, IDOK);
  ExpectCleanEnd(editor);
}

TEST_F(Frame, NewDatabaseIsEmptyAndClosesWithoutQuestion) {
  EditorDriver& editor = Start();
  editor.Command(kCmdNew);
  ASSERT_EQ(editor.Children().size(), 1u);
  const auto tree = editor.Tree(true);
  ASSERT_EQ(tree.size(), 22u) << "SDB1, four levels, eight groups twice, the box infos";
  EXPECT_EQ(tree.front(), "SDB1");
  EXPECT_EQ(tree[4], "    Favourite1");
  EXPECT_EQ(tree.back(), "Box Infos");
  EXPECT_THAT(editor.Labels(), IsSupersetOf({"SDB:SDB1  Index 1/1", "LNBs\t0", "Satellites  0", "Carriers\t0",
                                             "Services  0"}));
  editor.Command(kCmdClose);
  EXPECT_THAT(editor.Children(), IsEmpty());
  ExpectCleanEnd(editor);
}

TEST_F(Frame, EachCommandOfTheTableHasOneFunction) {
  EditorDriver& editor = Start();
  editor.Lose(kListFunctions);
  const auto text = ReadWholeFile(editor.TemporaryFolder() / "functions.txt");
  ASSERT_TRUE(text);
  std::istringstream lines(std::string(text->begin(), text->end()));
  std::multiset<unsigned> functions, rows;
  for (unsigned id = 0; lines >> id;) functions.insert(id);
  for (const CommandInfo& command : Commands()) rows.insert(command.id);
  EXPECT_EQ(functions, rows);
}

TEST_F(Frame, OpenShowsTreeListAndDetails) {
  const Path path = PutSample("sample.bin");
  EditorDriver& editor = Start();
  editor.Command(kCmdOpen);
  editor.ChooseFile("Open", path);
  ASSERT_TRUE(editor.Until("the database window", [&] { return editor.Children().size() == 1; }));
  EXPECT_THAT(editor.Tree(true), IsSupersetOf({"    [ 1 ] LNB", "    [ 1 ] Test Sat", "      [ 2 ] Carrier 2",
                                               "        [ 3 ] Service 3"}));
  ASSERT_TRUE(editor.SelectItem({"SDB1", "Satellites", "[ 1 ] Test Sat", "[ 1 ] Carrier 1"}));
  ASSERT_EQ(editor.ListCount(), 3);
  EXPECT_THAT(editor.ListColumns(), IsSupersetOf({"Video (Dec)", "Audio (Dec)", "PCR (Dec)"}));
  EXPECT_EQ(editor.Cell(1, 1), "Service 2");
  EXPECT_EQ(editor.Cell(1, 4), "Radio");
  EXPECT_EQ(editor.Cell(0, 5), "255");
  editor.Command(kCmdViewRadio);
  EXPECT_EQ(editor.ListCount(), 1);
  ASSERT_TRUE(editor.SelectItem({"SDB1", "Satellites", "[ 1 ] Test Sat"}));
  editor.Command(kCmdInformation);
  EXPECT_EQ(editor.ListColumns().front(), "Info - Test Sat");
  EXPECT_EQ(editor.Cell(3, 0), "Angle");
  EXPECT_EQ(editor.Cell(3, 1), "019.2");
  ExpectCleanEnd(editor);
}

TEST_F(Frame, FileOfTheCommandLineIsOpenedAndDescribed) {
  const Path path = PutSample(
      "von \xC3\xBC"
      "ber.bin",
      1, 2);
  EditorDriver& editor = Start(path);
  EXPECT_EQ(editor.Title(editor.Children()[0]), Utf8FromPath(path));
  HWND box = editor.Open(kCmdSdbInformation, "Bin file information");
  EXPECT_THAT(editor.BoxText(box), HasSubstr("\nSDB1    No \t016\t085\t001\t002\t"));
  editor.Press(box, IDOK);
  ExpectCleanEnd(editor);
}

TEST_F(Frame, DamagedFileOpensNoWindow) {
  const Path path = Folder() / "damaged.bin";
  PutFile(path, BytesOf("Qz, too short"));
  RunningEditor editor({L"--test-mode", path.native()});
  EXPECT_EQ(editor.Answer(IDOK), "Invalid or unknown file format.");
  EXPECT_THAT(editor.detail(), testing::StartsWith(Utf8FromPath(path) + ": "));
  EXPECT_THAT(editor.Children(), IsEmpty());
  ExpectCleanEnd(editor);
}

TEST_F(Frame, SaveAsWritesTheDatabaseAndUnsavedChangesAsk) {
  const Path path = PutSample("sample.bin"), copy = Folder() / "copy.bin";
  EditorDriver& editor = Start(path);
  editor.Command(kCmdSaveAs);
  editor.ChooseFile("Save", copy);
  ASSERT_TRUE(editor.Until("the copy", [&] { return std::filesystem::exists(copy); }));
  EXPECT_TRUE(editor.Answers());
  EXPECT_EQ(editor.Title(editor.Children()[0]), Utf8FromPath(copy));
  Document saved;
  EXPECT_TRUE(OpenBin(recorder_.context, copy, saved));
  ASSERT_EQ(saved.sdbs.size(), 1u);
  EXPECT_EQ(saved.sdbs[0].database->services.size(), 6u);

  editor.Command(kCmdCompressBin);
  EXPECT_EQ(editor.Title(editor.Children()[0]), Utf8FromPath(copy) + " *");
  editor.Command(kCmdClose);
  EXPECT_EQ(editor.Answer(IDCANCEL), "Changes made are not saved. Do you want to save ?");
  ASSERT_EQ(editor.Children().size(), 1u) << "Cancel keeps the window";
  const auto before = std::filesystem::file_size(copy);
  editor.Close();
  EXPECT_EQ(editor.Answer(IDYES), "Changes made are not saved. Do you want to save ?");
  EXPECT_EQ(editor.ExitCode(), 0u);
  EXPECT_LT(std::filesystem::file_size(copy), before) << "saved compressed on the way out";
}

TEST_F(Frame, AFileOfAnotherWindowIsNotSavedOver) {
  const Path path = PutSample("sample.bin"), other = Folder() / "other.bin";
  std::filesystem::copy_file(path, other);
  EditorDriver& editor = Start(path);
  editor.DropFiles({other});
  ASSERT_TRUE(editor.Until("the second window", [&] { return editor.Children().size() == 2; }));
  editor.Command(kCmdCompressBin);
  const auto before = ReadWholeFile(path);
  editor.Command(kCmdSaveAs);
  editor.ChooseFile("Save", path);
  editor.Answer(IDYES);  // the system's question about the existing file
  EXPECT_TRUE(editor.Until("the file dialog to close", [&] { return editor.FindBox("Save") == nullptr; }));
  EXPECT_EQ(editor.Answer(IDOK), "This file is open in another window.");
  EXPECT_EQ(ReadWholeFile(path), before);
  EXPECT_EQ(editor.Title(editor.ActiveChild()), Utf8FromPath(other) + " *");
  editor.Command(kCmdSave);
  EXPECT_TRUE(editor.Answers());
  ExpectCleanEnd(editor);
}

TEST_F(Frame, PathsMayBeLong) {
  const Path folder = Folder() / std::string(150, 'a') / std::string(150, 'b'), copy = Folder() / "copy.bin";
  std::filesystem::create_directories(folder);
  const Path path = folder / "long.bin";
  std::filesystem::copy_file(PutSample("sample.bin"), path);
  EditorDriver& editor = Start(path);
  const auto before = std::filesystem::file_size(path);
  editor.Command(kCmdCompressBin);
  editor.Command(kCmdSave);
  EXPECT_EQ(editor.Title(editor.Children()[0]), Utf8FromPath(path));
  EXPECT_LT(std::filesystem::file_size(path), before);
  editor.Command(kCmdSaveAs);
  editor.ChooseFile("Save", copy);
  ASSERT_TRUE(editor.Until("the copy", [&] { return std::filesystem::exists(copy); }));
  editor.Command(kCmdClose);
  editor.DropFiles({path});
  EXPECT_TRUE(editor.Until("the dropped file's window", [&] { return editor.Children().size() == 1; }));
  EXPECT_EQ(editor.Title(editor.Children()[0]), Utf8FromPath(path));
  ExpectCleanEnd(editor);
}

std::map<unsigned, MenuLine> ById(const std::vector<MenuLine>& lines) {
  std::map<unsigned, MenuLine> items;
  for (const MenuLine& line : lines) {
    if (line.id) items.emplace(line.id, line);
  }
  return items;
}

TEST_F(Frame, MenusFollowTheActiveWindow) {
  EditorDriver& editor = Start();
  auto items = ById(editor.Menus());
  EXPECT_FALSE(items.contains(kCmdSave)) << "no database, no such item";
  EXPECT_FALSE(items.at(kCmdNew).greyed);
  EXPECT_FALSE(items.contains(kCmdMergeSdb)) << "no database to merge into";
  editor.Command(kCmdNew);
  items = ById(editor.Menus());
  ASSERT_TRUE(items.contains(kCmdSave));
  EXPECT_FALSE(items.at(kCmdSave).greyed);
  EXPECT_TRUE(items.at(kCmdUndo).greyed) << "nothing to undo";
  EXPECT_FALSE(items.at(kCmdCompressBin).checked);
  EXPECT_EQ(items.at(kCmdTextFile).text, "&Text file|Ctrl+E");
  // A greyed command does nothing, whoever sends it.
  editor.Command(kCmdUndo);
  EXPECT_EQ(editor.FindBox(), nullptr);
  editor.Command(kCmdCompressBin);
  EXPECT_TRUE(ById(editor.Menus()).at(kCmdCompressBin).checked);
  editor.Command(kCmdClose);
  editor.Answer(IDNO);
  EXPECT_FALSE(ById(editor.Menus()).contains(kCmdSave)) << "the frame's own menu again";
  ExpectCleanEnd(editor);
}

TEST_F(Frame, WithoutConfigurationTheUserChoosesOrTheProgramEnds) {
  const Path lonely = Folder() / "lonely";
  std::filesystem::create_directory(lonely);
  std::filesystem::copy_file(EditorProgram(), lonely / "VexaEditor.exe");
  const Path wrong = Folder() / "wrong.ecf";
  PutFile(wrong, BytesOf("not a configuration"));
  EditorDriver editor(lonely / "VexaEditor.exe");
  EXPECT_EQ(editor.Answer(IDOK), "Invalid configuration file.");
  EXPECT_EQ(editor.detail(), Utf8FromPath(lonely) + " holds no configuration file (*.ecf). Choose one.");
  editor.ChooseFile("Open a Configuration File", wrong);
  EXPECT_EQ(editor.Answer(IDOK), "Invalid Configuration file.");
  HWND dialog = editor.WaitForBox("Open a Configuration File");
  editor.Press(dialog, IDCANCEL);
  EXPECT_TRUE(editor.ExitCode().has_value()) << "the program must end";
}

TEST_F(Frame, ADamagedConfigurationIsToldAndTheProgramGoesOn) {
  const Path lonely = Folder() / "lonely";
  std::filesystem::create_directory(lonely);
  std::filesystem::copy_file(EditorProgram(), lonely / "VexaEditor.exe");
  PutFile(lonely / "damaged.ecf", BytesOf("Qx, and then nothing"));
  EditorDriver editor(lonely / "VexaEditor.exe");
  EXPECT_EQ(editor.Answer(IDOK), "Invalid Configuration file.");
  EXPECT_EQ(editor.Answer(IDOK), "Cannot read Configuration details.");
  ASSERT_TRUE(editor.WaitForFrame());
  ExpectCleanEnd(editor);
}

TEST_F(Frame, WithoutATemporaryFolderTheProgramEnds) {
  wchar_t before[MAX_PATH];
  ASSERT_NE(GetEnvironmentVariableW(L"TMP", before, MAX_PATH), 0u);
  SetEnvironmentVariableW(L"TMP", (Folder() / "nowhere").c_str());
  EditorDriver editor(EditorProgram());
  SetEnvironmentVariableW(L"TMP", before);
  EXPECT_EQ(editor.Answer(IDOK), "Failed to create new directory.");
  EXPECT_THAT(editor.detail(), testing::StartsWith(Utf8FromPath(Folder() / "nowhere")));
  EXPECT_THAT(editor.detail(),
              testing::EndsWith(". TMPDIR, on Windows TMP, names the folder for temporary files."));
  EXPECT_TRUE(editor.ExitCode().has_value());
}

// Each of the allocations that a change needs fails once: it happens or it does not, and all goes on.
TEST_F(Frame, MemoryThatRunsOutIsToldAndTheDatabaseStays) {
  const Path path = PutSample("sample.bin");
  EditorDriver& editor = Start(path);
  editor.ExhaustMemory();
  EXPECT_EQ(editor.Answer(IDOK), kOutOfMemoryText);
  EXPECT_EQ(editor.Children().size(), 1u);
  const auto before = editor.Tree(true);
  ASSERT_TRUE(editor.SelectItem({"SDB1", "Satellites", "[ 1 ] Test Sat", "[ 1 ] Carrier 1"}));
  int told = 0;
  for (int i = 1, step = 1; i < 3000; i += step, step = i / 12 + 1) {
    SCOPED_TRACE(i);
    editor.Arrange(kFailAllocation, i);
    editor.Command(kCmdDelete);
    editor.Arrange(kFailAllocation, 0);
    ASSERT_TRUE(editor.HasCaughtUp());
    const bool failed = editor.FindBox() != nullptr;
    if (failed) {
      ++told;
      EXPECT_EQ(editor.Answer(IDOK), kOutOfMemoryText);
    }
    editor.Command(kCmdUndo);
    ASSERT_EQ(editor.Tree(true), before);
    ASSERT_TRUE(editor.SelectItem({"SDB1", "Satellites", "[ 1 ] Test Sat", "[ 1 ] Carrier 1"}));
  }
  EXPECT_GT(told, 10);
  editor.Command(kCmdCompressBin);
  editor.Command(kCmdSave);
  EXPECT_EQ(editor.Title(editor.Children()[0]), Utf8FromPath(path));
  Document saved;
  ASSERT_TRUE(OpenBin(recorder_.context, path, saved));
  EXPECT_EQ(saved.sdbs[0].database->services.size(), 6u);
  ExpectCleanEnd(editor);
}

TEST_F(Frame, ImportRefusesAForeignFile) {
  const Path list = Folder() / "list.sdx";
  PutFile(list, BytesOf("DVSO is another format"));
  EditorDriver& editor = Start();
  editor.Command(kCmdImportSatcodx);
  editor.ChooseFile("Open a File", list);
  EXPECT_EQ(editor.Answer(IDOK), "Error - Invalid File");
  EXPECT_THAT(editor.Children(), IsEmpty());
  ExpectCleanEnd(editor);
}

void CloseViewer(const std::wstring& file) {
  for (int i = 0; i < 200; ++i) {
    HWND viewer = FindWindowW(L"Notepad", nullptr);
    wchar_t title[512] = L"";
    if (viewer) GetWindowTextW(viewer, title, 512);
    if (viewer && wcsstr(title, file.c_str())) {
      PostMessageW(viewer, WM_CLOSE, 0, 0);
      return;
    }
    Sleep(50);
  }
  ADD_FAILURE() << "the viewer did not show the report";
}

TEST_F(Frame, TextFileWritesAndShowsTheReport) {
  const Path path = PutSample("sample.bin"), report = Folder() / "report.txt";
  EditorDriver& editor = Start(path);
  editor.Command(kCmdTextFile);
  editor.ChooseFile("Save", report);
  ASSERT_TRUE(editor.Until("the report", [&] { return std::filesystem::exists(report); }));
  CloseViewer(L"report");
  Document document;
  ASSERT_TRUE(OpenBin(recorder_.context, path, document));
  EXPECT_EQ(ReadWholeFile(report), BytesOf(DatabaseReport(*document.sdbs[0].database)));
  HANDLE held = CreateFileW(report.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  const auto save_again = [&] {
    editor.Command(kCmdTextFile);
    editor.ChooseFile("Save", report);
    editor.Answer(IDYES);  // the system's question about the existing file
    editor.Until("the dialog to close", [&] { return !editor.FindBox("Save"); });
    return editor.Answer(IDOK);
  };
  EXPECT_EQ(save_again(), "Export process failed");
  EXPECT_EQ(editor.detail(), WriteReason(report, {ERROR_SHARING_VIOLATION, std::system_category()}));
  CloseHandle(held);
  editor.Lose(kLoseViewer);
  EXPECT_EQ(save_again(), "Error in loading notepad");
  editor.Command(kCmdNew);
  editor.Command(kCmdTextFile);
  EXPECT_EQ(editor.Answer(IDOK), "There is no information to export");
  ExpectCleanEnd(editor);
}

TEST_F(Frame, WithoutAnExitEventTheProgramStartsAllTheSame) {
  HANDLE other = CreateMutexW(nullptr, FALSE, kTestExitEvent);
  ASSERT_NE(other, nullptr);
  EditorDriver editor(EditorProgram());
  EXPECT_EQ(editor.Answer(IDOK), "Failed to create event( Thread exit event ).");
  CloseHandle(other);
  ASSERT_TRUE(editor.WaitForFrame());
  ExpectCleanEnd(editor);
}

// Below a volatile key no lasting one can be made.
TEST_F(Frame, WithoutPortSettingsTheProgramEnds) {
  const TestKey settings;
  const std::string key = SettingsKey("");
  const std::wstring path = settings.root + L"\\" + std::wstring(key.begin(), key.end() - 1);
  HKEY made = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                            nullptr, &made, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(made);
  EditorDriver editor(EditorProgram(), {settings.mode});
  EXPECT_EQ(editor.Answer(IDOK), "Cannot initialize port settings.");
  EXPECT_TRUE(editor.ExitCode().has_value());
}

TEST_F(Frame, RecentFilesComeBackFromTheSecondRunOn) {
  const TestKey settings;
  const Path path = PutSample("first & last.bin");
  for (int run = 1; run <= 2; ++run) {
    RunningEditor editor({settings.mode, path.native()});
    ASSERT_TRUE(editor.Until("the database window", [&] { return editor.Children().size() == 1; }));
    const auto items = ById(editor.Menus());
    ASSERT_TRUE(items.contains(kCmdRecent1)) << "run " << run;
    EXPECT_FALSE(items.contains(kCmdRecent1 + 1)) << "run " << run;
    ExpectCleanEnd(editor);
  }
  RunningEditor editor({settings.mode});
  const auto items = ById(editor.Menus());
  ASSERT_TRUE(items.contains(kCmdRecent1));
  EXPECT_THAT(items.at(kCmdRecent1).text, HasSubstr("first && last.bin"));
  editor.Command(kCmdRecent1);
  EXPECT_TRUE(editor.Until("the recent file's window", [&] { return editor.Children().size() == 1; }));
  ExpectCleanEnd(editor);
}

TEST_F(Frame, LargestDatabaseIsThereAtOnce) {
  const Path path = PutSample("largest.bin", 257, 255);
  EditorDriver& editor = Start();
  editor.Command(kCmdOpen);
  editor.ChooseFile("Open", path);
  ASSERT_TRUE(editor.Until(
      "the database window", [&] { return editor.Children().size() == 1; }, 10));
  const ULONGLONG start = GetTickCount64();
  editor.Command(kCmdViewServices);
  EXPECT_EQ(editor.ListCount(), 65535);
  EXPECT_EQ(editor.Cell(65534, 1), "Service 255");
  EXPECT_LT(GetTickCount64() - start, 3000u);
  ASSERT_TRUE(editor.SelectItem({"SDB1", "Satellites", "[ 1 ] Test Sat", "[ 1 ] Carrier 1"}));
  HWND tree = FindWindowExW(editor.ActiveChild(), nullptr, WC_TREEVIEWW, nullptr);
  SendMessageW(tree, TVM_EXPAND, TVE_EXPAND, SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
  const auto nodes = [&] { return SendMessageW(tree, TVM_GETCOUNT, 0, 0); };
  const auto all = nodes();
  editor.Command(kCmdSelectAll);
  editor.Command(kCmdDelete);
  EXPECT_EQ(nodes(), all - 255);
  editor.Command(kCmdUndo);
  EXPECT_EQ(nodes(), all);
  editor.Command(kCmdRedo);
  EXPECT_EQ(nodes(), all - 255);
  editor.Command(kCmdUndo);
  ExpectCleanEnd(editor);
}

}  // namespace

}  // namespace vexa
