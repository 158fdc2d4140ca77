// URT files from images, and the compression of files.
#include "config/project_config.h"
#include "image/urt.h"
#include "ui/controls/windows_api.h"
// After windows.h.
#include <commdlg.h>

#include "core/messages.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/form.h"
#include "ui/controls/progress_box.h"
#include "ui/controls/virtual_list.h"
#include "ui/forms/form_commands.h"
#include "ui/forms/image_resource.h"
#include "view/compression_form.h"
#include "view/settings_form.h"
#include "view/urt_form.h"

namespace vexa {

namespace {

const std::vector<FileFilter> kImageFilters = {{"BIN Files ( *.BIN )", "*.bin"},
                                               {"All Files ( *.* )", "*.*"}};
const std::vector<FileFilter> kUrtFilters = {{"UART File ( *.URT )", "*.urt"}};
const std::vector<FileFilter> kAllFilters = {{"All Files ( *.* )", "*.*"}};

// Several files of one folder; empty when the user cancels.
std::vector<Path> AskImages(HWND owner) {
  std::wstring names(65536, L'\0');
  std::wstring filter = L"BIN Files ( *.BIN )";
  for (const wchar_t* part : {L"*.bin", L"All Files ( *.* )", L"*.*"}) filter.append(1, L'\0').append(part);
  filter.append(2, L'\0');
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = filter.c_str();
  dialog.lpstrFile = names.data();
  dialog.nMaxFile = static_cast<DWORD>(names.size());
  dialog.lpstrTitle = L"Add Images";
  dialog.Flags = OFN_EXPLORER | OFN_ALLOWMULTISELECT | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_FILEMUSTEXIST;
  std::vector<Path> files;
  if (!GetOpenFileNameW(&dialog)) return files;
  // One file is its path; several are their folder and then their names, each with its NUL.
  const Path first = names.c_str();
  for (const wchar_t* name = names.c_str() + first.native().size() + 1; *name; name += wcslen(name) + 1) {
    files.push_back(first / name);
  }
  if (files.empty()) files.push_back(first);
  return files;
}

struct UrtWindow {
  const char* title;
  const ProjectConfig& config;
  UrtForm model;
  bool several = false;
  size_t row = 0;        // whose fields are shown
  bool loading = false;  // the fields are being filled, nobody types

  UrtRow* Row() { return row < model.rows.size() ? &model.rows[row] : nullptr; }
};

void ShowRowInList(UrtWindow& urt, Form& form, size_t place) {
  const UrtRow& row = urt.model.rows[place];
  const auto region = static_cast<size_t>(row.region);
  const std::string texts[] = {Utf8FromPath(row.image.filename()),
                               region < urt.model.regions.size() ? urt.model.regions[region] : "", row.name};
  for (int i = 0; i < 3; ++i) {
    std::wstring text = Wide(texts[i]);
    ListView_SetItemText(form.Control(IDC_IMAGE_LIST), static_cast<int>(place), i, text.data());
  }
}

void EnableCompression(const UrtWindow& urt, Form& form) {
  const CompressionChoices choices = ChoicesOfCompression(urt.model);
  form.Enable(IDC_IMAGE_COMPRESSED, choices.compressed);
  form.Enable(IDC_IMAGE_METHOD, choices.method);
  form.Enable(IDC_IMAGE_LEVEL, choices.level);
}

void ShowRow(UrtWindow& urt, Form& form) {
  urt.loading = true;
  const UrtRow* row = urt.Row();
  if (!urt.several) form.SetText(IDC_IMAGE_FILE, Utf8FromPath(row->image));
  form.SetText(IDC_IMAGE_URT, row ? Utf8FromPath(row->urt) : "");
  form.SetText(IDC_IMAGE_NAME, row ? row->name : "");
  SendDlgItemMessageW(form.window, IDC_IMAGE_TYPE, CB_SETCURSEL, static_cast<WPARAM>(row ? row->region : -1),
                      0);
  for (const int id : {IDC_IMAGE_URT, IDC_IMAGE_URT_BROWSE, IDC_IMAGE_NAME, IDC_IMAGE_TYPE}) {
    form.Enable(id, row != nullptr);
  }
  if (urt.several) form.Enable(IDC_IMAGE_REMOVE, row != nullptr);
  EnableCompression(urt, form);
  urt.loading = false;
}

void SelectRow(UrtWindow& urt, Form& form, size_t row) {
  urt.row = row;
  ListView_SetItemState(form.Control(IDC_IMAGE_LIST), static_cast<int>(row), LVIS_FOCUSED | LVIS_SELECTED,
                        LVIS_FOCUSED | LVIS_SELECTED);
  ShowRow(urt, form);
}

void AddRows(UrtWindow& urt, Form& form, const std::vector<Path>& images) {
  HWND list = form.Control(IDC_IMAGE_LIST);
  for (const Path& image : images) {
    if (urt.model.rows.size() == kMostUrtRows) break;
    urt.model.rows.push_back(MakeUrtRow(urt.config, image));
    const size_t place = urt.model.rows.size() - 1;
    LVITEMW item{};
    item.iItem = static_cast<int>(place);
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    ShowRowInList(urt, form, place);
  }
  if (!images.empty()) SelectRow(urt, form, urt.model.rows.size() - 1);
}

void RemoveRow(UrtWindow& urt, Form& form) {
  if (!urt.Row()) return;
  const size_t row = urt.row;
  urt.model.rows.erase(urt.model.rows.begin() + static_cast<std::ptrdiff_t>(row));
  ListView_DeleteItem(form.Control(IDC_IMAGE_LIST), static_cast<int>(row));
  SelectRow(urt, form, urt.model.rows.empty() ? 0 : std::min(row, urt.model.rows.size() - 1));
  form.Focus(urt.model.rows.empty() ? IDC_IMAGE_ADD : IDC_IMAGE_LIST);
}

void OpenList(UrtWindow& urt, Form& form) {
  HWND list = form.Control(IDC_IMAGE_LIST);
  SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
  RECT area{};
  GetClientRect(list, &area);
  const std::pair<const wchar_t*, int> columns[] = {
      {L"Image file", 38}, {L"Image Type", 31}, {L"Name", 0}};  // percent of the width; 0: what is left
  for (int i = 0; i < 3; ++i) {
    std::wstring title = columns[i].first;
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = title.data();
    column.cx = static_cast<int>(area.right) * columns[i].second / 100;
    SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
  }
  FitLastColumn(list);
  std::vector<UrtRow> rows = std::move(urt.model.rows);
  urt.model.rows.clear();
  for (UrtRow& row : rows) {
    AddRows(urt, form, {row.image});
    urt.model.rows.back() = std::move(row);
    ShowRowInList(urt, form, urt.model.rows.size() - 1);
  }
}

void OpenUrt(UrtWindow& urt, Form& form) {
  SetText(form.window, urt.title);
  form.Fill(IDC_IMAGE_TYPE, urt.model.regions, -1);
  form.Fill(IDC_IMAGE_METHOD, {kCompressionTypes.begin(), kCompressionTypes.end()},
            urt.model.compression_type);
  form.Fill(IDC_IMAGE_LEVEL, {kCompressionLevels.begin(), kCompressionLevels.end()},
            urt.model.compression_level);
  form.Limit(IDC_IMAGE_NAME, static_cast<int>(kLongestImageName));
  form.Limit(IDC_IMAGE_MAJOR, 3);
  form.Limit(IDC_IMAGE_MINOR, 2);
  urt.loading = true;
  form.SetText(IDC_IMAGE_MAJOR, urt.model.software_major);
  form.SetText(IDC_IMAGE_MINOR, urt.model.software_minor);
  form.Check(IDC_IMAGE_COMPRESSED, urt.model.compressed);
  urt.loading = false;
  if (urt.several) OpenList(urt, form);
  ShowRow(urt, form);
}

int ControlOf(int field, bool several) {
  switch (field) {
    case UrtField::kUrt:
      return IDC_IMAGE_URT;
    case UrtField::kRegion:
      return IDC_IMAGE_TYPE;
    case UrtField::kName:
      return IDC_IMAGE_NAME;
    case UrtField::kMajor:
      return IDC_IMAGE_MAJOR;
    case UrtField::kMinor:
      return IDC_IMAGE_MINOR;
    default:
      return several ? IDC_IMAGE_ADD : IDC_IMAGE_FILE;
  }
}

bool AcceptUrt(UrtWindow& urt, Form& form) {
  if (const auto refusal = CheckUrtForm(urt.model)) {
    if (urt.several && refusal->row < urt.model.rows.size()) SelectRow(urt, form, refusal->row);
    form.Refuse(*refusal, ControlOf(refusal->field, urt.several));
    return false;
  }
  const auto kept = KeptUrt(form.app.context.messages, urt.model);
  if (!kept) return true;
  if (urt.several) SelectRow(urt, form, *kept);
  form.Focus(IDC_IMAGE_URT);
  return false;
}

void BrowseImage(UrtWindow& urt, Form& form) {
  const auto path = AskOpenFile(form.window, {"Open", kImageFilters, "bin"});
  UrtRow* row = urt.Row();
  if (!path || !row) return;
  ChooseUrtImage(*row, *path);
  ShowRow(urt, form);
}

void BrowseUrt(UrtWindow& urt, Form& form) {
  UrtRow* row = urt.Row();
  if (!row) return;
  const auto path = AskSaveFile(form.window, {"Save", kUrtFilters, "urt"}, row->urt);
  if (!path) return;
  row->urt = row->agreed = *path;  // the system's dialog has asked
  ShowRow(urt, form);
}

// What the user typed or chose in the fields goes into the row and the model.
void FieldChanged(UrtWindow& urt, Form& form, int id) {
  UrtRow* row = urt.Row();
  if (id == IDC_IMAGE_MAJOR) urt.model.software_major = form.Text(id);
  if (id == IDC_IMAGE_MINOR) urt.model.software_minor = form.Text(id);
  if (id == IDC_IMAGE_METHOD) urt.model.compression_type = form.Choice(id);
  if (id == IDC_IMAGE_LEVEL) urt.model.compression_level = form.Choice(id);
  EnableCompression(urt, form);
  if (!row) return;
  if (id == IDC_IMAGE_FILE) {
    ChooseUrtImage(*row, PathFromUtf8(form.Text(id)));
    urt.loading = true;
    form.SetText(IDC_IMAGE_URT, Utf8FromPath(row->urt));
    urt.loading = false;
  }
  if (id == IDC_IMAGE_URT) row->urt = PathFromUtf8(form.Text(id));
  if (id == IDC_IMAGE_NAME) row->name = form.Text(id);
  if (id == IDC_IMAGE_TYPE) {
    ChooseUrtRegion(urt.model, *row, form.Choice(id));
    ShowRow(urt, form);
  }
  if (urt.several) ShowRowInList(urt, form, urt.row);
}

void UrtCommand(UrtWindow& urt, Form& form, int id, int code) {
  if (code == EN_CHANGE || (code == CBN_SELCHANGE && id != IDC_IMAGE_COMPRESSED)) {
    if (!urt.loading) FieldChanged(urt, form, id);
    return;
  }
  if (code != BN_CLICKED) return;
  switch (id) {
    case IDC_IMAGE_COMPRESSED:
      urt.model.compressed = form.Checked(id);
      return EnableCompression(urt, form);
    case IDC_IMAGE_BROWSE:
      return BrowseImage(urt, form);
    case IDC_IMAGE_URT_BROWSE:
      return BrowseUrt(urt, form);
    case IDC_IMAGE_ADD:
      return AddRows(urt, form, AskImages(form.window));
    case IDC_IMAGE_REMOVE:
      return RemoveRow(urt, form);
    default:
      return;
  }
}

LRESULT UrtNotify(UrtWindow& urt, Form& form, NMHDR& header) {
  if (header.idFrom != IDC_IMAGE_LIST) return 0;
  if (header.code == LVN_ITEMCHANGED) {
    const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
    const auto place = static_cast<size_t>(change.iItem);
    if ((change.uNewState & LVIS_SELECTED) && !(change.uOldState & LVIS_SELECTED) && place != urt.row &&
        place < urt.model.rows.size()) {
      urt.row = place;
      ShowRow(urt, form);
    }
  }
  if (header.code == LVN_KEYDOWN && reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey == VK_DELETE) {
    RemoveRow(urt, form);
  }
  return 0;
}

// The dialog comes back with its fields as they were when the conversion fails.
void RunUrtForm(Application& app, UrtWindow& urt) {
  FormActions actions;
  actions.anchors = ListAnchors(IDC_IMAGE_LIST);
  for (const int id : {IDC_IMAGE_URT, IDC_IMAGE_TYPE, IDC_IMAGE_NAME})
    actions.anchors.push_back({id, 0, kWhole, kWhole, kWhole});
  actions.open = [&urt](Form& form) { OpenUrt(urt, form); };
  actions.resized = [&urt](Form& form) {
    if (urt.several) FitLastColumn(form.Control(IDC_IMAGE_LIST));
  };
  actions.accept = [&urt](Form& form) { return AcceptUrt(urt, form); };
  actions.command = [&urt](Form& form, int id, int code) { UrtCommand(urt, form, id, code); };
  actions.notify = [&urt](Form& form, NMHDR& header) { return UrtNotify(urt, form, header); };
  while (RunForm(app, urt.several ? IDD_MULTIPLE_IMAGE : IDD_SINGLE_IMAGE, actions)) {
    size_t made = 0;
    {
      const ProgressBox progress(app, Utf8FromPath(urt.model.rows[0].urt), "Convert to URT");
      made = ConvertRows(progress.context(), app.config, urt.model, LocalTimeNow());
    }
    if (made < urt.model.rows.size()) continue;
    if (made == 1) {
      Tell(app.context.messages, Icon::kInformation, "The URT file \"%s\" is ready.",
           Utf8FromPath(urt.model.rows[0].urt).c_str());
    } else {
      Tell(app.context.messages, Icon::kInformation, "%zu URT files are ready.", made);
    }
    return;
  }
}

void SingleImageOf(Application& app, const char* title, const Path& image) {
  UrtWindow urt{title, app.config, OpenUrtForm(app.config)};
  urt.model.rows.push_back(MakeUrtRow(app.config, image));
  RunUrtForm(app, urt);
}

void SingleImage(Application& app) {
  SingleImageOf(app, "Single Image", {});
}

void MultipleImage(Application& app) {
  UrtWindow urt{"Multiple Image", app.config, OpenUrtForm(app.config), true};
  RunUrtForm(app, urt);
}

void Bin2Urt(Application& app) {
  if (const auto image = AskOpenFile(app.frame, {"Open", kImageFilters, "bin"}))
    SingleImageOf(app, "Bin2URT", *image);
}

// The new file's name follows the file's until the user gave one.
void ProposeOutput(Form& form, CompressionForm& model, const Path& input, bool expand) {
  const bool follows =
      model.output.empty() || model.output == ProposeCompressionOutput(model.input, model.expand);
  model.input = input;
  model.expand = expand;
  if (follows) {
    model.output = ProposeCompressionOutput(input, expand);
    form.SetText(IDC_COMPRESSION_OUTPUT, Utf8FromPath(model.output));
  }
  form.Enable(IDC_COMPRESSION_LEVEL, !expand);
}

void CompressionCommand(Form& form, CompressionForm& model, int id, int code) {
  switch (id) {
    case IDC_COMPRESSION_COMPRESS:
    case IDC_COMPRESSION_EXPAND:
      return ProposeOutput(form, model, model.input, form.Checked(IDC_COMPRESSION_EXPAND));
    case IDC_COMPRESSION_FILE:
      if (code == EN_CHANGE) ProposeOutput(form, model, PathFromUtf8(form.Text(id)), model.expand);
      return;
    case IDC_COMPRESSION_OUTPUT:
      if (code == EN_CHANGE) model.output = PathFromUtf8(form.Text(id));
      return;
    case IDC_COMPRESSION_LEVEL:
      if (code == CBN_SELCHANGE) model.level = form.Choice(id);
      return;
    case IDC_COMPRESSION_BROWSE:
      if (const auto path = AskOpenFile(form.window, {"Open", kAllFilters})) {
        form.SetText(IDC_COMPRESSION_FILE, Utf8FromPath(*path));
      }
      return;
    case IDC_COMPRESSION_OUTPUT_BROWSE:
      if (const auto path = AskSaveFile(form.window, {"Save", kAllFilters}, model.output)) {
        model.agreed = *path;  // the system's dialog has asked
        form.SetText(IDC_COMPRESSION_OUTPUT, Utf8FromPath(*path));
      }
      return;
    default:
      return;
  }
}

void Compression(Application& app) {
  CompressionForm model;
  FormActions actions;
  actions.open = [&model](Form& form) {
    form.Check(model.expand ? IDC_COMPRESSION_EXPAND : IDC_COMPRESSION_COMPRESS, true);
    form.Fill(IDC_COMPRESSION_LEVEL, {kCompressionLevels.begin(), kCompressionLevels.end()}, model.level);
    const Path output = model.output;
    form.SetText(IDC_COMPRESSION_FILE, Utf8FromPath(model.input));
    form.SetText(IDC_COMPRESSION_OUTPUT, Utf8FromPath(output));
    form.Enable(IDC_COMPRESSION_LEVEL, !model.expand);
  };
  actions.accept = [&model](Form& form) {
    const auto refusal = CheckCompression(model);
    if (!refusal) {
      if (MayWriteCompressed(form.app.context.messages, model)) return true;
      form.Focus(IDC_COMPRESSION_OUTPUT);
      return false;
    }
    form.Refuse(*refusal,
                refusal->field == CompressionField::kInput ? IDC_COMPRESSION_FILE : IDC_COMPRESSION_OUTPUT);
    return false;
  };
  actions.command = [&model](Form& form, int id, int code) { CompressionCommand(form, model, id, code); };
  while (RunForm(app, IDD_COMPRESSION, actions)) {
    const auto sizes = [&] {
      const WaitPointer wait;
      return RunCompression(app.context, model);
    }();
    if (!sizes) continue;
    Tell(app.context.messages, Icon::kInformation, "\"%s\" is ready: %llu bytes, before %llu bytes.",
         Utf8FromPath(model.output).c_str(), static_cast<unsigned long long>(sizes->after),
         static_cast<unsigned long long>(sizes->before));
    return;
  }
}

constexpr CommandRow kRows[] = {{kCmdSingleImage, SingleImage},
                                {kCmdMultipleImage, MultipleImage},
                                {kCmdBin2Urt, Bin2Urt},
                                {kCmdCompression, Compression}};

}  // namespace

std::span<const CommandRow> ImageCommands() {
  return kRows;
}

}  // namespace vexa
