#include "view/command_table.h"

#include <algorithm>
#include <iterator>

#include "view/window_state.h"

namespace vexa {

namespace {

constexpr Key Ctrl(char letter, KeyScope scope = KeyScope::kEverywhere) {
  return {static_cast<uint16_t>(letter), kCtrl, scope};
}
constexpr Key Alt(char letter) {
  return {static_cast<uint16_t>(letter), kAlt, KeyScope::kDatabase};
}
constexpr Key Shift(uint16_t code) {
  return {code, kShift, KeyScope::kEverywhere};
}
constexpr Key Plain(uint16_t code, KeyScope scope = KeyScope::kEverywhere) {
  return {code, 0, scope};
}

template <bool WindowState::*fact>
bool Holds(const WindowState& state) {
  return state.*fact;
}
template <ListView view>
bool Shows(const WindowState& state) {
  return state.view == view;
}
template <bool ConsoleOptions::*option>
bool ConsoleHas(const WindowState& state) {
  return state.console && (*state.console).*option;
}
template <LineEnding ending>
bool LinesEndWith(const WindowState& state) {
  return state.console && state.console->line_ending == ending;
}

constexpr CommandInfo kCommands[] = {
    {.id = kCmdNew,
     .text = "&New",
     .key = Ctrl('N'),
     .tip = "New database",
     .block = Block::kNewOpen,
     .button = {.place = 10, .picture = 0}},
    {.id = kCmdOpen,
     .text = "&Open",
     .key = Ctrl('O'),
     .tip = "Open a database file",
     .block = Block::kNewOpen,
     .button = {.place = 11, .picture = 1}},

    {.id = kCmdSave,
     .text = "&Save",
     .key = Ctrl('S'),
     .needs = kNeedsEditor,
     .tip = "Save the database",
     .block = Block::kSave,
     .button = {.place = 12, .picture = 2},
     .in_console = kCmdConsoleSaveLog},
    {.id = kCmdSaveAs,
     .text = "Save &As",
     .needs = kNeedsEditor,
     .tip = "Save the database under another name",
     .block = Block::kSave},
    {.id = kCmdSaveParts,
     .text = "Save Par&ts",
     .needs = kNeedsEditor,
     .tip = "Save chosen SDBs and UBIs as another file",
     .block = Block::kSave},
    {.id = kCmdVersion,
     .text = "Database &Version",
     .needs = kNeedsEditor,
     .tip = "Version and initials that the file is saved with",
     .block = Block::kSave},
    {.id = kCmdUpdateFromTable,
     .text = "&Update from Table",
     .needs = kNeedsEditor | kNeedsSdb,
     .tip = "Take over a CSV table that was exported, and changed in a spreadsheet",
     .block = Block::kSave},
    {.id = kCmdClose,
     .text = "&Close",
     .needs = kNeedsEditor,
     .tip = "Close the database",
     .block = Block::kSave},

    {.id = kCmdImportSatcodx,
     .text = "&SatcoDX [ SDX ]",
     .tip = "Import a SatcoDX list",
     .block = Block::kImport,
     .button = {.place = 20, .picture = 3, .drop_down = MenuName::kImport}},
    {.id = kCmdImportDvb2000,
     .text = "&DVB2000 [ DVB ]",
     .tip = "Import a DVB2000 list",
     .block = Block::kImport},
    {.id = kCmdImportLyngsat,
     .text = "&Lyngsat Dat [ DAT ]",
     .tip = "Import a Lyngsat list",
     .block = Block::kImport},
    {.id = kCmdImportVdr,
     .text = "&VDR [ channels.conf ]",
     .tip = "Import a VDR channel list",
     .block = Block::kImport},
    {.id = kCmdImportLamedb,
     .text = "&Enigma2 [ lamedb ]",
     .tip = "Import the services of an Enigma2 receiver",
     .block = Block::kImport},
    {.id = kCmdImportDvbv5,
     .text = "DVBv5 s&can file",
     .tip = "Import the transponders of a DVBv5 scan file",
     .block = Block::kImport},

    {.id = kCmdMergeSatcodx,
     .text = "&SatcoDX [ SDX ]",
     .tip = "Join SatcoDX lists into one",
     .block = Block::kMerge,
     .button = {.place = 21, .picture = 4, .drop_down = MenuName::kMerge}},
    {.id = kCmdMergeDvb2000,
     .text = "&DVB2000 [ DVB ]",
     .tip = "Join DVB2000 lists into one",
     .block = Block::kMerge},
    {.id = kCmdMergeLyngsat,
     .text = "&Lyngsat Dat [ DAT ]",
     .tip = "Join Lyngsat lists into one",
     .block = Block::kMerge},

    {.id = kCmdMergeSdb,
     .text = "&SDB [ BIN ]",
     .needs = kNeedsEditor,
     .tip = "Add the SDBs of other files",
     .block = Block::kMergeSdb},

    {.id = kCmdTextFile,
     .text = "&Text file",
     .shown_key = "Ctrl+E",
     .needs = kNeedsEditor,
     .tip = "Write the database as a text report",
     .block = Block::kExport,
     .button = {.place = 22, .picture = 5}},
    {.id = kCmdHtmlPage,
     .text = "&HTML page",
     .needs = kNeedsEditor,
     .tip = "Write the SDB as a page with its orbit, band plans and tables",
     .block = Block::kExport},

    {.id = kCmdSdbInformation,
     .text = "SDB &Information",
     .key = Plain(KeyF(12)),
     .needs = kNeedsEditor,
     .tip = "Counts and sizes of the database",
     .block = Block::kFileInformation},

    {.id = kCmdRecent1, .text = "&1", .tip = "Open this file", .block = Block::kRecentFiles},
    {.id = kCmdRecent2, .text = "&2", .tip = "Open this file", .block = Block::kRecentFiles},
    {.id = kCmdRecent3, .text = "&3", .tip = "Open this file", .block = Block::kRecentFiles},
    {.id = kCmdRecent4, .text = "&4", .tip = "Open this file", .block = Block::kRecentFiles},

    {.id = kCmdExit, .text = "E&xit", .tip = "End the program", .block = Block::kExit},

    {.id = kCmdUndo,
     .text = "&Undo Sorting",
     .key = Ctrl('Z'),
     .needs = kNeedsEditor | kNeedsUndo,
     .tip = "Take back the last change",
     .block = Block::kUndo,
     .button = {.place = 30, .picture = 6},
     .other_text = "&Undo",
     .has_other_text = Holds<&WindowState::can_undo_other>},
    {.id = kCmdRedo,
     .text = "&Redo",
     .key = Ctrl('Y'),
     .needs = kNeedsEditor | kNeedsRedo,
     .tip = "Bring back what was taken back",
     .block = Block::kUndo,
     .button = {.place = 31, .picture = 7}},
    {.id = kCmdRevert,
     .text = "Revert to Ori&ginal",
     .needs = kNeedsEditor | kNeedsUndo,
     .tip = "Bring back the database as it was opened; Undo takes that back",
     .block = Block::kUndo},

    {.id = kCmdEdit,
     .text = "&Edit",
     .key = Plain(kKeyEnter, KeyScope::kRecords),
     .needs = kNeedsEditor | kNeedsEditable,
     .tip = "Change the selected record",
     .block = Block::kEdit},
    {.id = kCmdAdd,
     .text = "&Add",
     .key = Plain(KeyF(2), KeyScope::kRecords),
     .needs = kNeedsEditor | kNeedsAddable,
     .tip = "Add a record",
     .block = Block::kEdit},
    {.id = kCmdInsert,
     .text = "&Insert",
     .key = Plain(kKeyInsert, KeyScope::kRecords),
     .needs = kNeedsEditor | kNeedsInsertable,
     .tip = "Insert a record here",
     .block = Block::kEdit},
    {.id = kCmdDelete,
     .text = "&Delete",
     .key = Plain(kKeyDelete, KeyScope::kRecords),
     .needs = kNeedsEditor | kNeedsDeletable,
     .tip = "Delete the selected records",
     .block = Block::kEdit},

    {.id = kCmdCut,
     .text = "Cu&t",
     .key = Ctrl('X', KeyScope::kRecords),
     .needs = kNeedsEditor | kNeedsDeletable,
     .tip = "Take the selected records away to the clipboard",
     .block = Block::kClipboard},
    {.id = kCmdCopy,
     .text = "&Copy",
     .key = Ctrl('C', KeyScope::kRecords),
     .needs = kNeedsEditor | kNeedsDeletable,
     .tip = "Copy the selected records, with all below them, and as text for a spreadsheet",
     .block = Block::kClipboard},
    {.id = kCmdPaste,
     .text = "&Paste",
     .key = Ctrl('V', KeyScope::kRecords),
     .needs = kNeedsEditor,
     .tip = "Put the records of the clipboard here",
     .block = Block::kClipboard},

    {.id = kCmdMove,
     .text = "&Move",
     .key = Plain(KeyF(3), KeyScope::kRecords),
     .needs = kNeedsEditor | kNeedsMovable,
     .tip = "Move the selected records",
     .block = Block::kMove},
    {.id = kCmdSwap,
     .text = "S&wap",
     .needs = kNeedsEditor | kNeedsMovable,
     .tip = "Swap two records",
     .block = Block::kMove},

    {.id = kCmdSelectAll,
     .text = "A&ll",
     .key = Ctrl('A', KeyScope::kList),
     .needs = kNeedsEditor | kNeedsRows,
     .tip = "Select all records",
     .block = Block::kSelect},
    {.id = kCmdInvertSelection,
     .text = "&Invert Selection",
     .needs = kNeedsEditor | kNeedsRows,
     .tip = "Select what is not selected",
     .block = Block::kSelect},
    {.id = kCmdSelectDuplicates,
     .text = "Select Duplic&ates",
     .needs = kNeedsEditor | kNeedsRows,
     .tip = "Select the records of the list that repeat an earlier one",
     .block = Block::kSelect},

    {.id = kCmdSaveSatellites,
     .text = "&Save Selected Satellite(s)",
     .needs = kNeedsEditor | kNeedsSatellite,
     .tip = "Save the selected satellites as a file of their own",
     .block = Block::kSaveSatellites},

    {.id = kCmdCompressSdb,
     .text = "Com&press on Save",
     .needs = kNeedsEditor,
     .tip = "Compress this part when the file is saved",
     .block = Block::kSdb,
     .checked = Holds<&WindowState::part_compressed>},
    {.id = kCmdSaveSdb,
     .text = "&Save as seperate bin",
     .needs = kNeedsEditor | kNeedsSdb,
     .tip = "Save this SDB as a file of its own",
     .block = Block::kSdb},
    {.id = kCmdUploadThisSdb,
     .text = "&Upload as SDB",
     .needs = kNeedsEditor | kNeedsSdb,
     .asks = {.images = true},
     .tip = "Send this SDB to the receiver",
     .block = Block::kSdb},
    {.id = kCmdExportSdb,
     .text = "E&xport SDB as text file",
     .needs = kNeedsEditor | kNeedsSdb,
     .tip = "Write this SDB as a text report",
     .block = Block::kSdb},

    {.id = kCmdSort,
     .text = "&Sort Infomation",
     .key = Ctrl('R'),
     .needs = kNeedsEditor,
     .tip = "Sort the records",
     .block = Block::kSearch,
     .button = {.place = 33, .picture = 9}},
    {.id = kCmdFind,
     .text = "&Find",
     .key = Ctrl('F'),
     .needs = kNeedsEditor,
     .tip = "Find a record by its name",
     .block = Block::kSearch,
     .button = {.place = 32, .picture = 8},
     .in_console = kCmdConsoleFind},
    {.id = kCmdFindNext,
     .text = "Find Ne&xt",
     .key = Plain(KeyF(4)),
     .needs = kNeedsEditor,
     .tip = "Find the next record",
     .block = Block::kSearch},
    {.id = kCmdFindPrevious,
     .text = "Find &Previous",
     .key = Shift(KeyF(4)),
     .needs = kNeedsEditor,
     .tip = "Find the previous record",
     .block = Block::kSearch},

    {.id = kCmdFilter,
     .text = "Fil&ter the list",
     .key = {'F', kCtrl | kShift, KeyScope::kDatabase},
     .needs = kNeedsEditor,
     .tip = "Show only the rows with a text, or with fields like freq>11700 pol=v fta",
     .block = Block::kSearch},

    {.id = kCmdUseOrder,
     .text = "Use this or&der",
     .needs = kNeedsEditor | kNeedsRowOrder,
     .tip = "Put the records into the order in which the list shows them",
     .block = Block::kSearch},

    {.id = kCmdInformation,
     .text = "I&nformation",
     .key = Ctrl('I'),
     .needs = kNeedsEditor | kNeedsDetails,
     .tip = "Details of the selected record",
     .block = Block::kInformation,
     .button = {.place = 34, .picture = 10},
     .checked = Holds<&WindowState::details>},

    {.id = kCmdGoToService,
     .text = "Go to Ser&vice",
     .needs = kNeedsEditor | kNeedsEntry,
     .tip = "Show the service that the entry of the favourite group names",
     .block = Block::kInformation},

    {.id = kCmdCheck,
     .text = "C&heck Database",
     .needs = kNeedsEditor,
     .tip = "List what breaks the rules of the records",
     .block = Block::kWholeDatabase},
    {.id = kCmdCompare,
     .text = "Compare &with...",
     .needs = kNeedsEditor | kNeedsSdb,
     .tip = "Show what differs from another database, and take it over",
     .block = Block::kWholeDatabase},
    {.id = kCmdOrderLike,
     .text = "Appl&y order from...",
     .needs = kNeedsEditor | kNeedsSdb,
     .tip = "Bring the database into the order of an older one, or of a list",
     .block = Block::kWholeDatabase},
    {.id = kCmdCompressBin,
     .text = "&Compress bin on save",
     .needs = kNeedsEditor,
     .tip = "Compress the file when it is saved",
     .block = Block::kWholeDatabase,
     .checked = Holds<&WindowState::payload_compressed>},

    {.id = kCmdViewServices,
     .text = "Ser&vices",
     .key = Alt('V'),
     .needs = kNeedsEditor | kNeedsViews,
     .tip = "Show the services",
     .block = Block::kViews,
     .checked = Shows<ListView::kServices>},
    {.id = kCmdViewCarriers,
     .text = "&Carriers",
     .key = Alt('C'),
     .needs = kNeedsEditor | kNeedsCarrierView,
     .tip = "Show the carriers",
     .block = Block::kViews,
     .checked = Shows<ListView::kCarriers>},
    {.id = kCmdViewTv,
     .text = "&TV Services",
     .key = Alt('T'),
     .needs = kNeedsEditor | kNeedsViews,
     .tip = "Show the TV services",
     .block = Block::kViews,
     .checked = Shows<ListView::kTvServices>},
    {.id = kCmdViewRadio,
     .text = "&Radio Services",
     .key = Alt('R'),
     .needs = kNeedsEditor | kNeedsViews,
     .tip = "Show the radio services",
     .block = Block::kViews,
     .checked = Shows<ListView::kRadioServices>},
    {.id = kCmdViewBoth,
     .text = "TV / R&adio Services",
     .key = Alt('A'),
     .needs = kNeedsEditor | kNeedsViews,
     .tip = "Show TV and radio services",
     .block = Block::kViews,
     .checked = Shows<ListView::kServices>},

    {.id = kCmdPicture,
     .text = "&Picture",
     .key = Ctrl('B'),
     .needs = kNeedsEditor,
     .tip = "Show the band plan of the satellite, or the orbit, below the list",
     .block = Block::kPicture,
     .checked = Holds<&WindowState::picture>},

    {.id = kCmdUploadAdb,
     .text = "ADB Data  ( PC to STB )",
     .key = Plain(KeyF(6)),
     .needs = kNeedsEditor,
     .asks = {.images = true, .partitions = true},
     .tip = "Send the database to the receiver as its image",
     .block = Block::kUpload,
     .button = {.place = 40, .picture = 11, .drop_down = MenuName::kUpload}},
    {.id = kCmdUploadSdb,
     .text = "SDB Data ( PC to STB )",
     .key = Plain(KeyF(7)),
     .needs = kNeedsEditor,
     .asks = {.images = true},
     .tip = "Send SDBs to the receiver",
     .block = Block::kUpload},

    {.id = kCmdDownload,
     .text = "Data from S&TB ( STB to PC )",
     .key = Plain(KeyF(8)),
     .asks = {.images = true, .partitions = true},
     .tip = "Fetch the database of the receiver",
     .block = Block::kDownload,
     .button = {.place = 41, .picture = 12}},
    {.id = kCmdRestore,
     .text = "&Restore...",
     .asks = {.images = true, .partitions = true},
     .tip = "Send a copy back to the receiver",
     .block = Block::kDownload},
    {.id = kCmdProduction,
     .text = "Pro&duction",
     .asks = {.images = true, .partitions = true},
     .tip = "Send a database to one receiver after the other",
     .block = Block::kDownload},

    {.id = kCmdPortload,
     .text = "&Portload",
     .key = Ctrl('W'),
     .tip = "Open the uploader console",
     .block = Block::kPortload,
     .button = {.place = 42, .picture = 13}},

    {.id = kCmdDefaultValues,
     .text = "&Default Values",
     .key = Ctrl('D'),
     .tip = "Values of new records",
     .block = Block::kOptions},
    {.id = kCmdSettings,
     .text = "&Settings",
     .key = Ctrl('T'),
     .tip = "Receiver, formats and serial port",
     .block = Block::kOptions,
     .button = {.place = 50, .picture = 15}},
    {.id = kCmdColour,
     .text = "Co&lor",
     .key = Ctrl('L'),
     .tip = "Colours of the tree and the list",
     .block = Block::kOptions},

    {.id = kCmdSingleImage,
     .text = "&Single Image",
     .asks = {.images = true},
     .tip = "Make a URT file of an image",
     .block = Block::kUrt,
     .button = {.place = 44, .picture = 14, .drop_down = MenuName::kUrt}},
    {.id = kCmdMultipleImage,
     .text = "&Multiple Image",
     .asks = {.images = true},
     .tip = "Make URT files of several images",
     .block = Block::kUrt},
    {.id = kCmdBin2Urt,
     .text = "Bin2URT",
     .asks = {.images = true},
     .tip = "Make a URT file of a chosen file",
     .block = Block::kUrt},

    {.id = kCmdCompression,
     .text = "&Compression",
     .key = Ctrl('P'),
     .tip = "Compress or expand a file",
     .block = Block::kCompression},

    {.id = kCmdCascade,
     .text = "&Cascade",
     .tip = "Arrange the windows one behind the other",
     .block = Block::kWindows},
    {.id = kCmdTileHorizontally,
     .text = "Tile &Horizontally",
     .tip = "Arrange the windows one below the other",
     .block = Block::kWindows},
    {.id = kCmdTileVertically,
     .text = "Tile &Vertically",
     .tip = "Arrange the windows side by side",
     .block = Block::kWindows},

    {.id = kCmdContents,
     .text = "&Contents",
     .tip = "Show the help",
     .block = Block::kHelp,
     .button = {.place = 51, .picture = 16}},
    {.id = kCmdAbout,
     .text = "&About Vexa Editor",
     .tip = "Version and build of the program",
     .block = Block::kHelp},

    {.id = kCmdConnect,
     .text = "Connec&t",
     .key = Plain(KeyF(10)),
     .needs = kNeedsConsole,
     .tip = "Connect to the receiver, or disconnect",
     .block = Block::kConnection,
     .button = {.place = 43,
                .picture = 17,
                .other_picture = 18,
                .has_other_picture = Holds<&WindowState::port_open>},
     .other_text = "&Disconnect",
     .has_other_text = Holds<&WindowState::port_wanted>},
    {.id = kCmdConsoleUpload,
     .text = "&Upload",
     .key = Plain(KeyF(9)),
     .needs = kNeedsConsole | kNeedsConnection | kNeedsNoConsoleUpload,
     .tip = "Send a file to the receiver",
     .block = Block::kConnection},
    {.id = kCmdConsoleCancel,
     .text = "Ca&ncel",
     .key = Plain(kKeyEscape),
     .needs = kNeedsConsole | kNeedsConsoleUpload,
     .tip = "Cancel the running upload",
     .block = Block::kConnection},

    {.id = kCmdConsoleSaveLog,
     .text = "&Save Log File",
     .needs = kNeedsConsole,
     .tip = "Save the log of the console",
     .block = Block::kLogFile},
    {.id = kCmdConsoleClear,
     .text = "C&lear",
     .shown_key = "",
     .needs = kNeedsConsole,
     .tip = "Empty the console",
     .block = Block::kLogFile},

    {.id = kCmdConsoleCopy,
     .text = "Cop&y",
     .key = Ctrl('C', KeyScope::kConsoleLog),
     .needs = kNeedsConsole | kNeedsLogSelection,
     .tip = "Copy the selected part of the log",
     .block = Block::kLogSelection},
    {.id = kCmdConsoleSelectAll,
     .text = "Select &All",
     .key = Ctrl('A', KeyScope::kConsoleLog),
     .needs = kNeedsConsole,
     .tip = "Select the whole log",
     .block = Block::kLogSelection},

    {.id = kCmdConsoleFind,
     .text = "&Find",
     .needs = kNeedsConsole,
     .tip = "Find a text in the log",
     .block = Block::kLogSearch},
    {.id = kCmdConsoleFindNext,
     .text = "Find Ne&xt",
     .key = Plain(KeyF(3), KeyScope::kConsole),
     .needs = kNeedsConsole,
     .tip = "Find the text again",
     .block = Block::kLogSearch},

    {.id = kCmdConsoleHexadecimalView,
     .text = "&Hexadecimal View",
     .needs = kNeedsConsole,
     .tip = "Show what arrives in hexadecimal, each frame in a row of its own",
     .block = Block::kConsoleOptions,
     .checked = ConsoleHas<&ConsoleOptions::hexadecimal_view>},
    {.id = kCmdConsoleHexadecimalInput,
     .text = "Hexadecimal &Input",
     .needs = kNeedsConsole,
     .tip = "Take the command line for pairs of hexadecimal digits",
     .block = Block::kConsoleOptions,
     .checked = ConsoleHas<&ConsoleOptions::hexadecimal_input>},
    {.id = kCmdConsoleTimeStamps,
     .text = "Time Sta&mps",
     .needs = kNeedsConsole,
     .tip = "Put the time in front of each line",
     .block = Block::kConsoleOptions,
     .checked = ConsoleHas<&ConsoleOptions::time_stamps>},
    {.id = kCmdConsoleReconnect,
     .text = "C&onnect Again",
     .needs = kNeedsConsole,
     .tip = "Connect by itself when a lost port comes back",
     .block = Block::kConsoleOptions,
     .checked = ConsoleHas<&ConsoleOptions::reconnect>},

    {.id = kCmdConsoleSendCr,
     .text = "&Carriage Return",
     .needs = kNeedsConsole,
     .tip = "End each line with a carriage return",
     .block = Block::kLineEnding,
     .checked = LinesEndWith<LineEnding::kCarriageReturn>},
    {.id = kCmdConsoleSendLf,
     .text = "&Line Feed",
     .needs = kNeedsConsole,
     .tip = "End each line with a line feed",
     .block = Block::kLineEnding,
     .checked = LinesEndWith<LineEnding::kLineFeed>},
    {.id = kCmdConsoleSendCrLf,
     .text = "&Both",
     .needs = kNeedsConsole,
     .tip = "End each line with carriage return and line feed",
     .block = Block::kLineEnding,
     .checked = LinesEndWith<LineEnding::kBoth>},
    {.id = kCmdConsoleSendNothing,
     .text = "&Nothing",
     .needs = kNeedsConsole,
     .tip = "Send each line as it is",
     .block = Block::kLineEnding,
     .checked = LinesEndWith<LineEnding::kNone>},

    {.id = kCmdConsoleClose,
     .text = "&Close",
     .needs = kNeedsConsole,
     .tip = "Close the console",
     .block = Block::kCloseConsole},
};

struct NeedText {
  Need need;
  const char* text;
};
constexpr NeedText kNeedTexts[] = {
    {kNeedsEditor, "Needs an open database."},
    {kNeedsConsole, "Needs the uploader console."},
    {kNeedsSdb, "Needs a selected SDB."},
    {kNeedsRows, "Needs a list of records."},
    {kNeedsSatellite, "Needs a selected satellite."},
    {kNeedsUndo, "There is nothing to undo."},
    {kNeedsRedo, "There is nothing to redo."},
    {kNeedsConnection, "Needs a connection to the receiver."},
    {kNeedsConsoleUpload, "No upload is running."},
    {kNeedsNoConsoleUpload, "An upload is running."},
    {kNeedsLogSelection, "Nothing is selected in the log."},
    {kNeedsEditable, "Needs a selected record."},
    {kNeedsAddable, "Nothing can be added here."},
    {kNeedsInsertable, "Needs a selected satellite, carrier or service."},
    {kNeedsDeletable, "Needs a selected record."},
    {kNeedsMovable, "Needs a selected satellite, carrier, service or favourite."},
    {kNeedsViews, "Needs a selected SDB, satellite or carrier."},
    {kNeedsDetails, "Needs a selected record."},
    {kNeedsEntry, "Needs a selected entry of a favourite group."},
    {kNeedsRowOrder, "Needs a list in the order of a column."},
    {kNeedsCarrierView, "Needs a selected SDB or satellite."},
};

struct KeyText {
  uint16_t code;
  const char* text;
};
constexpr KeyText kKeyTexts[] = {
    {kKeyEnter, "Enter"}, {kKeyEscape, "Esc"}, {kKeyInsert, "Ins"}, {kKeyDelete, "Del"}};

std::string WithKey(const CommandInfo& command, const char* text) {
  const std::string key = ShownKey(command);
  return key.empty() && !command.shown_key ? text : std::string(text) + '\t' + key;
}

}  // namespace

std::span<const CommandInfo> Commands() {
  return kCommands;
}

const CommandInfo* FindCommand(uint32_t id) {
  const auto* found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                   [id](const CommandInfo& c) { return c.id == id; });
  return found == std::end(kCommands) ? nullptr : found;
}

bool CommandEnabled(const CommandInfo& command, uint32_t present) {
  return (command.needs & ~present) == 0;
}

std::string MissingNeeds(const CommandInfo& command, uint32_t present) {
  for (const NeedText& row : kNeedTexts) {
    if (command.needs & ~present & row.need) return row.text;
  }
  return "";
}

bool CommandChecked(const CommandInfo& command, const WindowState& state) {
  return command.checked && command.checked(state);
}

std::string MenuText(const CommandInfo& command, const WindowState& state) {
  const bool other = command.has_other_text && command.has_other_text(state);
  return WithKey(command, other ? command.other_text : command.text);
}

std::string MenuText(const CommandInfo& command) {
  return WithKey(command, command.text);
}

std::string ShownKey(const CommandInfo& command) {
  if (command.shown_key) return command.shown_key;
  if (command.key.code) return KeyName(command.key);
  for (const CommandInfo& other : kCommands) {
    if (other.in_console == command.id) return KeyName(other.key);
  }
  return "";
}

std::string ToolTip(const CommandInfo& command) {
  const std::string key = ShownKey(command);
  return key.empty() ? command.tip : std::string(command.tip) + " (" + key + ")";
}

std::string KeyName(const Key& key) {
  if (key.code == 0) return "";
  std::string name;
  if (key.modifiers & kCtrl) name += "Ctrl+";
  if (key.modifiers & kAlt) name += "Alt+";
  if (key.modifiers & kShift) name += "Shift+";
  for (const KeyText& row : kKeyTexts) {
    if (row.code == key.code) return name + row.text;
  }
  if (key.code >= kKeyF1 && key.code <= KeyF(12)) return name + 'F' + std::to_string(key.code - kKeyF1 + 1);
  return name + static_cast<char>(key.code);
}

CommandId CommandOfKey(KeyScope scope, uint16_t code, uint8_t modifiers) {
  for (const CommandInfo& command : kCommands) {
    const Key& key = command.key;
    if (code != 0 && key.code == code && key.modifiers == modifiers && key.scope == scope) return command.id;
  }
  return kNoCommand;
}

}  // namespace vexa
