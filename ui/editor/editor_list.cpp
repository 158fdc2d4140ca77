// The columns of the database window's list, and the way to a record.
#include <algorithm>

#include "ui/editor/editor_parts.h"

namespace vexa {

namespace {

std::vector<int>& KeptWidths(EditorWindow& editor) {
  return editor.app->window.columns[static_cast<size_t>(ColumnSetOf(editor.rows))];
}
std::vector<int>& KeptOrder(EditorWindow& editor) {
  return editor.app->window.column_orders[static_cast<size_t>(ColumnSetOf(editor.rows))];
}

TreeNode* NodeAlong(EditorWindow& editor, const TreePath& place) {
  TreeNode* node = &editor.root;
  for (const uint32_t position : place) {
    if (node != &editor.root) ExpandNode(editor, *node);
    if (position >= node->children.size()) return nullptr;
    node = node->children[position].get();
  }
  return node;
}

constexpr UINT_PTR kListSubclass = 1;
// From here on unselecting the rows one by one is felt.
constexpr int kManySelected = 500;

bool MovesSelection(WPARAM key) {
  return (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_SPACE;
}

// A press that the control would answer by unselecting all rows, one after the other.
bool LeavesSelection(HWND list, WPARAM keys, LPARAM place) {
  if (keys & (MK_CONTROL | MK_SHIFT)) return false;
  LVHITTESTINFO hit{};
  hit.pt = {GET_X_LPARAM(place), GET_Y_LPARAM(place)};
  const int row = ListView_HitTest(list, &hit);
  return row < 0 || !(ListView_GetItemState(list, row, LVIS_SELECTED) & LVIS_SELECTED);
}

// Wine's control marks each row that it unselects for painting; without painting the whole list is marked
// once.
LRESULT CALLBACK ListProcedure(HWND list, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                               DWORD_PTR data) noexcept {
  auto& editor = *reinterpret_cast<EditorWindow*>(data);
  const bool presses = message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN;
  const bool changes = message == WM_LBUTTONUP || (message == WM_KEYDOWN && MovesSelection(wparam));
  if ((!presses && !changes) || ListView_GetSelectedCount(list) < kManySelected)
    return DefSubclassProc(list, message, wparam, lparam);
  if (presses) {
    if (LeavesSelection(list, wparam, lparam)) SelectRows(editor, [](size_t) { return false; });
    return DefSubclassProc(list, message, wparam, lparam);
  }
  SendMessageW(list, WM_SETREDRAW, FALSE, 0);
  const LRESULT result = DefSubclassProc(list, message, wparam, lparam);
  SendMessageW(list, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(list, nullptr, FALSE);
  return result;
}

}  // namespace

void QuickenList(EditorWindow& editor) {
  SetWindowSubclass(editor.list, ListProcedure, kListSubclass, reinterpret_cast<DWORD_PTR>(&editor));
}

std::vector<size_t> SelectedRows(const EditorWindow& editor) {
  std::vector<size_t> rows;
  int last = -1;
  for (int row; (row = ListView_GetNextItem(editor.list, last, LVNI_SELECTED)) > last; last = row)
    rows.push_back(static_cast<size_t>(row));
  return rows;
}

std::vector<NodeRef> SelectedRecords(const EditorWindow& editor) {
  std::vector<NodeRef> records;
  for (const size_t row : SelectedRows(editor)) {
    if (row < editor.rows.rows.size()) records.push_back(editor.rows.rows[row]);
  }
  return records;
}

void SelectRows(EditorWindow& editor, const std::function<bool(size_t)>& chosen) {
  const size_t count = editor.rows.size();
  size_t selected = 0;
  for (size_t row = 0; row < count; ++row) selected += chosen(row);
  editor.settled = false;  // one look at the result is enough
  SendMessageW(editor.list, WM_SETREDRAW, FALSE, 0);
  // All rows at once, and then the smaller part one by one.
  const bool most = selected > count / 2;
  ListView_SetItemState(editor.list, -1, most ? LVIS_SELECTED : 0, LVIS_SELECTED);
  for (size_t row = 0; row < count; ++row) {
    if (chosen(row) != most)
      ListView_SetItemState(editor.list, static_cast<int>(row), most ? 0 : LVIS_SELECTED, LVIS_SELECTED);
  }
  SendMessageW(editor.list, WM_SETREDRAW, TRUE, 0);
  editor.settled = true;
}

void SelectListRows(EditorWindow& editor, const std::function<bool(size_t)>& chosen) {
  SelectRows(editor, chosen);
  if (ListView_GetSelectedCount(editor.list) != 0) SetFocus(editor.list);
  editor.app->refresh_frame();
}

bool SelectListRow(EditorWindow& editor, const NodeRef& node) {
  const auto& rows = editor.rows.rows;
  const auto found = std::find(rows.begin(), rows.end(), node);
  if (found == rows.end()) return false;
  const int row = static_cast<int>(found - rows.begin());
  ListView_SetItemState(editor.list, -1, 0, LVIS_SELECTED);
  ListView_SetItemState(editor.list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  ListView_EnsureVisible(editor.list, row, FALSE);
  return true;
}

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
  editor.column_scale = std::max(1, Scaled(editor.window, 100));
  std::vector<int>& order = KeptOrder(editor);
  if (order.size() == columns.size())
    ListView_SetColumnOrderArray(editor.list, static_cast<int>(order.size()), order.data());
  ShowRowOrder(editor);
}

void KeepColumns(EditorWindow& editor) {
  const size_t count = editor.rows.columns.size();
  if (count == 0) return;
  std::vector<int> widths, order(count);
  for (size_t i = 0; i < count; ++i) {
    const int width = ListView_GetColumnWidth(editor.list, static_cast<int>(i));
    widths.push_back(MulDiv(width, 100, editor.column_scale));
  }
  KeptWidths(editor) = std::move(widths);
  if (ListView_GetColumnOrderArray(editor.list, static_cast<int>(count), order.data()))
    KeptOrder(editor) = std::move(order);
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

namespace {

// Selects the rows of these nodes, and no others, if the list shows them all.
bool SelectNodes(EditorWindow& editor, const std::vector<NodeRef>& nodes) {
  const std::vector<bool> chosen = RowsOfNodes(editor.rows.rows, nodes);
  const auto first = std::find(chosen.begin(), chosen.end(), true) - chosen.begin();
  if (static_cast<size_t>(first) == chosen.size()) return false;
  SelectRows(editor, [&](size_t row) { return chosen[row]; });
  const int shown = static_cast<int>(first);
  ListView_SetItemState(editor.list, shown, LVIS_FOCUSED, LVIS_FOCUSED);
  ListView_EnsureVisible(editor.list, shown, FALSE);
  return true;
}

// Whether the list would show the first of the nodes without its filter.
bool FilterHides(const EditorWindow& editor, const std::vector<NodeRef>& nodes) {
  if (nodes.empty() || editor.filter.terms.empty()) return false;
  const ListModel list = ListBelow(editor.document, editor.selected, editor.view, editor.app->hexadecimal);
  return std::find(list.rows.begin(), list.rows.end(), nodes[0]) != list.rows.end();
}

}  // namespace

bool SelectTreeNode(EditorWindow& editor, const TreePath& place) {
  const TreeNode* node = NodeAlong(editor, place);
  if (!node || node == &editor.root) return false;
  TreeView_SelectItem(editor.tree, node->item);
  TreeView_EnsureVisible(editor.tree, node->item);
  // It may have been selected before, with another view or in another order.
  if (editor.view != ListView::kBelow || editor.details) ShowView(editor, ListView::kBelow);
  return true;
}

bool ShowRecord(EditorWindow& editor, const TreePath& place, bool focus) {
  const auto nodes = NodesAlong(editor.document, place);
  if (place.empty() || nodes.size() != place.size()) return false;
  TreePath parent = place;
  if (place.size() > 1) parent.pop_back();
  if (!SelectTreeNode(editor, parent)) return false;
  const auto select = [&] { return SelectListRow(editor, nodes.back()); };
  // What is to be shown ends a filter that hides it; a root stands in the tree alone.
  const bool selected = place.size() > 1 && (select() || (EndFilter(editor) && select()));
  if (focus) SetFocus(selected ? editor.list : editor.tree);
  return true;
}

void ShowChanges(EditorWindow& editor, const std::vector<ChangedRows>& changes) {
  const ChangesInView place = ViewOfChanges(editor.document, changes);
  if (place.node.empty()) return;
  const auto select = [&] { return SelectNodes(editor, place.rows); };
  // In the list that is shown, a filter may hide them.
  if (!select() && !(FilterHides(editor, place.rows) && EndFilter(editor) && select())) {
    if (!SelectTreeNode(editor, place.node)) return;
    if (place.view != ListView::kBelow) ShowView(editor, place.view);
    if (place.rows.empty() || !(select() || (EndFilter(editor) && select())))
      SelectRows(editor, [](size_t) { return false; });
  }
  editor.app->refresh_frame();
}

}  // namespace vexa
