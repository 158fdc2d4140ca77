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

void FillManufacturers(SettingsForm& dialog, const EcfTree& tree) {
  dialog.manufacturers.clear();
  for (const EcfManufacturer& manufacturer : tree.manufacturers) {
    dialog.manufacturers.push_back(Format("%X", unsigned{manufacturer.id}));
  }
  dialog.manufacturer = KeptSelection(dialog.manufacturer, dialog.manufacturers.size());
}

void FillProducts(SettingsForm& dialog, const EcfTree& tree) {
  dialog.products.clear();
  if (dialog.manufacturer >= 0 && static_cast<size_t>(dialog.manufacturer) < tree.manufacturers.size()) {
    for (const EcfProduct& product : tree.manufacturers[static_cast<size_t>(dialog.manufacturer)].products) {
      dialog.products.push_back(Utf8FromLatin(product.name));
    }
  }
  dialog.product = KeptSelection(dialog.product, dialog.products.size());
}

const EcfProduct* ChosenProduct(const SettingsForm& dialog, const EcfTree& tree) {
  const auto manufacturer = static_cast<size_t>(dialog.manufacturer),
             product = static_cast<size_t>(dialog.product);
  if (dialog.manufacturer < 0 || manufacturer >= tree.manufacturers.size()) return nullptr;
  const auto& products = tree.manufacturers[manufacturer].products;
  return dialog.product >= 0 && product < products.size() ? &products[product] : nullptr;
}

void FillConfigurations(SettingsForm& dialog, const EcfTree& tree) {
  dialog.configurations.clear();
  if (const EcfProduct* product = ChosenProduct(dialog, tree)) {
    for (const EcfConfiguration& configuration : product->configurations) {
      dialog.configurations.push_back(Utf8FromLatin(configuration.name));
    }
  }
  dialog.configuration = KeptSelection(dialog.configuration, dialog.configurations.size());
}

void FillImageTypes(SettingsForm& dialog, const EcfTree& tree) {
  dialog.image_types.clear();
  const EcfProduct* product = ChosenProduct(dialog, tree);
  const auto position = static_cast<size_t>(dialog.configuration);
  if (product && dialog.configuration >= 0 && position < product->configurations.size()) {
    for (const std::string& name : product->configurations[position].region_names) {
      dialog.image_types.push_back(Utf8FromLatin(name));
    }
  }
  dialog.image_type = KeptSelection(dialog.stored_image_type, dialog.image_types.size());
}

void FillLists(SettingsForm& dialog, const EcfTree& tree) {
  FillManufacturers(dialog, tree);
  FillProducts(dialog, tree);
  FillConfigurations(dialog, tree);
  FillImageTypes(dialog, tree);
  dialog.listed = true;
}

void TellSettingProblem(const Context& context, const Path& file) {
  TellWhy(context.messages, Icon::kStop,
          Utf8FromPath(file) + ": Choose a configuration file, or bring this one back.",
          "Configuration setting problem");
}

void LoseLists(const Context& context, SettingsForm& dialog) {
  FillLists(dialog, {});
  dialog.listed = false;
  const Path file = PathFromUtf8(dialog.file);
  TellWhy(context.messages, Icon::kStop, ReadReason(file, WhyUnreadable(file)),
          "Configuration parsing problem");
}

uint8_t IndexOf(int selection) {
  return static_cast<uint8_t>(std::clamp(selection, 0, 255));
}

void StoreIndependent(const SettingsForm& dialog, const SoftwareVersion& version, ProjectConfig& config) {
  config.software_major = version.major;
  config.software_minor = version.minor;
  config.sdb_format = IndexOf(dialog.sdb_format);
  config.compressed_image = dialog.compressed;
  config.compression_type = IndexOf(dialog.compression_type);
  config.compression_level = IndexOf(dialog.compression_level);
  config.port_name = dialog.port_name;
  const bool offered = dialog.baud < static_cast<int>(kOfferedLineSpeeds);
  config.baud_index = offered ? IndexOf(dialog.baud) : dialog.stored_baud;
  config.data_bits_index = IndexOf(dialog.data_bits);
  config.parity_index = IndexOf(dialog.parity);
  config.stop_bits_index = IndexOf(dialog.stop_bits);
}

void StoreSelections(const SettingsForm& dialog, ProjectConfig& config) {
  config.manufacturer_index = IndexOf(dialog.manufacturer);
  config.product_index = IndexOf(dialog.product);
  config.configuration_index = IndexOf(dialog.configuration);
  const bool changed =
      dialog.image_type != KeptSelection(dialog.stored_image_type, dialog.image_types.size());
  const bool kept = config.image_type_chosen && config.image_type_index == IndexOf(dialog.image_type);
  config.image_type_chosen = changed || kept;
  config.image_type_index = IndexOf(dialog.image_type);
}

}  // namespace

std::array<const char*, 3> PidHeaders(bool hexadecimal) {
  if (hexadecimal) return {"Video (Hex)", "Audio (Hex)", "PCR (Hex)"};
  return {"Video (Dec)", "Audio (Dec)", "PCR (Dec)"};
}

SettingsForm OpenSettingsForm(const Context& context, const SettingsRequest& request, const Path& ecf,
                              const ProjectConfig& config, bool hexadecimal_pids) {
  SettingsForm dialog;
  dialog.request = request;
  dialog.file = Utf8FromPath(ecf);
  dialog.listed_file = ecf;
  dialog.manufacturer = config.manufacturer_index;
  dialog.product = config.product_index;
  dialog.configuration = config.configuration_index;
  dialog.stored_image_type = config.image_type_index;
  dialog.software_major = std::to_string(config.software_major);
  dialog.software_minor = std::to_string(config.software_minor);
  dialog.sdb_format = dialog.had_sdb_format = config.sdb_format;
  dialog.radix = hexadecimal_pids ? 0 : 1;
  dialog.had_hexadecimal = hexadecimal_pids;
  dialog.compressed = config.compressed_image;
  dialog.compression_type = config.compression_type;
  dialog.compression_level = config.compression_level;
  dialog.port_name = config.port_name;
  dialog.bauds = OfferedLineSpeedTexts();
  dialog.stored_baud = config.baud_index;
  if (config.baud_index >= kOfferedLineSpeeds) dialog.bauds.push_back(LineSpeedText(config.baud_index));
  dialog.baud = std::min<int>(config.baud_index, static_cast<int>(kOfferedLineSpeeds));
  dialog.data_bits = config.data_bits_index;
  dialog.parity = config.parity_index;
  dialog.stop_bits = config.stop_bits_index;
  if (const auto tree = ReadEcfTree(context, ecf)) {
    FillLists(dialog, *tree);
  } else {
    LoseLists(context, dialog);
  }
  return dialog;
}

void ChooseManufacturer(const Context& context, SettingsForm& dialog, int position) {
  dialog.manufacturer = position;
  dialog.products.clear();
  dialog.configurations.clear();
  dialog.product = dialog.configuration = -1;
  const auto tree = ReadEcfTree(context, dialog.listed_file);
  if (!tree) return TellSettingProblem(context, dialog.listed_file);
  FillProducts(dialog, *tree);
  FillConfigurations(dialog, *tree);
}

void ChooseProduct(const Context& context, SettingsForm& dialog, int position) {
  dialog.product = position;
  dialog.configurations.clear();
  dialog.configuration = -1;
  const auto tree = ReadEcfTree(context, dialog.listed_file);
  if (!tree) return TellSettingProblem(context, dialog.listed_file);
  FillConfigurations(dialog, *tree);
}

void ChooseConfiguration(const Context& context, SettingsForm& dialog, int position) {
  dialog.configuration = position;
  dialog.image_types.clear();
  dialog.image_type = -1;
  dialog.stored_image_type = 0;
  const auto tree = ReadEcfTree(context, dialog.listed_file);
  if (!tree) return TellSettingProblem(context, dialog.listed_file);
  FillImageTypes(dialog, *tree);
}

void BrowseConfiguration(const Context& context, SettingsForm& dialog, const Path& file) {
  const auto tree = ReadEcfTree(context, file);
  if (!tree) return TellSettingProblem(context, file);
  dialog.product = dialog.configuration = -1;
  dialog.file = Utf8FromPath(file);
  dialog.listed_file = file;
  FillLists(dialog, *tree);
}

void LeaveConfigurationFile(const Context& context, SettingsForm& dialog) {
  const Path entered = PathFromUtf8(dialog.file);
  if (!dialog.listed || entered == dialog.listed_file) return;
  dialog.manufacturer = dialog.product = dialog.configuration = -1;
  dialog.stored_image_type = 0;
  dialog.listed_file = entered;
  if (const auto tree = ReadEcfTree(context, entered)) {
    FillLists(dialog, *tree);
  } else {
    LoseLists(context, dialog);
  }
}

SettingsEnabling EnabledControls(const SettingsForm& dialog) {
  const SettingsRequest& request = dialog.request;
  SettingsEnabling enabled{};
  enabled.browse = request.needs.Any() || !dialog.listed;
  if (!dialog.listed) return enabled;
  enabled.ok = true;
  enabled.file = enabled.lists = enabled.software = request.needs.Any();
  enabled.sdb_format = enabled.radix = !request.from_console;
  enabled.image_type = request.image_command && !dialog.image_types.empty();
  enabled.compression = request.urt_conversion;
  enabled.compression_type = request.urt_conversion && dialog.compressed;
  enabled.compression_level = enabled.compression_type && dialog.compression_type == 0;
  enabled.serial = !(request.from_console && request.port_connected);
  return enabled;
}

namespace {

// Whether the file, the version and the port in the edits can be taken; the field of a refusal, after its
// message.
SettingsField JudgeEdits(const Context& context, SettingsForm& dialog, SoftwareVersion& version) {
  const auto refuse = [&](SettingsField field, const std::string& text, const std::string& why = {}) {
    TellWhy(context.messages, Icon::kStop, why, "%s", text.c_str());
    return field;
  };
  Bytes content;
  const Path file = PathFromUtf8(dialog.file);
  const ReadResult read = ReadWholeFile(file, content, kMaximumEcfSize);
  if (read != ReadResult::kDone) {
    return refuse(SettingsField::kFile, "Configuration file does not exist or invalid path.",
                  ReadReason(file, read.error));
  }
  if (content.empty()) {
    return refuse(SettingsField::kFile, "Configuration file does not contains any information.",
                  Utf8FromPath(file));
  }
  LeaveConfigurationFile(context, dialog);
  if (!dialog.listed) return SettingsField::kFile;
  const auto refusal = ReadSoftwareVersion(dialog.software_major, dialog.software_minor, version);
  if (refusal) {
    const bool major = refusal->field == kSoftwareMajorField;
    return refuse(major ? SettingsField::kMajor : SettingsField::kMinor, refusal->text);
  }
  if (!IsPortName(dialog.port_name)) {
    return refuse(SettingsField::kPort, "The name of the port has 1 to 5 characters.");
  }
  return SettingsField::kNone;
}

}  // namespace

SettingsOutcome AcceptSettings(const Context& context, SettingsForm& dialog, Path& ecf,
                               ProjectConfig& config) {
  SettingsOutcome outcome;
  SoftwareVersion version;
  outcome.focus = JudgeEdits(context, dialog, version);
  if (outcome.focus != SettingsField::kNone) return outcome;
  outcome.close = true;
  StoreIndependent(dialog, version, config);
  ProjectConfig chosen = config;
  StoreSelections(dialog, chosen);
  outcome.loaded = InitConfig(context, dialog.listed_file, chosen);
  if (outcome.loaded) {
    config = std::move(chosen);
    ecf = dialog.listed_file;
  } else {
    TellWhy(context.messages, Icon::kInformation,
            Utf8FromPath(dialog.listed_file) +
                ": Choose a manufacturer, a product and a configuration of this file, or another file.",
            "Invalid configuration selection.");
  }
  // A changed format brings its own way of showing PIDs, over the list's.
  const bool format_changed = dialog.sdb_format != dialog.had_sdb_format;
  outcome.hexadecimal_pids = format_changed ? dialog.sdb_format == 1 : dialog.radix == 0;
  outcome.refill = format_changed || outcome.hexadecimal_pids != dialog.had_hexadecimal;
  return outcome;
}

void StoreSettingsForm(const SettingsStore& store, const SettingsForm& dialog, const Path& ecf,
                       const ProjectConfig& config) {
  SavePortSettings(store, config);
  SaveConfigurationPaths(store, ecf, dialog.file);
}

}  // namespace vexa
