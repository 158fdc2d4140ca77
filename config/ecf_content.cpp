#include "config/ecf_content.h"

#include <algorithm>
#include <map>

#include "config/ecf.h"

namespace vexa {

namespace {

void WriteBlockHeader(ByteWriter& writer, size_t count) {
  writer.Fill(9, 0);
  writer.U8(static_cast<uint32_t>(count));
  writer.Fill(6, 0);
}

void WriteImages(ByteWriter& writer, const ContentConfiguration& configuration) {
  WriteBlockHeader(writer, configuration.regions.size());
  for (const RegionEntry& region : configuration.regions) {
    writer.Text(region.name, 50);
    writer.U16(region.type);
    writer.U32(region.start);
    writer.U32(region.end);
    writer.Fill(36, 0);
  }
  writer.U16(configuration.loader.header_tag);
  writer.U16(configuration.loader.packet_tag);
  writer.U16(configuration.loader.block_kib);
  writer.U16(configuration.loader.packet_size);
}

void WritePartitions(ByteWriter& writer, const std::vector<ContentPartition>& partitions) {
  WriteBlockHeader(writer, partitions.size());
  for (const ContentPartition& partition : partitions) {
    writer.U8(partition.type);
    writer.U8((partition.number - 1u) & 0xFF);
    writer.U8(partition.bitmap_bits.has_value());
    writer.U8(partition.bitmap_bits.value_or(0));
    writer.U32(0);
    writer.U32(partition.start);
    writer.U32(partition.length);
  }
}

void WriteLanguages(ByteWriter& writer, const std::vector<LanguageRecord>& languages, bool first) {
  writer.Text("LG", 3);
  writer.U8(static_cast<uint32_t>(languages.size()));
  writer.U32(first);
  for (const LanguageRecord& record : languages) writer.Append(record);
}

void WriteConfiguration(ByteWriter& writer, const ContentConfiguration& configuration) {
  writer.Text(configuration.name, 128);
  writer.U8(configuration.version_a);
  writer.U8(configuration.version_b);
  writer.U16(0);
  writer.U8(configuration.extra.has_value());
  writer.U8(static_cast<uint32_t>(configuration.partitions.size()));
  writer.U8(static_cast<uint32_t>(configuration.regions.size()));
  writer.U8(configuration.menu_languages.has_value() + configuration.audio_languages.has_value());
  writer.Fill(8, 0);
  const size_t next = writer.size();
  writer.U32(0);
  if (!configuration.regions.empty()) WriteImages(writer, configuration);
  if (!configuration.partitions.empty()) WritePartitions(writer, configuration.partitions);
  if (configuration.extra) {
    WriteBlockHeader(writer, 1);
    writer.Append(*configuration.extra);
  }
  if (configuration.menu_languages) WriteLanguages(writer, *configuration.menu_languages, true);
  if (configuration.audio_languages) WriteLanguages(writer, *configuration.audio_languages, false);
  writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
}

void WriteTableGroup(ByteWriter& writer, const ProductTable& group) {
  writer.Fill(8, 0);
  for (const ProductTableRecord& record : group) writer.Append(record);
}

void WriteProduct(ByteWriter& writer, const EcfContent& content, const ContentProduct& product) {
  const size_t records = product.table.size() + product.second_table.size();
  writer.Fill(3, 0);
  writer.U8(product.byte);
  writer.Text(product.name, 33);
  writer.U8(static_cast<uint32_t>(product.configurations.size()));
  writer.U8(product.variant);
  writer.U8(static_cast<uint32_t>(records));
  writer.U16(0);
  writer.U8(static_cast<uint32_t>(product.second_table.size()));
  writer.U8(0);
  const size_t next = writer.size();
  writer.U32(0);
  for (const size_t place : product.configurations) WriteConfiguration(writer, content.configurations[place]);
  if (records > 0) WriteTableGroup(writer, product.table);
  if (!product.second_table.empty()) WriteTableGroup(writer, product.second_table);
  writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
}

std::string TakeText(ByteReader& reader, size_t size) {
  const auto field = reader.Take(size);
  return {field.begin(), std::find(field.begin(), field.end(), uint8_t{0})};
}

size_t TakeBlockCount(ByteReader& reader) {
  const auto header = reader.Take(16);
  return header.empty() ? 0 : header[9];
}

void ReadImages(ByteReader& reader, ContentConfiguration& configuration) {
  const size_t count = TakeBlockCount(reader);
  for (size_t i = 0; i < count && reader.ok(); ++i) {
    RegionEntry region;
    region.name = TakeText(reader, 50);
    region.type = static_cast<uint8_t>(reader.U16());
    region.start = reader.U32();
    region.end = reader.U32();
    reader.Skip(36);
    configuration.regions.push_back(std::move(region));
  }
  if (count == 0) return;
  configuration.loader.header_tag = static_cast<uint8_t>(reader.U16());
  configuration.loader.packet_tag = static_cast<uint8_t>(reader.U16());
  configuration.loader.block_kib = reader.U16();
  configuration.loader.packet_size = reader.U16();
}

void ReadPartitions(ByteReader& reader, ContentConfiguration& configuration) {
  const size_t count = TakeBlockCount(reader);
  for (size_t i = 0; i < count && reader.ok(); ++i) {
    ContentPartition partition;
    partition.type = reader.U8();
    partition.number = static_cast<uint8_t>(reader.U8() + 1);
    const bool has_bitmap = reader.U8() != 0;
    const uint8_t bits = reader.U8();
    if (has_bitmap) partition.bitmap_bits = bits;
    reader.Skip(4);
    partition.start = reader.U32();
    partition.length = reader.U32();
    configuration.partitions.push_back(partition);
  }
}

void ReadLanguages(ByteReader& reader, ContentConfiguration& configuration) {
  const auto header = reader.Take(8);
  if (header.empty()) return;
  std::vector<LanguageRecord> records;
  for (size_t i = 0; i < header[3] && reader.ok(); ++i) reader.Read(records.emplace_back());
  (header[4] != 0 ? configuration.menu_languages : configuration.audio_languages) = std::move(records);
}

ContentConfiguration ReadConfiguration(ByteReader& reader) {
  ContentConfiguration configuration;
  configuration.name = TakeText(reader, 128);
  configuration.version_a = reader.U8();
  configuration.version_b = reader.U8();
  reader.Skip(2);
  const bool extra = reader.U8() != 0, partitions = reader.U8() != 0, images = reader.U8() != 0;
  const uint8_t languages = reader.U8();
  reader.Skip(12);
  if (images) ReadImages(reader, configuration);
  if (partitions) ReadPartitions(reader, configuration);
  if (extra) {
    TakeBlockCount(reader);
    reader.Read(configuration.extra.emplace());
  }
  for (size_t i = 0; i < languages && reader.ok(); ++i) ReadLanguages(reader, configuration);
  return configuration;
}

ProductTable ReadTableGroup(ByteReader& reader, size_t count) {
  ProductTable group;
  reader.Skip(8);
  for (size_t i = 0; i < count && reader.ok(); ++i) reader.Read(group.emplace_back());
  return group;
}

// Values by the bytes that they are written as, once for each `copy` of it.
template <class Value>
class Pool {
 public:
  explicit Pool(std::vector<Value>& values) : values_(values) {}
  size_t PlaceOf(Value value, const Bytes& written, size_t copy) {
    const auto [known, is_new] = places_.emplace(std::pair(written, copy), values_.size());
    if (is_new) values_.push_back(std::move(value));
    return known->second;
  }

 private:
  std::vector<Value>& values_;
  std::map<std::pair<Bytes, size_t>, size_t> places_;
};

}  // namespace

std::optional<Bytes> WriteEcf(const EcfContent& content) {
  ByteWriter writer;
  writer.Text("Qx", 14);
  writer.U16(static_cast<uint32_t>(content.manufacturers.size()));
  writer.Fill(8, 0);
  for (const ContentManufacturer& manufacturer : content.manufacturers) {
    writer.U16(manufacturer.id);
    writer.U16(static_cast<uint32_t>(manufacturer.products.size()));
    const size_t next = writer.size();
    writer.U32(0);
    for (const size_t place : manufacturer.products) {
      WriteProduct(writer, content, content.products[place]);
      if (writer.size() > kMaximumEcfSize) return std::nullopt;
    }
    writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
  }
  return std::move(writer.bytes());
}

EcfContent ReadEcfContent(std::span<const uint8_t> file) {
  EcfContent content;
  Pool<ContentConfiguration> configurations(content.configurations);
  Pool<ContentProduct> products(content.products);
  ByteReader reader(file);
  reader.Skip(14);
  const size_t manufacturers = reader.U16();
  reader.Skip(8);
  for (size_t i = 0; i < manufacturers && reader.ok(); ++i) {
    ContentManufacturer manufacturer{static_cast<uint8_t>(reader.U16()), {}};
    const size_t count = reader.U16();
    reader.Skip(4);
    std::map<Bytes, size_t> seen_products;  // a manufacturer refers to each product once
    for (size_t j = 0; j < count && reader.ok(); ++j) {
      ContentProduct product;
      reader.Skip(3);
      product.byte = reader.U8();
      product.name = TakeText(reader, 33);
      const size_t configuration_count = reader.U8();
      product.variant = reader.U8();
      const size_t total = reader.U8();
      reader.Skip(2);
      const size_t second = reader.U8();
      reader.Skip(5);
      std::map<Bytes, size_t> seen;  // a product refers to each configuration once
      for (size_t k = 0; k < configuration_count && reader.ok(); ++k) {
        ContentConfiguration configuration = ReadConfiguration(reader);
        ByteWriter written;
        WriteConfiguration(written, configuration);
        const size_t copy = seen[written.bytes()]++;
        product.configurations.push_back(
            configurations.PlaceOf(std::move(configuration), written.bytes(), copy));
      }
      if (total > 0) product.table = ReadTableGroup(reader, total - std::min(second, total));
      if (second > 0) product.second_table = ReadTableGroup(reader, second);
      ByteWriter written;
      WriteProduct(written, content, product);
      const size_t copy = seen_products[written.bytes()]++;
      manufacturer.products.push_back(products.PlaceOf(std::move(product), written.bytes(), copy));
    }
    content.manufacturers.push_back(std::move(manufacturer));
  }
  return content;
}

}  // namespace vexa
