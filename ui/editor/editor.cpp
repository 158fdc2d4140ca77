#include "ui/editor/editor.h"

#include <algorithm>
#include <iterator>

#include "core/messages.h"
#include "ui/controls/child_window.h"
#include "ui/controls/filter_field.h"
#include "ui/controls/guard.h"
#include "ui/controls/resource.h"
#include "ui/editor/editor_parts.h"
#include "ui/editor/picture_pane.h"
#include "view/command_table.h"

namespace vexa {

namespace {

constexpr int kSplitterWidth = 5;
constexpr int kFilterHeight = 22, kFilterWidth = 300, kFilterLabelWidth = 48;
constexpr int kButtonWidth = 84, kButtonHeight = 23, kGap = 6, kLabelHeight = 18, kLabelTab = 64;
constexpr int kLeastPicture = 100, kStandardPicture = 280, kMostPicture = 2000;  // heights

enum ControlId : int {
  kTreeId = 100,
  kListId,
  kInformationId,
  kFirstViewId,  // four of them
  kFirstLabelId = kFirstViewId + 4,
  kBarId = kFirstLabelId + 5,
  kPictureId,
  kFilterLabelId,
  kFilterId,
  kFilterStatusId,
};

constexpr UINT kFilterTime = 250;     // milliseconds after a key
constexpr size_t kManyRows = 10'000;  // from here on a filter waits for the end of typing

// Texts of the view buttons.
constexpr const wchar_t* kViewTexts[] = {L"Ser&vice", L"&Carrier", L"TV / R&adio", L"&Radio"};
static_assert(std::size(kViewTexts) == std::size(kViewCommands));

constexpr const wchar_t* kListTip =
    L"Right click to get the options menu or \n Drag & Drop a item to change that item's location";
constexpr const wchar_t* kTreeTip =
    L"Right click to get the options menu or \n Under corresponding level press F2 to insert a new item";

HWND Control(EditorWindow& editor, const wchar_t* window_class, const wchar_t* text, DWORD style, int id,
             DWORD extended = 0) {
  return CreateWindowExW(extended, window_class, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0,
                         editor.window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                         editor.app->instance, nullptr);
}

// The message loop hands the mouse on: a tooltip that listened to the controls by itself would make every
// message to a tree of 65,535 nodes several times as slow.
void AddTip(EditorWindow& editor, HWND control, const wchar_t* text) {
  TTTOOLINFOW tool{};
  tool.cbSize = TTTOOLINFOW_V1_SIZE;
  tool.uFlags = TTF_IDISHWND;
  tool.hwnd = editor.window;
  tool.uId = reinterpret_cast<UINT_PTR>(control);
  tool.lpszText = const_cast<wchar_t*>(text);
  SendMessageW(editor.tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void ShowFontsAndPictures(EditorWindow& editor) {
  std::vector<HWND> children;
  for (HWND child = GetWindow(editor.window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    children.push_back(child);
  RenewFont(editor.font, editor.window, children);
  const auto pictures = reinterpret_cast<LPARAM>(editor.app->tree_pictures);
  SendMessageW(editor.tree, TVM_SETIMAGELIST, TVSIL_NORMAL, pictures);
  SendMessageW(editor.tree, TVM_SETITEMHEIGHT, static_cast<WPARAM>(-1), 0);
  SendMessageW(editor.list, LVM_SETIMAGELIST, LVSIL_SMALL, pictures);
}

std::wstring TipOf(CommandId id) {
  const CommandInfo* command = FindCommand(id);
  return Wide(command ? ToolTip(*command) : "");
}

std::string CaptionName(const EditorWindow& editor) {
  return editor.path.empty() ? editor.name : Utf8FromPath(editor.path);
}

bool CreateControls(EditorWindow& editor) {
  editor.tree = Control(editor, WC_TREEVIEWW, L"",
                        WS_TABSTOP | TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT | TVS_SHOWSELALWAYS,
                        kTreeId, WS_EX_CLIENTEDGE);
  editor.filter_field =
      Control(editor, L"EDIT", L"", WS_TABSTOP | ES_AUTOHSCROLL, kFilterId, WS_EX_CLIENTEDGE);
  editor.list = Control(editor, WC_LISTVIEWW, L"",
                        WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS | LVS_SHAREIMAGELISTS,
                        kListId, WS_EX_CLIENTEDGE);
  if (!editor.tree || !editor.list) {
    TellNoWindow(*editor.app, CaptionName(editor), LastSystemError(), "Can't Init the ListView Control");
    *editor.refusal_told = true;
    return false;
  }
  QuickenList(editor);
  // Pressed as long as the list shows what they stand for.
  const DWORD button = WS_TABSTOP | BS_CHECKBOX | BS_PUSHLIKE;
  editor.information = Control(editor, L"button", L"Information", button, kInformationId);
  for (size_t i = 0; i < editor.view_buttons.size(); ++i) {
    editor.view_buttons[i] =
        Control(editor, L"BUTTON", kViewTexts[i], button, kFirstViewId + static_cast<int>(i));
  }
  static constexpr const wchar_t* kLabels[] = {L"SDBIndex", L"LNB count", L"Satellite Count",
                                               L"Carrier count", L"Service count"};
  for (size_t i = 0; i < editor.labels.size(); ++i) {
    editor.labels[i] =
        Control(editor, L"STATIC", kLabels[i], SS_OWNERDRAW, kFirstLabelId + static_cast<int>(i));
  }
  editor.bar = Control(editor, L"STATIC", L"static bottom", SS_LEFT | SS_NOPREFIX | SS_SUNKEN, kBarId);
  editor.filter_label =
      Control(editor, L"STATIC", L"Filter:", SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE, kFilterLabelId);
  editor.filter_status = Control(editor, L"STATIC", L"",
                                 SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE | SS_ENDELLIPSIS, kFilterStatusId);
  SendMessageW(editor.list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0,
               LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES | LVS_EX_HEADERDRAGDROP | LVS_EX_DOUBLEBUFFER);
  SendMessageW(editor.tree, TVM_SETEXTENDEDSTYLE, TVS_EX_DOUBLEBUFFER, TVS_EX_DOUBLEBUFFER);
  editor.tips = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0, 0,
                                0, editor.window, nullptr, editor.app->instance, nullptr);
  SendMessageW(editor.tips, TTM_SETMAXTIPWIDTH, 0, 600);
  AddTip(editor, editor.list, kListTip);
  AddTip(editor, editor.tree, kTreeTip);
  AddTip(editor, editor.filter_field, TipOf(kCmdFilter).c_str());
  AddTip(editor, editor.information, TipOf(kCmdInformation).c_str());
  for (size_t i = 0; i < editor.view_buttons.size(); ++i)
    AddTip(editor, editor.view_buttons[i], TipOf(kViewCommands[i]).c_str());
  editor.picture_pane = CreatePicturePane(editor, kPictureId);
  ShowFontsAndPictures(editor);
  return true;
}

// In pixels; 0: it is not shown, also where a window is too low for both.
int PictureHeight(const EditorWindow& editor, int room) {
  const int wanted = Scaled(editor.window, editor.app->window.picture_height);
  const int least = Scaled(editor.window, kLeastPicture);
  if (wanted == 0 || !editor.picture_pane || room < 2 * least) return 0;
  return std::min(std::max(wanted, least), room - least);
}

// Tree at the left, list at the right, the buttons below the list, panel and bar along the bottom.
void LayOut(EditorWindow& editor) {
  if (!editor.bar) return;
  RECT area{};
  GetClientRect(editor.window, &area);
  const auto dots = [&](int length) { return Scaled(editor.window, length); };
  const int width = static_cast<int>(area.right), height = static_cast<int>(area.bottom);
  const int label = dots(kLabelHeight), gap = dots(kGap), button = dots(kButtonHeight);
  const int split = std::clamp(dots(editor.split), 0, std::max(0, width - dots(kSplitterWidth)));
  const int left = split + dots(kSplitterWidth);
  const int panel_top = std::max(0, height - 2 * label - gap);
  const int picture = PictureHeight(editor, panel_top);
  const int body = picture > 0 ? panel_top - gap - picture : panel_top;  // where tree and list end
  const int button_width = dots(kButtonWidth);
  // As many rows of buttons as the width asks for.
  const int count = static_cast<int>(editor.view_buttons.size()) + 1;
  const int in_row = std::clamp((width - left + gap) / (button_width + gap), 1, count);
  const int buttons_top = std::max(0, body - (count + in_row - 1) / in_row * (button + gap));
  // The filter's line above the list.
  const int line = std::max(0, std::min(dots(kFilterHeight), buttons_top - gap));
  const int field = std::max(0, std::min(dots(kFilterWidth), (width - left) / 2));
  const int field_left = left + dots(kFilterLabelWidth), status_left = field_left + field + gap;
  HDWP moves = BeginDeferWindowPos(18);
  const auto place = [&](HWND control, int x, int y, int w, int h) {
    if (moves)
      moves = DeferWindowPos(moves, control, nullptr, x, y, std::max(0, w), std::max(0, h),
                             SWP_NOZORDER | SWP_NOACTIVATE);
  };
  place(editor.tree, 0, 0, split, body - gap);
  ShowWindow(editor.picture_pane, picture > 0 ? SW_SHOWNA : SW_HIDE);
  if (picture > 0) place(editor.picture_pane, 0, body, width, picture);
  place(editor.filter_label, left + gap, 0, dots(kFilterLabelWidth) - gap, line);
  place(editor.filter_field, field_left, 0, field, line);
  place(editor.filter_status, status_left, 0, width - status_left, line);
  place(editor.list, left, line + gap / 2, width - left, buttons_top - gap - line - gap / 2);
  for (int i = 0; i < count; ++i) {
    place(i == 0 ? editor.information : editor.view_buttons[static_cast<size_t>(i) - 1],
          left + i % in_row * (button_width + gap), buttons_top + i / in_row * (button + gap), button_width,
          button);
  }
  const int label_width = width / 6;
  for (size_t i = 0; i < editor.labels.size(); ++i) {
    // The first label, with the name, is twice as wide as the others.
    const int x = i == 0 ? gap : label_width * (static_cast<int>(i) + 1);
    place(editor.labels[i], x, panel_top, i == 0 ? 2 * label_width - gap : label_width, label);
  }
  place(editor.bar, 0, height - label, width, label);
  if (moves) EndDeferWindowPos(moves);
}

// The same in a window of the same size, which the system does not draw anew by itself.
void LayOutAnew(EditorWindow& editor) {
  LayOut(editor);
  RedrawWindow(editor.window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

// What a drag from there moves: the edge of the tree, or that of the picture.
decltype(EditorWindow::splitting) SplitterAt(const EditorWindow& editor, POINT at) {
  RECT tree{};
  GetClientRect(editor.tree, &tree);
  const LONG reach = Scaled(editor.window, kSplitterWidth + 4);
  if (at.x >= tree.right && at.x <= tree.right + reach && at.y <= tree.bottom)
    return EditorWindow::kSplitTree;
  RECT picture{};
  GetWindowRect(editor.picture_pane, &picture);
  MapWindowPoints(nullptr, editor.window, reinterpret_cast<POINT*>(&picture), 2);
  const bool shown = (GetWindowLongW(editor.picture_pane, GWL_STYLE) & WS_VISIBLE) != 0;
  return shown && at.y < picture.top && at.y >= picture.top - reach ? EditorWindow::kSplitPicture
                                                                    : EditorWindow::kNotSplitting;
}

// The tab in a label's text stands before its number; the control's own tab stops may lie right behind the
// word.
void DrawLabel(const EditorWindow& editor, const DRAWITEMSTRUCT& item) {
  const std::wstring text = Wide(WindowText(item.hwndItem));
  FillRect(item.hDC, &item.rcItem, GetSysColorBrush(COLOR_BTNFACE));
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, GetSysColor(COLOR_BTNTEXT));
  HGDIOBJ old = SelectObject(item.hDC, editor.font);
  const int stop = Scaled(editor.window, kLabelTab);
  TabbedTextOutW(item.hDC, 0, 0, text.c_str(), static_cast<int>(text.size()), 1, &stop, 0);
  SelectObject(item.hDC, old);
}

void TrackSplitter(EditorWindow& editor, UINT message, LPARAM lparam) {
  if (message == WM_LBUTTONDOWN) {
    const auto splitter = SplitterAt(editor, {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)});
    if (splitter == EditorWindow::kNotSplitting) return;
    editor.splitting = splitter;
    SetCapture(editor.window);
  } else if (message == WM_CAPTURECHANGED) {
    editor.splitting = EditorWindow::kNotSplitting;
  } else if (message == WM_LBUTTONUP && editor.splitting != EditorWindow::kNotSplitting) {
    editor.app->window.split = editor.split;
    ReleaseCapture();
  } else if (message == WM_MOUSEMOVE && editor.splitting == EditorWindow::kSplitPicture) {
    RECT area{};
    GetClientRect(editor.window, &area);
    const int hundred = std::max(1, Scaled(editor.window, 100));
    const int panel = 2 * Scaled(editor.window, kLabelHeight) + 2 * Scaled(editor.window, kGap);
    const int picture = static_cast<int>(area.bottom) - panel - GET_Y_LPARAM(lparam);
    editor.app->window.picture_height = std::clamp(picture * 100 / hundred, kLeastPicture, kMostPicture);
    LayOutAnew(editor);
  } else if (message == WM_MOUSEMOVE && editor.splitting == EditorWindow::kSplitTree) {
    RECT area{};
    GetClientRect(editor.window, &area);
    const int hundred = std::max(1, Scaled(editor.window, 100));
    const int right = static_cast<int>(area.right) - hundred;
    editor.split = std::clamp(GET_X_LPARAM(lparam), hundred, std::max(hundred, right)) * 100 / hundred;
    LayOut(editor);
  }
}

bool SetSplitterCursor(const EditorWindow& editor) {
  POINT at{};
  GetCursorPos(&at);
  ScreenToClient(editor.window, &at);
  const auto splitter = SplitterAt(editor, at);
  if (splitter == EditorWindow::kNotSplitting) return false;
  SetCursor(LoadCursorW(nullptr, splitter == EditorWindow::kSplitTree ? IDC_SIZEWE : IDC_SIZENS));
  return true;
}

// The menus of a level hold what can be done with its list.
MenuName PopupFor(const EditorWindow& editor, HWND source) {
  NodeKind kind = editor.selected.kind;
  if (source == editor.list && editor.details) kind = editor.shown_record.kind;
  if (source == editor.list && !editor.rows.rows.empty()) kind = editor.rows.rows[0].kind;
  const bool in_list = source == editor.list && !editor.details;
  switch (kind) {
    case NodeKind::kSdb:
    case NodeKind::kUbiLevel:
      return MenuName::kSdb;
    case NodeKind::kLnbLevel:
      return MenuName::kLnbLevel;
    case NodeKind::kSatelliteLevel:
      return MenuName::kSatelliteLevel;
    case NodeKind::kSatellite:
      return in_list ? MenuName::kSatelliteLevel : MenuName::kRecord;
    case NodeKind::kCarrier:
      return in_list ? MenuName::kCarrierLevel : MenuName::kRecord;
    case NodeKind::kService:
      return MenuName::kService;
    default:
      return MenuName::kRecord;
  }
}

// Where the menu key puts the menu: at what is selected.
POINT SelectionPlace(const EditorWindow& editor, HWND source) {
  RECT place{};
  bool found = false;
  if (source == editor.tree) {
    HTREEITEM item = TreeView_GetSelection(editor.tree);
    found = item && TreeView_GetItemRect(editor.tree, item, &place, TRUE);
  } else if (source == editor.list) {
    const int row = ListView_GetNextItem(editor.list, -1, LVNI_SELECTED);
    found = row >= 0 && ListView_GetItemRect(editor.list, row, &place, LVIR_LABEL);
  }
  RECT area{};
  GetClientRect(source, &area);
  POINT at = {area.left + Scaled(source, 20), area.top + Scaled(source, 30)};
  if (found && place.bottom > area.top && place.bottom <= area.bottom) at = {place.left, place.bottom};
  ClientToScreen(source, &at);
  return at;
}

// A right click selects what it hits, then shows the menu of its kind at the cursor.
void ShowPopup(EditorWindow& editor, HWND source, LPARAM lparam) {
  POINT at = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
  if (source == editor.tree && lparam != -1) {
    TVHITTESTINFO hit{};
    hit.pt = at;
    ScreenToClient(editor.tree, &hit.pt);
    if (auto item = TreeView_HitTest(editor.tree, &hit)) TreeView_SelectItem(editor.tree, item);
  }
  if (source != editor.tree && source != editor.list) return;
  if (GetFocus() != source) SetFocus(source);
  if (lparam == -1) at = SelectionPlace(editor, source);
  if (editor.selected.kind == NodeKind::kNone || editor.app->busy != 0) return;
  editor.app->show_popup(PopupFor(editor, source), at, TPM_LEFTALIGN | TPM_RIGHTBUTTON);
}

void Activate(EditorWindow& editor, HWND active) {
  const bool own = active == editor.window;
  if (!own && active) return;  // another child puts its own bar
  editor.app->show_menu_bar(own ? MenuName::kEditor : MenuName::kFrame);
  editor.app->refresh_frame();
}

// What was typed into the filter's field counts at once, in long lists when the typing pauses.
void FilterTyped(EditorWindow& editor) {
  if (editor.unfiltered < kManyRows)
    ApplyFilter(editor);
  else
    SetTimer(editor.window, kFilterTimer, kFilterTime, nullptr);
}

void Command(EditorWindow& editor, int id) {
  if (id == kInformationId) SendMessageW(editor.app->frame, WM_COMMAND, kCmdInformation, 0);
  const int view = id - kFirstViewId;
  if (view >= 0 && view < static_cast<int>(std::size(kViewCommands))) {
    SendMessageW(editor.app->frame, WM_COMMAND, kViewCommands[view], 0);
  }
}

LRESULT Destroy(EditorWindow* editor, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  SetWindowLongPtrW(window, 0, 0);
  if (editor->font) DeleteObject(editor->font);
  ForgetKept(*editor);
  delete editor;
  return DefMDIChildProcW(window, message, wparam, lparam);
}

// Joins the new window and the structure that it was made for.
void Adopt(HWND window, const CREATESTRUCTW& create) {
  auto* editor =
      reinterpret_cast<EditorWindow*>(static_cast<MDICREATESTRUCTW*>(create.lpCreateParams)->lParam);
  editor->window = window;
  SetWindowLongPtrW(window, 0, reinterpret_cast<LONG_PTR>(editor));
}

bool TakesCursor(const EditorWindow& editor, WPARAM wparam, LPARAM lparam) {
  return reinterpret_cast<HWND>(wparam) == editor.window && LOWORD(lparam) == HTCLIENT &&
         SetSplitterCursor(editor);
}

// The mouse between the controls, and during a drag; also the drag's timer.
bool TakeMouse(EditorWindow& editor, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_TIMER:
      if (wparam == kFilterTimer) {
        ApplyFilter(editor);
        return true;
      }
      [[fallthrough]];
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_MOUSEMOVE:
    case WM_RBUTTONDOWN:
    case WM_CAPTURECHANGED:
      if (!DragMessage(editor, message, wparam, lparam)) TrackSplitter(editor, message, lparam);
      return true;
    default:
      return false;
  }
}

LRESULT EditorMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) Adopt(window, *reinterpret_cast<CREATESTRUCTW*>(lparam));
  EditorWindow* editor = EditorOf(window);
  if (!editor) return DefMDIChildProcW(window, message, wparam, lparam);
  switch (message) {
    case WM_CREATE:
      return CreateControls(*editor) ? 0 : -1;
    case WM_SIZE:
      LayOut(*editor);
      break;  // the default needs it too
    case WM_SETTINGCHANGE:
      KeepColumns(*editor);
      ShowFontsAndPictures(*editor);
      FillColumns(*editor);
      LayOut(*editor);
      return 0;
    case WM_NOTIFY:
      return EditorNotify(*editor, *reinterpret_cast<NMHDR*>(lparam), lparam);
    case kSelectionChanged:
      editor->selection_told = false;
      RefreshPictureSelection(*editor);
      RefreshButtons(*editor);
      editor->app->refresh_frame();
      return 0;
    case WM_COMMAND:
      if (HIWORD(wparam) == EN_CHANGE && LOWORD(wparam) == kFilterId) FilterTyped(*editor);
      if (HIWORD(wparam) == BN_CLICKED) Command(*editor, LOWORD(wparam));
      return 0;
    case WM_DRAWITEM:
      DrawLabel(*editor, *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_CONTEXTMENU:
      ShowPopup(*editor, reinterpret_cast<HWND>(wparam), lparam);
      return 0;
    case WM_SETCURSOR:
      if (TakesCursor(*editor, wparam, lparam)) return TRUE;
      break;
    case WM_MDIACTIVATE:
      Activate(*editor, reinterpret_cast<HWND>(lparam));
      return 0;
    case WM_SETFOCUS:
      // A dialog over the list gives the focus back to the list.
      SetFocus(editor->last_focus ? editor->last_focus : editor->tree);
      break;
    case WM_CLOSE:
      if (!MayClose(*editor)) return 0;
      break;
    case WM_DESTROY:
      KeepColumns(*editor);
      DestroyWindow(editor->tips);  // its owner is the frame
      break;
    case WM_NCDESTROY:
      return Destroy(editor, window, message, wparam, lparam);
    default:
      if (TakeMouse(*editor, message, wparam, lparam)) return 0;
      break;
  }
  return DefMDIChildProcW(window, message, wparam, lparam);
}

}  // namespace

void SwitchPicture(Application& app) {
  app.window.picture_height = app.window.picture_height > 0 ? 0 : kStandardPicture;
  for (EditorWindow* editor : AllEditors(app)) {
    const bool shown = app.window.picture_height > 0;
    if (!shown && GetFocus() == editor->picture_pane)
      SetFocus(editor->last_focus ? editor->last_focus : editor->tree);
    LayOutAnew(*editor);
    RefreshPicture(*editor);
  }
  app.refresh_frame();
}

namespace {

// Keys of the filter's field that lead out of it, and those by which it takes its own text back, not records.
bool TakeFilterKey(EditorWindow& editor, WPARAM key) {
  if (GetKeyState(VK_CONTROL) < 0 && (key == 'Z' || key == 'Y')) {
    if (key == 'Z') SendMessageW(editor.filter_field, EM_UNDO, 0, 0);
    return true;
  }
  if (!LeavesFilter(key)) return false;
  if (key == VK_ESCAPE) EndFilter(editor);
  SetFocus(editor.list);
  return true;
}

}  // namespace

bool TakeLeaveKey(EditorWindow& editor, const MSG& message) {
  if (message.message != WM_KEYDOWN || !IsChild(editor.window, message.hwnd)) return false;
  if (message.hwnd == editor.filter_field) return TakeFilterKey(editor, message.wParam);
  if (message.wParam != VK_ESCAPE && message.wParam != VK_BACK) return false;
  if (message.hwnd == editor.picture_pane && message.wParam == VK_ESCAPE) {
    SendMessageW(editor.picture_pane, WM_KEYDOWN, VK_ESCAPE, 0);  // shows all of it again, or leaves it
    return true;
  }
  if (!editor.details) return message.wParam == VK_ESCAPE && EndFilter(editor);
  LeaveInformation(editor);
  return true;
}

void GoToFilter(EditorWindow& editor) {
  SetFocus(editor.filter_field);
  SendMessageW(editor.filter_field, EM_SETSEL, 0, -1);
}

bool TranslateEditorKey(EditorWindow& editor, const MSG& message) {
  if (message.message != WM_KEYDOWN || !IsChild(editor.window, message.hwnd)) return false;
  if (message.wParam == VK_TAB && GetKeyState(VK_CONTROL) >= 0) {
    SendMessageW(editor.window, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    if (HWND next = GetNextDlgTabItem(editor.window, message.hwnd, GetKeyState(VK_SHIFT) < 0)) SetFocus(next);
    return true;
  }
  if (message.wParam == VK_MULTIPLY && message.hwnd == editor.tree) {
    OpenAllBelow(editor);
    return true;
  }
  const bool button =
      message.hwnd != editor.tree && message.hwnd != editor.list && message.hwnd != editor.picture_pane;
  if (message.wParam != VK_RETURN || !button) return false;
  SendMessageW(message.hwnd, BM_CLICK, 0, 0);
  return true;
}

void ShowTips(const EditorWindow& editor, MSG message) {
  const bool mouse = message.message >= WM_MOUSEFIRST && message.message <= WM_MOUSELAST;
  if (mouse && IsChild(editor.window, message.hwnd))
    SendMessageW(editor.tips, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&message));
}

bool RegisterEditorClass(Application& app) {
  return RegisterPictureClass(app) &&
         RegisterChildClass(app.instance, kEditorClass, ChildProcedure<EditorMessage>);
}

EditorWindow* EditorOf(HWND window) {
  wchar_t name[32] = L"";
  if (!window || !GetClassNameW(window, name, std::size(name)) || wcscmp(name, kEditorClass) != 0)
    return nullptr;
  return reinterpret_cast<EditorWindow*>(GetWindowLongPtrW(window, 0));
}

EditorWindow* ActiveEditor(const Application& app) {
  if (!app.client) return nullptr;
  return EditorOf(reinterpret_cast<HWND>(SendMessageW(app.client, WM_MDIGETACTIVE, 0, 0)));
}

std::vector<EditorWindow*> AllEditors(const Application& app) {
  std::vector<EditorWindow*> editors;
  for (HWND child = GetWindow(app.client, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    if (EditorWindow* editor = EditorOf(child)) editors.push_back(editor);
  }
  return editors;
}

EditorWindow* EditorOfFile(const Application& app, const Path& path) {
  for (EditorWindow* editor : AllEditors(app)) {
    if (!editor->path.empty() && SameFile(editor->path, path)) return editor;
  }
  return nullptr;
}

EditorWindow* OpenEditor(Application& app, Document document, const Path& path, bool changed,
                         const Path& list) {
  auto owned = std::make_unique<EditorWindow>();
  EditorWindow* editor = owned.get();
  editor->app = &app;
  editor->document = std::move(document);
  if (!editor->document.names) editor->document.names = app.names;
  editor->path = path;
  editor->changed = changed;
  StartHistory(editor->history, editor->document);
  if (changed) MarkUnsaved(editor->history);
  editor->split = app.window.split;
  editor->imported_from = list;
  if (path.empty())
    editor->name = list.empty() ? Format("Untitled%d", ++app.untitled) : Utf8FromPath(list.filename());
  BOOL maximised = FALSE;
  const auto active = SendMessageW(app.client, WM_MDIGETACTIVE, 0, reinterpret_cast<LPARAM>(&maximised));
  MDICREATESTRUCTW create{};
  create.szClass = kEditorClass;
  create.szTitle = L"";
  create.hOwner = app.instance;
  create.x = create.y = create.cx = create.cy = CW_USEDEFAULT;
  // The first window takes the whole frame, the next ones do as the active one does.
  create.style = !active || maximised ? WS_MAXIMIZE : 0;
  bool told = false;
  editor->refusal_told = &told;
  const std::string name = CaptionName(*editor);
  create.lParam = reinterpret_cast<LPARAM>(owned.release());
  SetLastError(ERROR_SUCCESS);
  const auto window =
      reinterpret_cast<HWND>(SendMessageW(app.client, WM_MDICREATE, 0, reinterpret_cast<LPARAM>(&create)));
  if (!window) {  // it took the structure with it
    if (!told) TellNoWindow(app, name);
    return nullptr;
  }
  editor->refusal_told = nullptr;
  RefreshCaption(*editor);
  FillTree(*editor);
  app.refresh_frame();
  return editor;
}

void RefreshCaption(EditorWindow& editor) {
  SetText(editor.window, CaptionName(editor) + (editor.changed ? " *" : ""));
}

void MarkChanged(EditorWindow& editor, bool changed) {
  if (editor.changed == changed) return;
  editor.changed = changed;
  RefreshCaption(editor);
  editor.app->refresh_frame();
}

const OpenSdb* SelectedSdb(const EditorWindow& editor) {
  return SdbOf(editor.document, editor.selected);
}

DatabaseLook LookOf(const EditorWindow& editor) {
  const NodeRef record = CommandNode(editor);
  return {.document = editor.document,
          .history = editor.history,
          .selected = editor.selected,
          .record = record,
          .row = GetFocus() == editor.tree ? NodeRef{} : record,
          .view = editor.view,
          .has_rows = !editor.rows.rows.empty(),
          .details = editor.details,
          .ordered = editor.order.column >= 0 && !editor.rows.rows.empty() &&
                     NodeTakes(editor.rows.rows[0].kind, NodeAction::kMove)};
}

}  // namespace vexa
