#include "ui/change.h"

#include "ui/editor_parts.h"

namespace vexa {

bool ChangeDocument(EditorWindow& editor, const std::function<bool()>& operation, bool is_sort) {
  const WaitPointer wait;
  const bool done = operation();
  if (done && RecordChange(editor.history, editor.document, is_sort)) {
    RefreshDocument(editor, Records::kKept);
    RefreshChanged(editor);
  }
  return done;
}

void UndoChange(EditorWindow& editor) {
  if (!Undo(editor.history, editor.document)) return;
  RefreshDocument(editor, Records::kRebuilt);
  RefreshChanged(editor);
}

void RedoChange(EditorWindow& editor) {
  if (!Redo(editor.history, editor.document)) return;
  RefreshDocument(editor, Records::kRebuilt);
  RefreshChanged(editor);
}

void RefreshChanged(EditorWindow& editor) {
  MarkChanged(editor, IsChanged(editor.history));
}

}  // namespace vexa
