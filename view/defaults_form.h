// The "Default Values" dialog without its window: one form for each kind of record, judged by the rules of
// the record dialogs. Names and program numbers are given to each record when it is made and are no defaults.
#pragma once

#include <optional>

#include "view/record_forms.h"
#include "view/refusal.h"

namespace vexa {

struct DefaultsForm {
  LnbForm lnb;
  SatelliteForm satellite;
  CarrierForm carrier;
  ServiceForm service;
};

// `hexadecimal`: how the fields show and read PIDs.
DefaultsForm DefaultsFormOf(const DefaultRecords& records, bool hexadecimal);
// All or nothing. The carrier's range is that of the form's LNB.
std::optional<Refusal> StoreDefaults(const Messages& messages, const DefaultsForm& form, bool hexadecimal,
                                     DefaultRecords& records);

}  // namespace vexa
