// What the commands of the table do. A command without a function is not built: it is greyed everywhere.
#pragma once

#include <string>

#include "ui/controls/application.h"

namespace vexa {

// Runs the command when it can run; true when the table knows it.
bool RunCommand(Application& app, UINT id);
bool CanRun(Application& app, UINT id);
bool IsChecked(Application& app, UINT id);
// The item's text where it follows the state ("&Undo"); empty: the table's.
std::string ChangedText(Application& app, UINT id);
// What is there, as `Need` bits.
uint32_t PresentNeeds(Application& app);
// Help for the status line: what it does, or what it lacks.
std::string CommandHelp(Application& app, UINT id);

}  // namespace vexa
