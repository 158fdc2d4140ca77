#include "ui/controls/virtual_list.h"

#include <algorithm>

namespace vexa {

namespace {

void GiveRow(const VirtualList& list, LVITEMW& item) {
  const auto row = static_cast<size_t>(item.iItem);
  const bool there = row < list.count;
  if ((item.mask & LVIF_TEXT) && item.cchTextMax > 0) {
    const std::wstring text = there ? Wide(list.text(row, item.iSubItem)) : L"";
    lstrcpynW(item.pszText, text.c_str(), item.cchTextMax);
  }
  if (item.mask & LVIF_IMAGE) item.iImage = there && list.picture ? list.picture(row) : I_IMAGENONE;
  if ((item.mask & LVIF_STATE) && list.ticked && item.iSubItem == 0) {
    const bool ticked = there && list.ticked(row);
    item.state = (item.state & ~static_cast<UINT>(LVIS_STATEIMAGEMASK)) |
                 (INDEXTOSTATEIMAGEMASK(ticked ? 2u : 1u) & item.stateMask);
  }
}

LRESULT FindRow(const VirtualList& list, const NMLVFINDITEMW& find) {
  if (!(find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) || !find.lvfi.psz || list.count == 0) return -1;
  const size_t length = wcslen(find.lvfi.psz);
  const auto start = static_cast<size_t>(std::max(find.iStart, 0));
  for (size_t i = 0; i < list.count; ++i) {
    const size_t row = (start + i) % list.count;
    if (_wcsnicmp(Wide(list.text(row, list.name_column)).c_str(), find.lvfi.psz, length) == 0)
      return static_cast<LRESULT>(row);
  }
  return -1;
}

void Toggle(const Form& form, const VirtualList& list, int row) {
  if (!list.ticked || row < 0 || static_cast<size_t>(row) >= list.count) return;
  HWND control = form.Control(list.id);
  const bool ticked = !list.ticked(static_cast<size_t>(row));
  list.tick(form, static_cast<size_t>(row), ticked);
  if (ListView_GetItemState(control, row, LVIS_SELECTED) & LVIS_SELECTED) {
    for (int other = -1; (other = ListView_GetNextItem(control, other, LVNI_SELECTED)) >= 0;)
      list.tick(form, static_cast<size_t>(other), ticked);
  }
  if (list.ticked_rows) list.ticked_rows(form);
  RedrawRows(form, list);
}

void Clicked(const Form& form, const VirtualList& list, POINT point) {
  LVHITTESTINFO hit{};
  hit.pt = point;
  ListView_HitTest(form.Control(list.id), &hit);
  if (hit.flags == LVHT_ONITEMSTATEICON) Toggle(form, list, hit.iItem);
}

constexpr UINT_PTR kTicksSubclass = 1;

// The space key, which ticks all selected rows, would leave only one of them selected.
LRESULT CALLBACK TicksProcedure(HWND list, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                                DWORD_PTR) noexcept {
  const bool space = (message == WM_KEYDOWN || message == WM_CHAR) && wparam == VK_SPACE;
  if (!space || ListView_GetSelectedCount(list) < 2 || GetKeyState(VK_CONTROL) < 0)
    return DefSubclassProc(list, message, wparam, lparam);
  if (message == WM_CHAR) return 0;
  NMLVKEYDOWN key{};
  key.hdr = {list, static_cast<UINT_PTR>(GetDlgCtrlID(list)), static_cast<UINT>(LVN_KEYDOWN)};
  key.wVKey = VK_SPACE;
  SendMessageW(GetParent(list), WM_NOTIFY, key.hdr.idFrom, reinterpret_cast<LPARAM>(&key));
  return 0;
}

bool IsMultiple(HWND list) {
  return (GetWindowLongPtrW(list, GWL_STYLE) & LVS_SINGLESEL) == 0;
}

void KeyDown(const Form& form, const VirtualList& list, WORD key) {
  HWND control = form.Control(list.id);
  if (key == VK_SPACE) {
    const int focused = ListView_GetNextItem(control, -1, LVNI_FOCUSED);
    Toggle(form, list, focused >= 0 ? focused : ListView_GetNextItem(control, -1, LVNI_SELECTED));
  }
  if (key == 'A' && GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0 && IsMultiple(control))
    ListView_SetItemState(control, -1, LVIS_SELECTED, LVIS_SELECTED);
}

void HighlightChanged(const Form& form, VirtualList& list) {
  const int row = ListView_GetNextItem(form.Control(list.id), -1, LVNI_SELECTED);
  // Between two rows none is selected for a moment; the last one stays the highlighted one.
  if (row < 0 || static_cast<size_t>(row) >= list.count || list.highlighted == static_cast<size_t>(row))
    return;
  list.highlighted = static_cast<size_t>(row);
  if (list.highlight) list.highlight(form, static_cast<size_t>(row));
}

}  // namespace

void SetUpList(const Form& form, const VirtualList& list, const std::vector<VirtualColumn>& columns,
               HIMAGELIST pictures) {
  HWND control = form.Control(list.id);
  const DWORD boxes = list.ticked ? LVS_EX_CHECKBOXES : 0u;
  const DWORD grid = columns.size() > 1 ? LVS_EX_GRIDLINES : 0u;
  ListView_SetExtendedListViewStyle(control, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | boxes | grid);
  if (list.ticked) {
    ListView_SetCallbackMask(control, LVIS_STATEIMAGEMASK);
    SetWindowSubclass(control, TicksProcedure, kTicksSubclass, 0);
  }
  if (pictures) ListView_SetImageList(control, pictures, LVSIL_SMALL);
  for (size_t i = 0; i < columns.size(); ++i) {
    std::wstring title = Wide(columns[i].title);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    column.cx = Scaled(form.window, columns[i].width);
    column.pszText = title.data();
    column.iSubItem = static_cast<int>(i);
    SendMessageW(control, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
  }
  if (columns.back().width == 0) FitLastColumn(control);
}

void FitLastColumn(HWND list) {
  RECT area{};
  GetClientRect(list, &area);
  // The scroll bar comes and goes with the rows: room is left for it.
  const bool scrolls = GetWindowLongPtrW(list, GWL_STYLE) & WS_VSCROLL;
  LONG left = area.right - (scrolls ? 0 : GetSystemMetrics(SM_CXVSCROLL));
  const int last = Header_GetItemCount(ListView_GetHeader(list)) - 1;
  for (int i = 0; i < last; ++i) left -= ListView_GetColumnWidth(list, i);
  ListView_SetColumnWidth(list, last, std::max(left, 1L));
}

void ShowRows(const Form& form, VirtualList& list, size_t count, std::optional<size_t> highlighted) {
  HWND control = form.Control(list.id);
  list.count = count;
  if (highlighted && *highlighted >= count) highlighted.reset();
  list.highlighted = highlighted;
  ListView_SetItemCountEx(control, static_cast<int>(count), 0);
  ListView_SetItemState(control, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
  if (highlighted) {
    const int row = static_cast<int>(*highlighted);
    ListView_SetItemState(control, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    ListView_EnsureVisible(control, row, FALSE);
  }
  RedrawRows(form, list);
}

void RedrawRows(const Form& form, const VirtualList& list) {
  InvalidateRect(form.Control(list.id), nullptr, FALSE);
}

std::optional<LRESULT> ListNotification(const Form& form, VirtualList& list, NMHDR& header) {
  if (header.idFrom != static_cast<UINT_PTR>(list.id)) return std::nullopt;
  switch (header.code) {
    case LVN_GETDISPINFOW:
      GiveRow(list, reinterpret_cast<NMLVDISPINFOW&>(header).item);
      return 0;
    case LVN_ODFINDITEMW:
      return FindRow(list, reinterpret_cast<NMLVFINDITEMW&>(header));
    case LVN_ITEMCHANGED:
      HighlightChanged(form, list);
      return 0;
    case LVN_KEYDOWN:
      KeyDown(form, list, reinterpret_cast<NMLVKEYDOWN&>(header).wVKey);
      return 0;
    case NM_CLICK:
    case NM_DBLCLK:  // the second of two quick clicks
      Clicked(form, list, reinterpret_cast<NMITEMACTIVATE&>(header).ptAction);
      return 0;
    default:
      return 0;
  }
}

}  // namespace vexa
