// The columns of the database window's list, and the way to a record.
#include <algorithm>

#include "ui/editor_parts.h"

namespace vexa {

namespace {

std::vector<int>& KeptWidths(EditorWindow& editor) {
  return editor.app->window.columns[static_cast<size_t>(ColumnSetOf(editor.rows))];
}

// Children are there once their parent is opened.
HTREEITEM ItemAlong(const EditorWindow& editor, const TreePath& place) {
  HTREEITEM item = nullptr;
  for (const uint32_t position : place) {
    if (item) TreeView_Expand(editor.tree, item, TVE_EXPAND);
    item = item ? TreeView_GetChild(editor.tree, item) : TreeView_GetRoot(editor.tree);
    for (uint32_t i = 0; item && i < position; ++i) item = TreeView_GetNextSibling(editor.tree, item);
    if (!item) return nullptr;
  }
  return item;
}

bool SelectRow(EditorWindow& editor, const NodeRef& node) {
  const auto& rows = editor.rows.rows;
  const auto found = std::find(rows.begin(), rows.end(), node);
  if (found == rows.end()) return false;
  const int row = static_cast<int>(found - rows.begin());
  ListView_SetItemState(editor.list, -1, 0, LVIS_SELECTED);
  ListView_SetItemState(editor.list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  ListView_EnsureVisible(editor.list, row, FALSE);
  return true;
}

}  // namespace

void FillColumns(EditorWindow& editor) {
  HWND header = ListView_GetHeader(editor.list);
  for (int count = Header_GetItemCount(header); count > 0; --count)
    ListView_DeleteColumn(editor.list, count - 1);
  const std::vector<int>& kept = KeptWidths(editor);
  const auto& columns = editor.rows.columns;
  for (size_t i = 0; i < columns.size(); ++i) {
    std::wstring title = Wide(columns[i].title);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
    column.fmt = columns[i].right ? LVCFMT_RIGHT : LVCFMT_LEFT;
    column.cx = Scaled(editor.window, kept.size() == columns.size() ? kept[i] : columns[i].width);
    column.pszText = title.data();
    column.iSubItem = static_cast<int>(i);
    SendMessageW(editor.list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
  }
}

void KeepColumnWidths(EditorWindow& editor) {
  const size_t count = editor.rows.columns.size();
  if (count == 0) return;
  const int hundred = std::max(1, Scaled(editor.window, 100));
  std::vector<int> widths;
  for (size_t i = 0; i < count; ++i) {
    const int width = ListView_GetColumnWidth(editor.list, static_cast<int>(i));
    widths.push_back(MulDiv(width, 100, hundred));
  }
  KeptWidths(editor) = std::move(widths);
}

void ShowRowOrder(EditorWindow& editor) {
  HWND header = ListView_GetHeader(editor.list);
  for (int i = 0; i < static_cast<int>(editor.rows.columns.size()); ++i) {
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
    item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
    if (i == editor.order.column) item.fmt |= editor.order.descending ? HDF_SORTDOWN : HDF_SORTUP;
    SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
  }
}

bool ShowRecord(EditorWindow& editor, const TreePath& place, bool focus) {
  const auto nodes = NodesAlong(editor.document, place);
  if (place.empty() || nodes.size() != place.size()) return false;
  TreePath parent = place;
  if (place.size() > 1) parent.pop_back();
  const HTREEITEM item = ItemAlong(editor, parent);
  if (!item) return false;
  TreeView_SelectItem(editor.tree, item);
  TreeView_EnsureVisible(editor.tree, item);
  // It may have been selected before, with another view or in another order.
  if (editor.view != ListView::kBelow || editor.details) ShowView(editor, ListView::kBelow);
  const bool selected = place.size() > 1 && SelectRow(editor, nodes.back());
  if (focus) SetFocus(selected ? editor.list : editor.tree);
  return true;
}

}  // namespace vexa
