// The open channel database: records with the links between them.
//
//   StaticDatabase --+-- lnbs (16, the first lnb_count in use)
//                    +-- satellites (table order) --- carriers (list order) --- services (list order)
//                    +-- carriers, services (the SDB's own order, which is the order in files)
//                    +-- service_order (running order) and favourites: refer to services
//
// References are pointers; they are numbers only in files. Records live in pools and keep their address
// until they are given back, whatever else is added, moved or deleted. `CheckLinks` states what every
// edit keeps true.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/records.h"

namespace vexa {

struct CodePage;  // platform/code_page.h

struct Satellite;
struct Carrier;

struct Service {
  ServiceRecord record{};
  Carrier* carrier = nullptr;
  uint16_t carrier_position = 0;  // of its carrier within the satellite, from 0
  uint32_t pool_number = 0;       // set by its pool
};

struct Carrier {
  CarrierRecord record{};
  uint32_t pool_number = 0;
  Satellite* satellite = nullptr;
  std::vector<Service*> services;
};

struct Satellite {
  SatelliteRecord record{};
  uint32_t pool_number = 0;
  std::vector<Carrier*> carriers;
};

struct FavouriteGroup {
  FavouriteRecord record{};  // its counts are set when saved
  std::vector<Service*> tv, radio;
};

// Storage with stable addresses, in blocks that never grow. What is given back is handed out again, empty.
// The pool owns its records. Each has a number of its own, below `size()`, that stays until the pool ends, so
// that a job can keep what it knows about the records in a list of its own (`Places`).
template <class T>
class RecordPool {
 public:
  // The next `count` records come out of one block.
  void Reserve(size_t count) {
    if (count > 0) blocks_.emplace_back().reserve(count);
  }
  // An empty record.
  T* Take() {
    if (!free_.empty()) {
      T* record = free_.back();
      free_.pop_back();
      const uint32_t number = record->pool_number;
      *record = T{};
      record->pool_number = number;
      return record;
    }
    if (blocks_.empty() || blocks_.back().size() == blocks_.back().capacity()) Reserve(kBlock);
    T* record = &blocks_.back().emplace_back();
    record->pool_number = size_++;
    return record;
  }
  // Takes back a record that this pool handed out.
  void Give(T* record) { free_.push_back(record); }
  // All that ever were handed out, those given back included.
  uint32_t size() const { return size_; }

 private:
  static constexpr size_t kBlock = 128;
  std::vector<std::vector<T>> blocks_;
  std::vector<T*> free_;
  uint32_t size_ = 0;
};

// A number for each carrier or service of one database, below 65536: what references become in files. It
// stands beside the records, which stay untouched.
template <class T>
class Places {
 public:
  explicit Places(const RecordPool<T>& pool) : places_(pool.size()) {}
  // Each record of the list gets its position in it.
  Places(const RecordPool<T>& pool, const std::vector<T*>& list) : Places(pool) {
    for (size_t i = 0; i < list.size(); ++i) Set(*list[i], i);
  }
  void Set(const T& record, size_t place) { places_[record.pool_number] = static_cast<uint16_t>(place); }
  // 0 for a record that got none.
  uint16_t Of(const T& record) const { return places_[record.pool_number]; }

 private:
  std::vector<uint16_t> places_;  // by pool number
};

// What new records start from; the user changes them in the "Default Values" dialog.
struct DefaultRecords {
  DefaultRecords();  // LNB 9750/10600 Universal ...; satellite all zero; carrier 10700 MHz 27500 kS/s; TV,
                     // free
  LnbRecord lnb{};
  SatelliteRecord satellite{};
  CarrierRecord carrier{};
  ServiceRecord service{};
};

// The defaults before the user changed any.
const DefaultRecords& FactoryDefaults();

struct StaticDatabase {
  // No LNB in use, all 16 as in `defaults`; eight groups named "Favourite%d".
  explicit StaticDatabase(const DefaultRecords& defaults = FactoryDefaults());
  StaticDatabase(const StaticDatabase&) = delete;  // links point inside; see CopyDatabase
  StaticDatabase& operator=(const StaticDatabase&) = delete;

  bool compressed = false;  // its stream is stored compressed in the container
  uint32_t lnb_count = 0;
  std::array<LnbRecord, kMaximumLnbs> lnbs{};
  std::vector<Satellite*> satellites;
  std::vector<Carrier*> carriers;
  std::vector<Service*> services;
  std::vector<Service*> service_order;
  std::array<FavouriteGroup, kFavouriteGroups> favourites;

  RecordPool<Satellite> satellite_pool;
  RecordPool<Carrier> carrier_pool;
  RecordPool<Service> service_pool;
};

// Equal in content, flags and order of the arrays; shares nothing with the original.
std::unique_ptr<StaticDatabase> CopyDatabase(const StaticDatabase& database);

// Empty when all links hold, else the first broken one in words. Holds: counts in records equal the list
// lengths; every carrier's satellite index is its satellite's place and it stands once in that satellite's
// list; likewise services; carrier_position; service_order is a permutation of services; favourites name
// only services of the database; limits of the tables; LNB indices below 16.
std::string CheckLinks(const StaticDatabase& database);

inline constexpr uint32_t kMaximumSdbs = 16;  // a database window
inline constexpr uint32_t kMaximumUbis = 16;

struct OpenSdb {
  uint32_t slot = 0;  // place in the slot table; the lowest free one at creation
  std::string name;   // single-byte text
  std::unique_ptr<StaticDatabase> database;
};

struct OpenUbi {
  std::string name;  // single-byte text, up to 7 characters
  UserBoxInfo record{};
};

// What one database window holds.
struct Document {
  std::vector<OpenSdb> sdbs;  // tree order
  std::vector<OpenUbi> ubis;
  uint32_t slot_mask = 0;         // bit n: slot n is in use
  bool compress_payload = false;  // "Compress bin on save"
  bool compress_ubis = false;
  // False: an open left something of its file out (a damaged SDB, a maximum, a project type that does not
  // match). What is here must not replace that file.
  bool read_whole = true;
  std::string source;  // the file that it was read from, as messages name it; may be empty
  std::array<uint8_t, 96> settings_block{};  // the receiver's own settings, from a download
  const CodePage* names = nullptr;           // the page that its names stand in; nullptr: Windows-1252
};

// Lowest free slot below kMaximumSdbs, claimed; -1 when all are taken.
int ClaimSlot(Document& document);
// The slot is free again.
void ReleaseSlot(Document& document, uint32_t slot);
// Appends an empty SDB in the lowest free slot; it belongs to the document. nullptr, silently, at the limit.
OpenSdb* AppendSdb(Document& document, std::string name, const DefaultRecords& defaults = FactoryDefaults());
// One SDB "SDB1" without LNB or satellite.
Document NewDocument(const DefaultRecords& defaults = FactoryDefaults());

}  // namespace vexa
