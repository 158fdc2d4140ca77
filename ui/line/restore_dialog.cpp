// The dialog "Restore".
#include "ui/controls/file_dialogs.h"
#include "ui/controls/virtual_list.h"
#include "ui/line/line_dialogs.h"
#include "ui/line/transfer_resource.h"
#include "view/copy_list.h"
#include "view/upload_steps.h"

namespace vexa {

namespace {

struct RestoreDialog {
  CopyList copies;
  VirtualList list;
};

void ShowCopies(const Form& form, RestoreDialog& dialog) {
  form.SetText(IDC_RESTORE_COUNT, CopyCountText(dialog.copies));
  const size_t count = dialog.copies.copies.size();
  ShowRows(form, dialog.list, count, count > 0 ? std::optional<size_t>(0) : std::nullopt);
}

void OpenRestore(const Form& form, RestoreDialog& dialog) {
  const int widths[] = {74, 62, 110, 66, 60, 60, 62, 0};
  std::vector<VirtualColumn> columns;
  for (size_t i = 0; i < kCopyColumns.size(); ++i) columns.push_back({kCopyColumns[i], widths[i]});
  SetUpList(form, dialog.list, columns, nullptr);
  const TransferSettings settings = LoadTransferSettings(form.app.settings);
  form.Check(IDC_RESTORE_VERIFY, settings.verify);
  form.Check(IDC_RESTORE_COPY, settings.keep_copy);
  ShowCopies(form, dialog);
  if (!dialog.copies.copies.empty()) form.Focus(IDC_RESTORE_LIST);
}

void KeepChoices(const Form& form) {
  TransferSettings settings = LoadTransferSettings(form.app.settings);
  settings.verify = form.Checked(IDC_RESTORE_VERIFY);
  settings.keep_copy = form.Checked(IDC_RESTORE_COPY);
  SaveTransferSettings(form.app.settings, settings);
}

}  // namespace

Path CopyFolder(const Application& app) {
  return CopyFolderIn(LoadTransferSettings(app.settings), DocumentsFolder());
}

std::optional<std::string> ChooseCopy(Application& app, CopyToSend& back) {
  RestoreDialog dialog{OpenCopyList(app.context, app.config, CopyFolder(app)), {}};
  dialog.list.id = IDC_RESTORE_LIST;
  dialog.list.text = [&](size_t row, int column) {
    return CopyCell(dialog.copies, row, static_cast<size_t>(column));
  };
  FormActions actions;
  actions.anchors = ListAnchors(IDC_RESTORE_LIST);
  actions.anchors.push_back({IDC_RESTORE_FOLDER, kWhole, 0, kWhole, 0});
  actions.anchors.push_back({IDC_RESTORE_COUNT, 0, 0, kWhole, 0});
  actions.open = [&](Form& form) { OpenRestore(form, dialog); };
  actions.resized = [&](Form& form) { FitLastColumn(form.Control(IDC_RESTORE_LIST)); };
  actions.notify = [&](Form& form, NMHDR& header) -> LRESULT {
    const bool row = header.idFrom == IDC_RESTORE_LIST && header.code == NM_DBLCLK &&
                     reinterpret_cast<NMITEMACTIVATE&>(header).iItem >= 0;
    if (row && dialog.list.highlighted) PostMessageW(form.window, WM_COMMAND, IDOK, 0);
    return ListNotification(form, dialog.list, header).value_or(0);
  };
  actions.command = [&](Form& form, int id, int) {
    if (id == IDC_RESTORE_VERIFY || id == IDC_RESTORE_COPY) KeepChoices(form);
    if (id != IDC_RESTORE_FOLDER) return;
    const auto folder = AskFolder(form.window, "Choose the folder of the copies.", dialog.copies.folder);
    if (!folder) return;
    dialog.copies = OpenCopyList(app.context, app.config, *folder);
    ShowCopies(form, dialog);
  };
  std::optional<std::string> chosen;
  actions.accept = [&](Form& form) {
    const WaitPointer wait;
    if (const auto refusal = TakeCopy(dialog.copies, dialog.list.highlighted, back)) {
      RedrawRows(form, dialog.list);
      form.Refuse(*refusal, IDC_RESTORE_LIST);
      return false;
    }
    chosen = dialog.copies.copies[*dialog.list.highlighted].name;
    return true;
  };
  return RunForm(app, IDD_RESTORE, actions) ? chosen : std::nullopt;
}

}  // namespace vexa
