#include "ui/editor/change.h"

#include <new>

#include "ui/editor/editor_parts.h"

namespace vexa {

namespace {

// What breaks off for want of memory leaves the document as the history last saw it.
template <class Work>
bool Recovered(EditorWindow& editor, const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    RestoreState(editor.history, editor.document);
    ShowAnew(editor);
    RefreshChanged(editor);
    throw;
  }
}

void ShowStep(EditorWindow& editor, bool (*step)(UndoHistory&, Document&)) {
  Recovered(editor, [&] {
    NoteContents(editor);
    const DocumentMarks before = MarksOf(editor.document);
    if (!step(editor.history, editor.document)) return false;
    RefreshDocument(editor, Records::kRebuilt);
    RefreshChanged(editor);
    ShowChanges(editor, ChangesSince(before, editor.document));
    return true;
  });
}

}  // namespace

bool ChangeDocument(EditorWindow& editor, const std::function<bool()>& operation, bool is_sort) {
  const WaitPointer wait;
  return Recovered(editor, [&] {
    const bool done = operation();
    if (done && RecordChange(editor.history, editor.document, is_sort)) {
      RefreshDocument(editor, Records::kKept);
      RefreshChanged(editor);
    }
    return done;
  });
}

bool ChangeAndShow(EditorWindow& editor, const std::function<bool()>& operation) {
  const DocumentMarks before = MarksOf(editor.document);
  if (!ChangeDocument(editor, operation)) return false;
  ShowChanges(editor, ChangesSince(before, editor.document));
  return true;
}

void UndoChange(EditorWindow& editor) {
  ShowStep(editor, Undo);
}

void RedoChange(EditorWindow& editor) {
  ShowStep(editor, Redo);
}

void RevertChanges(EditorWindow& editor) {
  ShowStep(editor, RevertToFirst);
}

void RefreshChanged(EditorWindow& editor) {
  editor.saved_size.reset();
  MarkChanged(editor, IsChanged(editor.history));
}

}  // namespace vexa
