// Imports of lists whose bytes leave something open: the question, lists of other receivers, completing,
// names in other code pages; duplicates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "core/messages.h"
#include "platform/code_page.h"
#include "tests/support/list_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/ui/driver.h"
#include "ui/controls/windows_api.h"
#include "ui/forms/lists_resource.h"
#include "ui/forms/options_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kQuestion = "Import - How the list is read";
constexpr const char* kOffer = "Complete the List";

// Two DVB-S carriers and one of DVB-S2; a name with a letter beyond ASCII; a service twice.
std::string VdrChannels() {
  return "K\xC3\xB6ln:11836:hC34:S19.2E:27500:101:102:0:0:7:0:0:0\n"
         "Twice:12000:vC34:S13E:27500:101:102:0:0:8:0:0:0\n"
         "Twice:12000:vC34:S13E:27500:101:102:0:0:9:0:0:0\n"
         "S two:12500:vC34S1:S13E:27500:101:102:0:0:8:0:0:0\n";
}

class Imports : public testing::Test {
 protected:
  Imports() : editor_(EditorProgram()) {}
  void SetUp() override { ASSERT_TRUE(editor_.WaitForFrame()); }
  Path Put(const std::string& name, const std::string& content) {
    const Path path = recorder_.context.temporary_folder / name;
    PutFile(path, BytesOf(content));
    return path;
  }
  void Import(unsigned command, const Path& list) {
    editor_.Command(command);
    editor_.ChooseFile("Open a File", list);
    editor_.Answer(IDNO);
  }
  HWND Offer() { return editor_.WaitForBox(kOffer); }
  bool Enabled(HWND box, int id) { return IsWindowEnabled(GetDlgItem(box, id)) != 0; }
  void Choose(HWND box, int id, const char* entry) {
    HWND list = GetDlgItem(box, id);
    const auto names = CodePageNames();
    const auto count = static_cast<size_t>(SendMessageW(list, CB_GETCOUNT, 0, 0));
    const size_t ahead = count - names.size();  // what stands before the pages
    const auto at = static_cast<size_t>(std::find(names.begin(), names.end(), entry) - names.begin()) + ahead;
    SendMessageW(list, CB_SETCURSEL, at, 0);
    SendMessageW(box, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
  }
  // The name that the dialog of the command proposes.
  void ExpectProposal(unsigned command, const char* name) {
    HWND box = editor_.Open(command, "Save");
    EXPECT_THAT(editor_.BoxText(box) + editor_.Title(GetDlgItem(box, 0x47C)), HasSubstr(name));
    editor_.Press(box, IDCANCEL);
  }
  void End() {
    editor_.Close();
    editor_.Answer(IDNO);
    EXPECT_EQ(editor_.ExitCode(), 0u);
  }

  Recorder recorder_;
  EditorDriver editor_;
};

TEST_F(Imports, ADoubtfulListIsAskedAboutAndCompleted) {
  const Path path = Put("tv.sdx", TelevisionList());
  Import(kCmdImportSatcodx, path);
  HWND box = editor_.WaitForBox(kQuestion);
  EXPECT_THAT(editor_.Title(GetDlgItem(box, IDC_IMPORT_QUESTION)),
              HasSubstr("tv.sdx does not look as lists of its format do: its version is 105."));
  HWND ways = GetDlgItem(box, IDC_IMPORT_WAYS);
  ASSERT_EQ(editor_.RowsOf(ways), 5);
  EXPECT_EQ(editor_.CellOf(ways, 0, 0), "default");
  EXPECT_EQ(editor_.CellOf(ways, 4, 1), "134");
  EXPECT_EQ(editor_.CellOf(ways, 4, 4), "Das Erste HD");
  EXPECT_FALSE(Enabled(box, IDC_IMPORT_KEEP_S2));
  editor_.Press(box, IDCANCEL);
  EXPECT_TRUE(editor_.Answers());
  EXPECT_THAT(editor_.Children(), IsEmpty()) << "nothing is built";
  EXPECT_EQ(editor_.FindBox(), nullptr);

  Import(kCmdImportSatcodx, path);
  box = editor_.WaitForBox(kQuestion);
  ways = GetDlgItem(box, IDC_IMPORT_WAYS);
  SetDlgItemTextW(box, IDC_IMPORT_LENGTH, L"12");
  editor_.Push(box, IDOK);
  HWND refusal = editor_.WaitForBox(editor_.Title(editor_.frame()));
  EXPECT_EQ(editor_.BoxText(refusal), "Record length should be in the range of 127 - 65535.");
  editor_.Press(refusal, IDOK);
  SetDlgItemTextW(box, IDC_IMPORT_LENGTH, L"134");
  EXPECT_EQ(editor_.CellOf(ways, 0, 1), "134") << "every way takes the length";
  editor_.GoTo(ways, 4);
  editor_.Press(box, IDOK);

  ASSERT_NE(box = Offer(), nullptr);
  EXPECT_THAT(editor_.Title(GetDlgItem(box, IDC_COMPLETE_TEXT)),
              HasSubstr("tv.sdx is imported. Satellites: 1, carriers: 1, services: 2."));
  for (const int id : {IDC_COMPLETE_POSITIONS, IDC_COMPLETE_SIDES, IDC_COMPLETE_LNBS, IDC_COMPLETE_SLOTS}) {
    EXPECT_EQ(SendMessageW(GetDlgItem(box, id), BM_GETCHECK, 0, 0), BST_UNCHECKED) << id;
    EXPECT_TRUE(Enabled(box, id)) << id;
    editor_.Push(box, id);
  }
  editor_.Press(box, IDOK);
  ASSERT_TRUE(editor_.SelectItem({"SDB1", "Satellites"}));
  EXPECT_EQ(editor_.ListCount(), 85);
  EXPECT_EQ(editor_.Cell(0, 3), "East");
  EXPECT_EQ(editor_.Cell(0, 5), "1");
  EXPECT_EQ(editor_.Cell(84, 1), "NewSat 84");
  editor_.Command(kCmdUndo);
  EXPECT_EQ(editor_.ListCount(), 1) << "one step";
  EXPECT_EQ(editor_.Cell(0, 5), "255");
  EXPECT_EQ(editor_.Title(editor_.ActiveChild()), "tv.sdx *");
  End();
}

TEST_F(Imports, ListsOfOtherReceivers) {
  const Path vdr = Put("channels.conf", VdrChannels());
  editor_.DropFiles({vdr});
  editor_.Answer(IDNO);
  HWND box = editor_.WaitForBox(kQuestion);
  EXPECT_FALSE(Enabled(box, IDC_IMPORT_LIST_PAGE)) << "it is UTF-8";
  EXPECT_FALSE(Enabled(box, IDC_IMPORT_LENGTH));
  HWND ways = GetDlgItem(box, IDC_IMPORT_WAYS);
  EXPECT_EQ(editor_.CellOf(ways, 0, 6), "2");
  editor_.Push(box, IDC_IMPORT_KEEP_S2);
  EXPECT_EQ(editor_.CellOf(ways, 0, 6), "3");
  editor_.Push(box, IDC_IMPORT_KEEP_S2);
  Choose(box, IDC_IMPORT_PAGE, "Windows-1251");
  editor_.Press(box, IDOK);
  box = editor_.WaitForBox(editor_.Title(editor_.frame()));  // behind the progress box
  EXPECT_EQ(editor_.MessageText(box),
            "1 DVB-S2 carriers left out\n1 characters that Windows-1251 lacks became \"?\"");
  EXPECT_EQ(editor_.MessageDetail(box), Utf8FromPath(vdr));
  editor_.Press(box, IDOK);
  ASSERT_NE(box = Offer(), nullptr);
  EXPECT_FALSE(Enabled(box, IDC_COMPLETE_SIDES)) << "the list says them";
  editor_.Press(box, IDCANCEL);
  ASSERT_TRUE(editor_.SelectItem({"SDB1", "Satellites", "[ 1 ] 19.2E", "[ 1 ] Carrier1_S1"}));
  EXPECT_EQ(editor_.Cell(0, 1), "K?ln");
  ExpectProposal(kCmdSaveAs, "channels.bin");
  ExpectProposal(kCmdTextFile, "channels.txt");

  Import(kCmdImportLamedb, Put("lamedb",
                               "eDVB services /4/\ntransponders\n00c00000:0001:0001\n"
                               "\ts 11836000:27500000:0:3:192:2:0\n/\nend\nservices\nend\n"));
  editor_.Press(Offer(), IDCANCEL);
  EXPECT_TRUE(editor_.SelectItem({"SDB1", "Satellites", "[ 1 ] 19.2E", "[ 1 ] Carrier1_S1"}));
  Import(kCmdImportDvbv5, Put("Astra-19.2E", "S 11739000 V 27500000 3/4\n"));
  editor_.Press(Offer(), IDCANCEL);
  EXPECT_TRUE(editor_.SelectItem({"SDB1", "Satellites", "[ 1 ] Astra-19.2E", "[ 1 ] Carrier1_S1"}));
  editor_.Kill();
}

// The byte E4 is another letter in each page; entry takes the letters of the page, and refuses others.
TEST_F(Imports, NamesAreShownAndTakenInTheChosenPage) {
  Import(kCmdImportSatcodx, Put("a.sdx", SdxList({{.name = "\xE4lpha___"}, {.id = "00002"}}, true)));
  HWND box = editor_.WaitForBox(kQuestion);
  EXPECT_EQ(editor_.CellOf(GetDlgItem(box, IDC_IMPORT_WAYS), 0, 4), "\xC3\xA4lpha");
  Choose(box, IDC_IMPORT_PAGE, "ISO 8859-5");
  editor_.Press(box, IDOK);
  editor_.Press(Offer(), IDCANCEL);
  const std::vector<std::string> carrier = {"SDB1", "Satellites", "[ 1 ] ASTRA 1___________",
                                            "[ 1 ] Carrier1_S1"};
  ASSERT_TRUE(editor_.SelectItem(carrier));
  EXPECT_EQ(editor_.Cell(0, 1), "\xD1\x84lpha");
  box = editor_.Open(kCmdSettings, "Settings");
  Choose(box, IDC_SETTINGS_NAMES, "Windows-1251");
  editor_.Press(box, IDOK);
  EXPECT_EQ(editor_.Cell(0, 1), "\xD0\xB4lpha");
  const auto lines = editor_.Tree(true);
  EXPECT_THAT(lines, testing::Contains(HasSubstr("[ 1 ] \xD0\xB4lpha")));
  EXPECT_THAT(editor_.Title(editor_.ActiveChild()), HasSubstr("a.sdx"));
  End();
}

TEST_F(Imports, DuplicatesAreSelectedAndDeleted) {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  AddTestSatellite(database, "Astra");
  AddTestCarrier(database, 0);
  for (const char* name : {"One", "Two", "One", "Two", "One"})
    SetName(AddTestService(database, database.carriers[0])->record.name, name);
  const auto bytes = BuildBin(recorder_.context, document, {}, {});
  ASSERT_TRUE(bytes.has_value());
  const Path path = recorder_.context.temporary_folder / "twice.bin";
  PutFile(path, *bytes);
  editor_.DropFiles({path});
  ASSERT_TRUE(editor_.Until("the window", [&] { return editor_.Children().size() == 1; }));
  ASSERT_TRUE(editor_.SelectItem({"SDB1", "Satellites", "[ 1 ] Astra", "[ 1 ] "}));
  editor_.Command(kCmdSelectDuplicates);
  HWND status = FindWindowExW(editor_.frame(), nullptr, STATUSCLASSNAMEW, nullptr);
  EXPECT_EQ(editor_.Title(status), "3 duplicates are selected.");
  editor_.Command(kCmdDelete);
  EXPECT_EQ(editor_.ListCount(), 2);
  EXPECT_EQ(editor_.Cell(1, 1), "Two");
  editor_.Command(kCmdSelectDuplicates);
  EXPECT_EQ(editor_.Answer(IDOK), "No record of this list repeats an earlier one.");
  End();
}

}  // namespace

}  // namespace vexa
