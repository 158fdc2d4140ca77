#include "ui/form.h"

namespace vexa {

namespace {

struct OpenForm {
  Application& app;
  FormActions actions;
};

void Command(OpenForm& open, HWND dialog, int id, int code) {
  Form form{open.app, dialog};
  if (id == IDCANCEL) return form.End(false);
  if (id == IDOK) {
    if (!open.actions.accept || open.actions.accept(form)) form.End(true);
    return;
  }
  if (open.actions.command) open.actions.command(form, id, code);
}

INT_PTR CALLBACK FormProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(dialog, DWLP_USER, lparam);
    OpenForm& open = *reinterpret_cast<OpenForm*>(lparam);
    Form form{open.app, dialog};
    if (open.actions.open) open.actions.open(form);
    return TRUE;
  }
  OpenForm* open = reinterpret_cast<OpenForm*>(GetWindowLongPtrW(dialog, DWLP_USER));
  if (!open) return FALSE;
  Form form{open->app, dialog};
  switch (message) {
    case WM_COMMAND:
      Command(*open, dialog, LOWORD(wparam), HIWORD(wparam));
      return TRUE;
    case WM_NOTIFY:
      if (!open->actions.notify) return FALSE;
      SetWindowLongPtrW(dialog, DWLP_MSGRESULT,
                        open->actions.notify(form, *reinterpret_cast<NMHDR*>(lparam)));
      return TRUE;
    case WM_DRAWITEM:
      if (!open->actions.draw) return FALSE;
      open->actions.draw(form, *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_SIZE:
      if (open->actions.size) open->actions.size(form, LOWORD(lparam), HIWORD(lparam));
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace

void Form::Check(int id, bool checked) const {
  CheckDlgButton(window, id, checked ? BST_CHECKED : BST_UNCHECKED);
}

void Form::Enable(int id, bool enabled) const {
  EnableWindow(Control(id), enabled);
}

void Form::Focus(int id) const {
  SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(id)), TRUE);
  SendDlgItemMessageW(window, id, EM_SETSEL, 0, -1);
}

void Form::Fill(int id, const std::vector<std::string>& entries, int choice) const {
  SendDlgItemMessageW(window, id, CB_RESETCONTENT, 0, 0);
  for (const std::string& entry : entries) {
    SendDlgItemMessageW(window, id, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(entry).c_str()));
  }
  SendDlgItemMessageW(window, id, CB_SETCURSEL, static_cast<WPARAM>(choice), 0);
}

int Form::Choice(int id) const {
  return static_cast<int>(SendDlgItemMessageW(window, id, CB_GETCURSEL, 0, 0));
}

void Form::Limit(int id, int characters) const {
  SendDlgItemMessageW(window, id, EM_SETLIMITTEXT, static_cast<WPARAM>(characters), 0);
}

void Form::Refuse(const Refusal& refusal, int id) const {
  if (!refusal.text.empty()) app.context.messages.tell(refusal.icon, refusal.text, "");
  Focus(id);
}

void Form::End(bool accepted) const {
  EndDialog(window, accepted ? IDOK : IDCANCEL);
}

bool RunForm(Application& app, int id, FormActions actions) {
  OpenForm open{app, std::move(actions)};
  return DialogBoxParamW(app.instance, MAKEINTRESOURCEW(id), OwnerWindow(app), FormProcedure,
                         reinterpret_cast<LPARAM>(&open)) == IDOK;
}

}  // namespace vexa
