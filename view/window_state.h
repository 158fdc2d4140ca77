// What the commands of the editor look at: which window is active, what it shows, what can be done with it.
// The window program fills it in; what follows for the commands is decided by their rows.
#pragma once

#include <cstdint>
#include <optional>

#include "core/undo.h"
#include "serial/console_text.h"
#include "view/command_table.h"
#include "view/view_model.h"

namespace vexa {

struct WindowState {
  uint32_t present = kNeedsNothing;  // `Need` bits
  bool console_active = false;

  // Of the active database window; as here when there is none.
  std::optional<ListView> view;  // nothing where its list has none
  bool details = false;          // the list shows the details of a record
  bool payload_compressed = false;
  bool part_compressed = false;  // the selected SDB, or all UBIs while these are selected
  bool can_undo_other = false;   // there is a change to take back, and it was no sort

  bool picture = false;  // database windows show the picture below their lists

  // Of the console; as here when it is not open.
  std::optional<ConsoleOptions> console;
  bool port_wanted = false;  // connected, or waiting for a lost port
  bool port_open = false;
};

// A database window as its commands see it. All nodes are of the document.
struct DatabaseLook {
  const Document& document;
  const UndoHistory& history;
  NodeRef selected;  // in the tree
  NodeRef record;    // that a command acts on; of no kind: none
  NodeRef row;       // the same, of no kind while the tree has the focus: where a new record goes
  ListView view = ListView::kBelow;
  bool has_rows = false;  // the list shows records
  bool details = false;   // the list shows the details of one
  bool ordered = false;   // the list is in the order of a column
};

// Fills in what the active database window says: its part of `present`, its view and what can be undone.
void SeeDatabase(WindowState& state, const DatabaseLook& look);

// The SDB of the node, the first one for a node of no SDB; nullptr when there is none.
const OpenSdb* SdbOf(const Document& document, const NodeRef& node);
// Whether the node is a UBI or what they stand under.
bool IsAmongUbis(const NodeRef& node);

}  // namespace vexa
