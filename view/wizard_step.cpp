#include "view/wizard_step.h"

#include <algorithm>
#include <optional>

#include "platform/text.h"

namespace vexa {

namespace {

std::optional<size_t> HighlightedOwner(const WizardStep& step) {
  if (step.owner_row == 0) return std::nullopt;
  return step.owners[step.owner_row - 1];
}

// Owners of damaged files may share records; rising positions list each once.
void AppendRange(std::vector<size_t>& items, WorkRange range) {
  for (size_t i = range.first; i < range.first + range.count; ++i) {
    if (items.empty() || items.back() < i) items.push_back(i);
  }
}

bool IsChosen(const WizardStep& step, size_t item) {
  return step.services ? step.wizard.work.services[item].chosen : step.wizard.work.carriers[item].chosen;
}

void Choose(WizardStep& step, size_t item, bool chosen) {
  if (step.services) {
    ChooseService(step.wizard, item, chosen);
  } else {
    ChooseCarrier(step.wizard, item, chosen);
  }
}

}  // namespace

WizardStep CarrierStep(Wizard& wizard) {
  WizardStep step{wizard, false, ChosenSatellites(wizard), 0, {}};
  HighlightOwner(step, 0);
  return step;
}

WizardStep ServiceStep(Wizard& wizard) {
  WizardStep step{wizard, true, ChosenCarriers(wizard), 0, {}};
  HighlightOwner(step, 0);
  return step;
}

void HighlightOwner(WizardStep& step, size_t row) {
  const WorkRecords& work = step.wizard.work;
  const auto range = [&](size_t owner) {
    return step.services ? ServicesOf(work, owner) : CarriersOf(work, owner);
  };
  step.owner_row = row < OwnerRows(step) ? row : 0;
  step.items.clear();
  if (const auto owner = HighlightedOwner(step)) return AppendRange(step.items, range(*owner));
  for (const size_t owner : step.owners) AppendRange(step.items, range(owner));
}

std::string OwnerText(const WizardStep& step, size_t row) {
  const WorkRecords& work = step.wizard.work;
  if (row == 0) return step.services ? "All carriers" : "All satellites";
  const size_t owner = step.owners[row - 1];
  return Utf8FromPage(step.wizard.page,
                      NameOf(step.services ? work.carriers[owner].name : work.satellites[owner].name));
}

std::string ItemText(const WizardStep& step, size_t row) {
  const WorkRecords& work = step.wizard.work;
  if (row == 0) return step.services ? "All services" : "All Carriers";
  const size_t item = step.items[row - 1];
  return Utf8FromPage(step.wizard.page,
                      NameOf(step.services ? work.services[item].name : work.carriers[item].name));
}

bool IsItemTicked(const WizardStep& step, size_t row) {
  if (row > 0) return IsChosen(step, step.items[row - 1]);
  return !step.items.empty() &&
         std::all_of(step.items.begin(), step.items.end(), [&](size_t item) { return IsChosen(step, item); });
}

void TickItem(WizardStep& step, size_t row, bool ticked) {
  if (row > 0) return Choose(step, step.items[row - 1], ticked);
  for (const size_t item : step.items) Choose(step, item, ticked);
}

uint8_t StepOptions(const WizardStep& step) {
  const auto owner = HighlightedOwner(step);
  return step.services ? ServiceOptions(step.wizard, owner) : CarrierOptions(step.wizard, owner);
}

void SetStepOption(WizardStep& step, uint8_t option, bool ticked) {
  const auto owner = HighlightedOwner(step);
  if (step.services) {
    SetServiceOption(step.wizard, owner, static_cast<ServiceOption>(option), ticked);
  } else {
    SetCarrierOption(step.wizard, owner, static_cast<CarrierOption>(option), ticked);
  }
}

std::string ItemInformation(const WizardStep& step, size_t row) {
  if (row == 0 || row > step.items.size()) return "";
  const size_t item = step.items[row - 1];
  return step.services ? ServiceInformation(step.wizard.work.services[item])
                       : CarrierInformation(step.wizard.work.carriers[item]);
}

std::string StepSelectedText(const WizardStep& step) {
  const auto owner = HighlightedOwner(step);
  return step.services ? SelectedServicesText(step.wizard, owner) : SelectedCarriersText(step.wizard, owner);
}

std::string StepTotalText(const WizardStep& step) {
  return step.services ? TotalSelectedServicesText(step.wizard) : TotalSelectedCarriersText(step.wizard);
}

}  // namespace vexa
