// Finding records.
#include "core/messages.h"
#include "ui/controls/form.h"
#include "ui/forms/options.h"
#include "ui/forms/options_resource.h"

namespace vexa {

namespace {

bool GoToMatch(EditorWindow& editor, bool before) {
  Application& app = *editor.app;
  app.last_search.hexadecimal = app.hexadecimal;
  const RecordPlace from = PlaceOf(editor.document, ShownNode(editor));
  const auto found = before ? FindPrevious(editor.document, app.last_search, from)
                            : FindNext(editor.document, app.last_search, from);
  if (!found) {
    Tell(app.context.messages, Icon::kInformation, "No record found.");
    return false;
  }
  return ShowRecord(editor, PathOf(*found), true);
}

bool Search(const Form& form, EditorWindow& editor, bool before) {
  FindQuery& query = form.app.last_search;
  query.text = form.Text(IDC_FIND_TEXT);
  const int by = form.Choice(IDC_FIND_BY);
  query.by = by < 0 ? FindBy::kName : static_cast<FindBy>(by);
  if (GoToMatch(editor, before)) return true;
  form.Focus(IDC_FIND_TEXT);
  return false;
}

}  // namespace

void ShowFind(EditorWindow& editor) {
  FormActions actions;
  actions.open = [](Form& form) {
    const FindQuery& query = form.app.last_search;
    form.Fill(IDC_FIND_BY, {"Name", "Program number", "PID", "Frequency"}, static_cast<int>(query.by));
    form.SetText(IDC_FIND_TEXT, query.text);
    form.Limit(IDC_FIND_TEXT, 64);
  };
  actions.accept = [&](Form& form) { return Search(form, editor, false); };
  actions.command = [&](Form& form, int id, int) {
    if (id == IDC_FIND_PREVIOUS && Search(form, editor, true)) form.End(true);
  };
  // Only once the dialog is gone can the list take the focus.
  if (RunForm(*editor.app, IDD_FIND, actions)) SetFocus(editor.list);
}

void FindAgain(EditorWindow& editor, bool before) {
  if (editor.app->last_search.text.empty()) return ShowFind(editor);
  GoToMatch(editor, before);
}

}  // namespace vexa
