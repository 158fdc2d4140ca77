#include "ui/frame/room_bar.h"

#include <algorithm>

#include "core/messages.h"
#include "ui/editor/editor.h"

namespace vexa {

void LookAtRoom(Application& app) {
  app.room = {};
  EditorWindow* editor = ActiveEditor(app);
  const OpenSdb* sdb = editor ? SelectedSdb(*editor) : nullptr;
  if (!sdb) return;
  if (!editor->saved_size) editor->saved_size = FileSizeWhenSaved(editor->document);
  app.room = RoomOf(editor->document, static_cast<size_t>(sdb - editor->document.sdbs.data()), app.config,
                    *editor->saved_size);
}

void DrawRoom(const Application& app, const DRAWITEMSTRUCT& item) {
  static constexpr COLORREF kColours[] = {RGB(150, 205, 150), RGB(245, 190, 80), RGB(235, 110, 110)};
  RECT bar = item.rcItem;
  const double share = std::min(app.room.share, 1.0);
  bar.right = bar.left + static_cast<LONG>(share * (bar.right - bar.left));
  HBRUSH brush = CreateSolidBrush(kColours[static_cast<size_t>(app.room.level)]);
  FillRect(item.hDC, &bar, brush);
  DeleteObject(brush);
  RECT rest = item.rcItem;
  rest.left = bar.right;
  FillRect(item.hDC, &rest, GetSysColorBrush(COLOR_BTNFACE));
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, GetSysColor(COLOR_BTNTEXT));
  HGDIOBJ old = SelectObject(item.hDC, app.status_font);
  RECT text = item.rcItem;
  DrawTextW(item.hDC, Wide(app.room.text).c_str(), -1, &text,
            DT_SINGLELINE | DT_VCENTER | DT_CENTER | DT_NOPREFIX);
  SelectObject(item.hDC, old);
}

void ShowRoom(const Application& app) {
  if (app.room.text.empty()) return;
  static constexpr const char* kVerdicts[] = {
      "It fits.", "It fits, and is nearly full.",
      "It does not fit: delete what is too many, or choose another configuration."};
  TellWhy(app.context.messages, app.room.level == RoomLevel::kOver ? Icon::kWarning : Icon::kInformation,
          app.room.lines + "\n" + kVerdicts[static_cast<size_t>(app.room.level)],
          "How full the receiver would be with this SDB.");
}

}  // namespace vexa
