#include "import/list_losses.h"

namespace vexa {

std::vector<ListNote> NotesOf(const ListLosses& losses) {
  std::vector<ListNote> notes;
  for (const std::string& warning : losses.warnings) notes.push_back({Icon::kWarning, warning});
  if (losses.unreadable_lines > 0)
    notes.push_back({Icon::kWarning, Format("%zu lines cannot be read, the first is line %zu",
                                            losses.unreadable_lines, losses.first_unreadable)});
  const auto add = [&](size_t count, const std::string& text) {
    if (count > 0) notes.push_back({Icon::kInformation, std::to_string(count) + text});
  };
  add(losses.s2_carriers, " DVB-S2 carriers left out");
  add(losses.other_carriers, " carriers of other delivery systems left out");
  add(losses.other_services, " services of other kinds left out");
  add(losses.homeless_services, " services without a carrier left out");
  add(losses.lacking, " characters that " + losses.page + " lacks became \"?\"");
  return notes;
}

void TellNotes(const Messages& messages, const std::vector<ListNote>& notes) {
  if (notes.empty()) return;
  std::string text;
  Icon icon = Icon::kInformation;
  for (const ListNote& note : notes) {
    text += (text.empty() ? "" : "\n") + note.text;
    if (note.icon == Icon::kWarning) icon = Icon::kWarning;
  }
  Tell(messages, icon, "%s", text.c_str());
}

}  // namespace vexa
