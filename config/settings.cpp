#include "config/settings.h"

#include <algorithm>
#include <sstream>
#include <system_error>
#include <utility>

#include "config/ecf.h"
#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

// The name of the path under its two subkeys.
constexpr const char* kFileName = "FileName";

// The values of the other subkeys but "Defaults"; a row without a default leaves it to the structure that the
// value is read into.
struct SettingRow {
  const char* subkey;
  const char* name;
  const char* standard;  // the default; nullptr: none
};
constexpr SettingRow kSettings[] = {
    {kPortSettingsKey, "Port", "COM1"},
    {kPortSettingsKey, "BaudRate", "12"},
    {kPortSettingsKey, "DataBits", "4"},
    {kPortSettingsKey, "Parity", "0"},
    {kPortSettingsKey, "StopBits", "0"},
    {kPortSettingsKey, "SDBFormat", "1"},
    {kColourKey, "ActSatellite", "65793"},    // almost black
    {kColourKey, "InactSatellite", "37120"},  // green
    {kColourKey, "ActCarrier", "65793"},
    {kColourKey, "InactCarrier", "16711680"},  // blue
    {kColourKey, "TVService", "8388863"},      // red-violet
    {kColourKey, "RadioService", "16711808"},  // violet
    {kColourKey, "FGLActive", "65793"},
    {kColourKey, "FGLInactive", "9868950"},  // grey
    {kRecentlyKey, "1", nullptr},
    {kRecentlyKey, "2", nullptr},
    {kRecentlyKey, "3", nullptr},
    {kRecentlyKey, "4", nullptr},
    {kWindowKey, "Left", nullptr},
    {kWindowKey, "Top", nullptr},
    {kWindowKey, "Width", nullptr},
    {kWindowKey, "Height", nullptr},
    {kWindowKey, "TreeWidth", nullptr},
    // Widths of columns, in the order of ColumnSet: numbers between blanks.
    {kWindowKey, "DetailColumns", nullptr},
    {kWindowKey, "LnbColumns", nullptr},
    {kWindowKey, "SatelliteColumns", nullptr},
    {kWindowKey, "CarrierColumns", nullptr},
    {kWindowKey, "ServiceColumns", nullptr},
    {kWindowKey, "FavouriteColumns", nullptr},
    {kWindowKey, "UbiColumns", nullptr},
    {kWindowKey, "SdbServiceColumns", nullptr},
    // Columns from left to right, by their places in the list's own order.
    {kWindowKey, "DetailOrder", nullptr},
    {kWindowKey, "LnbOrder", nullptr},
    {kWindowKey, "SatelliteOrder", nullptr},
    {kWindowKey, "CarrierOrder", nullptr},
    {kWindowKey, "ServiceOrder", nullptr},
    {kWindowKey, "FavouriteOrder", nullptr},
    {kWindowKey, "UbiOrder", nullptr},
    {kWindowKey, "SdbServiceOrder", nullptr},
    {kWindowKey, "PictureHeight", nullptr},
    {kConsoleKey, "HexadecimalView", "0"},
    {kConsoleKey, "TimeStamps", "0"},
    {kConsoleKey, "ConnectAgain", "0"},
    {kConsoleKey, "LineEnding", "0"},
    {kTransferKey, "VerifyUploads", "0"},
    {kTransferKey, "KeepCopies", "0"},
    {kTransferKey, "CopyFolder", ""},
    {kProductionKey, "Database", ""},
    {kProductionKey, "Sdb", "1"},
    {kProductionKey, "Log", ""},
    {kProductionKey, "Ports", ""},
    {kProductionKey, "KeepCopies", "0"},
    {kProductionKey, "Set", ""},
    {kNamesKey, "CodePage", "Windows-1252"},
    {kPlaceKey, "Latitude", ""},
    {kPlaceKey, "Longitude", ""},
};

constexpr size_t CountOf(std::string_view subkey) {
  size_t count = 0;
  for (const SettingRow& row : kSettings) count += row.subkey == subkey;
  return count;
}
static_assert(CountOf(kColourKey) == kColourRoles && CountOf(kRecentlyKey) == kRecentFiles);

// Rows of one subkey, in the table's order.
std::vector<const SettingRow*> RowsOf(std::string_view subkey) {
  std::vector<const SettingRow*> rows;
  for (const SettingRow& row : kSettings) {
    if (row.subkey == subkey) rows.push_back(&row);
  }
  return rows;
}

// The serial values that are indices, in the order of their rows behind "Port".
struct PortIndex {
  uint8_t ProjectConfig::*member;
  size_t count;
};
constexpr PortIndex kPortIndices[] = {
    {&ProjectConfig::baud_index, kLineSpeeds.size()},
    {&ProjectConfig::data_bits_index, kDataBits.size()},
    {&ProjectConfig::parity_index, kParities.size()},
    {&ProjectConfig::stop_bits_index, kStopBits.size()},
    {&ProjectConfig::sdb_format, 2},
};
static_assert(CountOf(kPortSettingsKey) == 1 + std::size(kPortIndices));

void ReadPortSettings(const SettingsStore& store, const std::string& key, ProjectConfig& config) {
  const auto rows = RowsOf(kPortSettingsKey);
  const auto port = store.read(key, rows[0]->name);
  config.port_name = port && IsPortName(*port) ? *port : rows[0]->standard;
  for (size_t i = 0; i < std::size(kPortIndices); ++i) {
    const auto text = store.read(key, rows[i + 1]->name);
    const int64_t value = text ? DecimalValue(*text) : -1;
    const bool fits = value >= 0 && static_cast<uint64_t>(value) < kPortIndices[i].count;
    config.*kPortIndices[i].member = static_cast<uint8_t>(fits ? value : DecimalValue(rows[i + 1]->standard));
  }
}

void WritePortSettings(const SettingsStore& store, const std::string& key, const ProjectConfig& config) {
  const auto rows = RowsOf(kPortSettingsKey);
  store.write(key, rows[0]->name, config.port_name);
  for (size_t i = 0; i < std::size(kPortIndices); ++i) {
    store.write(key, rows[i + 1]->name, std::to_string(config.*kPortIndices[i].member));
  }
}

void WritePortDefaults(const SettingsStore& store, const std::string& key) {
  for (const SettingRow* row : RowsOf(kPortSettingsKey)) store.write(key, row->name, row->standard);
}

bool IsListed(const Path& file) {
  return SmallLetters(Utf8FromPath(file.extension())) == u".ecf";
}

std::vector<Path> ConfigurationFilesOf(const Path& folder) {
  std::vector<std::pair<std::u16string, Path>> named;
  std::vector<Path> names;
  ListFolder(folder, names);
  for (const Path& name : names) {
    if (IsListed(name)) named.emplace_back(SmallLetters(Utf8FromPath(name)), folder / name);
  }
  std::sort(named.begin(), named.end());
  std::vector<Path> files;
  files.reserve(named.size());
  for (auto& [name, path] : named) files.push_back(std::move(path));
  return files;
}

// A field of the default records: 0 to `highest`.
struct DefaultField {
  const char* name;
  uint32_t highest;
  uint32_t (*get)(const DefaultRecords&);
  void (*set)(DefaultRecords&, uint32_t);
};

#define VEXA_DEFAULT_FIELD(name, highest, path, mask)                          \
  {                                                                            \
    name, highest, [](const DefaultRecords& r) -> uint32_t { return r.path; }, \
        [](DefaultRecords& r, uint32_t value) { r.path = value & (mask); }     \
  }
constexpr DefaultField kDefaultFields[] = {
    VEXA_DEFAULT_FIELD("LnbFrequency1", 16383, lnb.frequency1, 0x3FFF),
    VEXA_DEFAULT_FIELD("LnbFrequency2", 16383, lnb.frequency2, 0x3FFF),
    VEXA_DEFAULT_FIELD("LnbType", 3, lnb.type, 3),
    VEXA_DEFAULT_FIELD("LnbPower", 1, lnb.power, 1),
    VEXA_DEFAULT_FIELD("LnbTone", 2, lnb.tone_22khz, 3),
    VEXA_DEFAULT_FIELD("LnbSwitchType", 2, lnb.switch_type, 3),
    VEXA_DEFAULT_FIELD("LnbDiseqc", 4, lnb.diseqc_switch, 7),
    VEXA_DEFAULT_FIELD("LnbSwitch", 16, lnb.plain_switch, 31),
    VEXA_DEFAULT_FIELD("LnbToneBurst", 2, lnb.tone_burst_switch, 3),
    VEXA_DEFAULT_FIELD("LnbMotor", 1, lnb.motor, 1),
    VEXA_DEFAULT_FIELD("SatelliteLnb", 15, satellite.lnb_index, 0xFF),
    VEXA_DEFAULT_FIELD("SatellitePosition", 64, satellite.position, 0xFF),
    VEXA_DEFAULT_FIELD("SatelliteAngle", 3609, satellite.angle, 0xFFF),
    VEXA_DEFAULT_FIELD("SatelliteEast", 1, satellite.east, 1),
    VEXA_DEFAULT_FIELD("SatelliteUser", 1, satellite.user, 1),
    VEXA_DEFAULT_FIELD("CarrierFrequency", 99999, carrier.frequency, 0xFFFFFFFF),
    VEXA_DEFAULT_FIELD("CarrierSymbolRate", 45000, carrier.symbol_rate, 0xFFFFFF),
    VEXA_DEFAULT_FIELD("CarrierPolarization", 3, carrier.polarization, 3),
    VEXA_DEFAULT_FIELD("CarrierFec", 5, carrier.fec, 7),
    VEXA_DEFAULT_FIELD("CarrierUser", 1, carrier.user, 1),
    VEXA_DEFAULT_FIELD("ServiceType", 2, service.type, 3),
    VEXA_DEFAULT_FIELD("ServiceFree", 1, service.free, 1),
    VEXA_DEFAULT_FIELD("ServiceVideoPid", 8192, service.video_pid, 0x3FFF),
    VEXA_DEFAULT_FIELD("ServiceAudioPid", 8192, service.audio_pid, 0x3FFF),
    VEXA_DEFAULT_FIELD("ServicePcrPid", 8192, service.pcr_pid, 0x3FFF),
};
#undef VEXA_DEFAULT_FIELD

}  // namespace

std::string SettingsKey(const char* subkey) {
  return Format("Software\\QMV\\VexaEditor\\%s\\Version%d.%d.%d\\", kProjectId, kVersionMajor, kVersionMinor,
                kVersionBuild) +
         subkey;
}

std::u16string SmallLetters(const std::string& text) {
  std::u16string small = Utf16FromUtf8(text);
  std::transform(small.begin(), small.end(), small.begin(),
                 [](char16_t c) { return static_cast<char16_t>(SmallLetter(c)); });
  return small;
}

bool IsPortName(const std::string& name) {
  const size_t characters = Utf16FromUtf8(name).size();
  return characters >= 1 && characters <= kPortNameSize;
}

std::string LineSpeedText(size_t index) {
  return std::to_string(kLineSpeeds[index < kLineSpeeds.size() ? index : ProjectConfig().baud_index]);
}

std::vector<std::string> OfferedLineSpeedTexts() {
  std::vector<std::string> texts;
  texts.reserve(kOfferedLineSpeeds);
  for (size_t i = 0; i < kOfferedLineSpeeds; ++i) texts.push_back(LineSpeedText(i));
  return texts;
}

std::vector<std::string> PortChoices(const std::vector<SerialPortInfo>& there) {
  std::vector<SerialPortInfo> ports;
  ports.reserve(std::size(kPortNames) + there.size());
  for (const char* name : kPortNames) ports.push_back({name, ""});
  for (const SerialPortInfo& port : there) {
    const auto known =
        std::find_if(ports.begin(), ports.end(), [&](const auto& p) { return p.name == port.name; });
    if (known != ports.end()) {
      known->description = port.description;
    } else if (IsPortName(port.name)) {
      ports.push_back(port);
    }
  }
  std::vector<std::string> choices;
  choices.reserve(ports.size());
  for (const SerialPortInfo& port : ports)
    choices.push_back(port.description.empty() ? port.name : port.name + "  " + port.description);
  return choices;
}

std::string PortNameIn(const std::string& choice) {
  return choice.substr(0, choice.find(' '));
}

std::string PortStatusText(const ProjectConfig& config) {
  const ProjectConfig standard;
  const auto entry = [](const auto& list, uint8_t index, uint8_t other) {
    return list[index < list.size() ? index : other];
  };
  const char parity = config.parity_index == 1 ? 'E' : config.parity_index == 2 ? 'O' : 'N';
  return Format("%s %s %s %c %s", config.port_name.c_str(), LineSpeedText(config.baud_index).c_str(),
                entry(kDataBits, config.data_bits_index, standard.data_bits_index), parity,
                entry(kStopBits, config.stop_bits_index, standard.stop_bits_index));
}

int64_t DecimalValue(const std::string& text) {
  size_t i = text.find_first_not_of(" \t\r\n\v\f");
  if (i == std::string::npos) return 0;
  const bool negative = text[i] == '-';
  if (negative || text[i] == '+') ++i;
  int64_t value = 0;
  constexpr int64_t kLargest = int64_t{1} << 40;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = std::min(kLargest, value * 10 + (text[i] - '0'));
  }
  return negative ? -value : value;
}

std::string SettingsReason(const SettingsStore& store, const std::error_code& error) {
  return Reason(Attempt::kKeepSettings, store.place, error);
}

SettingsStore ToldSettings(const SettingsStore& store, const Messages& messages) {
  SettingsStore told = store;
  const auto once = std::make_shared<bool>(false);
  told.write = [store, messages, once](const std::string& key, const std::string& name,
                                       const std::string& value) {
    const Outcome written = store.write(key, name, value);
    if (!written && !std::exchange(*once, true)) {
      TellWhy(messages, Icon::kWarning, SettingsReason(store, written.error),
              "The settings could not be kept for the next start.");
    }
    return written;
  };
  return told;
}

Outcome LoadPortSettings(const SettingsStore& store, ProjectConfig& config) {
  const std::string key = SettingsKey(kPortSettingsKey);
  const OpenedKey opened = store.open(key);
  if (opened == KeyState::kUnavailable) return opened.error;
  if (opened == KeyState::kCreated) WritePortDefaults(store, key);
  ReadPortSettings(store, key, config);
  return true;
}

bool SavePortSettings(const SettingsStore& store, const ProjectConfig& config) {
  const std::string key = SettingsKey(kPortSettingsKey);
  const KeyState state = store.open(key);
  if (state == KeyState::kUnavailable) return false;
  // A key that was not there gets the defaults even now, whatever the dialog held.
  if (state == KeyState::kCreated) {
    WritePortDefaults(store, key);
  } else {
    WritePortSettings(store, key, config);
  }
  return true;
}

std::optional<Path> FindConfigurationFile(const SettingsStore& store, const Path& folder) {
  const std::string key = SettingsKey(kConfigurationKey);
  if (store.open(key) == KeyState::kExisted) {
    const auto stored = store.read(key, kFileName);
    if (stored && !stored->empty() && IsEcfFile(PathFromUtf8(*stored))) return PathFromUtf8(*stored);
  }
  for (const Path& file : ConfigurationFilesOf(folder)) {
    if (IsEcfFile(file)) return file;
  }
  return std::nullopt;
}

void SaveConfigurationPaths(const SettingsStore& store, const Path& current, const std::string& entered) {
  if (!entered.empty()) {
    const std::string key = SettingsKey(kParserKey);
    store.open(key);
    store.write(key, kFileName, entered);
  }
  const std::string key = SettingsKey(kConfigurationKey);
  store.open(key);
  store.write(key, kFileName, Utf8FromPath(current));
}

RecentFiles LoadRecentFiles(const SettingsStore& store) {
  RecentFiles recent;
  const std::string key = SettingsKey(kRecentlyKey);
  recent.key_existed = store.open(key) == KeyState::kExisted;
  if (!recent.key_existed) return recent;
  for (const SettingRow* row : RowsOf(kRecentlyKey)) {
    const auto path = store.read(key, row->name);
    if (path && !path->empty()) recent.paths.push_back(*path);
  }
  return recent;
}

void AddRecentFile(RecentFiles& recent, const std::string& path) {
  if (path.empty()) return;
  std::erase_if(recent.paths,
                [&](const std::string& listed) { return SmallLetters(listed) == SmallLetters(path); });
  recent.paths.insert(recent.paths.begin(), path);
  if (recent.paths.size() > kRecentFiles) recent.paths.resize(kRecentFiles);
}

void SaveRecentFiles(const SettingsStore& store, const RecentFiles& recent) {
  if (!recent.key_existed) return;
  const std::string key = SettingsKey(kRecentlyKey);
  store.open(key);
  size_t position = 0;
  for (const SettingRow* row : RowsOf(kRecentlyKey)) {
    store.write(key, row->name, position < recent.paths.size() ? recent.paths[position] : "");
    ++position;
  }
}

std::string RecentFileItem(const RecentFiles& recent, size_t position) {
  std::string item = Format("&%d ", static_cast<int>(position + 1));
  for (const char each : recent.paths.at(position)) item.append(each == '&' ? 2 : 1, each);
  return item;
}

EditorColourTable DefaultColours() {
  EditorColourTable colours{};
  const auto rows = RowsOf(kColourKey);
  for (size_t i = 0; i < colours.size(); ++i)
    colours[i] = static_cast<uint32_t>(DecimalValue(rows[i]->standard));
  return colours;
}

EditorColourTable LoadColours(const SettingsStore& store) {
  EditorColourTable colours = DefaultColours();
  const std::string key = SettingsKey(kColourKey);
  if (store.open(key) != KeyState::kExisted) return colours;
  const auto rows = RowsOf(kColourKey);
  for (size_t i = 0; i < colours.size(); ++i) {
    const auto text = store.read(key, rows[i]->name);
    const int64_t value = text ? DecimalValue(*text) : -1;
    if (value >= 0 && value <= 0xFFFFFF) colours[i] = static_cast<uint32_t>(value);
  }
  return colours;
}

void SaveColours(const SettingsStore& store, const EditorColourTable& colours) {
  const std::string key = SettingsKey(kColourKey);
  store.open(key);
  const auto rows = RowsOf(kColourKey);
  for (size_t i = 0; i < colours.size(); ++i) store.write(key, rows[i]->name, std::to_string(colours[i]));
}

void LoadDefaultRecords(const SettingsStore& store, DefaultRecords& records) {
  const std::string key = SettingsKey(kDefaultsKey);
  if (store.open(key) != KeyState::kExisted) return;
  for (const DefaultField& field : kDefaultFields) {
    const auto text = store.read(key, field.name);
    if (!text || text->empty()) continue;
    const int64_t value = DecimalValue(*text);
    if (value >= 0 && value <= field.highest) field.set(records, static_cast<uint32_t>(value));
  }
}

void SaveDefaultRecords(const SettingsStore& store, const DefaultRecords& records) {
  const std::string key = SettingsKey(kDefaultsKey);
  store.open(key);
  for (const DefaultField& field : kDefaultFields)
    store.write(key, field.name, std::to_string(field.get(records)));
}

namespace {

constexpr int kLongest = 32767;  // what a window coordinate can be
constexpr size_t kMostColumns = 16;

// Nothing when one of them makes no sense.
std::vector<int> NumbersOf(const std::string& text) {
  std::vector<int> numbers;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const int64_t number = DecimalValue(word);
    if (number < 0 || number > kLongest || numbers.size() == kMostColumns) return {};
    numbers.push_back(static_cast<int>(number));
  }
  return numbers;
}

// Nothing when a place is missing or doubled.
std::vector<int> OrderOf(const std::string& text) {
  std::vector<int> order = NumbersOf(text), sorted = order;
  std::sort(sorted.begin(), sorted.end());
  for (size_t i = 0; i < sorted.size(); ++i) {
    if (sorted[i] != static_cast<int>(i)) return {};
  }
  return order;
}

std::string TextOf(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers) text += (text.empty() ? "" : " ") + std::to_string(number);
  return text;
}

constexpr size_t kFirstColumnRow = 5, kFirstOrderRow = kFirstColumnRow + kColumnSets;  // of the subkey's rows
static_assert(CountOf(kWindowKey) == kFirstOrderRow + kColumnSets + 1);

}  // namespace

WindowSettings LoadWindowSettings(const SettingsStore& store) {
  WindowSettings window;
  const std::string key = SettingsKey(kWindowKey);
  if (store.open(key) != KeyState::kExisted) return window;
  const auto rows = RowsOf(kWindowKey);
  const auto number = [&](size_t row, int64_t lowest) -> std::optional<int> {
    const auto text = store.read(key, rows[row]->name);
    if (!text || text->empty()) return std::nullopt;
    const int64_t value = DecimalValue(*text);
    if (value < lowest || value > kLongest) return std::nullopt;
    return static_cast<int>(value);
  };
  const auto left = number(0, -kLongest), top = number(1, -kLongest), width = number(2, 1),
             height = number(3, 1);
  if (left && top && width && height) {
    window.left = *left;
    window.top = *top;
    window.width = *width;
    window.height = *height;
  }
  if (const auto split = number(4, 1)) window.split = *split;
  if (const auto picture = number(rows.size() - 1, 0)) window.picture_height = *picture;
  for (size_t i = 0; i < window.columns.size(); ++i) {
    if (const auto text = store.read(key, rows[kFirstColumnRow + i]->name))
      window.columns[i] = NumbersOf(*text);
    if (const auto text = store.read(key, rows[kFirstOrderRow + i]->name))
      window.column_orders[i] = OrderOf(*text);
  }
  return window;
}

void SaveWindowSettings(const SettingsStore& store, const WindowSettings& window) {
  const std::string key = SettingsKey(kWindowKey);
  store.open(key);
  const auto rows = RowsOf(kWindowKey);
  if (window.width > 0) {
    const int numbers[] = {window.left, window.top, window.width, window.height};
    for (size_t i = 0; i < std::size(numbers); ++i)
      store.write(key, rows[i]->name, std::to_string(numbers[i]));
  }
  store.write(key, rows[kFirstColumnRow - 1]->name, std::to_string(window.split));
  store.write(key, rows.back()->name, std::to_string(window.picture_height));
  for (size_t i = 0; i < window.columns.size(); ++i) {
    if (!window.columns[i].empty())
      store.write(key, rows[kFirstColumnRow + i]->name, TextOf(window.columns[i]));
    if (!window.column_orders[i].empty())
      store.write(key, rows[kFirstOrderRow + i]->name, TextOf(window.column_orders[i]));
  }
}

ConsoleSettings LoadConsoleSettings(const SettingsStore& store) {
  ConsoleSettings console;
  const std::string key = SettingsKey(kConsoleKey);
  if (store.open(key) != KeyState::kExisted) return console;
  const auto rows = RowsOf(kConsoleKey);
  const auto number = [&](size_t row, int64_t limit) {
    const auto text = store.read(key, rows[row]->name);
    const int64_t value = text ? DecimalValue(*text) : -1;
    return static_cast<int>(value >= 0 && value < limit ? value : DecimalValue(rows[row]->standard));
  };
  console.hexadecimal_view = number(0, 2) == 1;
  console.time_stamps = number(1, 2) == 1;
  console.reconnect = number(2, 2) == 1;
  console.line_ending = number(3, kLineEndings);
  return console;
}

void SaveConsoleSettings(const SettingsStore& store, const ConsoleSettings& console) {
  const std::string key = SettingsKey(kConsoleKey);
  store.open(key);
  const auto rows = RowsOf(kConsoleKey);
  const int numbers[] = {console.hexadecimal_view, console.time_stamps, console.reconnect,
                         console.line_ending};
  for (size_t i = 0; i < std::size(numbers); ++i) store.write(key, rows[i]->name, std::to_string(numbers[i]));
}

namespace {

// The texts of a subkey, in the order of its rows; the defaults of those that are not there.
std::vector<std::string> LoadTexts(const SettingsStore& store, const char* subkey) {
  const std::string key = SettingsKey(subkey);
  const bool there = store.open(key) == KeyState::kExisted;
  std::vector<std::string> texts;
  for (const SettingRow* row : RowsOf(subkey)) {
    const auto text = there ? store.read(key, row->name) : std::nullopt;
    texts.push_back(text.value_or(row->standard));
  }
  return texts;
}

void SaveTexts(const SettingsStore& store, const char* subkey, const std::vector<std::string>& texts) {
  const std::string key = SettingsKey(subkey);
  store.open(key);
  const auto rows = RowsOf(subkey);
  for (size_t i = 0; i < rows.size(); ++i) store.write(key, rows[i]->name, texts[i]);
}

std::string FlagText(bool set) {
  return set ? "1" : "0";
}

}  // namespace

TransferSettings LoadTransferSettings(const SettingsStore& store) {
  const auto texts = LoadTexts(store, kTransferKey);
  return {texts[0] == "1", texts[1] == "1", texts[2]};
}

void SaveTransferSettings(const SettingsStore& store, const TransferSettings& transfer) {
  SaveTexts(store, kTransferKey,
            {FlagText(transfer.verify), FlagText(transfer.keep_copy), transfer.copy_folder});
}

ProductionSettings LoadProductionSettings(const SettingsStore& store) {
  const auto texts = LoadTexts(store, kProductionKey);
  return {texts[0], texts[1], texts[2], texts[3], texts[4] == "1", texts[5]};
}

void SaveProductionSettings(const SettingsStore& store, const ProductionSettings& production) {
  SaveTexts(store, kProductionKey,
            {production.database, production.sdb, production.log, production.ports,
             FlagText(production.keep_copy), production.set});
}

PlaceSettings LoadPlaceSettings(const SettingsStore& store) {
  const auto texts = LoadTexts(store, kPlaceKey);
  return {texts[0], texts[1]};
}

void SavePlaceSettings(const SettingsStore& store, const PlaceSettings& place) {
  SaveTexts(store, kPlaceKey, {place.latitude, place.longitude});
}

const CodePage& LoadNamesPage(const SettingsStore& store) {
  const std::string key = SettingsKey(kNamesKey);
  const SettingRow& row = *RowsOf(kNamesKey)[0];
  const bool there = store.open(key) == KeyState::kExisted;
  const CodePage* page = there ? FindCodePage(store.read(key, row.name).value_or("")) : nullptr;
  return page ? *page : *FindCodePage(row.standard);
}

void SaveNamesPage(const SettingsStore& store, const CodePage& page) {
  const std::string key = SettingsKey(kNamesKey);
  store.open(key);
  store.write(key, RowsOf(kNamesKey)[0]->name, page.name);
}

}  // namespace vexa
