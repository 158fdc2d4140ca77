#include "tests/support/random_database.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <unordered_map>

#include "core/edit.h"
#include "core/messages.h"

namespace vexa {

namespace {

using Random = std::mt19937;

uint32_t Upto(Random& random, uint32_t highest) {
  return std::uniform_int_distribution<uint32_t>(0, highest)(random);
}

template <class Record>
void FillBits(Random& random, Record& record) {
  unsigned char bytes[sizeof record];
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  std::memcpy(&record, bytes, sizeof record);
}

void FillName(Random& random, const RandomShape& shape, const char* kind, size_t number,
              char (&field)[kNameSize]) {
  SetName(field, Format("%s %zu", kind, number + 1));
  if (Upto(random, 3) == 0) SetName(field, Format("\xC9\xE9 %s %zu, \"x\"", kind, number + 1));
  if (!shape.long_names || Upto(random, 3) != 0) return;
  for (char& letter : field) letter = static_cast<char>(1 + Upto(random, 254));
}

LnbRecord MakeLnb(Random& random, const RandomShape& shape) {
  LnbRecord lnb = FactoryDefaults().lnb;
  if (shape.any_bits) FillBits(random, lnb);
  lnb.type = Upto(random, 3) & 3;
  return lnb;
}

void AddSatellites(Random& random, const RandomShape& shape, StaticDatabase& database) {
  for (size_t i = 0; i < shape.satellites; ++i) {
    Satellite* satellite = database.satellite_pool.Take();
    SatelliteRecord& record = satellite->record;
    if (shape.any_bits) FillBits(random, record);
    record.lnb_index =
        Upto(random, static_cast<uint32_t>(std::clamp<size_t>(shape.lnbs, 1, kMaximumLnbs)) - 1) & 0xFF;
    if (!shape.any_bits) record.position = Upto(random, 64) & 0xFF;
    record.user = Upto(random, 1) & 1;
    record.east = Upto(random, 1) & 1;
    record.angle = Upto(random, 1800) & 0xFFF;
    record.carrier_count = 0;
    FillName(random, shape, "Satellite", i, record.name);
    database.satellites.push_back(satellite);
  }
}

uint32_t FrequencyFor(Random& random, const StaticDatabase& database, const Satellite& satellite) {
  switch (database.lnbs[satellite.record.lnb_index].type) {
    case kLnbNormal:
      return 3000 + Upto(random, 1200);
    case kLnbLnbf:
      return 3000 + Upto(random, 1800);
    case kLnbUniversal:
      return 10700 + Upto(random, 2050);
    default:
      return 950 + Upto(random, 1200);
  }
}

void AddCarriers(Random& random, const RandomShape& shape, StaticDatabase& database) {
  database.carrier_pool.Reserve(shape.carriers);
  database.carriers.reserve(shape.carriers);
  for (size_t i = 0; i < shape.carriers; ++i) {
    Carrier* carrier = AddTestCarrier(database, Upto(random, static_cast<uint32_t>(shape.satellites - 1)));
    CarrierRecord& record = carrier->record;
    const uint32_t satellite = record.satellite_index;
    if (shape.any_bits) FillBits(random, record);
    record.satellite_index = satellite & 0x3FF;
    record.service_count = 0;
    record.symbol_rate = (1000 + Upto(random, 44000)) & 0xFFFFFF;
    record.polarization = Upto(random, 3) & 3;
    if (!shape.any_bits) record.fec = Upto(random, 5) & 7;
    record.user = Upto(random, 1) & 1;
    record.frequency = FrequencyFor(random, database, *carrier->satellite);
    FillName(random, shape, "Carrier", i, record.name);
  }
}

void AddServices(Random& random, const RandomShape& shape, StaticDatabase& database) {
  // Carrier by carrier, as a file holds them.
  std::vector<uint32_t> counts(shape.carriers);
  for (size_t i = 0; i < shape.services; ++i)
    ++counts[Upto(random, static_cast<uint32_t>(shape.carriers - 1))];
  database.service_pool.Reserve(shape.services);
  database.services.reserve(shape.services);
  for (size_t i = 0; i < shape.carriers; ++i) {
    database.carriers[i]->services.reserve(counts[i]);
    for (uint32_t number = 0; number < counts[i]; ++number) {
      Service* service = AddTestService(database, database.carriers[i]);
      ServiceRecord& record = service->record;
      if (shape.any_bits) FillBits(random, record);
      record.program_number = (number + 1) & 0xFFFF;
      record.video_pid = Upto(random, 8192) & 0x3FFF;
      record.audio_pid = Upto(random, 8192) & 0x3FFF;
      record.pcr_pid = Upto(random, 8192) & 0x3FFF;
      if (!shape.any_bits) record.type = (1 + Upto(random, 1)) & 3;
      record.free = Upto(random, 1) & 1;
      FillName(random, shape, "Service", database.services.size() - 1, record.name);
    }
  }
  std::shuffle(database.service_order.begin(), database.service_order.end(), random);
}

void AddFavourites(Random& random, const RandomShape& shape, StaticDatabase& database) {
  const auto fill = [&](std::vector<Service*>& list, uint32_t limit) {
    const uint32_t count = Upto(random, std::min(static_cast<uint32_t>(shape.favourites), limit));
    for (uint32_t i = 0; i < count; ++i)
      list.push_back(database.services[Upto(random, static_cast<uint32_t>(database.services.size() - 1))]);
  };
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    FavouriteGroup& group = database.favourites[i];
    if (shape.any_bits) FillBits(random, group.record);
    FillName(random, shape, "Group", i, group.record.tv_name);
    FillName(random, shape, "Group", i, group.record.radio_name);
    if (database.services.empty()) continue;
    fill(group.tv, kMaximumTvEntries);
    fill(group.radio, kMaximumRadioEntries);
  }
}

template <class Value>
void Append(std::string& bytes, const Value& value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// The content by kind, in bytes; services are named by their places when all are counted carrier by carrier.
std::map<std::string, std::string> ContentOf(const StaticDatabase& database, bool exact) {
  std::map<std::string, std::string> content;
  std::unordered_map<const Service*, size_t> places;
  const auto append_list = [&](std::string& bytes, const std::vector<Service*>& list) {
    Append(bytes, list.size());
    for (const Service* service : list) Append(bytes, places.at(service));
  };
  Append(content["LNBs"], database.lnb_count);
  for (size_t i = 0; i < (exact ? kMaximumLnbs : database.lnb_count); ++i)
    Append(content["LNBs"], database.lnbs[i]);
  for (const Satellite* satellite : database.satellites) Append(content["satellites"], satellite->record);
  for (const Carrier* carrier : database.carriers) {
    CarrierRecord record = carrier->record;
    if (!exact) record.lnb_index = record.first_service = 0;
    Append(content["carriers"], record);
    for (const Service* service : carrier->services) {
      places.emplace(service, places.size());
      ServiceRecord service_record = service->record;
      if (!exact) service_record.carrier_index = 0;
      Append(content["services"], service_record);
    }
  }
  append_list(content["order"], database.service_order);
  for (const FavouriteGroup& group : database.favourites) {
    FavouriteRecord record = group.record;
    if (!exact) record.tv_count = record.radio_count = 0;
    Append(content["groups"], record);
    append_list(content["groups"], group.tv);
    append_list(content["groups"], group.radio);
  }
  if (!exact) return content;
  append_list(content["services' array"], database.services);
  Append(content["compression"], database.compressed);
  return content;
}

}  // namespace

Satellite* AddTestSatellite(StaticDatabase& database, const std::string& name) {
  SatelliteRecord record = FactoryDefaults().satellite;
  SetName(record.name, name);
  return PutSatellite(database, record, database.satellites.size());
}

Carrier* AddTestCarrier(StaticDatabase& database, size_t satellite) {
  Satellite& owner = *database.satellites[satellite];
  return PutCarrier(database, owner, FactoryDefaults().carrier, owner.carriers.size());
}

Service* AddTestService(StaticDatabase& database, Carrier* carrier) {
  Service* service = PutService(database, *carrier, FactoryDefaults().service, carrier->services.size());
  database.service_order.push_back(service);
  return service;
}

Document SmallDocument() {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 2;
  for (int s = 0; s < 2; ++s) {
    Satellite* satellite = AddTestSatellite(database, Format("S%d", s + 1));
    satellite->record.angle = s == 0 ? 100 : 130;
    satellite->record.east = 1;
    satellite->record.position = static_cast<uint8_t>(s + 1);
    for (int c = 0; c < 2; ++c) {
      Carrier* carrier = AddTestCarrier(database, static_cast<size_t>(s));
      carrier->record.frequency = 11000 + 40 * static_cast<uint32_t>(c);
      carrier->record.symbol_rate = 27500;
      SetName(carrier->record.name, Format("S%dC%d", s + 1, c + 1));
      for (int p = 0; p < 3; ++p) {
        Service* service = AddTestService(database, carrier);
        service->record.program_number = static_cast<uint16_t>(p + 1);
        service->record.type = kTv;
        service->record.video_pid = service->record.audio_pid = service->record.pcr_pid = 100;
        SetName(service->record.name, Format("S%dC%dP%d", s + 1, c + 1, p + 1));
      }
    }
  }
  OpenUbi box;
  box.name = "Box";
  box.record.rf_channel = 30;
  document.ubis.push_back(box);
  return document;
}

std::unique_ptr<StaticDatabase> MakeRandomDatabase(std::mt19937& random, const RandomShape& shape) {
  auto database = std::make_unique<StaticDatabase>();
  database->lnb_count = static_cast<uint32_t>(shape.lnbs);
  for (size_t i = 0; i < shape.lnbs; ++i) database->lnbs[i] = MakeLnb(random, shape);
  if (shape.satellites > 0) {
    AddSatellites(random, shape, *database);
    AddCarriers(random, shape, *database);
    if (shape.carriers > 0) AddServices(random, shape, *database);
  }
  AddFavourites(random, shape, *database);
  return database;
}

RandomShape MakeRandomShape(std::mt19937& random) {
  RandomShape shape;
  shape.lnbs = 1 + Upto(random, 15);
  shape.satellites = 1 + Upto(random, Upto(random, 3) == 0 ? 84 : 5);
  shape.carriers = Upto(random, 4) == 0 ? 0 : Upto(random, 60);
  shape.services = Upto(random, 4) == 0 ? 0 : Upto(random, 200);
  shape.favourites = Upto(random, 40);
  shape.any_bits = Upto(random, 1) == 1;
  shape.long_names = Upto(random, 1) == 1;
  return shape;
}

Document MakeRandomDocument(std::mt19937& random) {
  Document document;
  const uint32_t sdbs = 1 + Upto(random, 3);
  for (uint32_t i = 0; i < sdbs; ++i) {
    OpenSdb* sdb = AppendSdb(document, Format("DB%u", i + 1));
    sdb->database = MakeRandomDatabase(random, MakeRandomShape(random));
    sdb->database->compressed = Upto(random, 1) == 1;
  }
  const uint32_t ubis = Upto(random, 3);
  for (uint32_t i = 0; i < ubis; ++i) {
    OpenUbi ubi;
    ubi.name = Format("Box%u", i + 1);
    FillBits(random, ubi.record);
    document.ubis.push_back(ubi);
  }
  document.compress_payload = Upto(random, 1) == 1;
  document.compress_ubis = ubis > 0 && Upto(random, 1) == 1;
  return document;
}

std::string DatabaseDifference(const StaticDatabase& one, const StaticDatabase& other, bool exact) {
  const auto content = ContentOf(one, exact), others = ContentOf(other, exact);
  const auto [place, unlike] = std::mismatch(content.begin(), content.end(), others.begin(), others.end());
  if (place != content.end()) return place->first;
  return unlike != others.end() ? unlike->first : "";
}

}  // namespace vexa
