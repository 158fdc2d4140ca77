// Drawings (view/drawing.h) on a window: shapes in the system's colours, lines in the window's font.
#pragma once

#include "ui/controls/windows_api.h"
#include "view/drawing.h"
#include "view/picture.h"

namespace vexa {

// Paints the drawing from the left top corner of `area` on, `fit` pixels a unit. `marked` is the item that
// gets a frame; kNoItem: none. The area's background is the caller's.
void PaintDrawing(HDC device, const RECT& area, const Drawing& drawing, const Fit& fit, size_t marked);

}  // namespace vexa
