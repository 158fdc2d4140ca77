// The frame window and the program's start and end.
#pragma once

#include "ui/application.h"

namespace vexa {

bool RegisterClasses(Application& app);
// Creates and shows the frame. False when the program cannot start; the reason was shown.
bool CreateFrame(Application& app);
// A list does not take its rows any more: tells so, offers to save what was changed, and ends the program.
void EndWithoutList(Application& app);
int RunMessageLoop(Application& app);

// Opens a database file in a window of its own. False when there is nothing to show.
bool OpenDatabaseFile(Application& app, const Path& path);
void RememberFile(Application& app, const Path& path);
// Called when the active window, its selection or its state has changed.
void RefreshFrame(Application& app);

}  // namespace vexa
