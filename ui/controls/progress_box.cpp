#include "ui/controls/progress_box.h"

#include "ui/controls/resource.h"

namespace vexa {

namespace {

INT_PTR CALLBACK ProgressProcedure(HWND, UINT message, WPARAM, LPARAM) noexcept {
  return message == WM_INITDIALOG;
}

constexpr int kBarSteps = 1000;

}  // namespace

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
