// Dragging records in the tree and the list of the database window to another place.

#include "core/messages.h"
#include "ui/editor/change.h"
#include "ui/editor/editor_parts.h"
#include "view/clip.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

constexpr UINT_PTR kScrollTimer = 1;
constexpr UINT kScrollTime = 80;  // milliseconds between two lines
constexpr int kEdge = 18;         // at 96 dots an inch, from the edge of a control inwards

POINT ToControl(const EditorWindow& editor, HWND control, POINT at) {
  MapWindowPoints(editor.window, control, &at, 1);
  return at;
}

bool IsOver(const EditorWindow& editor, HWND control, POINT at) {
  RECT area{};
  GetClientRect(control, &area);
  return PtInRect(&area, ToControl(editor, control, at)) != 0;
}

HTREEITEM ItemUnder(const EditorWindow& editor, POINT at) {
  if (!IsOver(editor, editor.tree, at)) return nullptr;
  TVHITTESTINFO hit{};
  hit.pt = ToControl(editor, editor.tree, at);
  return TreeView_HitTest(editor.tree, &hit);
}

int RowUnder(const EditorWindow& editor, POINT at) {
  if (!IsOver(editor, editor.list, at)) return -1;
  LVHITTESTINFO hit{};
  hit.pt = ToControl(editor, editor.list, at);
  return ListView_HitTest(editor.list, &hit);
}

NodeRef TargetOf(EditorWindow& editor) {
  const DragState& drag = editor.drag;
  if (drag.target_item) return NodeOfItem(editor, drag.target_item);
  if (drag.target_row >= 0 && static_cast<size_t>(drag.target_row) < editor.rows.rows.size())
    return editor.rows.rows[static_cast<size_t>(drag.target_row)];
  return {};
}

void ShowTargetRow(EditorWindow& editor, int row, bool is_target) {
  RECT place{};
  if (row < 0) return;
  ListView_SetItemState(editor.list, row, is_target ? LVIS_DROPHILITED : 0u, LVIS_DROPHILITED);
  // Its insertion mark, too.
  if (ListView_GetItemRect(editor.list, row, &place, LVIR_BOUNDS)) InvalidateRect(editor.list, &place, TRUE);
}

void ShowTarget(EditorWindow& editor, HTREEITEM item, int row) {
  DragState& drag = editor.drag;
  if (item == drag.target_item && row == drag.target_row) return;
  ImageList_DragShowNolock(FALSE);
  ShowTargetRow(editor, drag.target_row, false);
  drag.target_item = item;
  drag.target_row = row;
  const NodeRef target = TargetOf(editor);
  drag.mark = DropMarkOf(drag.rows, target);
  TreeView_SelectDropTarget(editor.tree, item);
  SendMessageW(editor.tree, TVM_SETINSERTMARK, drag.mark.behind,
               reinterpret_cast<LPARAM>(drag.mark.fits && !drag.mark.onto ? item : nullptr));
  ShowTargetRow(editor, row, true);
  InvalidateRect(editor.tree, nullptr, FALSE);  // not every system takes the old mark off by itself
  UpdateWindow(editor.tree);
  UpdateWindow(editor.list);
  ImageList_DragShowNolock(TRUE);
}

void ScrollAtEdge(const EditorWindow& editor, HWND control, POINT at) {
  if (!IsOver(editor, control, at)) return;
  RECT area{};
  GetClientRect(control, &area);
  const auto y = ToControl(editor, control, at).y;
  int top = 0;
  if (control == editor.list) {
    RECT header{};
    GetClientRect(ListView_GetHeader(control), &header);
    top = static_cast<int>(header.bottom);
  }
  const int edge = Scaled(editor.window, kEdge);
  if (y >= top + edge && y < area.bottom - edge) return;
  ImageList_DragShowNolock(FALSE);
  SendMessageW(control, WM_VSCROLL, y < top + edge ? SB_LINEUP : SB_LINEDOWN, 0);
  // What was moved on the screen may have had a dragged picture over it.
  RedrawWindow(control, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
  ImageList_DragShowNolock(TRUE);
}

void FindTarget(EditorWindow& editor) {
  const POINT at = editor.drag.at;
  HTREEITEM item = ItemUnder(editor, at);
  ShowTarget(editor, item, item ? -1 : RowUnder(editor, at));
}

// Leaves the drag; what was under the cursor.
NodeRef Finish(EditorWindow& editor) {
  DragState& drag = editor.drag;
  const NodeRef target = TargetOf(editor);
  KillTimer(editor.window, kScrollTimer);
  ShowTarget(editor, nullptr, -1);
  ImageList_DragLeave(editor.window);
  ImageList_EndDrag();
  if (drag.image) ImageList_Destroy(drag.image);
  drag.image = nullptr;
  drag.active = false;
  if (GetCapture() == editor.window) ReleaseCapture();
  return target;
}

bool CanDrag(const EditorWindow& editor, const std::vector<NodeRef>& rows) {
  return editor.app->busy == 0 && !rows.empty() && NodeTakes(rows[0].kind, NodeAction::kMove);
}

void Drop(EditorWindow& editor, const std::vector<NodeRef>& rows, const NodeRef& target, bool control) {
  switch (DropKindOf(rows, target, control)) {
    case DropKind::kNothing:
      return;
    case DropKind::kCopy:
      if (const auto clip = CopyNodes(editor.app->context, editor.document, rows))
        PasteClip(editor, target, {}, *clip);
      return;
    case DropKind::kToList:
      return AddToGroup(editor, rows, target.index, ListDroppedOn(rows, target));
    case DropKind::kMove:
      ChangeDocument(editor,
                     [&] { return DropNodes(editor.app->context.messages, editor.document, rows, target); });
  }
}

// In the status line, and in a box when some of them can never be added there.
void TellAddition(Application& app, const GroupAddition& addition) {
  const std::string text = AdditionText(addition);
  app.outcome = text;
  app.refresh_frame();
  if (addition.unfit > 0) Tell(app.context.messages, Icon::kInformation, "%s", text.c_str());
}

}  // namespace

void AddToGroup(EditorWindow& editor, const std::vector<NodeRef>& rows, uint32_t group,
                std::optional<GroupKind> list) {
  const Messages& messages = editor.app->context.messages;
  std::optional<GroupAddition> addition;
  ChangeDocument(editor, [&] {
    addition = AddRowsToGroup(messages, editor.document, rows, group, list);
    return addition && addition->added > 0;
  });
  editor.app->outcome.clear();
  editor.app->refresh_frame();
  if (addition) TellAddition(*editor.app, *addition);
}

void PasteClip(EditorWindow& editor, const NodeRef& tree, const NodeRef& row, std::span<const uint8_t> clip) {
  const Context& context = editor.app->context;
  std::optional<Pasted> pasted;
  const bool done = ChangeAndShow(editor, [&] {
    pasted = PasteNodes(context, editor.document, tree, row, clip);
    return pasted.has_value() && pasted->records > 0;
  });
  if (pasted && pasted->addition) return TellAddition(*editor.app, *pasted->addition);
  if (!done) return;
  editor.app->outcome = Format("%zu pasted", pasted->records);
  editor.app->refresh_frame();
  if (pasted->other_lnbs > 0)
    Tell(context.messages, Icon::kInformation,
         "Satellites whose LNB is set otherwise here, as this SDB has none that is set as theirs was: %zu",
         pasted->other_lnbs);
  if (pasted->renumbered > 0)
    Tell(context.messages, Icon::kInformation,
         "Services that got another program number, as theirs was taken on the carrier: %zu",
         pasted->renumbered);
}

void BeginTreeDrag(EditorWindow& editor, HTREEITEM item, POINT at) {
  const std::vector<NodeRef> rows = {NodeOfItem(editor, item)};
  if (!CanDrag(editor, rows)) return;
  TreeView_SelectItem(editor.tree, item);
  StartDrag(editor, rows, TreeView_CreateDragImage(editor.tree, item), at, editor.tree);
}

void BeginListDrag(EditorWindow& editor, int row, POINT at) {
  std::vector<NodeRef> rows;
  for (const size_t place : SelectedRows(editor)) {
    if (place < editor.rows.rows.size()) rows.push_back(editor.rows.rows[place]);
  }
  if (!CanDrag(editor, rows)) return;
  if (!MayDragRows(editor.app->context.messages, rows, GetKeyState(VK_CONTROL) < 0)) return;
  POINT corner{};
  StartDrag(editor, rows, ListView_CreateDragImage(editor.list, row, &corner), at, editor.list);
}

void StartDrag(EditorWindow& editor, const std::vector<NodeRef>& rows, HIMAGELIST image, POINT at,
               HWND source) {
  DragState& drag = editor.drag;
  drag = {};
  drag.rows = rows;
  drag.image = image;
  drag.active = true;
  const int picture = static_cast<int>(IconOf(rows[0]));
  // Where the control makes no image of the row, its picture alone is dragged.
  if (!image || !ImageList_BeginDrag(image, 0, -8, -8))
    ImageList_BeginDrag(editor.app->tree_pictures, picture, -8, -8);
  MapWindowPoints(source, editor.window, &at, 1);
  drag.at = at;
  ImageList_DragEnter(editor.window, static_cast<int>(at.x), static_cast<int>(at.y));
  SetCapture(editor.window);
  SetTimer(editor.window, kScrollTimer, kScrollTime, nullptr);
}

bool DragMessage(EditorWindow& editor, UINT message, WPARAM wparam, LPARAM lparam) {
  DragState& drag = editor.drag;
  if (!drag.active) return false;
  switch (message) {
    case WM_MOUSEMOVE:
      drag.at = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
      ImageList_DragMove(static_cast<int>(drag.at.x), static_cast<int>(drag.at.y));
      FindTarget(editor);
      return true;
    case WM_TIMER:
      if (wparam != kScrollTimer) return false;
      SendMessageW(editor.tips, TTM_POP, 0, 0);  // one that was on its way
      ScrollAtEdge(editor, editor.tree, drag.at);
      ScrollAtEdge(editor, editor.list, drag.at);
      FindTarget(editor);
      return true;
    case WM_LBUTTONUP: {
      const std::vector<NodeRef> rows = drag.rows;
      const NodeRef target = Finish(editor);
      Drop(editor, rows, target, (wparam & MK_CONTROL) != 0);
      return true;
    }
    case WM_RBUTTONDOWN:
    case WM_CAPTURECHANGED:
      CancelDrag(editor);
      return true;
    default:
      return false;
  }
}

bool TakeDragKey(EditorWindow& editor, const MSG& message) {
  const bool down = message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN;
  if (!down || !editor.drag.active) return false;
  if (message.wParam == VK_ESCAPE) CancelDrag(editor);
  return true;
}

void CancelDrag(EditorWindow& editor) {
  if (editor.drag.active) Finish(editor);
}

}  // namespace vexa
