// The compiler from the readable description to the ECF file. It reads the whole description strictly, also
// what nothing refers to: what it does not know, what would not fit its field and what the receivers could
// not use is an error, and all errors are told at once.
#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <initializer_list>
#include <map>
#include <set>

#include "config/ecf.h"
#include "config/ecf_content.h"
#include "config/receiver_tables.h"
#include "platform/text.h"

#define TOML_EXCEPTIONS 0
#define TOML_MAX_NESTED_VALUES 16  // the description has four; the library works through them by recursion
#include <toml++/toml.h>

namespace vexa {

namespace {

using Keys = std::initializer_list<const char*>;

struct Fault {
  unsigned line, column;
  std::string path, text;
  auto operator<=>(const Fault&) const = default;
};

// A value with its place in the description.
struct Field {
  const toml::node* node = nullptr;
  std::string path;
  std::string name;  // the key it stands under
};

// A table, with its parents' keys under its own.
struct Table {
  std::map<std::string, Field, std::less<>> fields;
  const toml::node* node = nullptr;
  std::string path, owner;
  bool whole = true;  // false: what is missing may stand in a part that could not be read
};

// What the partitions of an image have at least, by type.
struct TableSize {
  uint32_t type, in_eeprom, in_journal;
};
constexpr uint32_t JournalOf(uint32_t block) {
  return kMarker + kJournalCopies * block;
}
constexpr uint32_t kLnbsAndSatellites = kSatelliteTable + kMaximumSatellites * kSatelliteEntry;
constexpr TableSize kTableSizes[] = {
    {3, kLnbsAndSatellites, kLnbsAndSatellites},
    {4, kImageTables, kImageTables},
    {5, 2 * kImageServices, 2 * kImageServices},
    {6, kFavouriteGroups* kFavouriteEntry, kFavouriteGroups* kFavouriteEntry},
    {0, kSettingsBlock, JournalOf(kSettingsBlock)},
    {2, kSelectionBlock, JournalOf(kSelectionBlock)},
};
constexpr size_t kEepromPlace = 1;     // of a product's configurations
constexpr size_t kAdbRegionName = 15;  // characters of the name that receivers report
constexpr uint8_t kAdbRegionType = 3;
constexpr uint32_t kLastRegionType = 15;  // the files for the line have four bits for it
constexpr size_t kUnread = SIZE_MAX;      // the place of what is told to be wrong where it stands
constexpr uint32_t kRegionHeader = 64;    // bytes of an image's header, behind which the image stands
constexpr unsigned kMostKeyParts = 16;    // "configuration.KEY.loader.block_size" has four

struct Compiler {
  const toml::table* root = nullptr;
  std::set<Fault> faults;
  EcfContent content;
  std::map<std::string, size_t, std::less<>> configurations, products;  // places by key
  std::vector<Table> sources;                                           // of the configurations

  void Add(const toml::node& node, const std::string& path, const char* format, ...) VEXA_PRINTF(4, 5) {
    va_list arguments;
    va_start(arguments, format);
    std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, arguments)) + 1, '\0');
    va_end(arguments);
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    text.pop_back();
    const auto& begin = node.source().begin;
    faults.insert({begin.line, begin.column, path, text});
  }
  void WrongKind(const Field& field, const char* kind) {
    Add(*field.node, field.path, "\"%s\" must be %s.", field.name.c_str(), kind);
  }
};

std::string Below(const std::string& path, std::string_view key) {
  return path.empty() ? std::string(key) : path + "." + std::string(key);
}

Field ElementOf(const Field& list, const toml::node& node, size_t place) {
  return {&node, list.path + "[" + std::to_string(place) + "]", list.name};
}

void AddFields(Compiler& compiler, const toml::table& source, const std::string& path, Keys known,
               Table& table) {
  for (auto&& [key, node] : source) {
    const std::string name(key.str());
    if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
      const auto& begin = key.source().begin;
      compiler.faults.insert({begin.line, begin.column, Below(path, name), "Unknown key \"" + name + "\"."});
    } else {
      table.fields.emplace(name, Field{&node, Below(path, name), name});  // a nearer one is there already
    }
  }
}

// nullptr when it is not there.
const Field* Find(const Table& table, const char* what) {
  const auto found = table.fields.find(what);
  return found == table.fields.end() ? nullptr : &found->second;
}

const Field* Required(Compiler& compiler, const Table& table, const char* what) {
  const Field* field = Find(table, what);
  if (!field && table.whole) {
    compiler.Add(*table.node, Below(table.path, what), "\"%s\" is missing in %s.", what, table.owner.c_str());
  }
  return field;
}

uint32_t NumberOf(Compiler& compiler, const Field& field, uint32_t lowest, uint32_t highest) {
  const auto value = field.node->value_exact<int64_t>();
  if (value && *value >= lowest && *value <= highest) return static_cast<uint32_t>(*value);
  compiler.Add(*field.node, field.path, "\"%s\" must be a number from %" PRIu32 " to %" PRIu32 ".",
               field.name.c_str(), lowest, highest);
  return lowest;
}

uint32_t Number(Compiler& compiler, const Table& table, const char* what, uint32_t lowest, uint32_t highest,
                std::optional<uint32_t> standard = std::nullopt) {
  const Field* field = standard ? Find(table, what) : Required(compiler, table, what);
  return field ? NumberOf(compiler, *field, lowest, highest) : standard.value_or(lowest);
}

uint8_t Byte(Compiler& compiler, const Table& table, const char* what,
             std::optional<uint32_t> standard = std::nullopt) {
  return static_cast<uint8_t>(Number(compiler, table, what, 0, 255, standard));
}

// Single-byte text of at most `limit` characters.
std::string TextOf(Compiler& compiler, const Field& field, size_t limit) {
  const auto value = field.node->value_exact<std::string>();
  if (!value) {
    compiler.WrongKind(field, "a text");
    return {};
  }
  const std::string text = LatinFromUtf8(*value);
  if (text.size() > limit) {
    compiler.Add(*field.node, field.path, "\"%s\" has more than %zu characters.", field.name.c_str(), limit);
  }
  if (!FitsLatin(*value) || text.find('\0') != std::string::npos) {
    compiler.Add(*field.node, field.path, "\"%s\" has a character that the single-byte text cannot hold.",
                 field.name.c_str());
  }
  return text;
}

std::string Text(Compiler& compiler, const Table& table, const char* what, size_t limit) {
  const Field* field = Required(compiler, table, what);
  return field ? TextOf(compiler, *field, limit) : std::string();
}

// The same for what users choose by it.
std::string NameText(Compiler& compiler, const Table& table, size_t limit) {
  const Field* field = Required(compiler, table, "name");
  if (field && field->node->value_exact<std::string>() == "")
    compiler.Add(*field->node, field->path, "\"name\" is empty.");
  return field ? TextOf(compiler, *field, limit) : std::string();
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Exactly the bytes of `bytes` written as pairs of hexadecimal digits; blanks between pairs.
void HexBytes(Compiler& compiler, const Field& field, std::span<uint8_t> bytes) {
  const std::string text = field.node->value_exact<std::string>().value_or("?");
  size_t count = 0;
  bool good = true;
  for (size_t i = 0; i < text.size() && good;) {
    if (text[i] == ' ') {
      ++i;
      continue;
    }
    const int high = HexDigit(text[i]), low = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
    good = high >= 0 && low >= 0 && count < bytes.size();
    if (good) bytes[count++] = static_cast<uint8_t>(high * 16 + low);
    i += 2;
  }
  if (good && count == bytes.size()) return;
  compiler.Add(*field.node, field.path, "\"%s\" must be %zu bytes in hexadecimal digits.", field.name.c_str(),
               bytes.size());
}

// The elements of the list under `what`, at most `limit`; none when it is not there or no list.
std::vector<Field> List(Compiler& compiler, const Table& table, const char* what, size_t limit) {
  std::vector<Field> elements;
  const Field* field = Find(table, what);
  if (!field) return elements;
  const toml::array* array = field->node->as_array();
  if (!array) {
    compiler.WrongKind(*field, "a list");
    return elements;
  }
  if (array->size() > limit) {
    compiler.Add(*array, field->path, "\"%s\" has more than %zu entries.", what, limit);
  }
  for (size_t i = 0; i < array->size(); ++i) elements.push_back(ElementOf(*field, (*array)[i], i));
  return elements;
}

// Nothing when the value is no table.
std::optional<Table> EntryOf(Compiler& compiler, const Field& field, const std::string& owner, Keys known) {
  const toml::table* source = field.node->as_table();
  if (!source) {
    compiler.WrongKind(field, "a table");
    return std::nullopt;
  }
  Table table{{}, source, field.path, owner, true};
  AddFields(compiler, *source, field.path, known, table);
  return table;
}

// The table `kind.name` with the keys of its parents.
Table Resolve(Compiler& compiler, const std::string& kind, const std::string& name, const toml::table& source,
              Keys known) {
  Table table{{}, &source, Below(kind, name), "the " + kind + " \"" + name + "\"", true};
  std::set<std::string> passed;
  std::string next = name;
  for (const toml::table* level = &source; level;) {
    passed.insert(next);
    const std::string path = Below(kind, next);
    AddFields(compiler, *level, path, known, table);
    const toml::node* parent = level->get("parent");
    if (!parent) break;
    const Field field{parent, Below(path, "parent"), "parent"};
    next = parent->value_exact<std::string>().value_or("");
    level = next.empty() ? nullptr : (*compiler.root)[kind][next].as_table();
    table.whole = level && !passed.contains(next);
    if (table.whole) continue;
    if (next.empty()) {
      compiler.WrongKind(field, "a name");
    } else if (level) {
      compiler.Add(*parent, field.path, "The %s \"%s\" is its own parent.", kind.c_str(), next.c_str());
    } else {
      compiler.Add(*parent, field.path, "There is no %s \"%s\".", kind.c_str(), next.c_str());
    }
    break;
  }
  return table;
}

// The places of the named products or configurations, kUnread for each name that is told to be wrong.
std::vector<size_t> References(Compiler& compiler, const Table& table, const char* what, const char* kind,
                               const std::map<std::string, size_t, std::less<>>& places, size_t limit) {
  std::vector<size_t> references;
  Required(compiler, table, what);
  for (const Field& element : List(compiler, table, what, limit)) {
    const auto key = element.node->value_exact<std::string>();
    const auto found = places.find(key.value_or(""));
    references.push_back(key && found != places.end() ? found->second : kUnread);
    if (!key) {
      compiler.WrongKind(element, "a list of names");
    } else if (found == places.end()) {
      compiler.Add(*element.node, element.path, "There is no %s \"%s\".", kind, key->c_str());
    }
  }
  return references;
}

// `typed` becomes false when the type is not what was meant.
RegionEntry ReadRegion(Compiler& compiler, const Table& table, bool& typed) {
  RegionEntry region;
  region.name = NameText(compiler, table, 49);
  size_t faults = compiler.faults.size();
  region.type = static_cast<uint8_t>(Number(compiler, table, "type", 0, kLastRegionType));
  typed = typed && compiler.faults.size() == faults;
  faults = compiler.faults.size();
  region.start = Number(compiler, table, "start", 0, UINT32_MAX);
  // The first address behind it is an address too.
  region.end = Number(compiler, table, "end", 0, UINT32_MAX - 1);
  const std::string shown = Utf8FromLatin(region.name);
  const bool placed = compiler.faults.size() == faults;  // else a number is not what was meant
  if (placed && region.end < region.start) {
    compiler.Add(*table.node, table.path, "The region \"%s\" ends before it starts.", shown.c_str());
  } else if (placed && region.end - region.start <= kRegionHeader) {
    compiler.Add(*table.node, table.path,
                 "The region \"%s\" has %" PRIu32 " bytes; an image takes more than the %" PRIu32
                 " of its header.",
                 shown.c_str(), region.end - region.start, kRegionHeader);
  }
  const Field* name = Find(table, "name");
  const auto hidden = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  if (name && std::any_of(region.name.begin(), region.name.end(), hidden)) {
    compiler.Add(*name->node, name->path, "\"name\" has a character that receivers cannot show.");
  }
  return region;
}

LoaderParameters ReadLoader(Compiler& compiler, const Table& configuration) {
  const Field* field = Required(compiler, configuration, "loader");
  const auto table = field ? EntryOf(compiler, *field, "the loader",
                                     {"header_tag", "packet_tag", "block_size", "packet_size"})
                           : std::nullopt;
  if (!table) return {};
  LoaderParameters loader;
  loader.header_tag = Byte(compiler, *table, "header_tag");
  loader.packet_tag = Byte(compiler, *table, "packet_tag");
  // A packet's offset within its block has 18 bits.
  loader.block_kib = static_cast<uint16_t>(Number(compiler, *table, "block_size", 1, 256));
  loader.packet_size = static_cast<uint16_t>(Number(compiler, *table, "packet_size", 1, kMaximumPacketSize));
  if (Find(*table, "header_tag") && Find(*table, "packet_tag") && loader.header_tag == loader.packet_tag) {
    compiler.Add(*table->node, table->path, "The two tags of the loader must differ.");
  }
  return loader;
}

std::vector<ContentPartition> ReadPartitions(Compiler& compiler, const Table& configuration) {
  std::vector<ContentPartition> partitions;
  std::set<uint32_t> types, numbers;
  uint32_t number = 0;
  for (const Field& element : List(compiler, configuration, "partitions", kMaximumPartitions)) {
    const auto table =
        EntryOf(compiler, element, "a partition", {"type", "number", "start", "length", "bitmap_bits"});
    if (!table) continue;
    ContentPartition partition;
    partition.type = static_cast<uint8_t>(Number(compiler, *table, "type", 0, kPartitionTypes - 1));
    number = Number(compiler, *table, "number", 1, 255, number + 1);
    partition.number = static_cast<uint8_t>(number);
    const Field* numbered = Find(*table, "number");
    if (!numbers.insert(number).second) {
      compiler.Add(numbered ? *numbered->node : *table->node, Below(table->path, "number"),
                   "There are two partitions of number %" PRIu32 ".", number);
    }
    partition.start = Number(compiler, *table, "start", 0, UINT32_MAX);
    partition.length = Number(compiler, *table, "length", 0, UINT32_MAX);
    if (Find(*table, "bitmap_bits")) partition.bitmap_bits = Byte(compiler, *table, "bitmap_bits");
    const Field* type = Find(*table, "type");
    if (type && !types.insert(partition.type).second) {
      compiler.Add(*type->node, type->path, "There are two partitions of type %u.", unsigned{partition.type});
    }
    partitions.push_back(partition);
  }
  return partitions;
}

std::optional<std::vector<LanguageRecord>> ReadLanguages(Compiler& compiler, const Table& configuration,
                                                         const char* what) {
  if (!Find(configuration, what)) return std::nullopt;
  std::vector<LanguageRecord> languages;
  for (const Field& element : List(compiler, configuration, what, 255)) {
    const toml::array* pair = element.node->as_array();
    if (!pair || pair->size() != 2) {
      compiler.WrongKind(element, "a list of pairs of code and name");
      continue;
    }
    const std::string code = TextOf(compiler, ElementOf(element, (*pair)[0], 0), 3),
                      name = TextOf(compiler, ElementOf(element, (*pair)[1], 1), 31);
    LanguageRecord record{};
    std::copy_n(code.begin(), std::min<size_t>(code.size(), 3), record.begin());
    std::copy_n(name.begin(), std::min<size_t>(name.size(), 31), record.begin() + 4);
    languages.push_back(record);
  }
  return languages;
}

// The partitions lie in a region of type 3, which must be there and have a name that receivers can report.
void CheckAdbRegion(Compiler& compiler, const Table& table, const ContentConfiguration& configuration) {
  const auto region = std::find_if(configuration.regions.begin(), configuration.regions.end(),
                                   [](const RegionEntry& entry) { return entry.type == kAdbRegionType; });
  const Field* regions = Find(table, "regions");
  const auto more = std::count_if(configuration.regions.begin(), configuration.regions.end(),
                                  [](const RegionEntry& entry) { return entry.type == kAdbRegionType; });
  if (more > 1) {
    compiler.Add(*regions->node, regions->path, "There are %zu regions of type 3; the partitions lie in one.",
                 static_cast<size_t>(more));
  }
  if (region == configuration.regions.end()) {
    compiler.Add(regions ? *regions->node : *table.node, Below(table.path, "regions"),
                 "There is no region of type 3, which the partitions lie in.");
  } else if (!region->name.empty() && region->name.size() != kAdbRegionName && regions &&
             regions->node->is_array()) {
    const auto place = static_cast<size_t>(region - configuration.regions.begin());
    const Field element = ElementOf(*regions, (*regions->node->as_array())[place], place);
    const toml::node* name = element.node->as_table()->get("name");
    if (!name) return;
    compiler.Add(*name, Below(element.path, "name"),
                 "Receivers show the region of type 3 by a name of %zu characters; this one has %zu.",
                 kAdbRegionName, region->name.size());
  }
}

ContentConfiguration ReadConfiguration(Compiler& compiler, const Table& table) {
  ContentConfiguration configuration;
  configuration.name = NameText(compiler, table, 127);
  const auto version = List(compiler, table, "version", 2);
  if (version.size() == 2) {
    configuration.version_a = static_cast<uint8_t>(NumberOf(compiler, version[0], 0, 255));
    configuration.version_b = static_cast<uint8_t>(NumberOf(compiler, version[1], 0, 15));
  } else if (const Field* field = Find(table, "version"); field && field->node->is_array()) {
    compiler.WrongKind(*field, "a list of two numbers");
  }
  const auto regions = List(compiler, table, "regions", 255);
  bool read = true;
  for (const Field& element : regions) {
    const auto entry = EntryOf(compiler, element, "a region", {"name", "type", "start", "end"});
    read = read && entry;
    if (entry) configuration.regions.push_back(ReadRegion(compiler, *entry, read));
  }
  if (!regions.empty()) configuration.loader = ReadLoader(compiler, table);
  configuration.partitions = ReadPartitions(compiler, table);
  if (read && table.whole && !configuration.partitions.empty())
    CheckAdbRegion(compiler, table, configuration);
  if (const Field* extra = Find(table, "extra")) HexBytes(compiler, *extra, configuration.extra.emplace());
  configuration.menu_languages = ReadLanguages(compiler, table, "menu_languages");
  configuration.audio_languages = ReadLanguages(compiler, table, "audio_languages");
  return configuration;
}

ProductTable ReadProductTable(Compiler& compiler, const Table& product, const char* what, size_t limit) {
  ProductTable table;
  for (const Field& element : List(compiler, product, what, limit))
    HexBytes(compiler, element, table.emplace_back());
  return table;
}

// A partition of the description as far as it can be judged.
struct JudgedPartition {
  uint32_t type = 0;
  int64_t room = 0;  // bytes, with its bitmap
  const toml::node* length = nullptr;
  std::string path;
  std::optional<int64_t> start;
  const toml::node* entry = nullptr;
  std::string entry_path;
};

// Nothing for an entry whose type or length was told to be wrong already.
std::optional<JudgedPartition> JudgedAt(const Field& list, const toml::node& element, size_t place) {
  const toml::table* source = element.as_table();
  const auto number = [&](const char* key) -> std::optional<int64_t> {
    return source && source->get(key) ? source->get(key)->value_exact<int64_t>() : std::nullopt;
  };
  const auto type = number("type"), length = number("length"), bits = number("bitmap_bits");
  auto start = number("start");
  if (start && (*start < 0 || *start > UINT32_MAX)) start.reset();
  const std::string path = ElementOf(list, element, place).path;
  if (!type || !length || *type < 0 || *type >= int64_t{kPartitionTypes} || *length < 0 ||
      *length > UINT32_MAX)
    return std::nullopt;
  const uint32_t bitmap = bits ? BitmapSize(static_cast<uint32_t>(*bits & 0xFF)) : 0;
  return JudgedPartition{static_cast<uint32_t>(*type),
                         *length + bitmap,
                         source->get("length"),
                         Below(path, "length"),
                         start,
                         &element,
                         path};
}

void CheckSize(Compiler& compiler, const JudgedPartition& partition, const TableSize& size, bool eeprom) {
  const int64_t least = eeprom ? size.in_eeprom : size.in_journal;
  if (partition.type != size.type || partition.room >= least) return;
  compiler.Add(*partition.length, partition.path,
               "A partition of type %u has at least %lld bytes for its table%s.", unsigned{size.type},
               static_cast<long long>(least),
               size.in_eeprom == size.in_journal ? ""
               : eeprom                          ? " in an EEPROM"
                                                 : ", a journal");
}

// Whether the partition lies in an EEPROM, whose addresses are its own.
bool LiesInEeprom(const JudgedPartition& partition, bool eeprom) {
  const auto* size = std::find_if(std::begin(kTableSizes), std::end(kTableSizes),
                                  [&](const TableSize& row) { return row.type == partition.type; });
  return eeprom && size != std::end(kTableSizes) && size->in_eeprom != size->in_journal;
}

void CheckPlaces(Compiler& compiler, const std::vector<JudgedPartition>& partitions, bool eeprom) {
  for (size_t i = 0; i < partitions.size(); ++i) {
    const JudgedPartition& later = partitions[i];
    if (!later.start) continue;
    if (*later.start + later.room > UINT32_MAX)
      compiler.Add(*later.entry, later.entry_path, "The partition ends behind the last address.");
    for (size_t j = 0; j < i; ++j) {
      const JudgedPartition& earlier = partitions[j];
      if (!earlier.start || LiesInEeprom(earlier, eeprom) != LiesInEeprom(later, eeprom)) continue;
      const int64_t first = std::max(*earlier.start, *later.start);
      if (first >= std::min(*earlier.start + earlier.room, *later.start + later.room)) continue;
      compiler.Add(*later.entry, later.entry_path,
                   "The partition overlaps the one of type %" PRIu32 " at %s.", earlier.type,
                   earlier.entry_path.c_str());
    }
  }
}

// The partitions of the image's tables fit the region that holds it, the last of type 3, and lie in it. In an
// EEPROM lie the tables whose size depends on it.
void CheckRegion(Compiler& compiler, const Field& list, size_t configuration,
                 const std::vector<JudgedPartition>& partitions, bool eeprom) {
  const auto& regions = compiler.content.configurations[configuration].regions;
  const auto region = std::find_if(regions.rbegin(), regions.rend(),
                                   [](const RegionEntry& entry) { return entry.type == kAdbRegionType; });
  if (region == regions.rend() || region->end <= region->start) return;
  const std::string name = Utf8FromLatin(region->name);
  std::vector<const JudgedPartition*> inside;
  int64_t taken = 0;
  for (const JudgedPartition& partition : partitions) {
    const bool of_a_table = std::any_of(std::begin(kTableSizes), std::end(kTableSizes),
                                        [&](const TableSize& row) { return row.type == partition.type; });
    if (!of_a_table || LiesInEeprom(partition, eeprom)) continue;
    taken += partition.room;
    inside.push_back(&partition);
  }
  const int64_t room = int64_t{region->end} - region->start;
  if (taken > room) {
    compiler.Add(*list.node, list.path, "The partitions take %lld bytes, the region \"%s\" has %lld.",
                 static_cast<long long>(taken), name.c_str(), static_cast<long long>(room));
    return;
  }
  for (const JudgedPartition* partition : inside) {
    const int64_t end = partition->start.value_or(0) + partition->room;
    // One behind the last address is told to be so.
    if (!partition->start || end > UINT32_MAX || (*partition->start >= region->start && end <= region->end))
      continue;
    compiler.Add(*partition->entry, partition->entry_path,
                 "The partition does not lie in the region \"%s\", from 0x%08" PRIX32 " to 0x%08" PRIX32 ".",
                 name.c_str(), region->start, region->end);
  }
}

// The partitions against their tables and their region, as the place among a product's configurations has
// them.
void CheckPartitions(Compiler& compiler, size_t configuration, size_t place) {
  const Field* list = Find(compiler.sources[configuration], "partitions");
  const toml::array* array = list ? list->node->as_array() : nullptr;
  if (!array || array->empty()) return;
  const bool eeprom = place == kEepromPlace;
  std::vector<JudgedPartition> partitions;
  for (size_t i = 0; i < array->size(); ++i) {
    if (auto partition = JudgedAt(*list, (*array)[i], i)) partitions.push_back(std::move(*partition));
  }
  for (const TableSize& size : kTableSizes) {
    for (const JudgedPartition& partition : partitions) CheckSize(compiler, partition, size, eeprom);
    const auto holds = [&](const JudgedPartition& partition) { return partition.type == size.type; };
    if (partitions.size() == array->size() && std::none_of(partitions.begin(), partitions.end(), holds))
      compiler.Add(*list->node, list->path, "There is no partition of type %u.", unsigned{size.type});
  }
  CheckPlaces(compiler, partitions, eeprom);
  CheckRegion(compiler, *list, configuration, partitions, eeprom);
}

// A product's list of configurations and a manufacturer's of products tell them apart by their names.
// `places` are the list's, as References gives them.
void ExpectOnce(Compiler& compiler, const Table& table, const char* what, const char* kind,
                std::vector<size_t>& places) {
  const Field* list = Find(table, what);
  const toml::array* elements = list ? list->node->as_array() : nullptr;
  std::set<size_t> seen;
  for (size_t i = 0; elements && i < places.size(); ++i) {
    if (places[i] == kUnread || seen.insert(places[i]).second) continue;
    const Field element = ElementOf(*list, (*elements)[i], i);
    compiler.Add(*element.node, element.path, "The %s \"%s\" stands twice in the list.", kind,
                 element.node->value_exact<std::string>()->c_str());
    places[i] = kUnread;
  }
}

ContentProduct ReadProduct(Compiler& compiler, const Table& table) {
  ContentProduct product;
  product.name = Text(compiler, table, "name", 32);
  product.byte = Byte(compiler, table, "byte", 0);
  product.variant = Byte(compiler, table, "variant", 0);
  product.configurations =
      References(compiler, table, "configurations", "configuration", compiler.configurations, 255);
  ExpectOnce(compiler, table, "configurations", "configuration", product.configurations);
  product.table = ReadProductTable(compiler, table, "table", 255);
  const size_t left = 255 - std::min<size_t>(product.table.size(), 255);
  product.second_table = ReadProductTable(compiler, table, "second_table", left);
  return product;
}

// The tables under `kind` by their keys; what is none of them is an error, and nullptr.
std::vector<std::pair<std::string, const toml::table*>> TablesOf(Compiler& compiler, const Table& root,
                                                                 const char* kind) {
  std::vector<std::pair<std::string, const toml::table*>> tables;
  const Field* field = Find(root, kind);
  if (!field) return tables;
  const toml::table* all = field->node->as_table();
  if (!all) {
    compiler.WrongKind(*field, "tables by their keys");
    return tables;
  }
  for (auto&& [key, node] : *all) {
    const std::string name(key.str());
    tables.emplace_back(name, node.as_table());
    if (!tables.back().second) compiler.WrongKind({&node, Below(kind, name), name}, "a table");
  }
  return tables;
}

void ReadConfigurations(Compiler& compiler, const Table& root) {
  for (const auto& [key, source] : TablesOf(compiler, root, "configuration")) {
    compiler.configurations.emplace(key, source ? compiler.content.configurations.size() : kUnread);
    if (!source) continue;
    const Table table = Resolve(compiler, "configuration", key, *source,
                                {"parent", "name", "version", "loader", "regions", "partitions", "extra",
                                 "menu_languages", "audio_languages"});
    compiler.content.configurations.push_back(ReadConfiguration(compiler, table));
    compiler.sources.push_back(table);
  }
}

// Judges partitions as well: what they must hold depends on the configuration's place in a product.
void ReadProducts(Compiler& compiler, const Table& root) {
  std::set<size_t> used;
  for (const auto& [key, source] : TablesOf(compiler, root, "product")) {
    compiler.products.emplace(key, source ? compiler.content.products.size() : kUnread);
    if (!source) continue;
    const Table table =
        Resolve(compiler, "product", key, *source,
                {"parent", "name", "byte", "variant", "configurations", "table", "second_table"});
    compiler.content.products.push_back(ReadProduct(compiler, table));
    const auto& places = compiler.content.products.back().configurations;
    used.insert(places.begin(), places.end());
    for (size_t i = 0; i < places.size(); ++i) {
      if (places[i] != kUnread) CheckPartitions(compiler, places[i], i);
    }
  }
  // A configuration that no product refers to needs the smaller tables only, as for an EEPROM.
  for (size_t i = 0; i < compiler.sources.size(); ++i) {
    if (!used.contains(i)) CheckPartitions(compiler, i, kEepromPlace);
  }
}

void ReadManufacturers(Compiler& compiler, const Table& root) {
  std::set<uint8_t> ids;
  Required(compiler, root, "manufacturer");
  for (const Field& element : List(compiler, root, "manufacturer", 65535)) {
    const auto table = EntryOf(compiler, element, "a manufacturer", {"id", "products"});
    if (!table) continue;
    ContentManufacturer manufacturer;
    const size_t faults = compiler.faults.size();
    manufacturer.id = Byte(compiler, *table, "id");
    const bool read = compiler.faults.size() == faults;
    if (const Field* id = Find(*table, "id"); id && read && !ids.insert(manufacturer.id).second)
      compiler.Add(*id->node, id->path, "There are two manufacturers of id 0x%02X.",
                   unsigned{manufacturer.id});
    manufacturer.products = References(compiler, *table, "products", "product", compiler.products, 65535);
    ExpectOnce(compiler, *table, "products", "product", manufacturer.products);
    compiler.content.manufacturers.push_back(std::move(manufacturer));
  }
}

void ReadAll(Compiler& compiler) {
  Table root{{}, compiler.root, "", "the file", true};
  AddFields(compiler, *compiler.root, "", {"manufacturer", "product", "configuration"}, root);
  ReadConfigurations(compiler, root);
  ReadProducts(compiler, root);
  ReadManufacturers(compiler, root);
}

// Behind the quoted text that begins at `at`, or at the end of what ends too early.
size_t BehindQuotes(std::string_view text, size_t at) {
  const char quote = text[at];
  const std::string three(3, quote);
  const std::string_view mark =
      text.substr(at).starts_with(three) ? std::string_view(three) : text.substr(at, 1);
  for (at += mark.size(); at < text.size(); ++at) {
    if (text.substr(at).starts_with(mark)) return at + mark.size();
    if (text[at] == '\\' && quote == '"') ++at;
    if (mark.size() == 1 && at < text.size() && text[at] == '\n') break;
  }
  return std::min(at, text.size());
}

// The place of a key with too many parts, which the library would work through by recursion; none: npos.
size_t EndlessKey(std::string_view text) {
  unsigned parts = 1;
  for (size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"' || c == '\'') {
      at = BehindQuotes(text, at);
      continue;
    }
    const bool in_key = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                        c == '_' || c == '-' || c == ' ' || c == '\t';
    if (c == '.' && ++parts > kMostKeyParts) return at;
    if (c != '.' && !in_key) parts = 1;
    at = c == '#' ? std::min(text.find('\n', at), text.size()) : at + 1;
  }
  return text.npos;
}

// False after a message.
bool ExpectShortKeys(const Context& context, const std::string& name, std::string_view text) {
  const size_t place = EndlessKey(text);
  if (place == text.npos) return true;
  const std::string_view before = text.substr(0, place);
  const std::string_view in_line = before.substr(before.rfind('\n') + 1);
  const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  Tell(context.messages, Icon::kStop, "%s(%u,%u): A key has at most %u parts.", name.c_str(),
       static_cast<unsigned>(std::count(before.begin(), before.end(), '\n')) + 1,
       static_cast<unsigned>(std::count_if(in_line.begin(), in_line.end(), begins)) + 1, kMostKeyParts);
  return false;
}

}  // namespace

std::optional<Bytes> CompileEcfText(const Context& context, const std::string& name, std::string_view text) {
  if (!ExpectShortKeys(context, name, text)) return std::nullopt;
  const toml::parse_result parsed = toml::parse(text);
  if (!parsed) {
    const std::string reason(parsed.error().description());
    const auto& begin = parsed.error().source().begin;
    Tell(context.messages, Icon::kStop, "%s(%u,%u): %s", name.c_str(), unsigned{begin.line},
         unsigned{begin.column}, reason.c_str());
    return std::nullopt;
  }
  Compiler compiler;
  compiler.root = &parsed.table();
  ReadAll(compiler);
  for (const Fault& fault : compiler.faults) {
    Tell(context.messages, Icon::kStop, "%s(%u,%u): %s: %s", name.c_str(), fault.line, fault.column,
         fault.path.c_str(), fault.text.c_str());
  }
  if (!compiler.faults.empty()) return std::nullopt;
  auto bytes = WriteEcf(compiler.content);
  if (!bytes) {
    Tell(context.messages, Icon::kStop, "%s: The file would be larger than %u MiB.", name.c_str(),
         static_cast<unsigned>(kMaximumEcfSize >> 20));
  }
  return bytes;
}

std::optional<Bytes> CompileEcf(const Context& context, const Path& toml) {
  const std::string name = Utf8FromPath(toml);
  Bytes content;
  const ReadResult read = ReadWholeFile(toml, content, kMaximumEcfSize);
  if (read != ReadResult::kDone) {
    TellWhy(context.messages, Icon::kStop, ReadReason(toml, read.error), "Can't open file %s", name.c_str());
    return std::nullopt;
  }
  return CompileEcfText(context, name, {reinterpret_cast<const char*>(content.data()), content.size()});
}

}  // namespace vexa
