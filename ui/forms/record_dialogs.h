// The dialogs of records, of moving them, and of what a save takes. Each changes the document itself, as one
// step for Undo; false when the user gave up.
#pragma once

#include <optional>
#include <vector>

#include "core/bin_file.h"
#include "ui/editor/editor.h"

namespace vexa {

// The dialog of the node's kind; entries of favourites show the service that they name.
bool EditRecord(EditorWindow& editor, const NodeRef& node);
bool EditLnb(EditorWindow& editor, const NodeRef& node);
bool EditSatellite(EditorWindow& editor, const NodeRef& node);
bool EditCarrier(EditorWindow& editor, const NodeRef& node);
bool EditService(EditorWindow& editor, const NodeRef& node);
bool EditUserBox(EditorWindow& editor, size_t ubi);
bool EditSdb(EditorWindow& editor, size_t sdb);
// Name and entries of a favourite group; opens with the radio half if asked.
bool EditFavourites(EditorWindow& editor, const NodeRef& group, bool radio);
void ShowServiceDetails(EditorWindow& editor, const NodeRef& node);

bool MoveRecords(EditorWindow& editor, const std::vector<NodeRef>& rows, bool swap);
bool MoveServicesOf(EditorWindow& editor, const std::vector<NodeRef>& rows);

// Version and initials for the file.
bool AskVersion(EditorWindow& editor);
std::optional<BinSelection> AskParts(EditorWindow& editor);

}  // namespace vexa
