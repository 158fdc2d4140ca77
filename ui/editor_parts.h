// Between the parts of the database window: what its tree and list report.
#pragma once

#include "ui/editor.h"

namespace vexa {

LRESULT EditorNotify(EditorWindow& editor, NMHDR& header, LPARAM lparam);
// The list's columns: made with the widths that the user last gave them, and remembered before they go.
void FillColumns(EditorWindow& editor);
void KeepColumnWidths(EditorWindow& editor);
void ShowRowOrder(EditorWindow& editor);  // the arrow in a title

// The tree's items. An item's parameter is its place in `nodes`.
NodeRef& NodeOf(EditorWindow& editor, LPARAM parameter);
NodeRef NodeOfItem(EditorWindow& editor, HTREEITEM item);
HTREEITEM InsertNode(EditorWindow& editor, HTREEITEM parent, HTREEITEM after, const NodeRef& node);
void FillNode(EditorWindow& editor, HTREEITEM item, const NodeRef& node);
// Positions from the root.
TreePath PathOfItem(const EditorWindow& editor, HTREEITEM item);

// Brings tree, list and panel into line with a changed document. Records that were rebuilt are told apart by
// their places, others by their addresses.
enum class Records { kKept, kRebuilt };
void RefreshDocument(EditorWindow& editor, Records records);

}  // namespace vexa
