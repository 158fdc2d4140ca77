// Pictures of windows as they stand on the screen.
#pragma once

#include <windows.h>

#include "platform/files.h"

namespace vexa {

// Writes what the screen shows of the window, with its frame, as a bitmap file of 24 bits a dot. False when
// it could not.
bool TakePicture(HWND window, const Path& bitmap);

}  // namespace vexa
