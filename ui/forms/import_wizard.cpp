#include "ui/forms/import_wizard.h"

#include "core/messages.h"
#include "platform/text.h"
#include "ui/controls/virtual_list.h"
#include "ui/forms/lists_resource.h"
#include "view/view_model.h"
#include "view/wizard_step.h"

namespace vexa {

namespace {

enum class WizardStepEnd { kClosed, kBack, kNext };

void ShowSatelliteCounts(const Form& form, const Wizard& wizard) {
  form.SetText(IDC_WIZARD_TOTAL, TotalSatellitesText(wizard));
  form.SetText(IDC_WIZARD_SELECTED, SelectedSatellitesText(wizard));
  form.Check(IDC_WIZARD_ALL, IsEverySatelliteChosen(wizard));
  form.Enable(IDOK, ChosenSatelliteCount(wizard) > 0);
}

WizardStepEnd ChooseSatellites(Application& app, Wizard& wizard) {
  const auto& satellites = wizard.work.satellites;
  VirtualList list;
  list.id = IDC_WIZARD_ITEMS;
  list.name_column = 1;
  list.text = [&](size_t row, int column) {
    return column == 0 ? Format("%d", static_cast<int>(row + 1))
                       : Utf8FromPage(wizard.page, NameOf(satellites[row].name));
  };
  list.ticked = [&](size_t row) { return satellites[row].chosen != 0; };
  list.tick = [&](const Form& form, size_t row, bool ticked) {
    ChooseSatellite(wizard, row, ticked);
    ShowSatelliteCounts(form, wizard);
  };
  list.highlight = [&](const Form& form, size_t row) {
    form.SetText(IDC_WIZARD_INFORMATION, SatelliteInformation(satellites[row]));
  };

  FormActions actions;
  actions.anchors = ListAnchors(IDC_WIZARD_ITEMS);
  actions.anchors.push_back({IDC_WIZARD_INFORMATION_GROUP, 0, kWhole, kWhole, kWhole});
  actions.anchors.push_back({IDC_WIZARD_INFORMATION, 0, kWhole, kWhole, kWhole});
  actions.open = [&](Form& form) {
    SetUpList(form, list, {{"S.No", 60}, {"Satellite Name", 380}}, nullptr);
    ShowRows(form, list, satellites.size(), size_t{0});
    if (!satellites.empty()) list.highlight(form, 0);
    ShowSatelliteCounts(form, wizard);
  };
  actions.command = [&](Form& form, int id, int) {
    if (id != IDC_WIZARD_ALL) return;
    ChooseEverySatellite(wizard, form.Checked(IDC_WIZARD_ALL));
    RedrawRows(form, list);
    ShowSatelliteCounts(form, wizard);
  };
  actions.notify = [&](Form& form, NMHDR& header) {
    return ListNotification(form, list, header).value_or(0);
  };
  actions.accept = [&](Form&) { return ChosenSatelliteCount(wizard) > 0; };
  return RunForm(app, IDD_WIZARD_SATELLITES, actions) ? WizardStepEnd::kNext : WizardStepEnd::kClosed;
}

int PictureOf(NodeIcon icon) {
  return static_cast<int>(icon);
}

// Steps 2 and 3: the same dialog, one level further down.
struct StepDialog {
  Application& app;
  WizardStep& step;
  VirtualList owners, items;
  bool back = false;
};

void ShowCounts(const StepDialog& dialog, const Form& form) {
  form.SetText(IDC_WIZARD_SELECTED, StepSelectedText(dialog.step));
  form.SetText(IDC_WIZARD_TOTAL, StepTotalText(dialog.step));
}

void ShowItemInformation(const StepDialog& dialog, const Form& form) {
  form.SetText(IDC_WIZARD_INFORMATION, ItemInformation(dialog.step, dialog.items.highlighted.value_or(0)));
}

void ShowOwner(StepDialog& dialog, const Form& form) {
  ShowRows(form, dialog.items, ItemRows(dialog.step), size_t{0});
  const uint8_t options = StepOptions(dialog.step);
  for (int bit = 0; bit < 5; ++bit) form.Check(IDC_WIZARD_OPTION + bit, (options >> bit) & 1);
  ShowItemInformation(dialog, form);
  ShowCounts(dialog, form);
}

void OpenStep(StepDialog& dialog, const Form& form) {
  SetUpList(form, dialog.owners, {{"", 0}}, dialog.app.tree_pictures);
  SetUpList(form, dialog.items, {{"", 0}}, dialog.app.tree_pictures);
  ShowRows(form, dialog.owners, OwnerRows(dialog.step), dialog.step.owner_row);
  ShowOwner(dialog, form);
}

void StepCommand(StepDialog& dialog, const Form& form, int id) {
  const int bit = id - IDC_WIZARD_OPTION;
  if (id == IDC_WIZARD_BACK) {
    dialog.back = true;
    form.End(true);
  } else if (bit >= 0 && bit < 5) {
    SetStepOption(dialog.step, static_cast<uint8_t>(1 << bit), form.Checked(id));
    RedrawRows(form, dialog.items);
    ShowCounts(dialog, form);
  }
}

// What the two lists of a step show and do.
void DescribeLists(StepDialog& dialog) {
  WizardStep& step = dialog.step;
  dialog.owners.id = IDC_WIZARD_OWNERS;
  dialog.owners.text = [&step](size_t row, int) { return OwnerText(step, row); };
  dialog.owners.picture = [&step](size_t row) {
    if (row == 0) return PictureOf(NodeIcon::kFolder);
    return PictureOf(step.services ? NodeIcon::kUserCarrier : NodeIcon::kUserSatellite);
  };
  dialog.items.id = IDC_WIZARD_ITEMS;
  dialog.items.text = [&step](size_t row, int) { return ItemText(step, row); };
  dialog.items.picture = [&step](size_t row) {
    if (row == 0) return PictureOf(NodeIcon::kFolder);
    if (!step.services) return PictureOf(NodeIcon::kUserCarrier);
    const bool tv = step.wizard.work.services[step.items[row - 1]].type == kTv;
    return PictureOf(tv ? NodeIcon::kTv : NodeIcon::kRadio);
  };
  dialog.items.ticked = [&step](size_t row) { return IsItemTicked(step, row); };
  dialog.owners.highlight = [&dialog](const Form& form, size_t row) {
    HighlightOwner(dialog.step, row);
    ShowOwner(dialog, form);
  };
  dialog.items.highlight = [&dialog](const Form& form, size_t) { ShowItemInformation(dialog, form); };
  dialog.items.tick = [&dialog](const Form& form, size_t row, bool ticked) {
    TickItem(dialog.step, row, ticked);
    ShowCounts(dialog, form);
  };
}

// Both lists grow alike, the groups below them over their whole width.
std::vector<Anchor> StepAnchors() {
  return {{IDC_WIZARD_OWNERS, 0, 0, kHalf, kWhole},
          {IDC_WIZARD_ITEMS_LABEL, kHalf, 0, kHalf, 0},
          {IDC_WIZARD_ITEMS, kHalf, 0, kWhole, kWhole},
          {IDC_WIZARD_OPTION_GROUP, 0, kWhole, kWhole, kWhole},
          {IDC_WIZARD_INFORMATION_GROUP, 0, kWhole, kWhole, kWhole},
          {IDC_WIZARD_INFORMATION, 0, kWhole, kWhole, kWhole},
          {IDC_WIZARD_BACK, kWhole, kWhole, kWhole, kWhole},
          {IDOK, kWhole, kWhole, kWhole, kWhole}};
}

WizardStepEnd RunStep(Application& app, WizardStep step) {
  StepDialog dialog{app, step, {}, {}};
  DescribeLists(dialog);
  FormActions actions;
  actions.anchors = StepAnchors();
  actions.resized = [&](Form& form) {
    FitLastColumn(form.Control(dialog.owners.id));
    FitLastColumn(form.Control(dialog.items.id));
  };
  actions.open = [&](Form& form) { OpenStep(dialog, form); };
  actions.command = [&](Form& form, int id, int) { StepCommand(dialog, form, id); };
  actions.notify = [&](Form& form, NMHDR& header) {
    if (const auto answer = ListNotification(form, dialog.owners, header)) return *answer;
    return ListNotification(form, dialog.items, header).value_or(0);
  };
  if (!RunForm(app, step.services ? IDD_WIZARD_SERVICES : IDD_WIZARD_CARRIERS, actions))
    return WizardStepEnd::kClosed;
  return dialog.back ? WizardStepEnd::kBack : WizardStepEnd::kNext;
}

}  // namespace

bool RunImportWizard(Application& app, WorkRecords& work, const CodePage& page) {
  Wizard wizard(work, page);
  for (int number = 1;;) {
    WizardStepEnd end = WizardStepEnd::kClosed;
    if (number == 1) {
      end = ChooseSatellites(app, wizard);
      if (end == WizardStepEnd::kNext) BeginCarrierStep(wizard);
    } else if (number == 2) {
      end = RunStep(app, CarrierStep(wizard));
      if (end == WizardStepEnd::kNext) BeginServiceStep(wizard);
    } else {
      end = RunStep(app, ServiceStep(wizard));
    }
    if (end == WizardStepEnd::kClosed) return false;
    number += end == WizardStepEnd::kNext ? 1 : -1;
    if (number > 3) break;
  }
  CompactWorkRecords(wizard);
  return true;
}

}  // namespace vexa
