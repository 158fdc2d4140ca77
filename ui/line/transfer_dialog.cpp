#include "ui/line/transfer_dialog.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "config/settings.h"
#include "serial/relay.h"
#include "ui/controls/guard.h"
#include "ui/controls/help.h"
#include "ui/line/console.h"
#include "ui/line/line_strip_control.h"
#include "ui/line/transfer_resource.h"

namespace vexa {

namespace {

constexpr UINT kWork = WM_APP + 1;  // the relay has work
constexpr UINT_PTR kDialogTimer = 1;
constexpr UINT kRefresh = 200;  // ms between looks at bar and figures
constexpr UINT_PTR kCancelSubclass = 1;

struct TransferWindow {
  TransferWindow(Application& application, TransferOrder what) : app(application), order(std::move(what)) {}

  Application& app;
  TransferOrder order;
  HWND dialog = nullptr;
  // What the job's threads write.
  std::atomic<HWND> target{nullptr};
  std::atomic<uint64_t> bytes{0}, position{0}, range{0};
  Relay relay{[this] {
    if (HWND window = target) PostMessageW(window, kWork, 0, 0);
  }};
  TransferSession session;
  // The dialog's own.
  StripControl strip;  // its record is filled by the job's threads
  TransferMeter meter;
  std::string figures, status;
  uint64_t shown_range = 0;
  int running = 0;  // calls of the relay's Run, which boxes nest
  bool pressed = false, ended = false;
  bool clicked = false;  // the mouse presses Cancel
  bool by_key = false;   // its access key presses it, which the button takes for the mouse
  bool asking = false;   // whether to cancel
  bool begins_again = false;
  std::vector<OptionSet> sets;  // that are offered
};

void Show(TransferWindow& window, int id, const std::string& text) {
  window.relay.Post([&window, id, text] { SetText(GetDlgItem(window.dialog, id), text); });
}

void ShowStatusLine(TransferWindow& window) {
  const std::string text = TransferStatusLine(window.session);
  if (text.empty() || text == window.status) return;
  window.status = text;
  SetText(GetDlgItem(window.dialog, IDC_TRANSFER_STATUS), text);
}

void Connect(TransferWindow& window) {
  TransferSession& session = window.session;
  Transfer& transfer = session.transfer;
  const Messages messages = RelayedMessages(window.relay, window.app.context.messages);
  session.port.messages = WatchedPortMessages(session.port, session.port_gone, messages);
  session.port.tap = [&window](bool sent, std::span<const uint8_t> bytes) {
    window.bytes += bytes.size();
    window.strip.record.Add(sent, bytes);
  };
  transfer.context = window.app.context;
  transfer.context.messages = messages;
  transfer.context.progress = {};
  transfer.files = window.order.files;
  transfer.subject = window.order.subject;
  session.said = window.order.status;
  session.console_port = ConsolePort(window.app);
  transfer.region_files = window.order.region_files;
  transfer.view.title = [&window](const std::string& text) {
    if (!window.order.title) window.relay.Post([&window, text] { SetText(window.dialog, text); });
  };
  transfer.view.status = [&window](const std::string&) {
    window.relay.Post([&window] { ShowStatusLine(window); });
  };
  transfer.view.result = [&window](const std::string& text) { Show(window, IDC_TRANSFER_RESULT, text); };
  transfer.view.button = [&window](const std::string& text) { Show(window, IDCANCEL, text); };
  transfer.view.range = [&window](uint64_t total) { window.range = total; };
  transfer.view.position = [&window](uint64_t position) { window.position = position; };
  transfer.view.press_cancel = [&window] { window.relay.Post([&window] { window.pressed = true; }); };
  if (window.order.decode) {
    transfer.decode = [&window](bool crc_failed) {
      return window.order.decode(window.session.transfer.context, crc_failed);
    };
  }
}

bool HasAnswered(const TransferWindow& window) {
  return window.session.transfer.xon || window.session.transfer.packets_moved > 0;
}

void ShowCopyBox(const TransferWindow& window) {
  const std::string text = CopyBoxText(window.order.copied, HasAnswered(window));
  HWND box = GetDlgItem(window.dialog, IDC_TRANSFER_COPY);
  if (WindowText(box) != text) SetText(box, text);
}

void ShowProgress(TransferWindow& window) {
  ShowStatusLine(window);
  ShowCopyBox(window);
  RefreshStrip(GetDlgItem(window.dialog, IDC_TRANSFER_LINE), window.strip);
  HWND sets = GetDlgItem(window.dialog, IDC_TRANSFER_SET);
  if (HasAnswered(window) && IsWindowEnabled(sets)) {
    if (GetFocus() == sets) SetFocus(GetDlgItem(window.dialog, IDCANCEL));
    EnableWindow(sets, FALSE);
  }
  const uint64_t range = window.range, position = window.position;
  const auto bounded = [](uint64_t value) {
    return static_cast<LPARAM>(std::min<uint64_t>(value, std::numeric_limits<int>::max()));
  };
  if (range != window.shown_range) {
    window.shown_range = range;
    SendDlgItemMessageW(window.dialog, IDC_TRANSFER_BAR, PBM_SETRANGE32, 0, bounded(range));
  }
  SendDlgItemMessageW(window.dialog, IDC_TRANSFER_BAR, PBM_SETPOS, static_cast<WPARAM>(bounded(position)), 0);
  if (range == 0) return;
  window.meter.Sample(static_cast<double>(GetTickCount64()) / 1000, window.bytes, position, range);
  const std::string text = window.meter.Text(window.session.transfer.packets_repeated);
  if (text == window.figures) return;
  window.figures = text;
  SetText(GetDlgItem(window.dialog, IDC_TRANSFER_FIGURES), text);
}

void EndTransfer(TransferWindow& window) {
  if (window.ended) return;
  window.ended = true;
  if (window.dialog) {
    KillTimer(window.dialog, kDialogTimer);
    EnableWindow(GetDlgItem(window.dialog, IDCANCEL), FALSE);
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  }
  window.relay.Close();
  CancelTransfer(window.session);
  window.target = nullptr;
  if (window.dialog) EndDialog(window.dialog, IDCANCEL);
}

// A key, or a click beside the button, that meets the dialog by chance does not end a transfer. False: it
// goes on, or has ended.
bool MayCancel(TransferWindow& window) {
  if (window.clicked) return true;
  ++window.running;
  window.asking = true;
  const bool yes = window.app.context.messages.ask("Do you want to end the transfer ?", "", false);
  window.asking = false;
  --window.running;
  if (!window.pressed) return yes;
  EndTransfer(window);
  return false;
}

// A box of a job may be up, with this called from its message loop: the end waits for its answer.
void DoWork(TransferWindow& window) {
  ++window.running;
  window.relay.Run();
  --window.running;
  if (!window.pressed) return;
  if (window.running == 0) return EndTransfer(window);
  // Whether to cancel is no question any more.
  if (window.asking) PostMessageW(GetLastActivePopup(window.dialog), WM_COMMAND, IDNO, 0);
}

// Notes that the mouse presses the button, which tells the dialog so before the message ends.
LRESULT CALLBACK CancelProcedure(HWND button, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                                 DWORD_PTR data) noexcept {
  auto& window = *reinterpret_cast<TransferWindow*>(data);
  if (message == WM_NCDESTROY) RemoveWindowSubclass(button, CancelProcedure, id);
  if (message == BM_CLICK) window.by_key = true;
  // The button sends itself other messages before it tells the dialog.
  const bool lets_go = message == WM_LBUTTONUP;
  if (lets_go) window.clicked = !window.by_key;
  const LRESULT result = DefSubclassProc(button, message, wparam, lparam);
  if (lets_go) window.clicked = false;
  if (message == BM_CLICK) window.by_key = false;
  return result;
}

// The dialog ends below `control` when nothing further down is offered.
void EndAbove(HWND dialog, int control) {
  RECT place{}, size{};
  GetWindowRect(GetDlgItem(dialog, control), &place);
  GetWindowRect(dialog, &size);
  POINT edge{0, place.top};
  ScreenToClient(dialog, &edge);
  RECT client{};
  GetClientRect(dialog, &client);
  SetWindowPos(dialog, nullptr, 0, 0, size.right - size.left, size.bottom - size.top - client.bottom + edge.y,
               SWP_NOMOVE | SWP_NOZORDER);
}

void ShowChoices(TransferWindow& window) {
  HWND dialog = window.dialog;
  const TransferSettings settings = LoadTransferSettings(window.app.settings);
  const bool offers = window.order.offers_choices;
  if (offers) window.sets = LoadOptionSets(window.app.settings);
  const std::pair<int, bool> boxes[] = {{IDC_TRANSFER_VERIFY, settings.verify},
                                        {IDC_TRANSFER_COPY, settings.keep_copy}};
  for (const auto& [id, ticked] : boxes) {
    CheckDlgButton(dialog, id, offers && ticked ? BST_CHECKED : BST_UNCHECKED);
    ShowWindow(GetDlgItem(dialog, id), offers ? SW_SHOW : SW_HIDE);
  }
  for (const int id : {IDC_TRANSFER_SET_TITLE, IDC_TRANSFER_SET})
    ShowWindow(GetDlgItem(dialog, id), window.sets.empty() ? SW_HIDE : SW_SHOW);
  for (const OptionSet& set : window.sets) {
    SendDlgItemMessageW(dialog, IDC_TRANSFER_SET, CB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(Wide(set.name).c_str()));
  }
  if (window.sets.empty()) EndAbove(dialog, offers ? IDC_TRANSFER_SET : IDC_TRANSFER_VERIFY);
}

void KeepBoxes(TransferWindow& window) {
  TransferSettings settings = LoadTransferSettings(window.app.settings);
  settings.verify = IsDlgButtonChecked(window.dialog, IDC_TRANSFER_VERIFY) == BST_CHECKED;
  settings.keep_copy = IsDlgButtonChecked(window.dialog, IDC_TRANSFER_COPY) == BST_CHECKED;
  SaveTransferSettings(window.app.settings, settings);
  ShowCopyBox(window);
  window.begins_again = CallsForCopy(settings, window.order.copied, HasAnswered(window));
  if (window.begins_again) EndTransfer(window);
}

// Only a line on which nobody has answered is given up for another.
void ChooseSet(TransferWindow& window) {
  HWND list = GetDlgItem(window.dialog, IDC_TRANSFER_SET);
  const auto place = static_cast<size_t>(SendMessageW(list, CB_GETCURSEL, 0, 0));
  if (place >= window.sets.size() || HasAnswered(window)) return;
  Application& app = window.app;
  ++window.running;
  window.begins_again =
      ChooseOptionSet(app.context, app.settings, window.sets[place], app.configuration_file, app.config);
  --window.running;
  if (window.begins_again || window.pressed) EndTransfer(window);
}

const char* TitleOf(const TransferOrder& order) {
  if (order.title) return order.title;
  return order.job == TransferJob::kDownload ? kDownloadTitle : kUploadTitle;
}

void OpenTransfer(TransferWindow& window, HWND dialog) {
  window.dialog = dialog;
  SetText(dialog, TitleOf(window.order));
  ShowChoices(window);
  ShowCopyBox(window);
  ShowStatusLine(window);
  SetWindowSubclass(GetDlgItem(dialog, IDCANCEL), CancelProcedure, kCancelSubclass,
                    reinterpret_cast<DWORD_PTR>(&window));
  SetTimer(dialog, kDialogTimer, kRefresh, nullptr);
  // From now on the jobs' work is announced here; what came before waits in the relay.
  window.target = dialog;
  PostMessageW(dialog, kWork, 0, 0);
}

void Command(TransferWindow& window, int id, int code) {
  if (id == IDC_TRANSFER_LINE && code == STN_CLICKED)
    SetText(GetDlgItem(window.dialog, IDC_TRANSFER_STEP),
            StepUnderPointer(GetDlgItem(window.dialog, IDC_TRANSFER_LINE), window.strip));
  if (id == IDC_TRANSFER_SET && code == CBN_SELCHANGE && window.running == 0) ChooseSet(window);
  if ((id == IDC_TRANSFER_VERIFY || id == IDC_TRANSFER_COPY) && window.running == 0) KeepBoxes(window);
  if (id == IDHELP) ShowHelp(window.app, HelpPage(IDD_TRANSFER));
  if (id == IDCANCEL && window.running == 0 && MayCancel(window)) EndTransfer(window);
}

// True: it was the dialog's.
bool TransferMessage(TransferWindow& window, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
      Command(window, LOWORD(wparam), HIWORD(wparam));
      return true;
    case WM_DRAWITEM:
      DrawStrip(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam), window.strip);
      return true;
    case WM_HELP:
      ShowHelp(window.app, HelpPage(IDD_TRANSFER));
      return true;
    case WM_TIMER:
      ShowProgress(window);
      if (IsPortMissed(window.session) && window.running == 0) EndTransfer(window);
      return true;
    case kWork:
      DoWork(window);
      return true;
    default:
      return false;
  }
}

INT_PTR CALLBACK TransferProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) noexcept {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(dialog, DWLP_USER, lparam);
    OpenTransfer(*reinterpret_cast<TransferWindow*>(lparam), dialog);
    return TRUE;
  }
  auto* window = reinterpret_cast<TransferWindow*>(GetWindowLongPtrW(dialog, DWLP_USER));
  return window && Guarded(true, [&] { return TransferMessage(*window, message, wparam, lparam); });
}

}  // namespace

StepEnd RunTransferDialog(Application& app, TransferOrder order, ReceiverFacts& receiver) {
  auto owned = std::make_unique<TransferWindow>(app, std::move(order));
  TransferWindow& window = *owned;
  Connect(window);
  std::optional<Busy> busy(app);
  const bool started = StartTransfer(window.session, app.config, window.order.job);
  if (started) {
    const INT_PTR end = DialogBoxParamW(app.instance, MAKEINTRESOURCEW(IDD_TRANSFER), OwnerWindow(app),
                                        TransferProcedure, reinterpret_cast<LPARAM>(&window));
    const std::error_code why = LastSystemError();
    EndTransfer(window);  // a dialog that could not be made, or was ended from elsewhere
    if (end == -1) TellNoWindow(app, TitleOf(window.order), why);
  }
  busy.reset();
  TransferSession& session = window.session;
  if (started && IsPortMissed(session)) {
    TellWhy(app.context.messages, Icon::kStop, session.gone_reason,
            "%s is not available any more.\nThe transfer was ended.", app.config.port_name.c_str());
  }
  app.outcome = TransferOutcomeText(session);
  PostMessageW(app.frame, kTransferEnded, 0, 0);
  const bool again = window.begins_again;
  const bool done = window.order.job == TransferJob::kDownload ? session.transfer.receive_outcome == 1
                                                               : session.outcome == 1;
  const uint64_t packets = session.transfer.packets_moved;
  receiver.unopened = !started;
  if (window.order.job != TransferJob::kDownload) {
    receiver.uploaded += packets;
    receiver.sent = done;
  }
  if (session.left_behind) static_cast<void>(owned.release());  // a thread still uses it
  return EndOfUpload(started && again, packets, started && done);
}

}  // namespace vexa
