#include "config/ecf_select.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace vexa {

namespace {

// One configuration with the three names that it is chosen by, in the case that all are compared in.
struct Entry {
  Selection selection;
  std::array<std::string, 3> names;
};

std::string OneCase(std::string single_byte) {
  for (char& letter : single_byte) {
    const auto byte = static_cast<unsigned char>(letter);
    const bool upper = (byte >= 'A' && byte <= 'Z') || (byte >= 0xC0 && byte <= 0xDE && byte != 0xD7);
    if (upper) letter = static_cast<char>(byte + 0x20);
  }
  return Utf8FromLatin(single_byte);
}

std::string OneCaseUtf8(const std::string& text) {
  return FitsLatin(text) ? OneCase(LatinFromUtf8(text)) : text;
}

std::vector<Entry> EntriesOf(const EcfTree& tree) {
  std::vector<Entry> entries;
  for (size_t i = 0; i < tree.manufacturers.size(); ++i) {
    const EcfManufacturer& manufacturer = tree.manufacturers[i];
    for (size_t j = 0; j < manufacturer.products.size(); ++j) {
      const EcfProduct& product = manufacturer.products[j];
      for (size_t k = 0; k < product.configurations.size(); ++k) {
        entries.push_back({{static_cast<uint8_t>(i), static_cast<uint8_t>(j), static_cast<uint8_t>(k)},
                           {OneCase(Format("%X", unsigned{manufacturer.id})), OneCase(product.name),
                            OneCase(product.configurations[k].name)}});
      }
    }
  }
  return entries;
}

// Keeps the entries whose name has the text in it, or is it when there is such a one.
void Keep(std::vector<Entry>& entries, size_t level, const std::string& text) {
  if (text.empty()) return entries.clear();
  const auto is_whole = [&](const Entry& entry) { return entry.names[level] == text; };
  const bool whole = std::any_of(entries.begin(), entries.end(), is_whole);
  std::erase_if(entries, [&](const Entry& entry) {
    return whole ? !is_whole(entry) : entry.names[level].find(text) == std::string::npos;
  });
}

}  // namespace

std::string SelectionName(const EcfTree& tree, const Selection& selection) {
  const EcfManufacturer& manufacturer = tree.manufacturers[selection.manufacturer];
  const EcfProduct& product = manufacturer.products[selection.product];
  return Format("%X/", unsigned{manufacturer.id}) + Utf8FromLatin(product.name) + "/" +
         Utf8FromLatin(product.configurations[selection.configuration].name);
}

SelectionFound FindSelection(const EcfTree& tree, const std::string& text) {
  const std::vector<Entry> all = EntriesOf(tree);
  std::vector<Entry> found = all;
  const std::string wanted = OneCaseUtf8(text);
  const size_t first = wanted.find('/');
  const size_t second = first == wanted.npos ? first : wanted.find('/', first + 1);
  if (second != wanted.npos) {
    Keep(found, 0, wanted.substr(0, first));
    Keep(found, 1, wanted.substr(first + 1, second - first - 1));
    Keep(found, 2, wanted.substr(second + 1));
  } else {
    Keep(found, 2, wanted);
    if (found.empty()) {
      found = all;
      Keep(found, 1, wanted);
    }
  }
  SelectionFound result;
  if (found.size() == 1) {
    result.selection = found.front().selection;
    return result;
  }
  result.several = !found.empty();
  for (const Entry& entry : found.empty() ? all : found)
    result.candidates.push_back(SelectionName(tree, entry.selection));
  return result;
}

}  // namespace vexa
