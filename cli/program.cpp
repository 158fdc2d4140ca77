#include "cli/program.h"

#include <new>

#include "cli/commands.h"
#include "cli/console.h"
#include "core/out_of_memory.h"
#include "platform/text.h"

namespace vexa {

namespace {

// A number that starts with 0 is decimal here, where the parser would take it for octal.
std::string WithoutLeadingZeros(std::string text) {
  const size_t sign = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
  if (text.find_first_not_of("0123456789", sign) != text.npos) return text;
  while (text.size() > sign + 1 && text[sign] == '0') text.erase(sign, 1);
  return text;
}

void TakeNumbersAsDecimal(CLI::App& command) {
  for (CLI::Option* option : command.get_options()) {
    if (option->get_type_name().find("INT") != std::string::npos) option->transform(WithoutLeadingZeros);
  }
  for (CLI::App* inner : command.get_subcommands({})) TakeNumbersAsDecimal(*inner);
}

}  // namespace

int RunProgram(int count, char** arguments) {
  CommandState state;
  CLI::App program("vexa: edit, import, build and transfer receiver channel databases", "vexa");
  program.require_subcommand(1);
  program.allow_windows_style_options(false);  // "/x" is a path everywhere
  program.fallthrough();
  program.add_flag("--yes", state.yes, "Answer every question with Yes");
  AddDatabaseCommands(program, state);
  AddListCommands(program, state);
  AddConfigurationCommands(program, state);
  AddImageCommands(program, state);
  AddReceiverCommands(program, state);
  TakeNumbersAsDecimal(program);

  const TemporaryFolder folder;
  state.context = ConsoleContext(state, folder.path);
  try {
    program.parse(count, arguments);
    PrintResults(state);
    return 0;
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : 2;
  } catch (const CommandFailed&) {
    if (state.print_output_on_failure) PrintResults(state);
    return 1;
  } catch (const std::bad_alloc&) {
    state.context.messages.tell(Icon::kStop, kOutOfMemoryText, "");
    return 1;
  }
}

}  // namespace vexa
