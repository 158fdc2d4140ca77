// A dialog as a form over a portable model: the procedure moves text between controls and model, nothing
// else.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/messages.h"
#include "ui/controls/application.h"
#include "view/record_forms.h"
#include "view/refusal.h"

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
  uint32_t Code(int id) const;  // the choice as a record's code: kNoCode for none
  void Limit(int id, int characters) const;
  // Shows the refusal's text (nothing when it is empty) over this dialog and focuses the control `id`.
  void Refuse(const Refusal& refusal, int id) const;
  void End(bool accepted) const;
};

// How a control of a resizable dialog follows its size: each edge moves by so many percent of what the dialog
// has grown since it opened.
struct Anchor {
  int id;
  int left, top, right, bottom;
};
inline constexpr int kWhole = 100, kHalf = 50;
// The one list of a dialog, which takes all that the dialog grows, and OK and Cancel in the lower right
// corner.
std::vector<Anchor> ListAnchors(int list);

// Where the controls of a dialog stand in the size it opened with, which is also its smallest.
struct Anchors {
  HWND dialog = nullptr;
  struct Control {
    HWND window;
    Anchor anchor;
    RECT place;
  };
  std::vector<Control> controls;
  SIZE client{}, window{};
};
// Controls that are not named keep their place beside what grows: below it they go down with the lower edge,
// right beside it with the right edge. Without any named control the dialog keeps its layout.
Anchors TakeAnchors(HWND dialog, const std::vector<Anchor>& named);
void FollowSize(const Anchors& anchors);                     // WM_SIZE
void LimitSize(const Anchors& anchors, MINMAXINFO& limits);  // WM_GETMINMAXINFO

struct FormActions {
  std::function<void(Form&)> open;  // fills the controls
  // OK was pressed; true ends the dialog as accepted.
  std::function<bool(Form&)> accept;
  // Cancel was pressed; false keeps the dialog. Empty: it ends.
  std::function<bool(Form&)> may_cancel;
  // Called several times a second.
  std::function<void(Form&)> tick;
  // Any other WM_COMMAND of a control (id, notification code).
  std::function<void(Form&, int id, int code)> command;
  // WM_NOTIFY; what it returns becomes the message's result.
  std::function<LRESULT(Form&, NMHDR&)> notify;
  // WM_DRAWITEM of a control that its owner draws.
  std::function<void(Form&, const DRAWITEMSTRUCT&)> draw;
  std::vector<Anchor> anchors;         // of a resizable dialog
  std::function<void(Form&)> resized;  // the anchored controls have followed
};

// What the codes 0 to `count` - 1 of a field are called, for a combo box.
std::vector<std::string> NamesOfCodes(std::string (*name)(uint32_t), uint32_t count);

// Runs the modal dialog of the resource `id`; true when it ended accepted. F1 and the button IDHELP show its
// page of the help.
bool RunForm(Application& app, int id, FormActions actions);

}  // namespace vexa
