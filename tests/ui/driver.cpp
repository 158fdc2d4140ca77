#include "tests/ui/driver.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "core/messages.h"
#include "ui/controls/application.h"
#include "ui/frame/test_mode.h"

namespace vexa {

namespace {

constexpr size_t kRemoteSize = 8192, kTextOffset = 1024, kTextUnits = 1024;

std::wstring ClassOf(HWND window) {
  wchar_t name[64] = L"";
  GetClassNameW(window, name, 64);
  return name;
}

struct Search {
  DWORD process;
  const std::function<bool(HWND)>* wanted;
  std::vector<HWND> found;
};

BOOL CALLBACK AddWanted(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<Search*>(parameter);
  DWORD owner = 0;
  GetWindowThreadProcessId(window, &owner);
  if (owner == search.process && (*search.wanted)(window)) search.found.push_back(window);
  return TRUE;
}

// Top windows of one process that pass the test.
std::vector<HWND> TopWindows(DWORD process, const std::function<bool(HWND)>& wanted) {
  Search search{process, &wanted, {}};
  EnumWindows(AddWanted, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

}  // namespace

EditorDriver::EditorDriver(const Path& program, std::vector<std::wstring> arguments) {
  std::wstring line = L"\"" + program.native() + L"\"";
  for (const std::wstring& argument : arguments) line += L" \"" + argument + L"\"";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  const ULONGLONG end = GetTickCount64() + 20000;
  BOOL started = FALSE;
  // A system under load refuses a start now and then; a user would click once more.
  while (!(started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                    &start, &process_)) &&
         GetTickCount64() < end)
    Sleep(500);
  EXPECT_TRUE(started) << Utf8(line) << ": error " << GetLastError();
}

void EditorDriver::Kill() {
  if (Running()) TerminateProcess(process_.hProcess, 99);
  WaitForSingleObject(process_.hProcess, 5000);
}

EditorDriver::~EditorDriver() {
  Kill();
  // What an ended program could not clear away itself.
  if (frame_) RemoveFolder(TemporaryFolder());
  CloseHandle(process_.hThread);
  CloseHandle(process_.hProcess);
}

bool EditorDriver::Until(const std::string& what, const std::function<bool()>& done, double seconds) {
  const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(seconds * 1000);
  while (!done()) {
    if (GetTickCount64() > end) {
      ADD_FAILURE() << "waited in vain for: " << what;
      return false;
    }
    Sleep(10);
  }
  return true;
}

bool EditorDriver::Running() {
  return process_.hProcess && WaitForSingleObject(process_.hProcess, 0) == WAIT_TIMEOUT;
}

std::optional<unsigned> EditorDriver::ExitCode(double seconds) {
  if (WaitForSingleObject(process_.hProcess, static_cast<DWORD>(seconds * 1000)) != WAIT_OBJECT_0)
    return std::nullopt;
  DWORD code = 0;
  GetExitCodeProcess(process_.hProcess, &code);
  return code;
}

bool EditorDriver::WaitForFrame() {
  return Until(
      "the frame",
      [this] {
        const auto frames = TopWindows(process_.dwProcessId, [](HWND window) {
          return ClassOf(window) == kFrameClass && IsWindowVisible(window);
        });
        if (!frames.empty()) frame_ = frames[0];
        return frame_ != nullptr;
      },
      60);
}

LRESULT EditorDriver::Send(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  DWORD_PTR result = 0;
  if (!SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, kAnswerTime, &result)) {
    ADD_FAILURE() << "the window does not answer message " << message;
  }
  return static_cast<LRESULT>(result);
}

bool EditorDriver::Answers() {
  DWORD_PTR result = 0;
  return SendMessageTimeoutW(frame_, WM_NULL, 0, 0, SMTO_NORMAL, kAnswerTime, &result) != 0;
}

bool EditorDriver::HasCaughtUp() {
  RemovePropW(frame_, kTestMessage);
  PostMessageW(frame_, RegisterWindowMessageW(kTestMessage), kMarkQueue, 0);
  return Until("the mark in the queue", [&] { return GetPropW(frame_, kTestMessage) != nullptr; });
}

void EditorDriver::Command(unsigned id) {
  // Not waited for, as the command may show a box; but taken before the next question, which is sent too.
  SendNotifyMessageW(frame_, WM_COMMAND, id, 0);
  EXPECT_TRUE(Answers()) << "hangs after command " << id;
}

void EditorDriver::Close() {
  PostMessageW(frame_, WM_CLOSE, 0, 0);
}

std::vector<HWND> EditorDriver::Children() {
  std::vector<HWND> children;
  HWND client = FindWindowExW(frame_, nullptr, L"MDIClient", nullptr);
  for (HWND child = nullptr; (child = FindWindowExW(client, child, kEditorClass, nullptr)) != nullptr;)
    children.push_back(child);
  return children;
}

HWND EditorDriver::ActiveChild() {
  HWND client = FindWindowExW(frame_, nullptr, L"MDIClient", nullptr);
  return reinterpret_cast<HWND>(Send(client, WM_MDIGETACTIVE, 0, 0));
}

std::string EditorDriver::Title(HWND window) {
  wchar_t text[2048] = L"";
  DWORD_PTR length = 0;
  SendMessageTimeoutW(window, WM_GETTEXT, 2048, reinterpret_cast<LPARAM>(text), SMTO_NORMAL, kAnswerTime,
                      &length);
  return Utf8(text);
}

Path EditorDriver::TemporaryFolder() const {
  std::error_code error;
  return std::filesystem::temp_directory_path(error) /
         Format("Temp%x", static_cast<unsigned>(reinterpret_cast<UINT_PTR>(frame_)));
}

HWND EditorDriver::FindBox(const std::string& title) {
  const auto boxes = TopWindows(process_.dwProcessId, [&](HWND window) {
    return ClassOf(window) == L"#32770" && IsWindowVisible(window) &&
           (title.empty() || Title(window) == title);
  });
  return boxes.empty() ? nullptr : boxes[0];
}

HWND EditorDriver::WaitForBox(const std::string& title) {
  HWND box = nullptr;
  if (!Until("a box \"" + title + "\"", [&] { return (box = FindBox(title)) != nullptr; }))
    throw std::runtime_error("no box \"" + title + "\"");
  return box;
}

HWND EditorDriver::Open(unsigned command, const std::string& title) {
  Command(command);
  return WaitForBox(title);
}

std::string EditorDriver::MessageText(HWND box) {
  const std::string text = BoxText(box);
  return text.substr(0, text.find("\n\n"));
}

std::string EditorDriver::MessageDetail(HWND box) {
  const std::string text = BoxText(box);
  const size_t line = text.find("\n\n");
  return line == text.npos ? "" : text.substr(line + 2);
}

std::string EditorDriver::BoxText(HWND box) {
  std::string text;
  for (HWND label = nullptr; (label = FindWindowExW(box, label, L"Static", nullptr)) != nullptr;) {
    const std::string line = Title(label);
    if (line.empty()) continue;
    if (!text.empty()) text += '\n';
    text += line;
  }
  return text;
}

void EditorDriver::Press(HWND box, int button) {
  PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button),
               reinterpret_cast<LPARAM>(GetDlgItem(box, button)));
  Until("the box to close", [&] { return !IsWindow(box) || !IsWindowVisible(box); });
}

std::string EditorDriver::Answer(int button) {
  HWND box = WaitForBox();
  const std::string text = MessageText(box);
  detail_ = MessageDetail(box);
  Press(box, button);
  return text;
}

void EditorDriver::DeclineCompletion() {
  Press(WaitForBox("Complete the List"), IDCANCEL);
}

void EditorDriver::ChooseFile(const std::string& title, const Path& path) {
  HWND dialog = WaitForBox(title);
  constexpr int kEdit = 0x480, kCombo = 0x47C;  // the name's control: plain, or in a list of earlier names
  HWND edit = nullptr;
  Until("the name's control", [&] {
    edit = GetDlgItem(dialog, kEdit);
    if (!edit) edit = GetDlgItem(dialog, kCombo);
    return edit != nullptr;
  });
  // The dialog may still fill its list, and what it selects there replaces the name: until it has taken ours,
  // or asks about it.
  ULONGLONG next_try = 0;
  Until("the file dialog to close", [&] {
    if (!IsWindow(dialog) || !IsWindowVisible(dialog)) return true;
    const HWND top = FindBox();
    if (next_try && top && top != dialog) return true;
    if (GetTickCount64() < next_try || top != dialog) return false;
    Send(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    if (Title(edit) != Utf8FromPath(path)) return false;
    PostMessageW(dialog, WM_COMMAND, IDOK, reinterpret_cast<LPARAM>(GetDlgItem(dialog, IDOK)));
    next_try = GetTickCount64() + 2000;
    return false;
  });
}

HWND EditorDriver::ChildControl(const wchar_t* window_class) {
  return FindWindowExW(ActiveChild(), nullptr, window_class, nullptr);
}

void* EditorDriver::Remote() {
  if (!remote_) {
    remote_ =
        VirtualAllocEx(process_.hProcess, nullptr, kRemoteSize, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
  }
  return remote_;
}

std::string EditorDriver::ItemText(HWND tree, HTREEITEM item) {
  auto* remote = static_cast<char*>(Remote());
  TVITEMW asked{};
  asked.mask = TVIF_TEXT;
  asked.hItem = item;
  asked.pszText = reinterpret_cast<wchar_t*>(remote + kTextOffset);
  asked.cchTextMax = kTextUnits;
  WriteProcessMemory(process_.hProcess, remote, &asked, sizeof asked, nullptr);
  Send(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(remote));
  wchar_t text[kTextUnits] = L"";
  ReadProcessMemory(process_.hProcess, remote + kTextOffset, text, sizeof text, nullptr);
  text[kTextUnits - 1] = 0;
  return Utf8(text);
}

void EditorDriver::Walk(HWND tree, HTREEITEM item, int depth, bool expand, std::vector<std::string>& lines) {
  for (; item && lines.size() < 2000;
       item = reinterpret_cast<HTREEITEM>(
           Send(tree, TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(item)))) {
    lines.push_back(std::string(static_cast<size_t>(depth) * 2, ' ') + ItemText(tree, item));
    if (expand) Send(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
    const auto child =
        reinterpret_cast<HTREEITEM>(Send(tree, TVM_GETNEXTITEM, TVGN_CHILD, reinterpret_cast<LPARAM>(item)));
    Walk(tree, child, depth + 1, expand, lines);
  }
}

std::vector<std::string> EditorDriver::Tree(bool expand_all) {
  HWND tree = ChildControl(WC_TREEVIEWW);
  std::vector<std::string> lines;
  Walk(tree, reinterpret_cast<HTREEITEM>(Send(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0)), 0, expand_all, lines);
  return lines;
}

HTREEITEM EditorDriver::FirstBelow(HWND tree, HTREEITEM item) {
  Send(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
  return reinterpret_cast<HTREEITEM>(Send(tree, TVM_GETNEXTITEM, TVGN_CHILD, reinterpret_cast<LPARAM>(item)));
}

HTREEITEM EditorDriver::ItemFrom(HWND tree, HTREEITEM item, const std::vector<std::string>& path) {
  for (size_t i = 0; i < path.size(); ++i) {
    if (i > 0) item = FirstBelow(tree, item);
    while (item && ItemText(tree, item) != path[i]) {
      item =
          reinterpret_cast<HTREEITEM>(Send(tree, TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(item)));
    }
    if (!item) {
      ADD_FAILURE() << "no tree item " << path[i];
      return nullptr;
    }
  }
  return item;
}

HTREEITEM EditorDriver::ItemAt(HWND tree, const std::vector<std::string>& path) {
  return ItemFrom(tree, reinterpret_cast<HTREEITEM>(Send(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0)), path);
}

bool EditorDriver::SelectItem(const std::vector<std::string>& path) {
  HWND tree = ChildControl(WC_TREEVIEWW);
  HTREEITEM item = ItemAt(tree, path);
  return item && Send(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item)) != 0;
}

bool EditorDriver::SelectFrom(HWND tree, HTREEITEM item, const std::vector<std::string>& path) {
  item = ItemFrom(tree, item, path);
  return item && Send(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item)) != 0;
}

RECT EditorDriver::AskRect(HWND control, UINT message, WPARAM wparam, RECT asked) {
  void* remote = Remote();
  WriteProcessMemory(process_.hProcess, remote, &asked, sizeof asked, nullptr);
  Send(control, message, wparam, reinterpret_cast<LPARAM>(remote));
  ReadProcessMemory(process_.hProcess, remote, &asked, sizeof asked, nullptr);
  return asked;
}

void EditorDriver::ChangeResolution(unsigned dots, const RECT& place) {
  AskRect(frame_, WM_DPICHANGED, MAKEWPARAM(dots, dots), place);
}

RECT EditorDriver::RowPlace(HWND list, int row) {
  return AskRect(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), {LVIR_LABEL, 0, 0, 0});
}

RECT EditorDriver::ItemPlace(const std::vector<std::string>& path) {
  HWND tree = ChildControl(WC_TREEVIEWW);
  HTREEITEM item = ItemAt(tree, path);
  Send(tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
  RECT asked{};
  memcpy(&asked, &item, sizeof item);
  return AskRect(tree, TVM_GETITEMRECT, TRUE, asked);
}

void EditorDriver::SetColumnOrder(HWND list, const std::vector<int>& order) {
  WriteProcessMemory(process_.hProcess, Remote(), order.data(), order.size() * sizeof order[0], nullptr);
  Send(list, LVM_SETCOLUMNORDERARRAY, order.size(), reinterpret_cast<LPARAM>(Remote()));
}

void EditorDriver::Click(HWND control, POINT at) {
  PostMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(at.x, at.y));
  PostMessageW(control, WM_LBUTTONUP, 0, MAKELPARAM(at.x, at.y));
  EXPECT_TRUE(HasCaughtUp());
}

// Once the control has found that it is a drag, the window has the mouse.
void EditorDriver::Drag(HWND control, POINT from, POINT to, bool drop, WPARAM keys) {
  HWND window = ActiveChild();
  PostMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(from.x, from.y));
  for (int step = 4; step <= 12; step += 4)
    PostMessageW(control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(from.x + step, from.y + step));
  EXPECT_TRUE(HasCaughtUp());
  MapWindowPoints(control, window, &to, 1);
  PostMessageW(window, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(to.x, to.y));
  if (!drop) PostMessageW(control, WM_KEYDOWN, VK_ESCAPE, 1);
  PostMessageW(window, WM_LBUTTONUP, keys, MAKELPARAM(to.x, to.y));
  EXPECT_TRUE(HasCaughtUp());
}

HWND EditorDriver::Focused() {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(frame_, nullptr), &info);
  return info.hwndFocus;
}

std::vector<std::string> EditorDriver::ListColumns() {
  HWND list = ChildControl(WC_LISTVIEWW);
  const auto header = reinterpret_cast<HWND>(Send(list, LVM_GETHEADER, 0, 0));
  const int count = static_cast<int>(Send(header, HDM_GETITEMCOUNT, 0, 0));
  auto* remote = static_cast<char*>(Remote());
  std::vector<std::string> titles;
  for (int i = 0; i < count; ++i) {
    HDITEMW asked{};
    asked.mask = HDI_TEXT;
    asked.pszText = reinterpret_cast<wchar_t*>(remote + kTextOffset);
    asked.cchTextMax = kTextUnits;
    WriteProcessMemory(process_.hProcess, remote, &asked, sizeof asked, nullptr);
    Send(header, HDM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(remote));
    wchar_t text[kTextUnits] = L"";
    ReadProcessMemory(process_.hProcess, remote + kTextOffset, text, sizeof text, nullptr);
    text[kTextUnits - 1] = 0;
    titles.push_back(Utf8(text));
  }
  return titles;
}

int EditorDriver::ListCount() {
  return static_cast<int>(Send(ChildControl(WC_LISTVIEWW), LVM_GETITEMCOUNT, 0, 0));
}

std::string EditorDriver::Cell(int row, int column) {
  return CellOf(ChildControl(WC_LISTVIEWW), row, column);
}

std::string EditorDriver::CellOf(HWND list, int row, int column) {
  auto* remote = static_cast<char*>(Remote());
  LVITEMW asked{};
  asked.iSubItem = column;
  asked.pszText = reinterpret_cast<wchar_t*>(remote + kTextOffset);
  asked.cchTextMax = kTextUnits;
  WriteProcessMemory(process_.hProcess, remote, &asked, sizeof asked, nullptr);
  const auto length =
      Send(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(remote));
  std::wstring text(static_cast<size_t>(std::clamp<LRESULT>(length, 0, kTextUnits)), L'\0');
  ReadProcessMemory(process_.hProcess, remote + kTextOffset, text.data(), text.size() * sizeof(wchar_t),
                    nullptr);
  return Utf8(text);
}

std::vector<std::string> EditorDriver::Labels() {
  std::vector<std::string> texts;
  HWND child = ActiveChild();
  for (HWND label = nullptr; (label = FindWindowExW(child, label, L"Static", nullptr)) != nullptr;)
    texts.push_back(Title(label));
  return texts;
}

int EditorDriver::RowsOf(HWND list) {
  return static_cast<int>(Send(list, LVM_GETITEMCOUNT, 0, 0));
}

bool EditorDriver::IsTicked(HWND list, int row) {
  const LRESULT state =
      Send(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), static_cast<LPARAM>(LVIS_STATEIMAGEMASK));
  return state == INDEXTOSTATEIMAGEMASK(2);
}

void EditorDriver::SelectRows(HWND list, const std::vector<int>& rows) {
  const auto set = [&](int row, UINT state, UINT mask) {
    LVITEMW item{};
    item.state = state;
    item.stateMask = mask;
    WriteProcessMemory(process_.hProcess, Remote(), &item, sizeof item, nullptr);
    Send(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(Remote()));
  };
  set(-1, 0, LVIS_SELECTED);
  if (!rows.empty()) set(rows[0], LVIS_FOCUSED, LVIS_FOCUSED);
  for (const int row : rows) set(row, LVIS_SELECTED, LVIS_SELECTED);
}

void EditorDriver::Key(HWND control, unsigned key) {
  Send(control, WM_KEYDOWN, key, 1);
  Send(control, WM_KEYUP, key, 1);
}

void EditorDriver::GoTo(HWND list, int row) {
  const auto focused = [&] {
    return static_cast<int>(Send(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
  };
  for (int steps = 0; focused() != row && steps < 200; ++steps) Key(list, focused() < row ? VK_DOWN : VK_UP);
  EXPECT_EQ(focused(), row);
}

void EditorDriver::Tick(HWND list, int row) {
  GoTo(list, row);
  Key(list, VK_SPACE);
}

void EditorDriver::ClickTick(HWND list, int row) {
  const bool before = IsTicked(list, row);
  void* remote = Remote();
  const RECT label = RowPlace(list, row);
  // The first point of the row's line that the list itself calls its box.
  for (int x = 2; x < label.left; x += 2) {
    LVHITTESTINFO hit{};
    hit.pt = {x, (label.top + label.bottom) / 2};
    WriteProcessMemory(process_.hProcess, remote, &hit, sizeof hit, nullptr);
    Send(list, LVM_HITTEST, 0, reinterpret_cast<LPARAM>(remote));
    ReadProcessMemory(process_.hProcess, remote, &hit, sizeof hit, nullptr);
    if (hit.flags != LVHT_ONITEMSTATEICON || hit.iItem != row) continue;
    Click(list, hit.pt);
    Until("the tick to change", [&] { return IsTicked(list, row) != before; });
    return;
  }
  ADD_FAILURE() << "row " << row << " has no box";
}

std::vector<std::string> EditorDriver::EntriesOf(HWND list_box) {
  std::vector<std::string> entries;
  const auto count = static_cast<int>(Send(list_box, LB_GETCOUNT, 0, 0));
  for (int i = 0; i < count; ++i) {
    wchar_t text[kTextUnits] = L"";
    Send(list_box, LB_GETTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text));
    entries.push_back(Utf8(text));
  }
  return entries;
}

void EditorDriver::Push(HWND box, int button) {
  // Like a command: taken before the next question, which is sent too.
  SendNotifyMessageW(GetDlgItem(box, button), BM_CLICK, 0, 0);
  EXPECT_TRUE(Answers()) << "hangs after button " << button;
}

void EditorDriver::ChooseFolder(HWND dialog, const Path& folder) {
  // Only the drive is asked for by its path. Wine looks for a path's folders by their names and times, and
  // does not find one that something was written to since it was listed; the tree is walked by names alone.
  auto* remote = static_cast<char*>(Remote()) + kTextOffset;
  const std::wstring drive = folder.root_path().native();
  WriteProcessMemory(process_.hProcess, remote, drive.c_str(), (drive.size() + 1) * sizeof(wchar_t), nullptr);
  Send(dialog, BFFM_SETSELECTIONW, TRUE, reinterpret_cast<LPARAM>(remote));
  HWND tree = FindWindowExW(dialog, nullptr, WC_TREEVIEWW, nullptr);
  const auto top = reinterpret_cast<HTREEITEM>(Send(tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
  std::vector<std::string> names;
  for (const Path& name : folder.relative_path()) names.push_back(Utf8FromPath(name));
  SelectFrom(tree, FirstBelow(tree, top), names);
  Until("the folder's path in the dialog",
        [&] { return BoxText(dialog).find(Utf8FromPath(folder.filename())) != std::string::npos; });
  Press(dialog, IDOK);
}

void EditorDriver::DropFiles(const std::vector<Path>& files) {
  std::wstring names;
  for (const Path& path : files) names += path.native() + L'\0';
  names += L'\0';
  DROPFILES header{};
  header.pFiles = sizeof header;
  header.fWide = TRUE;
  auto* remote = static_cast<char*>(Remote());
  WriteProcessMemory(process_.hProcess, remote, &header, sizeof header, nullptr);
  WriteProcessMemory(process_.hProcess, remote + sizeof header, names.data(), names.size() * sizeof(wchar_t),
                     nullptr);
  SendNotifyMessageW(frame_, WM_DROPFILES, reinterpret_cast<WPARAM>(remote), 0);
  EXPECT_TRUE(Answers());
}

std::vector<MenuLine> EditorDriver::Menus() {
  std::vector<MenuLine> lines;
  EXPECT_EQ(Send(frame_, RegisterWindowMessageW(kTestMessage), kDescribeMenus, 0), 1);
  const auto text = ReadWholeFile(TemporaryFolder() / "menus.txt");
  if (!text) return lines;
  std::istringstream input(std::string(text->begin(), text->end()));
  for (std::string line; std::getline(input, line);) {
    std::istringstream fields(line);
    std::string depth, id, marks, name;
    std::getline(fields, depth, '\t');
    std::getline(fields, id, '\t');
    std::getline(fields, marks, '\t');
    std::getline(fields, name);
    lines.push_back({std::stoi(depth), static_cast<unsigned>(std::stoul(id)),
                     marks.find('g') != std::string::npos, marks.find('c') != std::string::npos, name});
  }
  return lines;
}

void EditorDriver::ExhaustMemory() {
  PostMessageW(frame_, RegisterWindowMessageW(kTestMessage), kExhaustMemory, 0);
}

void EditorDriver::Lose(unsigned request) {
  EXPECT_EQ(Send(frame_, RegisterWindowMessageW(kTestMessage), request, 0), 1);
}

void EditorDriver::Arrange(unsigned request, int number) {
  EXPECT_EQ(Send(frame_, RegisterWindowMessageW(kTestMessage), request, number), 1);
}

Path EditorProgram() {
  return ProgramFolder() / "VexaEditor.exe";
}

void ExpectCleanEnd(EditorDriver& editor) {
  const Path folder = editor.TemporaryFolder();
  editor.Close();
  EXPECT_EQ(editor.ExitCode(), 0u);
  EXPECT_FALSE(std::filesystem::exists(folder)) << "the temporary folder is left behind";
}

}  // namespace vexa
