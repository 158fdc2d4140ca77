// Menus, keys and toolbar made from the command table.
#pragma once

#include "ui/controls/application.h"
#include "view/menu_table.h"

namespace vexa {

// Makes the bars and pop-ups of all windows, and the tables of keys; they belong to the application.
void LoadMenus(Application& app);
// Destroys those bars that are still there, and the tables of keys.
void DestroyMenus(Application& app);
// Puts the bar of a window that has become active: kFrame, kEditor or kConsole.
void ShowMenuBar(Application& app, MenuName name);
// Shows a pop-up menu at a point of the screen until a command is chosen; `flags` as for TrackPopupMenu.
void ShowPopupMenu(Application& app, MenuName name, POINT at, UINT flags);
// Lists the recent files anew in every menu that has them.
void RefreshRecentMenus(Application& app);
// Greys, checks and names the items of a menu that is about to open.
void PrepareMenu(Application& app, HMENU menu);
// Below the frame's menu bar. False when the system makes none.
bool CreateToolbar(Application& app);
// At the resolution of the frame's screen.
void ShowToolbarPictures(Application& app);
// Greys the buttons, and gives them their pictures, by what can be done.
void RefreshToolbar(Application& app);
// Shows the drop-down of a toolbar button below it.
void DropDown(Application& app, const NMTOOLBARW& button);

}  // namespace vexa
