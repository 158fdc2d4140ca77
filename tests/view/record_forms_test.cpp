#include "view/record_forms.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "core/edit.h"
#include "core/field_texts.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

template <class Record>
bool SameBytes(const Record& a, const Record& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// What a refused form must leave as it was.
template <class Record>
Record AllOnes() {
  Record record;
  std::memset(static_cast<void*>(&record), 0xFF, sizeof record);
  return record;
}

TEST(Validation, Satellites) {
  const char* const zero = "Invalid satellite angle.";
  const char* const range = "Satellite angle should be 0 - 360.";
  const char* const format = "Invalid format of satellite angle";
  const char* const position = "Satellite Position should be less then 64.";
  const struct {
    const char *name, *position, *angle;
    const char* refusal;  // "": stored
    int field;
    uint32_t tenths;
    std::vector<std::string> warnings;
  } rows[] = {
      {"T\xC3\xBCrksat", "64", "19.2", "", 0, 192, {}},
      {"Astra", "0", "360.9", "", 0, 3609, {}},
      {"Astra", "1", "28.55", "", 0, 285, {}},
      {"Astra", "1", "1.15", "", 0, 11, {}},
      {"Astra", "1", ".5", "", 0, 5, {}},
      {"Astra", "1", "0.0", "", 0, 0, {zero}},
      {"Astra", "1", "361", range, kFieldAngle, 0, {}},
      {"Astra", "1", "99999999999999999999", range, kFieldAngle, 0, {}},
      {"Astra", "1", "1.2.3", format, kFieldAngle, 0, {}},
      {"Astra", "1", "", format, kFieldAngle, 0, {}},
      {"Astra", "1", ".", format, kFieldAngle, 0, {}},
      {"Astra", "1", "-0.5", format, kFieldAngle, 0, {}},
      {"Astra", "1", "1.:", format, kFieldAngle, 0, {}},
      {"Astra", "65", "1.2.3", position, kFieldPosition, 0, {}},
      {"Astra", "-1", "1", position, kFieldPosition, 0, {}},
      {"Astra", "", "1", position, kFieldPosition, 0, {}},
      {"Astra", "4294967296", "1", position, kFieldPosition, 0, {}},
      {"", "65", "1.2.3", "Satellite name can not be empty.\nEnter a valid name.", kFieldName, 0, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.name) + "/" + row.position + "/" + row.angle);
    Recorder recorder;
    auto record = AllOnes<SatelliteRecord>();
    const SatelliteForm form{row.name, 3, true, row.angle, row.position, true};
    const auto refusal = StoreSatellite(recorder.context.messages, form, record);
    EXPECT_THAT(recorder.Texts(), ElementsAreArray(row.warnings));
    if (refusal) {
      EXPECT_EQ(refusal->text, row.refusal);
      EXPECT_EQ(refusal->field, row.field);
      EXPECT_EQ(refusal->icon, row.refusal == format ? Icon::kWarning : Icon::kStop);
      EXPECT_TRUE(SameBytes(record, AllOnes<SatelliteRecord>()));
      continue;
    }
    EXPECT_STREQ(row.refusal, "");
    SatelliteRecord expected{0xFFFF, 3, record.position, 0, 1, row.tenths & 0xFFF, 0x3FFFF, {}};
    SetName(expected.name, row.name[0] == 'T' ? "T\xFCrksat" : row.name);
    EXPECT_EQ(std::to_string(record.position), row.position);
    EXPECT_TRUE(SameBytes(record, expected));
    EXPECT_FALSE(StoreSatellite(recorder.context.messages, SatelliteFormOf(record), record));
    EXPECT_TRUE(SameBytes(record, expected));
  }
}

TEST(Validation, AnglesAsTexts) {
  EXPECT_EQ(AngleText(0), "000.00");
  EXPECT_EQ(AngleText(420), "42.0");
}

TEST(Validation, Carriers) {
  const char* const empty = "Carrier name can not be empty.\nEnter a valid name.";
  const char* const input = "Carrier frequency should be in the range of 950 - 2150";
  const char* const rate = "Carrier symbol rate should be in the range of 1000 - 45000.";
  const struct {
    uint32_t lnb;
    const char *name, *frequency, *symbol_rate, *refusal;
  } rows[] = {
      {kLnbNormal, "C", "3000", "1000", ""},
      {kLnbNormal, "C", "4200", "45000", ""},
      {kLnbNormal, "C", "2999", "1000", "Carrier frequency should be in the range of 3000 - 4200"},
      {kLnbNormal, "C", "4201", "1000", "Carrier frequency should be in the range of 3000 - 4200"},
      {kLnbLnbf, "C", "4800", "1000", ""},
      {kLnbLnbf, "C", "4801", "1000", "Carrier frequency should be in the range of 3000 - 4800"},
      {kLnbUniversal, "C", "10699", "999", "Carrier frequency should be in the range of 10700 - 12750"},
      {kLnbIfInput, "C", "950", "1000", ""},
      {kLnbIfInput, "C", "2151", "1000", input},
      {kLnbIfInput, "C", "", "1000", input},
      {kLnbIfInput, "C", "4294968246", "1000", input},
      {kLnbIfInput, "C", "950", "999", rate},
      {kLnbUniversal, "C", "11000", "45001", rate},
      {kLnbUniversal, "C", "11000", "16778216", rate},
      {kLnbUniversal, "", "1", "1", empty},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.frequency) + "/" + row.symbol_rate);
    LnbRecord lnb{};
    lnb.type = row.lnb & 3;
    auto record = AllOnes<CarrierRecord>();
    const auto refusal =
        StoreCarrier({row.name, row.frequency, row.symbol_rate, kLeft, 4, false}, lnb, record);
    EXPECT_EQ(refusal ? refusal->text : "", row.refusal);
    if (refusal) {
      EXPECT_TRUE(SameBytes(record, AllOnes<CarrierRecord>()));
      continue;
    }
    EXPECT_EQ(std::to_string(record.frequency), row.frequency);
    EXPECT_EQ(std::to_string(record.symbol_rate), row.symbol_rate);
    EXPECT_EQ(record.kept_16, 0xFFFFu);
    EXPECT_EQ(record.service_count, 0xFFFFu);
    const CarrierRecord before = record;
    EXPECT_FALSE(StoreCarrier(CarrierFormOf(record), lnb, record));
    EXPECT_TRUE(SameBytes(record, before));
  }
}

const char* const kVideo = "Invalid Video PID.\nDo you want to update default value ?";
const char* const kAudio = "Invalid Audio PID.\nDo you want to update default PID ?";
const char* const kPcr = "Invalid PCR PID.\nDo you want to update default PID ?";

TEST(Validation, ServicePids) {
  const struct {
    uint32_t type;
    bool hexadecimal;
    const char *video, *audio, *pcr;
    std::vector<std::string> questions;
    int field;  // of the first question
    uint32_t stored[3];
  } rows[] = {
      {kTv, false, "32", "8192", "8191", {}, 0, {32, 8192, 8191}},
      {kTv, false, "31", "31", "31", {kVideo, kAudio, kPcr}, kFieldVideoPid, {8192, 8192, 8192}},
      {kTv, false, "8193", "100", "0", {kVideo, kPcr}, kFieldVideoPid, {8192, 100, 8192}},
      {kTv, false, "100", "100", "1", {kPcr}, kFieldPcrPid, {100, 100, 8192}},
      {kRadio, false, "1", "100", "101", {}, 0, {8192, 100, 101}},
      {0, false, "500", "20", "101", {kAudio}, kFieldAudioPid, {8192, 8192, 101}},
      {kTv, true, "20", "2000", "1fff", {}, 0, {32, 8192, 8191}},
      {kTv, true, "1F", "2001", "0x100", {kVideo, kAudio}, kFieldVideoPid, {8192, 8192, 256}},
      {kTv, false, "x", "1FF", "-50", {kVideo, kAudio, kPcr}, kFieldVideoPid, {8192, 8192, 8192}},
      {kTv, false, "4294967396", "100", "100", {kVideo}, kFieldVideoPid, {8192, 100, 100}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.video) + "/" + row.audio + "/" + row.pcr);
    Recorder recorder;
    auto record = AllOnes<ServiceRecord>();
    const ServiceForm form{"S", "7", row.type, false, row.video, row.audio, row.pcr};
    const auto store = [&] {
      return StoreService(recorder.context.messages, form, row.hexadecimal, nullptr, record);
    };
    // The first question answered no moves the focus, and nothing is stored.
    recorder.answer = false;
    if (const auto refusal = store()) {
      EXPECT_EQ(refusal->text, "");
      EXPECT_EQ(refusal->field, row.field);
      EXPECT_THAT(recorder.Texts(), ElementsAre(row.questions.at(0)));
      EXPECT_TRUE(SameBytes(record, AllOnes<ServiceRecord>()));
    }
    recorder.answer = true;
    EXPECT_FALSE(store());
    EXPECT_THAT(recorder.Texts(), ElementsAreArray(row.questions));
    EXPECT_EQ(record.video_pid, row.stored[0]);
    EXPECT_EQ(record.audio_pid, row.stored[1]);
    EXPECT_EQ(record.pcr_pid, row.stored[2]);
    EXPECT_EQ(record.kept_28, 15u);
    EXPECT_EQ(record.kept_17, 0x7FFFu);
  }
}

TEST(Validation, AnEmptyPidIsRefusedUnasked) {
  const struct {
    uint32_t type;
    const char *video, *audio, *pcr, *text;  // of the refusal; none: stored
    int field;
  } rows[] = {
      {kTv, "", "", "", "Invalid Video PID.", kFieldVideoPid},
      {kRadio, "", " ", "", "Invalid Audio PID.", kFieldAudioPid},
      {kTv, "32", "32", "", "Invalid PCR PID.", kFieldPcrPid},
      {kRadio, "", "32", "32", nullptr, 0},
  };
  for (const auto& row : rows) {
    Recorder recorder;
    auto record = AllOnes<ServiceRecord>();
    const ServiceForm form{"S", "7", row.type, false, row.video, row.audio, row.pcr};
    const auto refusal = StoreService(recorder.context.messages, form, false, nullptr, record);
    EXPECT_THAT(recorder.Texts(), ElementsAre());
    ASSERT_EQ(refusal.has_value(), row.text != nullptr);
    if (!refusal) continue;
    EXPECT_EQ(refusal->text, row.text);
    EXPECT_EQ(refusal->icon, Icon::kStop);
    EXPECT_EQ(refusal->field, row.field);
    EXPECT_TRUE(SameBytes(record, AllOnes<ServiceRecord>()));
  }
}

TEST(Validation, ServiceNamesAndNumbers) {
  Recorder recorder;
  StaticDatabase database;
  AddTestSatellite(database, "S");
  Carrier* carrier = AddTestCarrier(database, 0);
  for (const uint32_t number : {5u, 6u}) {
    Service* service = AddTestService(database, carrier);
    service->record.program_number = number & 0xFFFF;
    service->record.audio_pid = 0x1FF;
  }
  ServiceRecord& record = carrier->services[0]->record;
  ServiceForm form = ServiceFormOf(record, true);
  EXPECT_EQ(form.audio_pid, "1FF");
  form.name = "\xC3\x84rte";
  form.program_number = "6";
  auto refusal = StoreService(recorder.context.messages, form, true, carrier, record);
  EXPECT_EQ(refusal->text, "Service program number already exists.");
  EXPECT_EQ(refusal->field, kFieldProgramNumber);
  for (const char* number : {"65536", ""}) {
    form.program_number = number;
    refusal = StoreService(recorder.context.messages, form, true, carrier, record);
    EXPECT_EQ(refusal->text, "Service program number should be in the range of 0 - 65535.");
    EXPECT_EQ(refusal->field, kFieldProgramNumber);
  }
  form.name = "";
  refusal = StoreService(recorder.context.messages, form, true, carrier, record);
  EXPECT_EQ(refusal->text, "Service name can not be empty.\nEnter a valid name.");
  form.name = "\xC3\x84rte";
  form.program_number = "5";  // its own
  EXPECT_FALSE(StoreService(recorder.context.messages, form, true, carrier, record));
  EXPECT_EQ(NameOf(record.name), "\xC4rte");
  EXPECT_EQ(record.audio_pid, 0x1FFu);
  EXPECT_THAT(recorder.Texts(), ElementsAre());
}

TEST(Validation, AServiceThatChangesItsTypeLeavesTheListsOfTheOldOne) {
  Recorder recorder;
  StaticDatabase database;
  AddTestSatellite(database, "S");
  Carrier* carrier = AddTestCarrier(database, 0);
  Service *one = AddTestService(database, carrier), *two = AddTestService(database, carrier);
  one->record.program_number = 1;
  for (FavouriteGroup& group : {std::ref(database.favourites[0]), std::ref(database.favourites[7])})
    group.tv = group.radio = {one, two};
  for (const uint32_t type : {uint32_t{kTv}, uint32_t{kRadio}, 3u, uint32_t{kTv}}) {
    ServiceForm form = ServiceFormOf(one->record, false);
    form.name = "One";
    form.type = type;
    form.video_pid = form.audio_pid = form.pcr_pid = "100";
    const auto before = database.favourites;
    const bool changes = (type == kTv) != (one->record.type == kTv);
    form.program_number = "0";  // the other one's: refused
    EXPECT_TRUE(StoreService(recorder.context.messages, form, false, database, *one));
    EXPECT_EQ(database.favourites[0].tv, before[0].tv);
    form.program_number = "1";
    EXPECT_FALSE(StoreService(recorder.context.messages, form, false, database, *one));
    for (const size_t group : {0u, 7u}) {
      const bool tv_left = changes && type != kTv, radio_left = changes && type == kTv;
      EXPECT_EQ(database.favourites[group].tv, tv_left ? std::vector{two} : before[group].tv);
      EXPECT_EQ(database.favourites[group].radio, radio_left ? std::vector{two} : before[group].radio);
    }
  }
}

TEST(Validation, LnbsStoreTheirSecondWordForVariantZeroAlone) {
  auto record = AllOnes<LnbRecord>();
  const auto word1 = [&] {
    uint32_t word;
    std::memcpy(&word, reinterpret_cast<const uint8_t*>(&record) + 4, 4);
    return word;
  };
  const LnbForm form{"5150", "16383", kLnbNormal, 0, 0, kSwitchNone, 0, 0};
  for (std::string LnbForm::*const field : {&LnbForm::frequency1, &LnbForm::frequency2}) {
    LnbForm high = form;
    high.*field = "16384";
    const auto refusal = StoreLnb(high, record, 0);
    EXPECT_EQ(refusal->text, "LNB frequency should be in the range of 0 - 16383.");
    EXPECT_EQ(refusal->field, field == &LnbForm::frequency1 ? kFieldOscillator1 : kFieldOscillator2);
    EXPECT_TRUE(SameBytes(record, AllOnes<LnbRecord>()));
  }
  EXPECT_FALSE(StoreLnb(form, record, 1));
  EXPECT_EQ(record.frequency1, 5150u);
  EXPECT_EQ(record.frequency2, 16383u);
  EXPECT_EQ(record.kept_31, 1u);
  EXPECT_EQ(word1(), 0xFFFFFFFFu);
  const struct {
    uint32_t type, selection, word;
  } rows[] = {{kSwitchNone, 16, 16u << 5},
              {kSwitchNone, 17, 0},
              {kSwitchToneBurst, 2, 2u << 10 | 1u << 17},
              {kSwitchToneBurst, 3, 1u << 17},
              {kSwitchDiseqc, 4, 4u << 2 | 2u << 17},
              {kSwitchDiseqc, kNoCode, 2u << 17}};
  for (const auto& row : rows) {
    record = AllOnes<LnbRecord>();
    StoreLnb({"1", "2", kLnbUniversal, 1, 2, row.type, row.selection, 1}, record, 0);
    EXPECT_EQ(word1(), row.word | 2u << 15 | 1u << 19 | 0xFFF00000u) << row.type << " " << row.selection;
    const LnbRecord before = record;
    StoreLnb(LnbFormOf(record), record, 0);
    EXPECT_TRUE(SameBytes(record, before));
  }
  // Codes that no list has an entry for, as they are shown and as a list without a choice gives them.
  for (const bool shown : {true, false}) {
    const auto store = [&] {
      LnbForm kept = LnbFormOf(record);
      if (!shown) kept.tone_22khz = kept.selection = kNoCode;
      if (!shown && kept.switch_type > kSwitchDiseqc) kept.switch_type = kNoCode;
      StoreLnb(kept, record, 0);
    };
    for (const uint32_t type : {3u, 2u, 1u, 0u}) {
      record = AllOnes<LnbRecord>();
      record.switch_type = type & 3;
      store();
      EXPECT_EQ(record.tone_22khz, 3u);
      EXPECT_EQ(record.switch_type, type);
      EXPECT_EQ(record.diseqc_switch, type >= 2 ? 7u : 0u);
      EXPECT_EQ(record.tone_burst_switch, type == 1 || type == 3 ? 3u : 0u);
      EXPECT_EQ(record.plain_switch, type == 0 || type == 3 ? 31u : 0u);
    }
  }
  EXPECT_EQ(SwitchChoices(kSwitchNone).back(), "16");
  EXPECT_THAT(SwitchChoices(kSwitchDiseqc), ElementsAre("None", "A", "B", "C", "D"));
}

TEST(Validation, Names) {
  OpenSdb sdb{0, "SDB1", nullptr};
  OpenUbi ubi{"UBI1", {}};
  FavouriteGroup group;
  EXPECT_EQ(StoreSdbName("", sdb)->text, "SDB Name can not be empty. Enter a valid name.");
  EXPECT_EQ(StoreGroupName("", group, false)->text, "FGL Name can not be empty. Enter a valid name.");
  EXPECT_EQ(StoreUbi({}, ubi)->text, "UBI name can not be empty. Enter a valid name.");
  EXPECT_EQ(sdb.name, "SDB1");
  EXPECT_FALSE(
      StoreSdbName("\xC3\x84"
                   "BCDEFG",
                   sdb));
  EXPECT_EQ(sdb.name,
            "\xC4"
            "BCDEF");
  EXPECT_FALSE(StoreGroupName("0123456789012345678901", group, true));
  EXPECT_EQ(NameOf(group.record.radio_name), "0123456789012345678");
  EXPECT_EQ(NameOf(group.record.tv_name), "");
  // A name in another script is refused whole: it would come back as question marks.
  const std::string russian = "\xD0\x96",
                    refusal = "\"" + russian + "\" has characters that Windows-1252 lacks: " + russian;
  SatelliteForm satellite;
  CarrierForm carrier;
  ServiceForm service;
  UbiForm box;
  for (std::string* name : {&satellite.name, &carrier.name, &service.name, &box.name}) *name = russian;
  SatelliteRecord satellite_record{};
  CarrierRecord carrier_record{};
  ServiceRecord service_record{};
  const std::optional<Refusal> refusals[] = {StoreSdbName(russian, sdb),
                                             StoreGroupName(russian, group, true),
                                             StoreUbi(box, ubi),
                                             StoreSatellite({}, satellite, satellite_record),
                                             StoreCarrier(carrier, {}, carrier_record),
                                             StoreService({}, service, false, nullptr, service_record)};
  for (const auto& found : refusals) EXPECT_EQ(found ? found->text : "", refusal);
}

// In another page the same name is stored, and comes back; what that page lacks is told, each character once.
TEST(Validation, NamesOfAPage) {
  const CodePage& page = *FindCodePage("Windows-1251");
  const std::string russian = "\xD0\x96\xD0\xB0", bytes = "\xC6\xE0";
  SatelliteRecord satellite{};
  satellite.angle = 10;
  CarrierRecord carrier{};
  carrier.frequency = 10700;
  carrier.symbol_rate = 27500;
  ServiceRecord service = FactoryDefaults().service;
  OpenSdb sdb;
  OpenUbi ubi{"Box", {}};
  FavouriteGroup group;
  SatelliteForm satellite_form = SatelliteFormOf(satellite);
  CarrierForm carrier_form = CarrierFormOf(carrier);
  ServiceForm service_form = ServiceFormOf(service, false);
  UbiForm ubi_form = UbiFormOf(ubi);
  for (std::string* name : {&satellite_form.name, &carrier_form.name, &service_form.name, &ubi_form.name})
    *name = russian;
  EXPECT_FALSE(StoreSatellite({}, satellite_form, satellite, page));
  EXPECT_FALSE(StoreCarrier(carrier_form, FactoryDefaults().lnb, carrier, page));
  EXPECT_FALSE(StoreService({}, service_form, false, nullptr, service, page));
  EXPECT_FALSE(StoreSdbName(russian, sdb, page));
  EXPECT_FALSE(StoreUbi(ubi_form, ubi, page));
  EXPECT_FALSE(StoreGroupName(russian, group, true, page));
  EXPECT_EQ(std::tuple(NameOf(satellite.name), NameOf(carrier.name), NameOf(service.name)),
            std::tuple(bytes, bytes, bytes));
  EXPECT_EQ(std::tuple(sdb.name, ubi.name, NameOf(group.record.radio_name)), std::tuple(bytes, bytes, bytes));
  EXPECT_EQ(SatelliteFormOf(satellite, page).name, russian);
  EXPECT_EQ(CarrierFormOf(carrier, page).name, russian);
  EXPECT_EQ(ServiceFormOf(service, false, page).name, russian);
  EXPECT_EQ(UbiFormOf(ubi, page).name, russian);
  const auto refusal = StoreSdbName("\xC3\xA9\xD0\x96\xC3\xA9\xC3\xB1", sdb, page);
  EXPECT_EQ(refusal ? refusal->text : "",
            "\"\xC3\xA9\xD0\x96\xC3\xA9\xC3\xB1\" has characters that Windows-1251 lacks: \xC3\xA9 \xC3\xB1");
  EXPECT_EQ(sdb.name, bytes);
}

TEST(Validation, VersionsOfAFile) {
  BinVersion version{2, 255, "ab "};
  EXPECT_FALSE(StoreVersion(VersionFormOf(version), version));
  const struct {
    VersionForm form;
    const char* text;
    int field;
  } rows[] = {
      {{"256", "0", ""}, "Major version should be in the range of 0 - 255.", kFieldMajor},
      {{"0", "", ""}, "Minor version should be in the range of 0 - 255.", kFieldMinor},
      {{"0", "0", "\xD0\x96"}, "\"\xD0\x96\" has characters that no database holds.", kFieldInitials}};
  for (const auto& row : rows) {
    const auto refusal = StoreVersion(row.form, version);
    ASSERT_TRUE(refusal) << row.text;
    EXPECT_EQ(refusal->text, row.text);
    EXPECT_EQ(refusal->field, row.field);
  }
  EXPECT_EQ(version.minor, 255);
  EXPECT_EQ(version.initials, "ab ");
  EXPECT_FALSE(StoreVersion({"0", "0", "abcd"}, version));
  EXPECT_EQ(version.initials, "abc");
}

TEST(Validation, UserBoxesKeepTheirOpenBits) {
  OpenUbi ubi{"Box", AllOnes<UserBoxInfo>()};
  const UbiForm form{.name = "MyBoxIsLong",
                     .time_zone = -11,
                     .rf_output = true,
                     .tv_standard = 2,
                     .screen = 1,
                     .rf_channel = "69",
                     .start_volume = "0",
                     .start_programme = "513",
                     .lock_code = "1200"};
  const struct {
    std::string UbiForm::*entry;
    const char *text, *refusal;
    int field;
  } rows[] = {
      {&UbiForm::name, "", "UBI name can not be empty. Enter a valid name.", kFieldName},
      {&UbiForm::rf_channel, "20", "RF channel should be in the range of 21 - 69.", kFieldRfChannel},
      {&UbiForm::rf_channel, "", "RF channel should be in the range of 21 - 69.", kFieldRfChannel},
      {&UbiForm::start_volume, "64", "Start volume should be in the range of 0 - 63.", kFieldStartVolume},
      {&UbiForm::start_programme, "65536", "Start programme should be in the range of 0 - 65535.",
       kFieldStartProgramme},
      {&UbiForm::lock_code, "120", "Lock code should have four digits.", kFieldLockCode},
      {&UbiForm::lock_code, "12x4", "Lock code should have four digits.", kFieldLockCode},
  };
  for (const auto& row : rows) {
    UbiForm wrong = form;
    wrong.*row.entry = row.text;
    const auto refusal = StoreUbi(wrong, ubi);
    EXPECT_EQ(refusal->text, row.refusal);
    EXPECT_EQ(refusal->field, row.field);
    EXPECT_EQ(ubi.name, "Box");
    EXPECT_TRUE(SameBytes(ubi.record, AllOnes<UserBoxInfo>()));
  }
  // What stands in the record may stay.
  const UserBoxInfo strange = ubi.record;
  EXPECT_FALSE(StoreUbi(UbiFormOf(ubi), ubi));
  EXPECT_TRUE(SameBytes(ubi.record, strange));
  EXPECT_FALSE(StoreUbi(form, ubi));
  EXPECT_EQ(ubi.name, "MyBoxIs");
  UserBoxInfo expected{0, 0, -11, 0x80 | 2 | 2 << 2 | 1 << 4, 69, 0, 513, {}, {'1', '2', '0', '0'}};
  std::memset(expected.kept, 0xFF, sizeof expected.kept);
  EXPECT_TRUE(SameBytes(ubi.record, expected));
  for (unsigned flags = 0; flags < 256; ++flags) {
    ubi.record.flags = expected.flags = static_cast<uint8_t>(flags);
    EXPECT_FALSE(StoreUbi(UbiFormOf(ubi), ubi));
    EXPECT_TRUE(SameBytes(ubi.record, expected)) << flags;
  }
}

}  // namespace
}  // namespace vexa
