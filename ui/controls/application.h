// The state of the whole program, owned by the entry point and handed to every window that it makes.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "config/settings.h"
#include "core/context.h"
#include "core/database.h"
#include "core/find.h"
#include "platform/code_page.h"
#include "platform/system_error.h"
#include "platform/temporary_folder.h"
#include "ui/controls/windows_api.h"
#include "view/command_table.h"
#include "view/look_angle.h"
#include "view/recovery.h"
#include "view/room.h"

namespace vexa {

struct Application {
  HINSTANCE instance = nullptr;
  std::string title = "Vexa Editor";  // caption of every message box
  HANDLE thread_exit_event = nullptr;
  std::optional<Path> open_at_start;
  HWND frame = nullptr, client = nullptr, start_page = nullptr, toolbar = nullptr, status = nullptr;
  HIMAGELIST toolbar_pictures = nullptr, tree_pictures = nullptr;
  HFONT status_font = nullptr;
  HMENU frame_menu = nullptr, editor_menu = nullptr, console_menu = nullptr;
  std::vector<HMENU> recent_menus;  // the "Recent Files" menus of the three bars
  HACCEL editor_keys = nullptr, other_keys = nullptr;
  HWND console = nullptr;  // the uploader console, while it is open

  std::unique_ptr<TemporaryFolder> folder;  // the program's own
  std::unique_ptr<Recovery> recovery;       // keeps unsaved work; empty: none can be kept
  Context context;  // its messages are boxes over the frame; its temporary folder is the program's
  SettingsStore settings;
  Path configuration_file;
  ProjectConfig config;
  bool hexadecimal = false;                // PIDs in headers, values and input
  const CodePage* names = &Windows1252();  // the page in which the names of databases are shown
  RecentFiles recent;
  std::wstring report_viewer = L"Notepad.exe";
  EditorColourTable colours = DefaultColours();
  DefaultRecords defaults;
  UINT describe_menus = 0;    // test mode only: the message that asks for the menus
  int exit_code = 0;          // of the program; not 0: the user did not end it
  bool end_agreed = false;    // the user was asked what the end of the session is to leave
  bool must_end = false;      // whatever is answered to the questions before
  int busy = 0;               // jobs that let messages through while they run; commands and closing wait
  std::vector<Path> waiting;  // files to open as soon as no dialog is open
  int untitled = 0;           // new databases so far, for their captions
  Path merge_file;            // chosen last in the merger's file dialogs
  WindowSettings window;
  RoomLook room;               // in the receiver, as the status line shows it
  std::optional<Place> place;  // where the user is, from where satellites are looked at
  std::string outcome;         // of the last transfer or command, in the status line until the next command
  FindQuery last_search;
  HWND findings = nullptr;               // the window of the database check, while it is open
  std::function<bool()> port_connected;  // whether the uploader console's port is open; empty: no console

  // What other windows ask of the frame, which sets all of these before it makes a window.
  std::function<void()> refresh_frame;  // the active window, its selection or its state has changed
  // A list does not take its rows any more: tells so, offers to save what was changed, and ends the program.
  std::function<void()> end_without_list;
  std::function<void(const Path&)> remember_file;  // among the recent files
  std::function<void(MenuName)> show_menu_bar;     // of a window that has become active
  // Shows the pop-up menu at a point of the screen until a command is chosen; `flags` as for TrackPopupMenu.
  std::function<void(MenuName, POINT, UINT flags)> show_popup;
  bool html_help_used = false;  // HTML Help has shown a page
};

inline constexpr const wchar_t* kFrameClass = L"VexaMdi";
inline constexpr const wchar_t* kEditorClass = L"VexaChild";
inline constexpr const wchar_t* kConsoleClass = L"PortloadChild";

// A job that lets messages through runs for as long as the object lives.
class Busy {
 public:
  explicit Busy(Application& app) : app_(app) { ++app_.busy; }
  ~Busy() { --app_.busy; }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

 private:
  Application& app_;
};

// A message to the frame: the active database window is maximised again, when there is one.
inline constexpr UINT kMaximizeAgain = WM_APP + 2;
// A message to the frame, after all that refreshes it: the page of an empty frame comes, or goes.
inline constexpr UINT kShowStartPage = WM_APP + 7;
// A message to the frame: a transfer is over, however it ended.
inline constexpr UINT kTransferEnded = WM_APP + 5;

// Messages as boxes over the program's top window.
Messages BoxMessages(Application& app);
// The window that a box or dialog belongs to: the active dialog, else the frame.
HWND OwnerWindow(const Application& app);
// Tells that the system made no window, why and what to do next. `what`: the window, or what was to be shown
// in it.
void TellNoWindow(const Application& app, const std::string& what,
                  const std::error_code& why = LastSystemError(),
                  const char* text = "The window could not be opened.");
// Boxes with a question, over OwnerWindow; closing one means Cancel. `text` is UTF-8.
enum class Answer { kYes, kNo, kCancel };
Answer AskYesNoCancel(const Application& app, const std::string& text);
bool AskOkCancel(const Application& app, const std::string& text, bool ok_is_default = true);

}  // namespace vexa
