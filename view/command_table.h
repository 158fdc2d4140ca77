// The commands of the editor, once: a row each. Menus, pop-ups, toolbar, keys, greying, check marks and tips
// are made from these rows (view/menu_table.h); the window program adds the functions.
//
// A text holds the access key behind '&'; the name of the row's key is put behind it where the text is shown.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "config/ecf.h"

namespace vexa {

enum CommandId : uint16_t {
  kNoCommand = 0,
  kCmdNew = 40000,
  kCmdOpen = 40001,
  kCmdSave = 40002,
  kCmdSaveAs = 40003,
  kCmdClose = 40006,
  kCmdExit = 40007,
  kCmdContents = 40008,
  kCmdAbout = 40009,
  kCmdSdbInformation = 40010,
  kCmdInformation = 40011,
  kCmdSort = 40012,
  kCmdUndo = 40013,
  kCmdDefaultValues = 40014,
  kCmdSettings = 40015,
  kCmdColour = 40016,
  kCmdUploadAdb = 40020,
  kCmdUploadSdb = 40021,
  kCmdDownload = 40022,
  kCmdTextFile = 40023,
  kCmdImportSatcodx = 40024,
  kCmdImportDvb2000 = 40025,
  kCmdImportLyngsat = 40026,
  kCmdMergeSatcodx = 40027,
  kCmdMergeDvb2000 = 40028,
  kCmdMergeLyngsat = 40029,
  kCmdMergeSdb = 40030,
  kCmdPortload = 40031,
  kCmdConsoleUpload = 40032,
  kCmdConsoleSaveLog = 40033,
  kCmdConsoleClear = 40034,
  kCmdConsoleCancel = 40035,
  kCmdConsoleClose = 40036,
  kCmdSingleImage = 40037,
  kCmdMultipleImage = 40038,
  kCmdCompression = 40039,
  kCmdCompressBin = 40040,
  kCmdRecent1 = 40041,
  kCmdRecent2 = 40042,
  kCmdRecent3 = 40043,
  kCmdRecent4 = 40044,
  kCmdBin2Urt = 40137,
  kCmdConnect = 40138,
  // Identifiers from here on are free for new commands.
  kCmdRedo = 40200,
  kCmdFind = 40201,
  kCmdFindNext = 40202,
  kCmdCascade = 40203,
  kCmdTileHorizontally = 40204,
  kCmdTileVertically = 40205,
  kCmdFindPrevious = 40206,
  kCmdCheck = 40207,
  kCmdViewTv = 40210,
  kCmdViewRadio = 40211,
  kCmdViewBoth = 40212,
  kCmdViewCarriers = 40213,
  kCmdViewServices = 40214,
  kCmdEdit = 40220,
  kCmdAdd = 40221,
  kCmdInsert = 40222,
  kCmdDelete = 40223,
  kCmdMove = 40224,
  kCmdSwap = 40225,
  kCmdSelectAll = 40226,
  kCmdInvertSelection = 40227,
  kCmdCompressSdb = 40230,
  kCmdSaveSdb = 40231,
  kCmdUploadThisSdb = 40232,
  kCmdExportSdb = 40233,
  kCmdSaveSatellites = 40234,
  kCmdSaveParts = 40235,
  kCmdVersion = 40236,
  kCmdRevert = 40237,
  kCmdUpdateFromTable = 40238,
  kCmdRestore = 40240,
  kCmdProduction = 40241,
  kCmdImportVdr = 40242,
  kCmdImportLamedb = 40243,
  kCmdImportDvbv5 = 40244,
  kCmdSelectDuplicates = 40245,
  kCmdHtmlPage = 40250,
  kCmdPicture = 40251,
  kCmdFilter = 40300,
  kCmdCompare = 40301,
  kCmdOrderLike = 40302,
  kCmdUseOrder = 40303,
  kCmdGoToService = 40304,
  kCmdCut = 40305,
  kCmdCopy = 40306,
  kCmdPaste = 40307,
  kCmdConsoleFind = 40280,
  kCmdConsoleFindNext = 40281,
  kCmdConsoleHexadecimalView = 40282,
  kCmdConsoleHexadecimalInput = 40283,
  kCmdConsoleTimeStamps = 40284,
  kCmdConsoleReconnect = 40285,
  kCmdConsoleSendCr = 40286,
  kCmdConsoleSendLf = 40287,
  kCmdConsoleSendCrLf = 40288,
  kCmdConsoleSendNothing = 40289,
  kCmdConsoleCopy = 40290,
  kCmdConsoleSelectAll = 40291,
};

// What must be there for a command to be enabled; all of them. What the configuration must hold is asked when
// the command runs (view/command_needs.h).
enum Need : uint32_t {
  kNeedsNothing = 0,
  kNeedsEditor = 1 << 0,            // a database window is active
  kNeedsConsole = 1 << 1,           // the uploader console is active
  kNeedsSdb = 1 << 2,               // an SDB, or one of its records, is selected
  kNeedsRows = 1 << 3,              // the list shows records
  kNeedsSatellite = 1 << 4,         // a satellite is selected
  kNeedsUndo = 1 << 5,              // there is a change to take back
  kNeedsRedo = 1 << 6,              // there is a change to bring back
  kNeedsConnection = 1 << 9,        // the console's port is open
  kNeedsConsoleUpload = 1 << 10,    // the console uploads
  kNeedsNoConsoleUpload = 1 << 11,  // it does not
  kNeedsLogSelection = 1 << 18,     // a part of its log is selected
  // What is selected is of a kind ...
  kNeedsEditable = 1 << 12,    // that a dialog changes
  kNeedsAddable = 1 << 13,     // to which another one can be added
  kNeedsInsertable = 1 << 14,  // before which another one can be inserted
  kNeedsDeletable = 1 << 15,
  kNeedsMovable = 1 << 16,
  kNeedsViews = 1 << 17,        // whose list the view commands change
  kNeedsCarrierView = 1 << 19,  // that holds carriers
  kNeedsRowOrder = 1 << 20,     // whose list is in the order of a column
  kNeedsEntry = 1 << 21,        // that names a service: an entry of a favourite list
  kNeedsDetails = 1 << 22,      // of which more is known than a row tells
};

enum KeyModifier : uint8_t { kCtrl = 1, kAlt = 2, kShift = 4 };
// Keys are named by the virtual key codes of the window system: letters and digits by themselves.
inline constexpr uint16_t kKeyF1 = 0x70;
constexpr uint16_t KeyF(int number) {
  return static_cast<uint16_t>(kKeyF1 + number - 1);
}
inline constexpr uint16_t kKeyEnter = 0x0D, kKeyEscape = 0x1B, kKeyInsert = 0x2D, kKeyDelete = 0x2E;

// Where a key is the command's.
enum class KeyScope : uint8_t {
  kEverywhere,
  kDatabase,    // while a database window is active: elsewhere Alt and a letter open menus
  kRecords,     // in the tree and the list of a database window
  kList,        // in its list
  kConsole,     // in all controls of the console
  kConsoleLog,  // in its log
};

struct Key {
  uint16_t code = 0;  // 0: none
  uint8_t modifiers = 0;
  KeyScope scope = KeyScope::kEverywhere;
};

// Commands that stand together in menus, in the order of their rows, between the same lines. Menus are made
// of blocks: a row with a block stands in every menu that has it.
enum class Block : uint8_t {
  kNone,
  kNewOpen,
  kSave,
  kImport,
  kMerge,
  kMergeSdb,
  kExport,
  kFileInformation,
  kRecentFiles,
  kExit,
  kUndo,
  kEdit,
  kClipboard,
  kMove,
  kSelect,
  kSaveSatellites,
  kSdb,
  kSearch,
  kInformation,
  kWholeDatabase,
  kViews,
  kPicture,
  kUpload,
  kDownload,
  kPortload,
  kOptions,
  kUrt,
  kCompression,
  kWindows,
  kHelp,
  kConnection,
  kLogFile,
  kLogSelection,
  kLogSearch,
  kConsoleOptions,
  kLineEnding,
  kCloseConsole,
};

enum class MenuName : uint8_t {
  kFrame,
  kEditor,
  kConsole,
  kImport,  // drop-downs of the toolbar
  kMerge,
  kUpload,
  kUrt,
  kConsoleLog,  // pop-up of the console's log
  kRecord,      // pop-ups of the editor window
  kService,
  kSdb,
  kLnbLevel,
  kSatelliteLevel,
  kCarrierLevel,
};

struct WindowState;  // view/window_state.h
using CommandTest = bool (*)(const WindowState&);

// Its button of the toolbar.
struct CommandButton {
  int place = 0;    // ascending from left to right, a gap where the tens change; 0: no button
  int picture = 0;  // in the strip of toolbar pictures, from 0
  MenuName drop_down = MenuName::kFrame;  // the menu that it opens beside its command; kFrame: none
  int other_picture = 0;                  // while `has_other_picture` holds
  CommandTest has_other_picture = nullptr;
};

struct CommandInfo {
  CommandId id = kNoCommand;
  const char* text = "";
  Key key = {};
  const char* shown_key = nullptr;  // stands behind the text instead of the key's name, and works nowhere
  uint32_t needs = kNeedsNothing;   // `Need` bits
  Facilities asks = {};             // of the configuration, when it runs
  const char* tip = "";             // status line and tool tip
  Block block = Block::kNone;
  CommandButton button = {};
  CommandTest checked = nullptr;
  const char* other_text = nullptr;  // while `has_other_text` holds
  CommandTest has_other_text = nullptr;
  CommandId in_console = kNoCommand;  // what its key and its button do while the console is active
};

// The whole table; it belongs to the program.
std::span<const CommandInfo> Commands();
// The row of a command's identifier; nullptr: there is none.
const CommandInfo* FindCommand(uint32_t id);

// Whether all is there that the command needs; `present`: what is there, as `Need` bits.
bool CommandEnabled(const CommandInfo& command, uint32_t present);
// In words, for the status line: "Needs an open database." Empty when all is there.
std::string MissingNeeds(const CommandInfo& command, uint32_t present);
// Whether its menu item has a check mark.
bool CommandChecked(const CommandInfo& command, const WindowState& state);
// As a menu shows it: the text, and behind a tab the key as the user reads it.
std::string MenuText(const CommandInfo& command, const WindowState& state);
// The same as long as nothing has happened.
std::string MenuText(const CommandInfo& command);
// The key as the user reads it: the command's own, or the one of the command whose place it takes in the
// console.
std::string ShownKey(const CommandInfo& command);

// As the tip of a button: what the command does and its key, "Save the database (Ctrl+S)".
std::string ToolTip(const CommandInfo& command);

// "Ctrl+N", "Shift+F4", "Ins"; empty for no key.
std::string KeyName(const Key& key);
// The command whose key this is in that scope itself, not in a wider one; kNoCommand: none.
CommandId CommandOfKey(KeyScope scope, uint16_t code, uint8_t modifiers);

}  // namespace vexa
