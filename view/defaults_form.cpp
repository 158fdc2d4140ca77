#include "view/defaults_form.h"

namespace vexa {

namespace {

// Stands in for the name, which the rules want and a default record does not have.
constexpr const char* kAnyName = "-";

template <size_t N>
void ClearName(char (&name)[N]) {
  SetName(name, "");
}

}  // namespace

DefaultsForm DefaultsFormOf(const DefaultRecords& records, bool hexadecimal) {
  return {LnbFormOf(records.lnb), SatelliteFormOf(records.satellite), CarrierFormOf(records.carrier),
          ServiceFormOf(records.service, hexadecimal)};
}

std::optional<Refusal> StoreDefaults(const Messages& messages, const DefaultsForm& form, bool hexadecimal,
                                     DefaultRecords& records) {
  DefaultRecords stored = records;
  DefaultsForm named = form;
  named.satellite.name = named.carrier.name = named.service.name = kAnyName;
  named.service.program_number = std::to_string(stored.service.program_number);  // not of the form
  if (auto refusal = StoreLnb(named.lnb, stored.lnb, 0)) return refusal;
  // An angle of 0 is what a satellite starts with; it is judged when the record is stored.
  Messages silent = messages;
  silent.tell = [](const Message&) {};
  if (auto refusal = StoreSatellite(silent, named.satellite, stored.satellite)) return refusal;
  if (auto refusal = StoreCarrier(named.carrier, stored.lnb, stored.carrier)) return refusal;
  if (auto refusal = StoreService(messages, named.service, hexadecimal, nullptr, stored.service))
    return refusal;
  ClearName(stored.satellite.name);
  ClearName(stored.carrier.name);
  ClearName(stored.service.name);
  records = stored;
  return std::nullopt;
}

}  // namespace vexa
