// What the program remembers of its user between runs, and where.
//
// Every value stands once in the tables of settings.cpp. Values are strings; numbers are decimal text. Each
// subkey hangs below a key that names the version, so that settings of another version never mix. What cannot
// be read keeps its default, silently; what cannot be written is lost, and told where the store is one of
// ToldSettings.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "core/database.h"
#include "core/messages.h"
#include "generated/version.h"
#include "platform/code_page.h"
#include "platform/serial.h"
#include "platform/settings_store.h"

namespace vexa {

// The program's identity.
inline constexpr const char* kProjectId = "VEXA";
inline constexpr int kVersionMajor = VEXA_VERSION_MAJOR, kVersionMinor = VEXA_VERSION_MINOR,
                     kVersionBuild = VEXA_VERSION_BUILD;

// Full key of a subkey, relative to the current user.
std::string SettingsKey(const char* subkey);

// Subkeys.
inline constexpr const char* kConfigurationKey = "Configuration";
inline constexpr const char* kParserKey = "Parser";
inline constexpr const char* kPortSettingsKey = "PortSettings";
inline constexpr const char* kColourKey = "Color";
inline constexpr const char* kRecentlyKey = "Recently";
inline constexpr const char* kDefaultsKey = "Defaults";
inline constexpr const char* kWindowKey = "Window";
inline constexpr const char* kConsoleKey = "Console";
inline constexpr const char* kTransferKey = "Transfer";
inline constexpr const char* kPlaceKey = "Place";
inline constexpr const char* kProductionKey = "Production";
inline constexpr const char* kSetsKey = "Sets";
inline constexpr const char* kNamesKey = "Names";

inline constexpr std::array kPortNames = {"COM1", "COM2", "COM3", "COM4"};

inline constexpr size_t kPortNameSize = 5;  // characters
// The name of a port, UTF-8, has 1 to kPortNameSize characters.
bool IsPortName(const std::string& name);
// The speed of a stored index in decimal digits; one beyond the list shows as the default.
std::string LineSpeedText(size_t index);
// The texts of the speeds that are offered, in their order.
std::vector<std::string> OfferedLineSpeedTexts();

// What the list of ports offers: kPortNames and whatever else `there` has, each with its friendly name beside
// it.
std::vector<std::string> PortChoices(const std::vector<SerialPortInfo>& there);
// The name in a line of that list, or in what was typed.
std::string PortNameIn(const std::string& choice);

// The text with the small letters of the scripts that Windows-1252, Greek and Cyrillic names use, for
// comparing without regard to case.
std::u16string SmallLetters(const std::string& text);

// "COM1 115200 8 N 1", the console's status line. An index beyond its list shows as the list's default.
std::string PortStatusText(const ProjectConfig& config);

// Text to integer: blanks, a sign, digits; 0 for anything else. Saturates.
int64_t DecimalValue(const std::string& text);

// The store, whose first write that fails is told; what follows fails of the same cause.
SettingsStore ToldSettings(const SettingsStore& store, const Messages& messages);
// Where the store is and why the system refuses it, for the user in one line.
std::string SettingsReason(const SettingsStore& store, const std::error_code& error);

// At the start: a new key gets the defaults, an old one is read into `config` (an index beyond its list
// counts as not readable). Not done when the key can neither be opened nor created.
Outcome LoadPortSettings(const SettingsStore& store, ProjectConfig& config);
// When the configuration dialog has closed: an old key gets the values of `config`, a new one the defaults.
bool SavePortSettings(const SettingsStore& store, const ProjectConfig& config);

// The configuration file: the stored path when it is a configuration file, else the first "*.ecf" of `folder`
// that is one, in name order without regard to case. Silent. Nothing: the user must choose.
std::optional<Path> FindConfigurationFile(const SettingsStore& store, const Path& folder);
// `entered` is what the configuration dialog's edit last held, UTF-8; empty: the dialog was not used.
void SaveConfigurationPaths(const SettingsStore& store, const Path& current, const std::string& entered);

inline constexpr size_t kRecentFiles = 4;

struct RecentFiles {
  std::vector<std::string> paths;  // UTF-8, newest first
  bool key_existed = false;        // before this run: only then they are written
};
// As they were kept; none when the key was not there.
RecentFiles LoadRecentFiles(const SettingsStore& store);
// Puts the path on top; one that is listed already (case ignored) moves there.
void AddRecentFile(RecentFiles& recent, const std::string& path);
// Only when their key was there at the start of this run.
void SaveRecentFiles(const SettingsStore& store, const RecentFiles& recent);
// The menu item "&1 path", in which an '&' of the path is doubled; `position` from 0.
std::string RecentFileItem(const RecentFiles& recent, size_t position);

// The colours that the user chooses, in the order of the settings.
enum class ColourRole : uint8_t {
  kActiveSatellite,
  kInactiveSatellite,
  kActiveCarrier,
  kInactiveCarrier,
  kTvService,
  kRadioService,
  kActiveFavourite,
  kInactiveFavourite,
  kPlain,  // the system's text colour
};
inline constexpr size_t kColourRoles = 8;
// As 0x00BBGGRR, by ColourRole.
using EditorColourTable = std::array<uint32_t, kColourRoles>;
// The colours before the user chose any.
EditorColourTable DefaultColours();
// The kept ones; a value above 0xFFFFFF counts as not readable.
EditorColourTable LoadColours(const SettingsStore& store);
void SaveColours(const SettingsStore& store, const EditorColourTable& colours);

// The records that new ones start from. A stored value that its field cannot hold counts as not readable.
void LoadDefaultRecords(const SettingsStore& store, DefaultRecords& records);
void SaveDefaultRecords(const SettingsStore& store, const DefaultRecords& records);

// Lists with the same columns, for what is kept of each between runs.
enum class ColumnSet : uint8_t {
  kDetails,
  kLnbs,
  kSatellites,
  kCarriers,
  kServices,
  kFavourites,
  kUbis,
  kSdbServices,
};
inline constexpr size_t kColumnSets = 8;

// What the windows looked like. Lengths of a database window are kept at 96 dots an inch.
struct WindowSettings {
  // The frame's place while it is not maximised, in screen coordinates; a width of 0: none is known.
  int left = 0, top = 0, width = 0, height = 0;
  int split = 280;                                    // width of the tree
  int picture_height = 0;                             // of the picture below; 0: it is not shown
  std::array<std::vector<int>, kColumnSets> columns;  // widths, by ColumnSet; empty: the standard ones
  // Places of the columns from left to right; empty: as they are made.
  std::array<std::vector<int>, kColumnSets> column_orders;
};
// A value that makes no sense counts as not readable: lengths below 1 or above 32767, a place beyond +-32767,
// an order that is no permutation.
WindowSettings LoadWindowSettings(const SettingsStore& store);
void SaveWindowSettings(const SettingsStore& store, const WindowSettings& window);

// The options of the uploader console that are kept.
inline constexpr int kLineEndings = 4;  // of LineEnding (serial/console_text.h)
struct ConsoleSettings {
  bool hexadecimal_view = false, time_stamps = false, reconnect = false;
  int line_ending = 0;  // place in the list of line endings, below kLineEndings
};
// A line ending beyond its list counts as not readable.
ConsoleSettings LoadConsoleSettings(const SettingsStore& store);
void SaveConsoleSettings(const SettingsStore& store, const ConsoleSettings& console);

// What is done beside an upload of ADB data.
struct TransferSettings {
  bool verify = false;      // the receiver is read back and compared
  bool keep_copy = false;   // what it held is fetched and kept before
  std::string copy_folder;  // where copies are kept, UTF-8; empty: the user has chosen none
};
TransferSettings LoadTransferSettings(const SettingsStore& store);
void SaveTransferSettings(const SettingsStore& store, const TransferSettings& transfer);

// What the window "Production" was last told, as its fields hold it, UTF-8.
struct ProductionSettings {
  std::string database, sdb = "1", log;
  std::string ports;  // names between blanks
  bool keep_copy = false;
  std::string set = {};  // its name; empty: as in the settings
};
ProductionSettings LoadProductionSettings(const SettingsStore& store);
void SaveProductionSettings(const SettingsStore& store, const ProductionSettings& production);

// Where the user is, as text with its letter ("51.5 N"); both empty while it is not known.
struct PlaceSettings {
  std::string latitude, longitude;
};
PlaceSettings LoadPlaceSettings(const SettingsStore& store);
void SavePlaceSettings(const SettingsStore& store, const PlaceSettings& place);

// The page in which the names of databases are shown. A name that no page has counts as not readable.
const CodePage& LoadNamesPage(const SettingsStore& store);
void SaveNamesPage(const SettingsStore& store, const CodePage& page);

}  // namespace vexa
