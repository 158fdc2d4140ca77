// Dialogs of the Options and Edit menus.
#pragma once

#include <vector>

#include "ui/editor/editor.h"
#include "view/settings_form.h"

namespace vexa {

// The configuration dialog, opened by the command that states the request. True when it ended with OK and the
// chosen configuration is in force.
bool ShowSettings(Application& app, const SettingsRequest& request);
// The dialogs "Default Values", colours and sorting: each changes what it is about, and keeps it for later
// runs where it is a setting, when the user ends it with OK; sorting is one step for Undo.
void ShowDefaultValues(Application& app);
void ShowColours(Application& app);
void ShowSort(EditorWindow& editor);
// Asks what to find and goes there.
void ShowFind(EditorWindow& editor);
// Goes to the next record of the last search (before: to the one before), or asks for a search.
void FindAgain(EditorWindow& editor, bool before);
// The list of what breaks the rules, beside the frame. A row leads to its record.
void ShowFindings(EditorWindow& editor);

// Asks for another database and shows what differs in the window's, which can take it over.
void ShowComparison(EditorWindow& editor);
// Asks for an older database or a list and brings the window's SDBs into its order, as one step for Undo;
// says how much of them it knew.
void ApplyOrderFrom(EditorWindow& editor);

// One string for each element of an array of names.
template <class Names>
std::vector<std::string> TextsOf(const Names& names) {
  return {names.begin(), names.end()};
}

}  // namespace vexa
