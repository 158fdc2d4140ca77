// The window of a comparison, and the commands that look at another database.
#include "core/messages.h"
#include "core/order_like.h"
#include "import/any_database.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/progress_box.h"
#include "ui/controls/virtual_list.h"
#include "ui/editor/change.h"
#include "ui/forms/compare_resource.h"
#include "ui/forms/options.h"
#include "view/compare_view.h"

namespace vexa {

namespace {

// Another database, of any file that can be read, with its names in the page of the window's; nothing when
// the user gave up, and after a message.
std::optional<AnyDatabase> AskOtherDatabase(const EditorWindow& editor, const char* title, Path& path) {
  Application& app = *editor.app;
  FileQuestion question{title, {{"Databases and lists ( *.* )", "*.*"}, kBinFilters[0]}};
  const auto chosen = AskOpenFile(app.frame, question);
  if (!chosen) return std::nullopt;
  path = *chosen;
  ImportSteps steps;
  steps.run = [&](const ListReading& read) {
    const ProgressBox progress(app, Utf8FromPath(path));
    return read(progress.context());
  };
  const WaitPointer wait;
  AnyDatabase other;
  if (!OpenAnyDatabase(app.context, path, app.defaults, steps, NamesPage(editor.document), other))
    return std::nullopt;
  if (!other.document.sdbs.empty()) return other;
  TellWhy(app.context.messages, Icon::kStop, Utf8FromPath(path) + " holds no SDB. Choose another file.",
          "There is nothing to compare with.");
  return std::nullopt;
}

struct CompareWindow {
  EditorWindow& editor;
  const Document& other;
  std::string other_name;
  size_t sdb = 0, other_sdb = 0;
  CompareFilter filter;
  CompareView view;
  VirtualList list;

  std::string own_name() const { return WindowText(editor.window); }
};

std::vector<size_t> ChosenRows(const Form& form) {
  std::vector<size_t> rows;
  HWND list = form.Control(IDC_COMPARE_LIST);
  for (int row = -1; (row = ListView_GetNextItem(list, row, LVNI_SELECTED)) >= 0;)
    rows.push_back(static_cast<size_t>(row));
  return rows;
}

void ShowComparison(const Form& form, CompareWindow& window, std::optional<size_t> row) {
  ShowRows(form, window.list, window.view.shown.size(), row);
  form.SetText(IDC_COMPARE_STATUS, CompareStatus(window.view));
  for (const int id : {IDC_COMPARE_TAKE, IDC_COMPARE_TAKE_KIND, IDC_COMPARE_TAKE_ALL, IDC_COMPARE_NEXT,
                       IDC_COMPARE_PREVIOUS, IDC_COMPARE_EXPORT})
    form.Enable(id, NextDifference(window.view, std::nullopt, false).has_value());
}

void CompareNow(const Form& form, CompareWindow& window, std::optional<size_t> row) {
  const WaitPointer wait;
  CompareInto(window.view, window.editor.document, window.sdb, window.other, window.other_sdb, window.filter);
  if (row && !window.view.shown.empty()) row = std::min(*row, window.view.shown.size() - 1);
  ShowComparison(form, window, row);
}

void GoToDifference(const Form& form, CompareWindow& window, bool before) {
  const std::vector<size_t> rows = ChosenRows(form);
  const auto from = rows.empty() ? std::nullopt : std::optional(before ? rows.front() : rows.back());
  const auto row = NextDifference(window.view, from, before);
  if (row) ShowRows(form, window.list, window.view.shown.size(), row);
  SetFocus(form.Control(IDC_COMPARE_LIST));
}

void Take(const Form& form, CompareWindow& window, TakeOverRange range) {
  const std::vector<size_t> rows = ChosenRows(form);
  const std::vector<size_t> chosen = ChosenDifferences(window.view, rows, range);
  if (chosen.empty()) return;
  std::optional<TakenOver> taken;
  ChangeDocument(window.editor, [&] {
    taken = TakeOver(form.app.context.messages, window.editor.document, window.sdb, window.other,
                     window.other_sdb, window.view.records, chosen);
    return taken.has_value();
  });
  if (!taken) return;
  CompareNow(form, window, rows.empty() ? std::nullopt : std::optional(rows[0]));
  form.SetText(IDC_COMPARE_STATUS, TakenOverText(*taken) + ". " + CompareStatus(window.view));
}

void Export(const Form& form, const CompareWindow& window) {
  const auto path = AskSaveFile(
      form.window,
      {"Export", {{"Text Files ( *.TXT )", "*.txt"}, {"HTML Pages ( *.HTML )", "*.html"}}, "txt"});
  if (!path) return;
  const bool page =
      _wcsicmp(path->extension().c_str(), L".html") == 0 || _wcsicmp(path->extension().c_str(), L".htm") == 0;
  const std::string text = page ? ComparisonPage(window.view.records, window.own_name(), window.other_name)
                                : ComparisonText(window.view.records);
  const WriteResult written =
      WriteWholeFile(*path, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
  if (written != WriteResult::kDone)
    TellWhy(form.app.context.messages, Icon::kStop, WriteReason(*path, written.error),
            "Export process failed");
}

void OpenComparison(Form& form, CompareWindow& window) {
  std::vector<std::string> sdbs;
  for (const OpenSdb& sdb : window.other.sdbs) sdbs.push_back(NameText(window.other, sdb.name));
  form.Fill(IDC_COMPARE_SDB, sdbs, static_cast<int>(window.other_sdb));
  form.Fill(IDC_COMPARE_KIND, CompareKinds(), 0);
  form.Fill(IDC_COMPARE_CHANGE, CompareChanges(), 0);
  form.SetText(IDC_COMPARE_NAMES,
               Format("%s: %s, with %s", window.own_name().c_str(),
                      NameText(window.editor.document, window.editor.document.sdbs[window.sdb].name).c_str(),
                      window.other_name.c_str()));
  const std::vector<std::string> titles = CompareColumns();
  SetUpList(
      form, window.list,
      {{titles[0].c_str(), 70}, {titles[1].c_str(), 300}, {titles[2].c_str(), 190}, {titles[3].c_str(), 0}},
      nullptr);
  CompareNow(form, window, std::nullopt);
}

void CompareCommand(Form& form, CompareWindow& window, int id, int code) {
  if (code == CBN_SELCHANGE) {
    const bool other_sdb = id == IDC_COMPARE_SDB;
    window.other_sdb = static_cast<size_t>(std::max(0, form.Choice(IDC_COMPARE_SDB)));
    window.filter.kind = static_cast<size_t>(std::max(0, form.Choice(IDC_COMPARE_KIND)));
    window.filter.change = static_cast<size_t>(std::max(0, form.Choice(IDC_COMPARE_CHANGE)));
    if (other_sdb) return CompareNow(form, window, std::nullopt);
    FilterComparison(window.view, window.filter);
    return ShowComparison(form, window, std::nullopt);
  }
  if (code != BN_CLICKED) return;
  switch (id) {
    case IDC_COMPARE_EQUAL:
      window.filter.equal = form.Checked(id);
      return CompareNow(form, window, std::nullopt);
    case IDC_COMPARE_PREVIOUS:
      return GoToDifference(form, window, true);
    case IDC_COMPARE_NEXT:
      return GoToDifference(form, window, false);
    case IDC_COMPARE_TAKE:
      return Take(form, window, TakeOverRange::kRows);
    case IDC_COMPARE_TAKE_KIND:
      return Take(form, window, TakeOverRange::kKinds);
    case IDC_COMPARE_TAKE_ALL:
      return Take(form, window, TakeOverRange::kAll);
    case IDC_COMPARE_EXPORT:
      return Export(form, window);
    default:
      return;
  }
}

std::vector<Anchor> CompareAnchors() {
  std::vector<Anchor> anchors = ListAnchors(IDC_COMPARE_LIST);
  anchors.push_back({IDC_COMPARE_NAMES, 0, 0, kWhole, 0});
  return anchors;
}

size_t PlaceOfSdb(const EditorWindow& editor) {
  const OpenSdb* sdb = SelectedSdb(editor);
  return sdb ? static_cast<size_t>(sdb - editor.document.sdbs.data()) : 0;
}

}  // namespace

void ShowComparison(EditorWindow& editor) {
  Application& app = *editor.app;
  Path path;
  auto other = AskOtherDatabase(editor, "Compare with", path);
  if (!other) return;
  CompareWindow window{editor, other->document, Utf8FromPath(path), PlaceOfSdb(editor), 0, {}, {}, {}};
  window.other_sdb = std::min(window.sdb, other->document.sdbs.size() - 1);
  window.list.id = IDC_COMPARE_LIST;
  window.list.name_column = 1;
  window.list.text = [&](size_t row, int column) {
    return CompareCell(window.view.records[window.view.shown[row]], static_cast<size_t>(column));
  };
  TreePath target;
  FormActions actions;
  actions.anchors = CompareAnchors();
  actions.open = [&](Form& form) { OpenComparison(form, window); };
  actions.resized = [&](Form& form) { FitLastColumn(form.Control(IDC_COMPARE_LIST)); };
  actions.command = [&](Form& form, int id, int code) { CompareCommand(form, window, id, code); };
  actions.notify = [&](Form& form, NMHDR& header) {
    const bool opens = header.idFrom == IDC_COMPARE_LIST && header.code == NM_DBLCLK &&
                       reinterpret_cast<NMITEMACTIVATE&>(header).iItem >= 0;
    const LRESULT result = ListNotification(form, window.list, header).value_or(0);
    if (opens) PostMessageW(form.window, WM_COMMAND, IDOK, 0);
    return result;
  };
  actions.accept = [&](Form& form) {
    const std::vector<size_t> rows = ChosenRows(form);
    if (rows.empty()) return false;
    target = PathOfDifference(editor.document, window.sdb, window.view.records[window.view.shown[rows[0]]]);
    return true;
  };
  const bool shows = RunForm(app, IDD_COMPARE, actions);
  // In the picture its carriers lie beneath from now on.
  editor.beneath = std::move(other->document.sdbs[window.other_sdb].database);
  RefreshList(editor);
  if (shows) ShowRecord(editor, target, true);
}

void ApplyOrderFrom(EditorWindow& editor) {
  Application& app = *editor.app;
  Path path;
  const auto old = AskOtherDatabase(editor, "Apply order from", path);
  if (!old) return;
  OrderSummary summary;
  ChangeDocument(editor, [&] {
    for (size_t i = 0; i < std::min(old->document.sdbs.size(), editor.document.sdbs.size()); ++i)
      OrderLike(*old->document.sdbs[i].database, *editor.document.sdbs[i].database, old->favourites, summary);
    return true;
  });
  Tell(app.context.messages, Icon::kInformation, "%s", SummaryText(summary).c_str());
}

}  // namespace vexa
