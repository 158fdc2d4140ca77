#include "ui/controls/windows_api.h"

namespace vexa {

std::string WindowText(HWND window) {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(static_cast<size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return Utf8(text);
}

void SetText(HWND window, const std::string& utf8) {
  SetWindowTextW(window, Wide(utf8).c_str());
}

std::wstring SystemFile(const std::wstring& name) {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetSystemDirectoryW(path.data(), MAX_PATH));
  return path + L'\\' + name;
}

int Scaled(HWND window, int length) {
  HDC screen = GetDC(window);
  const int dots = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(window, screen);
  // Where windows of one program may stand on screens of different resolution, the window knows its own.
  using GetDpi = UINT(WINAPI*)(HWND);
  static const auto get_dpi = reinterpret_cast<GetDpi>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  const UINT own = get_dpi ? get_dpi(window) : 0;
  return MulDiv(length, own ? static_cast<int>(own) : dots, 96);
}

SystemColours WindowColours() {
  HIGHCONTRASTW asked{};
  asked.cbSize = sizeof asked;
  const bool high = SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof asked, &asked, 0) &&
                    (asked.dwFlags & HCF_HIGHCONTRASTON) != 0;
  return {high, GetSysColor(COLOR_WINDOWTEXT), GetSysColor(COLOR_WINDOW)};
}

HFONT MakeFont(HWND window) {
  LOGFONTW font{};
  font.lfHeight = -Scaled(window, 11);
  font.lfWeight = FW_NORMAL;
  font.lfCharSet = DEFAULT_CHARSET;
  font.lfQuality = DEFAULT_QUALITY;
  wcscpy(font.lfFaceName, L"MS Sans Serif");
  return CreateFontIndirectW(&font);
}

void RenewFont(HFONT& font, HWND window, const std::vector<HWND>& controls) {
  HFONT old = font;
  font = MakeFont(window);
  for (HWND control : controls) SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
  if (old) DeleteObject(old);
}

}  // namespace vexa
