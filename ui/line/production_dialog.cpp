// The window "Production".
#include <algorithm>

#include "config/option_sets.h"
#include "core/messages.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/virtual_list.h"
#include "ui/editor/editor.h"
#include "ui/line/line_dialogs.h"
#include "ui/line/transfer_resource.h"
#include "view/production.h"
#include "view/upload_steps.h"

namespace vexa {

namespace {

struct ProductionDialog {
  explicit ProductionDialog(Application& application) : app(application), production(application.context) {}

  Application& app;
  Production production;
  VirtualList list;
  std::vector<OptionSet> sets;
  std::optional<ProjectConfig> config;  // of the chosen set
  std::vector<PortOffer> offers;        // a place each
  ProductionTurn turn;
  std::string refusal;  // why a number was not taken; stands in place of the verdict
  bool locked = false;  // the fields, while something is at work
  std::string seen;     // what the rows and the verdict showed last
};

constexpr int kFields[] = {
    IDC_PRODUCTION_DATABASE, IDC_PRODUCTION_DATABASE_BROWSE, IDC_PRODUCTION_SDB, IDC_PRODUCTION_SET,
    IDC_PRODUCTION_LOG,      IDC_PRODUCTION_LOG_BROWSE,      IDC_PRODUCTION_COPY};

std::function<bool(size_t)> TakesTurns(const ProductionDialog& dialog) {
  return [&dialog](size_t place) { return dialog.offers[place].ticked; };
}

constexpr UINT_PTR kTypedSubclass = 1;

// The controls other than text fields: what is typed there is a serial number, and no access key. Those go
// with Alt.
LRESULT CALLBACK TypedProcedure(HWND control, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                                DWORD_PTR) noexcept {
  const auto* asked = reinterpret_cast<const MSG*>(lparam);
  if (message == WM_GETDLGCODE && asked && asked->message == WM_CHAR && wparam > L' ') return DLGC_WANTCHARS;
  if (message != WM_CHAR || wparam <= L' ') return DefSubclassProc(control, message, wparam, lparam);
  HWND dialog = GetParent(control);
  HWND field = GetDlgItem(dialog, IDC_PRODUCTION_SERIAL);
  SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
  return SendMessageW(field, WM_CHAR, wparam, lparam);
}

void TakeTyping(const Form& form) {
  for (const int id :
       {IDC_PRODUCTION_DATABASE_BROWSE, IDC_PRODUCTION_SET, IDC_PRODUCTION_LOG_BROWSE, IDC_PRODUCTION_COPY,
        IDC_PRODUCTION_PLACES, IDOK, IDC_PRODUCTION_STOP, IDHELP, IDCANCEL})
    SetWindowSubclass(form.Control(id), TypedProcedure, kTypedSubclass, 0);
}

// A control that turns grey gives the keyboard away: nothing typed would arrive.
void EnableField(const Form& form, int id, bool enabled) {
  if (!enabled && GetFocus() == form.Control(id)) form.Focus(IDC_PRODUCTION_SERIAL);
  form.Enable(id, enabled);
}

void ShowSerialTitle(const Form& form, const ProductionDialog& dialog) {
  const PlaceView next = dialog.production.Look(dialog.turn.next);
  form.SetText(IDC_PRODUCTION_SERIAL_TITLE, "Serial &number for " + next.port);
  EnableField(form, IDC_PRODUCTION_STOP, next.state == PlaceState::kAtWork);
}

// What stands large, and the line below it.
std::pair<std::string, std::string> LargeVerdict(const ProductionDialog& dialog) {
  if (!dialog.refusal.empty()) return {"NOT BEGUN", dialog.refusal};
  const PlaceView view = dialog.production.Look(dialog.turn.shown);
  return {VerdictHeadline(view.state), VerdictLine(view)};
}

// Draws anew what has changed.
void ShowWork(const Form& form, ProductionDialog& dialog) {
  std::string now = dialog.refusal + std::to_string(dialog.turn.shown);
  for (size_t i = 0; i < dialog.production.count(); ++i) {
    const PlaceView view = dialog.production.Look(i);
    now += VerdictLine(view) + VerdictHeadline(view.state);
  }
  const bool at_work = dialog.production.IsAtWork();
  if (at_work != dialog.locked) {
    dialog.locked = at_work;
    for (const int id : kFields) EnableField(form, id, !at_work);
  }
  if (now == dialog.seen) return;
  dialog.seen = now;
  ShowSerialTitle(form, dialog);
  form.SetText(IDC_PRODUCTION_COUNT, ProductionCountText(dialog.production));
  const auto [headline, line] = LargeVerdict(dialog);
  form.SetText(IDC_PRODUCTION_VERDICT, headline + "\n" + line);  // for who does not see it
  RedrawRows(form, dialog.list);
  InvalidateRect(form.Control(IDC_PRODUCTION_VERDICT), nullptr, FALSE);
}

void HighlightNext(const Form& form, ProductionDialog& dialog) {
  ShowRows(form, dialog.list, dialog.production.count(), dialog.turn.next);
  ShowSerialTitle(form, dialog);
}

void ChoosePlace(ProductionDialog& dialog, size_t place) {
  dialog.turn.Choose(place);
  dialog.refusal.clear();
}

std::string PlaceCell(const ProductionDialog& dialog, size_t row, int column) {
  const PlaceView view = dialog.production.Look(row);
  switch (column) {
    case 0:
      return dialog.offers[row].text;
    case 1:
      return view.serial;
    case 2:
      return PlaceText(view);
    case 3:
      return std::to_string(view.ok);
    default:
      return std::to_string(view.failed);
  }
}

void ShowPorts(const Form& form, ProductionDialog& dialog, const std::string& ticked) {
  dialog.offers = OfferPorts(ListSerialPorts(), ticked);
  std::vector<std::string> ports;
  for (const PortOffer& offer : dialog.offers) ports.push_back(offer.port);
  dialog.production.SetPorts(ports);
  ChoosePlace(dialog, FirstTicked(dialog.offers));
  HighlightNext(form, dialog);
}

void ShowConfiguration(const Form& form, const ProductionDialog& dialog) {
  form.SetText(IDC_PRODUCTION_CONFIGURATION, dialog.config ? ProductionConfigText(*dialog.config) : "");
}

// The name of the chosen set.
std::string SetName(const Form& form, const ProductionDialog& dialog) {
  const int place = form.Choice(IDC_PRODUCTION_SET);
  return place > 0 ? dialog.sets[static_cast<size_t>(place) - 1].name : "";
}

void ChooseSet(const Form& form, ProductionDialog& dialog) {
  const Application& app = dialog.app;
  dialog.config = ConfigOfSet(app.context, dialog.sets, SetName(form, dialog), app.config);
  if (!dialog.config) SendMessageW(form.Control(IDC_PRODUCTION_SET), CB_SETCURSEL, 0, 0);
  if (!dialog.config) dialog.config = app.config;
  ShowConfiguration(form, dialog);
  ShowPorts(form, dialog, dialog.config->port_name);
}

// The set of last time; none when it is gone, so that no receiver gets what is meant for others.
void ShowSets(const Form& form, ProductionDialog& dialog, const std::string& name) {
  const Application& app = dialog.app;
  dialog.sets = LoadOptionSets(app.settings);
  std::vector<std::string> names = {"As in Settings"};
  for (const OptionSet& set : dialog.sets) names.push_back(set.name);
  dialog.config = ConfigOfSet(app.context, dialog.sets, name, app.config);
  const auto place = FindOptionSet(dialog.sets, name);
  form.Fill(IDC_PRODUCTION_SET, names, !dialog.config ? -1 : place ? static_cast<int>(*place) + 1 : 0);
  ShowConfiguration(form, dialog);
}

void OpenProduction(const Form& form, ProductionDialog& dialog) {
  Application& app = dialog.app;
  const EditorWindow* editor = ActiveEditor(app);
  const ProductionSettings fields = ProposedFields(LoadProductionSettings(app.settings),
                                                   editor ? Utf8FromPath(editor->path) : "", app.config);
  form.SetText(IDC_PRODUCTION_DATABASE, fields.database);
  form.SetText(IDC_PRODUCTION_SDB, fields.sdb);
  form.SetText(IDC_PRODUCTION_LOG, fields.log);
  form.Check(IDC_PRODUCTION_COPY, fields.keep_copy);
  ShowSets(form, dialog, fields.set);
  TakeTyping(form);
  SetUpList(form, dialog.list,
            {{"Port", 160}, {"Serial number", 115}, {"Verdict", 290}, {"OK", 45}, {"Failed", 0}}, nullptr);
  ShowPorts(form, dialog, fields.ports);
  ShowWork(form, dialog);
  form.Focus(IDC_PRODUCTION_SERIAL);
}

ProductionForm FormOf(const Form& form, const ProductionDialog& dialog) {
  ProductionForm fields;
  fields.fields.database = form.Text(IDC_PRODUCTION_DATABASE);
  fields.fields.sdb = form.Text(IDC_PRODUCTION_SDB);
  fields.fields.log = form.Text(IDC_PRODUCTION_LOG);
  fields.fields.keep_copy = form.Checked(IDC_PRODUCTION_COPY);
  fields.fields.ports = TickedPorts(dialog.offers);
  fields.fields.set = SetName(form, dialog);
  fields.copy_folder = CopyFolder(dialog.app);
  fields.config = dialog.config;
  for (const EditorWindow* editor : AllEditors(dialog.app)) {
    if (editor->changed && !editor->path.empty()) fields.unsaved.push_back(editor->path);
  }
  return fields;
}

// Enter behind a serial number, which a scanner sends too. What is wrong stands in the window: the next scan
// must not close a box unseen, and takes the place of the number that was refused.
void BeginReceiver(const Form& form, ProductionDialog& dialog) {
  dialog.refusal.clear();
  const ProductionForm fields = FormOf(form, dialog);
  const auto refusal = dialog.production.Begin(dialog.turn.next, form.Text(IDC_PRODUCTION_SERIAL), fields);
  if (refusal) {
    dialog.refusal = WithReason(refusal->text, refusal->detail);
    MessageBeep(MB_ICONHAND);
    ShowWork(form, dialog);
    return form.Focus(IDC_PRODUCTION_SERIAL);
  }
  SaveProductionSettings(dialog.app.settings, fields.fields);
  form.SetText(IDC_PRODUCTION_SERIAL, "");
  form.Focus(IDC_PRODUCTION_SERIAL);
  dialog.turn.Begun(dialog.production, TakesTurns(dialog));
  HighlightNext(form, dialog);
  ShowWork(form, dialog);
}

void Tick(const Form& form, ProductionDialog& dialog) {
  const size_t next = dialog.turn.next;
  for (const size_t place : dialog.production.TakeEnded()) {
    dialog.turn.Ended(dialog.production, place, TakesTurns(dialog));
    dialog.refusal.clear();
    MessageBeep(dialog.production.Look(place).state == PlaceState::kOk ? MB_ICONASTERISK : MB_ICONHAND);
  }
  if (dialog.turn.next != next) HighlightNext(form, dialog);
  ShowWork(form, dialog);
}

void Command(const Form& form, ProductionDialog& dialog, int id, int code) {
  if (id == IDC_PRODUCTION_SET && code == CBN_SELCHANGE) ChooseSet(form, dialog);
  if (id == IDC_PRODUCTION_STOP) dialog.production.Stop(dialog.turn.next);
  if (id == IDC_PRODUCTION_DATABASE_BROWSE) {
    const auto file = AskOpenFile(form.window, {"Open", kBinFilters, "bin"});
    if (file) form.SetText(IDC_PRODUCTION_DATABASE, Utf8FromPath(*file));
  }
  if (id == IDC_PRODUCTION_LOG_BROWSE) {
    const auto file = AskSaveFile(form.window, {"Log", {{"CSV Tables ( *.CSV )", "*.csv"}}, "csv"});
    if (file) form.SetText(IDC_PRODUCTION_LOG, Utf8FromPath(*file));
  }
}

// Green and red as they can be told apart on paper too; the words say it as well.
COLORREF ColourOf(PlaceState state) {
  constexpr COLORREF kOk = RGB(0, 112, 48), kFailed = RGB(176, 0, 32), kStopped = RGB(96, 96, 96);
  switch (state) {
    case PlaceState::kOk:
      return kOk;
    case PlaceState::kFailed:
      return kFailed;
    case PlaceState::kStopped:
      return kStopped;
    default:
      return GetSysColor(COLOR_WINDOW);
  }
}

HFONT VerdictFont(HWND window, int height, int weight) {
  LOGFONTW description{};
  GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof description,
             &description);
  description.lfHeight = -Scaled(window, height);
  description.lfWeight = weight;
  return CreateFontIndirectW(&description);
}

void DrawVerdict(const Form& form, const ProductionDialog& dialog, const DRAWITEMSTRUCT& draw) {
  const PlaceState state = dialog.production.Look(dialog.turn.shown).state;
  const bool refused = !dialog.refusal.empty();
  const auto verdict = LargeVerdict(dialog);
  const std::wstring headline = Wide(verdict.first), line = Wide(verdict.second);
  const bool plain = !refused && (state == PlaceState::kFree || state == PlaceState::kAtWork);
  constexpr COLORREF kRefused = RGB(144, 80, 0);  // no verdict on a receiver
  HBRUSH back = CreateSolidBrush(refused ? kRefused : ColourOf(state));
  FillRect(draw.hDC, &draw.rcItem, back);
  DeleteObject(back);
  SetBkMode(draw.hDC, TRANSPARENT);
  SetTextColor(draw.hDC, plain ? GetSysColor(COLOR_WINDOWTEXT) : RGB(255, 255, 255));
  RECT place = draw.rcItem;
  const int gap = Scaled(form.window, 8);
  InflateRect(&place, -gap, -gap / 2);
  const std::pair<const std::wstring&, HFONT> parts[] = {{headline, VerdictFont(form.window, 38, FW_BOLD)},
                                                         {line, VerdictFont(form.window, 16, FW_NORMAL)}};
  for (const auto& [text, font] : parts) {
    HGDIOBJ before = SelectObject(draw.hDC, font);
    const UINT how = DT_LEFT | DT_NOPREFIX | DT_WORDBREAK | DT_END_ELLIPSIS | DT_EDITCONTROL;
    place.top += DrawTextW(draw.hDC, text.c_str(), -1, &place, how);
    SelectObject(draw.hDC, before);
    DeleteObject(font);
  }
  FrameRect(draw.hDC, &draw.rcItem, GetSysColorBrush(COLOR_BTNSHADOW));
}

// Rows have the colour of their verdict.
LRESULT DrawRow(const ProductionDialog& dialog, NMLVCUSTOMDRAW& draw) {
  if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
  const auto row = static_cast<size_t>(draw.nmcd.dwItemSpec);
  if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || row >= dialog.production.count()) return CDRF_DODEFAULT;
  const PlaceState state = dialog.production.Look(row).state;
  if (state == PlaceState::kOk || state == PlaceState::kFailed)
    draw.clrText = SeenColour(ColourOf(state), WindowColours());
  return CDRF_DODEFAULT;
}

// The next serial number may be scanned into the question: its buttons have no letters, and Enter keeps the
// work.
bool MayClose(const Form& form, const ProductionDialog& dialog) {
  return !dialog.production.IsAtWork() ||
         AskOkCancel(form.app,
                     "Receivers are still being written.\nDo you want to stop that and close the window ?",
                     false);
}

FormActions ActionsOf(ProductionDialog& dialog) {
  FormActions actions;
  actions.anchors = {{IDC_PRODUCTION_PLACES, 0, 0, kWhole, kWhole},
                     {IDC_PRODUCTION_VERDICT, 0, kWhole, kWhole, kWhole},
                     {IDC_PRODUCTION_SERIAL, 0, kWhole, kWhole, kWhole},
                     {IDC_PRODUCTION_DATABASE, 0, 0, kWhole, 0},
                     {IDC_PRODUCTION_LOG, 0, 0, kWhole, 0},
                     {IDCANCEL, kWhole, kWhole, kWhole, kWhole}};
  actions.open = [&](Form& form) { OpenProduction(form, dialog); };
  actions.accept = [&](Form& form) {
    BeginReceiver(form, dialog);
    return false;
  };
  actions.may_cancel = [&](Form& form) { return MayClose(form, dialog); };
  actions.tick = [&](Form& form) { Tick(form, dialog); };
  actions.command = [&](Form& form, int id, int code) { Command(form, dialog, id, code); };
  actions.notify = [&](Form& form, NMHDR& header) -> LRESULT {
    if (header.idFrom == IDC_PRODUCTION_PLACES && header.code == NM_CUSTOMDRAW)
      return DrawRow(dialog, reinterpret_cast<NMLVCUSTOMDRAW&>(header));
    return ListNotification(form, dialog.list, header).value_or(0);
  };
  actions.draw = [&](Form& form, const DRAWITEMSTRUCT& draw) { DrawVerdict(form, dialog, draw); };
  actions.resized = [&](Form& form) { FitLastColumn(form.Control(IDC_PRODUCTION_PLACES)); };
  return actions;
}

}  // namespace

void ShowProduction(Application& app) {
  const Busy busy(app);
  ProductionDialog dialog(app);
  dialog.list.id = IDC_PRODUCTION_PLACES;
  dialog.list.text = [&](size_t row, int column) { return PlaceCell(dialog, row, column); };
  dialog.list.ticked = [&](size_t row) { return dialog.offers[row].ticked; };
  dialog.list.tick = [&](const Form&, size_t row, bool ticked) { dialog.offers[row].ticked = ticked; };
  dialog.list.highlight = [&](const Form& form, size_t row) {
    ChoosePlace(dialog, row);
    ShowSerialTitle(form, dialog);
  };
  RunForm(app, IDD_PRODUCTION, ActionsOf(dialog));
  PostMessageW(app.frame, kTransferEnded, 0, 0);
  const WaitPointer wait;  // until what was at work has stopped
  dialog.production.StopAll();
}

}  // namespace vexa
