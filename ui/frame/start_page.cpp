#include "ui/frame/start_page.h"

#include "ui/controls/guard.h"
#include "ui/frame/menus.h"
#include "ui/frame/start_resource.h"
#include "view/start_page.h"

namespace vexa {

namespace {

void Press(Application& app, HWND page, int id) {
  const std::vector<StartEntry> entries = StartEntries(app.recent);
  const auto place = static_cast<size_t>(id - IDC_START_FIRST);
  if (id < IDC_START_FIRST || place >= entries.size() || app.busy != 0) return;
  const StartEntry& entry = entries[place];
  if (entry.command != kNoCommand) {
    SendMessageW(app.frame, WM_COMMAND, entry.command, 0);
    return;
  }
  RECT button{};
  GetWindowRect(GetDlgItem(page, id), &button);
  ShowPopupMenu(app, entry.menu, {button.left, button.bottom}, TPM_LEFTALIGN | TPM_TOPALIGN);
}

INT_PTR StartMessage(HWND page, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) SetWindowLongPtrW(page, DWLP_USER, lparam);
  auto* app = reinterpret_cast<Application*>(GetWindowLongPtrW(page, DWLP_USER));
  if (app && message == WM_COMMAND && HIWORD(wparam) == BN_CLICKED) Press(*app, page, LOWORD(wparam));
  return FALSE;  // the focus stays where it is
}

INT_PTR CALLBACK StartProcedure(HWND page, UINT message, WPARAM wparam, LPARAM lparam) noexcept {
  return Guarded(INT_PTR{FALSE}, [&] { return StartMessage(page, message, wparam, lparam); });
}

void Fill(const Application& app) {
  const std::vector<StartEntry> entries = StartEntries(app.recent);
  SetText(GetDlgItem(app.start_page, IDC_START_HINT), kStartHint);
  for (size_t i = 0; i < kStartEntries; ++i) {
    HWND button = GetDlgItem(app.start_page, IDC_START_FIRST + static_cast<int>(i));
    if (i < entries.size() && WindowText(button) != entries[i].text) SetText(button, entries[i].text);
    ShowWindow(button, i < entries.size() ? SW_SHOWNA : SW_HIDE);
  }
}

}  // namespace

void ShowStartPage(Application& app) {
  if (!app.client) return;
  if (GetWindow(app.client, GW_CHILD)) {
    if (app.start_page) ShowWindow(app.start_page, SW_HIDE);
    return;
  }
  if (!app.start_page)
    app.start_page = CreateDialogParamW(app.instance, MAKEINTRESOURCEW(IDD_START), app.frame, StartProcedure,
                                        reinterpret_cast<LPARAM>(&app));
  if (!app.start_page) return;
  Fill(app);
  RECT area{};
  GetWindowRect(app.client, &area);
  MapWindowPoints(nullptr, app.frame, reinterpret_cast<POINT*>(&area), 2);
  SetWindowPos(app.start_page, HWND_TOP, area.left, area.top, area.right - area.left, area.bottom - area.top,
               SWP_NOACTIVATE | SWP_SHOWWINDOW);
  HWND focus = GetFocus();
  if (focus == app.frame || focus == app.client) FocusStartPage(app);
}

void ShowStartPageLater(const Application& app) {
  PostMessageW(app.frame, kShowStartPage, 0, 0);
}

void RenewStartPage(Application& app) {
  if (app.start_page) DestroyWindow(app.start_page);
  app.start_page = nullptr;
  ShowStartPage(app);
}

bool FocusStartPage(const Application& app) {
  if (!app.start_page || !IsWindowVisible(app.start_page)) return false;
  SendMessageW(app.start_page, WM_NEXTDLGCTL,
               reinterpret_cast<WPARAM>(GetDlgItem(app.start_page, IDC_START_FIRST)), TRUE);
  return true;
}

bool TranslateStartKey(const Application& app, MSG& message) {
  return app.start_page && IsWindowVisible(app.start_page) && IsDialogMessageW(app.start_page, &message) != 0;
}

}  // namespace vexa
