// The compiler from the readable description to the ECF file. It reads the description strictly: what it does
// not know, or what would not fit its field, is an error with the line, so that a mistyped key is not a
// silent default.
#include <algorithm>
#include <cinttypes>
#include <initializer_list>
#include <map>
#include <set>

#include "config/ecf.h"
#include "core/bytes.h"
#include "platform/text.h"

#define TOML_EXCEPTIONS 0
#include <toml++/toml.h>

namespace vexa {

namespace {

// A description with its parents' keys under its own.
using Fields = std::map<std::string, const toml::node*, std::less<>>;

struct Compiler {
  const Context& context;
  std::string file;  // UTF-8, for messages
  const toml::table* root = nullptr;
  bool failed = false;  // one message was shown; all further ones would follow from it

  unsigned LineOf(const toml::node& node) const { return node.source().begin.line; }
};

void UnknownKey(Compiler& compiler, const toml::key& key) {
  if (compiler.failed) return;
  compiler.failed = true;
  const std::string text(key.str());
  Tell(compiler.context.messages, Icon::kStop, "%s(%u): Unknown key \"%s\".", compiler.file.c_str(),
       static_cast<unsigned>(key.source().begin.line), text.c_str());
}

void Missing(Compiler& compiler, const char* what, const std::string& owner) {
  if (compiler.failed) return;
  compiler.failed = true;
  Tell(compiler.context.messages, Icon::kStop, "%s: \"%s\" is missing in %s.", compiler.file.c_str(), what,
       owner.c_str());
}

void WrongKind(Compiler& compiler, const toml::node& node, const char* what, const char* kind) {
  if (compiler.failed) return;
  compiler.failed = true;
  Tell(compiler.context.messages, Icon::kStop, "%s(%u): \"%s\" must be %s.", compiler.file.c_str(),
       compiler.LineOf(node), what, kind);
}

void TooMany(Compiler& compiler, const toml::node& node, const char* what, size_t limit) {
  if (compiler.failed) return;
  compiler.failed = true;
  Tell(compiler.context.messages, Icon::kStop, "%s(%u): \"%s\" has more than %zu entries.",
       compiler.file.c_str(), compiler.LineOf(node), what, limit);
}

bool Known(std::string_view key, std::initializer_list<const char*> known) {
  return std::find(known.begin(), known.end(), key) != known.end();
}

void AddFields(Compiler& compiler, const toml::table& table, std::initializer_list<const char*> known,
               Fields& fields) {
  for (auto&& [key, node] : table) {
    if (!Known(key.str(), known)) return UnknownKey(compiler, key);
    fields.emplace(key.str(), &node);  // a nearer description's key is there already
  }
}

const toml::node* FieldOf(Compiler& compiler, const Fields& fields, const char* what,
                          const std::string& owner, bool required) {
  const auto found = fields.find(what);
  if (found != fields.end()) return found->second;
  if (required) Missing(compiler, what, owner);
  return nullptr;
}

uint32_t NumberOf(Compiler& compiler, const toml::node& node, const char* what, uint32_t lowest,
                  uint32_t highest) {
  const auto value = node.value_exact<int64_t>();
  if (value && *value >= lowest && *value <= highest) return static_cast<uint32_t>(*value);
  if (!compiler.failed) {
    compiler.failed = true;
    Tell(compiler.context.messages, Icon::kStop,
         "%s(%u): \"%s\" must be a number from %" PRIu32 " to %" PRIu32 ".", compiler.file.c_str(),
         compiler.LineOf(node), what, lowest, highest);
  }
  return lowest;
}

uint32_t Number(Compiler& compiler, const Fields& fields, const char* what, const std::string& owner,
                uint32_t lowest, uint32_t highest, std::optional<uint32_t> standard = std::nullopt) {
  const toml::node* node = FieldOf(compiler, fields, what, owner, !standard);
  return node ? NumberOf(compiler, *node, what, lowest, highest) : standard.value_or(lowest);
}

// Single-byte text of at most `limit` characters.
std::string TextValue(Compiler& compiler, const toml::node& node, const char* what, size_t limit) {
  const auto value = node.value_exact<std::string>();
  if (!value) {
    WrongKind(compiler, node, what, "a text");
    return {};
  }
  const std::string text = LatinFromUtf8(*value);
  if (text.size() > limit && !compiler.failed) {
    compiler.failed = true;
    Tell(compiler.context.messages, Icon::kStop, "%s(%u): \"%s\" has more than %zu characters.",
         compiler.file.c_str(), compiler.LineOf(node), what, limit);
  }
  if ((!FitsLatin(*value) || text.find('\0') != std::string::npos) && !compiler.failed) {
    compiler.failed = true;
    Tell(compiler.context.messages, Icon::kStop,
         "%s(%u): \"%s\" has a character that the single-byte text cannot hold.", compiler.file.c_str(),
         compiler.LineOf(node), what);
  }
  return text;
}

std::string Text(Compiler& compiler, const Fields& fields, const char* what, const std::string& owner,
                 size_t limit) {
  const toml::node* node = FieldOf(compiler, fields, what, owner, true);
  return node ? TextValue(compiler, *node, what, limit) : std::string();
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Exactly `size` bytes written as pairs of hexadecimal digits; blanks between pairs.
Bytes HexBytes(Compiler& compiler, const toml::node& node, const char* what, size_t size) {
  Bytes bytes;
  const std::string text = node.value_exact<std::string>().value_or("?");
  bool good = true;
  for (size_t i = 0; i < text.size() && good;) {
    if (text[i] == ' ') {
      ++i;
      continue;
    }
    const int high = HexDigit(text[i]), low = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
    good = high >= 0 && low >= 0;
    if (good) bytes.push_back(static_cast<uint8_t>(high * 16 + low));
    i += 2;
  }
  if ((!good || bytes.size() != size) && !compiler.failed) {
    compiler.failed = true;
    Tell(compiler.context.messages, Icon::kStop, "%s(%u): \"%s\" must be %zu bytes in hexadecimal digits.",
         compiler.file.c_str(), compiler.LineOf(node), what, size);
  }
  bytes.resize(size);
  return bytes;
}

// The array under `what`; nullptr when it is not there (or after an error).
const toml::array* Array(Compiler& compiler, const Fields& fields, const char* what, size_t limit) {
  const auto found = fields.find(what);
  if (found == fields.end()) return nullptr;
  const toml::array* array = found->second->as_array();
  if (!array) {
    WrongKind(compiler, *found->second, what, "a list");
  } else if (array->size() > limit) {
    TooMany(compiler, *array, what, limit);
  }
  return compiler.failed ? nullptr : array;
}

// The keys of `kind.name` over those of its parents.
Fields Resolve(Compiler& compiler, const char* kind, const std::string& name, const toml::node& where,
               std::initializer_list<const char*> known) {
  Fields fields;
  std::set<std::string> passed;
  const toml::node* referring = &where;
  for (std::string next = name; !next.empty() && !compiler.failed;) {
    const toml::table* table = (*compiler.root)[kind][next].as_table();
    if (!table || !passed.insert(next).second) {
      compiler.failed = true;
      Tell(compiler.context.messages, Icon::kStop,
           table ? "%s(%u): The %s \"%s\" is its own parent." : "%s(%u): There is no %s \"%s\".",
           compiler.file.c_str(), compiler.LineOf(*referring), kind, next.c_str());
      break;
    }
    AddFields(compiler, *table, known, fields);
    const toml::node* parent = table->get("parent");
    if (!parent) break;
    next = parent->value_exact<std::string>().value_or("");
    if (next.empty()) WrongKind(compiler, *parent, "parent", "a name");
    referring = parent;
  }
  return fields;
}

void WriteBlockHeader(ByteWriter& writer, size_t count) {
  writer.Fill(9, 0);
  writer.U8(static_cast<uint32_t>(count));
  writer.Fill(6, 0);
}

Fields EntryFields(Compiler& compiler, const toml::node& node, const char* what,
                   std::initializer_list<const char*> known) {
  Fields fields;
  if (const toml::table* table = node.as_table()) {
    AddFields(compiler, *table, known, fields);
  } else {
    WrongKind(compiler, node, what, "a table");
  }
  return fields;
}

void WriteRegions(Compiler& compiler, ByteWriter& writer, const toml::array& regions) {
  WriteBlockHeader(writer, regions.size());
  for (const toml::node& node : regions) {
    const Fields fields = EntryFields(compiler, node, "regions", {"name", "type", "start", "end"});
    if (compiler.failed) return;
    const std::string name = Text(compiler, fields, "name", "a region", 49);
    const uint32_t start = Number(compiler, fields, "start", name, 0, UINT32_MAX);
    const uint32_t end = Number(compiler, fields, "end", name, 0, UINT32_MAX);
    if (end < start && !compiler.failed) {
      compiler.failed = true;
      Tell(compiler.context.messages, Icon::kStop, "%s(%u): The region \"%s\" ends before it starts.",
           compiler.file.c_str(), compiler.LineOf(node), Utf8FromLatin(name).c_str());
    }
    writer.Text(name, 50);
    writer.U16(Number(compiler, fields, "type", name, 0, 255));
    writer.U32(start);
    writer.U32(end);
    writer.Fill(36, 0);
  }
}

void WriteLoader(Compiler& compiler, ByteWriter& writer, const Fields& configuration,
                 const std::string& owner) {
  const toml::node* node = FieldOf(compiler, configuration, "loader", owner, true);
  if (!node) return;
  const Fields fields =
      EntryFields(compiler, *node, "loader", {"header_tag", "packet_tag", "block_size", "packet_size"});
  const uint32_t header_tag = Number(compiler, fields, "header_tag", "loader", 0, 255);
  const uint32_t packet_tag = Number(compiler, fields, "packet_tag", "loader", 0, 255);
  if (header_tag == packet_tag && !compiler.failed) {
    compiler.failed = true;
    Tell(compiler.context.messages, Icon::kStop, "%s(%u): The two tags of the loader must differ.",
         compiler.file.c_str(), compiler.LineOf(*node));
  }
  writer.U16(header_tag);
  writer.U16(packet_tag);
  // A packet's offset within its block has 18 bits.
  writer.U16(Number(compiler, fields, "block_size", "loader", 1, 256));
  writer.U16(Number(compiler, fields, "packet_size", "loader", 1, kMaximumPacketSize));
}

void WritePartitions(Compiler& compiler, ByteWriter& writer, const toml::array& partitions) {
  WriteBlockHeader(writer, partitions.size());
  uint32_t number = 0;
  for (const toml::node& node : partitions) {
    const Fields fields =
        EntryFields(compiler, node, "partitions", {"type", "number", "start", "length", "bitmap_bits"});
    const bool has_bitmap = fields.contains("bitmap_bits");
    writer.U8(Number(compiler, fields, "type", "a partition", 0, kPartitionTypes - 1));
    number = Number(compiler, fields, "number", "a partition", 1, 255, number + 1);
    writer.U8(number - 1);
    writer.U8(has_bitmap);
    writer.U8(Number(compiler, fields, "bitmap_bits", "a partition", 0, 255, 0));
    writer.U32(0);
    writer.U32(Number(compiler, fields, "start", "a partition", 0, UINT32_MAX));
    writer.U32(Number(compiler, fields, "length", "a partition", 0, UINT32_MAX));
    if (compiler.failed) return;
  }
}

void WriteLanguages(Compiler& compiler, ByteWriter& writer, const toml::array& languages, bool first,
                    const char* what) {
  writer.Text("LG", 3);
  writer.U8(static_cast<uint32_t>(languages.size()));
  writer.U32(first ? 1 : 0);
  for (const toml::node& node : languages) {
    const toml::array* pair = node.as_array();
    if (!pair || pair->size() != 2)
      return WrongKind(compiler, node, what, "a list of pairs of code and name");
    writer.Text(TextValue(compiler, (*pair)[0], what, 3), 4);
    writer.Text(TextValue(compiler, (*pair)[1], what, 31), 32);
  }
}

void WriteConfiguration(Compiler& compiler, ByteWriter& writer, const toml::node& reference) {
  const std::string key = reference.value_exact<std::string>().value_or("");
  const std::string owner = "the configuration \"" + key + "\"";
  const Fields fields = Resolve(compiler, "configuration", key, reference,
                                {"parent", "name", "version", "loader", "regions", "partitions", "extra",
                                 "menu_languages", "audio_languages"});
  const toml::array* regions = Array(compiler, fields, "regions", 255);
  const toml::array* partitions = Array(compiler, fields, "partitions", kMaximumPartitions);
  const toml::array* menu = Array(compiler, fields, "menu_languages", 255);
  const toml::array* audio = Array(compiler, fields, "audio_languages", 255);
  const toml::array* version = Array(compiler, fields, "version", 2);
  const auto extra = fields.find("extra");
  if (version && version->size() != 2) WrongKind(compiler, *version, "version", "a list of two numbers");
  writer.Text(Text(compiler, fields, "name", owner, 127), 128);
  if (compiler.failed) return;
  for (size_t i = 0; i < 2; ++i) {
    writer.U8(version ? NumberOf(compiler, (*version)[i], "version", 0, 255) : 0);
  }
  const size_t region_count = regions ? regions->size() : 0,
               partition_count = partitions ? partitions->size() : 0;
  writer.U16(0);
  writer.U8(extra != fields.end());
  writer.U8(static_cast<uint32_t>(partition_count));
  writer.U8(static_cast<uint32_t>(region_count));
  writer.U8((menu ? 1 : 0) + (audio ? 1 : 0));
  writer.Fill(8, 0);
  const size_t next = writer.size();
  writer.U32(0);
  if (region_count > 0) {
    WriteRegions(compiler, writer, *regions);
    WriteLoader(compiler, writer, fields, owner);
  }
  if (partition_count > 0) WritePartitions(compiler, writer, *partitions);
  if (extra != fields.end()) {
    WriteBlockHeader(writer, 1);
    writer.Append(HexBytes(compiler, *extra->second, "extra", 8));
  }
  if (menu) WriteLanguages(compiler, writer, *menu, true, "menu_languages");
  if (audio) WriteLanguages(compiler, writer, *audio, false, "audio_languages");
  writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
}

void WriteTableGroup(Compiler& compiler, ByteWriter& writer, const toml::array* group, const char* what) {
  writer.Fill(8, 0);
  if (!group) return;
  for (const toml::node& node : *group) {
    writer.Append(HexBytes(compiler, node, what, sizeof(ProductTableRecord)));
  }
}

void WriteProduct(Compiler& compiler, ByteWriter& writer, const toml::node& reference) {
  const std::string key = reference.value_exact<std::string>().value_or("");
  const std::string owner = "the product \"" + key + "\"";
  const Fields fields =
      Resolve(compiler, "product", key, reference,
              {"parent", "name", "byte", "variant", "configurations", "table", "second_table"});
  const toml::array* configurations = Array(compiler, fields, "configurations", 255);
  if (!configurations) Missing(compiler, "configurations", owner);
  const toml::array* table = Array(compiler, fields, "table", 255);
  const size_t table_size = table ? table->size() : 0;
  const toml::array* second = Array(compiler, fields, "second_table", 255 - table_size);
  const size_t second_size = second ? second->size() : 0;
  writer.Fill(3, 0);
  writer.U8(Number(compiler, fields, "byte", owner, 0, 255, 0));
  writer.Text(Text(compiler, fields, "name", owner, 32), 33);
  if (compiler.failed) return;
  writer.U8(static_cast<uint32_t>(configurations->size()));
  writer.U8(Number(compiler, fields, "variant", owner, 0, 255, 0));
  writer.U8(static_cast<uint32_t>(table_size + second_size));
  writer.U16(0);
  writer.U8(static_cast<uint32_t>(second_size));
  writer.U8(0);
  const size_t next = writer.size();
  writer.U32(0);
  for (const toml::node& node : *configurations) {
    WriteConfiguration(compiler, writer, node);
    if (compiler.failed) return;
  }
  if (table_size + second_size > 0) WriteTableGroup(compiler, writer, table, "table");
  if (second_size > 0) WriteTableGroup(compiler, writer, second, "second_table");
  writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
}

void WriteManufacturer(Compiler& compiler, ByteWriter& writer, const toml::node& node) {
  const Fields fields = EntryFields(compiler, node, "manufacturer", {"id", "products"});
  const toml::array* products = Array(compiler, fields, "products", 65535);
  if (!products) Missing(compiler, "products", "a manufacturer");
  writer.U16(Number(compiler, fields, "id", "a manufacturer", 0, 255));
  if (compiler.failed) return;
  writer.U16(static_cast<uint32_t>(products->size()));
  const size_t next = writer.size();
  writer.U32(0);
  for (const toml::node& product : *products) {
    WriteProduct(compiler, writer, product);
    if (!compiler.failed && writer.size() > kMaximumEcfSize) TooMany(compiler, product, "products", 65535);
    if (compiler.failed) return;
  }
  writer.PatchU32(next, static_cast<uint32_t>(writer.size()));
}

// Everything from the parsed description; `compiler.failed` says whether it is any good.
Bytes WriteFile(Compiler& compiler) {
  ByteWriter writer;
  Fields fields;
  AddFields(compiler, *compiler.root, {"manufacturer", "product", "configuration"}, fields);
  const toml::array* manufacturers = Array(compiler, fields, "manufacturer", 65535);
  if (!manufacturers) Missing(compiler, "manufacturer", "the file");
  if (compiler.failed) return {};
  writer.Text("Qx", 14);
  writer.U16(static_cast<uint32_t>(manufacturers->size()));
  writer.Fill(8, 0);
  for (const toml::node& node : *manufacturers) {
    WriteManufacturer(compiler, writer, node);
    if (compiler.failed) return {};
  }
  return std::move(writer.bytes());
}

}  // namespace

std::optional<Bytes> CompileEcf(const Context& context, const Path& toml) {
  const std::string name = Utf8FromPath(toml);
  const auto content = ReadWholeFile(toml, kMaximumEcfSize);
  if (!content) {
    Tell(context.messages, Icon::kStop, "Can't open file %s", name.c_str());
    return std::nullopt;
  }
  const std::string_view text(reinterpret_cast<const char*>(content->data()), content->size());
  const toml::parse_result parsed = toml::parse(text);
  if (!parsed) {
    const std::string reason(parsed.error().description());
    Tell(context.messages, Icon::kStop, "%s(%u): %s", name.c_str(),
         static_cast<unsigned>(parsed.error().source().begin.line), reason.c_str());
    return std::nullopt;
  }
  Compiler compiler{context, name, &parsed.table()};
  Bytes bytes = WriteFile(compiler);
  if (compiler.failed) return std::nullopt;
  return bytes;
}

}  // namespace vexa
