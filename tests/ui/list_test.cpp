// Channel lists in the windows: imports with and without the wizard, the merger, dropped files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "core/messages.h"
#include "tests/support/list_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/ui/driver.h"
#include "ui/controls/windows_api.h"
#include "ui/forms/lists_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

constexpr const char* kStep1 = "Import Wizard ( 1/3 ) Steps - Satellite Selection";
constexpr const char* kStep2 = "Import Wizard ( 2/3 ) Steps - Carrier Selection";
constexpr const char* kStep3 = "Import Wizard ( 3/3 ) Steps - Service Selection";
constexpr const char* kFilterQuestion = "Do you want to generate Bin file with filter mode";

// Two satellites in each format. Astra: a carrier with a TV and a radio service, one with a scrambled TV
// service; Hotbird: a carrier with a TV service.
std::string SatcodxList() {
  std::vector<SdxRecord> records(4);
  records[0].name = "ALPHA___";
  records[1].name = "BETA____";
  records[1].type = "R";
  records[1].id = "00002";
  records[1].video = "0501";
  records[2].name = "GAMMA___";
  records[2].frequency = "012100";
  records[2].access = "VIAC";
  records[3].satellite = "HOTBIRD";
  records[3].position = "0130";
  records[3].name = "DELTA___";
  records[3].frequency = "004000";
  records[3].polarization = "1";
  return SdxList(records, true);
}

DvbRecord DvbService(const char* name, uint16_t id, uint16_t frequency, uint8_t type) {
  DvbRecord record;
  record.text = name;
  record.id = id;
  record.frequency = frequency;
  record.symbol_rate = 27500;
  record.video = record.audio = record.pcr = static_cast<uint16_t>(256 + id);
  record.type = type;
  return record;
}

std::string Dvb2000List() {
  DvbRecord astra, hotbird;
  astra.text =
      "Astra-192\xB0"
      "E";
  hotbird.text =
      "Hotbird-130\xB0"
      "E";
  std::string list = DvbList({astra, DvbService("Alpha", 1, 11778, 1), DvbService("Beta", 2, 11778, 2),
                              DvbService("Gamma", 3, 12100, 1), hotbird, DvbService("Delta", 4, 4000, 1)});
  return list.replace(0, 4, "DVSO");
}

std::string LyngsatList() {
  return ":SAT \"Astra\" 19.2 E\r\n"
         ":TRP 11778 27500S 0 H 0 3/4\r\n"
         ":CHN \"Alpha\" 1 T\r\n"
         ":CHN \"Beta\" 2 R\r\n"
         ":TRP 12100 27500S 0 H 0 3/4\r\n"
         ":CHN \"Gamma\" 3 T\r\n"
         ":SAT \"Hotbird\" 13.0 E\r\n"
         ":TRP 4000 27500S 0 V 0 3/4\r\n"
         ":CHN \"Delta\" 4 T\r\n";
}

struct ListFormat {
  unsigned command;
  const char* file;
  std::string (*content)();
  Lines whole, filtered;  // below "Satellites"
};

const Lines kWhole = {"[ 1 ] Astra",    "  [ 1 ] Carrier1_S1", "    [ 1 ] Alpha",
                      "    [ 2 ] Beta", "  [ 2 ] Carrier2_S1", "    [ 1 ] Gamma",
                      "[ 2 ] Hotbird",  "  [ 1 ] Carrier1_S2", "    [ 1 ] Delta"};
const Lines kRadio = {"[ 1 ] Astra", "  [ 1 ] Carrier1_S1", "    [ 1 ] Beta", "  [ 2 ] Carrier2_S1"};

const ListFormat kFormats[] = {
    {kCmdImportSatcodx,
     "list.sdx",
     SatcodxList,
     {"[ 1 ] ASTRA 1___________", "  [ 1 ] Carrier1_S1", "    [ 1 ] ALPHA", "    [ 2 ] BETA",
      "  [ 2 ] Carrier2_S1", "    [ 1 ] GAMMA", "[ 2 ] HOTBIRD___________", "  [ 1 ] Carrier1_S2",
      "    [ 1 ] DELTA"},
     {"[ 1 ] ASTRA 1___________", "  [ 1 ] Carrier1_S1", "    [ 1 ] BETA", "  [ 2 ] Carrier2_S1"}},
    {kCmdImportDvb2000, "list.dvb", Dvb2000List, kWhole, kRadio},
    {kCmdImportLyngsat, "list.dat", LyngsatList, kWhole, kRadio},
};

class Lists : public testing::Test {
 protected:
  Path Put(const std::string& name, const std::string& content) {
    const Path path = recorder_.context.temporary_folder / name;
    PutFile(path, BytesOf(content));
    return path;
  }
  // Up to the wizard's first step, or the window without it.
  void Import(EditorDriver& editor, const ListFormat& format, bool filtered) {
    const Path list = Put(format.file, format.content());
    editor.Command(format.command);
    editor.ChooseFile("Open a File", list);
    EXPECT_EQ(editor.Answer(filtered ? IDYES : IDNO), kFilterQuestion);
  }
  HWND FirstStep(EditorDriver& editor) {
    Import(editor, kFormats[2], true);
    return editor.WaitForBox(kStep1);
  }
  void ExpectImported(EditorDriver& editor) {
    editor.DeclineCompletion();
    ExpectOneWindow(editor);
  }
  void ExpectOneWindow(EditorDriver& editor) {
    EXPECT_TRUE(editor.Until("the imported database", [&] { return editor.Children().size() == 1; }));
  }

  Recorder recorder_;
};

// The tree's part below "Satellites".
Lines Satellites(EditorDriver& editor) {
  Lines lines;
  bool inside = false;
  for (const std::string& line : editor.Tree(true)) {
    if (line.starts_with("  ") && !line.starts_with("    "))
      inside = line == "  Satellites";
    else if (inside)
      lines.push_back(line.substr(4));
  }
  return lines;
}

void CloseUnsaved(EditorDriver& editor) {
  editor.Close();
  EXPECT_EQ(editor.Answer(IDNO), "Changes made are not saved. Do you want to save ?");
  EXPECT_EQ(editor.ExitCode(), 0u);
}

// Whole; then the radio services of the first satellite, whose carrier without one stays, as it was chosen.
TEST_F(Lists, EveryFormatOpensWholeAndFiltered) {
  for (const ListFormat& format : kFormats) {
    RunningEditor editor;
    Import(editor, format, false);
    ExpectImported(editor);
    EXPECT_EQ(Satellites(editor), format.whole) << format.file;
    editor.Command(kCmdClose);
    EXPECT_EQ(editor.Answer(IDNO), "Changes made are not saved. Do you want to save ?");
    Import(editor, format, true);
    HWND box = editor.WaitForBox(kStep1);
    editor.Tick(GetDlgItem(box, IDC_WIZARD_ITEMS), 0);
    editor.Press(box, IDOK);
    box = editor.WaitForBox(kStep2);
    editor.Push(box, IDC_WIZARD_OPTION);
    editor.Press(box, IDOK);
    box = editor.WaitForBox(kStep3);
    editor.Push(box, IDC_WIZARD_OPTION + 4);
    editor.Press(box, IDOK);
    ExpectImported(editor);
    EXPECT_EQ(Satellites(editor), format.filtered) << format.file;
    CloseUnsaved(editor);
  }
}

TEST_F(Lists, FirstStepCountsAndEnablesNext) {
  RunningEditor editor;
  HWND box = FirstStep(editor);
  HWND list = GetDlgItem(box, IDC_WIZARD_ITEMS);
  const auto expect = [&](int selected, const char* angle) {
    EXPECT_EQ(editor.Title(GetDlgItem(box, IDC_WIZARD_SELECTED)),
              Format("   Selected satellite(s) - %d", selected));
    EXPECT_EQ(editor.Title(GetDlgItem(box, IDC_WIZARD_INFORMATION)),
              Format("Angle - %s\tEast/West Flag - East", angle));
    EXPECT_EQ(IsWindowEnabled(GetDlgItem(box, IDOK)) != 0, selected > 0);
    EXPECT_EQ(SendMessageW(GetDlgItem(box, IDC_WIZARD_ALL), BM_GETCHECK, 0, 0) == BST_CHECKED, selected == 2);
  };
  EXPECT_EQ(editor.CellOf(list, 1, 1), "Hotbird");
  EXPECT_EQ(editor.Title(GetDlgItem(box, IDC_WIZARD_TOTAL)), "Total Satellite(s) - 2");
  expect(0, "019.2");
  editor.ClickTick(list, 1);
  EXPECT_TRUE(editor.IsTicked(list, 1) && !editor.IsTicked(list, 0));
  editor.GoTo(list, 1);
  expect(1, "013.0");
  editor.Tick(list, 0);
  editor.GoTo(list, 1);
  expect(2, "013.0");
  editor.Push(box, IDC_WIZARD_ALL);
  editor.GoTo(list, 1);
  expect(0, "013.0");
  editor.Press(box, IDCANCEL);
  EXPECT_TRUE(editor.Answers());
  EXPECT_THAT(editor.Children(), IsEmpty());
  EXPECT_EQ(editor.FindBox(), nullptr);
}

// The step of services with a step back between; it ends with "Complete".
void WalkLastStep(EditorDriver& editor) {
  HWND box = nullptr;
  const auto control = [&](int id) { return GetDlgItem(box, id); };
  const auto text = [&](int id) { return editor.Title(control(id)); };
  box = editor.WaitForBox(kStep3);
  ASSERT_EQ(editor.RowsOf(control(IDC_WIZARD_OWNERS)), 3);
  EXPECT_EQ(editor.CellOf(control(IDC_WIZARD_OWNERS), 0, 0), "All carriers");
  EXPECT_EQ(editor.RowsOf(control(IDC_WIZARD_ITEMS)), 4) << "the services of both carriers";
  editor.Tick(control(IDC_WIZARD_ITEMS), 3);
  EXPECT_THAT(text(IDC_WIZARD_INFORMATION), HasSubstr("TV   \tVideo PID - "));
  EXPECT_EQ(text(IDC_WIZARD_SELECTED), "All carriers selected service(s) - 1/3");
  editor.Push(box, IDC_WIZARD_BACK);
  box = editor.WaitForBox(kStep2);
  editor.Press(box, IDOK);
  box = editor.WaitForBox(kStep3);
  EXPECT_TRUE(editor.IsTicked(control(IDC_WIZARD_ITEMS), 3));
  EXPECT_EQ(text(IDC_WIZARD_TOTAL), "Total selected services - 1");
  editor.Press(box, IDOK);
}

TEST_F(Lists, WizardWalkedWithBack) {
  RunningEditor editor;
  HWND box = FirstStep(editor);
  const auto control = [&](int id) { return GetDlgItem(box, id); };
  const auto text = [&](int id) { return editor.Title(GetDlgItem(box, id)); };
  const auto box_ticked = [&](int bit) {
    return SendMessageW(control(IDC_WIZARD_OPTION + bit), BM_GETCHECK, 0, 0) == BST_CHECKED;
  };
  editor.Push(box, IDC_WIZARD_ALL);
  editor.Press(box, IDOK);

  box = editor.WaitForBox(kStep2);
  EXPECT_EQ(editor.RowsOf(control(IDC_WIZARD_OWNERS)), 3);
  EXPECT_EQ(editor.CellOf(control(IDC_WIZARD_OWNERS), 0, 0), "All satellites");
  EXPECT_EQ(editor.CellOf(control(IDC_WIZARD_OWNERS), 2, 0), "Hotbird");
  editor.GoTo(control(IDC_WIZARD_OWNERS), 1);
  EXPECT_EQ(editor.RowsOf(control(IDC_WIZARD_ITEMS)), 3);
  EXPECT_EQ(editor.CellOf(control(IDC_WIZARD_ITEMS), 0, 0), "All Carriers");
  editor.Tick(control(IDC_WIZARD_ITEMS), 1);
  EXPECT_EQ(text(IDC_WIZARD_INFORMATION),
            "Frequency - 11778   Symbol rate - 27500   Polarization - Horizontal");
  EXPECT_EQ(text(IDC_WIZARD_SELECTED), "Astra selected carrier(s) - 1/2");
  editor.GoTo(control(IDC_WIZARD_OWNERS), 2);
  editor.Push(box, IDC_WIZARD_OPTION + 1);
  EXPECT_TRUE(editor.IsTicked(control(IDC_WIZARD_ITEMS), 0)) << "all of its carriers are in the C band";
  EXPECT_EQ(text(IDC_WIZARD_TOTAL), "Total selected carriers - 2");

  // Back and forth: nothing is lost.
  editor.Push(box, IDC_WIZARD_BACK);
  box = editor.WaitForBox(kStep1);
  EXPECT_TRUE(editor.IsTicked(control(IDC_WIZARD_ITEMS), 0) && editor.IsTicked(control(IDC_WIZARD_ITEMS), 1));
  editor.Press(box, IDOK);
  box = editor.WaitForBox(kStep2);
  EXPECT_FALSE(box_ticked(1)) << "ticked for one satellite";
  editor.GoTo(control(IDC_WIZARD_OWNERS), 2);
  EXPECT_TRUE(box_ticked(1));
  EXPECT_EQ(text(IDC_WIZARD_TOTAL), "Total selected carriers - 2");
  editor.Press(box, IDOK);

  ASSERT_NO_FATAL_FAILURE(WalkLastStep(editor));
  ExpectImported(editor);
  // A chosen carrier stays without a chosen service.
  EXPECT_THAT(Satellites(editor), ElementsAre("[ 1 ] Astra", "  [ 1 ] Carrier1_S1", "[ 2 ] Hotbird",
                                              "  [ 1 ] Carrier1_S2", "    [ 1 ] Delta"));
  CloseUnsaved(editor);
}

void ExpectNothingLeft(EditorDriver& editor, HWND step) {
  PostMessageW(step, WM_CLOSE, 0, 0);
  editor.Until("the step to close", [&] { return !IsWindow(step); });
  EXPECT_TRUE(editor.Answers());
  EXPECT_EQ(editor.FindBox(), nullptr);
  EXPECT_THAT(editor.Children(), IsEmpty());
}

TEST_F(Lists, LongestListStandsAtOnce) {
  std::string list = ":SAT \"Astra\" 19.2 E\n";
  for (int i = 0; i < 60000; ++i) {
    if (i % 30000 == 0) list += ":TRP " + std::to_string(11000 + i / 100) + " 27500S 0 H 0 3/4\n";
    list += ":CHN \"Service " + std::to_string(i) + "\" " + std::to_string(i) + " T\n";
  }
  const Path path = Put("long.dat", list);
  RunningEditor editor;
  editor.Command(kCmdImportLyngsat);
  editor.ChooseFile("Open a File", path);
  editor.Answer(IDYES);
  HWND box = editor.WaitForBox(kStep1);
  editor.Push(box, IDC_WIZARD_ALL);
  editor.Press(box, IDOK);
  box = editor.WaitForBox(kStep2);
  editor.Push(box, IDC_WIZARD_OPTION);
  editor.Press(box, IDOK);
  box = editor.WaitForBox(kStep3);
  HWND items = GetDlgItem(box, IDC_WIZARD_ITEMS);
  // Not timed: a busy machine says nothing about the program. The list asks for what it shows, and each
  // message has to be answered within the driver's time.
  EXPECT_NE(GetWindowLongPtrW(items, GWL_STYLE) & LVS_OWNERDATA, 0);
  EXPECT_EQ(editor.RowsOf(items), 60001);
  editor.Tick(items, 0);
  EXPECT_EQ(editor.Title(GetDlgItem(box, IDC_WIZARD_TOTAL)), "Total selected services - 60000");
  ExpectNothingLeft(editor, box);
}

// The limit judges the window that is active, though the list opens in a window of its own.
TEST_F(Lists, LimitOfSdbsRefusesTheCommand) {
  Document document;
  for (int i = 0; i < static_cast<int>(kMaximumSdbs); ++i) {
    Document one = NewDocument();
    StaticDatabase& database = *one.sdbs[0].database;
    database.lnb_count = 1;
    AddTestSatellite(database, "Astra");
    document.sdbs.push_back(std::move(one.sdbs[0]));
  }
  const auto bytes = BuildBin(recorder_.context, document, {}, {});
  ASSERT_TRUE(bytes.has_value());
  const Path path = recorder_.context.temporary_folder / "full.bin";
  PutFile(path, *bytes);
  RunningEditor editor({L"--test-mode", path.native()});
  ExpectOneWindow(editor);
  for (const ListFormat& format : kFormats) {
    editor.Command(format.command);
    EXPECT_EQ(editor.Answer(IDOK), "SDB count exceeds the allowed numbers.Cannot add more SDB's.");
  }
  // With one less there is room.
  ASSERT_TRUE(editor.SelectItem({"SDB1"}));
  editor.Command(kCmdDelete);
  editor.Press(editor.Open(kCmdImportSatcodx, "Open a File"), IDCANCEL);
}

struct MergeCase {
  unsigned command;
  const char *title, *open_title;
};

const MergeCase kMergeCases[] = {
    {kCmdMergeSatcodx, "SatcoDX [ SDX ] File Merger", "Select a SatcoDX file"},
    {kCmdMergeDvb2000, "DVB2000 [ DVB ] File Merger", "Select a DVB2000 file"},
    {kCmdMergeLyngsat, "Lyngsat [ DAT ] File Merger", "Select a Lyngsat file"},
};

// A message over an open dialog; below an empty line it may name what it is about.
void ExpectMessage(EditorDriver& editor, const std::string& text) {
  HWND message = editor.WaitForBox(editor.Title(editor.frame()));
  const std::string shown = editor.BoxText(message);
  EXPECT_EQ(shown.substr(0, shown.find("\n\n")), text);
  editor.Press(message, IDOK);
}

TEST_F(Lists, MergerHasThreeModes) {
  RunningEditor editor;
  for (const MergeCase& mode : kMergeCases) {
    HWND box = editor.Open(mode.command, mode.title);
    editor.Push(box, IDOK);
    ExpectMessage(editor, "Select atleast two files.");
    editor.Push(box, IDC_MERGE_FILES);
    HWND dialog = editor.WaitForBox(mode.open_title);
    editor.Press(dialog, IDCANCEL);
    editor.Press(box, IDCANCEL);
  }
}

RECT PlaceOf(HWND box, int id) {
  RECT place{};
  GetWindowRect(GetDlgItem(box, id), &place);
  MapWindowPoints(nullptr, box, reinterpret_cast<POINT*>(&place), 2);
  return place;
}

// The list takes what the dialog grows; the buttons keep their distance from the edges they stand at.
TEST_F(Lists, MergerGrowsWithItsList) {
  RunningEditor editor;
  HWND box = editor.Open(kCmdMergeDvb2000, "DVB2000 [ DVB ] File Merger");
  const int ids[] = {IDC_MERGE_LIST, IDC_MERGE_FILES, IDCANCEL};
  // Growth of each control's edges: left, top, right, bottom.
  const RECT growth[] = {{0, 0, 90, 60}, {90, 0, 90, 0}, {90, 60, 90, 60}};
  RECT before[3], size{};
  for (int i = 0; i < 3; ++i) before[i] = PlaceOf(box, ids[i]);
  GetWindowRect(box, &size);
  SetWindowPos(box, nullptr, 0, 0, size.right - size.left + 90, size.bottom - size.top + 60,
               SWP_NOMOVE | SWP_NOZORDER);
  EXPECT_TRUE(editor.Answers());
  for (int i = 0; i < 3; ++i) {
    const RECT now = PlaceOf(box, ids[i]);
    EXPECT_EQ(now.left - before[i].left, growth[i].left) << i;
    EXPECT_EQ(now.top - before[i].top, growth[i].top) << i;
    EXPECT_EQ(now.right - before[i].right, growth[i].right) << i;
    EXPECT_EQ(now.bottom - before[i].bottom, growth[i].bottom) << i;
  }
}

TEST_F(Lists, MergerAddsAndRemoves) {
  RunningEditor editor;
  const Path folder = recorder_.context.temporary_folder;
  const Path first = Put("b.sdx", "SATCODX_03"), old = Put("A.sdx", "SATCODX_04");
  std::filesystem::create_directory(folder / "empty");
  HWND box = editor.Open(kCmdMergeSatcodx, "SatcoDX [ SDX ] File Merger");
  HWND list = GetDlgItem(box, IDC_MERGE_LIST);
  const auto add = [&](const Path& path) {
    editor.Push(box, IDC_MERGE_FILES);
    editor.ChooseFile("Select a SatcoDX file", path);
  };
  add(first);
  editor.Until("the list", [&] { return editor.EntriesOf(list).size() == 1; });
  add(first);
  ExpectMessage(editor, "Duplication of files not allowed.");
  const auto add_folder = [&](const Path& path) {
    editor.Push(box, IDC_MERGE_FOLDER);
    HWND browser = editor.WaitForBox("Browse for Folder");
    EXPECT_THAT(editor.BoxText(browser), HasSubstr("Choose a folder"));
    editor.ChooseFolder(browser, path);
  };
  add_folder(folder);
  editor.Until("the folder's files", [&] { return editor.EntriesOf(list).size() == 2; });
  EXPECT_THAT(editor.EntriesOf(list), ElementsAre(Utf8FromPath(first), Utf8FromPath(old)))
      << "a folder's files are not tested for their version";
  SendMessageW(list, LB_SETSEL, TRUE, 0);
  editor.Push(box, IDC_MERGE_REMOVE);
  EXPECT_THAT(editor.EntriesOf(list), ElementsAre(Utf8FromPath(old)));
  editor.Push(box, IDC_MERGE_REMOVE);
  EXPECT_EQ(editor.EntriesOf(list).size(), 1u) << "nothing is selected";
  add_folder(folder / "empty");
  ExpectMessage(editor, "No SatcoDX ( SDX ) file found.");
  editor.Press(box, IDCANCEL);
}

// Two lists, moved into the other order with the mouse, joined, and imported again.
TEST_F(Lists, MergedListsAreImported) {
  const Path first =
      Put("1.dat", ":SAT \"First\" 19.2 E\r\n:TRP 11778 27500S 0 H 0 3/4\r\n:CHN \"One\" 1 T\r\n");
  const Path second =
      Put("2.dat", ":SAT \"Second\" 13.0 E\r\n:TRP 12000 27500S 0 H 0 3/4\r\n:CHN \"Two\" 2 T\r\n");
  const Path output = recorder_.context.temporary_folder / "merged.dat";
  RunningEditor editor;
  HWND box = editor.Open(kCmdMergeLyngsat, "Lyngsat [ DAT ] File Merger");
  HWND list = GetDlgItem(box, IDC_MERGE_LIST);
  for (const Path& path : {first, second}) {
    const size_t before = editor.EntriesOf(list).size();
    editor.Push(box, IDC_MERGE_FILES);
    editor.ChooseFile("Select a Lyngsat file", path);
    editor.Until("the file", [&] { return editor.EntriesOf(list).size() == before + 1; });
  }
  const auto height = static_cast<int>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
  PostMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, height / 2));
  for (int y = height / 2; y < 3 * height; y += 4)
    PostMessageW(list, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(20, y));
  PostMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(20, 3 * height));
  editor.Until("the other order", [&] { return editor.EntriesOf(list)[0] == Utf8FromPath(second); });
  SendNotifyMessageW(list, WM_SYSKEYDOWN, VK_UP, 1 << 29);
  EXPECT_TRUE(editor.Answers());
  EXPECT_THAT(editor.EntriesOf(list), ElementsAre(Utf8FromPath(first), Utf8FromPath(second)));
  SendNotifyMessageW(list, WM_SYSKEYDOWN, VK_DOWN, 1 << 29);
  EXPECT_TRUE(editor.Answers());

  editor.Push(box, IDOK);
  editor.ChooseFile("Save as Lyngsat DAT file", output);
  ExpectMessage(editor, Utf8FromPath(output) + " \n file is generated successfully.");
  editor.Until("the merger to close", [&] { return !IsWindow(box); });
  EXPECT_TRUE(IsWindowEnabled(editor.frame()));

  editor.Command(kCmdImportLyngsat);
  editor.ChooseFile("Open a File", output);
  EXPECT_EQ(editor.Answer(IDNO), kFilterQuestion);
  ExpectImported(editor);
  EXPECT_THAT(Satellites(editor), ElementsAre("[ 1 ] Second", "  [ 1 ] Carrier1_S1", "    [ 1 ] Two",
                                              "[ 2 ] First", "  [ 1 ] Carrier1_S2", "    [ 1 ] One"));
  CloseUnsaved(editor);
}

TEST_F(Lists, DroppedFilesOpen) {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  AddTestSatellite(database, "Dropped");
  const auto bytes = BuildBin(recorder_.context, document, {}, {});
  ASSERT_TRUE(bytes.has_value());
  const Path folder = recorder_.context.temporary_folder;
  const std::vector<Path> paths = {folder / "first.bin", folder / L"zw\x00F6lf.bin"};
  for (const Path& path : paths) PutFile(path, *bytes);
  RunningEditor editor;
  editor.DropFiles(paths);
  ASSERT_TRUE(editor.Until("both windows", [&] { return editor.Children().size() == 2; }));
  EXPECT_EQ(editor.Title(editor.ActiveChild()), Utf8FromPath(paths[1]));
  EXPECT_EQ(Satellites(editor).at(0), "[ 1 ] Dropped");
}

}  // namespace

}  // namespace vexa
