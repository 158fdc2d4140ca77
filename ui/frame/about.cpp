// The dialog about the program.
#include "core/messages.h"
#include "ui/frame/about_resource.h"
#include "ui/frame/frame.h"

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

}  // namespace

void ShowAbout(Application& app) {
  DialogBoxParamW(app.instance, MAKEINTRESOURCEW(IDD_ABOUT), OwnerWindow(app), AboutProcedure, 0);
}

}  // namespace vexa
