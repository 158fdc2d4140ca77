// The dialogs of LNBs, satellites, carriers and services.
#include "view/record_forms.h"

#include "core/edit.h"
#include "platform/text.h"
#include "ui/controls/form.h"
#include "ui/editor/change.h"
#include "ui/forms/record_dialogs.h"
#include "ui/forms/records_resource.h"
#include "view/defaults_form.h"

namespace vexa {

namespace {

constexpr int kNameLength = static_cast<int>(kNameSize) - 1;

int RecordControl(int field) {
  switch (field) {
    case kFieldOscillator1:
      return IDC_LNB_FREQUENCY1;
    case kFieldOscillator2:
      return IDC_LNB_FREQUENCY2;
    case kFieldName:
      return IDC_RECORD_NAME;
    case kFieldPosition:
      return IDC_SATELLITE_POSITION;
    case kFieldAngle:
      return IDC_SATELLITE_ANGLE;
    case kFieldFrequency:
      return IDC_CARRIER_FREQUENCY;
    case kFieldSymbolRate:
      return IDC_CARRIER_SYMBOL_RATE;
    case kFieldProgramNumber:
      return IDC_SERVICE_NUMBER;
    case kFieldVideoPid:
      return IDC_SERVICE_VIDEO;
    case kFieldAudioPid:
      return IDC_SERVICE_AUDIO;
    default:
      return IDC_SERVICE_PCR;
  }
}

// Stores by `store`; a refusal stays in the dialog.
bool Accept(EditorWindow& editor, const Form& form, const std::function<std::optional<Refusal>()>& store) {
  std::optional<Refusal> refusal;
  ChangeDocument(editor, [&] { return !(refusal = store()); });
  if (refusal) form.Refuse(*refusal, RecordControl(refusal->field));
  return !refusal;
}

void ShowSelection(const Form& form, uint32_t switch_type, uint32_t selection) {
  form.Fill(IDC_LNB_SELECTION, SwitchChoices(switch_type), static_cast<int>(selection));
}

void ShowLnb(const Form& form, const LnbForm& lnb) {
  for (const int id : {IDC_LNB_FREQUENCY1, IDC_LNB_FREQUENCY2}) form.Limit(id, 5);
  form.SetText(IDC_LNB_FREQUENCY1, lnb.frequency1);
  form.SetText(IDC_LNB_FREQUENCY2, lnb.frequency2);
  form.Fill(IDC_LNB_TYPE, NamesOfCodes(LnbTypeName, 4), static_cast<int>(lnb.type));
  form.Check(IDC_LNB_POWER, lnb.power != 0);
  form.Fill(IDC_LNB_TONE, {"Off", "On", "Auto"}, static_cast<int>(lnb.tone_22khz));
  form.Fill(IDC_LNB_SWITCH, {"None", "Tone Burst", "DiSEqC 1.0"}, static_cast<int>(lnb.switch_type));
  ShowSelection(form, lnb.switch_type, lnb.selection);
  form.Check(IDC_LNB_MOTOR, lnb.motor != 0);
  // Receivers of another variant have no switch to set.
  if (form.app.config.database_variant == 0) return;
  for (const int id : {IDC_LNB_TONE, IDC_LNB_SWITCH, IDC_LNB_SELECTION, IDC_LNB_MOTOR})
    form.Enable(id, false);
}

LnbForm TakenLnb(const Form& form) {
  LnbForm taken;
  taken.frequency1 = form.Text(IDC_LNB_FREQUENCY1);
  taken.frequency2 = form.Text(IDC_LNB_FREQUENCY2);
  taken.type = form.Code(IDC_LNB_TYPE);
  taken.power = form.Checked(IDC_LNB_POWER);
  taken.tone_22khz = form.Code(IDC_LNB_TONE);
  taken.switch_type = form.Code(IDC_LNB_SWITCH);
  taken.selection = form.Code(IDC_LNB_SELECTION);
  taken.motor = form.Checked(IDC_LNB_MOTOR);
  return taken;
}

void ShowSatellite(const Form& form, const SatelliteForm& satellite) {
  std::vector<std::string> lnbs;
  for (int i = 1; i <= static_cast<int>(kMaximumLnbs); ++i) lnbs.push_back(Format("LNB%d", i));
  form.Limit(IDC_RECORD_NAME, kNameLength);
  form.Limit(IDC_SATELLITE_ANGLE, 8);
  form.Limit(IDC_SATELLITE_POSITION, 5);
  form.SetText(IDC_RECORD_NAME, satellite.name);
  form.Fill(IDC_SATELLITE_LNB, lnbs, static_cast<int>(satellite.lnb_index));
  form.Fill(IDC_SATELLITE_FLAG, {"West", "East"}, satellite.east ? 1 : 0);
  form.SetText(IDC_SATELLITE_ANGLE, satellite.angle);
  form.SetText(IDC_SATELLITE_POSITION, satellite.position);
  form.Check(IDC_SATELLITE_FACTORY, satellite.factory_default);
}

SatelliteForm TakenSatellite(const Form& form) {
  SatelliteForm taken;
  taken.name = form.Text(IDC_RECORD_NAME);
  taken.lnb_index = form.Code(IDC_SATELLITE_LNB);
  taken.east = form.Choice(IDC_SATELLITE_FLAG) == 1;
  taken.angle = form.Text(IDC_SATELLITE_ANGLE);
  taken.position = form.Text(IDC_SATELLITE_POSITION);
  taken.factory_default = form.Checked(IDC_SATELLITE_FACTORY);
  return taken;
}

void ShowCarrier(const Form& form, const Satellite& satellite, const CarrierForm& carrier) {
  form.Limit(IDC_RECORD_NAME, kNameLength);
  form.Limit(IDC_CARRIER_FREQUENCY, 5);
  form.Limit(IDC_CARRIER_SYMBOL_RATE, 5);
  form.SetText(IDC_CARRIER_SATELLITE, Utf8FromLatin(NameOf(satellite.record.name)));
  form.SetText(IDC_RECORD_NAME, carrier.name);
  form.SetText(IDC_CARRIER_FREQUENCY, carrier.frequency);
  form.SetText(IDC_CARRIER_SYMBOL_RATE, carrier.symbol_rate);
  form.Fill(IDC_CARRIER_POLARIZATION, NamesOfCodes(PolarizationName, 4),
            static_cast<int>(carrier.polarization));
  form.Fill(IDC_CARRIER_FEC, NamesOfCodes(FecName, 6), carrier.fec < 6 ? static_cast<int>(carrier.fec) : -1);
  form.Check(IDC_CARRIER_FACTORY, carrier.factory_default);
}

CarrierForm TakenCarrier(const Form& form) {
  CarrierForm taken;
  taken.name = form.Text(IDC_RECORD_NAME);
  taken.frequency = form.Text(IDC_CARRIER_FREQUENCY);
  taken.symbol_rate = form.Text(IDC_CARRIER_SYMBOL_RATE);
  taken.polarization = form.Code(IDC_CARRIER_POLARIZATION);
  taken.fec = form.Code(IDC_CARRIER_FEC);
  taken.factory_default = form.Checked(IDC_CARRIER_FACTORY);
  return taken;
}

// Without video, that PID is not asked for.
void ShowServiceType(const Form& form) {
  form.Enable(IDC_SERVICE_VIDEO, form.Choice(IDC_SERVICE_TYPE) == 0);
}

void ShowService(const Form& form, const Carrier& carrier, const ServiceForm& service) {
  const bool hexadecimal = form.app.hexadecimal;
  form.Limit(IDC_RECORD_NAME, kNameLength);
  for (const int id : {IDC_SERVICE_NUMBER, IDC_SERVICE_VIDEO, IDC_SERVICE_AUDIO, IDC_SERVICE_PCR})
    form.Limit(id, 5);
  form.SetText(IDC_SERVICE_VIDEO_TITLE, hexadecimal ? "&Video (Hex)" : "&Video (Dec)");
  form.SetText(IDC_SERVICE_AUDIO_TITLE, hexadecimal ? "&Audio (Hex)" : "&Audio (Dec)");
  form.SetText(IDC_SERVICE_PCR_TITLE, hexadecimal ? "&PCR (Hex)" : "&PCR (Dec)");
  form.SetText(IDC_SERVICE_CARRIER, Utf8FromLatin(NameOf(carrier.record.name)));
  form.SetText(IDC_RECORD_NAME, service.name);
  form.SetText(IDC_SERVICE_NUMBER, service.program_number);
  form.Fill(IDC_SERVICE_TYPE, {"TV", "Radio"}, service.type == kTv ? 0 : 1);
  form.SetText(IDC_SERVICE_VIDEO, service.video_pid);
  form.SetText(IDC_SERVICE_AUDIO, service.audio_pid);
  form.SetText(IDC_SERVICE_PCR, service.pcr_pid);
  form.Check(IDC_SERVICE_SCRAMBLED, !service.free);
  ShowServiceType(form);
}

// Every type but TV's is shown as radio, and stays as it is until TV is chosen.
ServiceForm TakenService(const Form& form, const ServiceRecord& record) {
  ServiceForm taken;
  taken.name = form.Text(IDC_RECORD_NAME);
  taken.program_number = form.Text(IDC_SERVICE_NUMBER);
  const uint32_t radio = record.type == kTv ? uint32_t{kRadio} : record.type;
  taken.type = form.Choice(IDC_SERVICE_TYPE) == 0 ? uint32_t{kTv} : radio;
  taken.free = !form.Checked(IDC_SERVICE_SCRAMBLED);
  taken.video_pid = form.Text(IDC_SERVICE_VIDEO);
  taken.audio_pid = form.Text(IDC_SERVICE_AUDIO);
  taken.pcr_pid = form.Text(IDC_SERVICE_PCR);
  return taken;
}

}  // namespace

bool EditLnb(EditorWindow& editor, const NodeRef& node) {
  if (node.sdb >= editor.document.sdbs.size() || node.index >= kMaximumLnbs) return false;
  LnbRecord& record = editor.document.sdbs[node.sdb].database->lnbs[node.index];
  FormActions actions;
  actions.open = [&](Form& form) { ShowLnb(form, LnbFormOf(record)); };
  actions.command = [](Form& form, int id, int code) {
    if (id == IDC_LNB_SWITCH && code == CBN_SELCHANGE) ShowSelection(form, form.Code(id), 0);
  };
  actions.accept = [&](Form& form) {
    return Accept(editor, form,
                  [&] { return StoreLnb(TakenLnb(form), record, editor.app->config.database_variant); });
  };
  return RunForm(*editor.app, IDD_LNB, actions);
}

bool EditSatellite(EditorWindow& editor, const NodeRef& node) {
  SatelliteRecord& record = node.satellite->record;
  FormActions actions;
  actions.open = [&](Form& form) { ShowSatellite(form, SatelliteFormOf(record)); };
  actions.accept = [&](Form& form) {
    return Accept(editor, form,
                  [&] { return StoreSatellite(editor.app->context.messages, TakenSatellite(form), record); });
  };
  return RunForm(*editor.app, IDD_SATELLITE, actions);
}

bool EditCarrier(EditorWindow& editor, const NodeRef& node) {
  CarrierRecord& record = node.carrier->record;
  const LnbRecord& lnb = LnbOf(*editor.document.sdbs[node.sdb].database, *node.carrier->satellite);
  FormActions actions;
  actions.open = [&](Form& form) { ShowCarrier(form, *node.carrier->satellite, CarrierFormOf(record)); };
  actions.accept = [&](Form& form) {
    return Accept(editor, form, [&] { return StoreCarrier(TakenCarrier(form), lnb, record); });
  };
  return RunForm(*editor.app, IDD_CARRIER, actions);
}

bool EditService(EditorWindow& editor, const NodeRef& node) {
  const bool hexadecimal = editor.app->hexadecimal;
  StaticDatabase& database = *editor.document.sdbs[node.sdb].database;
  const Carrier& carrier = *node.service->carrier;
  const ServiceRecord& record = node.service->record;
  FormActions actions;
  actions.open = [&](Form& form) { ShowService(form, carrier, ServiceFormOf(record, hexadecimal)); };
  actions.command = [](Form& form, int id, int code) {
    if (id == IDC_SERVICE_TYPE && code == CBN_SELCHANGE) ShowServiceType(form);
  };
  actions.accept = [&](Form& form) {
    return Accept(editor, form, [&] {
      return StoreService(editor.app->context.messages, TakenService(form, record), hexadecimal, database,
                          *node.service);
    });
  };
  return RunForm(*editor.app, IDD_SERVICE, actions);
}

bool EditRecord(EditorWindow& editor, const NodeRef& node) {
  switch (node.kind) {
    case NodeKind::kLnb:
      return EditLnb(editor, node);
    case NodeKind::kSatellite:
      return EditSatellite(editor, node);
    case NodeKind::kCarrier:
      return EditCarrier(editor, node);
    case NodeKind::kService:
      return EditService(editor, node);
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      ShowServiceDetails(editor, node);
      return false;
    case NodeKind::kTvGroup:
    case NodeKind::kRadioGroup:
      return EditFavourites(editor, node, node.kind == NodeKind::kRadioGroup);
    case NodeKind::kSdb:
      return EditSdb(editor, node.sdb);
    case NodeKind::kUbi:
      return EditUserBox(editor, node.index);
    default:
      return false;
  }
}

}  // namespace vexa
