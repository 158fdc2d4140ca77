// The console's commands.
#include "ui/controls/file_dialogs.h"
#include "ui/controls/form.h"
#include "ui/line/console.h"
#include "ui/line/console_log.h"
#include "ui/line/console_resource.h"
#include "ui/line/line_commands.h"

namespace vexa {

namespace {

ConsoleWindow& Current(Application& app) {
  return *OpenConsoleOf(app);
}

void Portload(Application& app) {
  OpenConsoleWindow(app);
}

void ToggleConnection(Application& app) {
  ConsoleWindow& console = Current(app);
  if (console.console.state != ConsoleState::kDisconnected) return Disconnect(console);
  ConnectConsole(console.console, app.config);
  ShowConsoleState(console);
}

void Upload(Application& app) {
  FileQuestion question{"Open", {{"UART File ( *.URT )", "*.urt"}}, "urt"};
  if (app.config.image_entry_count > 0) question.filters.push_back({"BIN File ( *.BIN )", "*.bin"});
  const auto chosen = AskOpenFile(app.frame, question);
  // The port may have gone meanwhile.
  if (!chosen || !OpenConsoleOf(app) || !CanUpload(Current(app).console)) return;
  const auto file = ConsoleUploadFile(app.context, *chosen, app.config);
  if (!file) return;
  StartConsoleUpload(Current(app).console, *file, Utf8FromPath(*chosen));
  ShowConsoleState(Current(app));
}

void CancelUpload(Application& app) {
  CancelConsoleUpload(Current(app).console, ConsoleClock());
  ShowConsoleState(Current(app));
}

void SaveLog(Application& app) {
  Console& console = Current(app).console;
  if (!HasConsoleLog(console)) {
    Tell(app.context.messages, Icon::kWarning, "No data in the buffer to save log file");
    return;
  }
  const auto path = AskSaveFile(app.frame, {"Save as log file", {{"Log File ( *.txt )", "*.txt"}}, "txt"});
  if (path) SaveConsoleLog(console, *path);
}

void Clear(Application& app) {
  ClearConsoleLog(Current(app).console);
  ShowConsoleState(Current(app));
}

void CloseCommand(Application& app) {
  SendMessageW(app.console, WM_CLOSE, 0, 0);
}

void FindAgain(Application& app) {
  ConsoleWindow& console = Current(app);
  if (FindInLog(console.log, console.searched, console.match_case, !console.log_cut)) return;
  const auto found = [&console] {
    const WaitPointer wait;
    return FindInWholeLog(console.console, console.searched, console.match_case);
  }();
  if (found) {
    ShowFound(console.log, *found);
    console.log_cut = true;
    return;
  }
  Tell(app.context.messages, Icon::kInformation, "\"%s\" is not in the log.", console.searched.c_str());
}

void Find(Application& app) {
  ConsoleWindow& console = Current(app);
  FormActions actions;
  actions.open = [&](Form& form) {
    form.SetText(IDC_CONSOLE_FIND_TEXT, console.searched);
    form.Check(IDC_CONSOLE_FIND_CASE, console.match_case);
    form.Focus(IDC_CONSOLE_FIND_TEXT);
  };
  // Stays open, so that the next place is one key away.
  actions.accept = [&](Form& form) {
    console.searched = form.Text(IDC_CONSOLE_FIND_TEXT);
    console.match_case = form.Checked(IDC_CONSOLE_FIND_CASE);
    if (!console.searched.empty()) FindAgain(app);
    form.Focus(IDC_CONSOLE_FIND_TEXT);
    return false;
  };
  RunForm(app, IDD_CONSOLE_FIND, actions);
}

void FindNext(Application& app) {
  Current(app).searched.empty() ? Find(app) : FindAgain(app);
}

void Copy(Application& app) {
  CopyLogSelection(Current(app).log);
}

void SelectAll(Application& app) {
  SelectWholeLog(Current(app).log);
}

template <bool ConsoleOptions::*option>
void Toggle(Application& app) {
  ConsoleWindow& console = Current(app);
  ConsoleOptions options = OptionsOf(console.console);
  options.*option = !(options.*option);
  ChangeConsoleOptions(console, options);
}

template <LineEnding ending>
void ChooseEnding(Application& app) {
  ConsoleWindow& console = Current(app);
  ConsoleOptions options = OptionsOf(console.console);
  options.line_ending = ending;
  ChangeConsoleOptions(console, options);
}

constexpr CommandRow kConsoleCommands[] = {
    {kCmdPortload, Portload},
    {kCmdConnect, ToggleConnection},
    {kCmdConsoleUpload, Upload},
    {kCmdConsoleCancel, CancelUpload},
    {kCmdConsoleSaveLog, SaveLog},
    {kCmdConsoleClear, Clear},
    {kCmdConsoleClose, CloseCommand},
    {kCmdConsoleFind, Find},
    {kCmdConsoleFindNext, FindNext},
    {kCmdConsoleHexadecimalView, Toggle<&ConsoleOptions::hexadecimal_view>},
    {kCmdConsoleHexadecimalInput, Toggle<&ConsoleOptions::hexadecimal_input>},
    {kCmdConsoleTimeStamps, Toggle<&ConsoleOptions::time_stamps>},
    {kCmdConsoleReconnect, Toggle<&ConsoleOptions::reconnect>},
    {kCmdConsoleSendCr, ChooseEnding<LineEnding::kCarriageReturn>},
    {kCmdConsoleSendLf, ChooseEnding<LineEnding::kLineFeed>},
    {kCmdConsoleSendCrLf, ChooseEnding<LineEnding::kBoth>},
    {kCmdConsoleSendNothing, ChooseEnding<LineEnding::kNone>},
    {kCmdConsoleCopy, Copy},
    {kCmdConsoleSelectAll, SelectAll},
};

}  // namespace

std::span<const CommandRow> ConsoleCommands() {
  return kConsoleCommands;
}

void SeeConsole(WindowState& state, const Application& app) {
  ConsoleWindow* console = OpenConsoleOf(app);
  if (!console) return;
  const ConsoleState line = console->console.state;
  state.console = OptionsOf(console->console);
  state.port_wanted = line != ConsoleState::kDisconnected;
  state.port_open = line == ConsoleState::kConnected;
  state.console_active =
      reinterpret_cast<HWND>(SendMessageW(app.client, WM_MDIGETACTIVE, 0, 0)) == console->window;
  if (!state.console_active) return;
  const bool upload = IsUploading(console->console);
  state.present |= kNeedsConsole | (upload ? kNeedsNothing : kNeedsNoConsoleUpload);
  if (state.port_open) state.present |= kNeedsConnection;
  if (HasLogSelection(console->log)) state.present |= kNeedsLogSelection;
  if (upload && !console->console.transfer.cancel) state.present |= kNeedsConsoleUpload;
}

}  // namespace vexa
