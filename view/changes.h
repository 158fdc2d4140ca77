// Where a document differs from what it was: what a window shows of an undo or redo, which knows states and
// no operations.
#pragma once

#include <cstdint>
#include <vector>

#include "view/tree_path.h"
#include "view/view_model.h"

namespace vexa {

// What the records of a document said, by their places in the tree; entries of favourite lists stand below
// their groups.
struct DocumentMarks {
  uint64_t own = 0;   // of the record itself
  uint64_t deep = 0;  // of it and all below it
  std::vector<DocumentMarks> below;
};
DocumentMarks MarksOf(const Document& document);

// Records below one node that are new, say something else, or moved.
struct ChangedRows {
  TreePath parent;           // empty: the roots of the tree
  std::vector<size_t> rows;  // places from 0, ascending; empty: records are gone from there
};
// All such nodes from top to bottom. What the tree does not show, like the running order, is not told.
std::vector<ChangedRows> ChangesSince(const DocumentMarks& before, const Document& document);
// The rows as nodes, in their order; those that the document does not have are left out.
std::vector<NodeRef> ChangedNodes(const Document& document, const ChangedRows& change);

// Where changes are seen together.
struct ChangesInView {
  TreePath node;  // of the tree; empty: nowhere
  ListView view = ListView::kBelow;
  std::vector<NodeRef> rows;  // of its list, of one kind; empty: the records are gone, or the node is the one
};
// Of the first records that changed, or are gone, and all others of their kind in their SDB: what they lie
// under, with a view of its list that holds them all. `changes` are those of ChangesSince.
ChangesInView ViewOfChanges(const Document& document, const std::vector<ChangedRows>& changes);

}  // namespace vexa
