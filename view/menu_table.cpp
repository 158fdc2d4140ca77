#include "view/menu_table.h"

#include <algorithm>
#include <span>

namespace vexa {

namespace {

// A row of a menu as it is written down here: what a menu row is, or a block of commands, or a part that
// several menus have. `depth` counts from that of the part.
struct Entry {
  uint8_t depth = 0;
  MenuRowKind kind = MenuRowKind::kCommand;
  const char* text = nullptr;
  CommandId command = kNoCommand;
  Block block = Block::kNone;
  std::span<const Entry> part = {};
};

constexpr Entry Popup(uint8_t depth, const char* text) {
  return {.depth = depth, .kind = MenuRowKind::kPopup, .text = text};
}
constexpr Entry All(uint8_t depth, Block block) {
  return {.depth = depth, .block = block};
}
// A single command of a block that does not stand there whole.
constexpr Entry One(uint8_t depth, CommandId id) {
  return {.depth = depth, .command = id};
}
constexpr Entry Part(uint8_t depth, std::span<const Entry> part) {
  return {.depth = depth, .part = part};
}
constexpr Entry Line(uint8_t depth) {
  return {.depth = depth, .kind = MenuRowKind::kSeparator};
}
constexpr Entry Filled(uint8_t depth, MenuRowKind kind) {
  return {.depth = depth, .kind = kind};
}

// --- parts of bars ---

constexpr Entry kLists[] = {Popup(0, "I&mport"), All(1, Block::kImport), Popup(0, "Mer&ge"),
                            All(1, Block::kMerge)};
constexpr Entry kEndOfFile[] = {
    Line(0),
    {.kind = MenuRowKind::kRecentFiles, .text = "&Recent Files"},
    Line(0),
    All(0, Block::kExit),
};
constexpr Entry kEndOfTransfer[] = {All(0, Block::kDownload), Line(0), All(0, Block::kPortload)};
constexpr Entry kOptionsAndTools[] = {
    Popup(0, "&Options"), All(1, Block::kOptions), Popup(0, "Too&ls"),
    Popup(1, "&URT"),     All(2, Block::kUrt),     All(1, Block::kCompression),
};
constexpr Entry kWindowMenu[] = {Popup(0, "Wi&ndow"), All(1, Block::kWindows)};
constexpr Entry kHelpMenu[] = {Popup(0, "&Help"), All(1, Block::kHelp)};

// --- parts of the records' menus ---

constexpr Entry kRecord[] = {All(0, Block::kEdit), Line(0), All(0, Block::kClipboard), Line(0),
                             All(0, Block::kMove)};
constexpr Entry kSelecting[] = {Popup(0, "Se&lect"), All(1, Block::kSelect)};
constexpr Entry kMarking[] = {
    Popup(0, "Mar&k As"),
    Filled(1, MenuRowKind::kMarkFields),
    Popup(0, "Se&lect"),
    Filled(1, MenuRowKind::kSelectFields),
    Line(1),
    All(1, Block::kSelect),
};
constexpr Entry kEndOfRecord[] = {Line(0), All(0, Block::kInformation)};

// --- the menus ---

constexpr Entry kFrame[] = {
    Popup(0, "&File"),       All(1, Block::kNewOpen),   Line(1),
    Part(1, kLists),         Part(1, kEndOfFile),       Popup(0, "Tran&sfer"),
    Part(1, kEndOfTransfer), Part(0, kOptionsAndTools), Part(0, kHelpMenu),
};

constexpr Entry kEditor[] = {
    Popup(0, "&File"),
    All(1, Block::kNewOpen),
    All(1, Block::kSave),
    Line(1),
    Part(1, kLists),
    All(2, Block::kMergeSdb),
    Popup(1, "Ex&port"),
    All(2, Block::kExport),
    Line(1),
    All(1, Block::kFileInformation),
    Part(1, kEndOfFile),
    Popup(0, "&Edit"),
    All(1, Block::kUndo),
    Line(1),
    Popup(1, "Rec&ord"),
    Part(2, kRecord),
    All(1, Block::kSelect),
    Line(1),
    All(1, Block::kSearch),
    All(1, Block::kInformation),
    Line(1),
    All(1, Block::kWholeDatabase),
    Popup(0, "Vie&w"),
    All(1, Block::kViews),
    Line(1),
    All(1, Block::kPicture),
    Popup(0, "Tran&sfer"),
    All(1, Block::kUpload),
    Part(1, kEndOfTransfer),
    Part(0, kOptionsAndTools),
    Part(0, kWindowMenu),
    Part(0, kHelpMenu),
};

constexpr Entry kConsole[] = {
    Popup(0, "&File"),
    All(1, Block::kNewOpen),
    Part(1, kEndOfFile),
    Popup(0, "&Console"),
    All(1, Block::kConnection),
    Line(1),
    All(1, Block::kLogFile),
    Line(1),
    All(1, Block::kLogSelection),
    All(1, Block::kLogSearch),
    Line(1),
    All(1, Block::kConsoleOptions),
    Popup(1, "Lin&e Ending"),
    All(2, Block::kLineEnding),
    Line(1),
    All(1, Block::kCloseConsole),
    Popup(0, "&Options"),
    One(1, kCmdSettings),
    Part(0, kWindowMenu),
    Part(0, kHelpMenu),
};

constexpr Entry kConsoleLog[] = {
    All(0, Block::kLogSelection), Line(0), All(0, Block::kLogSearch),          Line(0),
    All(0, Block::kLogFile),      Line(0), One(0, kCmdConsoleHexadecimalView), One(0, kCmdConsoleTimeStamps),
};

constexpr Entry kImport[] = {All(0, Block::kImport)};
constexpr Entry kMerge[] = {All(0, Block::kMerge), All(0, Block::kMergeSdb)};
constexpr Entry kUpload[] = {All(0, Block::kUpload)};
constexpr Entry kUrt[] = {All(0, Block::kUrt)};

constexpr Entry kRecordMenu[] = {Part(0, kRecord), Line(0), Part(0, kSelecting), Part(0, kEndOfRecord)};
constexpr Entry kService[] = {Part(0, kRecord),          Line(0),
                              Popup(0, "Add to &Group"), Filled(1, MenuRowKind::kFavouriteGroups),
                              Part(0, kMarking),         Part(0, kEndOfRecord)};
constexpr Entry kSdb[] = {One(0, kCmdAdd), One(0, kCmdEdit), One(0, kCmdDelete), Line(0),
                          All(0, Block::kSdb)};
constexpr Entry kSatelliteLevel[] = {
    Part(0, kRecord),     Line(0), Part(0, kMarking), Line(0), All(0, Block::kSaveSatellites),
    Part(0, kEndOfRecord)};
constexpr Entry kCarrierLevel[] = {Part(0, kRecord), Line(0), Part(0, kMarking), Part(0, kEndOfRecord)};

std::span<const Entry> LayoutOf(MenuName menu) {
  switch (menu) {
    case MenuName::kFrame:
      return kFrame;
    case MenuName::kEditor:
      return kEditor;
    case MenuName::kConsole:
      return kConsole;
    case MenuName::kConsoleLog:
      return kConsoleLog;
    case MenuName::kImport:
      return kImport;
    case MenuName::kMerge:
      return kMerge;
    case MenuName::kUpload:
      return kUpload;
    case MenuName::kUrt:
      return kUrt;
    case MenuName::kRecord:
    case MenuName::kLnbLevel:
      return kRecordMenu;
    case MenuName::kSdb:
      return kSdb;
    case MenuName::kService:
      return kService;
    case MenuName::kSatelliteLevel:
      return kSatelliteLevel;
    case MenuName::kCarrierLevel:
      return kCarrierLevel;
  }
  return {};
}

void Append(std::vector<MenuRow>& rows, std::span<const Entry> entries, int base) {
  for (const Entry& entry : entries) {
    const auto depth = static_cast<uint8_t>(base + entry.depth);
    if (!entry.part.empty()) {
      Append(rows, entry.part, depth);
    } else if (entry.block == Block::kNone) {
      rows.push_back({depth, entry.kind, entry.text, entry.command});
    } else {
      for (const CommandInfo& command : Commands()) {
        if (command.block == entry.block) rows.push_back({depth, MenuRowKind::kCommand, nullptr, command.id});
      }
    }
  }
}

}  // namespace

std::vector<MenuRow> MenuRows(MenuName menu) {
  std::vector<MenuRow> rows;
  Append(rows, LayoutOf(menu), 0);
  return rows;
}

std::vector<const CommandInfo*> ToolbarButtons() {
  std::vector<const CommandInfo*> buttons;
  for (const CommandInfo& command : Commands()) {
    if (command.button.place != 0) buttons.push_back(&command);
  }
  const auto place = [](const CommandInfo* command) { return command->button.place; };
  std::sort(buttons.begin(), buttons.end(),
            [&](const auto* left, const auto* right) { return place(left) < place(right); });
  for (size_t i = 1; i < buttons.size(); ++i) {
    if (buttons[i - 1] && place(buttons[i - 1]) / 10 != place(buttons[i]) / 10)
      buttons.insert(buttons.begin() + static_cast<ptrdiff_t>(i), nullptr);
  }
  return buttons;
}

}  // namespace vexa
