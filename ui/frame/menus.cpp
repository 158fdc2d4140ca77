#include "ui/frame/menus.h"

#include <algorithm>
#include <string>
#include <vector>

#include "core/messages.h"
#include "platform/text.h"
#include "ui/controls/pictures.h"
#include "ui/controls/resource.h"
#include "ui/editor/editor.h"
#include "ui/forms/form_commands.h"
#include "ui/frame/commands.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

constexpr int kButtonWidth = 23, kButtonHeight = 22;  // of the toolbar, at 96 dots an inch
constexpr int kGapWidth = 8;                          // dots between its groups

// For each field of the records a pop-up of its values.
void AppendFields(HMENU menu, UINT first, MenuName name) {
  const NodeKind kind = name == MenuName::kCarrierLevel ? NodeKind::kCarrier
                        : name == MenuName::kService    ? NodeKind::kService
                                                        : NodeKind::kSatellite;
  HMENU values = nullptr;
  const char* field = "";
  const auto& choices = FieldChoices();
  for (size_t i = 0; i < choices.size(); ++i) {
    const FieldChoice& choice = choices[i];
    if (choice.kind != kind) continue;
    if (strcmp(choice.field, field) != 0) {
      field = choice.field;
      values = CreatePopupMenu();
      AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(values), Wide(field).c_str());
    }
    AppendMenuW(values, MF_STRING, first + i, Wide(choice.text).c_str());
  }
}

// An '&' of a text that is no access key.
std::string Plain(std::string text) {
  for (size_t at = text.find('&'); at != std::string::npos; at = text.find('&', at + 2)) text.insert(at, "&");
  return text;
}

void AppendGroups(const Application& app, HMENU menu) {
  const EditorWindow* editor = ActiveEditor(app);
  const OpenSdb* sdb = editor ? SelectedSdb(*editor) : nullptr;
  if (!sdb) return;
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    const auto& record = sdb->database->favourites[i].record;
    const std::string tv = NameText(editor->document, record.tv_name),
                      radio = NameText(editor->document, record.radio_name);
    const std::string text =
        Format("&%d  ", static_cast<int>(i) + 1) + Plain(tv == radio ? tv : tv + " / " + radio);
    AppendMenuW(menu, MF_STRING, kFirstGroupCommand + i, Wide(text).c_str());
  }
}

void AppendRow(Application& app, HMENU menu, const MenuRow& row, MenuName name) {
  switch (row.kind) {
    case MenuRowKind::kSeparator:
      AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
      return;
    case MenuRowKind::kCommand:
      if (const CommandInfo* command = FindCommand(row.command)) {
        AppendMenuW(menu, MF_STRING, command->id, Wide(MenuText(*command)).c_str());
      }
      return;
    case MenuRowKind::kRecentFiles:
    case MenuRowKind::kPopup: {
      HMENU popup = CreatePopupMenu();
      AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(popup), Wide(row.text).c_str());
      if (row.kind == MenuRowKind::kRecentFiles) app.recent_menus.push_back(popup);
      return;
    }
    case MenuRowKind::kMarkFields:
      AppendFields(menu, kFirstMarkCommand, name);
      return;
    case MenuRowKind::kSelectFields:
      AppendFields(menu, kFirstSelectCommand, name);
      return;
    case MenuRowKind::kFavouriteGroups:
      AppendGroups(app, menu);
      return;
  }
}

// Rows stand in the order of a depth-first walk; `depth` 0 goes into `top`.
HMENU FillMenu(Application& app, HMENU top, MenuName name) {
  std::vector<HMENU> open = {top};
  for (const MenuRow& row : MenuRows(name)) {
    open.resize(row.depth + size_t{1});
    HMENU menu = open.back();
    AppendRow(app, menu, row, name);
    if (row.kind == MenuRowKind::kPopup) open.push_back(GetSubMenu(menu, GetMenuItemCount(menu) - 1));
  }
  return top;
}

// The frame's keys; with those that work while a database window is active only.
HACCEL MakeKeys(bool database) {
  std::vector<ACCEL> keys;
  for (const CommandInfo& command : Commands()) {
    const KeyScope scope = command.key.scope;
    const bool works = scope == KeyScope::kEverywhere || (database && scope == KeyScope::kDatabase);
    if (command.key.code == 0 || !works) continue;
    ACCEL key{};
    key.fVirt = static_cast<BYTE>(FVIRTKEY | (command.key.modifiers & kCtrl ? FCONTROL : 0) |
                                  (command.key.modifiers & kAlt ? FALT : 0) |
                                  (command.key.modifiers & kShift ? FSHIFT : 0));
    key.key = command.key.code;
    key.cmd = command.id;
    keys.push_back(key);
  }
  return CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
}

// A button with a menu is dead only when all of the menu is.
bool CanUseButton(const WindowState& state, const CommandInfo& command) {
  if (CanRun(state, command.id)) return true;
  if (command.button.drop_down == MenuName::kFrame) return false;
  const std::vector<MenuRow> rows = MenuRows(command.button.drop_down);
  return std::any_of(rows.begin(), rows.end(),
                     [&](const MenuRow& row) { return CanRun(state, row.command); });
}

// The menu of open windows within a bar; nullptr when it has none.
HMENU WindowMenu(HMENU bar) {
  for (int i = 0; i < GetMenuItemCount(bar); ++i) {
    HMENU menu = GetSubMenu(bar, i);
    if (menu && GetMenuItemID(menu, 0) == kCmdCascade) return menu;
  }
  return nullptr;
}

}  // namespace

void LoadMenus(Application& app) {
  app.frame_menu = FillMenu(app, CreateMenu(), MenuName::kFrame);
  app.editor_menu = FillMenu(app, CreateMenu(), MenuName::kEditor);
  app.console_menu = FillMenu(app, CreateMenu(), MenuName::kConsole);
  app.editor_keys = MakeKeys(true);
  app.other_keys = MakeKeys(false);
  RefreshRecentMenus(app);
}

void DestroyMenus(Application& app) {
  for (HMENU* menu : {&app.frame_menu, &app.editor_menu, &app.console_menu}) {
    if (*menu && IsMenu(*menu)) DestroyMenu(*menu);
    *menu = nullptr;
  }
  app.recent_menus.clear();
  for (HACCEL* keys : {&app.editor_keys, &app.other_keys}) {
    if (*keys) DestroyAcceleratorTable(*keys);
    *keys = nullptr;
  }
}

void ShowMenuBar(Application& app, MenuName name) {
  HMENU bar = app.frame_menu;
  if (name == MenuName::kEditor) bar = app.editor_menu;
  if (name == MenuName::kConsole) bar = app.console_menu;
  SendMessageW(app.client, WM_MDISETMENU, reinterpret_cast<WPARAM>(bar),
               reinterpret_cast<LPARAM>(WindowMenu(bar)));
  DrawMenuBar(app.frame);
}

void ShowPopupMenu(Application& app, MenuName name, POINT at, UINT flags) {
  HMENU menu = FillMenu(app, CreatePopupMenu(), name);
  TrackPopupMenu(menu, flags, at.x, at.y, 0, app.frame, nullptr);
  DestroyMenu(menu);
}

void RefreshRecentMenus(Application& app) {
  for (HMENU menu : app.recent_menus) {
    while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
    }
    for (size_t i = 0; i < app.recent.paths.size(); ++i) {
      AppendMenuW(menu, MF_STRING, kCmdRecent1 + i, Wide(RecentFileItem(app.recent, i)).c_str());
    }
    if (app.recent.paths.empty()) AppendMenuW(menu, MF_STRING | MF_GRAYED, 0, L"(none)");
  }
}

void PrepareMenu(Application& app, HMENU menu) {
  const WindowState state = StateOfCommands(app);
  for (int i = 0; i < GetMenuItemCount(menu); ++i) {
    const UINT id = GetMenuItemID(menu, i);
    const auto at = static_cast<UINT>(i);
    if (id >= kFirstMarkCommand && id < kEndOfRowCommands)
      EnableMenuItem(menu, at, MF_BYPOSITION | (CanRunRow(app, id) ? MF_ENABLED : MF_GRAYED));
    const CommandInfo* command = FindCommand(id);
    if (!command) continue;
    EnableMenuItem(menu, at, MF_BYPOSITION | (CanRun(state, id) ? MF_ENABLED : MF_GRAYED));
    CheckMenuItem(menu, at, MF_BYPOSITION | (CommandChecked(*command, state) ? MF_CHECKED : MF_UNCHECKED));
    if (!command->has_other_text) continue;
    MENUITEMINFOW item{};
    std::wstring wide = Wide(MenuText(*command, state));
    item.cbSize = sizeof item;
    item.fMask = MIIM_STRING;
    item.dwTypeData = wide.data();
    SetMenuItemInfoW(menu, at, TRUE, &item);
  }
}

void ShowToolbarPictures(Application& app) {
  HIMAGELIST old = app.toolbar_pictures;
  app.toolbar_pictures = LoadPictures(app.instance, IDB_TOOLBAR, app.frame, {COLOR_BTNFACE, COLOR_BTNTEXT});
  SendMessageW(app.toolbar, TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(app.toolbar_pictures));
  SendMessageW(app.toolbar, TB_SETBUTTONSIZE, 0,
               MAKELPARAM(Scaled(app.frame, kButtonWidth), Scaled(app.frame, kButtonHeight)));
  SendMessageW(app.toolbar, TB_AUTOSIZE, 0, 0);
  if (old) ImageList_Destroy(old);
}

bool CreateToolbar(Application& app) {
  app.toolbar = CreateWindowExW(0, TOOLBARCLASSNAMEW, nullptr,
                                WS_CHILD | WS_VISIBLE | TBSTYLE_FLAT | TBSTYLE_TOOLTIPS | CCS_TOP, 0, 0, 0, 0,
                                app.frame, nullptr, app.instance, nullptr);
  if (!app.toolbar) {
    TellNoWindow(app, app.title);
    return false;
  }
  SendMessageW(app.toolbar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
  SendMessageW(app.toolbar, TB_SETEXTENDEDSTYLE, 0, TBSTYLE_EX_DRAWDDARROWS);
  ShowToolbarPictures(app);
  for (const CommandInfo* command : ToolbarButtons()) {
    TBBUTTON button{};
    button.fsState = TBSTATE_ENABLED;
    button.fsStyle = command ? BTNS_BUTTON : BTNS_SEP;
    button.iBitmap = command ? command->button.picture : kGapWidth;
    button.idCommand = command ? command->id : kNoCommand;
    if (command && command->button.drop_down != MenuName::kFrame) button.fsStyle |= BTNS_DROPDOWN;
    SendMessageW(app.toolbar, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&button));
  }
  SendMessageW(app.toolbar, TB_AUTOSIZE, 0, 0);
  return true;
}

void RefreshToolbar(Application& app) {
  const WindowState state = StateOfCommands(app);
  for (const CommandInfo* command : ToolbarButtons()) {
    if (!command) continue;
    SendMessageW(app.toolbar, TB_ENABLEBUTTON, command->id, MAKELPARAM(CanUseButton(state, *command), 0));
    const CommandButton& button = command->button;
    if (!button.has_other_picture) continue;
    const int picture = button.has_other_picture(state) ? button.other_picture : button.picture;
    SendMessageW(app.toolbar, TB_CHANGEBITMAP, command->id, MAKELPARAM(picture, 0));
  }
}

void DropDown(Application& app, const NMTOOLBARW& button) {
  const CommandInfo* command = FindCommand(static_cast<uint32_t>(button.iItem));
  if (!command || command->button.drop_down == MenuName::kFrame) return;
  RECT place{};
  SendMessageW(app.toolbar, TB_GETRECT, static_cast<WPARAM>(button.iItem), reinterpret_cast<LPARAM>(&place));
  MapWindowPoints(app.toolbar, HWND_DESKTOP, reinterpret_cast<POINT*>(&place), 2);
  ShowPopupMenu(app, command->button.drop_down, {place.left, place.bottom}, TPM_LEFTALIGN | TPM_TOPALIGN);
}

}  // namespace vexa
