// What an import asks before the list is read, and what it offers when its database stands in a window.
#pragma once

#include "import/import_command.h"
#include "platform/code_page.h"
#include "ui/editor/editor.h"

namespace vexa {

// Asks how to read the list where its bytes leave that open, and changes the options and the page in which
// its names are shown by the answer. False when the user gave up.
bool AskHowToRead(Application& app, const ListToAsk& list, ListOptions& options, const CodePage*& names);

// Offers to complete the one SDB of the window that was made of `list`; what the user ticks is one step for
// Undo. `says_sides`: the list told East from West.
void OfferCompletion(EditorWindow& editor, const Path& list, bool says_sides);

}  // namespace vexa
