#include "ui/controls/filter_field.h"

namespace vexa {

namespace {

constexpr UINT_PTR kFilterSubclass = 1;

bool IsTaken(HWND field, WPARAM key) {
  return LeavesFilter(key) && (key != VK_ESCAPE || GetWindowTextLengthW(field) > 0);
}

// `data` is the list.
LRESULT CALLBACK FilterProcedure(HWND field, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                                 DWORD_PTR data) noexcept {
  if (message == WM_GETDLGCODE) {
    const auto* asked = reinterpret_cast<const MSG*>(lparam);
    const bool taken = asked && asked->message == WM_KEYDOWN && IsTaken(field, asked->wParam);
    return DefSubclassProc(field, message, wparam, lparam) | (taken ? DLGC_WANTMESSAGE : 0);
  }
  // The character that follows the key would be answered with a beep.
  if (message == WM_CHAR && (wparam == VK_ESCAPE || wparam == VK_RETURN)) return 0;
  if (message != WM_KEYDOWN || !IsTaken(field, wparam))
    return DefSubclassProc(field, message, wparam, lparam);
  if (wparam == VK_ESCAPE) SetWindowTextW(field, L"");  // of which the dialog is told as of typing
  SendMessageW(GetParent(field), WM_NEXTDLGCTL, static_cast<WPARAM>(data), TRUE);
  return 0;
}

}  // namespace

bool LeavesFilter(WPARAM key) {
  return key == VK_ESCAPE || key == VK_RETURN || key == VK_DOWN;
}

void MakeFilterField(HWND field, HWND list) {
  SetWindowSubclass(field, FilterProcedure, kFilterSubclass, reinterpret_cast<DWORD_PTR>(list));
}

}  // namespace vexa
