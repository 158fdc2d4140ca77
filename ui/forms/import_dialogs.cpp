#include "ui/forms/import_dialogs.h"

#include "ui/controls/virtual_list.h"
#include "ui/editor/change.h"
#include "ui/forms/lists_resource.h"
#include "view/completion_form.h"
#include "view/import_form.h"

namespace vexa {

namespace {

struct ImportDialog {
  ImportForm form;
  std::vector<ListWay> ways;
  VirtualList list;
};

void ShowWays(const Form& form, ImportDialog& dialog) {
  const WaitPointer wait;
  dialog.ways = WaysOf(dialog.form);
  ShowRows(form, dialog.list, dialog.ways.size(), dialog.form.layout);
}

void OpenQuestion(const Form& form, ImportDialog& dialog) {
  const bool satcodx = dialog.form.format == ListFormat::kSatcodx;
  form.SetText(IDC_IMPORT_QUESTION, ImportQuestion(dialog.form));
  std::vector<VirtualColumn> columns;
  constexpr int kWidths[] = {64, 56, 170, 165, 150, 72, 68, 68};
  static_assert(std::size(kWidths) == kWayColumns.size());
  for (size_t i = 0; i < kWayColumns.size(); ++i) columns.push_back({kWayColumns[i], kWidths[i]});
  SetUpList(form, dialog.list, columns, nullptr);
  form.Limit(IDC_IMPORT_LENGTH, 5);
  form.Enable(IDC_IMPORT_LENGTH, satcodx);
  form.Fill(IDC_IMPORT_PAGE, dialog.form.pages, static_cast<int>(dialog.form.page));
  form.Fill(IDC_IMPORT_LIST_PAGE, dialog.form.list_pages, static_cast<int>(dialog.form.list_page));
  form.Enable(IDC_IMPORT_LIST_PAGE, !dialog.form.utf8);
  form.Enable(IDC_IMPORT_KEEP_S2, dialog.form.s2_carriers > 0);
  ShowWays(form, dialog);
}

void QuestionCommand(const Form& form, ImportDialog& dialog, int id, int code) {
  const bool list = code == CBN_SELCHANGE && (id == IDC_IMPORT_PAGE || id == IDC_IMPORT_LIST_PAGE);
  const bool changed = list || (id == IDC_IMPORT_LENGTH && code == EN_CHANGE) ||
                       (id == IDC_IMPORT_KEEP_S2 && code == BN_CLICKED);
  if (!changed) return;
  dialog.form.record_length = form.Text(IDC_IMPORT_LENGTH);
  dialog.form.page = form.Code(IDC_IMPORT_PAGE);
  dialog.form.list_page = form.Code(IDC_IMPORT_LIST_PAGE);
  dialog.form.keep_s2 = form.Checked(IDC_IMPORT_KEEP_S2);
  ShowWays(form, dialog);
}

}  // namespace

bool AskHowToRead(Application& app, const ListToAsk& list, ListOptions& options, const CodePage*& names) {
  ImportDialog dialog;
  dialog.form = OpenImportForm(list.format, list.path, list.content, app.defaults, *names);
  if (!HasQuestions(dialog.form)) return true;
  dialog.list.id = IDC_IMPORT_WAYS;
  dialog.list.text = [&](size_t row, int column) { return dialog.ways[row][static_cast<size_t>(column)]; };
  dialog.list.highlight = [&](const Form&, size_t row) { dialog.form.layout = row; };
  ImportChoice choice;
  FormActions actions;
  actions.anchors = ListAnchors(IDC_IMPORT_WAYS);
  actions.anchors.push_back({IDC_IMPORT_QUESTION, 0, 0, kWhole, 0});
  actions.open = [&](Form& form) { OpenQuestion(form, dialog); };
  actions.command = [&](Form& form, int id, int code) { QuestionCommand(form, dialog, id, code); };
  actions.notify = [&](Form& form, NMHDR& header) {
    return ListNotification(form, dialog.list, header).value_or(0);
  };
  actions.accept = [&](Form& form) {
    const auto refusal = AcceptImportForm(dialog.form, choice);
    if (refusal) form.Refuse(*refusal, IDC_IMPORT_LENGTH);
    return !refusal;
  };
  if (!RunForm(app, IDD_IMPORT_QUESTION, actions)) return false;
  options = choice.options;
  names = choice.names;
  return true;
}

void OfferCompletion(EditorWindow& editor, const Path& list, bool says_sides) {
  StaticDatabase& database = *editor.document.sdbs[0].database;
  if (!CanComplete(database)) return;
  CompletionForm completion = OpenCompletionForm(database, says_sides);
  FormActions actions;
  actions.open = [&](Form& form) {
    const CompletionEnabling enabled = EnabledTicks(completion);
    form.SetText(IDC_COMPLETE_TEXT, CompletionText(database, Utf8FromPath(list.filename())));
    form.Enable(IDC_COMPLETE_SIDES, enabled.sides);
    form.Enable(IDC_COMPLETE_SLOTS, enabled.slots);
  };
  actions.accept = [&](Form& form) {
    completion.wanted = {form.Checked(IDC_COMPLETE_POSITIONS), form.Checked(IDC_COMPLETE_SIDES),
                         form.Checked(IDC_COMPLETE_LNBS), form.Checked(IDC_COMPLETE_SLOTS)};
    return true;
  };
  const Application& app = *editor.app;
  if (!RunForm(*editor.app, IDD_COMPLETION, actions) || !completion.wanted.any()) return;
  std::vector<ListNote> notes;
  ChangeDocument(editor, [&] {
    for (const std::string& warning : Complete(database, completion.wanted, says_sides, app.defaults))
      notes.push_back({Icon::kWarning, warning});
    return true;
  });
  TellNotes(About(app.context.messages, Utf8FromPath(list)), notes);
}

}  // namespace vexa
