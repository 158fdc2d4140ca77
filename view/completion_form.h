// What is offered when a list was imported: to complete what it leaves open.
#pragma once

#include <string>
#include <vector>

#include "core/complete.h"

namespace vexa {

struct CompletionForm {
  bool says_sides = false;  // the list told East from West
  bool has_slots = false;   // there are places of the table that are not used
  Completion wanted;        // nothing, until the user ticks it
};

// Nothing to complete: a database without satellites.
bool CanComplete(const StaticDatabase& database);
CompletionForm OpenCompletionForm(const StaticDatabase& database, bool says_sides);
// What the dialog says above its ticks. `file`: the list, as messages name it.
std::string CompletionText(const StaticDatabase& database, const std::string& file);
// The ticks that mean something; the others are grey.
struct CompletionEnabling {
  bool sides, slots;
};
inline CompletionEnabling EnabledTicks(const CompletionForm& form) {
  return {!form.says_sides, form.has_slots};
}

}  // namespace vexa
