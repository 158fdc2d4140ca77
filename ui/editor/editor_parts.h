// Between the parts of the database window: what its tree and list report.
#pragma once

#include <functional>

#include "ui/editor/editor.h"

namespace vexa {

// A message to the database window: other rows are selected. Posted once for all that one step changes.
inline constexpr UINT kSelectionChanged = WM_APP + 4;

LRESULT EditorNotify(EditorWindow& editor, NMHDR& header, LPARAM lparam);
// The list's columns: made with the widths and in the order that the user last gave them, and remembered
// before they go.
void FillColumns(EditorWindow& editor);
void KeepColumns(EditorWindow& editor);
void ShowRowOrder(EditorWindow& editor);  // the arrow in a title
// Places of the selected rows, ascending.
std::vector<size_t> SelectedRows(const EditorWindow& editor);
std::vector<NodeRef> SelectedRecords(const EditorWindow& editor);
// Lets the list leave a selection of very many rows without a pause.
void QuickenList(EditorWindow& editor);
// Selects the rows that `chosen` names, and no others.
void SelectRows(EditorWindow& editor, const std::function<bool(size_t)>& chosen);
// The same for the user: the list gets the focus, the commands follow.
void SelectListRows(EditorWindow& editor, const std::function<bool(size_t)>& chosen);
// Selects the record's row alone and brings it in sight; false when the list does not show it.
bool SelectListRow(EditorWindow& editor, const NodeRef& node);

// Drag and drop; `at` is in the control. DragMessage takes what the window gets while it lasts.
void BeginTreeDrag(EditorWindow& editor, HTREEITEM item, POINT at);
void BeginListDrag(EditorWindow& editor, int row, POINT at);
void StartDrag(EditorWindow& editor, const std::vector<NodeRef>& rows, HIMAGELIST image, POINT at,
               HWND source);
bool DragMessage(EditorWindow& editor, UINT message, WPARAM wparam, LPARAM lparam);
void CancelDrag(EditorWindow& editor);

// The tree's items.
TreeNode& NodeOf(LPARAM parameter);
NodeRef NodeOfItem(const EditorWindow& editor, HTREEITEM item);
void FillNode(EditorWindow& editor, TreeNode& node);
void ExpandNode(EditorWindow& editor, TreeNode& node);
void OpenSelectedNode(EditorWindow& editor);
void OpenAllBelow(EditorWindow& editor);  // the selected node
void FillTree(EditorWindow& editor);      // of a new window
// Forgets what tree and list show and fills them anew, whatever state they are in.
void ShowAnew(EditorWindow& editor);

// Shows the list's rows in that order; the selected ones stay so.
void ReorderList(EditorWindow& editor, const RowOrder& order);

// Brings tree, list and panel into line with a changed document. Records that were rebuilt are known again by
// what they say, for which NoteContents is called before they go; others by their addresses.
enum class Records { kKept, kRebuilt };
void NoteContents(EditorWindow& editor);
void RefreshDocument(EditorWindow& editor, Records records);

}  // namespace vexa
