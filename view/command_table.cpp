#include "view/command_table.h"

#include <algorithm>
#include <array>

namespace vexa {

namespace {

constexpr Key kNoKey{};
constexpr Key Ctrl(char letter) {
  return {static_cast<uint16_t>(letter), kCtrl};
}
constexpr Key Alt(char letter) {
  return {static_cast<uint16_t>(letter), kAlt};
}
constexpr Key Plain(uint16_t code) {
  return {code, 0};
}

constexpr CommandInfo kCommands[] = {
    {kCmdNew, "&New\tCtrl+N", Ctrl('N'), kNeedsNothing, "New database"},
    {kCmdOpen, "&Open\tCtrl+O", Ctrl('O'), kNeedsNothing, "Open a database file"},
    {kCmdSave, "&Save\tCtrl+S", Ctrl('S'), kNeedsEditor, "Save the database"},
    {kCmdSaveAs, "Save &As", kNoKey, kNeedsEditor, "Save the database under another name"},
    {kCmdClose, "&Close", kNoKey, kNeedsEditor, "Close the database"},
    {kCmdExit, "E&xit", kNoKey, kNeedsNothing, "End the program"},
    {kCmdContents, "&Contents", kNoKey, kNeedsNothing, "Show the help"},
    {kCmdAbout, "&About Vexa Editor", kNoKey, kNeedsNothing, "Version and build of the program"},
    {kCmdSdbInformation, "SDB &Information\tF12", Plain(KeyF(12)), kNeedsEditor,
     "Counts and sizes of the database"},
    {kCmdInformation, "I&nformation\tCtrl+I", Ctrl('I'), kNeedsEditor, "Details of the selected record"},
    {kCmdSort, "&Sort Infomation\tCtrl+R", Ctrl('R'), kNeedsEditor, "Sort the records"},
    {kCmdUndo, "&Undo Sorting\tCtrl+Z", Ctrl('Z'), kNeedsEditor | kNeedsUndo, "Take back the last change"},
    {kCmdDefaultValues, "&Default Values\tCtrl+D", Ctrl('D'), kNeedsNothing, "Values of new records"},
    {kCmdSettings, "&Settings\tCtrl+T", Ctrl('T'), kNeedsNothing, "Receiver, formats and serial port"},
    {kCmdColour, "Co&lor\tCtrl+L", Ctrl('L'), kNeedsNothing, "Colours of the tree and the list"},
    {kCmdUploadAdb, "ADB Data  ( PC to STB )\tF6", Plain(KeyF(6)), kNeedsEditor,
     "Send the database to the receiver as its image"},
    {kCmdUploadSdb, "SDB Data ( PC to STB )\tF7", Plain(KeyF(7)), kNeedsEditor, "Send SDBs to the receiver"},
    {kCmdDownload, "Data from S&TB ( STB to PC )\tF8", Plain(KeyF(8)), kNeedsNothing,
     "Fetch the database of the receiver"},
    {kCmdTextFile, "&Text file\tCtrl+E", kNoKey, kNeedsEditor, "Write the database as a text report"},
    {kCmdImportSatcodx, "&SatcoDX [ SDX ]", kNoKey, kNeedsNothing, "Import a SatcoDX list"},
    {kCmdImportDvb2000, "&DVB2000 [ DVB ]", kNoKey, kNeedsNothing, "Import a DVB2000 list"},
    {kCmdImportLyngsat, "&Lyngsat Dat [ DAT ]", kNoKey, kNeedsNothing, "Import a Lyngsat list"},
    {kCmdMergeSatcodx, "&SatcoDX [ SDX ]", kNoKey, kNeedsNothing, "Join SatcoDX lists into one"},
    {kCmdMergeDvb2000, "&DVB2000 [ DVB ]", kNoKey, kNeedsNothing, "Join DVB2000 lists into one"},
    {kCmdMergeLyngsat, "&Lyngsat Dat [ DAT ]", kNoKey, kNeedsNothing, "Join Lyngsat lists into one"},
    {kCmdMergeSdb, "&SDB [ BIN ]", kNoKey, kNeedsEditor, "Add the SDBs of other files"},
    {kCmdPortload, "&Portload\tCtrl+W", Ctrl('W'), kNeedsNothing, "Open the uploader console"},
    {kCmdConsoleUpload, "&Upload\tF9", Plain(KeyF(9)),
     kNeedsConsole | kNeedsConnection | kNeedsNoConsoleUpload, "Send a file to the receiver"},
    {kCmdConsoleSaveLog, "&Save Log File\tCtrl+S", kNoKey, kNeedsConsole, "Save the log of the console"},
    {kCmdConsoleClear, "C&lear\t", kNoKey, kNeedsConsole, "Empty the console"},
    {kCmdConsoleCancel, "Ca&ncel\tEsc", Plain(kKeyEscape), kNeedsConsole | kNeedsConsoleUpload,
     "Cancel the running upload"},
    {kCmdConsoleClose, "&Close", kNoKey, kNeedsConsole, "Close the console"},
    {kCmdSingleImage, "&Single Image", kNoKey, kNeedsNothing, "Make a URT file of an image"},
    {kCmdMultipleImage, "&Multiple Image", kNoKey, kNeedsNothing, "Make URT files of several images"},
    {kCmdBin2Urt, "Bin2URT", kNoKey, kNeedsNothing, "Make a URT file of a chosen file"},
    {kCmdCompression, "&Compression\tCtrl+P", Ctrl('P'), kNeedsNothing, "Compress or expand a file"},
    {kCmdCompressBin, "&Compress bin on save", kNoKey, kNeedsEditor, "Compress the file when it is saved"},
    {static_cast<CommandId>(kCmdRecent1 + 0), "&1", kNoKey, kNeedsNothing, "Open this file"},
    {static_cast<CommandId>(kCmdRecent1 + 1), "&2", kNoKey, kNeedsNothing, "Open this file"},
    {static_cast<CommandId>(kCmdRecent1 + 2), "&3", kNoKey, kNeedsNothing, "Open this file"},
    {kCmdRecent4, "&4", kNoKey, kNeedsNothing, "Open this file"},
    {kCmdConnect, "Connec&t\tF10", Plain(KeyF(10)), kNeedsConsole, "Connect to the receiver, or disconnect"},
    {kCmdRedo, "&Redo\tCtrl+Y", Ctrl('Y'), kNeedsEditor | kNeedsRedo, "Bring back what was taken back"},
    {kCmdFind, "&Find\tCtrl+F", Ctrl('F'), kNeedsEditor, "Find a record by its name"},
    {kCmdFindNext, "Find Ne&xt\tF4", Plain(KeyF(4)), kNeedsEditor, "Find the next record"},
    {kCmdFindPrevious,
     "Find &Previous\tShift+F4",
     {KeyF(4), kShift},
     kNeedsEditor,
     "Find the previous record"},
    {kCmdCheck, "C&heck Database", kNoKey, kNeedsEditor, "List what breaks the rules of the records"},
    {kCmdCascade, "&Cascade", kNoKey, kNeedsNothing, "Arrange the windows one behind the other"},
    {kCmdTileHorizontally, "Tile &Horizontally", kNoKey, kNeedsNothing,
     "Arrange the windows one below the other"},
    {kCmdTileVertically, "Tile &Vertically", kNoKey, kNeedsNothing, "Arrange the windows side by side"},
    {kCmdViewTv, "&TV Services\tAlt+T", Alt('T'), kNeedsEditor | kNeedsViews, "Show the TV services"},
    {kCmdViewRadio, "&Radio Services\tAlt+R", Alt('R'), kNeedsEditor | kNeedsViews,
     "Show the radio services"},
    {kCmdViewBoth, "TV / R&adio Services\tAlt+A", Alt('A'), kNeedsEditor | kNeedsViews,
     "Show TV and radio services"},
    {kCmdViewCarriers, "&Carriers\tAlt+C", Alt('C'), kNeedsEditor | kNeedsViews, "Show the carriers"},
    {kCmdViewServices, "Ser&vices\tAlt+V", Alt('V'), kNeedsEditor | kNeedsViews, "Show the services"},
    {kCmdEdit, "&Edit\tEnter", kNoKey, kNeedsEditor | kNeedsEditable, "Change the selected record"},
    {kCmdAdd, "&Add\tF2", kNoKey, kNeedsEditor | kNeedsAddable, "Add a record"},
    {kCmdInsert, "&Insert\tIns", kNoKey, kNeedsEditor | kNeedsInsertable, "Insert a record here"},
    {kCmdDelete, "&Delete\tDel", kNoKey, kNeedsEditor | kNeedsDeletable, "Delete the selected records"},
    {kCmdMove, "&Move\tF3", kNoKey, kNeedsEditor | kNeedsMovable, "Move the selected records"},
    {kCmdSwap, "S&wap", kNoKey, kNeedsEditor | kNeedsMovable, "Swap two records"},
    {kCmdSelectAll, "A&ll\tCtrl+A", kNoKey, kNeedsEditor | kNeedsRows, "Select all records"},
    {kCmdInvertSelection, "&Invert Selection", kNoKey, kNeedsEditor | kNeedsRows,
     "Select what is not selected"},
    {kCmdCompressSdb, "Com&press on Save", kNoKey, kNeedsEditor, "Compress this part when the file is saved"},
    {kCmdSaveSdb, "&Save as seperate bin", kNoKey, kNeedsEditor | kNeedsSdb,
     "Save this SDB as a file of its own"},
    {kCmdUploadThisSdb, "&Upload as SDB", kNoKey, kNeedsEditor | kNeedsSdb, "Send this SDB to the receiver"},
    {kCmdExportSdb, "E&xport SDB as text file", kNoKey, kNeedsEditor | kNeedsSdb,
     "Write this SDB as a text report"},
    {kCmdSaveSatellites, "&Save Selected Satellite(s)", kNoKey, kNeedsEditor | kNeedsSatellite,
     "Save the selected satellites as a file of their own"},
    {kCmdSaveParts, "Save Par&ts", kNoKey, kNeedsEditor, "Save chosen SDBs and UBIs as another file"},
    {kCmdVersion, "Database &Version", kNoKey, kNeedsEditor,
     "Version and initials that the file is saved with"},
    {kCmdConsoleFind, "&Find\tCtrl+F", kNoKey, kNeedsConsole, "Find a text in the log"},
    {kCmdConsoleFindNext, "Find Ne&xt\tF3", kNoKey, kNeedsConsole, "Find the text again"},
    {kCmdConsoleHexadecimalView, "&Hexadecimal View", kNoKey, kNeedsConsole,
     "Show what arrives in hexadecimal, each frame in a row of its own"},
    {kCmdConsoleHexadecimalInput, "Hexadecimal &Input", kNoKey, kNeedsConsole,
     "Take the command line for pairs of hexadecimal digits"},
    {kCmdConsoleTimeStamps, "Time Sta&mps", kNoKey, kNeedsConsole, "Put the time in front of each line"},
    {kCmdConsoleReconnect, "C&onnect Again", kNoKey, kNeedsConsole,
     "Connect by itself when a lost port comes back"},
    {kCmdConsoleSendCr, "&Carriage Return", kNoKey, kNeedsConsole, "End each line with a carriage return"},
    {kCmdConsoleSendLf, "&Line Feed", kNoKey, kNeedsConsole, "End each line with a line feed"},
    {kCmdConsoleSendCrLf, "&Both", kNoKey, kNeedsConsole, "End each line with carriage return and line feed"},
    {kCmdConsoleSendNothing, "&Nothing", kNoKey, kNeedsConsole, "Send each line as it is"},
    {kCmdConsoleCopy, "Cop&y\tCtrl+C", kNoKey, kNeedsConsole | kNeedsLogSelection,
     "Copy the selected part of the log"},
    {kCmdConsoleSelectAll, "Select &All\tCtrl+A", kNoKey, kNeedsConsole, "Select the whole log"},
};

constexpr MenuRow Popup(uint8_t depth, const char* text) {
  return {depth, MenuRowKind::kPopup, text, kNoCommand};
}
constexpr MenuRow Item(uint8_t depth, CommandId id) {
  return {depth, MenuRowKind::kCommand, nullptr, id};
}
constexpr MenuRow Line(uint8_t depth) {
  return {depth, MenuRowKind::kSeparator, nullptr, kNoCommand};
}
constexpr MenuRow Recent(uint8_t depth) {
  return {depth, MenuRowKind::kRecentFiles, "&Recent Files", kNoCommand};
}

constexpr MenuRow kImportRows[] = {Item(0, kCmdImportSatcodx), Item(0, kCmdImportDvb2000),
                                   Item(0, kCmdImportLyngsat)};
constexpr MenuRow kMergeRows[] = {Item(0, kCmdMergeSatcodx), Item(0, kCmdMergeDvb2000),
                                  Item(0, kCmdMergeLyngsat), Item(0, kCmdMergeSdb)};
constexpr MenuRow kUploadRows[] = {Item(0, kCmdUploadAdb), Item(0, kCmdUploadSdb)};
constexpr MenuRow kUrtRows[] = {Item(0, kCmdSingleImage), Item(0, kCmdMultipleImage), Item(0, kCmdBin2Urt)};

constexpr MenuRow kFrameRows[] = {
    Popup(0, "&File"),
    Item(1, kCmdNew),
    Item(1, kCmdOpen),
    Line(1),
    Popup(1, "I&mport"),
    Item(2, kCmdImportSatcodx),
    Item(2, kCmdImportDvb2000),
    Item(2, kCmdImportLyngsat),
    Popup(1, "Mer&ge"),
    Item(2, kCmdMergeSatcodx),
    Item(2, kCmdMergeDvb2000),
    Item(2, kCmdMergeLyngsat),
    Line(1),
    Recent(1),
    Line(1),
    Item(1, kCmdExit),
    Popup(0, "Tran&sfer"),
    Item(1, kCmdDownload),
    Line(1),
    Item(1, kCmdPortload),
    Popup(0, "&Options"),
    Item(1, kCmdDefaultValues),
    Item(1, kCmdSettings),
    Item(1, kCmdColour),
    Popup(0, "Too&ls"),
    Popup(1, "&URT"),
    Item(2, kCmdSingleImage),
    Item(2, kCmdMultipleImage),
    Item(2, kCmdBin2Urt),
    Item(1, kCmdCompression),
    Popup(0, "&Help"),
    Item(1, kCmdContents),
    Item(1, kCmdAbout),
};

constexpr MenuRow kEditorRows[] = {
    Popup(0, "&File"),
    Item(1, kCmdNew),
    Item(1, kCmdOpen),
    Item(1, kCmdSave),
    Item(1, kCmdSaveAs),
    Item(1, kCmdSaveParts),
    Item(1, kCmdVersion),
    Item(1, kCmdClose),
    Line(1),
    Popup(1, "I&mport"),
    Item(2, kCmdImportSatcodx),
    Item(2, kCmdImportDvb2000),
    Item(2, kCmdImportLyngsat),
    Popup(1, "Mer&ge"),
    Item(2, kCmdMergeSatcodx),
    Item(2, kCmdMergeDvb2000),
    Item(2, kCmdMergeLyngsat),
    Item(2, kCmdMergeSdb),
    Popup(1, "Ex&port"),
    Item(2, kCmdTextFile),
    Line(1),
    Item(1, kCmdSdbInformation),
    Line(1),
    Recent(1),
    Line(1),
    Item(1, kCmdExit),
    Popup(0, "&Edit"),
    Item(1, kCmdUndo),
    Item(1, kCmdRedo),
    Line(1),
    Popup(1, "Rec&ord"),
    Item(2, kCmdEdit),
    Item(2, kCmdAdd),
    Item(2, kCmdInsert),
    Item(2, kCmdDelete),
    Line(2),
    Item(2, kCmdMove),
    Item(2, kCmdSwap),
    Item(1, kCmdSelectAll),
    Item(1, kCmdInvertSelection),
    Line(1),
    Item(1, kCmdSort),
    Item(1, kCmdFind),
    Item(1, kCmdFindNext),
    Item(1, kCmdFindPrevious),
    Item(1, kCmdInformation),
    Line(1),
    Item(1, kCmdCheck),
    Item(1, kCmdCompressBin),
    Popup(0, "Vie&w"),
    Item(1, kCmdViewServices),
    Item(1, kCmdViewCarriers),
    Item(1, kCmdViewTv),
    Item(1, kCmdViewRadio),
    Item(1, kCmdViewBoth),
    Popup(0, "Tran&sfer"),
    Item(1, kCmdUploadAdb),
    Item(1, kCmdUploadSdb),
    Item(1, kCmdDownload),
    Line(1),
    Item(1, kCmdPortload),
    Popup(0, "&Options"),
    Item(1, kCmdDefaultValues),
    Item(1, kCmdSettings),
    Item(1, kCmdColour),
    Popup(0, "Too&ls"),
    Popup(1, "&URT"),
    Item(2, kCmdSingleImage),
    Item(2, kCmdMultipleImage),
    Item(2, kCmdBin2Urt),
    Item(1, kCmdCompression),
    Popup(0, "Wi&ndow"),
    Item(1, kCmdCascade),
    Item(1, kCmdTileHorizontally),
    Item(1, kCmdTileVertically),
    Popup(0, "&Help"),
    Item(1, kCmdContents),
    Item(1, kCmdAbout),
};

constexpr MenuRow kConsoleRows[] = {
    Popup(0, "&File"),
    Item(1, kCmdNew),
    Item(1, kCmdOpen),
    Line(1),
    Recent(1),
    Line(1),
    Item(1, kCmdExit),
    Popup(0, "&Console"),
    Item(1, kCmdConnect),
    Item(1, kCmdConsoleUpload),
    Item(1, kCmdConsoleCancel),
    Line(1),
    Item(1, kCmdConsoleSaveLog),
    Item(1, kCmdConsoleClear),
    Line(1),
    Item(1, kCmdConsoleCopy),
    Item(1, kCmdConsoleSelectAll),
    Item(1, kCmdConsoleFind),
    Item(1, kCmdConsoleFindNext),
    Line(1),
    Item(1, kCmdConsoleHexadecimalView),
    Item(1, kCmdConsoleHexadecimalInput),
    Item(1, kCmdConsoleTimeStamps),
    Item(1, kCmdConsoleReconnect),
    Popup(1, "Lin&e Ending"),
    Item(2, kCmdConsoleSendCr),
    Item(2, kCmdConsoleSendLf),
    Item(2, kCmdConsoleSendCrLf),
    Item(2, kCmdConsoleSendNothing),
    Line(1),
    Item(1, kCmdConsoleClose),
    Popup(0, "&Options"),
    Item(1, kCmdSettings),
    Popup(0, "Wi&ndow"),
    Item(1, kCmdCascade),
    Item(1, kCmdTileHorizontally),
    Item(1, kCmdTileVertically),
    Popup(0, "&Help"),
    Item(1, kCmdContents),
    Item(1, kCmdAbout),
};

constexpr MenuRow kConsoleLogRows[] = {
    Item(0, kCmdConsoleCopy),
    Item(0, kCmdConsoleSelectAll),
    Line(0),
    Item(0, kCmdConsoleFind),
    Item(0, kCmdConsoleFindNext),
    Line(0),
    Item(0, kCmdConsoleSaveLog),
    Item(0, kCmdConsoleClear),
    Line(0),
    Item(0, kCmdConsoleHexadecimalView),
    Item(0, kCmdConsoleTimeStamps),
};

constexpr MenuRow Filled(uint8_t depth, MenuRowKind kind) {
  return {depth, kind, nullptr, kNoCommand};
}

// The pop-ups of records: editing and moving, what else the kind allows, selecting.
constexpr MenuRow kRecordRows[] = {Item(0, kCmdEdit),
                                   Item(0, kCmdAdd),
                                   Item(0, kCmdInsert),
                                   Item(0, kCmdDelete),
                                   Line(0),
                                   Item(0, kCmdMove),
                                   Item(0, kCmdSwap),
                                   Line(0),
                                   Popup(0, "Se&lect"),
                                   Item(1, kCmdSelectAll),
                                   Item(1, kCmdInvertSelection),
                                   Line(0),
                                   Item(0, kCmdInformation)};
constexpr MenuRow kServiceRows[] = {Item(0, kCmdEdit),
                                    Item(0, kCmdAdd),
                                    Item(0, kCmdInsert),
                                    Item(0, kCmdDelete),
                                    Line(0),
                                    Item(0, kCmdMove),
                                    Item(0, kCmdSwap),
                                    Line(0),
                                    Popup(0, "Add to &Group"),
                                    Filled(1, MenuRowKind::kFavouriteGroups),
                                    Popup(0, "Se&lect"),
                                    Item(1, kCmdSelectAll),
                                    Item(1, kCmdInvertSelection),
                                    Line(0),
                                    Item(0, kCmdInformation)};
constexpr MenuRow kCarrierLevelRows[] = {Item(0, kCmdEdit),
                                         Item(0, kCmdAdd),
                                         Item(0, kCmdInsert),
                                         Item(0, kCmdDelete),
                                         Line(0),
                                         Item(0, kCmdMove),
                                         Item(0, kCmdSwap),
                                         Line(0),
                                         Popup(0, "Mar&k As"),
                                         Filled(1, MenuRowKind::kMarkFields),
                                         Popup(0, "Se&lect"),
                                         Filled(1, MenuRowKind::kSelectFields),
                                         Line(1),
                                         Item(1, kCmdSelectAll),
                                         Item(1, kCmdInvertSelection),
                                         Line(0),
                                         Item(0, kCmdInformation)};
constexpr MenuRow kSatelliteLevelRows[] = {Item(0, kCmdEdit),
                                           Item(0, kCmdAdd),
                                           Item(0, kCmdInsert),
                                           Item(0, kCmdDelete),
                                           Line(0),
                                           Item(0, kCmdMove),
                                           Item(0, kCmdSwap),
                                           Line(0),
                                           Popup(0, "Mar&k As"),
                                           Filled(1, MenuRowKind::kMarkFields),
                                           Popup(0, "Se&lect"),
                                           Filled(1, MenuRowKind::kSelectFields),
                                           Line(1),
                                           Item(1, kCmdSelectAll),
                                           Item(1, kCmdInvertSelection),
                                           Line(0),
                                           Item(0, kCmdSaveSatellites),
                                           Line(0),
                                           Item(0, kCmdInformation)};
constexpr MenuRow kSdbRows[] = {
    Item(0, kCmdAdd),         Item(0, kCmdEdit),    Item(0, kCmdDelete),        Line(0),
    Item(0, kCmdCompressSdb), Item(0, kCmdSaveSdb), Item(0, kCmdUploadThisSdb), Item(0, kCmdExportSdb)};
constexpr ToolbarButton kToolbar[] = {
    {kCmdNew, 0, MenuName::kFrame},
    {kCmdOpen, 1, MenuName::kFrame},
    {kCmdSave, 2, MenuName::kFrame},
    {kNoCommand, 0, MenuName::kFrame},
    {kCmdImportSatcodx, 3, MenuName::kImport},
    {kCmdMergeSatcodx, 4, MenuName::kMerge},
    {kCmdTextFile, 5, MenuName::kFrame},
    {kNoCommand, 0, MenuName::kFrame},
    {kCmdUndo, 6, MenuName::kFrame},
    {kCmdRedo, 7, MenuName::kFrame},
    {kCmdFind, 8, MenuName::kFrame},
    {kCmdSort, 9, MenuName::kFrame},
    {kCmdInformation, 10, MenuName::kFrame},
    {kNoCommand, 0, MenuName::kFrame},
    {kCmdUploadAdb, 11, MenuName::kUpload},
    {kCmdDownload, 12, MenuName::kFrame},
    {kCmdPortload, 13, MenuName::kFrame},
    {kCmdConnect, 17, MenuName::kFrame},
    {kCmdSingleImage, 14, MenuName::kUrt},
    {kNoCommand, 0, MenuName::kFrame},
    {kCmdSettings, 15, MenuName::kFrame},
    {kCmdContents, 16, MenuName::kFrame},
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
};

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

std::span<const MenuRow> MenuRows(MenuName menu) {
  switch (menu) {
    case MenuName::kFrame:
      return kFrameRows;
    case MenuName::kEditor:
      return kEditorRows;
    case MenuName::kConsole:
      return kConsoleRows;
    case MenuName::kConsoleLog:
      return kConsoleLogRows;
    case MenuName::kImport:
      return kImportRows;
    case MenuName::kMerge:
      return kMergeRows;
    case MenuName::kUpload:
      return kUploadRows;
    case MenuName::kUrt:
      return kUrtRows;
    case MenuName::kRecord:
      return kRecordRows;
    case MenuName::kSdb:
      return kSdbRows;
    case MenuName::kService:
      return kServiceRows;
    case MenuName::kSatelliteLevel:
      return kSatelliteLevelRows;
    case MenuName::kCarrierLevel:
      return kCarrierLevelRows;
    case MenuName::kLnbLevel:
      return kRecordRows;
  }
  return {};
}

std::span<const ToolbarButton> ToolbarButtons() {
  return kToolbar;
}

}  // namespace vexa
