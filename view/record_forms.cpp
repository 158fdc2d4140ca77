#include "view/record_forms.h"

#include <algorithm>

#include "core/edit.h"
#include "core/field_texts.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr int64_t kFullCircle = 361;  // degrees, first refused

std::optional<Refusal> Verdict(std::string text, RecordField field, Icon icon = Icon::kStop) {
  if (text.empty()) return std::nullopt;
  return Refusal{std::move(text), icon, field};
}

struct Angle {
  int64_t degrees = 0;
  int64_t tenths = 0;  // of the whole angle
};

// Whole degrees and the first digit behind the point; what follows is dropped.
Angle AngleOf(const std::string& text) {
  const size_t point = std::min(text.find('.'), text.size());
  Angle angle;
  angle.degrees = NumberOf(std::string_view(text).substr(0, point));
  angle.tenths = std::min(angle.degrees, kFullCircle) * 10;
  if (point + 1 < text.size()) angle.tenths += text[point + 1] - '0';
  return angle;
}

// Digits and at most one point, so that nothing is dropped without a word.
bool IsAngle(const std::string& text) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  const auto digits = std::count_if(text.begin(), text.end(), is_digit);
  const auto points = std::count(text.begin(), text.end(), '.');
  return digits > 0 && points <= 1 && static_cast<size_t>(digits + points) == text.size();
}

// Whether `pid` may be stored, 8192 in place of an invalid one when the user says so to the rule's question.
// A field without a number is refused with the first line of the question: what it stands for is not known.
std::optional<Refusal> TakePid(const Messages& messages, const std::string& text, int64_t entered,
                               const std::string& question, RecordField field, uint32_t& pid) {
  pid = static_cast<uint32_t>(entered);
  if (question.empty()) return std::nullopt;
  if (text.find_first_not_of(' ') == text.npos)
    return Verdict(question.substr(0, question.find('\n')), field);
  if (!Ask(messages, "%s", question.c_str())) return Refusal{"", Icon::kNone, field};
  pid = kNoPid;
  return std::nullopt;
}

}  // namespace

std::optional<Refusal> JudgeName(const std::string& text, std::string (*rule)(std::string_view),
                                 const CodePage& page, std::string& name) {
  size_t lacking = 0;
  name = PageFromUtf8(page, text, lacking);
  if (auto refusal = Verdict(rule(name), kFieldName)) return refusal;
  return Verdict(LackingText(text, page), kFieldName);
}

SatelliteForm SatelliteFormOf(const SatelliteRecord& record, const CodePage& page) {
  SatelliteForm form;
  form.name = NameText(page, record.name);
  form.lnb_index = record.lnb_index;
  form.east = record.east != 0;
  form.angle = AngleText(record.angle);
  form.position = std::to_string(record.position);
  form.factory_default = record.user == 0;
  return form;
}

std::optional<Refusal> StoreSatellite(const Messages& messages, const SatelliteForm& form,
                                      SatelliteRecord& record, const CodePage& page) {
  std::string name;
  const int64_t position = FilledNumberOf(form.position);
  if (auto refusal = JudgeName(form.name, SatelliteNameText, page, name)) return refusal;
  if (auto refusal = Verdict(SatellitePositionText(position), kFieldPosition)) return refusal;
  if (!IsAngle(form.angle)) return Verdict("Invalid format of satellite angle", kFieldAngle, Icon::kWarning);
  const Angle angle = AngleOf(form.angle);
  if (auto refusal = Verdict(SatelliteAngleText(angle.degrees), kFieldAngle)) return refusal;
  const uint32_t tenths = static_cast<uint32_t>(angle.tenths) & 0xFFF;
  const std::string zero = SatelliteZeroAngleText(tenths);
  if (!zero.empty()) Tell(messages, Icon::kWarning, "%s", zero.c_str());
  SetName(record.name, name);
  record.lnb_index = form.lnb_index < kMaximumLnbs ? form.lnb_index & 0xFF : 0;
  record.position = static_cast<uint32_t>(position) & 0xFF;
  record.east = form.east;
  record.angle = tenths & 0xFFF;
  record.user = !form.factory_default;
  return std::nullopt;
}

CarrierForm CarrierFormOf(const CarrierRecord& record, const CodePage& page) {
  CarrierForm form;
  form.name = NameText(page, record.name);
  form.frequency = std::to_string(record.frequency);
  form.symbol_rate = std::to_string(record.symbol_rate);
  form.polarization = record.polarization;
  form.fec = record.fec;
  form.factory_default = record.user == 0;
  return form;
}

std::optional<Refusal> StoreCarrier(const CarrierForm& form, const LnbRecord& lnb, CarrierRecord& record,
                                    const CodePage& page) {
  std::string name;
  const int64_t frequency = NumberOf(form.frequency), symbol_rate = NumberOf(form.symbol_rate);
  if (auto refusal = JudgeName(form.name, CarrierNameText, page, name)) return refusal;
  if (auto refusal = Verdict(CarrierFrequencyText(lnb.type, frequency), kFieldFrequency)) return refusal;
  if (auto refusal = Verdict(CarrierSymbolRateText(symbol_rate), kFieldSymbolRate)) return refusal;
  SetName(record.name, name);
  record.frequency = static_cast<uint32_t>(frequency);
  record.symbol_rate = static_cast<uint32_t>(symbol_rate) & 0xFFFFFF;
  record.polarization = form.polarization & 3;
  if (form.fec != kNoCode) record.fec = form.fec & 7;
  record.user = !form.factory_default;
  return std::nullopt;
}

ServiceForm ServiceFormOf(const ServiceRecord& record, bool hexadecimal, const CodePage& page) {
  ServiceForm form;
  form.name = NameText(page, record.name);
  form.program_number = std::to_string(record.program_number);
  form.type = record.type;
  form.free = record.free != 0;
  form.video_pid = PidText(record.video_pid, hexadecimal);
  form.audio_pid = PidText(record.audio_pid, hexadecimal);
  form.pcr_pid = PidText(record.pcr_pid, hexadecimal);
  return form;
}

std::optional<Refusal> StoreService(const Messages& messages, const ServiceForm& form, bool hexadecimal,
                                    const Carrier* carrier, ServiceRecord& record, const CodePage& page) {
  std::string name;
  const int64_t number_entered = FilledNumberOf(form.program_number);
  const int64_t video_entered = NumberOf(form.video_pid, hexadecimal);
  const int64_t audio_entered = NumberOf(form.audio_pid, hexadecimal);
  const int64_t pcr_entered = NumberOf(form.pcr_pid, hexadecimal);
  if (auto refusal = JudgeName(form.name, ServiceNameText, page, name)) return refusal;
  if (auto refusal =
          Verdict(RangeText("Service program number", number_entered, 0, 0xFFFF), kFieldProgramNumber))
    return refusal;
  const auto number = static_cast<uint32_t>(number_entered);
  if (carrier)
    for (const Service* other : carrier->services)
      if (&other->record != &record && other->record.program_number == number)
        return Verdict(kProgramNumberText, kFieldProgramNumber);
  uint32_t video = 0, audio = 0, pcr = 0;
  if (auto refusal = TakePid(messages, form.video_pid, video_entered, VideoPidText(form.type, video_entered),
                             kFieldVideoPid, video))
    return refusal;
  if (auto refusal = TakePid(messages, form.audio_pid, audio_entered, AudioPidText(audio_entered),
                             kFieldAudioPid, audio))
    return refusal;
  if (auto refusal = TakePid(messages, form.pcr_pid, pcr_entered, PcrPidText(pcr_entered), kFieldPcrPid, pcr))
    return refusal;
  SetName(record.name, name);
  record.program_number = number & 0xFFFF;
  record.type = form.type & 3;
  record.free = form.free;
  record.video_pid = (form.type == kTv ? video : kNoPid) & 0x3FFF;
  record.audio_pid = audio & 0x3FFF;
  record.pcr_pid = pcr & 0x3FFF;
  return std::nullopt;
}

std::optional<Refusal> StoreService(const Messages& messages, const ServiceForm& form, bool hexadecimal,
                                    StaticDatabase& database, Service& service, const CodePage& page) {
  const bool was_tv = service.record.type == kTv;
  auto refusal = StoreService(messages, form, hexadecimal, service.carrier, service.record, page);
  if (was_tv == (service.record.type == kTv)) return refusal;
  for (FavouriteGroup& group : database.favourites)
    std::erase(EntriesOf(group, was_tv ? GroupKind::kTv : GroupKind::kRadio), &service);
  return refusal;
}

}  // namespace vexa
