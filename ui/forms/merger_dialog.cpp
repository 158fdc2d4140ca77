// The file merger: lists of one format joined in the order that the user gives them.
#include <algorithm>
#include <cstdlib>

#include "core/messages.h"
#include "import/list_text.h"
#include "import/merger.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/form.h"
#include "ui/controls/guard.h"
#include "ui/controls/progress_box.h"
#include "ui/forms/form_commands.h"
#include "ui/forms/lists_resource.h"

namespace vexa {

namespace {

struct MergerDialog {
  Application& app;
  Merger merger;
  HWND list = nullptr;
  int pressed = -1;  // the entry on which the mouse button went down, until it goes up
  POINT press_point{};
  bool dragging = false;
};

int CountOf(HWND list) {
  return static_cast<int>(SendMessageW(list, LB_GETCOUNT, 0, 0));
}

bool IsSelected(HWND list, int item) {
  return SendMessageW(list, LB_GETSEL, static_cast<WPARAM>(item), 0) > 0;
}

void Select(HWND list, int item, bool selected) {
  SendMessageW(list, LB_SETSEL, selected, item);
}

std::vector<size_t> SelectedFiles(HWND list) {
  std::vector<size_t> selected;
  for (int i = 0; i < CountOf(list); ++i) {
    if (IsSelected(list, i)) selected.push_back(static_cast<size_t>(i));
  }
  return selected;
}

// Selects `selected` entries from `first` on.
void ShowFiles(MergerDialog& dialog, size_t first, size_t selected) {
  HWND list = dialog.list;
  SendMessageW(list, WM_SETREDRAW, FALSE, 0);
  SendMessageW(list, LB_RESETCONTENT, 0, 0);
  HDC screen = GetDC(list);
  HGDIOBJ font = SelectObject(screen, reinterpret_cast<HGDIOBJ>(SendMessageW(list, WM_GETFONT, 0, 0)));
  LONG width = 0;
  for (const Path& path : dialog.merger.files) {
    const std::wstring& text = path.native();
    SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    SIZE size{};
    GetTextExtentPoint32W(screen, text.c_str(), static_cast<int>(text.size()), &size);
    width = std::max(width, size.cx);
  }
  SelectObject(screen, font);
  ReleaseDC(list, screen);
  SendMessageW(list, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(width + Scaled(list, 8)), 0);
  for (size_t i = first; i < first + selected; ++i) Select(list, static_cast<int>(i), true);
  SendMessageW(list, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(list, nullptr, TRUE);
}

// What the file dialogs start with: the name chosen last, while it is one of this format.
Path Proposed(const MergerDialog& dialog) {
  const Path& last = dialog.app.merge_file;
  return HasExtension(last, RowOf(dialog.merger.format).extension()) ? last : Path();
}

void AddFile(MergerDialog& dialog, const Form& form) {
  const ListFormatRow& format = RowOf(dialog.merger.format);
  const auto path = AskOpenFile(
      form.window, {format.merge.open_title, {{format.merge.filter, format.pattern}}}, Proposed(dialog));
  if (!path) return;
  dialog.app.merge_file = *path;
  if (AddMergeFile(dialog.app.context, dialog.merger, *path)) ShowFiles(dialog, 0, 0);
}

void AddFolder(MergerDialog& dialog, const Form& form) {
  std::error_code error;
  const auto folder = AskFolder(form.window, "Choose a folder", std::filesystem::current_path(error));
  if (!folder) return;
  std::filesystem::current_path(*folder, error);
  if (AddMergeFolder(dialog.app.context, dialog.merger, *folder)) ShowFiles(dialog, 0, 0);
}

void Remove(MergerDialog& dialog) {
  RemoveMergeFiles(dialog.merger, SelectedFiles(dialog.list));
  ShowFiles(dialog, 0, 0);
}

bool Merge(MergerDialog& dialog, const Form& form) {
  const Context& context = dialog.app.context;
  if (!CanMerge(context, dialog.merger)) return false;
  const ListFormatRow& format = RowOf(dialog.merger.format);
  const FileQuestion question = {format.merge.save_title,
                                 {{format.merge.filter, format.pattern}},
                                 format.extension() + 1};  // without its dot
  const auto output = AskSaveFile(form.window, question, Proposed(dialog));
  if (!output || !CanMergeInto(context, dialog.merger, *output)) return false;
  dialog.app.merge_file = *output;
  std::optional<MergeResult> written;
  {
    const ProgressBox progress(dialog.app, Utf8FromPath(*output), format.merge.title);
    written = WriteMerged(progress.context(), dialog.merger, *output);
  }
  if (!written) return false;
  TellMerged(context, *output, *written);
  return true;
}

// Moves the selected entries before the entry `before`.
void MoveSelected(MergerDialog& dialog, size_t before) {
  const auto selected = SelectedFiles(dialog.list);
  if (selected.empty()) return;
  ShowFiles(dialog, MoveMergeFiles(dialog.merger, selected, before), selected.size());
}

void MoveByKey(MergerDialog& dialog, bool down) {
  const auto selected = SelectedFiles(dialog.list);
  if (selected.empty()) return;
  if (down) {
    MoveSelected(dialog, selected.back() + 2);
  } else {
    MoveSelected(dialog, selected.front() == 0 ? 0 : selected.front() - 1);
  }
}

// The entry at a point of the list's client area; -1 beside all of them.
int EntryAt(HWND list, POINT point) {
  const LRESULT item = SendMessageW(list, LB_ITEMFROMPOINT, 0, MAKELPARAM(point.x, point.y));
  return HIWORD(item) || LOWORD(item) >= CountOf(list) ? -1 : LOWORD(item);
}

// The entry before which something dropped at the point goes; the number of entries: behind all.
int DropPlace(HWND list, POINT point) {
  const int item = EntryAt(list, point);
  if (item < 0)
    return point.y < 0 ? static_cast<int>(SendMessageW(list, LB_GETTOPINDEX, 0, 0)) : CountOf(list);
  RECT place{};
  SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&place));
  return point.y > (place.top + place.bottom) / 2 ? item + 1 : item;
}

void EndDrag(MergerDialog& dialog) {
  dialog.pressed = -1;
  dialog.dragging = false;
  DrawInsert(GetParent(dialog.list), dialog.list, -1);
  if (GetCapture() == dialog.list) ReleaseCapture();
}

void Press(MergerDialog& dialog, int entry, POINT point) {
  SetFocus(dialog.list);
  if (!IsSelected(dialog.list, entry)) {
    Select(dialog.list, -1, false);
    Select(dialog.list, entry, true);
  }
  dialog.pressed = entry;
  dialog.press_point = point;
  SetCapture(dialog.list);
}

void Drag(MergerDialog& dialog, POINT point) {
  if (std::abs(point.x - dialog.press_point.x) > GetSystemMetrics(SM_CXDRAG) ||
      std::abs(point.y - dialog.press_point.y) > GetSystemMetrics(SM_CYDRAG)) {
    dialog.dragging = true;
  }
  if (!dialog.dragging) return;
  POINT screen = point;
  ClientToScreen(dialog.list, &screen);
  LBItemFromPt(dialog.list, screen, TRUE);  // scrolls near the edges
  DrawInsert(GetParent(dialog.list), dialog.list, DropPlace(dialog.list, point));
}

void Drop(MergerDialog& dialog, POINT point) {
  const bool dragged = dialog.dragging;
  const int pressed = dialog.pressed;
  EndDrag(dialog);
  if (dragged) return MoveSelected(dialog, static_cast<size_t>(DropPlace(dialog.list, point)));
  // A click that was no drag selects its entry alone.
  Select(dialog.list, -1, false);
  Select(dialog.list, pressed, true);
}

// True when the list's own behaviour is not wanted.
bool ListMessage(MergerDialog& dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  const POINT point = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
  switch (message) {
    case WM_LBUTTONDOWN: {
      const int entry = EntryAt(dialog.list, point);
      if (entry < 0 || (wparam & (MK_CONTROL | MK_SHIFT))) return false;
      Press(dialog, entry, point);
      return true;
    }
    case WM_MOUSEMOVE:
      if (dialog.pressed < 0) return false;
      Drag(dialog, point);
      return true;
    case WM_LBUTTONUP:
      if (dialog.pressed < 0) return false;
      Drop(dialog, point);
      return true;
    case WM_CAPTURECHANGED:
      if (dialog.pressed >= 0) EndDrag(dialog);
      return false;
    case WM_KEYDOWN:
      if (dialog.pressed >= 0) {
        if (wparam == VK_ESCAPE) EndDrag(dialog);
        return true;
      }
      if (wparam == VK_DELETE) Remove(dialog);
      return wparam == VK_DELETE;
    case WM_SYSKEYDOWN:
      if (wparam != VK_UP && wparam != VK_DOWN) return false;
      MoveByKey(dialog, wparam == VK_DOWN);
      return true;
    default:
      return false;
  }
}

LRESULT CALLBACK ListProcedure(HWND list, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR id,
                               DWORD_PTR reference) noexcept {
  MergerDialog& dialog = *reinterpret_cast<MergerDialog*>(reference);
  if (message == WM_NCDESTROY) RemoveWindowSubclass(list, ListProcedure, id);
  // While entries are dragged, Escape ends that and not the dialog.
  if (message == WM_GETDLGCODE && dialog.pressed >= 0) return DLGC_WANTALLKEYS;
  if (Guarded(true, [&] { return ListMessage(dialog, message, wparam, lparam); })) return 0;
  return DefSubclassProc(list, message, wparam, lparam);
}

void ShowMerger(Application& app, ListFormat format) {
  MergerDialog dialog{app, {format, {}}};
  FormActions actions;
  actions.anchors = ListAnchors(IDC_MERGE_LIST);
  actions.anchors.push_back({IDHELP, kWhole, kWhole, kWhole, kWhole});
  actions.open = [&](Form& form) {
    SetText(form.window, RowOf(format).merge.title);
    dialog.list = form.Control(IDC_MERGE_LIST);
    SetWindowSubclass(dialog.list, ListProcedure, 1, reinterpret_cast<DWORD_PTR>(&dialog));
    form.Focus(IDC_MERGE_FILES);
  };
  actions.command = [&](Form& form, int id, int) {
    if (id == IDC_MERGE_FILES) AddFile(dialog, form);
    if (id == IDC_MERGE_FOLDER) AddFolder(dialog, form);
    if (id == IDC_MERGE_REMOVE) Remove(dialog);
  };
  actions.accept = [&](Form& form) { return Merge(dialog, form); };
  RunForm(app, IDD_MERGER, actions);
}

template <ListFormat format>
void MergeLists(Application& app) {
  ShowMerger(app, format);
}

constexpr CommandRow kMergeFunctions[] = {
    {kCmdMergeSatcodx, MergeLists<ListFormat::kSatcodx>},
    {kCmdMergeDvb2000, MergeLists<ListFormat::kDvb2000>},
    {kCmdMergeLyngsat, MergeLists<ListFormat::kLyngsat>},
};

}  // namespace

std::span<const CommandRow> MergeCommands() {
  return kMergeFunctions;
}

}  // namespace vexa
