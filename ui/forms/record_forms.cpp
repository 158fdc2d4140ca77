// The dialogs of LNBs, satellites, carriers and services.
#include "view/record_forms.h"

#include <set>

#include "core/edit.h"
#include "platform/text.h"
#include "ui/controls/form.h"
#include "ui/editor/change.h"
#include "ui/forms/common_controls.h"
#include "ui/forms/record_dialogs.h"
#include "ui/forms/records_resource.h"
#include "view/common_form.h"
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
  // Of several switch types there is none to choose from.
  const bool known = switch_type != kNoCode;
  form.Fill(IDC_LNB_SELECTION, known ? SwitchChoices(switch_type) : std::vector<std::string>(),
            known ? static_cast<int>(selection) : -1);
}

void ShowLnb(const Form& form, const LnbForm& lnb) {
  for (const int id : {IDC_LNB_FREQUENCY1, IDC_LNB_FREQUENCY2}) form.Limit(id, 5);
  form.SetText(IDC_LNB_FREQUENCY1, lnb.frequency1);
  form.SetText(IDC_LNB_FREQUENCY2, lnb.frequency2);
  form.Fill(IDC_LNB_TYPE, NamesOfCodes(LnbTypeName, 4), static_cast<int>(lnb.type));
  ShowCode(form, IDC_LNB_POWER, lnb.power);
  form.Fill(IDC_LNB_TONE, {"Off", "On", "Auto"}, static_cast<int>(lnb.tone_22khz));
  form.Fill(IDC_LNB_SWITCH, {"None", "Tone Burst", "DiSEqC 1.0"}, static_cast<int>(lnb.switch_type));
  ShowSelection(form, lnb.switch_type, lnb.selection);
  ShowCode(form, IDC_LNB_MOTOR, lnb.motor);
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
  taken.power = TakenCode(form, IDC_LNB_POWER);
  taken.tone_22khz = form.Code(IDC_LNB_TONE);
  taken.switch_type = form.Code(IDC_LNB_SWITCH);
  taken.selection = form.Code(IDC_LNB_SELECTION);
  taken.motor = TakenCode(form, IDC_LNB_MOTOR);
  return taken;
}

void ShowSatellite(const Form& form, const CommonForm<SatelliteForm>& common) {
  const SatelliteForm& satellite = common.form;
  std::vector<std::string> lnbs;
  for (int i = 1; i <= static_cast<int>(kMaximumLnbs); ++i) lnbs.push_back(Format("LNB%d", i));
  form.Limit(IDC_RECORD_NAME, kNameLength);
  form.Limit(IDC_SATELLITE_ANGLE, 8);
  form.Limit(IDC_SATELLITE_POSITION, 5);
  form.SetText(IDC_RECORD_NAME, satellite.name);
  form.Fill(IDC_SATELLITE_LNB, lnbs, static_cast<int>(satellite.lnb_index));
  form.Fill(IDC_SATELLITE_FLAG, {"West", "East"},
            common.Differs(&SatelliteForm::east) ? -1 : int{satellite.east});
  form.SetText(IDC_SATELLITE_ANGLE, satellite.angle);
  form.SetText(IDC_SATELLITE_POSITION, satellite.position);
  ShowFlag(form, IDC_SATELLITE_FACTORY, common, &SatelliteForm::factory_default);
}

CommonForm<SatelliteForm> TakenSatellite(const Form& form) {
  CommonForm<SatelliteForm> common;
  SatelliteForm& taken = common.form;
  taken.name = form.Text(IDC_RECORD_NAME);
  taken.lnb_index = form.Code(IDC_SATELLITE_LNB);
  taken.east = form.Choice(IDC_SATELLITE_FLAG) == 1;
  if (form.Choice(IDC_SATELLITE_FLAG) < 0) common.differing.push_back(&SatelliteForm::east);
  taken.angle = form.Text(IDC_SATELLITE_ANGLE);
  taken.position = form.Text(IDC_SATELLITE_POSITION);
  TakeFlag(form, IDC_SATELLITE_FACTORY, common, &SatelliteForm::factory_default);
  return common;
}

// `owner`: the satellite, or how many.
void ShowCarrier(const Form& form, const std::string& owner, const CommonForm<CarrierForm>& common) {
  const CarrierForm& carrier = common.form;
  form.Limit(IDC_RECORD_NAME, kNameLength);
  form.Limit(IDC_CARRIER_FREQUENCY, 5);
  form.Limit(IDC_CARRIER_SYMBOL_RATE, 5);
  form.SetText(IDC_CARRIER_SATELLITE, owner);
  form.SetText(IDC_RECORD_NAME, carrier.name);
  form.SetText(IDC_CARRIER_FREQUENCY, carrier.frequency);
  form.SetText(IDC_CARRIER_SYMBOL_RATE, carrier.symbol_rate);
  form.Fill(IDC_CARRIER_POLARIZATION, NamesOfCodes(PolarizationName, 4),
            static_cast<int>(carrier.polarization));
  form.Fill(IDC_CARRIER_FEC, NamesOfCodes(FecName, 6), carrier.fec < 6 ? static_cast<int>(carrier.fec) : -1);
  ShowFlag(form, IDC_CARRIER_FACTORY, common, &CarrierForm::factory_default);
}

CommonForm<CarrierForm> TakenCarrier(const Form& form) {
  CommonForm<CarrierForm> common;
  CarrierForm& taken = common.form;
  taken.name = form.Text(IDC_RECORD_NAME);
  taken.frequency = form.Text(IDC_CARRIER_FREQUENCY);
  taken.symbol_rate = form.Text(IDC_CARRIER_SYMBOL_RATE);
  taken.polarization = form.Code(IDC_CARRIER_POLARIZATION);
  taken.fec = form.Code(IDC_CARRIER_FEC);
  TakeFlag(form, IDC_CARRIER_FACTORY, common, &CarrierForm::factory_default);
  return common;
}

// Without video, that PID is not asked for.
void ShowServiceType(const Form& form) {
  form.Enable(IDC_SERVICE_VIDEO, form.Choice(IDC_SERVICE_TYPE) != 1);
}

// `owner`: the carrier, or how many.
void ShowService(const Form& form, const std::string& owner, const CommonForm<ServiceForm>& common) {
  const ServiceForm& service = common.form;
  const bool hexadecimal = form.app.hexadecimal;
  form.Limit(IDC_RECORD_NAME, kNameLength);
  for (const int id : {IDC_SERVICE_NUMBER, IDC_SERVICE_VIDEO, IDC_SERVICE_AUDIO, IDC_SERVICE_PCR})
    form.Limit(id, 5);
  form.SetText(IDC_SERVICE_VIDEO_TITLE, hexadecimal ? "&Video (Hex)" : "&Video (Dec)");
  form.SetText(IDC_SERVICE_AUDIO_TITLE, hexadecimal ? "&Audio (Hex)" : "&Audio (Dec)");
  form.SetText(IDC_SERVICE_PCR_TITLE, hexadecimal ? "&PCR (Hex)" : "&PCR (Dec)");
  form.SetText(IDC_SERVICE_CARRIER, owner);
  form.SetText(IDC_RECORD_NAME, service.name);
  form.SetText(IDC_SERVICE_NUMBER, service.program_number);
  form.Fill(IDC_SERVICE_TYPE, {"TV", "Radio"}, service.type == kNoCode ? -1 : service.type == kTv ? 0 : 1);
  form.SetText(IDC_SERVICE_VIDEO, service.video_pid);
  form.SetText(IDC_SERVICE_AUDIO, service.audio_pid);
  form.SetText(IDC_SERVICE_PCR, service.pcr_pid);
  ShowFlag(form, IDC_SERVICE_SCRAMBLED, common, &ServiceForm::free, true);
  ShowServiceType(form);
}

CommonForm<ServiceForm> TakenService(const Form& form) {
  CommonForm<ServiceForm> common;
  ServiceForm& taken = common.form;
  const int type = form.Choice(IDC_SERVICE_TYPE);
  taken.name = form.Text(IDC_RECORD_NAME);
  taken.program_number = form.Text(IDC_SERVICE_NUMBER);
  taken.type = type < 0 ? kNoCode : type == 0 ? uint32_t{kTv} : uint32_t{kRadio};
  TakeFlag(form, IDC_SERVICE_SCRAMBLED, common, &ServiceForm::free, true);
  taken.video_pid = form.Text(IDC_SERVICE_VIDEO);
  taken.audio_pid = form.Text(IDC_SERVICE_AUDIO);
  taken.pcr_pid = form.Text(IDC_SERVICE_PCR);
  return common;
}

// The name of what all rows stand below, else how many there are.
template <class Owner>
std::string OwnerText(const Document& document, const std::vector<NodeRef>& rows, Owner* NodeRef::*owner,
                      const char* many) {
  std::set<const Owner*> owners;
  for (const NodeRef& row : rows) owners.insert(row.*owner);
  if (owners.size() == 1) return NameText(document, (*owners.begin())->record.name);
  return std::to_string(owners.size()) + many;
}

}  // namespace

bool EditLnbs(EditorWindow& editor, const std::vector<NodeRef>& rows) {
  for (const NodeRef& row : rows)
    if (row.sdb >= editor.document.sdbs.size() || row.index >= kMaximumLnbs) return false;
  const auto shown = CommonLnbs(editor.document, rows);
  FormActions actions;
  actions.open = [&](Form& form) {
    ShowLnb(form, shown.form);
    ShowCount(form, rows.size());
  };
  actions.command = [](Form& form, int id, int code) {
    if (id == IDC_LNB_SWITCH && code == CBN_SELCHANGE) ShowSelection(form, form.Code(id), 0);
  };
  actions.accept = [&](Form& form) {
    return Accept(editor, form, [&] {
      return StoreCommon(editor.document, rows, shown, {TakenLnb(form), {}},
                         editor.app->config.database_variant);
    });
  };
  return RunForm(*editor.app, IDD_LNB, actions);
}

bool EditSatellites(EditorWindow& editor, const std::vector<NodeRef>& rows) {
  const auto shown = CommonSatellites(rows, NamesPage(editor.document));
  FormActions actions;
  actions.open = [&](Form& form) {
    ShowSatellite(form, shown);
    ShowCount(form, rows.size());
  };
  actions.accept = [&](Form& form) {
    return Accept(editor, form, [&] {
      return StoreCommon(editor.app->context.messages, rows, shown, TakenSatellite(form),
                         NamesPage(editor.document));
    });
  };
  return RunForm(*editor.app, IDD_SATELLITE, actions);
}

bool EditCarriers(EditorWindow& editor, const std::vector<NodeRef>& rows) {
  const auto shown = CommonCarriers(rows, NamesPage(editor.document));
  FormActions actions;
  actions.open = [&](Form& form) {
    ShowCarrier(form, OwnerText(editor.document, rows, &NodeRef::satellite, " satellites"), shown);
    ShowCount(form, rows.size());
  };
  actions.accept = [&](Form& form) {
    return Accept(editor, form,
                  [&] { return StoreCommon(editor.document, rows, shown, TakenCarrier(form)); });
  };
  return RunForm(*editor.app, IDD_CARRIER, actions);
}

bool EditServices(EditorWindow& editor, const std::vector<NodeRef>& rows) {
  const bool hexadecimal = editor.app->hexadecimal;
  const auto shown = CommonServices(rows, hexadecimal, NamesPage(editor.document));
  FormActions actions;
  actions.open = [&](Form& form) {
    ShowService(form, OwnerText(editor.document, rows, &NodeRef::carrier, " carriers"), shown);
    ShowCount(form, rows.size());
  };
  actions.command = [](Form& form, int id, int code) {
    if (id == IDC_SERVICE_TYPE && code == CBN_SELCHANGE) ShowServiceType(form);
  };
  actions.accept = [&](Form& form) {
    return Accept(editor, form, [&] {
      return StoreCommon(editor.app->context.messages, editor.document, rows, shown, TakenService(form),
                         hexadecimal);
    });
  };
  return RunForm(*editor.app, IDD_SERVICE, actions);
}

bool EditRecords(EditorWindow& editor, const std::vector<NodeRef>& rows) {
  if (rows.empty()) return false;
  const NodeRef& node = rows[0];
  switch (node.kind) {
    case NodeKind::kLnb:
      return EditLnbs(editor, rows);
    case NodeKind::kSatellite:
      return EditSatellites(editor, rows);
    case NodeKind::kCarrier:
      return EditCarriers(editor, rows);
    case NodeKind::kService:
      return EditServices(editor, rows);
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
      return EditUserBoxes(editor, rows);
    default:
      return false;
  }
}

}  // namespace vexa
