// The database window: tree, list, panel and view buttons over one open document.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "config/settings.h"
#include "core/bin_file.h"
#include "core/undo.h"
#include "platform/file_identity.h"
#include "ui/controls/application.h"
#include "view/list_filter.h"
#include "view/node_edit.h"
#include "view/picture.h"
#include "view/row_order.h"
#include "view/tree_path.h"
#include "view/view_model.h"
#include "view/window_state.h"

namespace vexa {

// An item of the tree. The control looks up each item that a message names among all of its items; what can
// be known without it is therefore kept here.
struct TreeNode {
  NodeRef ref;
  HTREEITEM item = nullptr;  // its parameter is the address of this node
  TreeNode* parent = nullptr;
  bool expanded = false;
  uint64_t content = 0;  // what the record says, while records are built anew; else means nothing
  std::vector<std::unique_ptr<TreeNode>> children;  // once they are in the control
};

// Records on their way to another place.
struct DragState {
  bool active = false;
  std::vector<NodeRef> rows;
  HIMAGELIST image = nullptr;
  POINT at{};                       // in the window
  HTREEITEM target_item = nullptr;  // under the cursor, or
  int target_row = -1;
  DropMark mark;  // of the target
};

struct EditorWindow {
  Application* app = nullptr;
  HWND window = nullptr;
  Document document;
  Path path;                            // empty: not saved yet
  std::optional<FileState> file_state;  // of that file, when it was read or saved here
  std::optional<uint64_t> saved_size;   // of the file that a save would write; not known after a change
  Path imported_from;                   // a list; empty: none
  std::string name;                     // caption of a document without path
  bool changed = false;
  UndoHistory history;
  BinVersion version{kVersionMajor, kVersionMinor, ""};  // of the next save

  bool* refusal_told = nullptr;  // while the window is made: set once the user knows why it is not

  HWND last_focus = nullptr;  // tree or list, whichever had the focus last
  HWND tree = nullptr, list = nullptr, information = nullptr, bar = nullptr, tips = nullptr;
  HWND filter_label = nullptr, filter_field = nullptr, filter_status = nullptr;
  std::array<HWND, 5> labels{};
  std::array<HWND, 4> view_buttons{};
  HFONT font = nullptr;
  int split = 280;  // width of the tree at 96 dots an inch
  enum { kNotSplitting, kSplitTree, kSplitPicture } splitting = kNotSplitting;

  TreeNode root;                      // above the roots of the tree
  std::vector<uint32_t> shown_slots;  // of the SDBs in the tree, in its order
  bool settled = true;                // false: the tree's selection is not the user's
  bool selection_told = false;        // kSelectionChanged is on its way
  NodeRef selected;                   // tree node
  ListView view = ListView::kBelow;
  bool details = false;  // the list shows the details of `shown_record`
  NodeRef shown_record;
  ListModel rows;
  size_t unfiltered = 0;   // rows that the list has without the filter
  ListFilter filter;       // of the list's rows, whichever list it is
  RowOrder order;          // of the list's rows; the records keep theirs
  int column_scale = 100;  // percent, of the columns' widths; that of the screen when they were made
  DragState drag;
  HWND picture_pane = nullptr;  // shown while `window.picture_height` of the program is not 0
  Picture picture;
  std::shared_ptr<const StaticDatabase> beneath;  // with which it was compared last
  std::string picture_tip;                        // of what is under the mouse
  std::optional<POINT> picture_drag;
  POINT picture_drag_end{};
  std::wstring cell;  // text handed to the list control
};

// A new window over `document`; an empty `path` for a database without file; `changed`: it is to be saved
// before it goes; `list`: the list that it was imported from, by whose name it is called until it is saved;
// empty: none. The window owns the structure, until it is destroyed. nullptr, after a message, when the
// system makes no window.
EditorWindow* OpenEditor(Application& app, Document document, const Path& path, bool changed,
                         const Path& list = {});
// The active database window; nullptr when there is none or another window is active.
EditorWindow* ActiveEditor(const Application& app);
// The database window of this handle; nullptr for another window, and for one that is gone.
EditorWindow* EditorOf(HWND window);
// The one whose file this path names; nullptr when there is none.
EditorWindow* EditorOfFile(const Application& app, const Path& path);
// All database windows, the one in front first.
std::vector<EditorWindow*> AllEditors(const Application& app);

// Makes the list's rows anew for the selected node and view. False, without a message: the control does not
// follow, and the program cannot go on.
bool RefreshList(EditorWindow& editor);
// Enables and presses the buttons below the list as what is selected asks for.
void RefreshButtons(EditorWindow& editor);
// Name and mark of a change in the title.
void RefreshCaption(EditorWindow& editor);
// Says whether there is something to save, and shows it.
void MarkChanged(EditorWindow& editor, bool changed);
// Shows or hides the pane with the picture (ui/editor/picture_pane.h) in all database windows.
void SwitchPicture(Application& app);
// What a view button or command does: the list shows that view of the selected node.
void ShowView(EditorWindow& editor, ListView view);
// The "Information" command: the list shows every field of the record in sight, or, after a message, nothing
// happens.
// Done again, it leaves the details.
void ShowInformation(EditorWindow& editor);
// The list shows again what it showed before the details, with their record selected.
void LeaveInformation(EditorWindow& editor);
// Shows the record at the place: its parent selected in the tree, itself in the list, which gets the focus if
// asked. False when there is no such record.
bool ShowRecord(EditorWindow& editor, const TreePath& place, bool focus);
// Selects the tree's node at the place. False when there is none.
bool SelectTreeNode(EditorWindow& editor, const TreePath& place);
// The record that a command acts on: the list's when the list has a selected row and the focus, else the
// tree's.
NodeRef CommandNode(const EditorWindow& editor);
// What the user looks at: that record, or the tree's node where no command finds one.
NodeRef ShownNode(const EditorWindow& editor);
// All of them: the list's selected rows, else the tree's node.
std::vector<NodeRef> CommandRows(const EditorWindow& editor);
// The window as its commands see it.
DatabaseLook LookOf(const EditorWindow& editor);
// The SDB of the selection, the first one without; nullptr when there is none.
const OpenSdb* SelectedSdb(const EditorWindow& editor);

// Asks about changes that are not saved, and saves. False when the user keeps the window open or a save
// failed.
bool MayClose(EditorWindow& editor);
// Saves to its file, or asks for one where it has none. False when the user gave up, or after a message; then
// the file is as it was.
bool SaveEditor(EditorWindow& editor);
// The same to a file that the user names.
bool SaveEditorAs(EditorWindow& editor);
// By which number the window's unsaved work is kept for the case that the program fails.
uint64_t NumberOfKept(const EditorWindow& editor);
// That work is kept no longer: it is saved, or the window goes.
void ForgetKept(const EditorWindow& editor);

// The "Filter" command: the keyboard goes to the filter's field.
void GoToFilter(EditorWindow& editor);
// Esc and Backspace leave the details of a record, Esc ends a filter; Enter and Down go from its field to the
// list. True when taken.
bool TakeLeaveKey(EditorWindow& editor, const MSG& message);
// While records are dragged no key may change them: Esc ends the drag, the others are lost. True when taken.
bool TakeDragKey(EditorWindow& editor, const MSG& message);
// Keys that no control of the window takes: the way from control to control. True when taken.
bool TranslateEditorKey(EditorWindow& editor, const MSG& message);
// Lets the tooltip of the control under the mouse come and go.
void ShowTips(const EditorWindow& editor, MSG message);

// Once, before the first window. False when the system refuses.
bool RegisterEditorClass(Application& app);

}  // namespace vexa
