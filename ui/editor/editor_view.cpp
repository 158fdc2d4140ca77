// Tree, list and panel of the database window: filled with what is seen.
#include <algorithm>
#include <utility>

#include "core/messages.h"
#include "ui/editor/editor_parts.h"
#include "ui/editor/picture_pane.h"
#include "view/command_table.h"

namespace vexa {

namespace {

bool SameColumns(const std::vector<ListColumn>& left, const std::vector<ListColumn>& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const ListColumn& a, const ListColumn& b) { return a.title == b.title; });
}

void RefreshButton(const EditorWindow& editor, HWND button, uint32_t id, const WindowState& state) {
  const CommandInfo& command = *FindCommand(id);
  const bool enabled = CommandEnabled(command, state.present);
  if (!enabled && GetFocus() == button) SetFocus(editor.tree);
  EnableWindow(button, enabled);
  SendMessageW(button, BM_SETCHECK, CommandChecked(command, state) ? BST_CHECKED : BST_UNCHECKED, 0);
}

void RefreshPanel(EditorWindow& editor) {
  const auto labels = PanelLabels(editor.document, editor.selected);
  for (size_t i = 0; i < labels.size(); ++i) SetText(editor.labels[i], labels[i]);
  RefreshButtons(editor);
  RefreshPicture(editor);
  SetText(editor.bar, editor.rows.title.empty() ? "" : Format(" %s", editor.rows.title.c_str()));
}

COLORREF ColourOf(const EditorWindow& editor, const NodeRef& node) {
  return TextColour(editor.app->colours, NodeColour(editor.document, node), WindowColours());
}

LRESULT DrawTree(EditorWindow& editor, NMTVCUSTOMDRAW& draw) {
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
  if (draw.nmcd.dwDrawStage == CDDS_ITEMPREPAINT && !(draw.nmcd.uItemState & CDIS_SELECTED)) {
    draw.clrText = ColourOf(editor, NodeOf(draw.nmcd.lItemlParam).ref);
  }
  return CDRF_DODEFAULT;
}

// Where dragged rows will come to stand; the list control marks places between icons only.
void DrawInsertMark(const EditorWindow& editor, const NMCUSTOMDRAW& draw) {
  RECT row{};
  if (!ListView_GetItemRect(editor.list, static_cast<int>(draw.dwItemSpec), &row, LVIR_BOUNDS)) return;
  const int thickness = Scaled(editor.window, 2);
  if (editor.drag.mark.behind)
    row.top = row.bottom - thickness;
  else
    row.bottom = row.top + thickness;
  FillRect(draw.hdc, &row, GetSysColorBrush(COLOR_WINDOWTEXT));
}

LRESULT DrawList(EditorWindow& editor, NMLVCUSTOMDRAW& draw) {
  const size_t row = draw.nmcd.dwItemSpec;
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
  if (draw.nmcd.dwDrawStage == CDDS_ITEMPOSTPAINT) DrawInsertMark(editor, draw.nmcd);
  if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || row >= editor.rows.rows.size()) return CDRF_DODEFAULT;
  draw.clrText = ColourOf(editor, editor.rows.rows[row]);
  const DragState& drag = editor.drag;
  return drag.active && drag.mark.fits && static_cast<int>(row) == drag.target_row ? CDRF_NOTIFYPOSTPAINT
                                                                                   : CDRF_DODEFAULT;
}

void GiveTreeItem(EditorWindow& editor, NMTVDISPINFOW& asked) {
  TVITEMW& item = asked.item;
  const TreeNode& shown = NodeOf(item.lParam);
  const NodeRef& node = shown.ref;
  if ((item.mask & TVIF_TEXT) && item.cchTextMax > 0)
    lstrcpynW(item.pszText, Wide(NodeLabel(editor.document, node)).c_str(), item.cchTextMax);
  if (item.mask & TVIF_IMAGE) item.iImage = static_cast<int>(IconOf(node));
  if (item.mask & TVIF_SELECTEDIMAGE) item.iSelectedImage = static_cast<int>(IconOf(node));
  if (item.mask & TVIF_CHILDREN)
    item.cChildren = !shown.children.empty() || HasChildNodes(editor.document, node);
}

void GiveCell(EditorWindow& editor, NMLVDISPINFOW& asked) {
  const auto row = static_cast<size_t>(asked.item.iItem);
  if (asked.item.mask & LVIF_TEXT) {
    editor.cell = Wide(CellText(editor.document, editor.rows, row, static_cast<size_t>(asked.item.iSubItem),
                                editor.app->hexadecimal));
    if (asked.item.cchTextMax > 0) lstrcpynW(asked.item.pszText, editor.cell.c_str(), asked.item.cchTextMax);
  }
  if (asked.item.mask & LVIF_IMAGE) {
    asked.item.iImage =
        row < editor.rows.rows.size() ? static_cast<int>(IconOf(editor.rows.rows[row])) : I_IMAGENONE;
  }
}

// Typing letters in the list goes to the next row whose name (its second column) starts so.
LRESULT FindRow(EditorWindow& editor, const NMLVFINDITEMW& find) {
  if (!(find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) || !find.lvfi.psz || editor.rows.size() == 0)
    return -1;
  const size_t length = wcslen(find.lvfi.psz), count = editor.rows.size();
  const size_t column = editor.rows.details.empty() ? 1 : 0;
  for (size_t i = 0; i < count; ++i) {
    const size_t row = (static_cast<size_t>(std::max(find.iStart, 0)) + i) % count;
    const std::wstring text =
        Wide(CellText(editor.document, editor.rows, row, column, editor.app->hexadecimal));
    if (_wcsnicmp(text.c_str(), find.lvfi.psz, length) == 0) return static_cast<LRESULT>(row);
  }
  return -1;
}

void SelectNode(EditorWindow& editor, const NodeRef& node) {
  editor.selected = node;
  editor.view = ListView::kBelow;
  editor.order = {};
  editor.details = false;
  RefreshList(editor);
  editor.app->refresh_frame();
}

}  // namespace

namespace {

// The keys of tree and list. True when the key is one of them.
bool RunKey(const EditorWindow& editor, WORD key, bool in_list) {
  const uint8_t modifiers = GetKeyState(VK_CONTROL) < 0 ? kCtrl : 0;
  CommandId command = CommandOfKey(KeyScope::kRecords, key, modifiers);
  if (command == kNoCommand && in_list) command = CommandOfKey(KeyScope::kList, key, modifiers);
  if (command == kNoCommand) return false;
  PostMessageW(editor.app->frame, WM_COMMAND, command, 0);
  return true;
}

LRESULT TreeNotify(EditorWindow& editor, NMHDR& header, LPARAM lparam) {
  auto& change = *reinterpret_cast<NMTREEVIEWW*>(lparam);
  switch (header.code) {
    case TVN_GETDISPINFOW:
      GiveTreeItem(editor, *reinterpret_cast<NMTVDISPINFOW*>(lparam));
      return 0;
    case TVN_ITEMEXPANDINGW:
      if (change.action & TVE_EXPAND) FillNode(editor, NodeOf(change.itemNew.lParam));
      return 0;
    case TVN_ITEMEXPANDEDW:
      NodeOf(change.itemNew.lParam).expanded = (change.action & TVE_EXPAND) != 0;
      return 0;
    case TVN_SELCHANGEDW:
      if (editor.settled && change.itemNew.hItem) SelectNode(editor, NodeOf(change.itemNew.lParam).ref);
      return 0;
    case TVN_KEYDOWN:
      // What is taken does not look for an item of that name.
      return RunKey(editor, reinterpret_cast<NMTVKEYDOWN*>(lparam)->wVKey, false);
    case TVN_BEGINDRAGW:
      BeginTreeDrag(editor, change.itemNew.hItem, change.ptDrag);
      return 0;
    case NM_CUSTOMDRAW:
      return DrawTree(editor, *reinterpret_cast<NMTVCUSTOMDRAW*>(lparam));
    default:
      return 0;
  }
}

LRESULT ListNotify(EditorWindow& editor, NMHDR& header, LPARAM lparam) {
  switch (header.code) {
    case LVN_GETDISPINFOW:
      GiveCell(editor, *reinterpret_cast<NMLVDISPINFOW*>(lparam));
      return 0;
    case LVN_ODFINDITEMW:
      return FindRow(editor, *reinterpret_cast<NMLVFINDITEMW*>(lparam));
    case LVN_COLUMNCLICK:
      if (editor.rows.details.empty())
        ReorderList(editor, OrderAfterClick(editor.order, reinterpret_cast<NMLISTVIEW*>(lparam)->iSubItem));
      return 0;
    case LVN_ITEMCHANGED:
    case LVN_ODSTATECHANGED:
      // A control that unselects many rows tells each of them; one look at the last is enough.
      if (editor.settled && !std::exchange(editor.selection_told, true))
        PostMessageW(editor.window, kSelectionChanged, 0, 0);
      return 0;
    case LVN_KEYDOWN:
      RunKey(editor, reinterpret_cast<NMLVKEYDOWN*>(lparam)->wVKey, true);
      return 0;
    case LVN_BEGINDRAG: {
      const auto& drag = *reinterpret_cast<NMLISTVIEW*>(lparam);
      BeginListDrag(editor, drag.iItem, drag.ptAction);
      return 0;
    }
    case NM_DBLCLK:
      if (reinterpret_cast<NMITEMACTIVATE*>(lparam)->iItem >= 0)
        PostMessageW(editor.app->frame, WM_COMMAND, kCmdEdit, 0);
      return 0;
    case NM_CUSTOMDRAW:
      return DrawList(editor, *reinterpret_cast<NMLVCUSTOMDRAW*>(lparam));
    default:
      return 0;
  }
}

}  // namespace

void RefreshButtons(EditorWindow& editor) {
  WindowState state;
  SeeDatabase(state, LookOf(editor));
  for (size_t i = 0; i < editor.view_buttons.size(); ++i)
    RefreshButton(editor, editor.view_buttons[i], kViewCommands[i], state);
  RefreshButton(editor, editor.information, kCmdInformation, state);
}

LRESULT EditorNotify(EditorWindow& editor, NMHDR& header, LPARAM lparam) {
  if (header.code == NM_SETFOCUS) {
    editor.last_focus = header.hwndFrom;
    RefreshButtons(editor);
    editor.app->refresh_frame();
    return 0;
  }
  if (header.hwndFrom == editor.tree) return TreeNotify(editor, header, lparam);
  return header.hwndFrom == editor.list ? ListNotify(editor, header, lparam) : 0;
}

bool RefreshList(EditorWindow& editor) {
  const bool hexadecimal = editor.app->hexadecimal;
  ListModel rows = editor.details ? DetailsOf(editor.document, editor.shown_record, hexadecimal)
                                  : ListBelow(editor.document, editor.selected, editor.view, hexadecimal);
  editor.unfiltered = rows.rows.size();
  const std::string wrong = FilterRows(editor.document, rows, editor.filter, hexadecimal);
  SetText(editor.filter_status,
          editor.details ? "" : FilterStatus(editor.filter, wrong, rows.rows.size(), editor.unfiltered));
  const bool same = SameColumns(rows.columns, editor.rows.columns);
  // Rows selected now must not be selected by their places among the next ones. Wine's control goes through
  // all rows that there are to unselect them; with none left it is done at once.
  ListView_SetItemCountEx(editor.list, 0, 0);
  ListView_SetItemState(editor.list, -1, 0, LVIS_SELECTED);
  if (!same) KeepColumns(editor);
  OrderRows(editor.document, rows, editor.order, hexadecimal);
  editor.rows = std::move(rows);
  if (same)
    ShowRowOrder(editor);
  else
    FillColumns(editor);
  const auto count = static_cast<int>(editor.rows.size());
  ListView_SetItemCountEx(editor.list, count, 0);
  InvalidateRect(editor.list, nullptr, TRUE);
  RefreshPanel(editor);
  return ListView_GetItemCount(editor.list) == count;
}

void ShowView(EditorWindow& editor, ListView view) {
  editor.view = view;
  editor.order = {};
  editor.details = false;
  RefreshList(editor);
  editor.app->refresh_frame();
}

namespace {

// With the focus in a list of records, none of which is selected, nothing is meant: least of all what they
// all belong to.
NodeRef NodeWithoutRows(const EditorWindow& editor) {
  const bool in_list = GetFocus() == editor.list || GetFocus() == editor.filter_field;
  if (in_list && editor.rows.details.empty()) return {};
  return editor.details ? editor.shown_record : editor.selected;
}

}  // namespace

NodeRef CommandNode(const EditorWindow& editor) {
  const int row = ListView_GetNextItem(editor.list, -1, LVNI_SELECTED);
  if (GetFocus() != editor.tree && row >= 0 && static_cast<size_t>(row) < editor.rows.rows.size()) {
    return editor.rows.rows[static_cast<size_t>(row)];
  }
  return NodeWithoutRows(editor);
}

NodeRef ShownNode(const EditorWindow& editor) {
  const NodeRef node = CommandNode(editor);
  return node.kind == NodeKind::kNone ? editor.selected : node;
}

std::vector<NodeRef> CommandRows(const EditorWindow& editor) {
  std::vector<NodeRef> nodes;
  if (GetFocus() != editor.tree) nodes = SelectedRecords(editor);
  if (nodes.empty()) nodes.push_back(NodeWithoutRows(editor));
  return nodes;
}

void LeaveInformation(EditorWindow& editor) {
  const NodeRef record = editor.shown_record;
  editor.details = false;
  RefreshList(editor);
  SelectListRow(editor, record);
  editor.app->refresh_frame();
}

void ShowInformation(EditorWindow& editor) {
  if (editor.details) {
    LeaveInformation(editor);
    return;
  }
  const NodeRef node = ShownNode(editor);
  const bool service = node.kind == NodeKind::kService || node.kind == NodeKind::kFavouriteTvEntry ||
                       node.kind == NodeKind::kFavouriteRadioEntry;
  if (service && ListView_GetSelectedCount(editor.list) > 1) {
    Tell(editor.app->context.messages, Icon::kInformation, "Select any one service record");
    return;
  }
  if (const char* text = UnreadableText(editor.document, node)) {
    Tell(editor.app->context.messages, Icon::kStop, "%s", text);
    return;
  }
  if (DetailsOf(editor.document, node, editor.app->hexadecimal).details.empty()) return;
  editor.shown_record = node;
  editor.details = true;
  RefreshList(editor);
  editor.app->refresh_frame();
}

}  // namespace vexa
