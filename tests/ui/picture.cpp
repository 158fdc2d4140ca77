#include "tests/ui/picture.h"

#include <cstring>

namespace vexa {

bool TakePicture(HWND window, const Path& bitmap) {
  RECT place{};
  if (!GetWindowRect(window, &place)) return false;
  const int width = place.right - place.left, height = place.bottom - place.top;
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = 24;
  header.biSizeImage = static_cast<DWORD>((width * 3 + 3) / 4 * 4 * height);
  BITMAPINFO information{};
  information.bmiHeader = header;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  void* dots = nullptr;
  HBITMAP copy = CreateDIBSection(screen, &information, DIB_RGB_COLORS, &dots, nullptr, 0);
  bool done = copy != nullptr;
  if (done) {
    const auto old = SelectObject(memory, copy);
    done = BitBlt(memory, 0, 0, width, height, screen, place.left, place.top, SRCCOPY) != 0;
    GdiFlush();
    BITMAPFILEHEADER file{};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof file + sizeof header;
    file.bfSize = file.bfOffBits + header.biSizeImage;
    Bytes bytes(file.bfSize);
    std::memcpy(bytes.data(), &file, sizeof file);
    std::memcpy(bytes.data() + sizeof file, &header, sizeof header);
    std::memcpy(bytes.data() + file.bfOffBits, dots, header.biSizeImage);
    done = done && WriteWholeFile(bitmap, bytes) == WriteResult::kDone;
    SelectObject(memory, old);
    DeleteObject(copy);
  }
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return done;
}

}  // namespace vexa
