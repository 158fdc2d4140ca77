// Drawings (view/drawing.h) on a window: shapes in the colours of the pages, the rest in the system's.
#pragma once

#include "ui/controls/windows_api.h"
#include "view/drawing.h"
#include "view/picture.h"

namespace vexa {

// Pixels a unit at the window's resolution.
double DotsPerUnit(HWND window);

// A picture that is made in memory, in the window's background colour at first, and then shown at once.
class OffscreenPicture {
 public:
  OffscreenPicture(HDC target, const RECT& area);
  ~OffscreenPicture();
  OffscreenPicture(const OffscreenPicture&) = delete;
  OffscreenPicture& operator=(const OffscreenPicture&) = delete;

  HDC device() const { return device_; }
  void Show() const;

 private:
  HDC target_, device_;
  RECT area_;
  HBITMAP bitmap_;
  HGDIOBJ before_;
};

// Paints the drawing from the left top corner of `area` on, `fit` pixels a unit. `marked` is the item that
// gets a frame; kNoItem: none. The area's background is the caller's.
void PaintDrawing(HDC device, const RECT& area, const Drawing& drawing, const Fit& fit, size_t marked);

}  // namespace vexa
