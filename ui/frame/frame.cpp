#include "ui/frame/frame.h"

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "config/ecf.h"
#include "core/messages.h"
#include "platform/text.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/guard.h"
#include "ui/controls/help.h"
#include "ui/controls/pictures.h"
#include "ui/controls/resource.h"
#include "ui/editor/editor.h"
#include "ui/frame/commands.h"
#include "ui/frame/menus.h"
#include "ui/frame/recovery.h"
#include "ui/frame/room_bar.h"
#include "ui/frame/second_start.h"
#include "ui/frame/start_page.h"
#include "ui/frame/test_mode.h"
#include "ui/line/console.h"

namespace vexa {

namespace {

constexpr UINT kFirstChildId = 45000;  // of the window menu; above all commands
constexpr UINT kOpenWaiting = WM_APP + 1;
constexpr UINT kOfferWork = WM_APP + 6;

Application* AppOf(HWND frame) {
  return reinterpret_cast<Application*>(GetWindowLongPtrW(frame, GWLP_USERDATA));
}

// Of the status line's parts behind the first. That of the room is drawn (ui/frame/room_bar.h).
constexpr int kRoomPart = 1;
std::array<std::string, 4> StatusTexts(const Application& app) {
  return {app.room.text, Utf8FromLatin(app.config.product_name + "  " + app.config.configuration_name),
          app.hexadecimal ? "PIDs (Hex)" : "PIDs (Dec)",
          app.config.sdb_format == 0 ? "Single SDB" : "Multiple SDB"};
}

bool CreateClient(Application& app) {
  CLIENTCREATESTRUCT client{nullptr, kFirstChildId};
  app.client =
      CreateWindowExW(WS_EX_CLIENTEDGE, L"MDICLIENT", nullptr,
                      WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL, 0,
                      0, 0, 0, app.frame, nullptr, app.instance, &client);
  if (!app.client) TellNoWindow(app, app.title);
  return app.client != nullptr;
}

// Without a usable file the user chooses one; cancelling that ends the program.
bool FindConfiguration(Application& app) {
  if (const auto found = FindConfigurationFile(app.settings, ProgramFolder())) {
    app.configuration_file = *found;
    return true;
  }
  TellWhy(app.context.messages, Icon::kStop,
          Utf8FromPath(ProgramFolder()) + " holds no configuration file (*.ecf). Choose one.",
          "Invalid configuration file.");
  const FileQuestion question = {
      "Open a Configuration File", {{"Vexa Editor Configuration File ( *.ECF )", "*.ecf"}}, "ecf"};
  while (const auto chosen = AskOpenFile(app.frame, question)) {
    if (IsEcfFile(*chosen)) {
      app.configuration_file = *chosen;
      return true;
    }
    TellWhy(app.context.messages, Icon::kStop, ReadReason(*chosen, WhyUnreadable(*chosen)),
            "Invalid Configuration file.");
  }
  return false;
}

bool LoadSettings(Application& app) {
  if (!InitConfig(app.context, app.configuration_file, app.config)) {
    // The reason was told where it was found.
    TellWhy(app.context.messages, Icon::kStop,
            Utf8FromPath(app.configuration_file) + ": Choose another configuration file in the settings.",
            "Cannot read Configuration details.");
  }
  app.recent = LoadRecentFiles(app.settings);
  RefreshRecentMenus(app);
  app.colours = LoadColours(app.settings);
  app.names = &LoadNamesPage(app.settings);
  LoadDefaultRecords(app.settings, app.defaults);
  app.context.defaults = &app.defaults;
  app.window = LoadWindowSettings(app.settings);
  app.place = LoadPlace(app.settings);
  const Outcome loaded = LoadPortSettings(app.settings, app.config);
  if (loaded) return true;
  TellWhy(app.context.messages, Icon::kStop, SettingsReason(app.settings, loaded.error),
          "Cannot initialize port settings.");
  return false;
}

bool CreateProgramFolder(Application& app) {
  const auto number = static_cast<unsigned>(reinterpret_cast<UINT_PTR>(app.frame));
  RemoveAbandonedFolders("Temp");
  std::string why;
  app.folder = TemporaryFolder::Make(Format("Temp%x", number), why);
  if (!app.folder) {
    TellWhy(app.context.messages, Icon::kStop, why, "Failed to create new directory.");
    return false;
  }
  app.context.temporary_folder = app.folder->path();
  return true;
}

void ShowStatusFont(Application& app) {
  RenewFont(app.status_font, app.frame, {app.status});
}

HIMAGELIST LoadTreePictures(const Application& app) {
  return LoadPictures(app.instance, IDB_TREE, app.frame, {COLOR_WINDOW, COLOR_WINDOWTEXT}, app.tree_pictures);
}

bool StartFrame(Application& app) {
  if (!CreateClient(app) || !FindConfiguration(app) || !LoadSettings(app) || !CreateProgramFolder(app))
    return false;
  SetCurrentDirectoryW(ProgramFolder().c_str());
  app.tree_pictures = LoadTreePictures(app);
  if (!CreateToolbar(app)) return false;
  app.status = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0,
                               0, app.frame, nullptr, app.instance, nullptr);
  ShowStatusFont(app);
  DragAcceptFiles(app.frame, TRUE);
  SetText(app.frame, Format("Vexa Editor %d.%d.%d", kVersionMajor, kVersionMinor, kVersionBuild));
  app.title = WindowText(app.frame);
  StartRecovery(app);
  PostMessageW(app.frame, kOfferWork, 0, 0);
  // Opened once the frame stands, so that what the file has to say appears over it, and behind the work that
  // is offered: of one file that has the window.
  if (app.open_at_start) OpenLater(app, *app.open_at_start);
  return true;
}

constexpr int kStatusMargin = 16;  // of a part's text, at 96 dots an inch

int StatusWidth(const Application& app, const std::string& text) {
  HDC screen = GetDC(app.status);
  HGDIOBJ before = SelectObject(screen, app.status_font);
  const std::wstring wide = Wide(text);
  SIZE size{};
  GetTextExtentPoint32W(screen, wide.c_str(), static_cast<int>(wide.size()), &size);
  SelectObject(screen, before);
  ReleaseDC(app.status, screen);
  return static_cast<int>(size.cx) + Scaled(app.frame, kStatusMargin);
}

// The parts at the right are as wide as their texts; the first one, for help and outcomes, keeps a third.
void LayOutStatus(Application& app) {
  RECT area{};
  GetClientRect(app.frame, &area);
  const auto texts = StatusTexts(app);
  int right = static_cast<int>(area.right) - GetSystemMetrics(SM_CXVSCROLL);  // the corner for sizing
  std::array<int, 5> parts{0, 0, 0, 0, -1}, before{};
  for (size_t i = texts.size(); i-- > 0;) {
    if (!texts[i].empty()) right -= StatusWidth(app, texts[i]);
    parts[i] = std::max(right, static_cast<int>(area.right) / 3);
  }
  SendMessageW(app.status, SB_GETPARTS, before.size(), reinterpret_cast<LPARAM>(before.data()));
  if (parts != before)
    SendMessageW(app.status, SB_SETPARTS, parts.size(), reinterpret_cast<LPARAM>(parts.data()));
}

void LayOut(Application& app) {
  if (!app.toolbar || !app.status) return;
  SendMessageW(app.toolbar, TB_AUTOSIZE, 0, 0);
  SendMessageW(app.status, WM_SIZE, 0, 0);
  RECT area{}, bar{};
  GetClientRect(app.frame, &area);
  GetWindowRect(app.toolbar, &bar);
  const int top = bar.bottom - bar.top;
  GetWindowRect(app.status, &bar);
  const int bottom = bar.bottom - bar.top;
  LayOutStatus(app);
  MoveWindow(app.client, 0, top, area.right, std::max<int>(0, area.bottom - top - bottom), TRUE);
  ShowStartPage(app);
}

void ShowStatus(Application& app, int part, const std::string& text) {
  SendMessageW(app.status, SB_SETTEXTW, static_cast<WPARAM>(part),
               reinterpret_cast<LPARAM>(Wide(text).c_str()));
}

// The outcome of a transfer stays until the next command.
void ShowFirstStatus(Application& app, const std::string& text) {
  ShowStatus(app, 0, text.empty() ? app.outcome : text);
}

bool MayCloseAll(Application& app) {
  if (!MayEndConsole(app) && !app.must_end) return false;
  for (EditorWindow* editor : AllEditors(app)) {
    if (!MayClose(*editor) && !app.must_end) return false;
  }
  return true;
}

void KeepFramePlace(Application& app) {
  WINDOWPLACEMENT placement{};
  placement.length = sizeof placement;
  if (!GetWindowPlacement(app.frame, &placement)) return;
  const RECT& place = placement.rcNormalPosition;
  app.window.left = static_cast<int>(place.left);
  app.window.top = static_cast<int>(place.top);
  app.window.width = static_cast<int>(place.right - place.left);
  app.window.height = static_cast<int>(place.bottom - place.top);
}

// The frame always starts maximised; the kept place is the one to which it is restored. One that is on no
// screen any more is left to the system.
void ShowFrame(Application& app) {
  const WindowSettings& window = app.window;
  WINDOWPLACEMENT placement{};
  placement.length = sizeof placement;
  const RECT place = {window.left, window.top, window.left + window.width, window.top + window.height};
  if (window.width > 0 && MonitorFromRect(&place, MONITOR_DEFAULTTONULL) &&
      GetWindowPlacement(app.frame, &placement)) {
    placement.rcNormalPosition = place;
    placement.showCmd = SW_SHOWMAXIMIZED;
    SetWindowPlacement(app.frame, &placement);
  }
  ShowWindow(app.frame, SW_SHOWMAXIMIZED);
}

void EndFrame(Application& app) {
  if (app.exit_code != 0) LeaveUnsavedWork(app);
  EndHelp(app);
  EndConsole(app);
  for (EditorWindow* editor : AllEditors(app))
    SendMessageW(app.client, WM_MDIDESTROY, reinterpret_cast<WPARAM>(editor->window), 0);
  // A frame that never stood has nothing to remember, and has not read what it would overwrite.
  if (!app.context.temporary_folder.empty()) {
    SaveConfigurationPaths(app.settings, app.configuration_file, "");
    SaveRecentFiles(app.settings, app.recent);
    KeepFramePlace(app);
    SaveWindowSettings(app.settings, app.window);
    app.folder.reset();
    if (app.recovery) app.recovery->End();
    app.recovery.reset();
  }
  // The bar on the frame goes with it; the others are destroyed by the entry point.
  SetMenu(app.frame, nullptr);
}

void RenewPictures(Application& app) {
  HIMAGELIST old = app.tree_pictures;
  app.tree_pictures = LoadTreePictures(app);
  ShowToolbarPictures(app);
  for (HWND child = GetWindow(app.client, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    SendMessageW(child, WM_SETTINGCHANGE, 0, 0);
  if (old && old != app.tree_pictures) ImageList_Destroy(old);
}

// Fonts, pictures and lengths follow the frame to a screen of another resolution; dialogs do so by
// themselves.
void ChangeResolution(Application& app, const RECT& place) {
  RenewPictures(app);
  ShowStatusFont(app);
  SetWindowPos(app.frame, nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
               SWP_NOZORDER | SWP_NOACTIVATE);
  LayOut(app);
  RenewStartPage(app);
}

void OpenDropped(Application& app, HDROP drop) {
  const UINT count = DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0);
  std::vector<Path> paths;
  for (UINT i = 0; i < count; ++i) {
    std::wstring path(DragQueryFileW(drop, i, nullptr, 0) + size_t{1}, L'\0');
    DragQueryFileW(drop, i, path.data(), static_cast<UINT>(path.size()));
    paths.emplace_back(path.c_str());
  }
  DragFinish(drop);
  OpenWhenFree(app, paths);
}

LRESULT Notify(Application& app, HWND frame, NMHDR& header, WPARAM wparam, LPARAM lparam) {
  if (header.code == TBN_DROPDOWN && header.hwndFrom == app.toolbar) {
    DropDown(app, reinterpret_cast<NMTOOLBARW&>(header));
    return TBDDRET_DEFAULT;
  }
  if (header.code == NM_CLICK && header.hwndFrom == app.status &&
      reinterpret_cast<NMMOUSE&>(header).dwItemSpec == kRoomPart) {
    ShowRoom(app);
    return TRUE;
  }
  if (header.code == TTN_GETDISPINFOW) {
    static std::wstring tip;
    auto& asked = reinterpret_cast<NMTTDISPINFOW&>(header);
    const CommandInfo* command = FindCommand(static_cast<uint32_t>(header.idFrom));
    tip = Wide(command ? ToolTip(*command) : "");
    asked.lpszText = tip.data();
    return 0;
  }
  return DefFrameProcW(frame, app.client, WM_NOTIFY, wparam, lparam);
}

void ShowMenuHelp(Application& app, WPARAM wparam) {
  const bool popup = HIWORD(wparam) & (MF_POPUP | MF_SEPARATOR | MF_SYSMENU);
  ShowFirstStatus(app, popup || HIWORD(wparam) == 0xFFFF ? "" : CommandHelp(app, LOWORD(wparam)));
}

// F1 in the frame or in one of its windows, which hand it on. While a menu is open its commands are meant.
void ShowWindowHelp(Application& app, const HELPINFO& information) {
  const auto active = reinterpret_cast<HWND>(SendMessageW(app.client, WM_MDIGETACTIVE, 0, 0));
  HelpWindow window = HelpWindow::kFrame;
  if (EditorOf(active)) window = HelpWindow::kEditor;
  if (active && active == app.console) window = HelpWindow::kConsole;
  if (information.iContextType == HELPINFO_MENUITEM) window = HelpWindow::kMenus;
  ShowHelp(app, HelpPage(window));
}

// Joins the new window and the program's state.
void Adopt(HWND frame, const CREATESTRUCTW& create) {
  auto* app = static_cast<Application*>(create.lpCreateParams);
  app->frame = frame;
  SetWindowLongPtrW(frame, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(app));
}

void MaximizeActive(Application& app) {
  if (EditorWindow* editor = ActiveEditor(app))
    SendMessageW(app.client, WM_MDIMAXIMIZE, reinterpret_cast<WPARAM>(editor->window), 0);
}

void Destroy(Application& app) {
  Guarded(false, [&] {
    EndFrame(app);
    return true;
  });
  SetGuardedFrame(nullptr);
  PostQuitMessage(app.exit_code);
}

// The system ends the program behind this message, if `ends`; it may not have waited for the user's answers.
void EndWithSession(Application& app, bool ends) {
  const bool agreed = std::exchange(app.end_agreed, false);
  if (!ends) return;
  // A dialog or a job goes on with its window behind this message, if there is time for it.
  if (app.busy != 0 || !IsWindowEnabled(app.frame)) return LeaveUnsavedWork(app);
  if (!agreed) app.exit_code = 1;
  DestroyWindow(app.frame);
}

BOOL CALLBACK PassOnColours(HWND window, LPARAM) {
  SendMessageW(window, WM_SYSCOLORCHANGE, 0, 0);
  return TRUE;
}

// What the program's windows send to the frame, and what it answers whole.
bool TakeOwnMessage(Application& app, UINT message) {
  switch (message) {
    case kOpenWaiting:
      OpenWaiting(app);
      return true;
    case kOfferWork:
      OfferAbandonedWork(app);
      return true;
    case kShowStartPage:
      ShowStartPage(app);
      return true;
    case WM_SIZE:
      LayOut(app);
      return true;
    case WM_SYSCOLORCHANGE:
      // Only top windows are told, and common controls keep colours until they are.
      EnumChildWindows(app.frame, PassOnColours, 0);
      RenewPictures(app);
      return true;
    case WM_TIMER:
    case kTransferEnded:
      KeepUnsavedWork(app);
      return true;
    case kMaximizeAgain:
      MaximizeActive(app);
      return true;
    case kOutOfMemory:
      TellOutOfMemory(app);
      return true;
    default:
      return false;
  }
}

LRESULT FrameMessage(HWND frame, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) Adopt(frame, *reinterpret_cast<CREATESTRUCTW*>(lparam));
  Application* app = AppOf(frame);
  if (!app) return DefWindowProcW(frame, message, wparam, lparam);
  if (app->describe_menus && message == app->describe_menus) return AnswerTest(*app, wparam, lparam);
  switch (message) {
    case WM_CREATE:
      return StartFrame(*app) ? 0 : -1;
    case WM_SETFOCUS:
      if (FocusStartPage(*app)) return 0;
      break;
    case WM_DPICHANGED:
      ChangeResolution(*app, *reinterpret_cast<const RECT*>(lparam));
      return 0;
    case WM_COMMAND:
      if (RunCommand(*app, LOWORD(wparam))) return 0;
      break;
    case WM_ENABLE:
      // A dialog over the frame is one over its companion, too.
      if (app->findings) EnableWindow(app->findings, wparam != 0);
      // Once the command is done that the dialog belonged to.
      if (wparam) PostMessageW(frame, kOpenWaiting, 0, 0);
      break;
    case WM_NOTIFY:
      return Notify(*app, frame, *reinterpret_cast<NMHDR*>(lparam), wparam, lparam);
    case WM_DRAWITEM:
      DrawRoom(*app, *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_INITMENUPOPUP:
      PrepareMenu(*app, reinterpret_cast<HMENU>(wparam));
      break;
    case WM_HELP:
      ShowWindowHelp(*app, *reinterpret_cast<const HELPINFO*>(lparam));
      return 0;
    case WM_MENUSELECT:
      ShowMenuHelp(*app, wparam);
      break;
    case WM_DROPFILES:
      OpenDropped(*app, reinterpret_cast<HDROP>(wparam));
      return 0;
    case WM_COPYDATA:
      return AnswerSecondStart(*app, *reinterpret_cast<const COPYDATASTRUCT*>(lparam));
    case WM_QUERYENDSESSION:
      return app->end_agreed = MayCloseAll(*app);
    case WM_ENDSESSION:
      EndWithSession(*app, wparam);
      return 0;
    case WM_CLOSE:
      if (app->busy == 0 && MayCloseAll(*app)) DestroyWindow(frame);
      return 0;
    case WM_DESTROY:
      Destroy(*app);
      return 0;
    default:
      if (TakeOwnMessage(*app, message)) return 0;
      break;
  }
  return DefFrameProcW(frame, app->client, message, wparam, lparam);
}

LRESULT CALLBACK FrameProcedure(HWND frame, UINT message, WPARAM wparam, LPARAM lparam) noexcept {
  return Guarded(LRESULT{0}, [&] { return FrameMessage(frame, message, wparam, lparam); });
}

// What is done with a message of the loop before it goes to its window.
void HandleMessage(Application& app, MSG& message) {
  EditorWindow* editor = ActiveEditor(app);
  if (editor && TakeDragKey(*editor, message)) return;
  if (editor && IsWindowEnabled(app.frame) && TakeLeaveKey(*editor, message)) return;
  if (TranslateMDISysAccel(app.client, &message)) return;
  if (app.findings && IsDialogMessageW(app.findings, &message)) return;
  if (TranslateConsoleKey(app, message)) return;
  // Dialogs without a loop of their own must not see the frame's keys.
  if (IsWindowEnabled(app.frame) &&
      TranslateAcceleratorW(app.frame, editor ? app.editor_keys : app.other_keys, &message)) {
    return;
  }
  if (editor && IsWindowEnabled(app.frame) && TranslateEditorKey(*editor, message)) return;
  if (editor) ShowTips(*editor, message);
  if (!editor && TranslateStartKey(app, message)) return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

void EndWithoutList(Application& app) {
  TellWhy(app.context.messages, Icon::kStop,
          "Windows takes no more rows. Save the changes when the program asks for them, and start it again.",
          "Updating list view failed. Can not continue.");
  app.must_end = true;
  app.exit_code = 1;
  PostMessageW(app.frame, WM_CLOSE, 0, 0);
}

// For the windows in the frame and over it.
void ServeWindows(Application& app) {
  app.refresh_frame = [&app] { RefreshFrame(app); };
  app.end_without_list = [&app] { EndWithoutList(app); };
  app.remember_file = [&app](const Path& path) { RememberFile(app, path); };
  app.show_menu_bar = [&app](MenuName name) { ShowMenuBar(app, name); };
  app.show_popup = [&app](MenuName name, POINT at, UINT flags) { ShowPopupMenu(app, name, at, flags); };
}

}  // namespace

void OpenLater(Application& app, const Path& path) {
  app.waiting.push_back(path);
  PostMessageW(app.frame, kOpenWaiting, 0, 0);
}

bool RegisterClasses(Application& app) {
  WNDCLASSEXW frame{};
  frame.cbSize = sizeof frame;
  frame.style = CS_HREDRAW | CS_VREDRAW;
  frame.lpfnWndProc = FrameProcedure;
  frame.hInstance = app.instance;
  frame.hIcon = LoadIconW(app.instance, MAKEINTRESOURCEW(IDI_VEXA));
  frame.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  frame.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  frame.lpszClassName = kFrameClass;
  if (RegisterClassExW(&frame) && RegisterEditorClass(app) && RegisterConsoleClass(app)) return true;
  TellNoWindow(app, app.title);
  return false;
}

bool CreateFrame(Application& app) {
  ServeWindows(app);
  HWND frame = CreateWindowExW(0, kFrameClass, Wide(app.title).c_str(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                               CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr,
                               app.frame_menu, app.instance, &app);
  if (!frame) {
    if (!app.frame) TellNoWindow(app, app.title);  // else it was being made, and has told
    return false;
  }
  SetGuardedFrame(frame);
  ShowFrame(app);
  UpdateWindow(frame);
  RefreshFrame(app);
  return true;
}

int RunMessageLoop(Application& app) {
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    Guarded(false, [&] {
      HandleMessage(app, message);
      return true;
    });
  }
  KeepUnsavedWork(app);  // there is none when the user ended the program
  return static_cast<int>(message.wParam);
}

void RefreshFrame(Application& app) {
  if (!app.toolbar || !app.status) return;
  RefreshToolbar(app);
  LookAtRoom(app);
  ShowStartPageLater(app);
  LayOutStatus(app);
  ShowFirstStatus(app, "");
  const auto texts = StatusTexts(app);
  for (size_t i = 0; i < texts.size(); ++i) {
    const int part = static_cast<int>(i) + 1;
    ShowStatus(app, part == kRoomPart && !texts[i].empty() ? part | SBT_OWNERDRAW : part, texts[i]);
  }
}

}  // namespace vexa
