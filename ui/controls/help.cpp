#include "ui/controls/help.h"

#include <shellapi.h>

#include "core/messages.h"

namespace vexa {

namespace {

using HtmlHelpFunction = HWND(WINAPI*)(HWND, LPCWSTR, UINT, DWORD_PTR);
constexpr UINT kDisplayTopic = 0, kCloseAll = 0x12;

// Loaded when it is asked for, from the system's folder alone: not every system has it.
HtmlHelpFunction HtmlHelp() {
  static const HtmlHelpFunction function = [] {
    const HMODULE library = LoadLibraryW(SystemFile(L"hhctrl.ocx").c_str());
    return library ? reinterpret_cast<HtmlHelpFunction>(
                         reinterpret_cast<void*>(GetProcAddress(library, "HtmlHelpW")))
                   : nullptr;
  }();
  return function;
}

bool Show(Application& app, const HelpWay& way) {
  if (!way.html_help) return ShowInBrowser(app, way.target);
  if (app.describe_menus) return false;
  const HtmlHelpFunction show = HtmlHelp();
  // Owned by the frame, it outlives the dialog that asked for it.
  const bool shown = show && show(app.frame, way.target.c_str(), kDisplayTopic, 0);
  app.html_help_used |= shown;
  return shown;
}

}  // namespace

void ShowHelp(Application& app, std::string_view page) {
  const Path folder = ProgramFolder();
  const std::vector<HelpWay> ways = HelpWays(folder, page);
  for (const HelpWay& way : ways) {
    if (Show(app, way)) return;
  }
  Tell(app.context.messages, Icon::kInformation, "%s",
       HelpFailureText(folder, ways, HtmlHelp() != nullptr).c_str());
}

bool ShowInBrowser(Application& app, const Path& page) {
  if (app.describe_menus) {
    const std::string name = Utf8FromPath(page);
    return WriteWholeFile(app.context.temporary_folder / "help.txt",
                          {reinterpret_cast<const uint8_t*>(name.data()), name.size()}) == WriteResult::kDone;
  }
  const auto result = reinterpret_cast<INT_PTR>(
      ShellExecuteW(app.frame, L"open", page.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
  return result > 32;
}

void EndHelp(const Application& app) {
  if (app.html_help_used) HtmlHelp()(nullptr, nullptr, kCloseAll, 0);
}

}  // namespace vexa
