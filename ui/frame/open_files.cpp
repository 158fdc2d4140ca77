// Opening database files in windows: one window a file, and none while a dialog is open.
#include "core/bin_file.h"
#include "ui/editor/editor.h"
#include "ui/frame/frame.h"
#include "ui/frame/import_files.h"
#include "ui/frame/menus.h"

namespace vexa {

bool IsOpen(const Application& app, const Path& path) {
  return EditorOfFile(app, path) != nullptr;
}

bool OpenDatabaseFile(Application& app, const Path& path) {
  if (const EditorWindow* open = EditorOfFile(app, path)) {
    SendMessageW(app.client, WM_MDIACTIVATE, reinterpret_cast<WPARAM>(open->window), 0);
    RememberFile(app, path);
    return true;
  }
  Document document;
  const WaitPointer wait;
  // Taken before the file is read: what is written meanwhile counts as another program's.
  const std::optional<FileState> state = StateOf(path);
  const bool opened = OpenBin(app.context, path, document);
  if (!opened && document.sdbs.empty() && document.ubis.empty()) return false;
  // A part of a file must not take its place.
  const bool whole = opened && document.read_whole;
  EditorWindow* editor = OpenEditor(app, std::move(document), whole ? path : Path(), false);
  if (!editor) return false;
  if (whole) editor->file_state = state;
  RememberFile(app, path);
  return true;
}

void RememberFile(Application& app, const Path& path) {
  AddRecentFile(app.recent, Utf8FromPath(path));
  RefreshRecentMenus(app);
}

void OpenWhenFree(Application& app, const std::vector<Path>& paths) {
  app.waiting.insert(app.waiting.end(), paths.begin(), paths.end());
  OpenWaiting(app);
}

void OpenWaiting(Application& app) {
  // A message about one of the files lets this come again, which then finds the frame disabled.
  while (!app.waiting.empty() && app.busy == 0 && IsWindowEnabled(app.frame)) {
    const Path path = app.waiting.front();
    app.waiting.erase(app.waiting.begin());
    if (ListFormatOf(path)) {
      ImportListInWindow(app, path);
    } else {
      OpenDatabaseFile(app, path);
    }
  }
}

}  // namespace vexa
