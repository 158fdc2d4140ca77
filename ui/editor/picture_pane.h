// The pane below tree and list: the orbit or a band plan, whichever belongs to the selection. A click selects
// what it hits; the keys go from one thing to the next, and zoom; a drag over a plan, or the wheel, zooms.
#pragma once

#include "ui/editor/editor.h"

namespace vexa {

// Once, before the first window. False when the system refuses.
bool RegisterPictureClass(Application& app);
// The pane, hidden; nullptr when the system makes none.
HWND CreatePicturePane(EditorWindow& editor, int id);
// The document, the selection or the font has changed; nothing while the pane is not shown.
void RefreshPicture(EditorWindow& editor);
// Only the selected record has.
void RefreshPictureSelection(EditorWindow& editor);

}  // namespace vexa
