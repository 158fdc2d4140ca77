// Drives one running editor from outside, by messages, and reads its windows. Every wait ends: a window that
// does not answer fails the test, and the program is ended with the object.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h.
#include <commctrl.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/files.h"

namespace vexa {

inline constexpr UINT kAnswerTime = 15000;  // ms; a window silent for longer hangs

struct MenuLine {
  int depth = 0;
  unsigned id = 0;
  bool greyed = false, checked = false;
  std::string text;  // a tab reads '|'
};

class EditorDriver {
 public:
  // Starts `program` with arguments, in test mode unless they say how.
  explicit EditorDriver(const Path& program, std::vector<std::wstring> arguments = {L"--test-mode"});
  ~EditorDriver();
  EditorDriver(const EditorDriver&) = delete;
  EditorDriver& operator=(const EditorDriver&) = delete;

  // Waits until `done`; fails the test after `seconds` with `what`.
  bool Until(const std::string& what, const std::function<bool()>& done, double seconds = 20);
  bool WaitForFrame();
  // The program answers messages.
  bool Answers();
  // What was posted to the program before has had its turn.
  bool HasCaughtUp();
  // Sends the command and waits until the program has carried it out or shows a box for it.
  void Command(unsigned id);
  void Close();
  // The exit code; nothing when it does not end.
  std::optional<unsigned> ExitCode(double seconds = 20);
  bool Running();
  void Kill();

  HWND frame() const { return frame_; }
  HWND ActiveChild();
  std::vector<HWND> Children();
  std::string Title(HWND window);
  Path TemporaryFolder() const;

  // A dialog or message box of the program, once it shows; without one the test ends.
  HWND WaitForBox(const std::string& title = "");
  HWND Open(unsigned command, const std::string& title = "");  // the box that a command shows
  HWND FindBox(const std::string& title = "");
  std::string BoxText(HWND box);  // texts of its labels, joined by '\n'
  // The two parts of a message box's text, with an empty line between them: what is told, and about what and
  // why; the second may be empty.
  std::string MessageText(HWND box);
  std::string MessageDetail(HWND box);
  void Press(HWND box, int button);
  // Waits for a message box and answers it; its text, and its detail.
  std::string Answer(int button);
  std::string detail() const { return detail_; }
  // Waits until a list is imported and takes nothing of what is offered then to complete it.
  void DeclineCompletion();
  // Gives a name to the open file dialog and takes it.
  void ChooseFile(const std::string& title, const Path& path);

  // The active child's tree as lines, two blanks a level, with the nodes opened on the way.
  std::vector<std::string> Tree(bool expand_all);
  // Selects the item at the labels, opening what is on the way.
  bool SelectItem(const std::vector<std::string>& path);
  std::vector<std::string> ListColumns();
  int ListCount();
  std::string Cell(int row, int column);
  std::vector<std::string> Labels();
  // List controls and list boxes of dialogs. Rows are reached by the keys of the user.
  int RowsOf(HWND list);
  std::string CellOf(HWND list, int row, int column);
  bool IsTicked(HWND list, int row);
  void GoTo(HWND list, int row);
  void Tick(HWND list, int row);       // by the space key
  void ClickTick(HWND list, int row);  // by the mouse
  RECT RowPlace(HWND list, int row);   // its label, in the control
  // The tree's item at the labels, opened on the way and brought in sight.
  RECT ItemPlace(const std::vector<std::string>& path);
  void SetColumnOrder(HWND list, const std::vector<int>& order);
  void Click(HWND control, POINT at);
  // With the mouse from one place of a control to another; Esc comes before the drop unless it shall be one.
  void Drag(HWND control, POINT from, POINT to, bool drop = true, WPARAM keys = 0);
  HWND Focused();
  std::vector<std::string> EntriesOf(HWND list_box);
  // The list's rows that are selected afterwards; the first of them has its focus.
  void SelectRows(HWND list, const std::vector<int>& rows);
  std::string ItemText(HWND tree, HTREEITEM item);
  void Key(HWND control, unsigned key);
  void Push(HWND box, int button);  // a button or box of a dialog that may stay open
  // Gives a folder to the open folder dialog and takes it.
  void ChooseFolder(HWND dialog, const Path& folder);
  // The frame comes to a screen of other resolution, which suggests the place.
  void ChangeResolution(unsigned dots, const RECT& place);
  // Files dropped on the frame.
  void DropFiles(const std::vector<Path>& files);
  std::vector<MenuLine> Menus();
  void ExhaustMemory();         // the program's next allocation fails
  void Lose(unsigned request);  // one of the losses of test mode: kLoseViewer, kLoseTree, kLoseList
  // kFailAllocation or kFillLog of test mode with its number.
  void Arrange(unsigned request, int number);

 private:
  HWND ChildControl(const wchar_t* window_class);
  LRESULT Send(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  HTREEITEM FirstBelow(HWND tree, HTREEITEM item);  // opens the item
  // The item at the path, its first label looked for from `item` or the root on.
  HTREEITEM ItemFrom(HWND tree, HTREEITEM item, const std::vector<std::string>& path);
  HTREEITEM ItemAt(HWND tree, const std::vector<std::string>& path);
  bool SelectFrom(HWND tree, HTREEITEM item, const std::vector<std::string>& path);
  RECT AskRect(HWND control, UINT message, WPARAM wparam, RECT asked);
  void Walk(HWND tree, HTREEITEM item, int depth, bool expand, std::vector<std::string>& lines);
  void* Remote();  // memory in the program for one structure and one text

  std::string detail_;
  PROCESS_INFORMATION process_{};
  HWND frame_ = nullptr;
  void* remote_ = nullptr;
};

// The editor beside the running program.
Path EditorProgram();
// The editor, once its frame shows.
struct RunningEditor : EditorDriver {
  explicit RunningEditor(std::vector<std::wstring> arguments = {L"--test-mode"})
      : EditorDriver(EditorProgram(), std::move(arguments)) {
    EXPECT_TRUE(WaitForFrame());
  }
};
// Closes the editor: it ends with status 0 and takes its temporary folder with it.
void ExpectCleanEnd(EditorDriver& editor);

}  // namespace vexa
