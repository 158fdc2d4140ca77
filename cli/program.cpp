#include "cli/program.h"

#include <cstdio>
#include <new>
#include <sstream>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/last_resort.h"
#include "cli/usage.h"
#include "platform/interrupt.h"
#include "platform/terminal.h"
#include "platform/text.h"

namespace vexa {

namespace {

// The parser takes a number that starts with 0 for octal, nothing for 0, and looks past a sign or a blank in
// front. Here it begins with a digit and is decimal, or 0x hexadecimal. Why the text is none; empty when it
// is.
std::string NumberWord(std::string& text) {
  if (text.empty() || text[0] < '0' || text[0] > '9') return "\"" + text + "\" is no number";
  if (text.find_first_not_of("0123456789") != text.npos) return {};
  while (text.size() > 1 && text[0] == '0') text.erase(0, 1);
  return {};
}

// A script gives an empty word for what was not set: that is no file, no folder and no choice.
std::string CheckNotEmpty(const std::string& text) {
  return text.empty() ? "\"\" names nothing; leave the option out" : "";
}

void CheckWords(CLI::App& command) {
  for (CLI::Option* option : command.get_options()) {
    const std::string type = option->get_type_name();
    if (type.find("INT") != std::string::npos) option->transform(CLI::Validator(NumberWord, ""));
    if (type == "TEXT" && !option->get_required() && !option->check_lname("initials"))
      option->check(CheckNotEmpty);
  }
  for (CLI::App* inner : command.get_subcommands({})) CheckWords(*inner);
}

int TellInterrupted(const CommandState& state, const CLI::App& program) {
  state.errors->Print("error: " + CommandName(program) + " was interrupted" + state.interruption + ".\n");
  return 1;
}

// Status 1 when the results cannot be written.
int Printed(CommandState& state, const CLI::App& program, int status) {
  if (PrintResults(state)) return status;
  return InterruptWatch::IsInterrupted() ? TellInterrupted(state, program) : 1;
}

int TellWrongUsage(CommandState& state, const CLI::App& program, const CLI::ParseError& error) {
  if (error.get_exit_code() != 0) {
    state.errors->Print("error: " + UsageText(program, error) + "\ninfo: " + CommandName(program) +
                        " --help tells more.\n");
    return 2;
  }
  std::ostringstream help;
  help.exceptions(std::ios::badbit);  // memory that runs out is no end of the text
  program.exit(error, help, help);
  state.output = help.str();
  return Printed(state, program, 0);
}

}  // namespace

void DescribeProgram(CLI::App& program, CommandState& state) {
  program.name("vexa");
  program.description("vexa: edit, import, build and transfer receiver channel databases");
  program.option_defaults()->always_capture_default();
  program.require_subcommand(1);
  program.allow_windows_style_options(false);  // "/x" is a path everywhere
  program.fallthrough();
  program.set_version_flag("--version", VersionText,
                           "Print the versions of the program and of the libraries in it");
  program.add_flag("--yes", state.yes, "Answer every question with Yes");
  AddDatabaseCommands(program, state);
  AddListCommands(program, state);
  AddConfigurationCommands(program, state);
  AddImageCommands(program, state);
  AddReceiverCommands(program, state);
  CheckWords(program);
  DescribeDefaults(program);
}

namespace {

int Run(CommandState& state, int count, char** arguments) {
  CLI::App program;
  DescribeProgram(program, state);
  PrepareContext(state);
  try {
    program.parse(count, arguments);
    // What an interrupted command has to say may be half of it; an output that has its name is done.
    if (InterruptWatch::IsInterrupted() && !state.output_made) return TellInterrupted(state, program);
    return Printed(state, program, 0);
  } catch (const CLI::ParseError& error) {
    return TellWrongUsage(state, program, error);
  } catch (const CommandFailed&) {
    if (InterruptWatch::IsInterrupted()) return TellInterrupted(state, program);
    return state.print_output_on_failure ? Printed(state, program, 1) : 1;
  }
}

int RunGuarded(CommandState& state, int count, char** arguments) {
  try {
    return Run(state, count, arguments);
  } catch (const std::bad_alloc&) {
    if (state.output_made) return 0;
    state.errors->ShowLine("");
    TellOutOfMemory();
  } catch (const std::exception& error) {
    state.errors->Print(std::string("error: ") + error.what() + "\n");
  }
  return 1;
}

}  // namespace

int RunProgram(int count, char** arguments, const CommApi& line) {
  try {
    const InterruptWatch
        watch;  // outlives the state: its folder is removed before a signal may end the program
    KeepStandardStreams();
    CommandState state;
    state.line = &line;
    const int status = RunGuarded(state, count, arguments);
    SetFolderOfLastResort(nullptr);
    return status;
  } catch (const std::bad_alloc&) {
    TellOutOfMemory();
  }
  return 1;
}

}  // namespace vexa
