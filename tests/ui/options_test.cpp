// Options and tools as their user meets them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "tests/support/ecf_maker.h"
#include "tests/ui/editor_fixture.h"
#include "tests/ui/test_key.h"
#include "ui/forms/options_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

class Options : public EditorTest {};

TEST_F(Options, SettingsDecideHowPidsAreShown) {
  StartWithSample();
  ASSERT_TRUE(SelectLow());
  EXPECT_THAT(driver_->ListColumns(), IsSupersetOf({"Video (Dec)", "Audio (Dec)", "PCR (Dec)"}));
  HWND box = driver_->Open(kCmdSettings, "Settings");
  EXPECT_THAT(driver_->BoxText(box), HasSubstr("Ma&nufacture Id"));
  EXPECT_TRUE(Enabled(box, IDC_SETTINGS_FILE));
  EXPECT_TRUE(Enabled(box, IDC_SETTINGS_BAUD));
  EXPECT_FALSE(Enabled(box, IDC_SETTINGS_LEVEL)) << "images are not compressed";
  Send(GetDlgItem(box, IDC_SETTINGS_COMPRESSED), BM_CLICK);
  EXPECT_TRUE(Enabled(box, IDC_SETTINGS_LEVEL));
  Pick(box, IDC_SETTINGS_COMPRESSION, 1);
  EXPECT_FALSE(Enabled(box, IDC_SETTINGS_LEVEL)) << "this compression has no levels";
  Pick(box, IDC_SETTINGS_RADIX, 0);
  driver_->Press(box, IDOK);
  EXPECT_THAT(driver_->ListColumns(), IsSupersetOf({"Video (Hex)", "Audio (Hex)", "PCR (Hex)"}));
  EXPECT_EQ(driver_->Cell(0, 5), "FF");
  // A changed format brings its own way of showing, over the list's.
  box = driver_->Open(kCmdSettings, "Settings");
  EXPECT_EQ(Send(GetDlgItem(box, IDC_SETTINGS_RADIX), CB_GETCURSEL), 0);
  Pick(box, IDC_SETTINGS_FORMAT, 0);
  driver_->Press(box, IDOK);
  EXPECT_EQ(driver_->Cell(0, 5), "255");
  EXPECT_THAT(Caption(), testing::Not(HasSubstr("*"))) << "the database is not changed";
  // A file that is not there keeps the dialog.
  box = driver_->Open(kCmdSettings, "Settings");
  Type(box, IDC_SETTINGS_FILE, "C:\\none.ecf");
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box), "Configuration file does not exist or invalid path.");
  ASSERT_TRUE(IsWindow(box));
  const Path empty = recorder_.context.temporary_folder / "empty.ecf";
  PutFile(empty, {});
  Type(box, IDC_SETTINGS_FILE, Utf8FromPath(empty));
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box), "Configuration file does not contains any information.");
  driver_->Press(box, IDCANCEL);
  End();
}

// By the keyboard the way to the lists goes over Browse.
TEST_F(Options, ATypedConfigurationIsLookedAtWhenTabLeavesIt) {
  StartWithSample();
  const EcfConfigurationSpec one{.name = "one"}, two{.name = "two"};
  const Path other = recorder_.context.temporary_folder / "other.ecf";
  PutFile(other, MakeEcf({{0xAB, {{.name = "P", .configurations = {one, two}}}}}));
  HWND box = driver_->Open(kCmdSettings, "Settings");
  const auto press = [&](unsigned key) {
    PostMessageW(driver_->Focused(), WM_KEYDOWN, key, 1);
    EXPECT_TRUE(driver_->HasCaughtUp());
  };
  const auto tab_to = [&](int id) {
    press(VK_TAB);
    EXPECT_EQ(GetDlgCtrlID(driver_->Focused()), id);
  };
  const auto type = [&](const std::string& path) {
    Send(box, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(box, IDC_SETTINGS_FILE)), TRUE);
    Type(box, IDC_SETTINGS_FILE, path);
    const std::string before = Shown(box, IDC_SETTINGS_MANUFACTURER);
    tab_to(IDC_SETTINGS_BROWSE);
    EXPECT_EQ(Shown(box, IDC_SETTINGS_MANUFACTURER), before) << "Browse may replace it";
    press(VK_TAB);
  };
  type(Utf8FromPath(other));
  EXPECT_EQ(GetDlgCtrlID(driver_->Focused()), IDC_SETTINGS_MANUFACTURER);
  EXPECT_EQ(Shown(box, IDC_SETTINGS_MANUFACTURER), "AB");
  tab_to(IDC_SETTINGS_PRODUCT);
  tab_to(IDC_SETTINGS_CONFIGURATION);
  press(VK_DOWN);
  press(VK_RETURN);
  ASSERT_TRUE(driver_->Until("the end of the dialog", [&] { return !IsWindow(box); }));
  box = driver_->Open(kCmdSettings, "Settings");
  EXPECT_EQ(Shown(box, IDC_SETTINGS_CONFIGURATION), "two");
  Type(box, IDC_SETTINGS_MINOR, "16");
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box), "The minor software version is a number from 0 to 15.");
  type("C:\\none.ecf");
  EXPECT_EQ(AnswerOver(box), "File access error - AddConfigurationListToComboBox");
  EXPECT_EQ(AnswerOver(box), "Configuration parsing problem");
  for (const int id : {IDOK, IDC_SETTINGS_FILE, IDC_SETTINGS_MAJOR, IDC_SETTINGS_BAUD, IDC_SETTINGS_FORMAT})
    EXPECT_TRUE(driver_->Until("a field to grey", [&] { return !Enabled(box, id); })) << id;
  EXPECT_TRUE(Enabled(box, IDC_SETTINGS_BROWSE) && Enabled(box, IDCANCEL));
  driver_->Press(box, IDCANCEL);
  End();
}

TEST_F(Options, DefaultValuesAreJudgedKeptAndUsed) {
  const TestKey key;
  Start({key.mode});
  HWND box = driver_->Open(kCmdDefaultValues, "Default Values");
  EXPECT_EQ(Shown(box, IDC_DEFAULTS_CARRIER_FREQUENCY), "10700");
  Type(box, IDC_DEFAULTS_CARRIER_FREQUENCY, "950");
  Type(box, IDC_DEFAULTS_LNB_FREQUENCY1, "5150");
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box), "Carrier frequency should be in the range of 10700 - 12750");
  ASSERT_TRUE(IsWindow(box));
  Pick(box, IDC_DEFAULTS_LNB_SWITCH, 2);
  EXPECT_EQ(Send(GetDlgItem(box, IDC_DEFAULTS_LNB_SELECTION), CB_GETCOUNT), 5) << "None and A to D";
  Type(box, IDC_DEFAULTS_CARRIER_FREQUENCY, "11000");
  driver_->Press(box, IDOK);
  End();
  EXPECT_EQ(key.Value("Defaults", "CarrierFrequency"), "11000");
  EXPECT_EQ(key.Value("Defaults", "LnbFrequency1"), "5150");

  Start({key.mode});
  box = driver_->Open(kCmdDefaultValues, "Default Values");
  EXPECT_EQ(Shown(box, IDC_DEFAULTS_CARRIER_FREQUENCY), "11000");
  EXPECT_EQ(Send(GetDlgItem(box, IDC_DEFAULTS_LNB_SWITCH), CB_GETCURSEL), 2);
  Push(box, IDC_DEFAULTS_FACTORY);
  driver_->Until("the factory's value",
                 [&] { return Shown(box, IDC_DEFAULTS_CARRIER_FREQUENCY) == "10700"; });
  driver_->Press(box, IDCANCEL);
  End();
  EXPECT_EQ(key.Value("Defaults", "CarrierFrequency"), "11000") << "cancelled";
}

TEST_F(Options, ColoursAreKeptTogether) {
  const TestKey key;
  Start({key.mode});
  HWND box = driver_->Open(kCmdColour, "Color");
  Push(box, IDC_COLOURS_FIRST + 4);
  HWND mixer = BoxOver(box);
  constexpr int kRed = 706;  // green and blue follow
  const char* parts[] = {"1", "2", "3"};
  for (int i = 0; i < 3; ++i) Type(mixer, kRed + i, parts[i]);
  driver_->Press(mixer, IDOK);
  driver_->Press(box, IDOK);
  EXPECT_TRUE(driver_->Answers());
  EXPECT_EQ(key.Value("Color", "TVService"), "197121");
  EXPECT_EQ(key.Value("Color", "InactSatellite"), "37120") << "written with it";
  box = driver_->Open(kCmdColour, "Color");
  Push(box, IDC_COLOURS_STANDARD);
  driver_->Press(box, IDOK);
  EXPECT_TRUE(driver_->Answers());
  EXPECT_EQ(key.Value("Color", "TVService"), "8388863");
  End();
}

TEST_F(Options, WidthsAndPlacesOutliveTheProgram) {
  const TestKey key;
  const Path path = PutSample();
  Start({key.mode}, path);
  ASSERT_TRUE(SelectLow());
  const auto standard = Send(List(), LVM_GETCOLUMNWIDTH, 2);
  Send(List(), LVM_SETCOLUMNWIDTH, 2, 211);
  driver_->SetColumnOrder(List(), {0, 2, 1, 3, 4, 5, 6, 7, 8});
  HWND header = reinterpret_cast<HWND>(Send(List(), LVM_GETHEADER));
  ShowWindow(driver_->frame(), SW_RESTORE);
  SetWindowPos(driver_->frame(), nullptr, 33, 44, 620, 480, SWP_NOZORDER);
  ASSERT_TRUE(driver_->Answers());
  End();
  EXPECT_EQ(key.Value("Window", "Width"), "620");
  Start({key.mode}, path);
  EXPECT_TRUE(driver_->Until("the maximised frame", [&] { return IsZoomed(driver_->frame()) != 0; }));
  ShowWindow(driver_->frame(), SW_RESTORE);
  ASSERT_TRUE(driver_->Answers());
  RECT place{};
  GetWindowRect(driver_->frame(), &place);
  EXPECT_EQ(place.left, 33);
  EXPECT_EQ(place.top, 44);
  EXPECT_EQ(place.right, 33 + 620);
  ASSERT_TRUE(SelectLow());
  EXPECT_NE(standard, 211);
  EXPECT_EQ(Send(List(), LVM_GETCOLUMNWIDTH, 2), 211);
  header = reinterpret_cast<HWND>(Send(List(), LVM_GETHEADER));
  EXPECT_EQ(Send(header, HDM_ORDERTOINDEX, 1), 2);
  // In another window, after a list of other columns, too.
  driver_->Command(kCmdNew);
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "LNBs"}));
  driver_->Command(kCmdClose);
  ASSERT_TRUE(driver_->SelectItem({"SDB1"}));
  ASSERT_TRUE(SelectLow());
  EXPECT_EQ(Send(header, HDM_ORDERTOINDEX, 1), 2);
  End();
}

TEST_F(Options, AnotherResolutionGivesTheFrameItsPlaceAndPictures) {
  StartWithSample();
  HWND tree = FindWindowExW(driver_->ActiveChild(), nullptr, WC_TREEVIEWW, nullptr);
  ShowWindow(driver_->frame(), SW_RESTORE);
  for (const RECT& wanted : {RECT{10, 20, 810, 620}, RECT{40, 50, 640, 550}}) {
    driver_->ChangeResolution(144, wanted);
    RECT place{};
    GetWindowRect(driver_->frame(), &place);
    EXPECT_TRUE(EqualRect(&place, &wanted));
    EXPECT_NE(Send(tree, TVM_GETIMAGELIST, TVSIL_NORMAL), 0);
    EXPECT_EQ(Send(List(), LVM_GETIMAGELIST, LVSIL_SMALL), Send(tree, TVM_GETIMAGELIST, TVSIL_NORMAL));
  }
  End();
}

TEST_F(Options, SortingToAFileLeavesTheWindowAloneSortingHereDoesNot) {
  StartWithSample();
  const Path sorted = recorder_.context.temporary_folder / "sorted.bin";
  HWND box = driver_->Open(kCmdSort, "Sort SDB information");
  Send(GetDlgItem(box, IDC_SORT_SEPARATE), BM_CLICK);
  Push(box, IDOK);
  driver_->ChooseFile("Save As", sorted);
  ASSERT_TRUE(driver_->Until("the end of the dialog", [&] { return !IsWindow(box); }));
  EXPECT_THAT(Caption(), testing::Not(HasSubstr("*")));
  Document document;
  ASSERT_TRUE(OpenBin(recorder_.context, sorted, document));
  EXPECT_EQ(NameOf(document.sdbs[0].database->services[0]->record.name), "Bee")
      << "the carrier High is first";
  ASSERT_TRUE(SelectLow());
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee"));

  box = driver_->Open(kCmdSort, "Sort SDB information");
  Pick(box, IDC_SORT_CARRIERS, 0);
  EXPECT_TRUE(Enabled(box, IDOK));
  for (const int kind : {IDC_SORT_SATELLITES, IDC_SORT_SERVICES}) Pick(box, kind, 0);
  EXPECT_FALSE(Enabled(box, IDOK)) << "no key";
  Pick(box, IDC_SORT_SERVICES + 1, 1);
  EXPECT_TRUE(Enabled(box, IDOK));
  driver_->Press(box, IDOK);
  EXPECT_TRUE(driver_->Answers());
  EXPECT_THAT(Caption(), HasSubstr(" *"));
  ASSERT_TRUE(SelectLow());
  EXPECT_THAT(Column(1), ElementsAre("ant", "Bee", "Cap"));
  driver_->Command(kCmdUndo);
  ASSERT_TRUE(SelectLow());
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee"));
  EXPECT_THAT(Caption(), testing::Not(HasSubstr("*")));

  driver_->Command(kCmdNew);
  box = driver_->Open(kCmdSort, "Sort SDB information");
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box),
            "Invalid SDB(s) - SDB1. \nNOTE: Valid SDB should contain atleast one satellite record.");
  driver_->Press(box, IDCANCEL);
  End();
}

TEST_F(Options, FindGoesToTheRecordAndATitleOrdersTheListAlone) {
  StartWithSample();
  HWND box = driver_->Open(kCmdFind, "Find");
  Type(box, IDC_FIND_TEXT, "nowhere");
  Push(box, IDOK);
  EXPECT_EQ(AnswerOver(box), "No record found.");
  Type(box, IDC_FIND_TEXT, "BEE");
  driver_->Press(box, IDOK);
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee")) << "the carrier is selected";
  EXPECT_EQ(SelectedRow(), 2);
  driver_->Command(kCmdFindNext);
  EXPECT_THAT(Column(2), ElementsAre("High"));
  EXPECT_EQ(SelectedRow(), 0);
  driver_->Command(kCmdFindPrevious);
  EXPECT_EQ(driver_->ListCount(), 3);
  EXPECT_EQ(SelectedRow(), 2);
  // By number, in a list that another view had filtered.
  driver_->Command(kCmdViewRadio);
  box = driver_->Open(kCmdFind, "Find");
  EXPECT_EQ(Shown(box, IDC_FIND_TEXT), "BEE");
  Type(box, IDC_FIND_TEXT, "256");
  Pick(box, IDC_FIND_BY, 2);
  driver_->Press(box, IDOK);
  EXPECT_EQ(driver_->ListCount(), 3);
  EXPECT_EQ(SelectedRow(), 1);

  // The same list in another order, by clicks on its titles.
  ASSERT_TRUE(SelectLow());
  const auto header = reinterpret_cast<HWND>(Send(List(), LVM_GETHEADER));
  const auto click = [&](int column) {
    int x = 4;
    for (int i = 0; i < column; ++i)
      x += static_cast<int>(Send(List(), LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(i)));
    Send(header, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x + 12, 6));
    Send(header, WM_LBUTTONUP, 0, MAKELPARAM(x + 12, 6));
  };
  click(1);
  EXPECT_THAT(Column(1), ElementsAre("ant", "Bee", "Cap"));
  EXPECT_THAT(Column(0), ElementsAre("2", "3", "1")) << "the numbers stay the records' own";
  click(1);
  EXPECT_THAT(Column(1), ElementsAre("Cap", "Bee", "ant"));
  click(3);
  EXPECT_THAT(Column(3), ElementsAre("1", "2", "3"));
  EXPECT_THAT(Caption(), testing::Not(HasSubstr("*")));
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Zeta", "[ 2 ] High"}));
  ASSERT_TRUE(SelectLow());
  EXPECT_THAT(Column(1), ElementsAre("Cap", "ant", "Bee")) << "another node, the order of the records";
  End();
}

TEST_F(Options, FindingsLeadToTheirRecords) {
  Document document = NewDocument();
  ASSERT_TRUE(OpenBin(recorder_.context, PutSample(), document));
  StaticDatabase& database = *document.sdbs[1].database;
  database.services[2]->record.pcr_pid = 5;
  database.carriers[1]->record.symbol_rate = 7;
  document.sdbs.erase(document.sdbs.begin());
  const Path path = recorder_.context.temporary_folder / "wrong.bin";
  PutFile(path, *BuildBin(recorder_.context, document, {}, {}));
  Start({L"--test-mode"}, path);
  HWND box = driver_->Open(kCmdCheck, "Check Database - " + Utf8FromPath(path));
  EXPECT_EQ(Shown(box, IDC_FINDINGS_COUNT), "Findings: 2");
  EXPECT_TRUE(IsWindowEnabled(driver_->frame())) << "the database can be mended meanwhile";
  HWND rows = GetDlgItem(box, IDC_FINDINGS_LIST);
  EXPECT_EQ(driver_->CellOf(rows, 0, 0),
            "SDB1 satellite 1 carrier 1 service 3: Invalid PCR PID. "
            "Do you want to update default PID ?");
  driver_->GoTo(rows, 0);
  EXPECT_EQ(driver_->ListCount(), 3);
  EXPECT_EQ(SelectedRow(), 2);
  driver_->GoTo(rows, 1);
  EXPECT_THAT(Column(1), ElementsAre("Low", "High"));
  EXPECT_EQ(SelectedRow(), 1);
  // The list outlives its database window without harm.
  driver_->Command(kCmdClose);
  Push(box, IDC_FINDINGS_AGAIN);
  Push(box, IDOK);
  EXPECT_TRUE(driver_->Until("the end of the list", [&] { return !IsWindow(box); }));
  EXPECT_TRUE(driver_->Answers());
  End();
}

TEST_F(Options, MergeAddsTheSdbsOfAFile) {
  StartWithSample();
  driver_->Command(kCmdMergeSdb);
  driver_->ChooseFile("Open", PutSample("other.bin"));
  ASSERT_TRUE(driver_->Until("the change", [&] { return Caption().ends_with(" *"); }));
  const auto tree = driver_->Tree(false);
  EXPECT_EQ(std::count(tree.begin(), tree.end(), "SDB1"), 2);
  const Path damaged = recorder_.context.temporary_folder / "damaged.bin";
  PutFile(damaged, BytesOf("Qz, too short"));
  driver_->Command(kCmdMergeSdb);
  driver_->ChooseFile("Open", damaged);
  EXPECT_EQ(driver_->Answer(IDOK), "Invalid or unknown file format.");
  EXPECT_EQ(driver_->Tree(false).size(), tree.size());
  driver_->Command(kCmdUndo);
  const auto undone = driver_->Tree(false);
  EXPECT_EQ(std::count(undone.begin(), undone.end(), "SDB1"), 1);
  // Several at once, by their names in the folder that was chosen from before.
  PutSample("third.bin");
  driver_->Command(kCmdMergeSdb);
  driver_->ChooseFile("Open", L"\"other.bin\" \"third.bin\"");
  ASSERT_TRUE(driver_->Until("the change", [&] { return Caption().ends_with(" *"); }));
  const auto both = driver_->Tree(false);
  EXPECT_EQ(std::count(both.begin(), both.end(), "SDB1"), 3);
  driver_->Command(kCmdUndo);
  End();
}

TEST_F(Options, MissingHelpIsTold) {
  const Path lonely = recorder_.context.temporary_folder / "lonely";
  std::filesystem::create_directory(lonely);
  for (const char* name : {"VexaEditor.exe", "receivers.ecf"})
    std::filesystem::copy_file(ProgramFolder() / name, lonely / name);
  driver_ = std::make_unique<EditorDriver>(lonely / "VexaEditor.exe");
  ASSERT_TRUE(driver_->WaitForFrame());
  driver_->Command(kCmdContents);
  EXPECT_THAT(driver_->Answer(IDOK), HasSubstr("The help file is missing:"));
  End();
}

}  // namespace

}  // namespace vexa
