#include "ui/line/console.h"

#include <algorithm>
#include <iterator>

#include "config/settings.h"
#include "ui/controls/child_window.h"
#include "ui/controls/guard.h"
#include "ui/controls/resource.h"
#include "ui/line/console_log.h"
#include "ui/line/console_resource.h"
#include "view/command_table.h"

namespace vexa {

namespace {

constexpr UINT_PTR kTimer = 1, kLineSubclass = 1, kLogSubclass = 2;
constexpr int kFirstPlace = 50;                    // of the window, from both edges
constexpr int kLogHeight = 418, kLineHeight = 44;  // at 96 dots an inch; the log's is its least
constexpr int kPanelUnits = 50;                    // dialog units
constexpr int kDisconnectFailure = 18;             // exit code
constexpr int kLineTextKept = 16000;               // characters; the control takes about twice as many

struct PanelButton {
  int id;
  CommandId command;
  const char* tip = nullptr;  // nullptr: its command's; the panel's own are shorter
};
constexpr PanelButton kPanelButtons[] = {{IDC_CONSOLE_CONNECT, kCmdConnect},
                                         {IDC_CONSOLE_UPLOAD, kCmdConsoleUpload, "Upload ( PC to STB )"},
                                         {IDC_CONSOLE_CANCEL, kCmdConsoleCancel, "Cancel"},
                                         {IDC_CONSOLE_SAVE, kCmdConsoleSaveLog, "Save log file"},
                                         {IDC_CONSOLE_CLEAR, kCmdConsoleClear, "Clear"},
                                         {IDC_CONSOLE_COMMAND, kNoCommand, "Test Tool Command Window"}};

std::string TipOf(const PanelButton& button) {
  const CommandInfo* command = FindCommand(button.command);
  return button.tip ? button.tip : command ? command->tip : "";
}

ConsoleWindow* ConsoleOf(HWND window) {
  return reinterpret_cast<ConsoleWindow*>(GetWindowLongPtrW(window, 0));
}

HWND PanelControl(const ConsoleWindow& console, int id) {
  return GetDlgItem(console.panel, id);
}

void ShowPanelText(ConsoleWindow& console, int id, const std::string& text) {
  HWND control = PanelControl(console, id);
  if (WindowText(control) != text) SetText(control, text);
}

// --- the command line ---

// The line that the caret is in: where it starts, and its text.
std::pair<LRESULT, std::wstring> CurrentLine(HWND edit) {
  const auto number = static_cast<WPARAM>(SendMessageW(edit, EM_LINEFROMCHAR, static_cast<WPARAM>(-1), 0));
  std::wstring text(32768, L'\0');
  text[0] = static_cast<wchar_t>(text.size() - 1);
  const auto length = SendMessageW(edit, EM_GETLINE, number, reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(std::max<LRESULT>(0, length)));
  return {SendMessageW(edit, EM_LINEINDEX, number, 0), text};
}

void ReplaceText(HWND edit, LRESULT first, LRESULT last, const std::wstring& text) {
  SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(first), last);
  SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
}

void ReplaceCurrentLine(HWND edit, const std::string& text) {
  const auto [start, line] = CurrentLine(edit);
  ReplaceText(edit, start, start + static_cast<LRESULT>(line.size()), Wide(text));
}

// Lines that were sent long ago go, so that the control never is full.
void DropOldLines(HWND edit) {
  if (GetWindowTextLengthW(edit) <= kLineTextKept) return;
  DWORD caret = 0;
  SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&caret), 0);
  const LRESULT line = SendMessageW(edit, EM_LINEFROMCHAR, kLineTextKept / 2, 0);
  const auto count = static_cast<DWORD>(SendMessageW(edit, EM_LINEINDEX, static_cast<WPARAM>(line), 0));
  ReplaceText(edit, 0, static_cast<LRESULT>(count), L"");
  caret -= std::min(caret, count);
  SendMessageW(edit, EM_SETSEL, caret, static_cast<LPARAM>(caret));
}

bool SendLine(ConsoleWindow& console, const std::string& line) {
  if (!SendConsoleLine(console.console, line)) return false;
  Remember(console.history, line);
  return true;
}

// Complete lines of a pasted text are sent, the rest goes into the command line. False: not for us.
bool PasteLines(ConsoleWindow& console) {
  if (console.console.state != ConsoleState::kConnected || !OpenClipboard(console.line)) return false;
  std::string text;
  if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
    if (const auto* wide = static_cast<const wchar_t*>(GlobalLock(data))) {
      text = Utf8(std::wstring_view(wide, wcsnlen(wide, GlobalSize(data) / sizeof(wchar_t))));
      GlobalUnlock(data);
    }
  }
  CloseClipboard();
  PastedText pasted = SplitPasted(text);
  if (pasted.lines.empty()) return false;
  // The first line goes on from what stands in front of the caret, the rest goes in front of what follows it.
  DWORD first = 0, last = 0;
  SendMessageW(console.line, EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
  SendMessageW(console.line, EM_SETSEL, first, static_cast<LPARAM>(first));
  const auto [start, line] = CurrentLine(console.line);
  pasted.lines.front().insert(0, Utf8(line.substr(0, first - static_cast<size_t>(start))));
  size_t sent = 0;
  while (sent < pasted.lines.size() && SendLine(console, pasted.lines[sent])) ++sent;
  // A line that was refused comes back, to be mended.
  std::string left;
  for (; sent < pasted.lines.size(); ++sent) left += pasted.lines[sent] + "\r\n";
  ReplaceText(console.line, start, static_cast<LRESULT>(last), Wide(left + pasted.rest));
  DropOldLines(console.line);
  return true;
}

// True when the control's own behaviour is not wanted.
bool LineMessage(ConsoleWindow& console, HWND edit, UINT message, WPARAM wparam) {
  if (message == WM_CHAR && wparam == kKeyEnter) {
    if (console.console.state == ConsoleState::kConnected) SendLine(console, Utf8(CurrentLine(edit).second));
    DropOldLines(edit);
  } else if (message == WM_PASTE) {
    return PasteLines(console);
  } else if (message == WM_KEYDOWN && (wparam == VK_UP || wparam == VK_DOWN)) {
    const auto line =
        wparam == VK_UP ? Older(console.history, Utf8(CurrentLine(edit).second)) : Newer(console.history);
    if (line) ReplaceCurrentLine(edit, *line);
    return true;
  }
  return false;
}

LRESULT CALLBACK LineProcedure(HWND edit, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                               DWORD_PTR data) noexcept {
  auto& console = *reinterpret_cast<ConsoleWindow*>(data);
  const bool taken = Guarded(true, [&] { return LineMessage(console, edit, message, wparam); });
  return taken ? 0 : DefSubclassProc(edit, message, wparam, lparam);
}

LRESULT CALLBACK LogProcedure(HWND log, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                              DWORD_PTR data) noexcept {
  auto& console = *reinterpret_cast<ConsoleWindow*>(data);
  // The control would hand a click on to its parent in some versions, and keep it in others.
  if (message == WM_RBUTTONUP || message == WM_CONTEXTMENU) {
    POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    if (message == WM_RBUTTONUP) ClientToScreen(log, &point);
    return Guarded(LRESULT{0}, [&] {
      ShowLogMenu(log, *console.app, point);
      return LRESULT{0};
    });
  }
  return DefSubclassProc(log, message, wparam, lparam);
}

// --- the window ---

ConsoleOptions KeptOptions(const Application& app) {
  const ConsoleSettings kept = LoadConsoleSettings(app.settings);
  ConsoleOptions options;
  options.hexadecimal_view = kept.hexadecimal_view;
  options.time_stamps = kept.time_stamps;
  options.reconnect = kept.reconnect;
  options.line_ending = static_cast<LineEnding>(kept.line_ending);
  return options;
}

INT_PTR CALLBACK PanelProcedure(HWND panel, UINT message, WPARAM wparam, LPARAM) noexcept {
  if (message == WM_INITDIALOG) return FALSE;  // the focus stays where it is
  if (message != WM_COMMAND || HIWORD(wparam) != BN_CLICKED) return FALSE;
  ConsoleWindow* console = ConsoleOf(GetParent(panel));
  if (!console) return FALSE;
  if (LOWORD(wparam) == IDC_CONSOLE_COMMAND) {
    return Guarded(INT_PTR{TRUE}, [&] {
      ShowCommandLine(*console, !console->line_shown);
      return INT_PTR{TRUE};
    });
  }
  for (const PanelButton& button : kPanelButtons) {
    if (button.id == LOWORD(wparam)) SendMessageW(console->app->frame, WM_COMMAND, button.command, 0);
  }
  return TRUE;
}

void AddTips(ConsoleWindow& console) {
  console.tips = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0,
                                 0, 0, console.window, nullptr, console.app->instance, nullptr);
  for (const PanelButton& button : kPanelButtons) {
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = console.panel;
    tool.uId = reinterpret_cast<UINT_PTR>(PanelControl(console, button.id));
    std::wstring tip = Wide(TipOf(button));
    tool.lpszText = tip.data();  // the window copies it
    SendMessageW(console.tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    // A grey button's mouse messages go to the panel.
    GetWindowRect(PanelControl(console, button.id), &tool.rect);
    MapWindowPoints(nullptr, console.panel, reinterpret_cast<POINT*>(&tool.rect), 2);
    tool.uFlags = TTF_SUBCLASS;
    tool.uId = static_cast<UINT_PTR>(button.id);
    SendMessageW(console.tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  }
}

// A button that goes grey does not keep the keys.
void EnableButton(ConsoleWindow& console, int id, bool enabled) {
  HWND button = PanelControl(console, id);
  if (!enabled && GetFocus() == button) SetFocus(console.line_shown ? console.line : console.log);
  EnableWindow(button, enabled);
}

void SetLineFont(ConsoleWindow& console) {
  RenewFont(console.font, console.window, {console.line});
}

// Always false.
bool RefuseConsole(ConsoleWindow& console) {
  TellNoWindow(*console.app, "Portload", LastSystemError(), "Status Window creation problem");
  *console.refusal_told = true;
  return false;
}

bool CreateControls(ConsoleWindow& console) {
  Application& app = *console.app;
  console.panel = CreateDialogParamW(app.instance, MAKEINTRESOURCEW(IDD_CONSOLE_PANEL), console.window,
                                     PanelProcedure, 0);
  if (!console.panel) return RefuseConsole(console);
  console.log = CreateLogView(console.window, app.instance, IDC_CONSOLE_LOG);
  console.line = CreateWindowExW(
      WS_EX_CLIENTEDGE, L"EDIT", L"",
      WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_AUTOHSCROLL, 0, 0,
      0, 0, console.window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(IDC_CONSOLE_LINE)), app.instance,
      nullptr);
  if (!console.log || !console.line) return RefuseConsole(console);
  SetLineFont(console);
  SetWindowSubclass(console.line, LineProcedure, kLineSubclass, reinterpret_cast<DWORD_PTR>(&console));
  SetWindowSubclass(console.log, LogProcedure, kLogSubclass, reinterpret_cast<DWORD_PTR>(&console));
  AddTips(console);
  CheckDlgButton(console.panel, IDC_CONSOLE_COMMAND, BST_CHECKED);
  OpenConsole(console.console, app.context);
  const ConsoleOptions options = KeptOptions(app);
  SetConsoleOptions(console.console, options);
  SetLogFont(console.log, options.hexadecimal_view);
  SetTimer(console.window, kTimer, kUpdateInterval, nullptr);
  ShowConsoleState(console);
  return true;
}

int PanelHeight(const ConsoleWindow& console) {
  RECT units{0, 0, 4, kPanelUnits};
  MapDialogRect(console.panel, &units);
  return static_cast<int>(units.bottom);
}

int LineHeight(const ConsoleWindow& console) {
  return console.line_shown ? Scaled(console.window, kLineHeight) : 0;
}

// Log at the top, command line below it, panel along the bottom.
void LayOut(ConsoleWindow& console) {
  if (!console.line) return;
  RECT area{};
  GetClientRect(console.window, &area);
  const int width = static_cast<int>(area.right), height = static_cast<int>(area.bottom);
  const int panel = PanelHeight(console), line = LineHeight(console);
  const int log = std::max(0, height - panel - line);
  const bool follows = LogUse(console.log) == ViewUse::kFollows;
  MoveWindow(console.log, 0, 0, width, log, TRUE);
  if (follows) ScrollLogToEnd(console.log);
  MoveWindow(console.line, 0, log, width, line, TRUE);
  MoveWindow(console.panel, 0, log + line, width, panel, TRUE);
}

// The window is never so low that the log would be lower than it may be, where the frame has room for that: a
// window that reached beyond the frame would hide its buttons.
void LimitSize(ConsoleWindow& console, MINMAXINFO& sizes) {
  if (!console.panel) return;
  RECT outer{0, 0, 0, PanelHeight(console) + LineHeight(console) + Scaled(console.window, kLogHeight)};
  AdjustWindowRectEx(&outer, static_cast<DWORD>(GetWindowLongPtrW(console.window, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongPtrW(console.window, GWL_EXSTYLE)));
  RECT room{};
  GetClientRect(console.app->client, &room);
  const LONG least = std::min<LONG>(outer.bottom - outer.top, room.bottom - kFirstPlace);
  sizes.ptMinTrackSize.y = std::max<LONG>(sizes.ptMinTrackSize.y, least);
}

void GrowToLeastHeight(ConsoleWindow& console) {
  RECT place{};
  GetWindowRect(console.window, &place);
  MINMAXINFO sizes{};
  LimitSize(console, sizes);
  const LONG height = std::max(place.bottom - place.top, sizes.ptMinTrackSize.y);
  if (IsZoomed(console.window) || height == place.bottom - place.top) return;
  SetWindowPos(console.window, nullptr, 0, 0, static_cast<int>(place.right - place.left),
               static_cast<int>(height), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Moves what has arrived into the log. A view that takes long to show it has the window to itself for a third
// of the time, so that keys and mouse come through.
ConsoleUpdate UpdateLog(ConsoleWindow& console) {
  const uint64_t start = ConsoleClock();
  const ConsoleUpdate update =
      UpdateConsole(console.console, start, LogUse(console.log), LogLength(console.log));
  if (update.start_anew) console.log_cut = update.text_dropped;
  if (AppendToLog(console.log, update.pieces, update.start_anew)) console.log_cut = true;
  const uint64_t end = ConsoleClock();
  console.next_update = end + 2 * (end - start);
  return update;
}

void Tick(HWND window) {
  ConsoleWindow& console = *ConsoleOf(window);
  if (ConsoleClock() < console.next_update) return;
  const ConsoleUpdate update = UpdateLog(console);
  ShowPanelText(console, IDC_CONSOLE_RECEIVED, update.received ? "R" : "");
  ShowPanelText(console, IDC_CONSOLE_SENT, update.sent ? "T" : "");
  const bool known = update.packets_total > 0;
  ShowPanelText(console, IDC_CONSOLE_TOTAL, known ? Format("%u", update.packets_total) : "");
  ShowPanelText(console, IDC_CONSOLE_COUNT, known ? Format("%u", update.packets_sent) : "");
  ShowPanelText(console, IDC_CONSOLE_RATE, update.rate);
  const int place = known ? static_cast<int>(uint64_t{update.packets_sent} * 1000 / update.packets_total) : 0;
  SendMessageW(PanelControl(console, IDC_CONSOLE_BAR), PBM_SETPOS, static_cast<WPARAM>(place), 0);
  if (update.focus_log && GetFocus() == console.line) SetFocus(console.log);
  ShowConsoleState(console);
  // One box at a time, and none while another one stands.
  if (console.telling || !IsWindowEnabled(console.app->frame)) return;
  console.telling = true;
  TellConsoleMessages(console.console, ConsoleClock());
  console.telling = false;
  ShowConsoleState(console);
}

void Activate(ConsoleWindow& console, HWND active) {
  Application& app = *console.app;
  const bool own = active == console.window;
  if (!own && active) return;  // another child puts its own bar
  app.show_menu_bar(own ? MenuName::kConsole : MenuName::kFrame);
  app.refresh_frame();
}

LRESULT Destroy(ConsoleWindow* console, HWND window, WPARAM wparam, LPARAM lparam) {
  Application& app = *console->app;
  if (console->restored) PostMessageW(app.frame, kMaximizeAgain, 0, 0);
  SetWindowLongPtrW(window, 0, 0);
  app.console = nullptr;
  app.port_connected = nullptr;
  if (console->font) DeleteObject(console->font);
  CloseConsole(console->console);
  if (!console->console.stuck) delete console;
  app.refresh_frame();
  return DefMDIChildProcW(window, WM_NCDESTROY, wparam, lparam);
}

LRESULT ConsoleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    const auto* create = reinterpret_cast<CREATESTRUCTW*>(lparam);
    auto* console =
        reinterpret_cast<ConsoleWindow*>(static_cast<MDICREATESTRUCTW*>(create->lpCreateParams)->lParam);
    console->window = window;
    console->app->console = window;
    SetWindowLongPtrW(window, 0, reinterpret_cast<LONG_PTR>(console));
  }
  ConsoleWindow* console = ConsoleOf(window);
  if (!console) return DefMDIChildProcW(window, message, wparam, lparam);
  switch (message) {
    case WM_CREATE:
      return CreateControls(*console) ? 0 : -1;
    case WM_SIZE:
      LayOut(*console);
      break;  // the default needs it too
    case WM_GETMINMAXINFO: {
      const LRESULT result = DefMDIChildProcW(window, message, wparam, lparam);
      LimitSize(*console, *reinterpret_cast<MINMAXINFO*>(lparam));
      return result;
    }
    case WM_SETTINGCHANGE:
      SetLineFont(*console);
      LayOut(*console);
      return 0;
    case WM_TIMER:
      Tick(window);
      return 0;
    case WM_MDIACTIVATE:
      Activate(*console, reinterpret_cast<HWND>(lparam));
      return 0;
    case WM_SETFOCUS:
      SetFocus(console->line_shown ? console->line : console->log);
      break;
    case WM_CLOSE:
      if (!MayCloseConsole(*console)) return 0;
      break;
    case WM_DESTROY:
      KillTimer(window, kTimer);
      break;
    case WM_NCDESTROY:
      return Destroy(console, window, wparam, lparam);
    default:
      break;
  }
  return DefMDIChildProcW(window, message, wparam, lparam);
}

}  // namespace

bool RegisterConsoleClass(Application& app) {
  return RegisterChildClass(app.instance, kConsoleClass, ChildProcedure<ConsoleMessage>);
}

uint64_t ConsoleClock() {
  return GetTickCount64();
}

ConsoleWindow* OpenConsoleOf(const Application& app) {
  return app.console ? ConsoleOf(app.console) : nullptr;
}

bool OpenConsoleWindow(Application& app) {
  if (app.console) return true;
  BOOL maximized = FALSE;
  SendMessageW(app.client, WM_MDIGETACTIVE, 0, reinterpret_cast<LPARAM>(&maximized));
  auto* console = new ConsoleWindow;
  console->app = &app;
  console->restored = maximized != FALSE;
  MDICREATESTRUCTW create{};
  create.szClass = kConsoleClass;
  create.szTitle = L"Portload";
  create.hOwner = app.instance;
  create.x = create.y = kFirstPlace;
  create.cx = create.cy = CW_USEDEFAULT;
  create.lParam = reinterpret_cast<LPARAM>(console);
  bool told = false;
  console->refusal_told = &told;
  SetLastError(ERROR_SUCCESS);
  const auto window =
      reinterpret_cast<HWND>(SendMessageW(app.client, WM_MDICREATE, 0, reinterpret_cast<LPARAM>(&create)));
  if (!window) {  // it took the structure with it
    if (!told) TellNoWindow(app, "Portload");
    return false;
  }
  console->refusal_told = nullptr;
  app.port_connected = [&app] {
    const ConsoleWindow* open = OpenConsoleOf(app);
    return open && open->console.state == ConsoleState::kConnected;
  };
  // A new window takes over that the one before was maximised.
  if (IsZoomed(window)) SendMessageW(app.client, WM_MDIRESTORE, reinterpret_cast<WPARAM>(window), 0);
  GrowToLeastHeight(*console);
  SetFocus(console->line);
  return true;
}

bool TranslateConsoleKey(Application& app, const MSG& message) {
  ConsoleWindow* console = OpenConsoleOf(app);
  if (!console || message.message != WM_KEYDOWN || !IsChild(console->window, message.hwnd)) return false;
  const bool control = GetKeyState(VK_CONTROL) < 0;
  const auto key = static_cast<uint16_t>(message.wParam);
  CommandId command = CommandOfKey(KeyScope::kConsole, key, control ? kCtrl : 0);
  if (command == kNoCommand && message.hwnd == console->log)
    command = CommandOfKey(KeyScope::kConsoleLog, key, control ? kCtrl : 0);
  if (command != kNoCommand) {
    SendMessageW(app.frame, WM_COMMAND, command, 0);
    return true;
  }
  if (message.hwnd == console->line && control && (message.wParam == 'Z' || message.wParam == 'A')) {
    const bool undo = message.wParam == 'Z';
    SendMessageW(console->line, undo ? EM_UNDO : EM_SETSEL, 0, undo ? 0 : -1);
    return true;
  }
  if (message.wParam != VK_TAB || control) return false;
  HWND next = GetNextDlgTabItem(console->window, GetFocus(), GetKeyState(VK_SHIFT) < 0);
  if (next) SetFocus(next);
  return next != nullptr;
}

void ShowCommandLine(ConsoleWindow& console, bool shown) {
  console.line_shown = shown;
  ShowWindow(console.line, shown ? SW_SHOW : SW_HIDE);
  CheckDlgButton(console.panel, IDC_CONSOLE_COMMAND, shown ? BST_CHECKED : BST_UNCHECKED);
  GrowToLeastHeight(console);
  LayOut(console);
  SetFocus(shown ? console.line : console.log);
}

void ChangeConsoleOptions(ConsoleWindow& console, const ConsoleOptions& options) {
  const bool other_view = options.hexadecimal_view != OptionsOf(console.console).hexadecimal_view;
  SetConsoleOptions(console.console, options);
  if (other_view) SetLogFont(console.log, options.hexadecimal_view);
  SaveConsoleSettings(console.app->settings, {options.hexadecimal_view, options.time_stamps,
                                              options.reconnect, static_cast<int>(options.line_ending)});
}

void ShowConsoleState(ConsoleWindow& console) {
  Console& model = console.console;
  const bool connected = model.state == ConsoleState::kConnected, upload = IsUploading(model);
  const bool data = HasConsoleLog(model);
  static constexpr const char* kStates[] = {"Disconnected", "Connected", "Waiting for port"};
  ShowPanelText(console, IDC_CONSOLE_STATE, kStates[static_cast<int>(model.state)]);
  ShowPanelText(console, IDC_CONSOLE_PORT,
                PortStatusText(connected ? model.connected_with : console.app->config));
  ShowPanelText(console, IDC_CONSOLE_FILE, model.upload_name);
  ShowPanelText(console, IDC_CONSOLE_CONNECT,
                model.state == ConsoleState::kDisconnected ? "Connect" : "Disconnect");
  EnableButton(console, IDC_CONSOLE_UPLOAD, connected && !upload);
  EnableButton(console, IDC_CONSOLE_CANCEL, upload && !model.transfer.cancel);
  SendMessageW(PanelControl(console, IDC_CONSOLE_BAR), PBM_SETRANGE32, 0, 1000);
  if (model.state == console.shown_state && upload == console.shown_upload && data == console.shown_data)
    return;
  console.shown_state = model.state;
  console.shown_upload = upload;
  console.shown_data = data;
  console.app->refresh_frame();
}

void Disconnect(ConsoleWindow& console) {
  Application& app = *console.app;
  if (!DisconnectConsole(console.console)) {
    app.exit_code = kDisconnectFailure;
    DestroyWindow(app.frame);
    return;
  }
  ShowConsoleState(console);
}

bool MayCloseConsole(ConsoleWindow& console) {
  Application& app = *console.app;
  if (!AskOkCancel(app, "Do you want to close application ?")) return false;
  Disconnect(console);
  return OpenConsoleOf(app) != nullptr;
}

std::string ConsolePort(const Application& app) {
  const ConsoleWindow* console = OpenConsoleOf(app);
  const bool open = console && console->console.state == ConsoleState::kConnected;
  return open ? console->console.connected_with.port_name : "";
}

bool MayEndConsole(Application& app) {
  const ConsoleWindow* console = OpenConsoleOf(app);
  if (!console || console->console.state != ConsoleState::kConnected) return true;
  return AskOkCancel(app, "Do you want to close application ?");
}

void EndConsole(Application& app) {
  ConsoleWindow* console = OpenConsoleOf(app);
  if (!console) return;
  if (!DisconnectConsole(console->console)) app.exit_code = kDisconnectFailure;
  SendMessageW(app.client, WM_MDIDESTROY, reinterpret_cast<WPARAM>(console->window), 0);
}

}  // namespace vexa
