// Finds records of a document in tree order: an SDB's satellites, each followed by its carriers, each
// followed by its services. The search goes on at the other end when it has passed the last record.
#pragma once

#include <compare>
#include <cstddef>
#include <optional>
#include <string>

#include "core/database.h"

namespace vexa {

enum class FindBy {
  kName,           // part of a satellite's, carrier's or service's name, without regard to case
  kProgramNumber,  // of a service
  kPid,            // video, audio or PCR PID of a service
  kFrequency,      // of a carrier, MHz
};

struct FindQuery {
  FindBy by = FindBy::kName;
  std::string text;          // UTF-8; for numbers decimal, or hexadecimal behind "0x"
  bool hexadecimal = false;  // the editor shows PIDs in hexadecimal: so is the text of a PID
};

// A record by its places; the lower ones are -1 where it stands above them.
struct RecordPlace {
  int sdb = 0, satellite = -1, carrier = -1, service = -1;
  auto operator<=>(const RecordPlace&) const = default;
};

// The first match after `from`, which itself comes last; nothing when no record matches, or when the text is
// none to search for.
std::optional<RecordPlace> FindNext(const Document& document, const FindQuery& query,
                                    const RecordPlace& from = {});
// Likewise towards the first record.
std::optional<RecordPlace> FindPrevious(const Document& document, const FindQuery& query,
                                        const RecordPlace& from = {});

}  // namespace vexa
