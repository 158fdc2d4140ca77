// The forms of LNBs, of names, of user box records, and of the version.
#include <algorithm>
#include <cstring>

#include "platform/text.h"
#include "view/record_forms.h"

namespace vexa {

namespace {

constexpr int kHighestOscillator = 0x3FFF;  // MHz

std::optional<Refusal> Verdict(std::string text, int field) {
  if (text.empty()) return std::nullopt;
  return Refusal{std::move(text), Icon::kStop, field};
}

std::optional<Refusal> OscillatorVerdict(int64_t frequency, int field) {
  return Verdict(RangeText("LNB frequency", frequency, 0, kHighestOscillator), field);
}

// A new code has a digit for every byte of it.
bool IsLockCode(std::string_view code) {
  const bool digits = std::all_of(code.begin(), code.end(), [](char c) { return c >= '0' && c <= '9'; });
  return digits && code.size() == sizeof UserBoxInfo::lock_code;
}

}  // namespace

LnbForm LnbFormOf(const LnbRecord& record) {
  LnbForm form;
  form.frequency1 = std::to_string(record.frequency1);
  form.frequency2 = std::to_string(record.frequency2);
  form.type = record.type;
  form.power = record.power;
  form.tone_22khz = record.tone_22khz;
  form.switch_type = record.switch_type;
  form.selection = record.switch_type == kSwitchDiseqc      ? record.diseqc_switch
                   : record.switch_type == kSwitchToneBurst ? record.tone_burst_switch
                                                            : record.plain_switch;
  form.motor = record.motor;
  return form;
}

namespace {

// The fields of the other switch types are cleared.
void StoreSwitch(const LnbForm& form, LnbRecord& record) {
  if (form.switch_type > kSwitchDiseqc) return;
  const LnbForm before = LnbFormOf(record);
  uint32_t selection = form.selection;
  if (selection >= SwitchChoices(form.switch_type).size())
    selection = form.switch_type == before.switch_type ? before.selection : 0;
  record.diseqc_switch = form.switch_type == kSwitchDiseqc ? selection & 7 : 0;
  record.tone_burst_switch = form.switch_type == kSwitchToneBurst ? selection & 3 : 0;
  record.plain_switch = form.switch_type == kSwitchNone ? selection & 31 : 0;
  record.switch_type = form.switch_type & 3;
}

}  // namespace

std::optional<Refusal> StoreLnb(const LnbForm& form, LnbRecord& record, uint32_t database_variant) {
  const int64_t frequency1 = FilledNumberOf(form.frequency1), frequency2 = FilledNumberOf(form.frequency2);
  if (auto refusal = OscillatorVerdict(frequency1, kFieldOscillator1)) return refusal;
  if (auto refusal = OscillatorVerdict(frequency2, kFieldOscillator2)) return refusal;
  record.frequency1 = static_cast<uint32_t>(frequency1) & 0x3FFF;
  record.frequency2 = static_cast<uint32_t>(frequency2) & 0x3FFF;
  record.type = form.type & 3;
  record.power = form.power & 1;
  if (database_variant != 0) return std::nullopt;
  record.cleared_0 = 0;
  record.cleared_12 = 0;
  if (form.tone_22khz != kNoCode) record.tone_22khz = form.tone_22khz & 3;
  StoreSwitch(form, record);
  record.motor = form.motor & 1;
  return std::nullopt;
}

std::vector<std::string> SwitchChoices(uint32_t switch_type) {
  if (switch_type == kSwitchDiseqc) return {"None", "A", "B", "C", "D"};
  if (switch_type == kSwitchToneBurst) return {"None", "A", "B"};
  std::vector<std::string> choices = {"None"};
  for (uint32_t i = 1; i <= 16; ++i) choices.push_back(std::to_string(i));
  return choices;
}

std::optional<Refusal> StoreSdbName(const std::string& name, OpenSdb& sdb, const CodePage& page) {
  std::string bytes;
  if (auto refusal = JudgeName(name, SdbNameText, page, bytes)) return refusal;
  sdb.name = bytes.substr(0, kSdbNameLength);
  return std::nullopt;
}

std::optional<Refusal> StoreGroupName(const std::string& name, FavouriteGroup& group, bool radio,
                                      const CodePage& page) {
  std::string bytes;
  if (auto refusal = JudgeName(name, GroupNameText, page, bytes)) return refusal;
  SetName(radio ? group.record.radio_name : group.record.tv_name, bytes);
  return std::nullopt;
}

UbiForm UbiFormOf(const OpenUbi& ubi, const CodePage& page) {
  const UserBoxInfo& record = ubi.record;
  UbiForm form;
  form.name = Utf8FromPage(page, ubi.name);
  form.menu_language = record.menu_language;
  form.audio_language = record.audio_language;
  form.time_zone = record.time_zone;
  form.summer_time = (record.flags & 1) != 0;
  form.rf_output = (record.flags & 2) != 0;
  form.tv_standard = record.flags >> 2 & 3;
  form.screen = record.flags >> 4 & 3;
  form.parental_lock = (record.flags & 0x40) != 0;
  form.rf_channel = std::to_string(record.rf_channel);
  form.start_volume = std::to_string(record.start_volume);
  form.start_programme = std::to_string(record.start_programme);
  form.lock_code = Utf8FromLatin(NameOf(record.lock_code));
  return form;
}

std::optional<Refusal> StoreUbi(const UbiForm& form, OpenUbi& ubi, const CodePage& page) {
  std::string name;
  UserBoxInfo& record = ubi.record;
  if (auto refusal = JudgeName(form.name, UbiNameText, page, name)) return refusal;
  const bool new_code = form.lock_code != Utf8FromLatin(NameOf(record.lock_code));
  if (new_code && !IsLockCode(form.lock_code))
    return Verdict("Lock code should have four digits.", kFieldLockCode);
  const struct {
    const char* name;
    const std::string& text;
    uint32_t stored;
    int lowest, highest, field;
  } numbers[] = {
      {"RF channel", form.rf_channel, record.rf_channel, 21, 69, kFieldRfChannel},
      {"Start volume", form.start_volume, record.start_volume, 0, 63, kFieldStartVolume},
      {"Start programme", form.start_programme, record.start_programme, 0, 0xFFFF, kFieldStartProgramme}};
  for (const auto& number : numbers) {
    if (number.text == std::to_string(number.stored)) continue;
    const std::string text =
        RangeText(number.name, FilledNumberOf(number.text), number.lowest, number.highest);
    if (auto refusal = Verdict(text, number.field)) return refusal;
  }
  ubi.name = name.substr(0, kUbiNameLength);
  record.menu_language = static_cast<uint8_t>(form.menu_language);
  record.audio_language = static_cast<uint8_t>(form.audio_language);
  record.time_zone = static_cast<int8_t>(form.time_zone);
  const uint32_t kept = record.flags & 0x80u;
  record.flags = static_cast<uint8_t>(kept | (form.summer_time ? 1u : 0u) | (form.rf_output ? 2u : 0u) |
                                      (form.tv_standard & 3) << 2 | (form.screen & 3) << 4 |
                                      (form.parental_lock ? 0x40u : 0u));
  record.rf_channel = static_cast<uint8_t>(NumberOf(form.rf_channel));
  record.start_volume = static_cast<uint8_t>(NumberOf(form.start_volume));
  record.start_programme = static_cast<uint16_t>(NumberOf(form.start_programme));
  if (new_code) std::copy(form.lock_code.begin(), form.lock_code.end(), record.lock_code);
  return std::nullopt;
}

VersionForm VersionFormOf(const BinVersion& version) {
  return {std::to_string(version.major), std::to_string(version.minor), Utf8FromLatin(version.initials)};
}

std::optional<Refusal> StoreVersion(const VersionForm& form, BinVersion& version) {
  const int64_t major = FilledNumberOf(form.major), minor = FilledNumberOf(form.minor);
  if (auto refusal = Verdict(RangeText("Major version", major, 0, 255), kFieldMajor)) return refusal;
  if (auto refusal = Verdict(RangeText("Minor version", minor, 0, 255), kFieldMinor)) return refusal;
  if (auto refusal = Verdict(CharactersText(form.initials), kFieldInitials)) return refusal;
  version = {static_cast<uint8_t>(major), static_cast<uint8_t>(minor),
             LatinFromUtf8(form.initials).substr(0, 3)};
  return std::nullopt;
}

}  // namespace vexa
