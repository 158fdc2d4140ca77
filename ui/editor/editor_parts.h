// Between the parts of the database window: what its tree and list report.
#pragma once

#include <functional>
#include <span>

#include "ui/editor/editor.h"
#include "view/changes.h"

namespace vexa {

// A message to the database window: other rows are selected. Posted once for all that one step changes.
inline constexpr UINT kSelectionChanged = WM_APP + 4;
// The timer of the database window that runs while a filter is typed over a long list.
inline constexpr UINT_PTR kFilterTimer = 2;

// What the view buttons do, from left to right.
inline constexpr CommandId kViewCommands[] = {kCmdViewServices, kCmdViewCarriers, kCmdViewBoth,
                                              kCmdViewRadio};

// Answers a notification of the tree, the list or a title of its columns; 0 for others.
LRESULT EditorNotify(EditorWindow& editor, NMHDR& header, LPARAM lparam);
// The list's columns: made with the widths and in the order that the user last gave them, and remembered
// before they go.
void FillColumns(EditorWindow& editor);
void KeepColumns(EditorWindow& editor);
// The arrow in the title of the column by which the rows are ordered.
void ShowRowOrder(EditorWindow& editor);
// Places of the selected rows, from 0, ascending.
std::vector<size_t> SelectedRows(const EditorWindow& editor);
// The records of these rows, in the order of the list.
std::vector<NodeRef> SelectedRecords(const EditorWindow& editor);
// Lets the list leave a selection of very many rows without a pause.
void QuickenList(EditorWindow& editor);
// Selects the rows that `chosen` names, and no others.
void SelectRows(EditorWindow& editor, const std::function<bool(size_t)>& chosen);
// The same for the user: the list gets the focus, the commands follow.
void SelectListRows(EditorWindow& editor, const std::function<bool(size_t)>& chosen);
// Selects the record's row alone and brings it in sight; false when the list does not show it.
bool SelectListRow(EditorWindow& editor, const NodeRef& node);

// Drag and drop; `at` is in pixels of the control where it begins. From the tree its item goes, from the list
// all selected rows; `row` is the one below the mouse. Nothing begins for records that cannot be dragged,
// and, after a message, for rows that cannot be moved together.
void BeginTreeDrag(EditorWindow& editor, HTREEITEM item, POINT at);
void BeginListDrag(EditorWindow& editor, int row, POINT at);
// Begins a drag of `rows` out of the control `source`; `image`, which may be null, belongs to the drag from
// here on.
void StartDrag(EditorWindow& editor, const std::vector<NodeRef>& rows, HIMAGELIST image, POINT at,
               HWND source);
// What the window gets while a drag lasts. True: it was the drag's.
bool DragMessage(EditorWindow& editor, UINT message, WPARAM wparam, LPARAM lparam);
// Adds the services among the rows to the group, or to one list of it, as one step for Undo. How many were
// added is said in the status line, and in a box when not all of them were.
void AddToGroup(EditorWindow& editor, const std::vector<NodeRef>& rows, uint32_t group,
                std::optional<GroupKind> list = {});
// Pastes the bytes of a clip at the tree's node or the list's row, as one step for Undo, and selects what
// came.
void PasteClip(EditorWindow& editor, const NodeRef& tree, const NodeRef& row, std::span<const uint8_t> clip);
// Ends a drag without a drop; nothing when there is none.
void CancelDrag(EditorWindow& editor);

// The node that is the parameter of a tree's item; it belongs to its parent node.
TreeNode& NodeOf(LPARAM parameter);
// What an item stands for; of no kind for no item.
NodeRef NodeOfItem(const EditorWindow& editor, HTREEITEM item);
// Puts the items below a node into the control, closed; nothing when they are there.
void FillNode(EditorWindow& editor, TreeNode& node);
// Fills and opens it.
void ExpandNode(EditorWindow& editor, TreeNode& node);
// Opens the selected node.
void OpenSelectedNode(EditorWindow& editor);
// Opens the selected node and all below it.
void OpenAllBelow(EditorWindow& editor);
// Puts the roots of a new window's document into the tree.
void FillTree(EditorWindow& editor);
// Forgets what tree and list show and fills them anew, whatever state they are in.
void ShowAnew(EditorWindow& editor);

// Shows the list's rows in that order; the selected ones stay so.
void ReorderList(EditorWindow& editor, const RowOrder& order);
// Shows the rows that the text of the filter's field lets through; selected ones that stay are selected.
void ApplyFilter(EditorWindow& editor);
// Empties the field. False when it was empty.
bool EndFilter(EditorWindow& editor);

// Brings tree, list and panel into line with a changed document. Records that were rebuilt are known again by
// what they say, for which NoteContents is called before they go; others by their addresses.
enum class Records { kKept, kRebuilt };
void NoteContents(EditorWindow& editor);
void RefreshDocument(EditorWindow& editor, Records records);
// Selects what changed: its rows in the list where they are shown, else where they belong.
void ShowChanges(EditorWindow& editor, const std::vector<ChangedRows>& changes);

}  // namespace vexa
