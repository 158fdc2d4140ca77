// Looks over a whole database with the rules of the record dialogs and the limits of the tables.
#pragma once

#include <string>
#include <vector>

#include "core/find.h"

namespace vexa {

// "SDB1 satellite 3": the name of a record below `parent`, by its place from 0.
std::string RecordName(const std::string& parent, const char* kind, size_t place);

// A record, favourite group or user box record by its places, from 0; -1: it is none of these.
struct FindingPlace {
  RecordPlace record;  // of a group: its SDB
  int tv_group = -1, radio_group = -1, ubi = -1;
};

struct Finding {
  FindingPlace place;
  std::string name, text;  // "SDB1 satellite 3", and what is wrong there
  // "SDB1 satellite 3: TEXT", UTF-8 without a line end.
  std::string line() const { return name + ": " + text; }
};

// One line of UTF-8 a finding, in tree order and within a record in the order of the dialog's rules:
// "SDB1 satellite 3 carrier 2 service 5: TEXT". A satellite named "NewSat %d" without carriers is an unused
// place of the table and is not judged. Empty: nothing is wrong.
// With `duplicates`, records that are there twice are findings too, behind the record's rules: satellites by
// orbital position and side, carriers by polarisation and a frequency within 3 MHz on their satellite,
// services by name on their carrier, entries of a favourite list. Told is each later one, with the first that
// it repeats; satellites at angle 0 and empty names are not judged.
std::vector<Finding> FindFaults(const Document& document, bool duplicates = false);
}  // namespace vexa
