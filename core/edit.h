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
#include <vector>

#include "core/database.h"
#include "core/messages.h"

namespace vexa {

using Rows = std::vector<size_t>;

enum class ServiceFilter { kAll, kTv, kRadio };  // what the list view shows
enum class GroupKind { kTv, kRadio };            // which half of a favourite group

// ---- Add: at the end of the list. nullptr or false after a message.
// "SDB%d", count + 1
OpenSdb* AddSdb(const Messages& messages, Document& document,
                const DefaultRecords& defaults = FactoryDefaults());
bool AddLnb(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults);
Satellite* AddSatellite(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults);
Carrier* AddCarrier(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                    const DefaultRecords& defaults);
// The filter decides the type of the new service; kAll keeps the default's.
Service* AddService(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                    const DefaultRecords& defaults, ServiceFilter filter = ServiceFilter::kAll);
OpenUbi* AddUbi(const Messages& messages, Document& document);  // "UBI%d", count + 1
// Takes up those of the services whose type belongs to the list and that it does not name yet. False after
// the limit's message, nothing being taken up then.
bool AddFavourites(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                   const std::vector<Service*>& services);

// ---- Insert: before the one selected row; at the end when none is selected.
Satellite* InsertSatellite(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults,
                           const Rows& selected);
Carrier* InsertCarrier(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                       const DefaultRecords& defaults, const Rows& selected);
Service* InsertService(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                       const DefaultRecords& defaults, const Rows& selected,
                       ServiceFilter filter = ServiceFilter::kAll);

// ---- Delete. What stands below a record goes with it, out of the order list and the favourites too.
bool DeleteSdb(const Messages& messages, Document& document, size_t sdb);
bool DeleteLnbs(const Messages& messages, StaticDatabase& database, const Rows& rows);
void DeleteSatellites(StaticDatabase& database, const Rows& rows);
void DeleteCarriers(StaticDatabase& database, Satellite& satellite, const Rows& rows);
void DeleteServices(StaticDatabase& database, const std::vector<Service*>& services);
void DeleteUbi(Document& document, size_t ubi);
void DeleteFavourites(FavouriteGroup& group, GroupKind kind, const Rows& rows);

// ---- Move and swap: the selected rows must follow one another, one alone for swap. `target` is the text of
// the dialog, a number from 1 to the number of rows. Result: the first row of the moved run after the move.
bool CheckMoveRows(const Messages& messages, const Rows& rows);  // before the dialog opens
bool CheckSwapRows(const Messages& messages, const Rows& rows);
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
// The two selected services change places, also across carriers.
bool SwapServices(const Messages& messages, StaticDatabase& database, const std::vector<Service*>& selected);
bool CheckServiceMove(const Messages& messages,
                      const std::vector<Service*>& selected);  // before the dialog opens
// Into the destination's list from `place` on (SIZE_MAX: to its end), in the order given.
bool MoveServicesToCarrier(const Messages& messages, StaticDatabase& database,
                           const std::vector<Service*>& selected, Carrier& destination,
                           size_t place = SIZE_MAX);

// Title, prompt and button tip of the move and swap dialogs; `row` is the first selected one.
struct MoveDialogTexts {
  std::string title, prompt, tip;
};
MoveDialogTexts SatelliteMoveTexts(size_t row, bool swap);
MoveDialogTexts CarrierMoveTexts(size_t row, bool swap);

// ---- Mark as.
enum class SatelliteField { kLnbIndex, kEast, kFactoryDefault };  // LNB indices from 0
enum class CarrierField { kPolarization, kFec, kFactoryDefault };
void MarkSatellites(StaticDatabase& database, const Rows& rows, SatelliteField field, uint32_t value);
void MarkCarriers(Satellite& satellite, const Rows& rows, CarrierField field, uint32_t value);

// ---- Parts shared by the operations.
// Puts the carriers of a satellite, or the services of a carrier, into their places of the SDB's arrays in
// list order.
void RefillCarriers(StaticDatabase& database, const Satellite& satellite);
void RefillServices(StaticDatabase& database, const Carrier& carrier);
void RefillAll(StaticDatabase& database);
void NumberSatellites(StaticDatabase& database);     // the satellite index of every carrier
void NumberCarriers(Satellite& satellite);           // the carrier position of every service
uint32_t FreeProgramNumber(const Carrier& carrier);  // smallest unused one, from 1

std::vector<Service*>& EntriesOf(FavouriteGroup& group, GroupKind kind);
const std::vector<Service*>& EntriesOf(const FavouriteGroup& group, GroupKind kind);

// Lowest and highest carrier frequency of an LNB type, MHz.
struct FrequencyRange {
  uint32_t lowest, highest;
};
FrequencyRange RangeOf(uint32_t lnb_type);
const LnbRecord& LnbOf(const StaticDatabase& database, const Satellite& satellite);

}  // namespace vexa
