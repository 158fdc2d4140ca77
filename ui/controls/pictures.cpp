#include "ui/controls/pictures.h"

#include <array>

#include "view/legible.h"

namespace vexa {

namespace {

constexpr int kPictureSizes[] = {16, 20, 24, 32, 48};
constexpr COLORREF kClear = RGB(255, 0, 255);

struct Scale {
  int place = 0, factor = 1;
};

// The strip that fills `side` best when each of its dots becomes `factor` dots a side: other factors would
// make some dots of a drawing wider than their neighbours.
Scale ScaleFor(int side) {
  Scale best;
  for (int place = 0; place < static_cast<int>(std::size(kPictureSizes)); ++place) {
    const Scale scale = {place, side / kPictureSizes[place]};
    if (scale.factor * kPictureSizes[place] >= best.factor * kPictureSizes[best.place]) best = scale;
  }
  return best;
}

HBITMAP Enlarged(HBITMAP strip, int width, int height, int factor) {
  HDC screen = GetDC(nullptr);
  HDC from = CreateCompatibleDC(screen), to = CreateCompatibleDC(screen);
  HBITMAP large = CreateCompatibleBitmap(screen, width * factor, height * factor);
  HGDIOBJ old_from = SelectObject(from, strip), old_to = SelectObject(to, large);
  SetStretchBltMode(to, COLORONCOLOR);
  StretchBlt(to, 0, 0, width * factor, height * factor, from, 0, 0, width, height, SRCCOPY);
  SelectObject(from, old_from);
  SelectObject(to, old_to);
  DeleteDC(from);
  DeleteDC(to);
  ReleaseDC(nullptr, screen);
  return large;
}

// The strips have palettes.
void MakeLegible(HBITMAP strip, Surface surface) {
  HDC memory = CreateCompatibleDC(nullptr);
  HGDIOBJ old = SelectObject(memory, strip);
  std::array<RGBQUAD, 256> colours{};
  const UINT count = GetDIBColorTable(memory, 0, static_cast<UINT>(colours.size()), colours.data());
  const COLORREF under = GetSysColor(surface.under), text = GetSysColor(surface.text);
  for (RGBQUAD& colour : colours) {
    const COLORREF shown = RGB(colour.rgbRed, colour.rgbGreen, colour.rgbBlue);
    if (shown != kClear && IsLostOn(shown, under))
      colour = {GetBValue(text), GetGValue(text), GetRValue(text), 0};
  }
  SetDIBColorTable(memory, 0, count, colours.data());
  SelectObject(memory, old);
  DeleteDC(memory);
}

}  // namespace

HIMAGELIST LoadPictures(HINSTANCE instance, int strip, HWND window, Surface surface, HIMAGELIST before) {
  const Scale scale = ScaleFor(Scaled(window, kPictureSizes[0]));
  const int side = kPictureSizes[scale.place] * scale.factor;
  auto bitmap = static_cast<HBITMAP>(
      LoadImageW(instance, MAKEINTRESOURCEW(strip + scale.place), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
  BITMAP facts{};
  if (!bitmap || !GetObjectW(bitmap, sizeof facts, &facts)) return nullptr;
  MakeLegible(bitmap, surface);
  HBITMAP enlarged = Enlarged(bitmap, facts.bmWidth, facts.bmHeight, scale.factor);
  int width = 0, height = 0;
  const bool fits = before && ImageList_GetIconSize(before, &width, &height) && width == side;
  if (fits) ImageList_RemoveAll(before);
  HIMAGELIST pictures =
      fits ? before : ImageList_Create(side, side, ILC_COLOR24 | ILC_MASK, facts.bmWidth / facts.bmHeight, 0);
  if (pictures && enlarged) ImageList_AddMasked(pictures, enlarged, kClear);
  DeleteObject(enlarged);
  DeleteObject(bitmap);
  return pictures;
}

}  // namespace vexa
