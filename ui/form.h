// A dialog as a form over a portable model: the procedure moves text between controls and model, nothing
// else.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/messages.h"
#include "ui/application.h"

namespace vexa {

struct Form {
  Application& app;
  HWND window;

  HWND Control(int id) const { return GetDlgItem(window, id); }
  std::string Text(int id) const { return WindowText(Control(id)); }
  void SetText(int id, const std::string& utf8) const { vexa::SetText(Control(id), utf8); }
  bool Checked(int id) const { return IsDlgButtonChecked(window, id) == BST_CHECKED; }
  void Check(int id, bool checked) const;
  void Enable(int id, bool enabled) const;
  // Focus with the whole text selected.
  void Focus(int id) const;
  // Combo boxes: entries in UTF-8; a choice of -1 is none.
  void Fill(int id, const std::vector<std::string>& entries, int choice) const;
  int Choice(int id) const;
  void Limit(int id, int characters) const;
  // Shows the refusal's text (nothing when it is empty) over this dialog and focuses the control `id`.
  void Refuse(const Refusal& refusal, int id) const;
  void End(bool accepted) const;
};

struct FormActions {
  std::function<void(Form&)> open;  // fills the controls
  // OK was pressed; true ends the dialog as accepted.
  std::function<bool(Form&)> accept;
  // Any other WM_COMMAND of a control (id, notification code).
  std::function<void(Form&, int id, int code)> command;
  // WM_NOTIFY; what it returns becomes the message's result.
  std::function<LRESULT(Form&, NMHDR&)> notify;
  // WM_DRAWITEM of a control that its owner draws.
  std::function<void(Form&, const DRAWITEMSTRUCT&)> draw;
  // The client area has a new size (resizable dialogs).
  std::function<void(Form&, int width, int height)> size;
};

// Runs the modal dialog of the resource `id`; true when it ended accepted.
bool RunForm(Application& app, int id, FormActions actions);

}  // namespace vexa
