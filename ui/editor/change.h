// Changes to a document in its window: every one can be undone, and the window follows.
#pragma once

#include <functional>

#include "ui/editor/editor.h"

namespace vexa {

// Runs `operation` on the window's document. When it returns true a step is recorded for Undo, and tree,
// list, panel and caption follow; opened nodes and the selection stay. When it returns false the document
// must be as before. Returns what `operation` returned.
bool ChangeDocument(EditorWindow& editor, const std::function<bool()>& operation, bool is_sort = false);

// The same for an operation that reaches records anywhere: what it changed is selected afterwards, as an undo
// does it.
bool ChangeAndShow(EditorWindow& editor, const std::function<bool()>& operation);

// Take the last step back, and bring the last one that was taken back again; tree, list, panel and caption
// follow. Nothing when there is none.
void UndoChange(EditorWindow& editor);
void RedoChange(EditorWindow& editor);
void RevertChanges(EditorWindow& editor);  // to the database as it was opened, which is a step of its own

// Records `changed` in the caption as the history sees it.
void RefreshChanged(EditorWindow& editor);

}  // namespace vexa
