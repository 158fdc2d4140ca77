// The list of a database window in the order of one of its columns. Only what is shown is put in order; the
// records stay where they are.
#pragma once

#include "view/view_model.h"

namespace vexa {

struct RowOrder {
  int column = -1;  // none: the order of the records
  bool descending = false;
  bool operator==(const RowOrder&) const = default;
};

// What a click on the title of `column` makes of the order: ascending, then descending, then none.
RowOrder OrderAfterClick(const RowOrder& order, int column);

// Numbers by their value; texts without regard to case, numbers in them by value ("LNB2" before "LNB10").
// Equal rows keep their order.
void OrderRows(const Document& document, ListModel& list, const RowOrder& order, bool hexadecimal);

// For each row, whether it is one of the nodes; all false when a node is none of the rows.
std::vector<bool> RowsOfNodes(const std::vector<NodeRef>& rows, const std::vector<NodeRef>& nodes);

}  // namespace vexa
