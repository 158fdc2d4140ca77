// The uploader console's window: log, command line and control panel over serial/console.h. One at most.
#pragma once

#include "serial/console.h"
#include "ui/controls/application.h"
#include "view/window_state.h"

namespace vexa {

struct ConsoleWindow {
  Application* app = nullptr;
  bool* refusal_told = nullptr;  // while the window is made: set once the user knows why it is not
  HWND window = nullptr, log = nullptr, line = nullptr, panel = nullptr, tips = nullptr;
  HFONT font = nullptr;
  bool line_shown = true;
  CommandHistory history;
  std::string searched;
  bool match_case = false;
  bool log_cut = false;   // the view does not hold the log's beginning
  bool restored = false;  // database windows were maximised before it opened, and are again when it closes
  ConsoleState shown_state = ConsoleState::kDisconnected;
  bool shown_upload = false, shown_data = false, telling = false;
  uint64_t next_update = 0;  // of the view
  Console console;
};

// Once, before the window opens. False when the system refuses.
bool RegisterConsoleClass(Application& app);
// The console's window, which belongs to itself; nullptr: it is not open.
ConsoleWindow* OpenConsoleOf(const Application& app);

// Adds what its commands look at.
void SeeConsole(WindowState& state, const Application& app);
// The port that the console holds open; empty: none.
std::string ConsolePort(const Application& app);
// The frame is about to close: asks when a port is connected. False: everything stays open.
bool MayEndConsole(Application& app);
// Closes it without a question; before the temporary folder goes.
void EndConsole(Application& app);
// Tab goes round the console's controls, commands have their keys here, Ctrl+Z and Ctrl+A are the command
// line's own while it has the focus; true when the message was such a key.
bool TranslateConsoleKey(Application& app, const MSG& message);

// --- shared by the console's files ---

// Opens it where it is not open yet. False, after a message, when the system makes no window.
bool OpenConsoleWindow(Application& app);
// Asks whether the console may close, and disconnects its port. False: it stays open, or has ended already.
bool MayCloseConsole(ConsoleWindow& console);
// Disconnects; a port that does not close ends the whole program.
void Disconnect(ConsoleWindow& console);
// Shows connection, upload and port settings as they are now.
void ShowConsoleState(ConsoleWindow& console);
// Shows or hides the line for commands, and gives its place to the log.
void ShowCommandLine(ConsoleWindow& console, bool shown);
// Puts the options in force, shows them and keeps them for later runs.
void ChangeConsoleOptions(ConsoleWindow& console, const ConsoleOptions& options);
// Milliseconds of a clock that only goes forward: the `now` of serial/console.h.
uint64_t ConsoleClock();

}  // namespace vexa
