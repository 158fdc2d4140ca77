// What the database window and the console share: windows in the frame's client area that own a structure.
#pragma once

#include "ui/controls/guard.h"

namespace vexa {

// The window procedure that lets `handle` answer. Where memory runs out in it the message counts as answered,
// and a window that is being made is not.
template <LRESULT (*handle)(HWND window, UINT message, WPARAM wparam, LPARAM lparam)>
LRESULT CALLBACK ChildProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) noexcept {
  return Guarded(LRESULT{message == WM_CREATE ? -1 : 0},
                 [&] { return handle(window, message, wparam, lparam); });
}

// The class of such windows, with room for a pointer to the structure at 0. False when the system refuses.
bool RegisterChildClass(HINSTANCE instance, const wchar_t* name, WNDPROC procedure);

}  // namespace vexa
