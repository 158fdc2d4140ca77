// From an ECF file back to a description.
#include <algorithm>
#include <set>

#include "config/ecf.h"
#include "config/ecf_content.h"
#include "platform/text.h"

namespace vexa {

namespace {

std::string Quoted(const std::string& latin) {
  std::string text = "\"";
  for (const char c : Utf8FromLatin(latin)) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      text += Format("\\u%04X", static_cast<unsigned>(c));
    } else {
      if (c == '"' || c == '\\') text += '\\';
      text += c;
    }
  }
  return text + "\"";
}

std::string HexText(std::span<const uint8_t> bytes) {
  std::string text;
  for (size_t i = 0; i < bytes.size(); ++i) {
    text += Format("%s%02X", i == 0 ? "" : i % 4 == 0 ? "  " : " ", unsigned{bytes[i]});
  }
  return "\"" + text + "\"";
}

// Keys from names: letters and digits in lower case, one hyphen for anything else, a number behind doubles.
class KeyMaker {
 public:
  std::string KeyOf(const std::string& name) {
    std::string key;
    for (const char c : name) {
      const bool capital = c >= 'A' && c <= 'Z';
      const char small = static_cast<char>(capital ? c - 'A' + 'a' : c);
      if ((small >= 'a' && small <= 'z') || (small >= '0' && small <= '9')) {
        key += small;
      } else if (!key.empty() && key.back() != '-') {
        key += '-';
      }
    }
    if (!key.empty() && key.back() == '-') key.pop_back();
    if (key.empty()) key = "unnamed";
    std::string free = key;
    for (int number = 2; !taken_.insert(free).second; ++number) free = key + "-" + std::to_string(number);
    return free;
  }

 private:
  std::set<std::string> taken_;
};

std::string ListOfKeys(const std::vector<size_t>& places, const std::vector<std::string>& keys) {
  std::string text;
  for (const size_t place : places) text += (text.empty() ? "\"" : ", \"") + keys[place] + "\"";
  return "[" + text + "]";
}

std::string LanguagesText(const char* key, const std::optional<std::vector<LanguageRecord>>& languages) {
  if (!languages) return "";
  std::string text;
  for (const LanguageRecord& record : *languages) {
    text += (text.empty() ? "[" : ", [") + Quoted(LanguageCode(record)) + ", " +
            Quoted(LanguageName(record)) + "]";
  }
  return Format("%s = [%s]\n", key, text.c_str());
}

std::string PartitionText(const ContentPartition& partition, unsigned expected) {
  std::string text = Format("  { type = %u, ", unsigned{partition.type});
  if (partition.number != expected) text += Format("number = %u, ", unsigned{partition.number});
  text += Format("start = %u, length = %u", partition.start, partition.length);
  if (partition.bitmap_bits) text += Format(", bitmap_bits = %u", unsigned{*partition.bitmap_bits});
  return text + " },\n";
}

std::string ConfigurationText(const ContentConfiguration& configuration, const std::string& key) {
  std::string text = Format("[configuration.%s]\nname = %s\nversion = [%u, %u]\n", key.c_str(),
                            Quoted(configuration.name).c_str(), unsigned{configuration.version_a},
                            unsigned{configuration.version_b});
  if (!configuration.regions.empty()) {
    text += "regions = [\n";
    for (const RegionEntry& region : configuration.regions) {
      text += Format("  { name = %s, type = %u, start = 0x%08X, end = 0x%08X },\n",
                     Quoted(region.name).c_str(), unsigned{region.type}, region.start, region.end);
    }
    const LoaderParameters& loader = configuration.loader;
    text += Format(
        "]\nloader = { header_tag = 0x%02X, packet_tag = 0x%02X, block_size = %u, packet_size = %u }\n",
        unsigned{loader.header_tag}, unsigned{loader.packet_tag}, unsigned{loader.block_kib},
        unsigned{loader.packet_size});
  }
  if (!configuration.partitions.empty()) {
    text += "partitions = [\n";
    unsigned number = 0;
    for (const ContentPartition& partition : configuration.partitions) {
      text += PartitionText(partition, number + 1);
      number = partition.number;
    }
    text += "]\n";
  }
  if (configuration.extra) text += "extra = " + HexText(*configuration.extra) + "\n";
  return text + LanguagesText("menu_languages", configuration.menu_languages) +
         LanguagesText("audio_languages", configuration.audio_languages);
}

std::string ProductTableText(const char* key, const ProductTable& table) {
  if (table.empty()) return "";
  std::string text = Format("%s = [\n", key);
  for (const ProductTableRecord& record : table) text += "  " + HexText(record) + ",\n";
  return text + "]\n";
}

std::string Description(const EcfContent& content) {
  KeyMaker configuration_keys, product_keys;
  std::vector<std::string> configurations, products;
  for (const ContentConfiguration& configuration : content.configurations)
    configurations.push_back(configuration_keys.KeyOf(configuration.name));
  for (const ContentProduct& product : content.products) products.push_back(product_keys.KeyOf(product.name));
  std::string text = content.manufacturers.empty() ? "manufacturer = []\n" : "";
  for (const ContentManufacturer& manufacturer : content.manufacturers) {
    text += Format("[[manufacturer]]\nid = 0x%02X\nproducts = %s\n\n", unsigned{manufacturer.id},
                   ListOfKeys(manufacturer.products, products).c_str());
  }
  for (size_t i = 0; i < products.size(); ++i) {
    const ContentProduct& product = content.products[i];
    text += Format("[product.%s]\nname = %s\nbyte = %u\nvariant = %u\nconfigurations = %s\n",
                   products[i].c_str(), Quoted(product.name).c_str(), unsigned{product.byte},
                   unsigned{product.variant}, ListOfKeys(product.configurations, configurations).c_str());
    text += ProductTableText("table", product.table) + ProductTableText("second_table", product.second_table);
    text += "\n";
  }
  for (size_t i = 0; i < configurations.size(); ++i) {
    text += (i == 0 ? "" : "\n") + ConfigurationText(content.configurations[i], configurations[i]);
  }
  return text;
}

}  // namespace

namespace {

// Whether `written`, made out of what was read of the file, is the file again. False after a message that
// names the first byte in which they differ.
bool ExpectSame(const Context& context, const std::string& name, std::span<const uint8_t> file,
                std::span<const uint8_t> written) {
  const auto [mine, first] = std::mismatch(written.begin(), written.end(), file.begin(), file.end());
  if (mine == written.end() && first == file.end()) return true;
  TellWhy(context.messages, Icon::kWarning, "Keep the file itself: a description would lose those bytes.",
          "%s: No description states what this file holds at byte %zu.", name.c_str(),
          static_cast<size_t>(first - file.begin()));
  return false;
}

}  // namespace

std::string DescribeEcf(const Context& context, const std::string& name, std::span<const uint8_t> file,
                        bool& compiles) {
  const EcfContent content = ReadEcfContent(file);
  std::string text = Description(content);
  compiles = ExpectSame(context, name, file, WriteEcf(content).value_or(Bytes{}));
  Context warned = context;
  warned.messages.tell = [&](Message message) {
    message.icon = Icon::kWarning;
    context.messages.tell(message);
  };
  // What stands in the file behind the end of a text is kept in the content, but no description states it.
  const auto compiled = CompileEcfText(warned, name, text);
  compiles = compiled && compiles && ExpectSame(context, name, file, *compiled);
  return text;
}

}  // namespace vexa
