// The pages of the help (view/help_pages.h) on the screen.
#pragma once

#include "ui/controls/application.h"
#include "view/help_pages.h"

namespace vexa {

// Shows the page in HTML Help, else in the browser, else says why not. In test mode nothing opens: the page's
// file is named in "help.txt" in the program's temporary folder.
void ShowHelp(Application& app, std::string_view page);
// A page of the file system in the browser. False: no program shows it. In test mode nothing opens, as above.
bool ShowInBrowser(Application& app, const Path& page);
// The windows of HTML Help go; before the program ends.
void EndHelp(const Application& app);

}  // namespace vexa
