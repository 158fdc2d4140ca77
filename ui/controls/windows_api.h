// The window system, and the few helpers every window needs: UTF-8 to its UTF-16 and back, sizes at its
// resolution.
#pragma once

#include <windows.h>
// After windows.h.
#include <commctrl.h>
#include <windowsx.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/windows/wide.h"
#include "view/legible.h"

namespace vexa {

// The text of a control, or the title of a window, as UTF-8; of a control that is another process's, nothing.
std::string WindowText(HWND window);
// Replaces it.
void SetText(HWND window, const std::string& utf8);
// A length given at 96 dots an inch, at the resolution of the window's screen.
int Scaled(HWND window, int length);
// The present colours of windows with text.
SystemColours WindowColours();
// "MS Sans Serif" at the window's resolution; the caller deletes it.
HFONT MakeFont(HWND window);
// Gives the controls that font at the window's present resolution; the one in `font` goes, the new one is in
// its place.
void RenewFont(HFONT& font, HWND window, const std::vector<HWND>& controls);

// The full path of a file in the system's folder: a file of that name beside the program, or in the current
// folder, is never taken instead.
std::wstring SystemFile(const std::wstring& name);

// The pointer of a program at work, for as long as the object lives.
class WaitPointer {
 public:
  WaitPointer() : before_(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
  ~WaitPointer() { SetCursor(before_); }
  WaitPointer(const WaitPointer&) = delete;
  WaitPointer& operator=(const WaitPointer&) = delete;

 private:
  HCURSOR before_;
};

}  // namespace vexa
