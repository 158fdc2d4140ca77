// Every field of the records by the name that documents, tables, comparisons and scripts give it, in the
// order in which they hold them. Names of records are no fields here: they are texts.
//
// Fields that follow from the places of records (counts, indices of what a record belongs to) are marked:
// they are written for other programs and never taken from them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "core/records.h"

namespace vexa {

// One field of a kind of record.
template <class Record>
struct Field {
  const char* key;
  int64_t smallest, largest;           // what fits into the field
  bool follows;                        // from places
  std::span<const char* const> words;  // by code, as the editor shows them; empty: a plain number
  int64_t (*get)(const Record& record);
  // `value` must lie in smallest..largest: bits beyond the field are cut off.
  void (*set)(Record& record, int64_t value);
};

// The fields of LnbRecord, SatelliteRecord, CarrierRecord, ServiceRecord, FavouriteRecord or UserBoxInfo; the
// table belongs to the program.
template <class Record>
std::span<const Field<Record>> FieldsOf();

// A user box's fields that are texts: its kept bytes 8 to 23 ("kept_byte8_23", 32 lower-case hexadecimal
// digits) and the bytes of its lock code ("lock_code", 8 digits).
std::string KeptText(const UserBoxInfo& box);
std::string LockCodeText(const UserBoxInfo& box);
// False, and nothing is stored, for a text that is not of just so many hexadecimal digits.
bool SetKeptText(UserBoxInfo& box, std::string_view text);
bool SetLockCodeText(UserBoxInfo& box, std::string_view text);

}  // namespace vexa
