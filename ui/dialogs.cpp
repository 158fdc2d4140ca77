#include "ui/dialogs.h"

#include "core/messages.h"
#include "ui/resource.h"

namespace vexa {

namespace {

INT_PTR CALLBACK AboutProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM) noexcept {
  switch (message) {
    case WM_INITDIALOG:
      SetText(GetDlgItem(dialog, IDC_ABOUT_PROJECT), Format("Project ID - %s", kProjectId));
      SetText(GetDlgItem(dialog, IDC_ABOUT_VERSION),
              Format("Version - %d.%d.%d", kVersionMajor, kVersionMinor, kVersionBuild));
      SetText(GetDlgItem(dialog, IDC_ABOUT_DATE), Format("Build Date - %s", __DATE__));
      SetText(GetDlgItem(dialog, IDC_ABOUT_TIME), Format("Build Time - %s", __TIME__));
      return TRUE;
    case WM_COMMAND:
      if (LOWORD(wparam) != IDOK && LOWORD(wparam) != IDCANCEL) return FALSE;
      EndDialog(dialog, LOWORD(wparam));
      return TRUE;
    default:
      return FALSE;
  }
}

INT_PTR CALLBACK ProgressProcedure(HWND, UINT message, WPARAM, LPARAM) noexcept {
  return message == WM_INITDIALOG;
}

constexpr int kBarSteps = 1000;

}  // namespace

void ShowAbout(Application& app) {
  DialogBoxParamW(app.instance, MAKEINTRESOURCEW(IDD_ABOUT), OwnerWindow(app), AboutProcedure, 0);
}

ProgressBox::ProgressBox(Application& app, const std::string& text, const std::string& title)
    : busy_(app), owner_(OwnerWindow(app)), context_(app.context) {
  window_ = CreateDialogParamW(app.instance, MAKEINTRESOURCEW(IDD_PROGRESS), owner_, ProgressProcedure, 0);
  SetText(window_, title);
  SetText(GetDlgItem(window_, IDC_PROGRESS_TEXT), text);
  SendDlgItemMessageW(window_, IDC_PROGRESS_BAR, PBM_SETRANGE32, 0, kBarSteps);
  EnableWindow(owner_, FALSE);
  ShowWindow(window_, SW_SHOW);
  UpdateWindow(window_);
  context_.progress.range = [this](uint64_t total) {
    total_ = total;
    ShowPosition(0);
  };
  context_.progress.position = [this](uint64_t position) { ShowPosition(position); };
}

ProgressBox::~ProgressBox() {
  // First the owner, so that it becomes the active window again and not another program's.
  EnableWindow(owner_, TRUE);
  DestroyWindow(window_);
}

void ProgressBox::ShowPosition(uint64_t position) {
  const int step =
      total_ == 0 ? 0
                  : static_cast<int>(static_cast<double>(position) * kBarSteps / static_cast<double>(total_));
  if (step == shown_) return;
  shown_ = step;
  SendDlgItemMessageW(window_, IDC_PROGRESS_BAR, PBM_SETPOS, static_cast<WPARAM>(step), 0);
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace vexa
