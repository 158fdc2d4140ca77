// What an import could not take from a list: counted by kind, and told when the list was read.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/messages.h"

namespace vexa {

struct ListLosses {
  size_t s2_carriers = 0;        // DVB-S2, each counted once; their services go with them
  size_t other_carriers = 0;     // terrestrial, cable and so on, likewise
  size_t other_services = 0;     // neither television nor radio
  size_t homeless_services = 0;  // their carrier is not in the list
  size_t unreadable_lines = 0, first_unreadable = 0;  // the first one's number, from 1
  size_t lacking = 0;                                 // characters of names that `page` lacks
  std::string page;
  std::vector<std::string> warnings;  // whole texts

  void AddUnreadable(size_t line) {
    if (unreadable_lines++ == 0 || line < first_unreadable) first_unreadable = line;
  }
};

struct ListNote {
  Icon icon;
  std::string text;
};
// A line for each kind of which there are any.
std::vector<ListNote> NotesOf(const ListLosses& losses);
// All of them in one box; nothing without any.
void TellNotes(const Messages& messages, const std::vector<ListNote>& notes);

}  // namespace vexa
