// Fields of chosen records set from texts, as scripts give them: all rules of the record dialogs hold, and
// either all of it happens or nothing.
//
// Values are numbers (decimal, or hexadecimal behind 0x), the words that the editor shows ("East", "3/4",
// "Universal"), texts for names, or "N..", which counts up from N over the chosen records in tree order.
// `angle` takes tenths of a degree, or degrees with their side ("19.2E", "13W"), which set `east` too;
// `lnb_index` takes a number from 0, or "LNB2".
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/database.h"
#include "core/messages.h"

namespace vexa {

enum class RecordKind { kLnb, kSatellite, kCarrier, kService, kUbi };

// Numbers from one, first and last of each range; or all that there are, which leaves unused places of the
// satellite table out.
struct RecordNumbers {
  bool all = false;
  std::vector<std::pair<size_t, size_t>> ranges;
};

struct Assignment {
  RecordKind kind = RecordKind::kLnb;
  std::vector<RecordNumbers> path;  // one for each level: of a service its satellites', carriers' and its own
  std::vector<std::pair<std::string, std::string>> fields;  // key and value; later ones win
};

// Why the value cannot be meant for the field of such a record, or that there is no such field to be set;
// empty: it can. Needs no database, but "N.." may still run beyond the field.
std::string WrongValueText(RecordKind kind, const std::string& key, const std::string& value);

enum class AssignResult {
  kDone,
  kRefused,  // after a message: a rule, a record that is not there, none chosen, or a question answered with
             // No
  kWrongValue,  // `wrong` says why: a count ran beyond its field
};
// Sets the fields of records of the SDB at place `sdb` and of the user boxes. On anything but kDone the
// document means nothing any more. A service that becomes radio leaves the TV lists and loses its video PID
// unless that was set as well; one that becomes TV leaves the radio lists.
AssignResult AssignFields(const Messages& messages, Document& document, size_t sdb,
                          const std::vector<Assignment>& assignments, std::string& wrong);

}  // namespace vexa
