// A field that filters a list: the keys that lead out of it.
#pragma once

#include "ui/controls/windows_api.h"

namespace vexa {

// Esc, Enter and Down go to the list; Esc empties the field before.
bool LeavesFilter(WPARAM key);
// Lets the field of a dialog do so itself. Esc in an empty field, and Enter elsewhere, are the dialog's.
void MakeFilterField(HWND field, HWND list);

}  // namespace vexa
