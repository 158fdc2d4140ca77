// The dialogs by which records are moved and swapped, and the details of a service.
#include "platform/text.h"
#include "ui/controls/form.h"
#include "ui/controls/virtual_list.h"
#include "ui/editor/change.h"
#include "ui/forms/record_dialogs.h"
#include "ui/forms/records_resource.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

void AddTip(const Form& form, int id, const std::string& tip) {
  HWND tips = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0, 0,
                              0, form.window, nullptr, form.app.instance, nullptr);
  std::wstring text = Wide(tip);
  TTTOOLINFOW tool{};
  tool.cbSize = TTTOOLINFOW_V1_SIZE;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = form.window;
  tool.uId = reinterpret_cast<UINT_PTR>(form.Control(id));
  tool.lpszText = text.data();
  SendMessageW(tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

std::string CarrierText(const CodePage& page, const Carrier& carrier) {
  return Format("%s - %s", NameText(page, carrier.satellite->record.name).c_str(),
                NameText(page, carrier.record.name).c_str());
}

// "Change Carriers": another carrier of the SDB.
Carrier* AskCarrier(Application& app, const StaticDatabase& database, const CodePage& page, Carrier* chosen) {
  Satellite* satellite = chosen->satellite;
  VirtualList list;
  list.id = IDC_CARRIERS_LIST;
  list.text = [&](size_t row, int column) {
    const CarrierRecord& record = satellite->carriers[row]->record;
    if (column == 0) return NameText(page, record.name);
    if (column == 1) return Format("%u", static_cast<unsigned>(record.frequency));
    return PolarizationName(record.polarization);
  };
  list.highlight = [&](const Form& form, size_t row) {
    chosen = satellite->carriers[row];
    form.Enable(IDOK, true);
  };
  const auto show = [&](Form& form) {
    std::optional<size_t> row;
    for (size_t i = 0; i < satellite->carriers.size(); ++i) {
      if (satellite->carriers[i] == chosen) row = i;
    }
    if (!row && !satellite->carriers.empty()) row = 0;
    chosen = row ? satellite->carriers[*row] : nullptr;
    form.Enable(IDOK, chosen != nullptr);
    ShowRows(form, list, satellite->carriers.size(), row);
  };
  FormActions actions;
  actions.anchors = ListAnchors(IDC_CARRIERS_LIST);
  actions.resized = [&](Form& form) { FitLastColumn(form.Control(list.id)); };
  actions.open = [&](Form& form) {
    std::vector<std::string> names;
    int choice = 0;
    for (const Satellite* each : database.satellites) {
      if (each == satellite) choice = static_cast<int>(names.size());
      names.push_back(NameText(page, each->record.name));
    }
    form.Fill(IDC_CARRIERS_SATELLITE, names, choice);
    SetUpList(form, list, {{"Carrier Name", 130}, {"Frequency", 70}, {"Polarization", 0}}, nullptr);
    show(form);
  };
  actions.notify = [&](Form& form, NMHDR& header) {
    return ListNotification(form, list, header).value_or(0);
  };
  actions.command = [&](Form& form, int id, int code) {
    if (id != IDC_CARRIERS_SATELLITE || code != CBN_SELCHANGE) return;
    const auto place = static_cast<size_t>(form.Choice(id));
    if (place >= database.satellites.size()) return;
    satellite = database.satellites[place];
    show(form);
  };
  actions.accept = [&](Form&) { return chosen != nullptr; };
  return RunForm(app, IDD_CHANGE_CARRIERS, actions) ? chosen : nullptr;
}

struct ServiceMove {
  EditorWindow& editor;
  const std::vector<NodeRef>& rows;
  StaticDatabase& database;
  Carrier* destination;  // nullptr: there is no other carrier
};

void ShowServiceMove(const Form& form, const ServiceMove& move) {
  const bool to_place = form.Checked(IDC_MOVE_SERVICE_TO_PLACE);
  form.Enable(IDC_MOVE_SERVICE_TO_CARRIER, move.destination != nullptr);
  form.Enable(IDC_MOVE_TARGET, to_place);
  form.Enable(IDC_MOVE_SERVICE_CHANGE, !to_place);
  form.SetText(IDC_MOVE_SERVICE_CARRIER,
               move.destination ? CarrierText(NamesPage(move.editor.document), *move.destination) : "");
}

bool AcceptServiceMove(const Form& form, const ServiceMove& move) {
  const Messages& messages = move.editor.app->context.messages;
  const bool to_place = form.Checked(IDC_MOVE_SERVICE_TO_PLACE);
  const std::string target = form.Text(IDC_MOVE_TARGET);
  const bool moved = ChangeDocument(move.editor, [&] {
    return to_place
               ? MoveNodes(messages, move.editor.document, move.rows, false, target)
               : MoveServicesToCarrier(messages, move.database, ServicesOf(move.rows), *move.destination);
  });
  if (!moved) form.Focus(to_place ? IDC_MOVE_TARGET : IDC_MOVE_SERVICE_CHANGE);
  return moved;
}

}  // namespace

bool MoveRecords(EditorWindow& editor, const std::vector<NodeRef>& rows, bool swap) {
  const Messages& messages = editor.app->context.messages;
  const MoveDialogTexts texts = MoveTextsOf(rows, swap);
  FormActions actions;
  actions.open = [&](Form& form) {
    SetText(form.window, texts.title);
    form.SetText(IDC_MOVE_PROMPT, texts.prompt);
    form.SetText(IDOK, swap ? "&Swap" : "&Move");
    AddTip(form, IDOK, texts.tip);
    form.Limit(IDC_MOVE_TARGET, 5);
  };
  actions.accept = [&](Form& form) {
    const std::string target = form.Text(IDC_MOVE_TARGET);
    const bool moved =
        ChangeDocument(editor, [&] { return MoveNodes(messages, editor.document, rows, swap, target); });
    if (!moved) form.Focus(IDC_MOVE_TARGET);
    return moved;
  };
  return RunForm(*editor.app, IDD_MOVE, actions);
}

bool MoveServicesOf(EditorWindow& editor, const std::vector<NodeRef>& rows) {
  if (rows.empty() || !rows[0].carrier || rows[0].sdb >= editor.document.sdbs.size()) return false;
  StaticDatabase& database = *editor.document.sdbs[rows[0].sdb].database;
  ServiceMove move{editor, rows, database, ProposedDestination(database, *rows[0].carrier)};
  FormActions actions;
  actions.open = [&](Form& form) {
    form.SetText(IDC_MOVE_SERVICE_SELECTED,
                 rows.size() == 1
                     ? Format("%s  ( %s )", NameText(editor.document, rows[0].service->record.name).c_str(),
                              CarrierText(NamesPage(editor.document), *rows[0].carrier).c_str())
                     : Format("%d services", static_cast<int>(rows.size())));
    form.Check(move.destination ? IDC_MOVE_SERVICE_TO_CARRIER : IDC_MOVE_SERVICE_TO_PLACE, true);
    form.Limit(IDC_MOVE_TARGET, 5);
    ShowServiceMove(form, move);
  };
  actions.command = [&](Form& form, int id, int code) {
    if (code != BN_CLICKED) return;
    if (id == IDC_MOVE_SERVICE_TO_PLACE || id == IDC_MOVE_SERVICE_TO_CARRIER) ShowServiceMove(form, move);
    if (id != IDC_MOVE_SERVICE_CHANGE) return;
    if (Carrier* carrier = AskCarrier(form.app, move.database, NamesPage(editor.document), move.destination))
      move.destination = carrier;
    ShowServiceMove(form, move);
  };
  actions.accept = [&](Form& form) { return AcceptServiceMove(form, move); };
  return RunForm(*editor.app, IDD_MOVE_SERVICE, actions);
}

void ShowServiceDetails(EditorWindow& editor, const NodeRef& node) {
  const ListModel details = DetailsOf(editor.document, node, editor.app->hexadecimal);
  if (details.details.empty()) return;
  VirtualList list;
  list.id = IDC_DETAILS_LIST;
  list.text = [&](size_t row, int column) {
    return column == 0 ? details.details[row].first : details.details[row].second;
  };
  FormActions actions;
  actions.anchors = ListAnchors(IDC_DETAILS_LIST);
  actions.resized = [&](Form& form) { FitLastColumn(form.Control(list.id)); };
  actions.open = [&](Form& form) {
    SetUpList(form, list, {{"Name", 120}, {"Value", 0}}, nullptr);
    ShowRows(form, list, details.details.size(), std::nullopt);
  };
  actions.notify = [&](Form& form, NMHDR& header) {
    return ListNotification(form, list, header).value_or(0);
  };
  RunForm(*editor.app, IDD_DETAILED_SERVICE, actions);
}

}  // namespace vexa
