#include "ui/frame/commands.h"

#include "ui/editor/editor.h"
#include "ui/forms/form_commands.h"
#include "ui/frame/import_files.h"
#include "ui/line/console.h"
#include "ui/line/line_commands.h"
#include "view/command_needs.h"

namespace vexa {

namespace {

using CommandFunction = void (*)(Application&);
using CommandGroup = std::span<const CommandRow> (*)();

constexpr CommandGroup kGroups[] = {FrameCommands,     ImportCommands,  RecordCommands,
                                    ClipboardCommands, MergeCommands,   OptionCommands,
                                    TransferCommands,  ConsoleCommands, ImageCommands};

CommandFunction FunctionOf(UINT id) {
  for (const CommandGroup group : kGroups) {
    for (const CommandRow& row : group()) {
      if (row.id == id) return row.run;
    }
  }
  return nullptr;
}

// What the command's key or button stands for in the active window.
const CommandInfo* CommandHere(const WindowState& state, UINT id) {
  const CommandInfo* command = FindCommand(id);
  const bool other = command && command->in_console != kNoCommand && state.console_active;
  return other ? FindCommand(command->in_console) : command;
}

}  // namespace

WindowState StateOfCommands(const Application& app) {
  WindowState state;
  SeeConsole(state, app);
  state.picture = app.window.picture_height > 0;
  if (const EditorWindow* editor = ActiveEditor(app)) SeeDatabase(state, LookOf(*editor));
  return state;
}

bool CanRun(const WindowState& state, UINT id) {
  const CommandInfo* command = CommandHere(state, id);
  return command && FunctionOf(command->id) && CommandEnabled(*command, state.present);
}

std::vector<UINT> CommandsWithFunction() {
  std::vector<UINT> ids;
  for (const CommandGroup group : kGroups) {
    for (const CommandRow& row : group()) ids.push_back(row.id);
  }
  return ids;
}

bool RunCommand(Application& app, UINT id) {
  if (RunRowCommand(app, id)) return true;
  if (!FindCommand(id)) return false;
  const WindowState state = StateOfCommands(app);
  if (app.busy == 0 && CanRun(state, id)) {
    const CommandId command = CommandHere(state, id)->id;
    app.outcome.clear();
    if (ConfigurationServes(app.context, app.configuration_file, app.config.product_index, command))
      FunctionOf(command)(app);
    app.refresh_frame();
  }
  return true;
}

std::string CommandHelp(const Application& app, UINT id) {
  const CommandInfo* command = FindCommand(id);
  if (!command) return "";
  const std::string missing = MissingNeeds(*command, StateOfCommands(app).present);
  return missing.empty() ? command->tip : std::string(command->tip) + ". " + missing;
}

}  // namespace vexa
