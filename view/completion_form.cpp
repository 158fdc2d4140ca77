#include "view/completion_form.h"

namespace vexa {

bool CanComplete(const StaticDatabase& database) {
  return !database.satellites.empty();
}

CompletionForm OpenCompletionForm(const StaticDatabase& database, bool says_sides) {
  CompletionForm form;
  form.says_sides = says_sides;
  form.has_slots = database.satellites.size() < kMaximumSatellites;
  return form;
}

std::string CompletionText(const StaticDatabase& database, const std::string& file) {
  return Format(
      "%s is imported. Satellites: %zu, carriers: %zu, services: %zu.\n"
      "What is ticked completes it, in one step that Undo takes back.",
      file.c_str(), database.satellites.size(), database.carriers.size(), database.services.size());
}

}  // namespace vexa
