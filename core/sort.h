// Sorting of satellites, of the carriers within each satellite, and of the services within each carrier.
//
// Each key is one pass over a list, in order of priority. A pass takes, for each place in turn, the record
// that stands there and brings forward to it the first of the later records that come before it, but only
// among records that equal it in every earlier key (names then byte for byte, although they are ordered
// without regard to case) and, for satellites, that have carriers when it has. The records between move one
// place back. A descending pass by symbol rate moves nothing, and still counts as an earlier key.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/bin_file.h"
#include "core/context.h"
#include "core/database.h"

namespace vexa {

enum class SatelliteKey { kName, kFlag, kAngle };
enum class CarrierKey { kName, kFrequency, kSymbolRate };
enum class ServiceKey { kName, kStatus, kType };

inline constexpr size_t kMaximumSortKeys = 3;

// Up to three keys, most important first; none leaves the lists alone.
template <class Key>
struct SortKeys {
  std::vector<Key> keys;
  bool descending = false;
};

struct SortOptions {
  SortKeys<SatelliteKey> satellites;  // ascending: A to Z, East first, small angles first
  SortKeys<CarrierKey> carriers;
  SortKeys<ServiceKey> services;  // ascending: A to Z, free first, TV first
};

// Sorts the SDBs at these places of the document. False after a message, nothing being sorted, when one of
// them has no satellite.
bool SortSdbs(const Messages& messages, Document& document, const std::vector<size_t>& sdbs,
              const SortOptions& options);
// Sorts one SDB, also one without satellites.
void SortDatabase(StaticDatabase& database, const SortOptions& options);
// Sorts a copy and saves what is `selected` of it, all without a word; the document stays as it is. The size
// of the file, for CheckBinSize; nothing after a message.
std::optional<uint64_t> SortToFile(const Context& context, const Document& document,
                                   const std::vector<size_t>& sdbs, const SortOptions& options,
                                   const Path& path, const BinVersion& version = {},
                                   const BinSelection& selected = {});
// The same with the sorted SDBs alone in the file.
std::optional<uint64_t> SortToSeparateFile(const Context& context, const Document& document,
                                           const std::vector<size_t>& sdbs, const SortOptions& options,
                                           const Path& path, const BinVersion& version = {});

// Content, flags and slots; the copy shares nothing with the document and counts as read whole.
Document CopyDocument(const Document& document);

}  // namespace vexa
