// Steps 2 and 3 of the import wizard as their dialogs show them: on the left the owners (chosen satellites,
// or chosen carriers), on the right what belongs to the highlighted owner, and the option boxes. Row 0 of
// both lists stands for all.
#pragma once

#include <string>
#include <vector>

#include "import/wizard.h"

namespace vexa {

struct WizardStep {
  Wizard& wizard;
  bool services = false;       // step 3: services of carriers
  std::vector<size_t> owners;  // records behind row 1 and the rows below it
  size_t owner_row = 0;        // the highlighted one
  std::vector<size_t> items;   // the same of the right list; each record once
};

// With the row "All ..." highlighted.
WizardStep CarrierStep(Wizard& wizard);
WizardStep ServiceStep(Wizard& wizard);

// Rows that are not there highlight "All ...".
void HighlightOwner(WizardStep& step, size_t row);
// Rows of each list, the row that stands for all included.
inline size_t OwnerRows(const WizardStep& step) {
  return step.owners.size() + 1;
}
inline size_t ItemRows(const WizardStep& step) {
  return step.items.size() + 1;
}
// What a row that is there shows.
std::string OwnerText(const WizardStep& step, size_t row);
std::string ItemText(const WizardStep& step, size_t row);

// Row 0 is ticked when there are items and all of them are; ticking it ticks them all.
bool IsItemTicked(const WizardStep& step, size_t row);
void TickItem(WizardStep& step, size_t row, bool ticked);

// The boxes of the highlighted owner, as CarrierOption or ServiceOption bits.
uint8_t StepOptions(const WizardStep& step);
// One box of the highlighted owner, or of all, and with it the ticks of what it names.
void SetStepOption(WizardStep& step, uint8_t option, bool ticked);

std::string ItemInformation(const WizardStep& step, size_t row);  // empty for row 0
// The lines below the lists: how many are selected of the highlighted owner's, and of all.
std::string StepSelectedText(const WizardStep& step);
std::string StepTotalText(const WizardStep& step);

}  // namespace vexa
