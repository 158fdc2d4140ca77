// The configuration dialog.
#include "core/messages.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/form.h"
#include "ui/editor/editor_parts.h"
#include "ui/forms/options.h"
#include "ui/forms/options_resource.h"
#include "view/upload_steps.h"

namespace vexa {

namespace {

// Lists that follow the configuration file and what is chosen above them.
void ShowLists(const Form& form, const SettingsForm& dialog) {
  form.Fill(IDC_SETTINGS_MANUFACTURER, dialog.manufacturers, dialog.manufacturer);
  form.Fill(IDC_SETTINGS_PRODUCT, dialog.products, dialog.product);
  form.Fill(IDC_SETTINGS_CONFIGURATION, dialog.configurations, dialog.configuration);
  form.Fill(IDC_SETTINGS_IMAGE_TYPE, dialog.image_types, dialog.image_type);
}

// A control with the label before it.
void EnableLabelled(const Form& form, int id, bool enabled) {
  form.Enable(id, enabled);
  HWND label = GetWindow(form.Control(id), GW_HWNDPREV);
  wchar_t kind[16] = L"";
  GetClassNameW(label, kind, static_cast<int>(std::size(kind)));
  if (_wcsicmp(kind, WC_STATICW) == 0) EnableWindow(label, enabled);
}

void ShowEnabling(const Form& form, const SettingsForm& dialog) {
  const SettingsEnabling enabled = EnabledControls(dialog);
  const struct {
    int id;
    bool enabled;
  } rows[] = {{IDC_SETTINGS_FILE, enabled.file},
              {IDC_SETTINGS_BROWSE, enabled.browse},
              {IDOK, enabled.ok},
              {IDC_SETTINGS_MANUFACTURER, enabled.lists},
              {IDC_SETTINGS_PRODUCT, enabled.lists},
              {IDC_SETTINGS_CONFIGURATION, enabled.lists},
              {IDC_SETTINGS_MAJOR, enabled.software},
              {IDC_SETTINGS_MINOR, enabled.software},
              {IDC_SETTINGS_FORMAT, enabled.sdb_format},
              {IDC_SETTINGS_RADIX, enabled.radix},
              {IDC_SETTINGS_IMAGE_TYPE, enabled.image_type},
              {IDC_SETTINGS_COMPRESSED, enabled.compression},
              {IDC_SETTINGS_COMPRESSION, enabled.compression_type},
              {IDC_SETTINGS_LEVEL, enabled.compression_level},
              {IDC_SETTINGS_PORT, enabled.serial},
              {IDC_SETTINGS_BAUD, enabled.serial},
              {IDC_SETTINGS_DATA_BITS, enabled.serial},
              {IDC_SETTINGS_PARITY, enabled.serial},
              {IDC_SETTINGS_STOP_BITS, enabled.serial},
              {IDC_SETTINGS_SET, enabled.sets},
              {IDC_SETTINGS_SET_SAVE, enabled.sets},
              {IDC_SETTINGS_SET_DELETE, enabled.sets},
              {IDC_SETTINGS_NAMES, enabled.ok},
              {IDC_SETTINGS_COPIES, enabled.ok},
              {IDC_SETTINGS_COPIES_BROWSE, enabled.ok},
              {IDC_SETTINGS_LATITUDE, enabled.ok},
              {IDC_SETTINGS_LONGITUDE, enabled.ok}};
  for (const auto& row : rows) EnableLabelled(form, row.id, row.enabled);
  // A disabled control that keeps the focus would take all keys.
  HWND focus = GetFocus();
  if (!dialog.listed && IsChild(form.window, focus) && !IsWindowEnabled(focus))
    form.Focus(IDC_SETTINGS_BROWSE);
}

void ShowSets(const Form& form) {
  std::vector<std::string> names;
  for (const OptionSet& set : LoadOptionSets(form.app.settings)) names.push_back(set.name);
  form.Fill(IDC_SETTINGS_SET, names, -1);
}

void ShowValues(const Form& form, const SettingsForm& dialog) {
  form.SetText(IDC_SETTINGS_FILE, dialog.file);
  ShowLists(form, dialog);
  form.SetText(IDC_SETTINGS_MAJOR, dialog.software_major);
  form.SetText(IDC_SETTINGS_MINOR, dialog.software_minor);
  form.Fill(IDC_SETTINGS_FORMAT, TextsOf(kSdbFormats), dialog.sdb_format);
  form.Fill(IDC_SETTINGS_RADIX, TextsOf(kRadixes), dialog.radix);
  form.Fill(IDC_SETTINGS_NAMES, dialog.names_pages, dialog.names_page);
  form.Check(IDC_SETTINGS_COMPRESSED, dialog.compressed);
  form.Fill(IDC_SETTINGS_COMPRESSION, TextsOf(kCompressionTypes), dialog.compression_type);
  form.Fill(IDC_SETTINGS_LEVEL, TextsOf(kCompressionLevels), dialog.compression_level);
  form.SetText(IDC_SETTINGS_PORT, dialog.port_name);
  form.Fill(IDC_SETTINGS_BAUD, dialog.bauds, dialog.baud);
  form.Fill(IDC_SETTINGS_DATA_BITS, TextsOf(kDataBits), dialog.data_bits);
  form.Fill(IDC_SETTINGS_PARITY, TextsOf(kParities), dialog.parity);
  form.Fill(IDC_SETTINGS_STOP_BITS, TextsOf(kStopBits), dialog.stop_bits);
  ShowEnabling(form, dialog);
}

void Open(const Form& form, const SettingsForm& dialog) {
  form.Limit(IDC_SETTINGS_MAJOR, 3);
  form.Limit(IDC_SETTINGS_MINOR, 2);
  form.Fill(IDC_SETTINGS_PORT, PortChoices(ListSerialPorts()), -1);
  SendMessageW(form.Control(IDC_SETTINGS_PORT), CB_LIMITTEXT, kPortNameSize, 0);
  SendMessageW(form.Control(IDC_SETTINGS_PORT), CB_SETDROPPEDWIDTH, 320, 0);
  SendMessageW(form.Control(IDC_SETTINGS_SET), CB_LIMITTEXT, kMaximumSetName, 0);
  ShowSets(form);
  form.SetText(IDC_SETTINGS_COPIES,
               Utf8FromPath(CopyFolderIn(LoadTransferSettings(form.app.settings), DocumentsFolder())));
  if (const auto& place = form.app.place) {
    form.SetText(IDC_SETTINGS_LATITUDE, TextOfDegrees(place->latitude, 'N', 'S'));
    form.SetText(IDC_SETTINGS_LONGITUDE, TextOfDegrees(place->longitude, 'E', 'W'));
  }
  ShowValues(form, dialog);
}

// What the controls hold, but for the lists of the configuration, which the model follows at once.
void Take(const Form& form, SettingsForm& dialog) {
  dialog.file = form.Text(IDC_SETTINGS_FILE);
  dialog.image_type = form.Choice(IDC_SETTINGS_IMAGE_TYPE);
  dialog.software_major = form.Text(IDC_SETTINGS_MAJOR);
  dialog.software_minor = form.Text(IDC_SETTINGS_MINOR);
  dialog.sdb_format = form.Choice(IDC_SETTINGS_FORMAT);
  dialog.radix = form.Choice(IDC_SETTINGS_RADIX);
  dialog.names_page = form.Choice(IDC_SETTINGS_NAMES);
  dialog.compressed = form.Checked(IDC_SETTINGS_COMPRESSED);
  dialog.compression_type = form.Choice(IDC_SETTINGS_COMPRESSION);
  dialog.compression_level = form.Choice(IDC_SETTINGS_LEVEL);
  dialog.port_name = PortNameIn(form.Text(IDC_SETTINGS_PORT));
  dialog.baud = form.Choice(IDC_SETTINGS_BAUD);
  dialog.data_bits = form.Choice(IDC_SETTINGS_DATA_BITS);
  dialog.parity = form.Choice(IDC_SETTINGS_PARITY);
  dialog.stop_bits = form.Choice(IDC_SETTINGS_STOP_BITS);
}

// Posted to the dialog when the edit of the file, or Browse behind it, has lost the focus: a message box must
// not come up while the focus is on its way.
constexpr int kFileWasLeft = 0x7F00;

void LeaveFile(const Form& form, SettingsForm& dialog) {
  LeaveConfigurationFile(form.app.context, dialog);
  ShowLists(form, dialog);
  ShowEnabling(form, dialog);
}

// OK judges the path itself, Browse may replace it and is left in its turn, Cancel drops it; a message box
// over the dialog is no leaving.
bool LeftForAnotherField(const Form& form) {
  HWND focus = GetFocus();
  if (!IsChild(form.window, focus)) return false;
  const int id = GetDlgCtrlID(focus);
  return id != IDC_SETTINGS_FILE && id != IDC_SETTINGS_BROWSE && id != IDOK && id != IDCANCEL;
}

void Browse(const Form& form, SettingsForm& dialog) {
  const auto file = AskOpenFile(form.window, {kOpenEcfTitle, {{kEcfFilterName, kEcfFilterPattern}}, "ecf"});
  if (!file) return LeaveFile(form, dialog);
  BrowseConfiguration(form.app.context, dialog, *file);
  form.SetText(IDC_SETTINGS_FILE, dialog.file);
  ShowLists(form, dialog);
}

int ControlOf(SettingsField field);

void TakeSet(const Form& form, SettingsForm& dialog) {
  const auto sets = LoadOptionSets(form.app.settings);
  const int place = form.Choice(IDC_SETTINGS_SET);
  if (place < 0 || static_cast<size_t>(place) >= sets.size()) return;
  if (TakeSettingsSet(form.app.context, dialog, sets[static_cast<size_t>(place)])) ShowValues(form, dialog);
}

void SaveSet(const Form& form, SettingsForm& dialog) {
  Take(form, dialog);
  auto sets = LoadOptionSets(form.app.settings);
  const std::string name = form.Text(IDC_SETTINGS_SET);
  const SettingsField refused = KeepSettingsSet(form.app.context, dialog, sets, name);
  if (refused != SettingsField::kNone) return form.Focus(ControlOf(refused));
  SaveOptionSets(form.app.settings, sets);
  ShowSets(form);
  form.SetText(IDC_SETTINGS_SET, name);
}

void DeleteSet(const Form& form) {
  auto sets = LoadOptionSets(form.app.settings);
  const auto place = FindOptionSet(sets, form.Text(IDC_SETTINGS_SET));
  if (!place) {
    Tell(form.app.context.messages, Icon::kInformation, "Choose the set that is to be deleted.");
    return form.Focus(IDC_SETTINGS_SET);
  }
  sets.erase(sets.begin() + static_cast<std::ptrdiff_t>(*place));
  SaveOptionSets(form.app.settings, sets);
  ShowSets(form);
}

void BrowseCopies(const Form& form) {
  const auto folder = AskFolder(form.window, "Choose the folder of the copies.",
                                PathFromUtf8(form.Text(IDC_SETTINGS_COPIES)));
  if (folder) form.SetText(IDC_SETTINGS_COPIES, Utf8FromPath(*folder));
}

void Command(const Form& form, SettingsForm& dialog, int id, int code) {
  const Context& context = form.app.context;
  if (id == IDC_SETTINGS_FILE && code == EN_CHANGE) {
    dialog.file = form.Text(id);
    return;
  }
  if ((id == IDC_SETTINGS_FILE && code == EN_KILLFOCUS) ||
      (id == IDC_SETTINGS_BROWSE && code == BN_KILLFOCUS)) {
    PostMessageW(form.window, WM_COMMAND, MAKEWPARAM(IDC_SETTINGS_FILE, kFileWasLeft), 0);
    return;
  }
  if (code == kFileWasLeft && LeftForAnotherField(form)) return LeaveFile(form, dialog);
  if (code != CBN_SELCHANGE && code != BN_CLICKED) return;
  switch (id) {
    case IDC_SETTINGS_BROWSE:
      Browse(form, dialog);
      break;
    case IDC_SETTINGS_SET:
      TakeSet(form, dialog);
      break;
    case IDC_SETTINGS_SET_SAVE:
      SaveSet(form, dialog);
      break;
    case IDC_SETTINGS_SET_DELETE:
      DeleteSet(form);
      break;
    case IDC_SETTINGS_COPIES_BROWSE:
      BrowseCopies(form);
      break;
    case IDC_SETTINGS_MANUFACTURER:
      ChooseManufacturer(context, dialog, form.Choice(id));
      ShowLists(form, dialog);
      break;
    case IDC_SETTINGS_PRODUCT:
      ChooseProduct(context, dialog, form.Choice(id));
      ShowLists(form, dialog);
      break;
    case IDC_SETTINGS_CONFIGURATION:
      ChooseConfiguration(context, dialog, form.Choice(id));
      ShowLists(form, dialog);
      break;
    default:
      Take(form, dialog);
      break;
  }
  ShowEnabling(form, dialog);
}

int ControlOf(SettingsField field) {
  switch (field) {
    case SettingsField::kMajor:
      return IDC_SETTINGS_MAJOR;
    case SettingsField::kMinor:
      return IDC_SETTINGS_MINOR;
    case SettingsField::kPort:
      return IDC_SETTINGS_PORT;
    case SettingsField::kSet:
      return IDC_SETTINGS_SET;
    default:
      return IDC_SETTINGS_FILE;
  }
}

void KeepCopyFolder(const Form& form) {
  TransferSettings settings = LoadTransferSettings(form.app.settings);
  settings.copy_folder = CopyFolderText(form.Text(IDC_SETTINGS_COPIES), DocumentsFolder());
  SaveTransferSettings(form.app.settings, settings);
}

// False after a message.
bool TakePlace(const Form& form, std::optional<Place>& place) {
  const auto refusal =
      PlaceFromFields(form.Text(IDC_SETTINGS_LATITUDE), form.Text(IDC_SETTINGS_LONGITUDE), place);
  if (refusal)
    form.Refuse(*refusal, refusal->field == kLatitudeField ? IDC_SETTINGS_LATITUDE : IDC_SETTINGS_LONGITUDE);
  return !refusal;
}

void KeepPlace(Application& app, const std::optional<Place>& place) {
  if (place == app.place) return;
  app.place = place;
  SavePlace(app.settings, place);
  for (EditorWindow* editor : AllEditors(app)) RefreshList(*editor);
}

void TakeEffect(Application& app, const SettingsOutcome& outcome) {
  app.hexadecimal = outcome.hexadecimal_pids;
  if (outcome.refill) {
    for (EditorWindow* editor : AllEditors(app)) RefreshList(*editor);
  }
  if (outcome.names) {
    app.names = outcome.names;
    SaveNamesPage(app.settings, *app.names);
    for (EditorWindow* editor : AllEditors(app)) {
      editor->document.names = app.names;
      RefreshDocument(*editor, Records::kKept);
    }
  }
  app.refresh_frame();
}

}  // namespace

bool ShowSettings(Application& app, const SettingsRequest& request) {
  SettingsForm dialog =
      OpenSettingsForm(app.context, request, app.configuration_file, app.config, app.hexadecimal, *app.names);
  SettingsOutcome outcome;
  FormActions actions;
  actions.open = [&](Form& form) { Open(form, dialog); };
  actions.command = [&](Form& form, int id, int code) { Command(form, dialog, id, code); };
  actions.accept = [&](Form& form) {
    std::optional<Place> place;
    if (!TakePlace(form, place)) return false;
    Take(form, dialog);
    outcome = AcceptSettings(app.context, dialog, app.configuration_file, app.config);
    if (outcome.close) {
      KeepCopyFolder(form);
      KeepPlace(form.app, place);
      return true;
    }
    ShowLists(form, dialog);
    ShowEnabling(form, dialog);
    if (dialog.listed) form.Focus(ControlOf(outcome.focus));
    return false;
  };
  if (RunForm(app, IDD_SETTINGS, actions)) TakeEffect(app, outcome);
  StoreSettingsForm(app.settings, dialog, app.configuration_file, app.config);
  return outcome.loaded;
}

}  // namespace vexa
