// Saving and closing a database window.
#include "core/bin_file.h"
#include "core/messages.h"
#include "core/replace_file.h"
#include "ui/controls/file_dialogs.h"
#include "ui/editor/editor.h"
#include "view/target_file.h"

namespace vexa {

namespace {

bool SaveTo(EditorWindow& editor, const Path& path) {
  const bool own = !editor.path.empty() && SameFile(editor.path, path);
  if (own && !MayReplaceFile(editor.app->context.messages, path, editor.file_state)) return false;
  const WaitPointer wait;
  const auto size = SaveBin(editor.app->context, editor.document, path, editor.version);
  if (!size) return false;
  editor.path = path;
  editor.file_state = StateOf(path);
  MarkSaved(editor.history);
  ForgetKept(editor);
  editor.changed = false;
  RefreshCaption(editor);
  editor.app->refresh_frame();
  // The user's work is saved whatever its size; the receiver's limit is told afterwards.
  CheckBinSize(editor.app->context, path, *size);
  return true;
}

}  // namespace

uint64_t NumberOfKept(const EditorWindow& editor) {
  return static_cast<uint64_t>(reinterpret_cast<UINT_PTR>(editor.window));
}

void ForgetKept(const EditorWindow& editor) {
  if (editor.app->recovery) editor.app->recovery->Forget(NumberOfKept(editor));
}

bool SaveEditor(EditorWindow& editor) {
  return editor.path.empty() ? SaveEditorAs(editor) : SaveTo(editor, editor.path);
}

bool SaveEditorAs(EditorWindow& editor) {
  const bool imported = editor.path.empty() && !editor.imported_from.empty();
  const Path proposed = imported ? NamedAfter(editor.imported_from, ".bin") : editor.path;
  const auto path = AskSaveFile(editor.app->frame, {"Save", kBinFilters, "bin"}, proposed);
  if (!path) return false;
  if (const EditorWindow* other = EditorOfFile(*editor.app, *path); other && other != &editor) {
    TellWhy(editor.app->context.messages, Icon::kStop,
            Utf8FromPath(*path) + ". Close its window first, or choose another name.",
            "This file is open in another window.");
    return false;
  }
  if (!SaveTo(editor, *path)) return false;
  editor.app->remember_file(*path);
  return true;
}

bool MayClose(EditorWindow& editor) {
  if (!editor.changed) return true;
  SendMessageW(editor.app->client, WM_MDIACTIVATE, reinterpret_cast<WPARAM>(editor.window), 0);
  switch (AskYesNoCancel(*editor.app, "Changes made are not saved. Do you want to save ?")) {
    case Answer::kYes:
      return SaveEditor(editor);
    case Answer::kNo:
      return true;
    default:
      return false;
  }
}

}  // namespace vexa
