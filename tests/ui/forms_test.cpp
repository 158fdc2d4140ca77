// Every control of a dialog ends in its own field, and nothing that a dialog does not change is changed by
// it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "import/text_export.h"
#include "tests/support/list_maker.h"
#include "tests/ui/editor_fixture.h"
#include "ui/forms/options_resource.h"
#include "ui/forms/records_resource.h"
#include "ui/frame/test_mode.h"
#include "view/menu_table.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

using testing::ElementsAre;

using Labels = std::vector<std::string>;
using Fields = std::vector<uint32_t>;

// The text of a field, the place of an entry in a list, "on" or "off" for a box.
struct Setting {
  int id;
  std::string value;
};
using Settings = std::vector<Setting>;

bool IsKind(HWND control, const wchar_t* name) {
  wchar_t kind[32] = L"";
  GetClassNameW(control, kind, 32);
  return _wcsicmp(kind, name) == 0;
}

class Forms : public EditorTest {
 protected:
  Path Saved() { return recorder_.context.temporary_folder / "saved.bin"; }
  std::string Value(HWND box, int id) {
    HWND control = GetDlgItem(box, id);
    if (IsKind(control, L"Edit")) return driver_->Title(control);
    if (IsKind(control, L"ComboBox")) return std::to_string(Send(control, CB_GETCURSEL));
    return Send(control, BM_GETCHECK) == BST_CHECKED ? "on" : "off";
  }
  void Set(HWND box, const Settings& settings) {
    for (const Setting& setting : settings) {
      HWND control = GetDlgItem(box, setting.id);
      if (IsKind(control, L"Edit"))
        Type(box, setting.id, setting.value);
      else if (IsKind(control, L"ComboBox"))
        Pick(box, setting.id, std::stoi(setting.value));
      else if (Value(box, setting.id) != setting.value)
        Send(control, BM_CLICK);
    }
    for (const Setting& setting : settings) EXPECT_EQ(Value(box, setting.id), setting.value) << setting.id;
  }
  void Expect(HWND box, const Settings& settings) {
    for (const Setting& setting : settings) EXPECT_EQ(Value(box, setting.id), setting.value) << setting.id;
  }
  // Opens the dialog of the command, sets it and takes it.
  void Take(unsigned command, const Settings& settings) {
    HWND box = driver_->Open(command);
    Set(box, settings);
    driver_->Press(box, IDOK);
    ASSERT_TRUE(driver_->HasCaughtUp());
    ASSERT_EQ(driver_->FindBox(), nullptr) << driver_->BoxText(driver_->FindBox());
  }
  void Edit(const Labels& node, const Settings& settings) {
    ASSERT_TRUE(driver_->SelectItem(node));
    Take(kCmdEdit, settings);
  }
  Bytes FileOf(unsigned command, const std::string& title) {
    std::filesystem::remove(Saved());
    driver_->Command(command);
    driver_->ChooseFile(title, Saved());
    EXPECT_TRUE(driver_->Until("the file", [&] { return std::filesystem::exists(Saved()); }));
    EXPECT_TRUE(driver_->HasCaughtUp());
    return ReadWholeFile(Saved()).value_or(Bytes{});
  }
  Document Save() {
    Document document;
    EXPECT_TRUE(OpenBinBytes(recorder_.context, FileOf(kCmdSaveAs, "Save"), document));
    return document;
  }
};

Fields FieldsOf(const LnbRecord& r) {
  return {r.frequency1, r.frequency2, r.type, r.power, r.tone_22khz, r.switch_type, r.diseqc_switch, r.motor};
}
Fields FieldsOf(const SatelliteRecord& r) {
  return {r.lnb_index, r.position, r.user, r.east, r.angle};
}
Fields FieldsOf(const CarrierRecord& r) {
  return {r.frequency, r.symbol_rate, r.polarization, r.fec, r.user};
}
Fields FieldsOf(const ServiceRecord& r) {
  return {r.program_number, r.video_pid, r.audio_pid, r.pcr_pid, r.type, r.free};
}

const Labels kFirstLnb = {"SDB1", "LNBs", "[ 1 ] LNB"};
const Labels kCarrier = {"SDB1", "Satellites", "[ 1 ] Zeta", "[ 1 ] Low"};

Labels Below(Labels node, const std::string& label) {
  node.push_back(label);
  return node;
}

struct RecordForms : Forms {
  void SetEveryControl() {
    ASSERT_TRUE(driver_->SelectItem({"Box Infos"}));
    driver_->Command(kCmdAdd);
    Edit(kFirstLnb, {{IDC_LNB_FREQUENCY1, "5150"},
                     {IDC_LNB_FREQUENCY2, "9000"},
                     {IDC_LNB_TYPE, "1"},
                     {IDC_LNB_POWER, "off"},
                     {IDC_LNB_TONE, "1"},
                     {IDC_LNB_SWITCH, "2"},
                     {IDC_LNB_SELECTION, "3"},
                     {IDC_LNB_MOTOR, "on"}});
    Edit(Below(kCarrier, "[ 1 ] Cap"), {{IDC_RECORD_NAME, "Scrambled"},
                                        {IDC_SERVICE_NUMBER, "77"},
                                        {IDC_SERVICE_SCRAMBLED, "on"},
                                        {IDC_SERVICE_VIDEO, "111"},
                                        {IDC_SERVICE_AUDIO, "222"},
                                        {IDC_SERVICE_PCR, "333"}});
    Edit(Below(kCarrier, "[ 2 ] ant"), {{IDC_SERVICE_TYPE, "1"}, {IDC_SERVICE_AUDIO, "444"}});
    Edit(kCarrier, {{IDC_RECORD_NAME, "Lower"},
                    {IDC_CARRIER_FREQUENCY, "4100"},
                    {IDC_CARRIER_SYMBOL_RATE, "22000"},
                    {IDC_CARRIER_POLARIZATION, "2"},
                    {IDC_CARRIER_FEC, "3"},
                    {IDC_CARRIER_FACTORY, "on"}});
    Edit({"SDB1", "Satellites", "[ 1 ] Zeta"}, {{IDC_RECORD_NAME, "Seta"},
                                                {IDC_SATELLITE_LNB, "4"},
                                                {IDC_SATELLITE_FLAG, "1"},
                                                {IDC_SATELLITE_ANGLE, "23.5"},
                                                {IDC_SATELLITE_POSITION, "17"},
                                                {IDC_SATELLITE_FACTORY, "on"}});
    Edit({"Box Infos", "UBI1"}, {{IDC_RECORD_NAME, "MyBox"},
                                 {IDC_BOX_MENU_LANGUAGE, "1"},
                                 {IDC_BOX_AUDIO_LANGUAGE, "2"},
                                 {IDC_BOX_TIME_ZONE, "27"},
                                 {IDC_BOX_SUMMER_TIME, "on"},
                                 {IDC_BOX_RF_OUTPUT, "off"},
                                 {IDC_BOX_STANDARD, "1"},
                                 {IDC_BOX_SCREEN, "2"},
                                 {IDC_BOX_LOCK, "on"},
                                 {IDC_BOX_RF_CHANNEL, "33"},
                                 {IDC_BOX_VOLUME, "44"},
                                 {IDC_BOX_PROGRAMME, "555"},
                                 {IDC_BOX_CODE, "9876"}});
  }
};

TEST_F(RecordForms, EveryControlIsStored) {
  StartWithSample();
  ASSERT_NO_FATAL_FAILURE(SetEveryControl());
  const Document read = Save();
  const StaticDatabase& database = *read.sdbs.at(0).database;
  EXPECT_EQ(FieldsOf(database.lnbs[0]), (Fields{5150, 9000, 1, 0, 1, 2, 3, 1}));
  EXPECT_EQ(FieldsOf(database.satellites[0]->record), (Fields{4, 17, 0, 1, 235}));
  EXPECT_EQ(FieldsOf(database.carriers[0]->record), (Fields{4100, 22000, 2, 3, 0}));
  EXPECT_EQ(FieldsOf(database.services[0]->record), (Fields{77, 111, 222, 333, kTv, 0}));
  EXPECT_EQ(FieldsOf(database.services[1]->record), (Fields{2, kNoPid, 444, kNoPid, kRadio, 1}));
  EXPECT_THAT(NamesOf(database.satellites), testing::Contains("Seta"));
  EXPECT_THAT(NamesOf(database.carriers), ElementsAre("Lower", "High"));
  EXPECT_EQ(NameOf(database.services[0]->record.name), "Scrambled");
  const UserBoxInfo& box = read.ubis.at(0).record;
  EXPECT_EQ((Fields{box.menu_language, box.audio_language, static_cast<uint32_t>(box.time_zone), box.flags,
                    box.rf_channel, box.start_volume, box.start_programme}),
            (Fields{1, 2, 3, 1u | 1u << 2 | 2u << 4 | 1u << 6, 33, 44, 555}));
  EXPECT_EQ(std::string(box.lock_code, 4), "9876");
  EXPECT_EQ(read.ubis[0].name, "MyBox");
  End();
}

// Codes that no entry of a list stands for outlive OK.
TEST_F(Forms, OkAloneChangesNothing) {
  Document document;
  ASSERT_TRUE(OpenBin(recorder_.context, PutSample(), document));
  StaticDatabase& database = *document.sdbs[0].database;
  LnbRecord& lnb = database.lnbs[0];
  lnb.tone_22khz = lnb.switch_type = 3;
  lnb.plain_switch = 20;
  database.carriers[0]->record.fec = 7;
  database.services[0]->record.type = 3;
  database.services[0]->record.video_pid = kNoPid;
  document.ubis.push_back({"UBI1", {}});
  document.ubis[0].record = {9, 8, 60, 0x3C, 21, 0, 0, {}, {'0', '0', '0', '0'}};
  const Path path = recorder_.context.temporary_folder / "odd.bin";
  PutFile(path, *BuildBin(recorder_.context, document, {}, {}));
  Start({L"--test-mode"}, path);
  const std::string caption = Caption();
  for (const Labels& node : {kFirstLnb,
                             {"SDB1", "Satellites", "[ 1 ] Zeta"},
                             kCarrier,
                             Below(kCarrier, "[ 1 ] Cap"),
                             {"SDB1"},
                             {"SDB1", "TV Groups", "Favourite1"},
                             {"Box Infos", "UBI1"}}) {
    Edit(node, {});
    EXPECT_EQ(Caption(), caption) << node.back();
  }
  End();
}

struct Defaults : Forms {
  void ExpectDefaultsOfAList() {
    // This format says nothing of a satellite's LNB; its carriers are bare but for what the list says.
    const Path list = recorder_.context.temporary_folder / "list.sdx";
    PutFile(list, BytesOf(SdxList(std::vector<SdxRecord>(1), true)));
    driver_->Command(kCmdImportSatcodx);
    driver_->ChooseFile("Open a File", list);
    driver_->Answer(IDNO);
    driver_->DeclineCompletion();
    ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
    EXPECT_EQ(driver_->Cell(0, 3), "East") << "the list has no such flag";
  }
};

TEST_F(Defaults, AreKeptAndUsed) {
  const Settings settings = {{IDC_DEFAULTS_LNB_FREQUENCY1, "9751"},
                             {IDC_DEFAULTS_LNB_FREQUENCY2, "10601"},
                             {IDC_DEFAULTS_LNB_TYPE, "0"},
                             {IDC_DEFAULTS_LNB_POWER, "off"},
                             {IDC_DEFAULTS_LNB_TONE, "1"},
                             {IDC_DEFAULTS_LNB_SWITCH, "2"},
                             {IDC_DEFAULTS_LNB_SELECTION, "4"},
                             {IDC_DEFAULTS_LNB_MOTOR, "on"},
                             {IDC_DEFAULTS_SATELLITE_LNB, "3"},
                             {IDC_DEFAULTS_SATELLITE_FLAG, "1"},
                             {IDC_DEFAULTS_SATELLITE_ANGLE, "12.5"},
                             {IDC_DEFAULTS_SATELLITE_POSITION, "6"},
                             {IDC_DEFAULTS_SATELLITE_FACTORY, "on"},
                             {IDC_DEFAULTS_CARRIER_FREQUENCY, "4111"},
                             {IDC_DEFAULTS_CARRIER_SYMBOL_RATE, "22222"},
                             {IDC_DEFAULTS_CARRIER_POLARIZATION, "3"},
                             {IDC_DEFAULTS_CARRIER_FEC, "2"},
                             {IDC_DEFAULTS_CARRIER_FACTORY, "on"},
                             {IDC_DEFAULTS_SERVICE_SCRAMBLED, "on"},
                             {IDC_DEFAULTS_SERVICE_VIDEO, "101"},
                             {IDC_DEFAULTS_SERVICE_AUDIO, "102"},
                             {IDC_DEFAULTS_SERVICE_PCR, "103"}};
  Start();
  Take(kCmdDefaultValues, settings);
  HWND box = driver_->Open(kCmdDefaultValues);
  Expect(box, settings);
  driver_->Press(box, IDCANCEL);
  driver_->Command(kCmdNew);
  for (const Labels& node : {Labels{"SDB1", "LNBs"},
                             {"SDB1", "Satellites"},
                             {"SDB1", "Satellites", "[ 1 ] Satellite1"},
                             {"SDB1", "Satellites", "[ 1 ] Satellite1", "[ 1 ] Carrier1"}}) {
    ASSERT_TRUE(driver_->SelectItem(node));
    driver_->Command(kCmdAdd);
  }
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites", "[ 1 ] Satellite1", "[ 1 ] Carrier1"}));
  const RECT row = driver_->RowPlace(List(), 0);
  driver_->Click(List(), {(row.left + row.right) / 2, (row.top + row.bottom) / 2});
  driver_->Command(kCmdInsert);
  // Its satellite's LNB has not been added, and judges it all the same.
  Edit({"SDB1", "Satellites", "[ 1 ] Satellite1", "[ 1 ] Carrier1"}, {});
  const Document read = Save();
  const StaticDatabase& database = *read.sdbs.at(0).database;
  EXPECT_EQ(FieldsOf(database.lnbs[0]), (Fields{9751, 10601, 0, 0, 1, 2, 4, 1}));
  EXPECT_EQ(FieldsOf(database.lnbs[15]), FieldsOf(database.lnbs[0])) << "unused places, too";
  EXPECT_EQ(FieldsOf(database.satellites.at(0)->record), (Fields{3, 6, 0, 1, 125}));
  EXPECT_EQ(FieldsOf(database.carriers.at(0)->record), (Fields{4111, 22222, 3, 2, 0}));
  ASSERT_EQ(database.services.size(), 2u);
  for (const Service* service : database.services) {
    const uint32_t number = service == database.services[0] ? 2 : 1;
    EXPECT_EQ(FieldsOf(service->record), (Fields{number, 101, 102, 103, kTv, 0}));
  }
  ExpectDefaultsOfAList();
  driver_->Close();
  driver_->Answer(IDNO);
  EXPECT_EQ(driver_->ExitCode(), 0u);
}

TEST_F(Forms, EverySettingIsKept) {
  const Settings settings = {{IDC_SETTINGS_MAJOR, "12"},      {IDC_SETTINGS_MINOR, "7"},
                             {IDC_SETTINGS_RADIX, "0"},       {IDC_SETTINGS_COMPRESSED, "on"},
                             {IDC_SETTINGS_COMPRESSION, "0"}, {IDC_SETTINGS_LEVEL, "2"},
                             {IDC_SETTINGS_BAUD, "3"},        {IDC_SETTINGS_DATA_BITS, "1"},
                             {IDC_SETTINGS_PARITY, "1"},      {IDC_SETTINGS_STOP_BITS, "2"}};
  Start();
  Take(kCmdSettings, settings);
  HWND box = driver_->Open(kCmdSettings);
  Expect(box, settings);
  driver_->Press(box, IDCANCEL);
  End();
}

// Two SDBs: "SDB1" with two TV services and a radio service on each of two carriers of "S1", all of them in
// the first group, and two satellites more; "Two" with one satellite. Two user box records.
Document TwoSdbs() {
  Document document = NewDocument();
  AppendSdb(document, "Two")->database->lnb_count = 1;
  AddTestSatellite(*document.sdbs[1].database, "Other");
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  for (const char* name : {"S1", "S3", "S2"}) AddTestSatellite(database, name);
  for (const int carrier : {1, 2}) {
    Carrier* added = AddTestCarrier(database, 0);
    SetName(added->record.name, Format("C%d", carrier));
    for (const char* name : {"A", "B", "R"}) {
      Service* service = AddTestService(database, added);
      SetName(service->record.name, Format("%s%d", name, carrier));
      service->record.program_number = static_cast<uint16_t>(database.services.size());
      service->record.type = *name == 'R' ? kRadio : kTv;
      FavouriteGroup& group = database.favourites[0];
      (*name == 'R' ? group.radio : group.tv).push_back(service);
    }
  }
  for (const char* name : {"U1", "U2"}) document.ubis.push_back({name, {}});
  return document;
}

class Choices : public Forms {
 protected:
  void SetUp() override {
    const Path path = recorder_.context.temporary_folder / "two.bin";
    PutFile(path, *BuildBin(recorder_.context, TwoSdbs(), {}, {}));
    Start({L"--test-mode"}, path);
  }
  HWND Open(unsigned command, const Labels& node) {
    EXPECT_TRUE(driver_->SelectItem(node));
    return OpenHere(command);
  }
  HWND OpenHere(unsigned command) {
    driver_->Command(command);
    return driver_->WaitForBox();
  }
  void SelectRows(const Labels& node, const std::vector<int>& rows) {
    ASSERT_TRUE(driver_->SelectItem(node));
    driver_->Click(List(), {30, 60});
    driver_->SelectRows(List(), rows);
  }
  Labels ListOf(const Labels& node) {
    EXPECT_TRUE(driver_->SelectItem(node));
    return Column(1);
  }
  const Labels first_ = {"SDB1", "Satellites", "[ 1 ] S1", "[ 1 ] C1"},
               second_ = {"SDB1", "Satellites", "[ 1 ] S1", "[ 2 ] C2"},
               tv_ = {"SDB1", "TV Groups", "Favourite1"}, radio_ = {"SDB1", "Radio Groups", "Favourite1"};
};

TEST_F(Choices, ServicesMoveToTheCarrierThatWasChosen) {
  SelectRows(first_, {0, 2});
  HWND box = OpenHere(kCmdMove);
  Push(box, IDC_MOVE_SERVICE_CHANGE);
  HWND carriers = BoxOver(box);
  driver_->GoTo(GetDlgItem(carriers, IDC_CARRIERS_LIST), 1);
  driver_->Press(carriers, IDOK);
  EXPECT_TRUE(
      driver_->Until("the carrier", [&] { return Shown(box, IDC_MOVE_SERVICE_CARRIER) == "S1 - C2"; }));
  driver_->Press(box, IDOK);
  ASSERT_TRUE(driver_->HasCaughtUp());
  EXPECT_THAT(ListOf(first_), ElementsAre("B1"));
  EXPECT_THAT(ListOf(second_), ElementsAre("A2", "B2", "R2", "A1", "R1"));
  driver_->Command(kCmdUndo);
  End();
}

TEST_F(Choices, BothHalvesOfAGroupAreStored) {
  HWND box = Open(kCmdEdit, tv_);
  HWND list = GetDlgItem(box, IDC_FAVOURITES_LIST);
  Type(box, IDC_RECORD_NAME, "Films");
  driver_->Tick(list, 1);
  EXPECT_EQ(Shown(box, IDC_FAVOURITES_COUNT).substr(0, 5), "3 of ");
  Send(GetDlgItem(box, IDC_FAVOURITES_RADIO), BM_CLICK);
  Type(box, IDC_RECORD_NAME, "Music");
  driver_->Tick(list, 0);
  driver_->Press(box, IDOK);
  ASSERT_TRUE(driver_->HasCaughtUp());
  EXPECT_THAT(ListOf({"SDB1", "TV Groups", "Films"}), ElementsAre("A1", "A2", "B2"));
  EXPECT_THAT(ListOf({"SDB1", "Radio Groups", "Music"}), ElementsAre("R2"));
  driver_->Command(kCmdUndo);
  EXPECT_THAT(ListOf(tv_), ElementsAre("A1", "B1", "A2", "B2"));
  SelectRows(second_, {1, 2});
  driver_->Command(kFirstGroupCommand + 4);
  EXPECT_THAT(ListOf({"SDB1", "TV Groups", "Favourite5"}), ElementsAre("B2"));
  EXPECT_THAT(ListOf({"SDB1", "Radio Groups", "Favourite5"}), ElementsAre("R2"));
  driver_->Command(kCmdUndo);
  End();
}

TEST_F(Choices, ThePartsThatAreTickedAreSaved) {
  HWND box = Open(kCmdSaveParts, {"SDB1"});
  HWND list = GetDlgItem(box, IDC_PARTS_LIST);
  for (const int row : {0, 2}) driver_->Tick(list, row);
  Push(box, IDOK);
  driver_->ChooseFile("Save", Saved());
  ASSERT_TRUE(driver_->Until("the file", [&] { return std::filesystem::exists(Saved()); }));
  ASSERT_TRUE(driver_->HasCaughtUp());
  Document read;
  ASSERT_TRUE(OpenBin(recorder_.context, Saved(), read));
  ASSERT_EQ(read.sdbs.size(), 1u);
  EXPECT_EQ(read.sdbs[0].name, "Two");
  ASSERT_EQ(read.ubis.size(), 1u);
  EXPECT_EQ(read.ubis[0].name, "U2");
  End();
}

TEST_F(Choices, EachKindIsSortedInItsOwnWay) {
  const Labels others = ListOf({"Two", "Satellites"});
  HWND box = Open(kCmdSort, {"SDB1"});
  Settings settings;
  for (const int kind : {IDC_SORT_SATELLITES, IDC_SORT_CARRIERS, IDC_SORT_SERVICES}) {
    for (int key = 0; key < 3; ++key) settings.push_back({kind + key, key == 0 ? "1" : "0"});
  }
  Set(box, settings);
  // Carriers the other way round.
  Send(GetDlgItem(box, IDC_SORT_CARRIERS + 4), BM_CLICK);
  driver_->Press(box, IDOK);
  ASSERT_TRUE(driver_->HasCaughtUp());
  Labels satellites = ListOf({"SDB1", "Satellites"});
  std::erase_if(satellites, [](const std::string& name) { return name.starts_with("NewSat"); });
  EXPECT_THAT(satellites, ElementsAre("S1", "S2", "S3"));
  EXPECT_THAT(ListOf({"SDB1", "Satellites", "[ 1 ] S1"}), ElementsAre("C2", "C1"));
  EXPECT_THAT(ListOf({"SDB1", "Satellites", "[ 1 ] S1", "[ 2 ] C1"}), ElementsAre("A1", "B1", "R1"));
  EXPECT_EQ(ListOf({"Two", "Satellites"}), others) << "was not chosen";
  driver_->Command(kCmdUndo);
  EXPECT_THAT(Caption(), testing::Not(testing::HasSubstr("*")));
  End();
}

TEST_F(Choices, TheReportIsOfTheSelectedSdb) {
  const Path report = recorder_.context.temporary_folder / "report.txt";
  ASSERT_TRUE(driver_->SelectItem({"Two"}));
  driver_->Lose(kLoseViewer);
  driver_->Command(kCmdTextFile);
  driver_->ChooseFile("Save", report);
  EXPECT_EQ(driver_->Answer(IDOK), "Error in loading notepad");
  Document document;
  ASSERT_TRUE(OpenBin(recorder_.context, recorder_.context.temporary_folder / "two.bin", document));
  EXPECT_TRUE(ReadWholeFile(report) == BytesOf(DatabaseReport(*document.sdbs[1].database)));
  End();
}

// A container's version and initials follow its magic; every way of saving stores the window's.
TEST_F(Forms, EverySavedFileHoldsTheWindowsVersion) {
  StartWithSample();
  Take(kCmdVersion, {{IDC_VERSION_MAJOR, "3"}, {IDC_VERSION_MINOR, "4"}, {IDC_VERSION_INITIALS, "XYZ"}});
  ASSERT_TRUE(driver_->SelectItem({"SDB1", "Satellites"}));
  const auto expect = [&](const char* way, const Bytes& file) {
    ASSERT_GT(file.size(), kBinHeaderSize) << way;
    EXPECT_EQ(Bytes(file.begin() + 2, file.begin() + 4), (Bytes{3, 4})) << way;
    EXPECT_EQ(std::string(file.begin() + 8, file.begin() + 11), "XYZ") << way;
  };
  expect("Save As", FileOf(kCmdSaveAs, "Save"));
  expect("SDB", FileOf(kCmdSaveSdb, "Save selected SDB as"));
  expect("satellites", FileOf(kCmdSaveSatellites, "Save selected Satellite(s) as"));
  HWND box = driver_->Open(kCmdSort);
  Send(GetDlgItem(box, IDC_SORT_SEPARATE), BM_CLICK);
  std::filesystem::remove(Saved());
  Push(box, IDOK);
  driver_->ChooseFile("Save As", Saved());
  EXPECT_TRUE(driver_->Until("the file", [&] { return std::filesystem::exists(Saved()); }));
  EXPECT_TRUE(driver_->HasCaughtUp());
  expect("Sort", ReadWholeFile(Saved()).value_or(Bytes{}));
  End();
}

}  // namespace

}  // namespace vexa
