// `vexa ecf show` and `vexa ecf build`.
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/usage.h"
#include "config/ecf.h"
#include "platform/text.h"

namespace vexa {

namespace {

using Json = nlohmann::ordered_json;

struct EcfOptions {
  std::string file, select, output;
  bool json = false, toml = false;
};

Path ShownFile(const CommandState& state, const EcfOptions& options) {
  return options.file.empty() ? ShippedConfiguration(state) : PathFromUtf8(options.file);
}

std::string Hex(std::span<const uint8_t> bytes) {
  std::string text;
  for (const uint8_t byte : bytes) text += Format(text.empty() ? "%02X" : " %02X", unsigned{byte});
  return text;
}

std::string FacilitiesText(const EcfConfiguration& configuration) {
  std::string text;
  if (configuration.has_images) text += ", images";
  if (configuration.has_partitions) text += ", partitions";
  if (configuration.has_extra) text += ", extra";
  return text;
}

std::string TreeText(const EcfTree& tree) {
  std::string text;
  for (size_t i = 0; i < tree.manufacturers.size(); ++i) {
    const EcfManufacturer& manufacturer = tree.manufacturers[i];
    text += Format("%zu: manufacturer %X\n", i, unsigned{manufacturer.id});
    for (size_t j = 0; j < manufacturer.products.size(); ++j) {
      const EcfProduct& product = manufacturer.products[j];
      text += Format("  %zu/%zu: product \"%s\", variant %u\n", i, j, Utf8FromLatin(product.name).c_str(),
                     unsigned{product.database_variant});
      for (size_t k = 0; k < product.configurations.size(); ++k) {
        const EcfConfiguration& configuration = product.configurations[k];
        text += Format("    %zu/%zu/%zu: configuration \"%s\"%s\n", i, j, k,
                       Utf8FromLatin(configuration.name).c_str(), FacilitiesText(configuration).c_str());
        for (const std::string& region : configuration.region_names) {
          text += Format("      region \"%s\"\n", Utf8FromLatin(region).c_str());
        }
      }
    }
  }
  return text;
}

Json TreeJson(const EcfTree& tree) {
  Json manufacturers = Json::array();
  for (const EcfManufacturer& manufacturer : tree.manufacturers) {
    Json products = Json::array();
    for (const EcfProduct& product : manufacturer.products) {
      Json configurations = Json::array();
      for (const EcfConfiguration& configuration : product.configurations) {
        Json regions = Json::array();
        for (const std::string& region : configuration.region_names) regions.push_back(Utf8FromLatin(region));
        configurations.push_back({{"name", Utf8FromLatin(configuration.name)},
                                  {"images", configuration.has_images},
                                  {"partitions", configuration.has_partitions},
                                  {"extra", configuration.has_extra},
                                  {"regions", regions}});
      }
      products.push_back({{"name", Utf8FromLatin(product.name)},
                          {"variant", product.database_variant},
                          {"configurations", configurations}});
    }
    manufacturers.push_back({{"id", manufacturer.id}, {"products", products}});
  }
  return {{"manufacturers", manufacturers}};
}

std::string LanguagesText(const char* title, const LanguageBlock& list) {
  std::string text = Format("%s: %zu, header %s\n", title, list.records.size(), Hex(list.header).c_str());
  for (const LanguageRecord& record : list.records) {
    text += Format("  %s \"%s\" (%s)\n", Utf8FromLatin(LanguageCode(record)).c_str(),
                   Utf8FromLatin(LanguageName(record)).c_str(), Hex(record).c_str());
  }
  return text;
}

std::string ConfigText(const ProjectConfig& config) {
  std::string text = Format("manufacturer: %X\nproduct: \"%s\"\nproduct byte: %u\ndatabase variant: %u\n",
                            unsigned{config.manufacturer_id}, Utf8FromLatin(config.product_name).c_str(),
                            unsigned{config.product_byte}, unsigned{config.database_variant});
  text += Format("configuration: \"%s\"\nversion bytes: %u %u\n",
                 Utf8FromLatin(config.configuration_name).c_str(), unsigned{config.version_a},
                 unsigned{config.version_b});
  text += Format("regions: %zu (image entry count %u)\n", config.regions.size(),
                 unsigned{config.image_entry_count});
  for (const RegionEntry& region : config.regions) {
    text += Format("  \"%s\" type %u, 0x%08X - 0x%08X\n", Utf8FromLatin(region.name).c_str(),
                   unsigned{region.type}, region.start, region.end);
  }
  text +=
      Format("loader parameters: header tag 0x%02X, packet tag 0x%02X, block size %u KiB, packet size %u\n",
             unsigned{config.loader.header_tag}, unsigned{config.loader.packet_tag},
             unsigned{config.loader.block_kib}, unsigned{config.loader.packet_size});
  text += Format("partitions: %zu (partition count %u)\n", config.partitions.size(),
                 unsigned{config.partition_count});
  for (const PartitionEntry& partition : config.partitions) {
    text += Format("  number %u, type %u, 0x%08X - 0x%08X\n", unsigned{partition.number},
                   unsigned{partition.type}, partition.start, partition.end);
  }
  text += "partition sizes:";
  for (const uint32_t size : config.partition_sizes) text += Format(" %u", size);
  text += Format("\nextra: %s\n", Hex(config.extra).c_str());
  text += LanguagesText("first languages", config.first_languages);
  text += LanguagesText("second languages", config.second_languages);
  text += Format("product table: %zu\n", config.product_table.size());
  for (const ProductTableRecord& record : config.product_table) text += "  " + Hex(record) + "\n";
  return text;
}

Json LanguagesJson(const LanguageBlock& list) {
  Json records = Json::array();
  for (const LanguageRecord& record : list.records) {
    records.push_back({{"code", Utf8FromLatin(LanguageCode(record))},
                       {"name", Utf8FromLatin(LanguageName(record))},
                       {"bytes", Hex(record)}});
  }
  return {{"header", Hex(list.header)}, {"records", records}};
}

Json ConfigJson(const ProjectConfig& config) {
  Json regions = Json::array(), partitions = Json::array(), table = Json::array();
  for (const RegionEntry& region : config.regions) {
    regions.push_back({{"name", Utf8FromLatin(region.name)},
                       {"type", region.type},
                       {"start", region.start},
                       {"end", region.end}});
  }
  for (const PartitionEntry& partition : config.partitions) {
    partitions.push_back({{"number", partition.number},
                          {"type", partition.type},
                          {"start", partition.start},
                          {"end", partition.end}});
  }
  for (const ProductTableRecord& record : config.product_table) table.push_back(Hex(record));
  Json json = Json::object();  // a null one that turns into an object breaks when memory runs out
  json["manufacturer_id"] = config.manufacturer_id;
  json["product_name"] = Utf8FromLatin(config.product_name);
  json["product_byte"] = config.product_byte;
  json["database_variant"] = config.database_variant;
  json["configuration_name"] = Utf8FromLatin(config.configuration_name);
  json["version_a"] = config.version_a;
  json["version_b"] = config.version_b;
  json["image_entry_count"] = config.image_entry_count;
  json["regions"] = regions;
  json["loader"] = {{"header_tag", config.loader.header_tag},
                    {"packet_tag", config.loader.packet_tag},
                    {"block_size", config.loader.block_kib},
                    {"packet_size", config.loader.packet_size}};
  json["partition_count"] = config.partition_count;
  json["partitions"] = partitions;
  json["partition_sizes"] = config.partition_sizes;
  json["extra"] = Hex(config.extra);
  json["first_languages"] = LanguagesJson(config.first_languages);
  json["second_languages"] = LanguagesJson(config.second_languages);
  json["product_table"] = table;
  return json;
}

void ShowSource(CommandState& state, const EcfOptions& options) {
  const Path path = ShownFile(state, options);
  if (!ReadEcfTree(state.context, path)) throw CommandFailed{};
  Bytes file;
  const ReadResult read = ReadWholeFile(path, file, kMaximumEcfSize);
  if (read != ReadResult::kDone) {
    TellWhy(state.context.messages, Icon::kStop, ReadReason(path, read.error),
            "File access error - AddConfigurationListToComboBox");
    throw CommandFailed{};
  }
  bool compiles = false;  // what it leaves out is a warning
  state.output += DescribeEcf(state.context, Utf8FromPath(path), file, compiles);
}

void Show(CommandState& state, const EcfOptions& options) {
  if (options.toml) return ShowSource(state, options);
  if (!options.select.empty()) {
    const ProjectConfig config = LoadSelected(state, ShownFile(state, options), options.select);
    state.output += options.json ? ConfigJson(config).dump(2) + "\n" : ConfigText(config);
    return;
  }
  const Path file = ShownFile(state, options);
  const auto tree = ReadEcfTree(state.context, file);
  if (!tree) throw CommandFailed{};
  state.output += options.json ? TreeJson(*tree).dump(2) + "\n" : TreeText(*tree);
}

void Build(CommandState& state, const EcfOptions& options) {
  const Path source = PathFromUtf8(options.file);
  ExpectApart({{"SOURCE", source}}, {{"--output", PathFromUtf8(options.output)}});
  const auto file = CompileEcf(state.context, source);
  if (!file) throw CommandFailed{};
  WriteOutput(state, options.output, *file);
}

}  // namespace

void AddConfigurationCommands(CLI::App& program, CommandState& state) {
  CLI::App* ecf = program.add_subcommand("ecf", "Configuration files: which receivers there are");
  ecf->require_subcommand(1);
  const auto options = std::make_shared<EcfOptions>();

  CLI::App* show =
      ecf->add_subcommand("show", "Prints the manufacturers, products and configurations of an ECF file");
  show->add_option("FILE", options->file, "ECF file; default: the one that ships with the program");
  show->add_option("--select", options->select, "M/P/C: prints everything loaded from this configuration")
      ->check(CLI::Validator(CheckSelection, "M/P/C"));
  CLI::Option* json = show->add_flag("--json", options->json, "Prints JSON");
  show->add_flag("--toml", options->toml, "Prints the description that compiles to the same file")
      ->excludes(json)
      ->excludes("--select");
  show->callback([&state, options] { Show(state, *options); });

  CLI::App* build = ecf->add_subcommand("build", "Compiles a readable description into an ECF file");
  build->add_option("SOURCE", options->file, "Description (TOML)")->required();
  build->add_option("-o,--output", options->output, "ECF file to write")->required();
  build->callback([&state, options] { Build(state, *options); });
}

}  // namespace vexa
