#include "view/help_pages.h"

#include <algorithm>
#include <iterator>

#include "platform/text.h"
#include "view/dialog_ids.h"

namespace vexa {

namespace {

template <typename Place>
struct Row {
  Place place;
  const char* page;
};

// tools/make_help.sh looks for a row of each dialog here, and for the page of each row.
constexpr Row<int> kDialogs[] = {
    {IDD_ABOUT, "frame"},
    {IDD_START, "frame"},
    {IDD_PROGRESS, "frame"},
    {IDD_LNB, "lnb"},
    {IDD_SATELLITE, "satellite"},
    {IDD_CARRIER, "carrier"},
    {IDD_SERVICE, "service"},
    {IDD_USER_BOX, "user-box"},
    {IDD_FAVOURITES, "favourites"},
    {IDD_EDIT_SDB, "sdb"},
    {IDD_MOVE, "move"},
    {IDD_MOVE_SERVICE, "move"},
    {IDD_CHANGE_CARRIERS, "move"},
    {IDD_DETAILED_SERVICE, "details"},
    {IDD_VERSION, "save"},
    {IDD_SELECT_PARTS, "save"},
    {IDD_SETTINGS, "settings"},
    {IDD_DEFAULTS, "defaults"},
    {IDD_COLOURS, "colors"},
    {IDD_SORT, "sort"},
    {IDD_FIND, "find"},
    {IDD_FINDINGS, "findings"},
    {IDD_WIZARD_SATELLITES, "import"},
    {IDD_WIZARD_CARRIERS, "import"},
    {IDD_WIZARD_SERVICES, "import"},
    {IDD_MERGER, "merger"},
    {IDD_IMPORT_QUESTION, "import"},
    {IDD_COMPLETION, "import"},
    {IDD_COMPARE, "compare"},
    {IDD_TRANSFER, "transfer"},
    {IDD_UPLOAD_SDBS, "upload"},
    {IDD_RESTORE, "restore"},
    {IDD_PRODUCTION, "production"},
    {IDD_SINGLE_IMAGE, "images"},
    {IDD_MULTIPLE_IMAGE, "images"},
    {IDD_COMPRESSION, "compression"},
    {IDD_CONSOLE_PANEL, "console"},
    {IDD_CONSOLE_FIND, "console"},
};
constexpr Row<HelpWindow> kWindows[] = {
    {HelpWindow::kContents, "index"},  {HelpWindow::kFrame, "frame"},    {HelpWindow::kEditor, "editor"},
    {HelpWindow::kConsole, "console"}, {HelpWindow::kMenus, "commands"},
};

template <typename Rows, typename Place>
std::string_view PageIn(const Rows& rows, Place place) {
  const auto* found =
      std::find_if(std::begin(rows), std::end(rows), [place](const auto& row) { return row.place == place; });
  return found == std::end(rows) ? "index" : found->page;
}

}  // namespace

std::string_view HelpPage(int dialog) {
  return PageIn(kDialogs, dialog);
}

std::string_view HelpPage(HelpWindow window) {
  return PageIn(kWindows, window);
}

std::vector<HelpWay> HelpWays(const Path& folder, std::string_view page) {
  std::vector<HelpWay> ways;
  std::error_code error;
  const std::string file = std::string(page) + ".html";
  Path book = folder / "help.chm", leaf = folder / "help" / file;
  if (std::filesystem::exists(book, error)) ways.push_back({true, book += "::/" + file});
  if (std::filesystem::exists(leaf, error)) ways.push_back({false, leaf});
  return ways;
}

std::string HelpFailureText(const Path& folder, const std::vector<HelpWay>& ways, bool has_html_help) {
  const std::string file = Utf8FromPath(folder / "help.chm");
  if (ways.empty()) return "The help file is missing:\n" + file;
  if (!has_html_help && ways.size() == 1 && ways[0].html_help)
    return "HTML Help is not installed on this system.";
  return "The help file cannot be shown:\n" + file;
}

}  // namespace vexa
