// Menus, keys and toolbar made from the command table.
#pragma once

#include "ui/controls/application.h"
#include "view/menu_table.h"

namespace vexa {

void LoadMenus(Application& app);
void DestroyMenus(Application& app);
// Puts the bar of a window that has become active: kFrame, kEditor or kConsole.
void ShowMenuBar(Application& app, MenuName name);
// Shows a pop-up menu at a point of the screen until a command is chosen; `flags` as for TrackPopupMenu.
void ShowPopupMenu(Application& app, MenuName name, POINT at, UINT flags);
void RefreshRecentMenus(Application& app);
// Greys, checks and names the items of a menu that is about to open.
void PrepareMenu(Application& app, HMENU menu);
bool CreateToolbar(Application& app);
// At the resolution of the frame's screen.
void ShowToolbarPictures(Application& app);
void RefreshToolbar(Application& app);
// Shows the drop-down of a toolbar button below it.
void DropDown(Application& app, const NMTOOLBARW& button);

}  // namespace vexa
