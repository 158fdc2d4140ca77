// The frame window and the program's start and end.
#pragma once

#include "ui/controls/application.h"

namespace vexa {

// The classes of the frame, the database window and the console; once. False, after a message, when the
// system refuses.
bool RegisterClasses(Application& app);
// Creates and shows the frame. False when the program cannot start; the reason was shown.
bool CreateFrame(Application& app);
// Serves the windows until the program is to end. The exit status of the program: 0, or why it ended.
int RunMessageLoop(Application& app);
// The box that names the program and its version; returns when it is closed.
void ShowAbout(Application& app);

// Opens a database file in a window of its own, or brings the window to the front that shows it already.
// False when there is nothing to show.
bool OpenDatabaseFile(Application& app, const Path& path);
// Files that come from outside, databases and channel lists, which must not change what an open dialog acts
// on: opened one after the other as soon as no dialog is open. OpenWaiting goes on with them.
void OpenWhenFree(Application& app, const std::vector<Path>& paths);
void OpenWaiting(Application& app);
// The same for one file, after the messages that wait at the frame.
void OpenLater(Application& app, const Path& path);
// Whether a window shows the file.
bool IsOpen(const Application& app, const Path& path);
// Puts the file on top of the recent ones.
void RememberFile(Application& app, const Path& path);
// Called when the active window, its selection or its state has changed.
void RefreshFrame(Application& app);

}  // namespace vexa
