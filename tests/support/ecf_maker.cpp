#include "tests/support/ecf_maker.h"

#include "core/messages.h"

namespace vexa {

namespace {

constexpr uint8_t kUnread = 0xEE;  // in every byte that no reader may use

void PutBlockHeader(ByteWriter& writer, size_t count) {
  writer.Fill(9, kUnread);
  writer.U8(static_cast<uint32_t>(count));
  writer.Fill(6, kUnread);
}

void PutConfiguration(ByteWriter& writer, const EcfConfigurationSpec& spec) {
  const int images = spec.image_flag >= 0 ? spec.image_flag : static_cast<int>(spec.regions.size());
  const int partitions =
      spec.partition_flag >= 0 ? spec.partition_flag : static_cast<int>(spec.partitions.size());
  writer.Text(spec.name, 128);
  writer.U8(spec.version_a);
  writer.U8(spec.version_b);
  writer.Fill(2, kUnread);
  writer.U8(spec.extra_flag);
  writer.U8(static_cast<uint32_t>(partitions));
  writer.U8(static_cast<uint32_t>(images));
  writer.U8(static_cast<uint32_t>(spec.languages.size()));
  writer.Fill(8, kUnread);
  const size_t next = writer.size();
  writer.U32(0);
  if (images != 0) {
    PutBlockHeader(writer, spec.regions.size());
    for (const EcfRegionSpec& region : spec.regions) {
      writer.Text(region.name, 50);
      writer.U8(region.type);
      writer.U8(kUnread);
      writer.U32(region.start);
      writer.U32(region.end);
      writer.Fill(36, kUnread);
    }
    if (!spec.regions.empty()) writer.Append(spec.loader);
  }
  if (partitions != 0) {
    PutBlockHeader(writer, spec.partitions.size());
    for (const EcfPartitionSpec& partition : spec.partitions) {
      for (const uint8_t byte :
           {partition.type, partition.number_less_one, partition.has_bitmap, partition.bits}) {
        writer.U8(byte);
      }
      writer.Fill(4, kUnread);
      writer.U32(partition.start);
      writer.U32(partition.length);
    }
  }
  if (spec.extra_flag != 0) {
    PutBlockHeader(writer, kUnread);
    for (uint8_t i = 1; i <= 8; ++i) writer.U8(i);
  }
  for (const EcfLanguageSpec& language : spec.languages) {
    writer.Text(language.name, 3);
    writer.U8(static_cast<uint32_t>(language.fills.size()));
    writer.U8(language.list);
    writer.Fill(3, kUnread);
    for (const uint8_t fill : language.fills) writer.Fill(36, fill);
  }
  writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
}

void PutProduct(ByteWriter& writer, const EcfProductSpec& spec) {
  const unsigned total = spec.first_records + spec.second_records;
  writer.Fill(3, kUnread);
  writer.U8(spec.byte);
  writer.Text(spec.name, 33);
  writer.U8(static_cast<uint32_t>(spec.configurations.size()));
  writer.U8(spec.variant);
  writer.U8(total);
  writer.Fill(2, kUnread);
  writer.U8(spec.second_records);
  writer.U8(kUnread);
  const size_t next = writer.size();
  writer.U32(0);
  for (const EcfConfigurationSpec& configuration : spec.configurations)
    PutConfiguration(writer, configuration);
  for (unsigned i = 0; i < total; ++i) {
    if (i == 0) writer.Fill(8, kUnread);
    if (i == spec.first_records) writer.Fill(8, kUnread);
    writer.Fill(20, static_cast<uint8_t>(i + 1));
  }
  writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
}

}  // namespace

Bytes MakeEcf(const std::vector<EcfManufacturerSpec>& manufacturers) {
  ByteWriter writer;
  writer.Text("Qx", 14, kUnread);
  writer.U16(static_cast<uint32_t>(manufacturers.size()));
  writer.Fill(8, kUnread);
  for (const EcfManufacturerSpec& manufacturer : manufacturers) {
    writer.U8(manufacturer.id);
    writer.U8(kUnread);
    writer.U16(static_cast<uint32_t>(manufacturer.products.size()));
    const size_t next = writer.size();
    writer.U32(0);
    for (const EcfProductSpec& product : manufacturer.products) PutProduct(writer, product);
    writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
  }
  return writer.bytes();
}

std::string Listing(const ProjectConfig& config) {
  std::string text = Format("maker %X\nproduct %s %d %d\n", config.manufacturer_id,
                            config.product_name.c_str(), config.product_byte, config.database_variant);
  for (const ProductTableRecord& record : config.product_table)
    text += Format("table %x-%x\n", record.front(), record.back());
  text += Format("configuration %s %d.%d%s\n", config.configuration_name.c_str(), config.version_a,
                 config.version_b, config.configuration_found ? "" : " missing");
  for (const RegionEntry& region : config.regions)
    text += Format("region %s %d %x-%x\n", region.name.c_str(), region.type, region.start, region.end);
  text += Format("loader %x %x %d %d\n", config.loader.header_tag, config.loader.packet_tag,
                 config.loader.block_kib, config.loader.packet_size);
  for (const PartitionEntry& partition : config.partitions)
    text +=
        Format("partition %d %d %u-%u\n", partition.number, partition.type, partition.start, partition.end);
  text += config.partitions_loaded ? "sizes" : "no sizes";
  for (const uint32_t size : config.partition_sizes) text += Format(" %u", size);
  text += "\nextra";
  for (const uint8_t byte : config.extra) text += Format(" %d", byte);
  for (const auto* languages : {&config.first_languages, &config.second_languages}) {
    text += "\nlanguages";
    for (const LanguageRecord& record : languages->records)
      text += Format(" %s %d", LanguageCode(record).c_str(), record.back());
  }
  return text;
}

}  // namespace vexa
