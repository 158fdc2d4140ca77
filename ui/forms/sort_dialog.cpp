// The dialog "Sort SDB information".
#include "platform/text.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/form.h"
#include "ui/editor/change.h"
#include "ui/forms/options.h"
#include "ui/forms/options_resource.h"
#include "view/sort_form.h"

namespace vexa {

namespace {

constexpr int kKeys = static_cast<int>(kMaximumSortKeys);

template <class Names>
void ShowChoice(const Form& form, int first, const Names& names, const SortChoice& choice) {
  std::vector<std::string> entries = {"(none)"};
  entries.insert(entries.end(), names.begin(), names.end());
  for (int i = 0; i < kKeys; ++i) form.Fill(first + i, entries, choice.keys[static_cast<size_t>(i)]);
  form.Check(first + kKeys, !choice.descending);
  form.Check(first + kKeys + 1, choice.descending);
}

SortChoice TakenChoice(const Form& form, int first) {
  SortChoice choice;
  for (int i = 0; i < kKeys; ++i) choice.keys[static_cast<size_t>(i)] = form.Choice(first + i);
  choice.descending = form.Checked(first + kKeys + 1);
  return choice;
}

SortForm TakenSort(const Form& form) {
  SortForm taken;
  taken.satellites = TakenChoice(form, IDC_SORT_SATELLITES);
  taken.carriers = TakenChoice(form, IDC_SORT_CARRIERS);
  taken.services = TakenChoice(form, IDC_SORT_SERVICES);
  taken.separate_file = form.Checked(IDC_SORT_SEPARATE);
  HWND list = form.Control(IDC_SORT_SDBS);
  const auto count = SendMessageW(list, LB_GETCOUNT, 0, 0);
  for (LRESULT i = 0; i < count; ++i) {
    if (SendMessageW(list, LB_GETSEL, static_cast<WPARAM>(i), 0) > 0)
      taken.sdbs.push_back(static_cast<size_t>(i));
  }
  return taken;
}

void Open(const Form& form, const EditorWindow& editor) {
  const SortForm start;
  ShowChoice(form, IDC_SORT_SATELLITES, kSatelliteKeyNames, start.satellites);
  ShowChoice(form, IDC_SORT_CARRIERS, kCarrierKeyNames, start.carriers);
  ShowChoice(form, IDC_SORT_SERVICES, kServiceKeyNames, start.services);
  HWND list = form.Control(IDC_SORT_SDBS);
  const OpenSdb* selected = SelectedSdb(editor);
  for (const OpenSdb& sdb : editor.document.sdbs) {
    const LRESULT place = SendMessageW(
        list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(NameText(editor.document, sdb.name)).c_str()));
    if (&sdb == selected) SendMessageW(list, LB_SETSEL, TRUE, place);
  }
  form.Enable(IDOK, CanSort(TakenSort(form)));
}

bool SortHere(EditorWindow& editor, const SortForm& form) {
  const Messages& messages = editor.app->context.messages;
  return ChangeDocument(
      editor, [&] { return SortSdbs(messages, editor.document, form.sdbs, SortOptionsOf(form)); }, true);
}

bool SortElsewhere(const EditorWindow& editor, const SortForm& form, HWND owner) {
  const auto path = AskSaveFile(owner, {"Save As", kBinFilters, "bin"});
  if (!path) return false;
  const WaitPointer wait;
  const Context& context = editor.app->context;
  const auto size =
      SortToSeparateFile(context, editor.document, form.sdbs, SortOptionsOf(form), *path, editor.version);
  return size && (CheckBinSize(context, *path, *size), true);
}

}  // namespace

void ShowSort(EditorWindow& editor) {
  FormActions actions;
  actions.anchors = ListAnchors(IDC_SORT_SDBS);
  actions.anchors.push_back({IDHELP, kWhole, kWhole, kWhole, kWhole});
  actions.open = [&](Form& form) { Open(form, editor); };
  actions.command = [](Form& form, int, int) { form.Enable(IDOK, CanSort(TakenSort(form))); };
  actions.accept = [&](Form& form) {
    const SortForm taken = TakenSort(form);
    if (!CanSort(taken)) return false;
    return taken.separate_file ? SortElsewhere(editor, taken, form.window) : SortHere(editor, taken);
  };
  RunForm(*editor.app, IDD_SORT, actions);
}

}  // namespace vexa
