#include "view/settings_form.h"

#include <algorithm>

#include "config/settings.h"
#include "config/software_version.h"
#include "platform/text.h"

namespace vexa {

namespace {

int KeptSelection(int selection, size_t count) {
  if (count == 0) return -1;
  return selection >= 0 && static_cast<size_t>(selection) < count ? selection : 0;
}

void FillManufacturers(SettingsForm& form, const EcfTree& tree) {
  form.manufacturers.clear();
  for (const EcfManufacturer& manufacturer : tree.manufacturers) {
    form.manufacturers.push_back(Format("%X", unsigned{manufacturer.id}));
  }
  form.manufacturer = KeptSelection(form.manufacturer, form.manufacturers.size());
}

void FillProducts(SettingsForm& form, const EcfTree& tree) {
  form.products.clear();
  if (form.manufacturer >= 0 && static_cast<size_t>(form.manufacturer) < tree.manufacturers.size()) {
    for (const EcfProduct& product : tree.manufacturers[static_cast<size_t>(form.manufacturer)].products) {
      form.products.push_back(Utf8FromLatin(product.name));
    }
  }
  form.product = KeptSelection(form.product, form.products.size());
}

const EcfProduct* ChosenProduct(const SettingsForm& form, const EcfTree& tree) {
  const auto manufacturer = static_cast<size_t>(form.manufacturer),
             product = static_cast<size_t>(form.product);
  if (form.manufacturer < 0 || manufacturer >= tree.manufacturers.size()) return nullptr;
  const auto& products = tree.manufacturers[manufacturer].products;
  return form.product >= 0 && product < products.size() ? &products[product] : nullptr;
}

void FillConfigurations(SettingsForm& form, const EcfTree& tree) {
  form.configurations.clear();
  if (const EcfProduct* product = ChosenProduct(form, tree)) {
    for (const EcfConfiguration& configuration : product->configurations) {
      form.configurations.push_back(Utf8FromLatin(configuration.name));
    }
  }
  form.configuration = KeptSelection(form.configuration, form.configurations.size());
}

void FillImageTypes(SettingsForm& form, const EcfTree& tree) {
  form.image_types.clear();
  const EcfProduct* product = ChosenProduct(form, tree);
  const auto position = static_cast<size_t>(form.configuration);
  if (product && form.configuration >= 0 && position < product->configurations.size()) {
    for (const std::string& name : product->configurations[position].region_names) {
      form.image_types.push_back(Utf8FromLatin(name));
    }
  }
  form.image_type = KeptSelection(form.stored_image_type, form.image_types.size());
}

void FillLists(SettingsForm& form, const EcfTree& tree) {
  FillManufacturers(form, tree);
  FillProducts(form, tree);
  FillConfigurations(form, tree);
  FillImageTypes(form, tree);
  form.listed = true;
}

void TellSettingProblem(const Context& context, const Path& file) {
  TellWhy(context.messages, Icon::kStop,
          Utf8FromPath(file) + ": Choose a configuration file, or bring this one back.",
          "Configuration setting problem");
}

void LoseLists(const Context& context, SettingsForm& form) {
  FillLists(form, {});
  form.listed = false;
  const Path file = PathFromUtf8(form.file);
  TellWhy(context.messages, Icon::kStop, ReadReason(file, WhyUnreadable(file)),
          "Configuration parsing problem");
}

uint8_t IndexOf(int selection) {
  return static_cast<uint8_t>(std::clamp(selection, 0, 255));
}

void StoreIndependent(const SettingsForm& form, const SoftwareVersion& version, ProjectConfig& config) {
  config.software_major = version.major;
  config.software_minor = version.minor;
  config.sdb_format = IndexOf(form.sdb_format);
  config.compressed_image = form.compressed;
  config.compression_type = IndexOf(form.compression_type);
  config.compression_level = IndexOf(form.compression_level);
  config.port_name = form.port_name;
  const bool offered = form.baud < static_cast<int>(kOfferedLineSpeeds);
  config.baud_index = offered ? IndexOf(form.baud) : form.stored_baud;
  config.data_bits_index = IndexOf(form.data_bits);
  config.parity_index = IndexOf(form.parity);
  config.stop_bits_index = IndexOf(form.stop_bits);
}

void StoreSelections(const SettingsForm& form, ProjectConfig& config) {
  config.manufacturer_index = IndexOf(form.manufacturer);
  config.product_index = IndexOf(form.product);
  config.configuration_index = IndexOf(form.configuration);
  const bool changed = form.image_type != KeptSelection(form.stored_image_type, form.image_types.size());
  config.image_type_chosen = changed || form.chosen_image_type == IndexOf(form.image_type);
  config.image_type_index = IndexOf(form.image_type);
}

// All but the lists of the configuration file.
void ShowChoices(SettingsForm& form, const ProjectConfig& config, bool hexadecimal) {
  form.manufacturer = config.manufacturer_index;
  form.product = config.product_index;
  form.configuration = config.configuration_index;
  form.stored_image_type = config.image_type_index;
  form.chosen_image_type = config.image_type_chosen ? config.image_type_index : -1;
  form.software_major = std::to_string(config.software_major);
  form.software_minor = std::to_string(config.software_minor);
  form.sdb_format = config.sdb_format;
  form.radix = hexadecimal ? 0 : 1;
  form.compressed = config.compressed_image;
  form.compression_type = config.compression_type;
  form.compression_level = config.compression_level;
  form.port_name = config.port_name;
  form.bauds = OfferedLineSpeedTexts();
  form.stored_baud = config.baud_index;
  if (config.baud_index >= kOfferedLineSpeeds) form.bauds.push_back(LineSpeedText(config.baud_index));
  form.baud = std::min<int>(config.baud_index, static_cast<int>(kOfferedLineSpeeds));
  form.data_bits = config.data_bits_index;
  form.parity = config.parity_index;
  form.stop_bits = config.stop_bits_index;
}

}  // namespace

std::array<const char*, 3> PidHeaders(bool hexadecimal) {
  if (hexadecimal) return {"Video (Hex)", "Audio (Hex)", "PCR (Hex)"};
  return {"Video (Dec)", "Audio (Dec)", "PCR (Dec)"};
}

SettingsForm OpenSettingsForm(const Context& context, const SettingsRequest& request, const Path& ecf,
                              const ProjectConfig& config, bool hexadecimal_pids, const CodePage& names) {
  SettingsForm form;
  form.request = request;
  form.file = Utf8FromPath(ecf);
  form.listed_file = ecf;
  form.had_sdb_format = config.sdb_format;
  form.had_hexadecimal = hexadecimal_pids;
  ShowChoices(form, config, hexadecimal_pids);
  form.names_pages = CodePageNames();
  const auto page = std::find(form.names_pages.begin(), form.names_pages.end(), names.name);
  form.names_page = form.had_names_page = static_cast<int>(page - form.names_pages.begin());
  if (const auto tree = ReadEcfTree(context, ecf)) {
    FillLists(form, *tree);
  } else {
    LoseLists(context, form);
  }
  return form;
}

void ChooseManufacturer(const Context& context, SettingsForm& form, int position) {
  form.manufacturer = position;
  form.products.clear();
  form.configurations.clear();
  form.product = form.configuration = -1;
  const auto tree = ReadEcfTree(context, form.listed_file);
  if (!tree) return TellSettingProblem(context, form.listed_file);
  FillProducts(form, *tree);
  FillConfigurations(form, *tree);
}

void ChooseProduct(const Context& context, SettingsForm& form, int position) {
  form.product = position;
  form.configurations.clear();
  form.configuration = -1;
  const auto tree = ReadEcfTree(context, form.listed_file);
  if (!tree) return TellSettingProblem(context, form.listed_file);
  FillConfigurations(form, *tree);
}

void ChooseConfiguration(const Context& context, SettingsForm& form, int position) {
  form.configuration = position;
  form.image_types.clear();
  form.image_type = -1;
  form.stored_image_type = 0;
  const auto tree = ReadEcfTree(context, form.listed_file);
  if (!tree) return TellSettingProblem(context, form.listed_file);
  FillImageTypes(form, *tree);
}

void BrowseConfiguration(const Context& context, SettingsForm& form, const Path& file) {
  const auto tree = ReadEcfTree(context, file);
  if (!tree) return TellSettingProblem(context, file);
  form.product = form.configuration = -1;
  form.file = Utf8FromPath(file);
  form.listed_file = file;
  FillLists(form, *tree);
}

void LeaveConfigurationFile(const Context& context, SettingsForm& form) {
  const Path entered = PathFromUtf8(form.file);
  if (!form.listed || entered == form.listed_file) return;
  form.manufacturer = form.product = form.configuration = -1;
  form.stored_image_type = 0;
  form.listed_file = entered;
  if (const auto tree = ReadEcfTree(context, entered)) {
    FillLists(form, *tree);
  } else {
    LoseLists(context, form);
  }
}

SettingsEnabling EnabledControls(const SettingsForm& form) {
  const SettingsRequest& request = form.request;
  SettingsEnabling enabled{};
  enabled.browse = request.needs.Any() || !form.listed;
  if (!form.listed) return enabled;
  enabled.ok = true;
  enabled.file = enabled.lists = enabled.software = request.needs.Any();
  enabled.sdb_format = enabled.radix = !request.from_console;
  enabled.image_type = request.image_command && !form.image_types.empty();
  enabled.compression = request.urt_conversion;
  enabled.compression_type = request.urt_conversion && form.compressed;
  enabled.compression_level = enabled.compression_type && form.compression_type == 0;
  enabled.serial = !(request.from_console && request.port_connected);
  // A set brings its port and all else.
  enabled.sets = enabled.lists && enabled.serial && enabled.sdb_format && enabled.compression;
  return enabled;
}

namespace {

// Whether the file, the version and the port in the edits can be taken; the field of a refusal, after its
// message.
SettingsField JudgeEdits(const Context& context, SettingsForm& form, SoftwareVersion& version) {
  const auto refuse = [&](SettingsField field, const std::string& text, const std::string& why = {}) {
    TellWhy(context.messages, Icon::kStop, why, "%s", text.c_str());
    return field;
  };
  Bytes content;
  const Path file = PathFromUtf8(form.file);
  const ReadResult read = ReadWholeFile(file, content, kMaximumEcfSize);
  if (read != ReadResult::kDone) {
    return refuse(SettingsField::kFile, "Configuration file does not exist or invalid path.",
                  ReadReason(file, read.error));
  }
  if (content.empty()) {
    return refuse(SettingsField::kFile, "Configuration file does not contains any information.",
                  Utf8FromPath(file));
  }
  LeaveConfigurationFile(context, form);
  if (!form.listed) return SettingsField::kFile;
  const auto refusal = ReadSoftwareVersion(form.software_major, form.software_minor, version);
  if (refusal) {
    const bool major = refusal->field == kSoftwareMajorField;
    return refuse(major ? SettingsField::kMajor : SettingsField::kMinor, refusal->text);
  }
  if (!IsPortName(form.port_name)) {
    return refuse(SettingsField::kPort, "The name of the port has 1 to 5 characters.");
  }
  return SettingsField::kNone;
}

}  // namespace

SettingsOutcome AcceptSettings(const Context& context, SettingsForm& form, Path& ecf, ProjectConfig& config) {
  SettingsOutcome outcome;
  SoftwareVersion version;
  outcome.focus = JudgeEdits(context, form, version);
  if (outcome.focus != SettingsField::kNone) return outcome;
  outcome.close = true;
  StoreIndependent(form, version, config);
  ProjectConfig chosen = config;
  StoreSelections(form, chosen);
  outcome.loaded = InitConfig(context, form.listed_file, chosen);
  if (outcome.loaded) {
    config = std::move(chosen);
    ecf = form.listed_file;
  } else {
    TellWhy(context.messages, Icon::kInformation,
            Utf8FromPath(form.listed_file) +
                ": Choose a manufacturer, a product and a configuration of this file, or another file.",
            "Invalid configuration selection.");
  }
  // A changed format brings its own way of showing PIDs, over the list's.
  const bool format_changed = form.sdb_format != form.had_sdb_format;
  outcome.hexadecimal_pids = format_changed ? form.sdb_format == 1 : form.radix == 0;
  if (form.names_page >= 0 && form.names_page != form.had_names_page)
    outcome.names = FindCodePage(form.names_pages[static_cast<size_t>(form.names_page)]);
  outcome.refill = format_changed || outcome.hexadecimal_pids != form.had_hexadecimal;
  return outcome;
}

SettingsField KeepSettingsSet(const Context& context, SettingsForm& form, std::vector<OptionSet>& sets,
                              const std::string& typed) {
  OptionSet set;
  set.name = Trimmed(typed);
  const std::string refusal = WhyNoSet(sets, set.name);
  if (!refusal.empty()) {
    Tell(context.messages, Icon::kStop, "%s", refusal.c_str());
    return SettingsField::kSet;
  }
  SoftwareVersion version;
  const SettingsField field = JudgeEdits(context, form, version);
  if (field != SettingsField::kNone) return field;
  set.file = Utf8FromPath(form.listed_file);
  StoreIndependent(form, version, set.choices);
  StoreSelections(form, set.choices);
  set.hexadecimal = form.radix == 0;
  PutOptionSet(sets, std::move(set));
  return SettingsField::kNone;
}

bool TakeSettingsSet(const Context& context, SettingsForm& form, const OptionSet& set) {
  ProjectConfig config;
  if (!LoadOptionSet(context, set, config)) return false;
  const Path file = PathFromUtf8(set.file);
  const auto tree = ReadEcfTree(context, file);
  if (!tree) return false;
  form.file = set.file;
  form.listed_file = file;
  ShowChoices(form, config, set.hexadecimal);
  form.had_sdb_format = form.sdb_format;  // PIDs are shown as the set says
  FillLists(form, *tree);
  return true;
}

void StoreSettingsForm(const SettingsStore& store, const SettingsForm& form, const Path& ecf,
                       const ProjectConfig& config) {
  SavePortSettings(store, config);
  SaveConfigurationPaths(store, ecf, form.file);
}

}  // namespace vexa
