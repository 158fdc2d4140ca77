#include "ui/controls/form.h"

#include <algorithm>

#include "ui/controls/guard.h"
#include "ui/controls/help.h"

namespace vexa {

namespace {

constexpr UINT_PTR kFormTimer = 1;
constexpr UINT kTick = 150;  // ms

struct OpenForm {
  Application& app;
  int id;  // of the dialog
  FormActions actions;
  bool may_shrink = false;  // a smaller font can be tried
  Anchors anchors{};
};

constexpr INT_PTR kTooLarge = 10000;  // how a dialog ends that its screen does not hold
constexpr WORD kSmallestFont = 5;     // points

bool IsTooLarge(HWND dialog) {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  RECT own{};
  if (!GetMonitorInfoW(MonitorFromWindow(dialog, MONITOR_DEFAULTTONEAREST), &monitor) ||
      !GetWindowRect(dialog, &own))
    return false;
  const RECT& room = monitor.rcWork;
  return own.bottom - own.top > room.bottom - room.top || own.right - own.left > room.right - room.left;
}

// A copy of the dialog's resource.
std::vector<WORD> DialogTemplate(const Application& app, int id) {
  HRSRC found = FindResourceW(app.instance, MAKEINTRESOURCEW(id), reinterpret_cast<LPCWSTR>(RT_DIALOG));
  HGLOBAL loaded = found ? LoadResource(app.instance, found) : nullptr;
  const auto* words = static_cast<const WORD*>(loaded ? LockResource(loaded) : nullptr);
  if (!words) return {};
  return {words, words + SizeofResource(app.instance, found) / sizeof(WORD)};
}

// Where the points of its font stand in the template of a DIALOGEX: behind the 13 words of its head, its menu
// and class, each a number, a text or nothing, and its title.
// https://learn.microsoft.com/windows/win32/dlgbox/dlgtemplateex
WORD* FontPoints(std::vector<WORD>& dialog) {
  size_t at = 13;
  for (int part = 0; part < 3 && at < dialog.size(); ++part) {
    if (dialog[at] == 0xFFFF) {
      at += 2;
      continue;
    }
    while (at < dialog.size() && dialog[at] != 0) ++at;
    ++at;
  }
  return at < dialog.size() ? &dialog[at] : nullptr;
}

RECT PlaceOf(HWND dialog, HWND control) {
  RECT place{};
  GetWindowRect(control, &place);
  MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
  return place;
}

// The anchor of a control that is not named.
Anchor AnchorBeside(const std::vector<Anchors::Control>& named, const RECT& place) {
  Anchor anchor{0, 0, 0, 0, 0};
  for (const Anchors::Control& other : named) {
    if (other.anchor.bottom > other.anchor.top && place.top >= other.place.bottom)
      anchor.top = anchor.bottom = std::max(anchor.top, other.anchor.bottom);
    const bool beside = place.top < other.place.bottom && place.bottom > other.place.top;
    if (other.anchor.right > other.anchor.left && beside && place.left >= other.place.right)
      anchor.left = anchor.right = std::max(anchor.left, other.anchor.right);
  }
  return anchor;
}

void Command(OpenForm& open, HWND dialog, int id, int code) {
  Form form{open.app, dialog};
  if (id == IDCANCEL) {
    if (!open.actions.may_cancel || open.actions.may_cancel(form)) form.End(false);
    return;
  }
  if (id == IDOK) {
    if (!open.actions.accept || open.actions.accept(form)) form.End(true);
    return;
  }
  if (id == IDHELP) return ShowHelp(open.app, HelpPage(open.id));
  if (open.actions.command) open.actions.command(form, id, code);
}

INT_PTR FormMessage(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    OpenForm& open = *reinterpret_cast<OpenForm*>(lparam);
    if (open.may_shrink && IsTooLarge(dialog)) {
      EndDialog(dialog, kTooLarge);
      return TRUE;
    }
    SetWindowLongPtrW(dialog, DWLP_USER, lparam);
    Form form{open.app, dialog};
    if (open.actions.open) open.actions.open(form);
    open.anchors = TakeAnchors(dialog, open.actions.anchors);
    if (open.actions.tick) SetTimer(dialog, kFormTimer, kTick, nullptr);
    // A focus that the form has set stays, and with it the default button.
    return !IsChild(dialog, GetFocus());
  }
  OpenForm* open = reinterpret_cast<OpenForm*>(GetWindowLongPtrW(dialog, DWLP_USER));
  if (!open) return FALSE;
  Form form{open->app, dialog};
  switch (message) {
    case WM_COMMAND:
      Command(*open, dialog, LOWORD(wparam), HIWORD(wparam));
      return TRUE;
    case WM_HELP:
      ShowHelp(open->app, HelpPage(open->id));
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
    case WM_TIMER:
      if (open->actions.tick) open->actions.tick(form);
      return TRUE;
    case WM_SIZE:
      FollowSize(open->anchors);
      if (open->actions.resized) open->actions.resized(form);
      return TRUE;
    case WM_GETMINMAXINFO:
      LimitSize(open->anchors, *reinterpret_cast<MINMAXINFO*>(lparam));
      return TRUE;
    default:
      return FALSE;
  }
}

// A form that could not be filled is none.
INT_PTR CALLBACK FormProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) noexcept {
  constexpr INT_PTR kNoMemory = -1;
  const INT_PTR result = Guarded(kNoMemory, [&] { return FormMessage(dialog, message, wparam, lparam); });
  if (result == kNoMemory && message == WM_INITDIALOG) EndDialog(dialog, IDCANCEL);
  return result == kNoMemory ? TRUE : result;
}

}  // namespace

std::vector<Anchor> ListAnchors(int list) {
  return {{list, 0, 0, kWhole, kWhole},
          {IDOK, kWhole, kWhole, kWhole, kWhole},
          {IDCANCEL, kWhole, kWhole, kWhole, kWhole}};
}

Anchors TakeAnchors(HWND dialog, const std::vector<Anchor>& named) {
  Anchors anchors{dialog, {}, {}, {}};
  for (const Anchor& anchor : named) {
    HWND control = GetDlgItem(dialog, anchor.id);
    if (control) anchors.controls.push_back({control, anchor, PlaceOf(dialog, control)});
  }
  const std::vector<Anchors::Control> before = anchors.controls;
  for (HWND child = GetWindow(dialog, GW_CHILD); child && !before.empty();
       child = GetWindow(child, GW_HWNDNEXT)) {
    const RECT place = PlaceOf(dialog, child);
    if (std::none_of(before.begin(), before.end(), [&](const auto& each) { return each.window == child; }))
      anchors.controls.push_back({child, AnchorBeside(before, place), place});
  }
  RECT size{};
  GetClientRect(dialog, &size);
  anchors.client = {size.right, size.bottom};
  GetWindowRect(dialog, &size);
  anchors.window = {size.right - size.left, size.bottom - size.top};
  return anchors;
}

void FollowSize(const Anchors& anchors) {
  if (anchors.controls.empty()) return;
  RECT size{};
  GetClientRect(anchors.dialog, &size);
  const LONG wider = std::max(size.right - anchors.client.cx, 0L);
  const LONG higher = std::max(size.bottom - anchors.client.cy, 0L);
  HDWP moves = BeginDeferWindowPos(static_cast<int>(anchors.controls.size()));
  for (const Anchors::Control& control : anchors.controls) {
    if (!moves) break;
    RECT place = control.place;
    place.left += wider * control.anchor.left / kWhole;
    place.top += higher * control.anchor.top / kWhole;
    place.right += wider * control.anchor.right / kWhole;
    place.bottom += higher * control.anchor.bottom / kWhole;
    moves = DeferWindowPos(moves, control.window, nullptr, place.left, place.top, place.right - place.left,
                           place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
  }
  if (moves) EndDeferWindowPos(moves);
  InvalidateRect(anchors.dialog, nullptr, TRUE);
}

void LimitSize(const Anchors& anchors, MINMAXINFO& limits) {
  limits.ptMinTrackSize = {std::max(limits.ptMinTrackSize.x, anchors.window.cx),
                           std::max(limits.ptMinTrackSize.y, anchors.window.cy)};
}

void Form::Check(int id, bool checked) const {
  CheckDlgButton(window, id, checked ? BST_CHECKED : BST_UNCHECKED);
}

namespace {

bool IsOfClass(HWND window, const wchar_t* name) {
  wchar_t own[32] = L"";
  return window && GetClassNameW(window, own, 32) && _wcsicmp(own, name) == 0;
}

}  // namespace

void Form::Enable(int id, bool enabled) const {
  HWND control = Control(id);
  EnableWindow(control, enabled);
  // The title of a list or field stands before it.
  const bool titled = IsOfClass(control, L"ComboBox") || IsOfClass(control, L"Edit");
  HWND title = titled ? GetWindow(control, GW_HWNDPREV) : nullptr;
  if (IsOfClass(title, L"Static")) EnableWindow(title, enabled);
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

uint32_t Form::Code(int id) const {
  const int choice = Choice(id);
  return choice < 0 ? kNoCode : static_cast<uint32_t>(choice);
}

void Form::Limit(int id, int characters) const {
  SendDlgItemMessageW(window, id, EM_SETLIMITTEXT, static_cast<WPARAM>(characters), 0);
}

void Form::Refuse(const Refusal& refusal, int id) const {
  if (!refusal.text.empty()) app.context.messages.tell({refusal.icon, refusal.text, "", refusal.detail});
  Focus(id);
}

void Form::End(bool accepted) const {
  EndDialog(window, accepted ? IDOK : IDCANCEL);
}

std::vector<std::string> NamesOfCodes(std::string (*name)(uint32_t), uint32_t count) {
  std::vector<std::string> names;
  for (uint32_t i = 0; i < count; ++i) names.push_back(name(i));
  return names;
}

bool RunForm(Application& app, int id, FormActions actions) {
  OpenForm open{app, id, std::move(actions)};
  std::vector<WORD> dialog = DialogTemplate(app, id);
  WORD* points = FontPoints(dialog);
  INT_PTR end = dialog.empty() ? -1 : kTooLarge;
  while (end == kTooLarge) {
    open.may_shrink = points && *points > kSmallestFont;
    end = DialogBoxIndirectParamW(app.instance, reinterpret_cast<DLGTEMPLATE*>(dialog.data()),
                                  OwnerWindow(app), FormProcedure, reinterpret_cast<LPARAM>(&open));
    if (end == kTooLarge) --*points;
  }
  if (end == -1) TellNoWindow(app, "Dialog");
  return end == IDOK;
}

}  // namespace vexa
