// Editing by the nodes that a database window shows: finds the lists that the chosen nodes stand in and runs
// the operations of edit.h on them. Nodes must be those of the document's present state.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/edit.h"
#include "view/tree_path.h"
#include "view/view_model.h"

namespace vexa {

enum class NodeAction { kEdit, kAdd, kInsert, kDelete, kMove, kSwap };
// Whether nodes of the kind can be edited so at all.
bool NodeTakes(NodeKind kind, NodeAction action);

// The type of the services that the view shows, and so of a new one; nothing where it shows all.
std::optional<ServiceType> TypeShown(ListView view);

// Where a new record belongs: to the tree's node, whatever row of its list is selected; but where the row (of
// kind kNone: none) is a service or carrier that does not stand right below that node, to what it stands
// below.
NodeRef NodeToAddAt(const NodeRef& tree, const NodeRef& row);
// Adds what is added at the tree node `at`: below a level, a satellite or a carrier; beside an SDB or a user
// box record. Nothing after a message. The result is the new record's node.
std::optional<NodeRef> AddAtNode(const Messages& messages, Document& document, const NodeRef& at,
                                 const DefaultRecords& defaults, std::optional<ServiceType> type = {});
// Before the one row chosen.
std::optional<NodeRef> InsertAtRows(const Messages& messages, Document& document,
                                    const std::vector<NodeRef>& rows, const DefaultRecords& defaults,
                                    std::optional<ServiceType> type = {});
// All rows are of the first one's kind and SDB.
bool DeleteNodes(const Messages& messages, Document& document, const std::vector<NodeRef>& rows);

// Before the dialog opens, or rows are dragged: they lie in one list (one SDB's satellites, one satellite's
// carriers, one carrier's services, one group) and follow one another there, services need not. A swap wants
// one row, or two services of any carriers.
bool CheckMoveNodes(const Messages& messages, const std::vector<NodeRef>& rows, bool swap);
// Whether the rows, of which there is one at least, may be dragged; `control`: with Ctrl held, for a copy.
bool MayDragRows(const Messages& messages, const std::vector<NodeRef>& rows, bool control);
// What the dialog of a move or swap says for the first of the rows.
struct MoveDialogTexts {
  std::string title, prompt, tip;  // `tip` of the button
};
// For all rows but services.
MoveDialogTexts MoveTextsOf(const std::vector<NodeRef>& rows, bool swap);
// To the place in their one list that `target` names (a number from 1).
bool MoveNodes(const Messages& messages, Document& document, const std::vector<NodeRef>& rows, bool swap,
               const std::string& target);
// Where the dialog that moves services of `source` proposes to move them: the next carrier of its satellite,
// else another one of it, else the first one of the SDB; nullptr when there is no other.
Carrier* ProposedDestination(const StaticDatabase& database, const Carrier& source);
// Puts the records of the rows into the order of the rows: those of each list (an SDB's satellites, a
// satellite's carriers, a carrier's services, a favourite list) share the places that they have there. False
// when they stood so.
bool UseOrder(Document& document, const std::vector<NodeRef>& rows);
// The services among the rows, and those that entries among them name.
std::vector<Service*> ServicesOf(const std::vector<NodeRef>& rows);

// ---- Drag and drop of rows of one list.
struct DropMark {
  bool fits = false;
  bool behind = false;  // the target; else before it
  bool onto = false;    // the target takes them up: no edge is marked
};
// Whether dragged rows can be dropped on the target, and where they come to stand: a window marks that edge.
DropMark DropMarkOf(const std::vector<NodeRef>& rows, const NodeRef& target);
// The rows move to the place of the target, as a move to it would: upwards the first one takes its place,
// downwards the last one. Services dropped on one of another carrier stand before it, in the order of their
// list. Rows of different lists, rows of another kind or SDB than the target's, and carriers of another
// satellite are refused with a message; a target that is one of the rows changes nothing. False when nothing
// was changed.
bool DropNodes(const Messages& messages, Document& document, const std::vector<NodeRef>& rows,
               const NodeRef& target);

// ---- "Mark As" and "Select": a menu of values for the fields of satellites, carriers and services.
struct FieldChoice {
  const char* field;  // title of the submenu
  std::string text;   // with its access key
  NodeKind kind = NodeKind::kSatellite;
  SatelliteField satellite_field = SatelliteField::kLnbIndex;
  CarrierField carrier_field = CarrierField::kPolarization;
  ServiceField service_field = ServiceField::kScrambled;
  uint32_t value = 0;
};
// Satellites' first, then carriers', then services'; those of a field follow one another.
const std::vector<FieldChoice>& FieldChoices();
// Rows of another kind are left alone. How many entries of favourite lists went with services that changed
// their type.
size_t MarkNodes(Document& document, const std::vector<NodeRef>& rows, const FieldChoice& choice);
// Places in `rows` of those whose field has the value.
Rows MatchingRows(const std::vector<NodeRef>& rows, const FieldChoice& choice);

// Places in `rows`, ascending, of the records that repeat an earlier one of the same list among the rows
// (core/duplicates.h), whatever order the rows are shown in. Records of other kinds repeat nothing.
Rows DuplicateRows(const std::vector<NodeRef>& rows);
// "3 duplicates are selected."
std::string DuplicatesText(size_t count);

// What became of services that were to enter a favourite group.
struct GroupAddition {
  size_t added = 0;
  size_t present = 0;  // in its list before
  size_t unfit = 0;    // of the other type than the list's
};
// "3 added, 1 there before, 2 did not fit"
std::string AdditionText(const GroupAddition& addition);
// Adds the services among the rows to both lists of the group, each to the one of its type, or to one list
// alone. Nothing after a message, nothing being added then.
std::optional<GroupAddition> AddRowsToGroup(const Messages& messages, Document& document,
                                            const std::vector<NodeRef>& rows, uint32_t group,
                                            std::optional<GroupKind> list = {});
// The list that rows dropped on the target are added to: it is a group, and they are services of its SDB.
std::optional<GroupKind> ListDroppedOn(const std::vector<NodeRef>& rows, const NodeRef& target);

enum class DropKind {
  kNothing,
  kCopy,    // to another SDB, with Ctrl
  kToList,  // of ListDroppedOn
  kMove,    // DropNodes does it or says why not
};
// What dropping the rows on the target means; `control`: Ctrl is held.
DropKind DropKindOf(const std::vector<NodeRef>& rows, const NodeRef& target, bool control);

// Makes the list name just the chosen services: those that it names keep their order, others of `all` follow
// in its order. False after the limit's message. `page`: of the group's names.
bool SetEntries(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                const std::vector<Service*>& all, const std::set<const Service*>& chosen,
                const CodePage& page = Windows1252());

// ---- Saving parts of a document.
// Whether the SDB can be a file of its own; else a message.
bool CheckSeparateSdb(const Messages& messages, const StaticDatabase& database);
// Table places of the satellites that are to be saved, ascending: those among the rows of the command; for
// their level those that its list has selected, where none is all of them, or those that a filter leaves:
// `filtered`, nullptr without one.
Rows SatelliteRows(const Document& document, const std::vector<NodeRef>& rows,
                   const std::vector<NodeRef>& selected, const std::vector<NodeRef>* filtered = nullptr);

}  // namespace vexa
