// What a file is saved with: version, initials, and the parts of the document.
#include <algorithm>

#include "platform/text.h"
#include "ui/controls/form.h"
#include "ui/controls/virtual_list.h"
#include "ui/forms/record_dialogs.h"
#include "ui/forms/records_resource.h"
#include "view/record_forms.h"

namespace vexa {

bool AskVersion(EditorWindow& editor) {
  FormActions actions;
  actions.open = [&](Form& form) {
    form.Limit(IDC_VERSION_MAJOR, 3);
    form.Limit(IDC_VERSION_MINOR, 3);
    form.Limit(IDC_VERSION_INITIALS, 3);
    const VersionForm version = VersionFormOf(editor.version);
    form.SetText(IDC_VERSION_MAJOR, version.major);
    form.SetText(IDC_VERSION_MINOR, version.minor);
    form.SetText(IDC_VERSION_INITIALS, version.initials);
  };
  actions.accept = [&](Form& form) {
    const auto refusal = StoreVersion(
        {form.Text(IDC_VERSION_MAJOR), form.Text(IDC_VERSION_MINOR), form.Text(IDC_VERSION_INITIALS)},
        editor.version);
    if (!refusal) return true;
    form.Refuse(*refusal, refusal->field == kFieldMajor   ? IDC_VERSION_MAJOR
                          : refusal->field == kFieldMinor ? IDC_VERSION_MINOR
                                                          : IDC_VERSION_INITIALS);
    return false;
  };
  return RunForm(*editor.app, IDD_VERSION, actions);
}

std::optional<BinSelection> AskParts(EditorWindow& editor) {
  const Document& document = editor.document;
  const size_t sdbs = document.sdbs.size(), count = sdbs + document.ubis.size();
  std::vector<bool> taken(count, true);
  VirtualList list;
  list.id = IDC_PARTS_LIST;
  list.text = [&](size_t row, int column) -> std::string {
    if (column == 1) return row < sdbs ? "SDB" : "UBI";
    return NameText(document, row < sdbs ? document.sdbs[row].name : document.ubis[row - sdbs].name);
  };
  list.ticked = [&](size_t row) { return taken[row]; };
  list.tick = [&](const Form& form, size_t row, bool ticked) {
    taken[row] = ticked;
    const auto first_ubi = taken.begin() + static_cast<std::ptrdiff_t>(sdbs);
    form.Enable(IDOK, std::find(taken.begin(), first_ubi, true) != first_ubi);
  };
  FormActions actions;
  actions.anchors = ListAnchors(IDC_PARTS_LIST);
  actions.resized = [&](Form& form) { FitLastColumn(form.Control(list.id)); };
  actions.open = [&](Form& form) {
    SetUpList(form, list, {{"Name", 160}, {"Kind", 0}}, nullptr);
    ShowRows(form, list, count, std::nullopt);
  };
  actions.notify = [&](Form& form, NMHDR& header) {
    return ListNotification(form, list, header).value_or(0);
  };
  if (!RunForm(*editor.app, IDD_SELECT_PARTS, actions)) return std::nullopt;
  BinSelection selection{0, 0};
  for (size_t i = 0; i < count; ++i) {
    if (!taken[i]) continue;
    uint32_t& bits = i < sdbs ? selection.sdbs : selection.ubis;
    bits |= uint32_t{1} << (i < sdbs ? i : i - sdbs);
  }
  return selection;
}

}  // namespace vexa
