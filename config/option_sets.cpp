#include "config/option_sets.h"

#include <algorithm>
#include <sstream>

#include "config/ecf.h"
#include "config/settings.h"
#include "platform/text.h"

namespace vexa {

namespace {

// The numbers of a set, in the order in which they are kept.
struct SetNumber {
  uint8_t ProjectConfig::*member;
  int64_t highest;
};
constexpr SetNumber kSetNumbers[] = {
    {&ProjectConfig::baud_index, kLineSpeeds.size() - 1},
    {&ProjectConfig::data_bits_index, kDataBits.size() - 1},
    {&ProjectConfig::parity_index, kParities.size() - 1},
    {&ProjectConfig::stop_bits_index, kStopBits.size() - 1},
    {&ProjectConfig::manufacturer_index, 255},
    {&ProjectConfig::product_index, 255},
    {&ProjectConfig::configuration_index, 255},
    {&ProjectConfig::software_major, 255},
    {&ProjectConfig::software_minor, 15},
    {&ProjectConfig::sdb_format, 1},
    {&ProjectConfig::image_type_index, 255},
    {&ProjectConfig::compression_type, 1},
    {&ProjectConfig::compression_level, 8},
};

constexpr char kBetweenParts = '\t';  // of the parts: name, port, file, numbers
constexpr int kSetFlags = 3;          // behind the numbers: image type chosen, compressed, hexadecimal

std::string SetText(const OptionSet& set) {
  std::string text =
      set.name + kBetweenParts + set.choices.port_name + kBetweenParts + set.file + kBetweenParts;
  for (const SetNumber& number : kSetNumbers) text += std::to_string(set.choices.*number.member) + " ";
  for (const bool flag : {set.choices.image_type_chosen, set.choices.compressed_image, set.hexadecimal})
    text += flag ? "1 " : "0 ";
  text.pop_back();
  return text;
}

// Nothing when one is missing, one too many is there or one is beyond its range.
std::optional<std::vector<int64_t>> SetNumbersIn(const std::string& text) {
  std::vector<int64_t> numbers;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const size_t place = numbers.size();
    const bool number = place < std::size(kSetNumbers);
    const int64_t highest = number ? kSetNumbers[place].highest : 1, value = DecimalValue(word);
    if (value < 0 || value > highest || word != std::to_string(value)) return std::nullopt;
    numbers.push_back(value);
  }
  if (numbers.size() != std::size(kSetNumbers) + kSetFlags) return std::nullopt;
  return numbers;
}

std::optional<OptionSet> SetOf(const std::string& text) {
  const auto parts = SplitText(text, kBetweenParts);
  if (parts.size() != 4 || !IsPortName(std::string(parts[1]))) return std::nullopt;
  const auto numbers = SetNumbersIn(std::string(parts[3]));
  if (!numbers) return std::nullopt;
  OptionSet set;
  set.name = parts[0];
  set.choices.port_name = parts[1];
  set.file = parts[2];
  size_t place = 0;
  for (const SetNumber& number : kSetNumbers)
    set.choices.*number.member = static_cast<uint8_t>((*numbers)[place++]);
  set.choices.image_type_chosen = (*numbers)[place] == 1;
  set.choices.compressed_image = (*numbers)[place + 1] == 1;
  set.hexadecimal = (*numbers)[place + 2] == 1;
  return set;
}

}  // namespace

std::vector<OptionSet> LoadOptionSets(const SettingsStore& store) {
  std::vector<OptionSet> sets;
  const std::string key = SettingsKey(kSetsKey);
  if (store.open(key) != KeyState::kExisted) return sets;
  for (size_t i = 1; i <= kMaximumSets; ++i) {
    const auto text = store.read(key, std::to_string(i));
    auto set = text ? SetOf(*text) : std::nullopt;
    if (set && WhyNoSet(sets, set->name).empty()) PutOptionSet(sets, std::move(*set));
  }
  return sets;
}

void SaveOptionSets(const SettingsStore& store, const std::vector<OptionSet>& sets) {
  const std::string key = SettingsKey(kSetsKey);
  store.open(key);
  for (size_t i = 1; i <= kMaximumSets; ++i) {
    const std::string name = std::to_string(i);
    if (i <= sets.size()) {
      store.write(key, name, SetText(sets[i - 1]));
    } else if (store.read(key, name)) {
      store.write(key, name, "");
    }
  }
}

std::string WhyNoSet(const std::vector<OptionSet>& sets, const std::string& name) {
  const size_t characters = Utf16FromUtf8(name).size();
  const bool plain =
      std::none_of(name.begin(), name.end(), [](char c) { return static_cast<uint8_t>(c) < 32; });
  if (characters == 0 || characters > kMaximumSetName || !plain)
    return Format("The name of a set has 1 to %zu characters.", kMaximumSetName);
  if (sets.size() >= kMaximumSets && !FindOptionSet(sets, name))
    return Format("There are %zu sets, the most that are kept. Delete one first.", kMaximumSets);
  return "";
}

std::optional<size_t> FindOptionSet(const std::vector<OptionSet>& sets, const std::string& name) {
  const std::u16string wanted = SmallLetters(name);
  for (size_t i = 0; i < sets.size(); ++i) {
    if (SmallLetters(sets[i].name) == wanted) return i;
  }
  return std::nullopt;
}

void PutOptionSet(std::vector<OptionSet>& sets, OptionSet set) {
  if (const auto place = FindOptionSet(sets, set.name)) {
    sets[*place] = std::move(set);
  } else {
    sets.push_back(std::move(set));
  }
  std::sort(sets.begin(), sets.end(), [](const OptionSet& one, const OptionSet& other) {
    return SmallLetters(one.name) < SmallLetters(other.name);
  });
}

bool LoadOptionSet(const Context& context, const OptionSet& set, ProjectConfig& config) {
  ProjectConfig chosen = set.choices;
  if (!InitConfig(context, PathFromUtf8(set.file), chosen)) return false;
  if (!chosen.configuration_found) {
    TellWhy(context.messages, Icon::kStop, set.file,
            "The configuration of the set \"%s\" is not in its file.", set.name.c_str());
    return false;
  }
  config = std::move(chosen);
  return true;
}

}  // namespace vexa
