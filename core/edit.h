// The operations by which the user changes an open database. Each checks its limits first, tells the user
// what stands in its way, and then leaves the database as it was; a done operation keeps all that
// `CheckLinks` states.
//
// Rows are zero-based places in the list the operation works on, ascending; texts and messages count from
// one. A carrier's and a service's places in the SDB's own arrays follow its list: after any change inside a
// list, the places that its records hold in the array stay the same set, refilled in list order.
//
// None of these functions knows the undo history: call `RecordChange` (undo.h) after each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "core/database.h"
#include "core/messages.h"
#include "platform/code_page.h"

namespace vexa {

using Rows = std::vector<size_t>;

enum class GroupKind { kTv, kRadio };  // which half of a favourite group

// ---- Add: at the end of the list. The new record belongs to the document. nullptr or false after a message:
// the table is full, or what the record hangs on is missing.

// Named "SDB%d" by the number of SDBs.
OpenSdb* AddSdb(const Messages& messages, Document& document,
                const DefaultRecords& defaults = FactoryDefaults());
// Takes the next of the 16 places, with the default's values.
bool AddLnb(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults);
// Needs an LNB. Named "Satellite%d" by its place.
Satellite* AddSatellite(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults);
// Named "Carrier%d" by the number of the satellite's carriers; a user record when the satellite is one. Under
// an IF input LNB a default frequency out of its range becomes the lowest one.
Carrier* AddCarrier(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                    const DefaultRecords& defaults);
// Named "Service%d" by the number of the carrier's services, with the smallest program number that is free
// there, at the end of the service order. Of the type that is given, else of the default's.
Service* AddService(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                    const DefaultRecords& defaults, std::optional<ServiceType> type = {});
// Named "UBI%d" by the number of UBIs: zeros, RF channel 21, lock code "0000".
OpenUbi* AddUbi(const Messages& messages, Document& document);
// Takes up those of the services whose type belongs to the list and that it does not name yet. False after
// the limit's message, nothing being taken up then. `page`: of the group's names.
bool AddFavourites(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                   const std::vector<Service*>& services, const CodePage& page = Windows1252());

// ---- Insert: as Add, before the one selected row; at the end when none is selected. nullptr after a message
// when several are selected as well.
Satellite* InsertSatellite(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults,
                           const Rows& selected);
Carrier* InsertCarrier(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                       const DefaultRecords& defaults, const Rows& selected);
Service* InsertService(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                       const DefaultRecords& defaults, const Rows& selected,
                       std::optional<ServiceType> type = {});

// ---- Delete. What stands below a record goes with it, out of the order list and the favourites too;
// pointers to it end there. Rows beyond the list count for nothing.

// False, after a message, for the last SDB; silently when there is none at this place.
bool DeleteSdb(const Messages& messages, Document& document, size_t sdb);
// False after a message: one LNB has to stay. Satellites on an LNB that goes take the first one, indices
// above it fall by one.
bool DeleteLnbs(const Messages& messages, StaticDatabase& database, const Rows& rows);
void DeleteSatellites(StaticDatabase& database, const Rows& rows);
// Rows of the satellite's list.
void DeleteCarriers(StaticDatabase& database, Satellite& satellite, const Rows& rows);
// Services of this database, of any carriers, in any order; one named twice counts once.
void DeleteServices(StaticDatabase& database, const std::vector<Service*>& services);
// The UBI at this place; nothing when there is none.
void DeleteUbi(Document& document, size_t ubi);
// Takes entries off the list; the services stay.
void DeleteFavourites(FavouriteGroup& group, GroupKind kind, const Rows& rows);

// ---- Move and swap: the selected rows must follow one another, one alone for swap. `target` is the text of
// the dialog, a number from 1 to the number of rows: upwards the first row of the run lands there, downwards
// the last one. Result: the first row of the moved run after the move; nothing after a message.

// To be asked before the dialog opens. False after a message: the rows do not follow one another.
bool CheckMoveRows(const Messages& messages, const Rows& rows);
// Likewise for swap. False after a message: it is not one row.
bool CheckSwapRows(const Messages& messages, const Rows& rows);
// The list keeps all other rows in their order.
std::optional<size_t> MoveSatellites(const Messages& messages, StaticDatabase& database, const Rows& rows,
                                     const std::string& target);
std::optional<size_t> MoveCarriers(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                                   const Rows& rows, const std::string& target);
std::optional<size_t> MoveServices(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                                   const Rows& rows, const std::string& target);
std::optional<size_t> MoveFavourites(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                                     const Rows& rows, const std::string& target);
std::optional<size_t> SwapSatellites(const Messages& messages, StaticDatabase& database, const Rows& rows,
                                     const std::string& target);
std::optional<size_t> SwapCarriers(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                                   const Rows& rows, const std::string& target);
std::optional<size_t> SwapFavourites(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                                     const Rows& rows, const std::string& target);
// The two selected services change places, also across carriers. False after a message: they are not two, or
// a carrier would hold a program number twice.
bool SwapServices(const Messages& messages, StaticDatabase& database, const std::vector<Service*>& selected);
// To be asked before the dialog opens. False after a message: no service is selected.
bool CheckServiceMove(const Messages& messages, const std::vector<Service*>& selected);
// Into the destination's list from `place` on (SIZE_MAX: to its end), in the order given. False after a
// message: none is selected, one is there already, or the destination would hold a program number twice.
bool MoveServicesToCarrier(const Messages& messages, StaticDatabase& database,
                           const std::vector<Service*>& selected, Carrier& destination,
                           size_t place = SIZE_MAX);

// ---- Mark as.
enum class SatelliteField { kLnbIndex, kEast, kFactoryDefault };  // LNB indices from 0
enum class CarrierField { kPolarization, kFec, kFactoryDefault };
enum class ServiceField { kScrambled, kTv, kNoVideo, kNoAudio, kNoPcr, kLnbIndex };  // of their satellites
// Set the field in the chosen rows of the list; rows beyond it count for nothing. The flags are set for any
// `value` but 0. Codes are cut to their field, and an LNB index above 15 changes nothing.
void MarkSatellites(StaticDatabase& database, const Rows& rows, SatelliteField field, uint32_t value);
void MarkCarriers(Satellite& satellite, const Rows& rows, CarrierField field, uint32_t value);
// Services of this database. One that becomes radio has no video PID, and one that changes between TV and
// radio leaves the favourite lists of its old type. The PIDs become none, whatever the value.
void MarkServices(StaticDatabase& database, const std::vector<Service*>& services, ServiceField field,
                  uint32_t value);

// ---- Parts shared by the operations.
// New records with all their links and counts, at a place of their list from 0 to its length; all other
// fields as `record` has them. No limit is looked at. They belong to the database.
Satellite* PutSatellite(StaticDatabase& database, const SatelliteRecord& record, size_t place);
Carrier* PutCarrier(StaticDatabase& database, Satellite& satellite, const CarrierRecord& record,
                    size_t place);
// The caller puts the service into the service order.
Service* PutService(StaticDatabase& database, Carrier& carrier, const ServiceRecord& record, size_t place);

// Puts the carriers of a satellite into their places of the SDB's array in list order.
void RefillCarriers(StaticDatabase& database, const Satellite& satellite);
// Likewise the services of a carrier.
void RefillServices(StaticDatabase& database, const Carrier& carrier);
// Likewise all carriers and services.
void RefillAll(StaticDatabase& database);
// Sets the satellite index of every carrier by the satellites' places.
void NumberSatellites(StaticDatabase& database);
// Sets the carrier position of every service by the carriers' places on the satellite.
void NumberCarriers(Satellite& satellite);

// Takes services whose type changed between TV and radio out of the favourite lists of their old one; how
// many entries went.
size_t LeaveListsOfOldType(StaticDatabase& database, const std::unordered_set<const Service*>& changed);

// What stands in the way of so many entries of a group's list, which it names in UTF-8; empty: nothing.
std::string GroupLimitText(const CodePage& page, const FavouriteGroup& group, GroupKind kind, size_t entries);

// The smallest program number, from 1, that no service of the carrier has.
uint32_t FreeProgramNumber(const Carrier& carrier);
// One of the two lists of a group; it belongs to the group.
std::vector<Service*>& EntriesOf(FavouriteGroup& group, GroupKind kind);
const std::vector<Service*>& EntriesOf(const FavouriteGroup& group, GroupKind kind);

struct FrequencyRange {
  uint32_t lowest, highest;  // MHz, both included
};
// Where carriers under an LNB of this type (LnbType) may lie.
FrequencyRange RangeOf(uint32_t lnb_type);

// The LNB that the satellite names, also when it is out of use. It belongs to the database.
const LnbRecord& LnbOf(const StaticDatabase& database, const Satellite& satellite);

}  // namespace vexa
