// The dialogs of records, of moving them, and of what a save takes. Each changes the document itself, as one
// step for Undo; false when the user gave up.
#pragma once

#include <optional>
#include <vector>

#include "core/bin_file.h"
#include "ui/editor/editor.h"

namespace vexa {

// All nodes are of the window's document as it is, of one kind and one SDB. The dialog of their kind, for all
// LNBs, satellites, carriers, services or user box records at once, of other nodes for the first one; entries
// of favourites show the service that they name.
bool EditRecords(EditorWindow& editor, const std::vector<NodeRef>& rows);
// Of that kind of nodes alone.
bool EditLnbs(EditorWindow& editor, const std::vector<NodeRef>& rows);
bool EditSatellites(EditorWindow& editor, const std::vector<NodeRef>& rows);
bool EditCarriers(EditorWindow& editor, const std::vector<NodeRef>& rows);
bool EditServices(EditorWindow& editor, const std::vector<NodeRef>& rows);
bool EditUserBoxes(EditorWindow& editor, const std::vector<NodeRef>& rows);
// Of the SDB at that place, from 0.
bool EditSdb(EditorWindow& editor, size_t sdb);
// Name and entries of a favourite group; opens with the radio half if asked.
bool EditFavourites(EditorWindow& editor, const NodeRef& group, bool radio);
// Shows every field of the service; nothing can be changed there.
void ShowServiceDetails(EditorWindow& editor, const NodeRef& node);

// Asks where the rows are to go, or for the row to swap with; the rows lie in one list and are no services.
bool MoveRecords(EditorWindow& editor, const std::vector<NodeRef>& rows, bool swap);
// Asks for the carrier, and the place there, to which the services go: those among the rows, and those that
// entries of favourites among them name.
bool MoveServicesOf(EditorWindow& editor, const std::vector<NodeRef>& rows);

// Version and initials of the window's next save. False when the user gave up.
bool AskVersion(EditorWindow& editor);
// Which SDBs and user box records are to be saved; nothing when the user gave up.
std::optional<BinSelection> AskParts(EditorWindow& editor);

}  // namespace vexa
