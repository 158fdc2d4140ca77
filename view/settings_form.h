// The configuration dialog without its window: what its controls hold, which of them answer, what a choice
// changes and what OK stores. The window copies values in and out and calls the function that belongs to each
// notification.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "config/ecf.h"
#include "config/option_sets.h"
#include "config/project_config.h"
#include "core/context.h"
#include "platform/code_page.h"
#include "platform/settings_store.h"

namespace vexa {

// Texts of the controls.
inline constexpr const char* kEcfFilterName = "Vexa Editor Configuration File ( *.ECF )";
inline constexpr const char* kEcfFilterPattern = "*.ecf";
inline constexpr const char* kOpenEcfTitle = "Open a Configuration File";
inline constexpr std::array kSdbFormats = {"Single SDB", "Multiple SDB"};
inline constexpr std::array kRadixes = {"Hexadecimal", "Decimal"};
inline constexpr std::array kCompressionTypes = {"Zlib", "Bin2Cod"};
inline constexpr std::array kCompressionLevels = {"1", "2", "3", "4", "5", "6", "7", "8", "9"};

// Titles of the three PID columns of the editor window.
std::array<const char*, 3> PidHeaders(bool hexadecimal);

// Who opened the dialog. A settings command that lets everything be chosen states all facilities.
struct SettingsRequest {
  Facilities needs;
  bool image_command = false;   // an image type is needed
  bool urt_conversion = false;  // compression is needed
  bool from_console = false;    // the uploader console
  bool port_connected = false;  // its port is open
};

struct SettingsForm {
  SettingsRequest request;

  std::string file;    // the edit, UTF-8
  Path listed_file;    // where the lists come from: the file in force, or the one browsed to or typed
  bool listed = true;  // they could be filled; when not, only another file can be browsed to
  std::vector<std::string> manufacturers, products, configurations, image_types;  // UTF-8
  int manufacturer = -1, product = -1, configuration = -1, image_type = -1;       // -1: nothing selected
  std::string software_major, software_minor;
  int sdb_format = 0;
  int radix = 1;                         // place in kRadixes
  std::vector<std::string> names_pages;  // code pages in which names can be shown
  int names_page = 0;
  bool compressed = false;
  int compression_type = 0, compression_level = 0;
  std::string port_name;
  std::vector<std::string> bauds;  // those offered, and behind them a stored one that is not
  int baud = 0, data_bits = 0, parity = 0, stop_bits = 0;

  bool had_hexadecimal = false;  // when the dialog opened
  int had_names_page = 0;
  int had_sdb_format = 0;
  int stored_image_type = 0;   // what a filled image-type list selects
  int chosen_image_type = -1;  // the one that the user chose before; -1: none
  uint8_t stored_baud = 0;     // the index of the last of `bauds` when it is not offered
};

// Fills everything from the configuration in force; `names`: the page in which names are shown. When the
// lists cannot be filled they are empty and `listed` is false, after a message.
SettingsForm OpenSettingsForm(const Context& context, const SettingsRequest& request, const Path& ecf,
                              const ProjectConfig& config, bool hexadecimal_pids,
                              const CodePage& names = Windows1252());

// Choices in the lists. Each reads the file again; after a message the lists are empty below the choice.
void ChooseManufacturer(const Context& context, SettingsForm& form, int position);
void ChooseProduct(const Context& context, SettingsForm& form, int position);
void ChooseConfiguration(const Context& context, SettingsForm& form, int position);
// The browse button's file. One that cannot be listed changes nothing (after a message).
void BrowseConfiguration(const Context& context, SettingsForm& form, const Path& file);
// The edit of the file has been left: another path than the lists' refills them, with their first entries
// selected. One that cannot be listed leaves them empty and clears `listed`, after a message.
void LeaveConfigurationFile(const Context& context, SettingsForm& form);

struct SettingsEnabling {
  bool file, browse, ok, lists, software, sdb_format, radix, image_type, compression, compression_type,
      compression_level, serial, sets;
};
// Which controls take an answer, by who opened the dialog and by whether the lists could be filled.
SettingsEnabling EnabledControls(const SettingsForm& form);

enum class SettingsField { kNone, kFile, kMajor, kMinor, kPort, kSet };
struct SettingsOutcome {
  bool close = false;  // false: the dialog stays, `focus` gets the focus
  SettingsField focus = SettingsField::kNone;
  bool loaded = false;              // the chosen configuration is in force
  bool hexadecimal_pids = false;    // the display option from now on
  const CodePage* names = nullptr;  // another page in which names are shown; nullptr: the same
  bool refill = false;              // the option changed: columns are retitled and lists filled again
};
// OK. A path that the edit still holds refills the lists first, so that only choices from its own file are
// stored. On success `ecf` and `config` hold the choices. A file, version or port name that cannot be keeps
// the dialog, after a message, and nothing is stored. When the configuration cannot be loaded the dialog
// closes nevertheless: the file, its choices and what was loaded of them stay as they were, all other values
// are stored.
SettingsOutcome AcceptSettings(const Context& context, SettingsForm& form, Path& ecf, ProjectConfig& config);

// Keeps what the controls hold among the sets, under the name that was typed. A name, file, version or port
// that cannot be keeps them as they are, after a message; then the field of it.
SettingsField KeepSettingsSet(const Context& context, SettingsForm& form, std::vector<OptionSet>& sets,
                              const std::string& typed);
// The controls take what the set holds. False after a message; then they hold what they did.
bool TakeSettingsSet(const Context& context, SettingsForm& form, const OptionSet& set);

// To be called whenever the dialog has closed, by OK or not: the settings that a dialog stores.
void StoreSettingsForm(const SettingsStore& store, const SettingsForm& form, const Path& ecf,
                       const ProjectConfig& config);

}  // namespace vexa
