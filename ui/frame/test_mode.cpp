#include "ui/frame/test_mode.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <new>

#include "core/messages.h"
#include "ui/editor/editor.h"
#include "ui/frame/commands.h"
#include "ui/frame/menus.h"
#include "ui/line/console.h"

namespace vexa {

namespace {

std::atomic<int64_t> allocations_left{0};  // until one fails; 0: none will

std::string ItemText(HMENU menu, int place) {
  wchar_t text[512] = L"";
  GetMenuStringW(menu, static_cast<UINT>(place), text, std::size(text), MF_BYPOSITION);
  std::string line = Utf8(text);
  // A tab parts the columns of the description.
  for (char& character : line) {
    if (character == '\t') character = '|';
  }
  return line;
}

void DescribeMenu(Application& app, HMENU menu, int depth, std::string& text) {
  PrepareMenu(app, menu);
  for (int i = 0; i < GetMenuItemCount(menu); ++i) {
    HMENU below = GetSubMenu(menu, i);
    const UINT id = below ? 0 : GetMenuItemID(menu, i);
    const UINT state = GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION);
    std::string marks;
    if (!below && (state & (MF_GRAYED | MF_DISABLED))) marks += 'g';
    if (!below && (state & MF_CHECKED)) marks += 'c';
    text += Format("%d\t%u\t%s\t%s\n", depth, id, marks.c_str(), ItemText(menu, i).c_str());
    if (below) DescribeMenu(app, below, depth + 1, text);
  }
}

bool Leave(const Application& app, const char* name, const std::string& text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  return WriteWholeFile(app.context.temporary_folder / name, {bytes, text.size()}) == WriteResult::kDone;
}

bool DescribeMenus(Application& app) {
  std::string text;
  DescribeMenu(app, GetMenu(app.frame), 0, text);
  return Leave(app, "menus.txt", text);
}

bool ListFunctions(const Application& app) {
  std::string text;
  for (const UINT id : CommandsWithFunction()) text += Format("%u\n", id);
  return Leave(app, "functions.txt", text);
}

bool FillLog(Application& app, LPARAM lines) {
  ConsoleWindow* console = OpenConsoleOf(app);
  if (!console) return false;
  for (LPARAM i = 1; i <= lines; ++i)
    AppendToConsole(console->console, Format("Line %d of many\r\n", static_cast<int>(i)),
                    ReportColour::kNeutral);
  return true;
}

}  // namespace

bool AnswerTest(Application& app, WPARAM request, LPARAM number) {
  if (request == kDescribeMenus) return DescribeMenus(app);
  if (request == kListFunctions) return ListFunctions(app);
  if (request == kLoseViewer) {
    app.report_viewer = L"no such viewer.exe";
    return true;
  }
  if (request == kLoseTree || request == kLoseList) {
    const EditorWindow* editor = ActiveEditor(app);
    return editor && DestroyWindow(request == kLoseTree ? editor->tree : editor->list);
  }
  if (request == kFailAllocation) {
    allocations_left = static_cast<int64_t>(number);
    return true;
  }
  if (request == kFail) *const_cast<volatile wchar_t*>(kTestMessage) = 0;
  if (request == kFillLog) return FillLog(app, number);
  if (request == kMarkQueue) return SetPropW(app.frame, kTestMessage, app.frame) != 0;
  // More than any system has, asked for in a way that no compiler foresees.
  const volatile size_t all = PTRDIFF_MAX;
  ::operator delete(::operator new(all));
  return true;
}

}  // namespace vexa

// The program's allocations, so that a test can let one of them fail. Not to be inlined: the compiler would
// see memory of `new` that goes to `free`.
[[gnu::noinline]] void* operator new(size_t size) {
  const bool fails = vexa::allocations_left > 0 && --vexa::allocations_left == 0;
  void* memory = fails ? nullptr : std::malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}
