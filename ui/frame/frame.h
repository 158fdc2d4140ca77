// The frame window and the program's start and end.
#pragma once

#include "ui/controls/application.h"

namespace vexa {

bool RegisterClasses(Application& app);
// Creates and shows the frame. False when the program cannot start; the reason was shown.
bool CreateFrame(Application& app);
int RunMessageLoop(Application& app);
void ShowAbout(Application& app);

// Opens a database file in a window of its own, or brings the window to the front that shows it already.
// False when there is nothing to show.
bool OpenDatabaseFile(Application& app, const Path& path);
// Files that come from outside, which must not change what an open dialog acts on: opened one after the other
// as soon as no dialog is open. OpenWaiting goes on with them.
void OpenWhenFree(Application& app, const std::vector<Path>& paths);
void OpenWaiting(Application& app);
void RememberFile(Application& app, const Path& path);
// Called when the active window, its selection or its state has changed.
void RefreshFrame(Application& app);

}  // namespace vexa
