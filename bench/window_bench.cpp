// What window commands take with the largest database, of 65,535 carriers and services: from the message that
// asks for them until the window has done what it was asked for and answers. Each time but that of expanding
// is the best of several runs. `VexaEditor.exe` stands beside the bench; on Linux: xvfb-run -a wine
// window_bench.exe
#include <gtest/gtest.h>

#include "bench/measure.h"
#include "core/match.h"
#include "tests/ui/driver.h"
#include "view/command_table.h"

namespace vexa {
namespace {

constexpr int kRuns = 5;

using Labels = std::vector<std::string>;

HWND ControlOf(EditorDriver& editor, const wchar_t* window_class) {
  return FindWindowExW(editor.ActiveChild(), nullptr, window_class, nullptr);
}

HTREEITEM AddItem(HWND tree, HTREEITEM parent, const std::wstring& text, UINT state) {
  std::wstring kept = text;
  TVINSERTSTRUCTW item{};
  item.hParent = parent;
  item.hInsertAfter = TVI_LAST;
  item.item.mask = TVIF_TEXT | TVIF_STATE;
  item.item.pszText = kept.data();
  item.item.state = item.item.stateMask = state;
  const LRESULT added = SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  Require(added != 0, "adding an item");
  return reinterpret_cast<HTREEITEM>(added);
}

// The system's own control by itself, with as many items below one and the texts at hand: it is opened once.
double BareTreeMilliseconds() {
  HWND tree = CreateWindowExW(0, WC_TREEVIEWW, L"", WS_POPUP | WS_VISIBLE | TVS_HASBUTTONS | TVS_HASLINES, 0,
                              0, 300, 600, nullptr, nullptr, nullptr, nullptr);
  Require(tree != nullptr, "a tree control");
  HTREEITEM top = AddItem(tree, TVI_ROOT, L"SDB1", 0);
  const double time = BestMilliseconds(1, [&] {
    std::vector<HTREEITEM> level{top};
    for (const int count : {257, 255, 1}) {
      std::vector<HTREEITEM> below;
      for (HTREEITEM parent : level)
        for (int i = 0; i < count; ++i)
          below.push_back(AddItem(tree, parent, L"[ 1 ] 11778 MHz", TVIS_EXPANDED));
      level = std::move(below);
    }
    SendMessageW(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(top));
    UpdateWindow(tree);
  });
  DestroyWindow(tree);
  return time;
}

void Print(const std::string& what, double milliseconds, const char* meant) {
  PrintRow({.what = what, .figure = {milliseconds / 1000, "s"}, .meant = meant});
}

// The arrow key leaves one row selected.
void MeasureSelection(EditorDriver& editor) {
  Require(editor.SelectItem({"SDB1", "Satellites"}), "selecting the satellites");
  editor.Command(kCmdViewServices);
  Require(editor.ListCount() == static_cast<int>(kMaximumServices), "the list of all services");
  HWND list = ControlOf(editor, WC_LISTVIEWW);
  const auto selected = [&] { return SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0); };
  const double time = BestMilliseconds(
      kRuns,
      [&] {
        editor.Key(list, VK_DOWN);
        Require(editor.HasCaughtUp() && selected() == 1, "leaving the selection");
      },
      [&] {
        editor.Command(kCmdSelectAll);
        Require(selected() == static_cast<LRESULT>(kMaximumServices), "selecting all");
      });
  Print("leaving a selection of 65,535 services", time, "0.3 s");
}

// Opens all that is below the SDB, with one key.
double ExpandingMilliseconds(EditorDriver& editor, size_t carriers) {
  HWND tree = ControlOf(editor, WC_TREEVIEWW);
  const double time = BestMilliseconds(1, [&] {
    Require(editor.SelectItem({"SDB1"}), "selecting the SDB");
    PostMessageW(tree, WM_KEYDOWN, VK_MULTIPLY, 1);
    Require(editor.HasCaughtUp(), "expanding everything");
  });
  Require(SendMessageW(tree, TVM_GETCOUNT, 0, 0) > static_cast<LRESULT>(kMaximumServices + carriers),
          "the nodes of everything");
  return time;
}

void MeasureTree(EditorDriver& editor) {
  HWND tree = ControlOf(editor, WC_TREEVIEWW);
  const auto nodes = [&] { return SendMessageW(tree, TVM_GETCOUNT, 0, 0); };
  const auto select = [&](const Labels& path) { Require(editor.SelectItem(path), "selecting a node"); };
  // Commands mean the tree's node where the tree has the focus.
  const RECT place = editor.ItemPlace({"SDB1", "Satellites"});
  editor.Click(tree, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
  Require(editor.Focused() == tree, "the focus in the tree");
  // A file has all the satellites that there can be: the empty one makes room for the one that is added.
  select({"SDB1", "Satellites", Format("[ %u ] ", unsigned{kMaximumSatellites}) + EmptySlotName(1)});
  editor.Command(kCmdDelete);
  const double expanding = ExpandingMilliseconds(editor, kMaximumCarriers);
  const auto all = nodes();
  Print("expanding everything, 65,535 services on as many carriers", expanding, "-");
  PrintRow({"expanding everything, beside the control alone",
            {expanding / 1000, "s"},
            "a bare tree of as many items",
            {BareTreeMilliseconds() / 1000, "s"}});
  select({"SDB1", "Satellites"});
  const double adding = BestMilliseconds(
      kRuns,
      [&] {
        editor.Command(kCmdAdd);
        Require(editor.HasCaughtUp() && nodes() == all + 1, "adding a satellite");
      },
      [&] {
        if (nodes() > all) editor.Command(kCmdUndo);
        select({"SDB1", "Satellites"});
        Require(editor.HasCaughtUp() && nodes() == all, "taking the satellite back");
      });
  Print("adding a satellite with everything open", adding, "0.3 s");
  for (int i = 0; i < 2; ++i) editor.Command(kCmdUndo);  // no question about unsaved work at the end
}

void WithDatabase(const Path& path, const std::function<void(EditorDriver&)>& measure) {
  EditorDriver editor(EditorProgram(), {L"--test-mode", path.native()});
  Require(
      editor.WaitForFrame() && editor.Until("the database", [&] { return editor.Children().size() == 1; }),
      "opening the database");
  measure(editor);
  ExpectCleanEnd(editor);
}

void Run() {
  const auto folder = MakeTestFolder("vexa-window-bench");
  Require(folder.has_value(), "making a folder");
  const Path largest = *folder / "largest.bin", usual = *folder / "usual.bin";
  SaveLargestDatabase(Context{}, largest, kMaximumSatellites - 1);
  constexpr size_t kUsualCarriers = kMaximumServices / 10;
  SaveLargestDatabase(Context{}, usual, kMaximumSatellites - 1, kUsualCarriers);
  WithDatabase(usual, [](EditorDriver& editor) {
    Print("expanding everything, 65,535 services on a tenth as many carriers",
          ExpandingMilliseconds(editor, kUsualCarriers), "1.5 s");
  });
  WithDatabase(largest, [](EditorDriver& editor) {
    MeasureSelection(editor);
    MeasureTree(editor);
  });
  RemoveFolder(*folder);
}

}  // namespace
}  // namespace vexa

// The driver's complaints end the bench.
int main() {
  GTEST_FLAG_SET(throw_on_failure, true);
  try {
    vexa::Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
