#include "import/json_document.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "core/fields.h"
#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSchemaOfSdb = "vexa-database/1";
constexpr const char* kSchemaOfDocument = "vexa-databases/1";

// ---- Writing.

struct Writer {
  const CodePage& page;
  Places<Service> number, order;  // one less than what the document says
  Places<Carrier> place;

  template <size_t N>
  std::string Text(const char (&name)[N]) const {
    return Utf8FromPage(page, NameOf(name));
  }
};

template <class Record>
void PutFields(Json& to, const Record& record) {
  for (const Field<Record>& field : FieldsOf<Record>()) to[field.key] = field.get(record);
}

Json ServiceJson(const Service& service, const Writer& writer) {
  Json fields = {{"number", writer.number.Of(service) + 1}, {"order", writer.order.Of(service) + 1}};
  fields["name"] = writer.Text(service.record.name);
  PutFields(fields, service.record);
  return fields;
}

Json SatelliteJson(const Satellite& satellite, const Writer& writer) {
  Json fields = {{"name", writer.Text(satellite.record.name)}};
  PutFields(fields, satellite.record);
  Json& carriers = fields["carriers"] = Json::array();
  for (const Carrier* carrier : satellite.carriers) {
    Json inner = {{"name", writer.Text(carrier->record.name)}};
    PutFields(inner, carrier->record);
    inner["place"] = writer.place.Of(*carrier) + 1;
    Json& services = inner["services"] = Json::array();
    for (const Service* service : carrier->services) services.push_back(ServiceJson(*service, writer));
    carriers.push_back(std::move(inner));
  }
  return fields;
}

Json NumbersOf(const std::vector<Service*>& services, const Writer& writer) {
  Json numbers = Json::array();
  for (const Service* service : services) numbers.push_back(writer.number.Of(*service) + 1);
  return numbers;
}

// What stands in an SDB besides its name and flag.
void PutSdb(Json& root, const StaticDatabase& database, const CodePage& page) {
  const Writer writer{page,
                      {database.service_pool, database.services},
                      {database.service_pool, database.service_order},
                      {database.carrier_pool, database.carriers}};
  Json& lnbs = root["lnbs"] = Json::array();
  for (uint32_t i = 0; i < database.lnb_count; ++i) {
    Json fields = Json::object();
    PutFields(fields, database.lnbs[i]);
    lnbs.push_back(std::move(fields));
  }
  Json& satellites = root["satellites"] = Json::array();
  for (const Satellite* satellite : database.satellites)
    satellites.push_back(SatelliteJson(*satellite, writer));
  Json& favourites = root["favourites"] = Json::array();
  for (const FavouriteGroup& group : database.favourites) {
    Json fields = {{"tv_name", writer.Text(group.record.tv_name)},
                   {"radio_name", writer.Text(group.record.radio_name)}};
    PutFields(fields, group.record);
    fields["tv_count"] = group.tv.size();
    fields["tv"] = NumbersOf(group.tv, writer);
    fields["radio_count"] = group.radio.size();
    fields["radio"] = NumbersOf(group.radio, writer);
    favourites.push_back(std::move(fields));
  }
}

// As a save keeps it.
std::string NameIn(const CodePage& page, const OpenSdb& sdb) {
  return Utf8FromPage(page, sdb.name.substr(0, kSdbNameLength));
}

// User box records have texts between and behind their numbers.
void PutUbi(Json& fields, const OpenUbi& ubi, const CodePage& page) {
  fields["name"] = Utf8FromPage(page, ubi.name.substr(0, kUbiNameLength));
  PutFields(fields, ubi.record);
  fields["kept_byte8_23"] = KeptText(ubi.record);
  fields["lock_code"] = LockCodeText(ubi.record);
}

// ---- Reading. What does not fit is thrown as a Misfit.

// Of the own keys whole; those of the document are cut, as everything that a message quotes.
std::string Escaped(const std::string& key) {
  std::string text;
  for (const char c : ShownText(key)) text += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  return text;
}

std::string Below(const std::string& path, const std::string& key) {
  return path + "/" + Escaped(key);
}

// One object of the document: its keys are asked for one by one.
class Object {
 public:
  Object(const Json& json, std::string path) : json_(json), path_(std::move(path)) {
    if (!json.is_object()) throw Misfit{path_, "is no object"};
  }
  // Refuses every key that is none of these.
  void ExpectKeys(const std::set<std::string>& known) const {
    for (const auto& [key, value] : json_.items()) {
      if (!known.contains(key)) throw Misfit{Below(path_, key), "is unknown"};
    }
  }
  bool Has(const char* key) const { return json_.contains(key); }
  const Json& At(const char* key) const {
    const auto found = json_.find(key);
    if (found == json_.end()) throw Misfit{Below(path_, key), "is missing"};
    return *found;
  }
  std::string PathOf(const char* key) const { return Below(path_, key); }

  int64_t Number(const char* key, int64_t smallest, int64_t largest) const {
    return NumberIn(At(key), PathOf(key), smallest, largest);
  }
  std::string Text(const char* key) const {
    const Json& value = At(key);
    if (!value.is_string()) throw Misfit{PathOf(key), "is no text"};
    return value.get<std::string>();
  }
  // In the code page, at most `largest` bytes.
  std::string Name(const char* key, const CodePage& page, size_t largest) const {
    const auto bytes = PageFromUtf8(page, Text(key));
    if (!bytes || bytes->find('\0') != std::string::npos)
      throw Misfit{PathOf(key), "has characters that " + page.name + " lacks"};
    if (bytes->size() > largest)
      throw Misfit{PathOf(key), "is longer than " + std::to_string(largest) + " characters"};
    return *bytes;
  }
  const Json& Array(const char* key, size_t largest) const {
    const Json& value = At(key);
    if (!value.is_array()) throw Misfit{PathOf(key), "is no array"};
    if (value.size() > largest)
      throw Misfit{Below(PathOf(key), std::to_string(largest)),
                   "is more than the " + std::to_string(largest) + " that there may be"};
    return value;
  }
  // Hands over each object of the array, in its order.
  template <class Read>
  void ForEach(const char* key, size_t largest, Read read) const {
    const Json& array = Array(key, largest);
    for (size_t i = 0; i < array.size(); ++i) read(Object(array[i], Below(PathOf(key), std::to_string(i))));
  }
  static int64_t NumberIn(const Json& value, const std::string& path, int64_t smallest, int64_t largest) {
    if (!value.is_number_integer()) throw Misfit{path, "is no whole number"};
    const bool beyond = value.is_number_unsigned() && value.get<uint64_t>() > static_cast<uint64_t>(largest);
    const int64_t number = beyond ? largest : value.get<int64_t>();
    if (beyond || number < smallest || number > largest)
      throw Misfit{path, Format("does not lie in %lld to %lld", static_cast<long long>(smallest),
                                static_cast<long long>(largest))};
    return number;
  }

 private:
  const Json& json_;
  std::string path_;
};

template <class Record>
std::set<std::string> KeysOf(std::initializer_list<const char*> others) {
  std::set<std::string> keys(others.begin(), others.end());
  for (const Field<Record>& field : FieldsOf<Record>()) keys.insert(field.key);
  return keys;
}

template <class Record>
void TakeFields(const Object& from, Record& record) {
  for (const Field<Record>& field : FieldsOf<Record>()) {
    if (!field.follows) field.set(record, from.Number(field.key, field.smallest, field.largest));
  }
}

template <size_t N>
void TakeName(const Object& from, const char* key, const CodePage& page, char (&field)[N]) {
  const std::string name = from.Name(key, page, N);
  std::memcpy(field, name.data(), name.size());
}

class SdbReader {
 public:
  SdbReader(const Object& root, const CodePage& page, StaticDatabase& database)
      : root_(root), page_(page), database_(database) {}

  void Read() {
    ReadLnbs();
    root_.ForEach("satellites", kMaximumSatellites, [&](const Object& object) { ReadSatellite(object); });
    const std::vector<Service*> read = database_.services;
    PutInOrder(numbers_.Order(), read, database_.services);
    PutInOrder(orders_.Order(), read, database_.service_order);
    if (places_given_ > 0) {
      const std::vector<Carrier*> carriers = database_.carriers;
      PutInOrder(places_.Order(), carriers, database_.carriers);
    } else {
      PlaceCarriersByServices(database_);
    }
    ReadFavourites();
  }

 private:
  template <class Record>
  static void PutInOrder(const std::vector<size_t>& order, const std::vector<Record*>& from,
                         std::vector<Record*>& to) {
    to.clear();
    for (const size_t place : order) to.push_back(from[place]);
  }

  void ReadLnbs() {
    static const auto keys = KeysOf<LnbRecord>({});
    root_.ForEach("lnbs", kMaximumLnbs, [&](const Object& object) {
      object.ExpectKeys(keys);
      TakeFields(object, database_.lnbs[database_.lnb_count++]);
    });
  }

  void ReadSatellite(const Object& object) {
    static const auto keys = KeysOf<SatelliteRecord>({"name", "carriers"});
    object.ExpectKeys(keys);
    SatelliteRecord record{};
    TakeName(object, "name", page_, record.name);
    TakeFields(object, record);
    object.Number("lnb_index", 0, kMaximumLnbs - 1);
    Satellite& satellite = *AppendSatellite(database_, record);
    object.ForEach("carriers", kMaximumCarriers,
                   [&](const Object& carrier) { ReadCarrier(satellite, carrier); });
  }

  void ReadCarrier(Satellite& satellite, const Object& object) {
    static const auto keys = KeysOf<CarrierRecord>({"name", "place", "services"});
    object.ExpectKeys(keys);
    CarrierRecord record{};
    TakeName(object, "name", page_, record.name);
    TakeFields(object, record);
    Carrier* carrier = AppendCarrier(database_, satellite, record);
    if (!carrier)
      throw Misfit{object.PathOf(""), Format("is more than the %u carriers of an SDB", kMaximumCarriers)};
    // In a document of before, no carrier has a place.
    if (object.Has("place"))
      ++places_given_;
    else if (without_place_.empty())
      without_place_ = object.PathOf("place");
    if (places_given_ > 0 && !without_place_.empty()) throw Misfit{without_place_, "is missing"};
    if (object.Has("place")) places_.Add(object.Number("place", 0, kMaximumCarriers), object.PathOf("place"));
    object.ForEach("services", kMaximumServices,
                   [&](const Object& service) { ReadService(*carrier, service); });
  }

  void ReadService(Carrier& carrier, const Object& object) {
    static const auto keys = KeysOf<ServiceRecord>({"number", "order", "name"});
    object.ExpectKeys(keys);
    ServiceRecord record{};
    TakeName(object, "name", page_, record.name);
    TakeFields(object, record);
    numbers_.Add(object.Number("number", 0, kMaximumServices), object.PathOf("number"));
    orders_.Add(object.Number("order", 0, kMaximumServices), object.PathOf("order"));
    if (!AppendService(database_, carrier, record))
      throw Misfit{object.PathOf(""), Format("is more than the %u services of an SDB", kMaximumServices)};
  }

  void ReadEntries(const Object& object, const char* key, size_t largest, std::vector<Service*>& entries) {
    const Json& numbers = object.Array(key, largest);
    for (size_t i = 0; i < numbers.size(); ++i) {
      const std::string path = Below(object.PathOf(key), std::to_string(i));
      const int64_t number = Object::NumberIn(numbers[i], path, 1, kMaximumServices);
      if (static_cast<size_t>(number) > database_.services.size())
        throw Misfit{path, "names a service that is not there"};
      entries.push_back(database_.services[static_cast<size_t>(number) - 1]);
    }
  }

  void ReadFavourites() {
    if (root_.Array("favourites", kFavouriteGroups).size() != kFavouriteGroups)
      throw Misfit{root_.PathOf("favourites"), "does not hold eight groups"};
    static const auto keys =
        KeysOf<FavouriteRecord>({"tv_name", "radio_name", "tv_count", "tv", "radio_count", "radio"});
    auto next = database_.favourites.begin();
    root_.ForEach("favourites", kFavouriteGroups, [&](const Object& object) {
      object.ExpectKeys(keys);
      FavouriteGroup& group = *next++;
      group.record = {};
      TakeName(object, "tv_name", page_, group.record.tv_name);
      TakeName(object, "radio_name", page_, group.record.radio_name);
      TakeFields(object, group.record);
      ReadEntries(object, "tv", kMaximumTvEntries, group.tv);
      ReadEntries(object, "radio", kMaximumRadioEntries, group.radio);
    });
  }

  const Object& root_;
  const CodePage& page_;
  StaticDatabase& database_;
  Numbering numbers_{"number"}, orders_{"order"}, places_{"place"};
  size_t places_given_ = 0;
  std::string without_place_;  // the path of the first one that is missing
};

OpenUbi UbiOf(const Object& object, const CodePage& page) {
  static const auto keys = KeysOf<UserBoxInfo>({"name", "kept_byte8_23", "lock_code"});
  object.ExpectKeys(keys);
  OpenUbi ubi;
  ubi.name = object.Name("name", page, kUbiNameLength);
  TakeFields(object, ubi.record);
  if (!SetKeptText(ubi.record, object.Text("kept_byte8_23")))
    throw Misfit{object.PathOf("kept_byte8_23"), "is no text of 32 hexadecimal digits"};
  if (!SetLockCodeText(ubi.record, object.Text("lock_code")))
    throw Misfit{object.PathOf("lock_code"), "is no text of 8 hexadecimal digits"};
  return ubi;
}

void ReadSdb(const Object& root, const CodePage& page, bool one_of_several, Document& document) {
  root.ExpectKeys(one_of_several
                      ? std::set<std::string>{"name", "compressed", "lnbs", "satellites", "favourites"}
                      : std::set<std::string>{"schema", "name", "lnbs", "satellites", "favourites"});
  OpenSdb& sdb = *AppendSdb(document, root.Name("name", page, kSdbNameLength));
  if (one_of_several) sdb.database->compressed = root.Number("compressed", 0, 1) != 0;
  SdbReader(root, page, *sdb.database).Read();
}

void ReadDocument(const Object& root, const CodePage& page, Document& document) {
  root.ExpectKeys({"schema", "compressed", "ubi_compressed", "sdbs", "ubis"});
  document.compress_payload = root.Number("compressed", 0, 1) != 0;
  document.compress_ubis = root.Number("ubi_compressed", 0, 1) != 0;
  root.ForEach("sdbs", kMaximumSdbs, [&](const Object& object) { ReadSdb(object, page, true, document); });
  root.ForEach("ubis", kMaximumUbis,
               [&](const Object& object) { document.ubis.push_back(UbiOf(object, page)); });
}

// Finds the keys that stand twice in their object, which the parser would pass over.
class KeyWatch {
 public:
  bool operator()(int, Json::parse_event_t event, Json& parsed) {
    using Event = Json::parse_event_t;
    switch (event) {
      case Event::object_start:
      case Event::array_start:
        levels_.push_back({event == Event::object_start, {}, "", 0});
        break;
      case Event::key:
        levels_.back().key = parsed.get<std::string>();
        if (!levels_.back().keys.insert(levels_.back().key).second && twice.empty()) twice = Path();
        break;
      case Event::object_end:
      case Event::array_end:
        levels_.pop_back();
        [[fallthrough]];
      case Event::value:
        if (!levels_.empty()) ++levels_.back().index;
    }
    return true;
  }
  std::string twice;  // path of the first one; empty: there is none

 private:
  struct Level {
    bool object;
    std::set<std::string> keys;
    std::string key;
    size_t index;
  };
  std::string Path() const {
    std::string path;
    for (const Level& level : levels_)
      path = Below(path, level.object ? level.key : std::to_string(level.index));
    return path;
  }
  std::vector<Level> levels_;
};

// `byte`: behind the one that does not fit.
Misfit NoJson(std::string_view text, size_t byte) {
  const size_t read = std::min(byte, text.size());
  const auto lines =
      std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(read > 0 ? read - 1 : 0), '\n');
  return {"line " + std::to_string(lines + 1), "is no JSON"};
}

Json Parsed(std::string_view text) {
  try {
    KeyWatch watch;
    Json json = Json::parse(text.begin(), text.end(), std::ref(watch));
    if (!watch.twice.empty()) throw Misfit{watch.twice, "is there twice"};
    return json;
  } catch (const Json::parse_error& error) {
    throw NoJson(text, error.byte);
  } catch (const Json::out_of_range&) {
    throw Misfit{"a number", "is beyond what any field holds"};
  }
}

}  // namespace

std::string JsonOfSdb(const OpenSdb& sdb, const CodePage& page) {
  Json root = {{"schema", kSchemaOfSdb}, {"name", NameIn(page, sdb)}};
  PutSdb(root, *sdb.database, page);
  return root.dump(2) + "\n";
}

std::string JsonOfDocument(const Document& document, const CodePage& page) {
  Json root = {{"schema", kSchemaOfDocument},
               {"compressed", document.compress_payload ? 1 : 0},
               {"ubi_compressed", document.compress_ubis ? 1 : 0}};
  Json& sdbs = root["sdbs"] = Json::array();
  for (const OpenSdb& sdb : document.sdbs) {
    Json inner = {{"name", NameIn(page, sdb)}, {"compressed", sdb.database->compressed ? 1 : 0}};
    PutSdb(inner, *sdb.database, page);
    sdbs.push_back(std::move(inner));
  }
  Json& ubis = root["ubis"] = Json::array();
  for (const OpenUbi& ubi : document.ubis) PutUbi(ubis.emplace_back(Json::object()), ubi, page);
  return root.dump(2) + "\n";
}

std::optional<Misfit> JudgeJsonStart(std::string_view start) {
  try {
    [[maybe_unused]] const Json parsed = Json::parse(start.begin(), start.end());
  } catch (const Json::parse_error& error) {
    // Behind the last byte, the text itself may go on.
    if (error.byte <= start.size()) return NoJson(start, error.byte);
  } catch (const Json::out_of_range&) {
  }
  const size_t first = start.find_first_not_of("\xEF\xBB\xBF \t\r\n");
  if (first != start.npos && start[first] != '{') return Misfit{"line 1", "is no object"};
  return std::nullopt;
}

std::optional<Misfit> ReadJsonDocument(std::string_view text, const CodePage& page, Document& document) {
  try {
    const Json json = Parsed(text);
    if (!json.is_object()) throw Misfit{"line 1", "is no object"};
    const Object root(json, "");
    const std::string schema = root.Has("schema") ? root.Text("schema") : kSchemaOfSdb;
    if (schema == kSchemaOfDocument) {
      ReadDocument(root, page, document);
    } else if (schema == kSchemaOfSdb) {
      ReadSdb(root, page, false, document);
    } else {
      throw Misfit{root.PathOf("schema"), "names a form that is not known"};
    }
    return std::nullopt;
  } catch (const Misfit& misfit) {
    return misfit;
  }
}

}  // namespace vexa
