#include "ui/controls/child_window.h"

#include "ui/controls/resource.h"

namespace vexa {

bool RegisterChildClass(HINSTANCE instance, const wchar_t* name, WNDPROC procedure) {
  WNDCLASSEXW child{};
  child.cbSize = sizeof child;
  child.style = CS_HREDRAW | CS_VREDRAW;
  child.lpfnWndProc = procedure;
  child.cbWndExtra = sizeof(LONG_PTR);
  child.hInstance = instance;
  child.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_VEXA));
  child.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  child.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  child.lpszClassName = name;
  return RegisterClassExW(&child) != 0;
}

}  // namespace vexa
