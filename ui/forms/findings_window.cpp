// What a look over the database found, in a window beside the frame.
#include <algorithm>

#include "core/check.h"
#include "core/messages.h"
#include "ui/controls/guard.h"
#include "ui/controls/help.h"
#include "ui/controls/resource.h"
#include "ui/controls/virtual_list.h"
#include "ui/forms/options.h"
#include "ui/forms/options_resource.h"

namespace vexa {

namespace {

struct FindingsWindow {
  Application& app;
  HWND editor;  // the window that was looked over
  std::vector<Finding> findings;
  std::wstring cell;  // text handed to the list control
  Anchors anchors;
};

void Look(HWND dialog, FindingsWindow& window) {
  const EditorWindow* editor = EditorOf(window.editor);
  if (!editor) return;
  const WaitPointer wait;
  HWND list = GetDlgItem(dialog, IDC_FINDINGS_LIST);
  ListView_SetItemCountEx(list, 0, 0);
  window.findings = FindFaults(editor->document);
  ListView_SetItemCountEx(list, static_cast<int>(window.findings.size()), 0);
  InvalidateRect(list, nullptr, TRUE);
  SetText(dialog, "Check Database - " + WindowText(editor->window));
  SetText(GetDlgItem(dialog, IDC_FINDINGS_COUNT),
          window.findings.empty() ? "Nothing is wrong."
                                  : Format("Findings: %d", static_cast<int>(window.findings.size())));
}

// The record may have gone since, or its whole window.
void GoTo(HWND dialog, FindingsWindow& window, bool focus) {
  const int row = ListView_GetNextItem(GetDlgItem(dialog, IDC_FINDINGS_LIST), -1, LVNI_SELECTED);
  if (row < 0 || static_cast<size_t>(row) >= window.findings.size()) return;
  EditorWindow* editor = EditorOf(window.editor);
  if (!editor) {
    DestroyWindow(dialog);
    return;
  }
  SendMessageW(window.app.client, WM_MDIACTIVATE, reinterpret_cast<WPARAM>(editor->window), 0);
  ShowRecord(*editor, PathOf(editor->document, window.findings[static_cast<size_t>(row)].place), focus);
}

void Open(HWND dialog, FindingsWindow& window) {
  SendMessageW(dialog, WM_SETICON, ICON_SMALL,
               reinterpret_cast<LPARAM>(LoadIconW(window.app.instance, MAKEINTRESOURCEW(IDI_VEXA))));
  HWND list = GetDlgItem(dialog, IDC_FINDINGS_LIST);
  LVCOLUMNW column{};
  column.mask = LVCF_WIDTH;
  SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
  SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  FitLastColumn(list);
  std::vector<Anchor> anchors = ListAnchors(IDC_FINDINGS_LIST);
  for (const int id : {IDC_FINDINGS_AGAIN, IDHELP}) anchors.push_back({id, kWhole, kWhole, kWhole, kWhole});
  window.anchors = TakeAnchors(dialog, anchors);
  Look(dialog, window);
}

void Notify(HWND dialog, FindingsWindow& window, const NMHDR& header, LPARAM lparam) {
  if (header.idFrom != IDC_FINDINGS_LIST) return;
  if (header.code == LVN_GETDISPINFOW) {
    auto& asked = *reinterpret_cast<NMLVDISPINFOW*>(lparam);
    const auto row = static_cast<size_t>(asked.item.iItem);
    if (!(asked.item.mask & LVIF_TEXT) || row >= window.findings.size()) return;
    window.cell = Wide(window.findings[row].line());
    asked.item.pszText = window.cell.data();
  } else if (header.code == LVN_ITEMCHANGED) {
    const auto& change = *reinterpret_cast<const NMLISTVIEW*>(lparam);
    if (change.uNewState & ~change.uOldState & LVIS_SELECTED) GoTo(dialog, window, false);
  } else if (header.code == NM_DBLCLK) {
    GoTo(dialog, window, true);
  }
}

INT_PTR FindingsMessage(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(dialog, DWLP_USER, lparam);
    Open(dialog, *reinterpret_cast<FindingsWindow*>(lparam));
    return TRUE;
  }
  auto* window = reinterpret_cast<FindingsWindow*>(GetWindowLongPtrW(dialog, DWLP_USER));
  if (!window) return FALSE;
  switch (message) {
    case WM_COMMAND:
      if (LOWORD(wparam) == IDOK) GoTo(dialog, *window, true);
      if (LOWORD(wparam) == IDC_FINDINGS_AGAIN) Look(dialog, *window);
      if (LOWORD(wparam) == IDHELP) ShowHelp(window->app, HelpPage(IDD_FINDINGS));
      if (LOWORD(wparam) == IDCANCEL) DestroyWindow(dialog);
      return TRUE;
    case WM_HELP:
      ShowHelp(window->app, HelpPage(IDD_FINDINGS));
      return TRUE;
    case WM_NOTIFY:
      Notify(dialog, *window, *reinterpret_cast<const NMHDR*>(lparam), lparam);
      return TRUE;
    case WM_SIZE:
      FollowSize(window->anchors);
      FitLastColumn(GetDlgItem(dialog, IDC_FINDINGS_LIST));
      return TRUE;
    case WM_GETMINMAXINFO:
      LimitSize(window->anchors, *reinterpret_cast<MINMAXINFO*>(lparam));
      return TRUE;
    case WM_NCDESTROY:
      SetWindowLongPtrW(dialog, DWLP_USER, 0);
      window->app.findings = nullptr;
      delete window;
      return TRUE;
    default:
      return FALSE;
  }
}

INT_PTR CALLBACK FindingsProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) noexcept {
  return Guarded(INT_PTR{TRUE}, [&] { return FindingsMessage(dialog, message, wparam, lparam); });
}

}  // namespace

void ShowFindings(EditorWindow& editor) {
  Application& app = *editor.app;
  if (app.findings) DestroyWindow(app.findings);
  auto* window = new FindingsWindow{app, editor.window, {}, {}, {}};
  app.findings = CreateDialogParamW(app.instance, MAKEINTRESOURCEW(IDD_FINDINGS), app.frame,
                                    FindingsProcedure, reinterpret_cast<LPARAM>(window));
  if (!app.findings) {
    TellNoWindow(app, "Check Database");
    delete window;
    return;
  }
  // In the corner of the frame that shows least.
  RECT frame{}, own{};
  GetWindowRect(app.frame, &frame);
  GetWindowRect(app.findings, &own);
  const int gap = Scaled(app.frame, 40);
  SetWindowPos(app.findings, nullptr, std::max(0L, frame.right - (own.right - own.left) - gap),
               std::max(0L, frame.bottom - (own.bottom - own.top) - 3 * gap), 0, 0,
               SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW);
}

}  // namespace vexa
