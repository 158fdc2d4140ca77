// Which page of the help explains which dialog or window. Pages are files of the folder help/ without their
// extension.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace vexa {

// What has no dialog number.
enum class HelpWindow { kContents, kFrame, kEditor, kConsole, kMenus };

// "settings"; the table of contents for a number that no dialog has.
std::string_view HelpPage(int dialog);
std::string_view HelpPage(HelpWindow window);

// One way to show a page.
struct HelpWay {
  bool html_help = false;  // else the browser
  Path target;             // of HTML Help "help.chm::/settings.html", of the browser the page's file
};
// The ways for which the files are there, the better first: "help.chm" beside the program, then the page in
// its folder "help".
std::vector<HelpWay> HelpWays(const Path& folder, std::string_view page);
// What to say when none of the ways led to the page.
std::string HelpFailureText(const Path& folder, const std::vector<HelpWay>& ways, bool has_html_help);

}  // namespace vexa
