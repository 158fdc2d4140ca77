#include "config/ecf.h"

#include <algorithm>
#include <functional>
#include <new>

#include "core/bytes.h"

namespace vexa {

namespace {

constexpr size_t kHeaderSize = 24;
constexpr size_t kRegionSize = 96;
constexpr size_t kPartitionEntrySize = 16;
constexpr size_t kTableHeaderSize = 8;

struct EcfHeader {
  uint16_t manufacturers = 0;
};

struct ManufacturerBlock {
  uint8_t id = 0;
  uint16_t products = 0;
  uint32_t next = 0;
};

struct ProductEntry {
  uint8_t byte = 0;
  std::string name;
  uint8_t configurations = 0, variant = 0, table_count = 0, second_count = 0;
  uint32_t next = 0;
};

struct ConfigurationEntry {
  std::string name;
  uint8_t version_a = 0, version_b = 0;
  uint8_t extra = 0, partitions = 0, images = 0, languages = 0;
  uint32_t next = 0;
};

// One walk through the file, which stops at damage or where it was told to.
struct Walk {
  enum State { kGoing, kDamaged, kStopped };

  explicit Walk(std::span<const uint8_t> file) : reader(file) {}
  ByteReader reader;
  State state = kGoing;

  bool Going() {
    if (!reader.ok() && state == kGoing) state = kDamaged;
    return state == kGoing;
  }
  void MoveTo(uint64_t position) {
    if (position < reader.position() || position > reader.size()) {
      state = kDamaged;
    } else {
      reader.Seek(static_cast<size_t>(position));
    }
  }
  std::span<const uint8_t> Take(size_t size) {
    const auto part = reader.Take(size);
    Going();
    return part;
  }
  // The count in a block header.
  uint8_t BlockCount() {
    const auto header = Take(16);
    return header.empty() ? uint8_t{0} : header[9];
  }
};

// Called with each header on the way. What is below a manufacturer or product is passed over when the answer
// is false or the function is empty.
struct Visitor {
  std::function<bool(size_t index, const ManufacturerBlock&)> manufacturer;
  std::function<bool(size_t index, const ProductEntry&)> product;
  // Called with the reader at the configuration's blocks.
  std::function<void(size_t index, const ConfigurationEntry&, Walk&)> configuration;
  std::function<void(const ProductEntry&, Walk&)> product_end;
};

std::string TextOf(std::span<const uint8_t> field) {
  return {field.begin(), std::find(field.begin(), field.end(), uint8_t{0})};
}

uint32_t WordAt(std::span<const uint8_t> bytes, size_t offset) {
  return ByteReader(bytes.subspan(offset, 4)).U32();
}

uint16_t HalfAt(std::span<const uint8_t> bytes, size_t offset) {
  return ByteReader(bytes.subspan(offset, 2)).U16();
}

void WalkConfigurations(Walk& walk, const ProductEntry& product, const Visitor& visitor) {
  uint32_t next = 0;
  for (size_t k = 0; k < product.configurations; ++k) {
    if (k > 0) walk.MoveTo(next);
    if (!walk.Going()) return;
    const auto bytes = walk.Take(148);
    if (!walk.Going()) return;
    ConfigurationEntry header;
    header.name = TextOf(bytes.first(128));
    header.version_a = bytes[128];
    header.version_b = bytes[129];
    header.extra = bytes[132];
    header.partitions = bytes[133];
    header.images = bytes[134];
    header.languages = bytes[135];
    next = header.next = WordAt(bytes, 144);
    if (visitor.configuration) visitor.configuration(k, header, walk);
    if (!walk.Going()) return;
  }
}

void WalkProducts(Walk& walk, const ManufacturerBlock& manufacturer, const Visitor& visitor) {
  uint32_t next = 0;
  for (size_t j = 0; j < manufacturer.products; ++j) {
    if (j > 0) walk.MoveTo(next);
    if (!walk.Going()) return;
    const auto bytes = walk.Take(48);
    if (!walk.Going()) return;
    ProductEntry header;
    header.byte = bytes[3];
    header.name = TextOf(bytes.subspan(4, 33));
    header.configurations = bytes[37];
    header.variant = bytes[38];
    header.table_count = bytes[39];
    header.second_count = bytes[42];
    next = header.next = WordAt(bytes, 44);
    if (!visitor.product || !visitor.product(j, header)) continue;
    WalkConfigurations(walk, header, visitor);
    if (walk.Going() && visitor.product_end) visitor.product_end(header, walk);
    if (!walk.Going()) return;
  }
}

// `file` begins with the magic.
Walk WalkFile(std::span<const uint8_t> file, const Visitor& visitor) {
  Walk walk(file);
  const auto header_bytes = walk.Take(kHeaderSize);
  if (!walk.Going()) return walk;
  const EcfHeader file_header{HalfAt(header_bytes, 14)};
  uint32_t next = kHeaderSize;
  for (size_t i = 0; i < file_header.manufacturers; ++i) {
    walk.MoveTo(next);
    if (!walk.Going()) return walk;
    const auto bytes = walk.Take(8);
    if (!walk.Going()) return walk;
    const ManufacturerBlock header{bytes[0], HalfAt(bytes, 2), WordAt(bytes, 4)};
    next = header.next;
    if (visitor.manufacturer(i, header)) WalkProducts(walk, header, visitor);
    if (!walk.Going()) return walk;
  }
  return walk;
}

constexpr const char* kNoConfigurationFile = "It is no configuration file: choose another one.";

// Where a walk ended that found the file damaged, and what to do then.
std::string Damage(const Walk& walk) {
  return Format("Damaged at byte %zu: use another copy of the file.", walk.reader.position());
}

bool HasMagic(std::span<const uint8_t> file) {
  return file.size() >= 2 && file[0] == 'Q' && file[1] == 'x';
}

void ReadImages(Walk& walk, ProjectConfig& config) {
  const size_t count = walk.BlockCount();
  for (size_t i = 0; i < count && walk.Going(); ++i) {
    const auto bytes = walk.Take(kRegionSize);
    if (!walk.Going()) return;
    config.regions.push_back({TextOf(bytes.first(50)), bytes[50], WordAt(bytes, 52), WordAt(bytes, 56)});
  }
  if (count == 0 || !walk.Going()) return;
  const auto bytes = walk.Take(8);
  if (!walk.Going()) return;
  config.loader = {bytes[0], bytes[2], HalfAt(bytes, 4), HalfAt(bytes, 6)};
}

void ReadPartitions(Walk& walk, ProjectConfig& config) {
  const size_t count = walk.BlockCount();
  for (size_t i = 0; i < count && walk.Going(); ++i) {
    const auto bytes = walk.Take(kPartitionEntrySize);
    if (!walk.Going()) return;
    if (config.partitions.size() == kMaximumPartitions) continue;
    PartitionEntry partition;
    partition.type = bytes[0];
    partition.number = static_cast<uint8_t>(bytes[1] + 1);
    partition.start = WordAt(bytes, 8);
    partition.end = partition.start + WordAt(bytes, 12);
    if (bytes[2] != 0) partition.end += BitmapSize(bytes[3]);
    config.partitions.push_back(partition);
  }
  // The configuration's own count says how many enter the table, not the block's.
  const size_t used = std::min<size_t>(config.partition_count, config.partitions.size());
  for (size_t i = 0; i < used; ++i) {
    const PartitionEntry& partition = config.partitions[i];
    if (partition.type < kPartitionTypes)
      config.partition_sizes[partition.type] = partition.end - partition.start;
  }
  config.partitions_loaded = true;
}

// False when the block has another name.
bool ReadLanguages(Walk& walk, ProjectConfig& config) {
  const auto header = walk.Take(8);
  if (!walk.Going()) return true;
  if (header[0] != 'L' || header[1] != 'G' || header[2] != 0) return false;
  LanguageBlock list;
  std::copy_n(header.begin(), 8, list.header.begin());
  for (size_t i = 0; i < header[3] && walk.Going(); ++i) {
    LanguageRecord record{};
    if (walk.reader.Read(record)) list.records.push_back(record);
  }
  (header[4] != 0 ? config.first_languages : config.second_languages) = std::move(list);
  return true;
}

// False when a language block has another name.
bool ReadConfiguration(Walk& walk, const ConfigurationEntry& header, ProjectConfig& config) {
  config.configuration_found = true;
  config.configuration_name = header.name;
  config.version_a = header.version_a;
  config.version_b = header.version_b;
  config.partition_count = header.partitions;
  config.image_entry_count = header.images;
  if (header.images != 0) ReadImages(walk, config);
  if (header.partitions != 0 && walk.Going()) ReadPartitions(walk, config);
  if (header.extra != 0 && walk.Going()) {
    walk.BlockCount();
    walk.reader.Read(config.extra);
  }
  for (size_t i = 0; i < header.languages && walk.Going(); ++i) {
    if (!ReadLanguages(walk, config)) return false;
  }
  return true;
}

void ReadProductTable(Walk& walk, const ProductEntry& product, ProjectConfig& config) {
  const size_t total = product.table_count, second = product.second_count;
  if (total == 0) return;
  const uint64_t size =
      total * sizeof(ProductTableRecord) + kTableHeaderSize + (second != 0 ? kTableHeaderSize : 0);
  if (second > total || product.next < size) {
    walk.state = Walk::kDamaged;
    return;
  }
  walk.MoveTo(product.next - size);
  for (size_t i = 0; i < total && walk.Going(); ++i) {
    if (i == 0) walk.reader.Skip(kTableHeaderSize);
    if (i == total - second) walk.reader.Skip(kTableHeaderSize);
    ProductTableRecord record{};
    if (walk.reader.Read(record)) config.product_table.push_back(record);
  }
}

// The user's own choices; nothing of the file.
ProjectConfig WithoutLoaded(const ProjectConfig& config) {
  ProjectConfig fresh = config;
  const ProjectConfig empty;
  fresh.manufacturer_id = empty.manufacturer_id;
  fresh.version_a = fresh.version_b = 0;
  fresh.partition_count = fresh.image_entry_count = 0;
  fresh.product_byte = fresh.database_variant = fresh.product_table_count = 0;
  fresh.product_name.clear();
  fresh.configuration_name.clear();
  fresh.regions.clear();
  fresh.loader = {};
  fresh.partitions.clear();
  fresh.partition_sizes = {};
  fresh.extra = {};
  fresh.first_languages = {};
  fresh.second_languages = {};
  fresh.product_table.clear();
  fresh.partitions_loaded = fresh.configuration_found = false;
  return fresh;
}

void ReadListEntry(const ConfigurationEntry& header, Walk& walk, EcfProduct& product) {
  EcfConfiguration configuration;
  configuration.name = header.name;
  configuration.has_images = header.images != 0;
  configuration.has_partitions = header.partitions != 0;
  configuration.has_extra = header.extra != 0;
  const size_t count = header.images != 0 ? walk.BlockCount() : 0;
  for (size_t i = 0; i < count && walk.Going(); ++i) {
    const auto bytes = walk.Take(kRegionSize);
    if (walk.Going()) configuration.region_names.push_back(TextOf(bytes.first(50)));
  }
  product.configurations.push_back(std::move(configuration));
}

bool LoadConfig(const Context& caller, const Path& ecf, ProjectConfig& config) {
  Bytes file;
  const ReadResult read = ReadWholeFile(ecf, file, kMaximumEcfSize);
  if (read != ReadResult::kDone) {
    TellWhy(caller.messages, Icon::kStop, ReadReason(ecf, read.error), "File access error - UpdateConfig");
    return false;
  }
  const Context context = About(caller, Utf8FromPath(ecf));
  if (!HasMagic(file)) {
    TellWhy(context.messages, Icon::kStop, kNoConfigurationFile, "Magic Id mismatch - InitConfig");
    return false;
  }
  ProjectConfig loaded = WithoutLoaded(config);
  Visitor visitor;
  visitor.manufacturer = [&](size_t index, const ManufacturerBlock& header) {
    if (index != config.manufacturer_index) return false;
    loaded.manufacturer_id = header.id;
    return true;
  };
  visitor.product = [&](size_t index, const ProductEntry& header) {
    if (index != config.product_index) return false;
    loaded.product_byte = header.byte;
    loaded.product_name = header.name;
    loaded.database_variant = header.variant;
    loaded.product_table_count = header.table_count;
    return true;
  };
  visitor.configuration = [&](size_t index, const ConfigurationEntry& header, Walk& walk) {
    if (index != config.configuration_index || ReadConfiguration(walk, header, loaded)) return;
    TellWhy(context.messages, Icon::kStop, Damage(walk), "Language block name mismatch - InitConfig");
    walk.state = Walk::kStopped;
  };
  visitor.product_end = [&](const ProductEntry& header, Walk& walk) {
    ReadProductTable(walk, header, loaded);
  };
  const Walk walk = WalkFile(file, visitor);
  if (walk.state == Walk::kDamaged)
    TellWhy(context.messages, Icon::kStop, Damage(walk), "Invalid Configuration file.");
  if (walk.state != Walk::kGoing) return false;
  config = std::move(loaded);
  return true;
}

}  // namespace

bool InitConfig(const Context& context, const Path& ecf, ProjectConfig& config) {
  try {
    return LoadConfig(context, ecf, config);
  } catch (const std::bad_alloc&) {
    TellWhy(context.messages, Icon::kStop,
            Utf8FromPath(ecf) + ": No memory is left for it. Close other programs and try again.",
            "malloc failed - InitConfig");
    return false;
  }
}

std::optional<EcfTree> ReadEcfTree(const Context& caller, const Path& ecf) {
  Bytes file;
  const ReadResult read = ReadWholeFile(ecf, file, kMaximumEcfSize);
  if (read != ReadResult::kDone) {
    TellWhy(caller.messages, Icon::kStop, ReadReason(ecf, read.error),
            "File access error - AddConfigurationListToComboBox");
    return std::nullopt;
  }
  const Context context = About(caller, Utf8FromPath(ecf));
  if (!HasMagic(file)) {
    TellWhy(context.messages, Icon::kStop, kNoConfigurationFile,
            "Config magic id mismatch - AddConfigurationListToComboBox");
    return std::nullopt;
  }
  EcfTree tree;
  Visitor visitor;
  visitor.manufacturer = [&](size_t, const ManufacturerBlock& header) {
    tree.manufacturers.push_back({header.id, {}});
    return true;
  };
  visitor.product = [&](size_t, const ProductEntry& header) {
    tree.manufacturers.back().products.push_back({header.name, header.variant, {}});
    return true;
  };
  visitor.configuration = [&](size_t, const ConfigurationEntry& header, Walk& walk) {
    ReadListEntry(header, walk, tree.manufacturers.back().products.back());
  };
  if (const Walk walk = WalkFile(file, visitor); walk.state != Walk::kGoing) {
    TellWhy(context.messages, Icon::kStop, Damage(walk), "Invalid Configuration file.");
    return std::nullopt;
  }
  return tree;
}

const EcfConfiguration* FindConfiguration(const EcfTree& tree, size_t manufacturer, size_t product,
                                          size_t configuration) {
  if (manufacturer >= tree.manufacturers.size()) return nullptr;
  const auto& products = tree.manufacturers[manufacturer].products;
  if (product >= products.size() || configuration >= products[product].configurations.size()) return nullptr;
  return &products[product].configurations[configuration];
}

bool IsConfigurationAvailable(const Context& context, const Path& ecf, uint8_t product_index,
                              Facilities needs) {
  const auto file = ReadWholeFile(ecf, kMaximumEcfSize);
  if (!file) return false;
  if (!HasMagic(*file)) {
    TellWhy(context.messages, Icon::kStop, Utf8FromPath(ecf) + ": " + kNoConfigurationFile,
            "Config magic id mismatch - AddConfigurationListToComboBox");
    return false;
  }
  bool found = false;
  Visitor visitor;
  visitor.manufacturer = [](size_t, const ManufacturerBlock&) { return true; };
  visitor.product = [&](size_t index, const ProductEntry&) { return index == product_index; };
  visitor.configuration = [&](size_t, const ConfigurationEntry& header, Walk& walk) {
    if (needs.images && header.images == 0) return;
    if (needs.partitions && header.partitions == 0) return;
    if (needs.extra && header.extra == 0) return;
    found = true;
    walk.state = Walk::kStopped;
  };
  WalkFile(*file, visitor);
  return found;
}

bool IsEcfFile(const Path& ecf) {
  const auto file = ReadWholeFile(ecf, kMaximumEcfSize);
  return file && HasMagic(*file);
}

uint32_t BitmapSize(uint32_t bits) {
  const uint32_t bytes = (bits + 7) / 8;
  return bytes - bytes % 4 + 4;
}

std::string LanguageName(const LanguageRecord& record) {
  return TextOf(std::span(record).subspan(4));
}

std::string LanguageCode(const LanguageRecord& record) {
  return TextOf(std::span(record).first(4));
}

}  // namespace vexa
