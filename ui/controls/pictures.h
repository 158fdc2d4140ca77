// The pictures of toolbar, tree and lists, at the resolution of a window.
#pragma once

#include "ui/controls/windows_api.h"

namespace vexa {

// The system colours, as numbers of GetSysColor, of what pictures stand on and of the text there.
struct Surface {
  int under, text;
};
// A list of the strip's pictures, 16 dots a side at 96 dots an inch; the caller destroys it. `strip` is the
// resource number of the strip in its first size. A colour that would be lost becomes that of the text. The
// list `before`, which windows may show, gets the pictures itself where they have its size.
HIMAGELIST LoadPictures(HINSTANCE instance, int strip, HWND window, Surface surface,
                        HIMAGELIST before = nullptr);

}  // namespace vexa
