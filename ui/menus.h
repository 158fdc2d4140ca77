// Menus, keys and toolbar made from the command table.
#pragma once

#include "ui/application.h"
#include "view/command_table.h"

namespace vexa {

void LoadMenus(Application& app);
void DestroyMenus(Application& app);
// A pop-up menu; the caller destroys it.
HMENU MakePopup(Application& app, MenuName menu);
// The menu of open windows within a bar; nullptr when it has none.
HMENU WindowMenu(HMENU bar);
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
