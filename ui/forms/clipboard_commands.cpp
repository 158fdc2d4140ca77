// Cut, copy and paste of records, and their copies by dragging.
#include <algorithm>

#include "core/messages.h"
#include "import/csv_table.h"
#include "platform/text.h"
#include "ui/editor/change.h"
#include "ui/editor/editor_parts.h"
#include "ui/forms/form_commands.h"
#include "view/clip.h"
#include "view/common_form.h"

namespace vexa {

namespace {

UINT ClipFormat() {
  return RegisterClipboardFormatW(L"Vexa Editor Records");
}

// The clipboard, while the object lives.
class OpenedClipboard {
 public:
  explicit OpenedClipboard(HWND owner) : open_(OpenClipboard(owner) != 0) {}
  ~OpenedClipboard() {
    if (open_) CloseClipboard();
  }
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;
  explicit operator bool() const { return open_; }

  bool Put(UINT format, const void* data, size_t size) const {
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    void* target = memory ? GlobalLock(memory) : nullptr;
    if (target) {
      memcpy(target, data, size);
      GlobalUnlock(memory);
      if (SetClipboardData(format, memory)) return true;
    }
    if (memory) GlobalFree(memory);
    return false;
  }
  Bytes Get(UINT format) const {
    HANDLE memory = GetClipboardData(format);
    const void* data = memory ? GlobalLock(memory) : nullptr;
    if (!data) return {};
    const auto* bytes = static_cast<const uint8_t*>(data);
    Bytes content(bytes, bytes + GlobalSize(memory));
    GlobalUnlock(memory);
    return content;
  }

 private:
  bool open_;
};

void TellNoClipboard(Application& app, const std::error_code& why) {
  TellWhy(app.context.messages, Icon::kStop, why.message() + " Try again when no other program uses it.",
          "The clipboard could not be used.");
}

bool CopyRows(Application& app, const EditorWindow& editor, const std::vector<NodeRef>& rows) {
  const WaitPointer wait;
  const auto clip = CopyNodes(app.context, editor.document, rows);
  if (!clip) return false;
  const std::wstring text = Wide(TextOfNodes(editor.document, rows));
  std::error_code why;
  {  // it is closed before anything is told
    const OpenedClipboard clipboard(app.frame);
    if (!clipboard || !EmptyClipboard() || !clipboard.Put(ClipFormat(), clip->data(), clip->size()))
      why = LastSystemError();
    else if (!text.empty())
      clipboard.Put(CF_UNICODETEXT, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  }
  if (why) {
    TellNoClipboard(app, why);
    return false;
  }
  app.outcome = Format("%zu copied", rows.size());
  app.refresh_frame();
  return true;
}

void Copy(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  CopyRows(app, editor, CommandRows(editor));
}

void Cut(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const std::vector<NodeRef> rows = CommandRows(editor);
  if (!CopyRows(app, editor, rows)) return;
  if (!ChangeDocument(editor, [&] { return DeleteNodes(app.context.messages, editor.document, rows); }))
    return;
  app.outcome = Format("%zu cut", rows.size());
  app.refresh_frame();
}

// Text that a spreadsheet gave back: rows of a table, which name their records by number.
void PasteText(Application& app, EditorWindow& editor, const std::wstring& text) {
  const OpenSdb* sdb = SelectedSdb(editor);
  if (!sdb) return;
  ChangeByTable(editor, [&] {
    return UpdateFromTableText(app.context.messages, "The clipboard", Utf8(text), NamesPage(editor.document),
                               *sdb->database, [](const std::string&) { return MissingRows::kKeep; });
  });
}

void Paste(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  Bytes clip;
  std::wstring text;
  {
    const OpenedClipboard clipboard(app.frame);
    if (!clipboard) return TellNoClipboard(app, LastSystemError());
    clip = clipboard.Get(ClipFormat());
    const Bytes wide = clip.empty() ? clipboard.Get(CF_UNICODETEXT) : Bytes();
    text.assign(reinterpret_cast<const wchar_t*>(wide.data()), wide.size() / sizeof(wchar_t));
    text.resize(wcsnlen(text.c_str(), text.size()));
  }
  if (clip.empty() && !text.empty()) return PasteText(app, editor, text);
  PasteClip(editor, editor.selected, LookOf(editor).row, clip);
}

constexpr CommandRow kClipboardCommands[] = {{kCmdCut, Cut}, {kCmdCopy, Copy}, {kCmdPaste, Paste}};

}  // namespace

void ChangeByTable(EditorWindow& editor, const std::function<std::optional<TableOutcome>()>& update) {
  std::optional<TableOutcome> outcome;
  if (!ChangeAndShow(editor, [&] { return (outcome = update()).has_value(); })) return;
  editor.app->outcome = TableOutcomeText(*outcome);
  editor.app->refresh_frame();
  TellLeftLists(editor.app->context.messages, outcome->left_lists);
}

std::span<const CommandRow> ClipboardCommands() {
  return kClipboardCommands;
}

}  // namespace vexa
