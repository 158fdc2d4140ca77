#include "core/undo_state.h"

#include "core/bytes.h"
#include "core/edit.h"

namespace vexa {

namespace {

enum DocumentTable { kSlotTable, kFlagTable, kUbiTable, kDocumentTables };
enum SdbTable {
  kHeadTable,       // compressed flag, LNB count, LNBs, name
  kSatelliteTable,  // records
  kCarrierTable,
  kServiceTable,
  kGroupTable,
  kCarrierCounts,  // u16 for each satellite
  kCarrierLists,   // places of its carriers
  kServiceCounts,  // u16 for each carrier
  kServiceLists,
  kOrderTable,
  kEntryCounts,  // u32 for each favourite list, TV before radio
  kEntryLists,
  kSdbTables
};

static_assert(kSdbTables == kSdbStateTables);

template <class T>
struct PlaceWriter {
  const Places<T>& places;
  ByteWriter bytes;
  uint32_t last = 0;
  void Put(uint32_t place) {
    bytes.U16((place - last) & 0xFFFF);
    last = place;
  }
  void PutAll(const std::vector<T*>& list) {
    for (const T* record : list) Put(places.Of(*record));
  }
};

struct PlaceReader {
  ByteReader bytes;
  uint32_t last = 0;
  uint32_t Next() { return last = (last + bytes.U16()) & 0xFFFF; }
  template <class T>
  void TakeInto(std::vector<T*>& list, size_t count, const std::vector<T*>& records) {
    list.reserve(count);
    for (size_t i = 0; i < count && bytes.ok(); ++i) list.push_back(records.at(Next()));
  }
};

void PutLists(const StaticDatabase& database, StateTables& tables) {
  const Places<Carrier> carriers(database.carrier_pool, database.carriers);
  const Places<Service> services(database.service_pool, database.services);
  ByteWriter carrier_counts, service_counts, entry_counts;
  PlaceWriter<Carrier> carrier_lists{carriers, {}};
  PlaceWriter<Service> service_lists{services, {}}, order{services, {}}, entry_lists{services, {}};
  for (const Satellite* satellite : database.satellites) {
    carrier_counts.U16(static_cast<uint32_t>(satellite->carriers.size()));
    carrier_lists.PutAll(satellite->carriers);
  }
  for (const Carrier* carrier : database.carriers) {
    service_counts.U16(static_cast<uint32_t>(carrier->services.size()));
    service_lists.PutAll(carrier->services);
  }
  order.PutAll(database.service_order);
  for (const FavouriteGroup& group : database.favourites) {
    for (const auto kind : {GroupKind::kTv, GroupKind::kRadio}) {
      entry_counts.U32(static_cast<uint32_t>(EntriesOf(group, kind).size()));
      entry_lists.PutAll(EntriesOf(group, kind));
    }
  }
  tables[kCarrierCounts] = std::move(carrier_counts.bytes());
  tables[kCarrierLists] = std::move(carrier_lists.bytes.bytes());
  tables[kServiceCounts] = std::move(service_counts.bytes());
  tables[kServiceLists] = std::move(service_lists.bytes.bytes());
  tables[kOrderTable] = std::move(order.bytes.bytes());
  tables[kEntryCounts] = std::move(entry_counts.bytes());
  tables[kEntryLists] = std::move(entry_lists.bytes.bytes());
}

template <class T, class Pool>
void TakeRecords(const std::vector<uint8_t>& table, std::vector<T*>& records, Pool& pool) {
  ByteReader reader(table);
  records.reserve(table.size() / sizeof(T::record));
  while (reader.remaining() > 0) {
    T* record = pool.Take();
    if (!reader.Read(record->record)) return;
    records.push_back(record);
  }
}

void TakeLists(const StateTables& tables, StaticDatabase& database) {
  ByteReader carrier_counts(tables[kCarrierCounts]), service_counts(tables[kServiceCounts]);
  ByteReader entry_counts(tables[kEntryCounts]);
  PlaceReader carrier_lists{ByteReader(tables[kCarrierLists])},
      service_lists{ByteReader(tables[kServiceLists])};
  PlaceReader order{ByteReader(tables[kOrderTable])}, entry_lists{ByteReader(tables[kEntryLists])};
  for (Carrier* carrier : database.carriers) {
    service_lists.TakeInto(carrier->services, service_counts.U16(), database.services);
    for (Service* service : carrier->services) service->carrier = carrier;
  }
  for (Satellite* satellite : database.satellites) {
    carrier_lists.TakeInto(satellite->carriers, carrier_counts.U16(), database.carriers);
    for (Carrier* carrier : satellite->carriers) carrier->satellite = satellite;
    NumberCarriers(*satellite);
  }
  NumberSatellites(database);
  order.TakeInto(database.service_order, database.services.size(), database.services);
  for (FavouriteGroup& group : database.favourites)
    for (const auto kind : {GroupKind::kTv, GroupKind::kRadio})
      entry_lists.TakeInto(EntriesOf(group, kind), entry_counts.U32(), database.services);
}

void PutText(ByteWriter& writer, const std::string& text) {
  writer.U32(static_cast<uint32_t>(text.size()));
  writer.Text(text, text.size());
}

std::string TakeText(ByteReader& reader) {
  const auto bytes = reader.Take(reader.U32());
  return {bytes.begin(), bytes.end()};
}

}  // namespace

StateTables DocumentState(const Document& document) {
  ByteWriter slots, flags, ubis;
  for (const OpenSdb& sdb : document.sdbs) slots.U32(sdb.slot);
  flags.U32(document.slot_mask);
  flags.U8(document.compress_payload);
  flags.U8(document.compress_ubis);
  flags.Append(document.settings_block);
  for (const OpenUbi& ubi : document.ubis) {
    PutText(ubis, ubi.name);
    ubis.Write(ubi.record);
  }
  StateTables tables(kDocumentTables);
  tables[kSlotTable] = std::move(slots.bytes());
  tables[kFlagTable] = std::move(flags.bytes());
  tables[kUbiTable] = std::move(ubis.bytes());
  return tables;
}

StateTables SdbState(const OpenSdb& sdb) {
  const StaticDatabase& database = *sdb.database;
  StateTables tables(kSdbTables);
  ByteWriter head, satellites, carriers, services, groups;
  head.U8(database.compressed);
  head.U32(database.lnb_count);
  for (const LnbRecord& lnb : database.lnbs) head.Write(lnb);
  PutText(head, sdb.name);
  for (const Satellite* satellite : database.satellites) satellites.Write(satellite->record);
  carriers.bytes().reserve(database.carriers.size() * sizeof(CarrierRecord));
  for (const Carrier* carrier : database.carriers) {
    CarrierRecord record = carrier->record;
    record.satellite_index = 0;
    carriers.Write(record);
  }
  services.bytes().reserve(database.services.size() * sizeof(ServiceRecord));
  for (const Service* service : database.services) services.Write(service->record);
  for (const FavouriteGroup& group : database.favourites) groups.Write(group.record);
  tables[kHeadTable] = std::move(head.bytes());
  tables[kSatelliteTable] = std::move(satellites.bytes());
  tables[kCarrierTable] = std::move(carriers.bytes());
  tables[kServiceTable] = std::move(services.bytes());
  tables[kGroupTable] = std::move(groups.bytes());
  PutLists(database, tables);
  return tables;
}

std::vector<uint32_t> SlotsOfState(const StateTables& state) {
  std::vector<uint32_t> slots;
  for (ByteReader reader(state[kSlotTable]); reader.remaining() > 0;) slots.push_back(reader.U32());
  return slots;
}

void RestoreDocument(const StateTables& state, Document& document) {
  std::vector<OpenUbi> ubis;
  for (ByteReader reader(state[kUbiTable]); reader.ok() && reader.remaining() > 0;) {
    OpenUbi ubi;
    ubi.name = TakeText(reader);
    reader.Read(ubi.record);
    ubis.push_back(std::move(ubi));
  }
  // From here on nothing fails.
  document.ubis.swap(ubis);
  ByteReader flags(state[kFlagTable]);
  document.slot_mask = flags.U32();
  document.compress_payload = flags.U8() != 0;
  document.compress_ubis = flags.U8() != 0;
  flags.Read(document.settings_block);
}

OpenSdb RestoreSdb(const StateTables& state, uint32_t slot) {
  OpenSdb sdb;
  sdb.slot = slot;
  sdb.database = std::make_unique<StaticDatabase>();
  StaticDatabase& database = *sdb.database;
  ByteReader head(state[kHeadTable]);
  database.compressed = head.U8() != 0;
  database.lnb_count = head.U32();
  for (LnbRecord& lnb : database.lnbs) head.Read(lnb);
  sdb.name = TakeText(head);
  TakeRecords(state[kSatelliteTable], database.satellites, database.satellite_pool);
  TakeRecords(state[kCarrierTable], database.carriers, database.carrier_pool);
  TakeRecords(state[kServiceTable], database.services, database.service_pool);
  ByteReader groups(state[kGroupTable]);
  for (FavouriteGroup& group : database.favourites) groups.Read(group.record);
  TakeLists(state, database);
  return sdb;
}

}  // namespace vexa
