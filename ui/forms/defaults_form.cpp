// The "Default Values" dialog.
#include "view/defaults_form.h"

#include "config/settings.h"
#include "core/edit.h"
#include "ui/controls/form.h"
#include "ui/forms/options.h"
#include "ui/forms/options_resource.h"

namespace vexa {

namespace {

void ShowDefaultSelection(const Form& form, uint32_t switch_type, uint32_t selection) {
  form.Fill(IDC_DEFAULTS_LNB_SELECTION, SwitchChoices(switch_type), static_cast<int>(selection));
}

void ShowDefaultLnb(const Form& form, const LnbForm& lnb) {
  form.SetText(IDC_DEFAULTS_LNB_FREQUENCY1, lnb.frequency1);
  form.SetText(IDC_DEFAULTS_LNB_FREQUENCY2, lnb.frequency2);
  form.Fill(IDC_DEFAULTS_LNB_TYPE, NamesOfCodes(LnbTypeName, 4), static_cast<int>(lnb.type));
  form.Check(IDC_DEFAULTS_LNB_POWER, lnb.power != 0);
  form.Fill(IDC_DEFAULTS_LNB_TONE, {"Off", "On", "Auto"}, static_cast<int>(lnb.tone_22khz));
  form.Fill(IDC_DEFAULTS_LNB_SWITCH, {"None", "Tone Burst", "DiSEqC 1.0"}, static_cast<int>(lnb.switch_type));
  ShowDefaultSelection(form, lnb.switch_type, lnb.selection);
  form.Check(IDC_DEFAULTS_LNB_MOTOR, lnb.motor != 0);
}

void ShowDefaultSatellite(const Form& form, const SatelliteForm& satellite) {
  std::vector<std::string> lnbs;
  for (int i = 1; i <= static_cast<int>(kMaximumLnbs); ++i) lnbs.push_back(Format("LNB%d", i));
  form.Fill(IDC_DEFAULTS_SATELLITE_LNB, lnbs, static_cast<int>(satellite.lnb_index));
  form.Fill(IDC_DEFAULTS_SATELLITE_FLAG, {"West", "East"}, satellite.east ? 1 : 0);
  form.SetText(IDC_DEFAULTS_SATELLITE_ANGLE, satellite.angle);
  form.SetText(IDC_DEFAULTS_SATELLITE_POSITION, satellite.position);
  form.Check(IDC_DEFAULTS_SATELLITE_FACTORY, satellite.factory_default);
}

void ShowDefaultCarrier(const Form& form, const CarrierForm& carrier) {
  form.SetText(IDC_DEFAULTS_CARRIER_FREQUENCY, carrier.frequency);
  form.SetText(IDC_DEFAULTS_CARRIER_SYMBOL_RATE, carrier.symbol_rate);
  form.Fill(IDC_DEFAULTS_CARRIER_POLARIZATION, NamesOfCodes(PolarizationName, 4),
            static_cast<int>(carrier.polarization));
  form.Fill(IDC_DEFAULTS_CARRIER_FEC, NamesOfCodes(FecName, 6), static_cast<int>(carrier.fec));
  form.Check(IDC_DEFAULTS_CARRIER_FACTORY, carrier.factory_default);
}

// Without video, that PID is not asked for.
void ShowDefaultServiceType(const Form& form) {
  form.Enable(IDC_DEFAULTS_SERVICE_VIDEO, form.Choice(IDC_DEFAULTS_SERVICE_TYPE) == 0);
}

void ShowDefaultService(const Form& form, const ServiceForm& service) {
  form.Fill(IDC_DEFAULTS_SERVICE_TYPE, {"TV", "Radio"}, service.type == kTv ? 0 : 1);
  form.Check(IDC_DEFAULTS_SERVICE_SCRAMBLED, !service.free);
  form.SetText(IDC_DEFAULTS_SERVICE_VIDEO, service.video_pid);
  form.SetText(IDC_DEFAULTS_SERVICE_AUDIO, service.audio_pid);
  form.SetText(IDC_DEFAULTS_SERVICE_PCR, service.pcr_pid);
  ShowDefaultServiceType(form);
}

void ShowDefaults(const Form& form, const DefaultsForm& defaults) {
  ShowDefaultLnb(form, defaults.lnb);
  ShowDefaultSatellite(form, defaults.satellite);
  ShowDefaultCarrier(form, defaults.carrier);
  ShowDefaultService(form, defaults.service);
}

DefaultsForm TakenDefaults(const Form& form) {
  DefaultsForm taken;
  taken.lnb.frequency1 = form.Text(IDC_DEFAULTS_LNB_FREQUENCY1);
  taken.lnb.frequency2 = form.Text(IDC_DEFAULTS_LNB_FREQUENCY2);
  taken.lnb.type = form.Code(IDC_DEFAULTS_LNB_TYPE);
  taken.lnb.power = form.Checked(IDC_DEFAULTS_LNB_POWER);
  taken.lnb.tone_22khz = form.Code(IDC_DEFAULTS_LNB_TONE);
  taken.lnb.switch_type = form.Code(IDC_DEFAULTS_LNB_SWITCH);
  taken.lnb.selection = form.Code(IDC_DEFAULTS_LNB_SELECTION);
  taken.lnb.motor = form.Checked(IDC_DEFAULTS_LNB_MOTOR);
  taken.satellite.lnb_index = form.Code(IDC_DEFAULTS_SATELLITE_LNB);
  taken.satellite.east = form.Choice(IDC_DEFAULTS_SATELLITE_FLAG) == 1;
  taken.satellite.angle = form.Text(IDC_DEFAULTS_SATELLITE_ANGLE);
  taken.satellite.position = form.Text(IDC_DEFAULTS_SATELLITE_POSITION);
  taken.satellite.factory_default = form.Checked(IDC_DEFAULTS_SATELLITE_FACTORY);
  taken.carrier.frequency = form.Text(IDC_DEFAULTS_CARRIER_FREQUENCY);
  taken.carrier.symbol_rate = form.Text(IDC_DEFAULTS_CARRIER_SYMBOL_RATE);
  taken.carrier.polarization = form.Code(IDC_DEFAULTS_CARRIER_POLARIZATION);
  taken.carrier.fec = form.Code(IDC_DEFAULTS_CARRIER_FEC);
  taken.carrier.factory_default = form.Checked(IDC_DEFAULTS_CARRIER_FACTORY);
  taken.service.type = form.Choice(IDC_DEFAULTS_SERVICE_TYPE) == 0 ? kTv : kRadio;
  taken.service.free = !form.Checked(IDC_DEFAULTS_SERVICE_SCRAMBLED);
  taken.service.video_pid = form.Text(IDC_DEFAULTS_SERVICE_VIDEO);
  taken.service.audio_pid = form.Text(IDC_DEFAULTS_SERVICE_AUDIO);
  taken.service.pcr_pid = form.Text(IDC_DEFAULTS_SERVICE_PCR);
  return taken;
}

int DefaultsControl(int field) {
  switch (field) {
    case kFieldOscillator1:
      return IDC_DEFAULTS_LNB_FREQUENCY1;
    case kFieldOscillator2:
      return IDC_DEFAULTS_LNB_FREQUENCY2;
    case kFieldPosition:
      return IDC_DEFAULTS_SATELLITE_POSITION;
    case kFieldAngle:
      return IDC_DEFAULTS_SATELLITE_ANGLE;
    case kFieldFrequency:
      return IDC_DEFAULTS_CARRIER_FREQUENCY;
    case kFieldSymbolRate:
      return IDC_DEFAULTS_CARRIER_SYMBOL_RATE;
    case kFieldVideoPid:
      return IDC_DEFAULTS_SERVICE_VIDEO;
    case kFieldAudioPid:
      return IDC_DEFAULTS_SERVICE_AUDIO;
    default:
      return IDC_DEFAULTS_SERVICE_PCR;
  }
}

void Open(const Form& form) {
  const bool hexadecimal = form.app.hexadecimal;
  for (const int id :
       {IDC_DEFAULTS_LNB_FREQUENCY1, IDC_DEFAULTS_LNB_FREQUENCY2, IDC_DEFAULTS_SATELLITE_ANGLE,
        IDC_DEFAULTS_SATELLITE_POSITION, IDC_DEFAULTS_CARRIER_FREQUENCY, IDC_DEFAULTS_CARRIER_SYMBOL_RATE,
        IDC_DEFAULTS_SERVICE_VIDEO, IDC_DEFAULTS_SERVICE_AUDIO, IDC_DEFAULTS_SERVICE_PCR})
    form.Limit(id, 5);
  int title = IDC_DEFAULTS_PID_TITLE;
  // Behind the labels, which have access keys, stands how their numbers are written.
  for (const std::string_view text : PidHeaders(hexadecimal)) {
    form.SetText(title, form.Text(title) + std::string(text.substr(text.find(' '))));
    ++title;
  }
  ShowDefaults(form, DefaultsFormOf(form.app.defaults, hexadecimal));
}

}  // namespace

void ShowDefaultValues(Application& app) {
  FormActions actions;
  actions.open = [](Form& form) { Open(form); };
  actions.command = [&](Form& form, int id, int code) {
    if (id == IDC_DEFAULTS_LNB_SWITCH && code == CBN_SELCHANGE) ShowDefaultSelection(form, form.Code(id), 0);
    if (id == IDC_DEFAULTS_SERVICE_TYPE && code == CBN_SELCHANGE) ShowDefaultServiceType(form);
    if (id == IDC_DEFAULTS_FACTORY && code == BN_CLICKED)
      ShowDefaults(form, DefaultsFormOf(FactoryDefaults(), app.hexadecimal));
  };
  actions.accept = [&](Form& form) {
    const auto refusal =
        StoreDefaults(app.context.messages, TakenDefaults(form), app.hexadecimal, app.defaults);
    if (refusal) {
      form.Refuse(*refusal, DefaultsControl(refusal->field));
      return false;
    }
    SaveDefaultRecords(app.settings, app.defaults);
    return true;
  };
  RunForm(app, IDD_DEFAULTS, actions);
}

}  // namespace vexa
