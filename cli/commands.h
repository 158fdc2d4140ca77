// The command line tool's own state and the command groups, one file a group. Each Add... function hangs its
// commands under the program; a command's callback returns nothing and throws `CommandFailed` to end with
// status 1.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "cli/error_stream.h"
#include "config/ecf_select.h"
#include "config/project_config.h"
#include "core/context.h"
#include "core/database.h"
#include "import/list_losses.h"
#include "platform/clock.h"
#include "platform/serial.h"
#include "platform/temporary_folder.h"

namespace vexa {

// Ends the running command with exit status 1; whatever was to be said has been said.
struct CommandFailed {};

struct CommandState {
  Context context;                       // messages go to standard error
  std::string output;                    // results: printed to standard output only when the command succeeds
  bool print_output_on_failure = false;  // `check` and `urt show`: the findings are the result
  bool yes = false;                      // --yes
  std::string time_text;                 // --time
  std::string ecf;                       // --ecf
  std::string select = "0/0/0";
  std::string software = "1.0";
  std::unique_ptr<TemporaryFolder> folder;  // of this process; null until a command needs it
  const CommApi* line = nullptr;            // what opens serial ports
  bool output_made = false;                 // an output has got its name: nothing that follows is a failure
  bool tells_after_interrupt = false;       // else what fails because of an interruption is not told
  std::string interruption;                 // what is said behind "was interrupted"
  std::string last_detail;                  // of the message that was told last
  Message failure;                          // the first error that was told; without one, the first message
  std::shared_ptr<ErrorStream> errors = std::make_shared<ErrorStream>();
};

// Options shared by commands. Call while building the command.
void AddTimeOption(CLI::App& command, CommandState& state);
void AddConfigurationOptions(CLI::App& command, CommandState& state);  // --ecf --select --software

// All numbers are decimal or 0x hexadecimal.
//
// "MAJOR.MINOR" with numbers up to 255 and `largest_minor`; nothing for other text.
std::optional<std::pair<uint8_t, uint8_t>> ParseVersion(const std::string& text,
                                                        unsigned largest_minor = 255);
// Why ParseVersion refuses the text, with the range.
std::string VersionRefusal(const std::string& text, unsigned largest_minor = 255);

// Why the text can choose no configuration of any file; empty when it may.
std::string CheckSelection(const std::string& text);
// What the text chooses in a configuration file: positions, which need not be there, or names, for which the
// file is read. Throws wrong usage, naming the candidates, when no configuration or several have such a name,
// and CommandFailed after a message when the file cannot be read.
Selection SelectedIn(CommandState& state, const Path& file, const std::string& text);
// That configuration, with --software; throws as SelectedIn, and CommandFailed after a message.
ProjectConfig LoadSelected(CommandState& state, const Path& file, const std::string& select);

// The configuration without --ecf: what VEXA_ECF names, else "receivers.ecf" beside the program, else in
// "../share/vexa". Throws CommandFailed after a message when VEXA_ECF names nothing.
Path ShippedConfiguration(const CommandState& state);
LocalTime CommandTime(const CommandState& state);      // --time or now
ProjectConfig LoadCommandConfig(CommandState& state);  // LoadSelected with --ecf and --select
Document OpenDocument(CommandState& state,
                      const std::string& file);  // throws CommandFailed after the message
// Validators of the options that name records: "1,3-5" or "all"; these or "none"; one number. Why the text is
// wrong; empty when it is right.
std::string CheckList(const std::string& text);
std::string CheckListOrNone(const std::string& text);
std::string CheckPlace(const std::string& text);
// The same for one number from 0 to 2^64 - 1.
std::string CheckNumber(const std::string& text);
// Why there is no code page of this name; empty when there is one.
std::string CheckCodePage(const std::string& name);
// First and last numbers, one-based, of a text that `CheckList` passes and that is not "all".
std::vector<std::pair<size_t, size_t>> ListRanges(const std::string& text);
// Such a text, one-based, to zero-based positions, ascending, each once. Throws CommandFailed after a message
// for a number beyond `count`; `what` it counts, one of them ("SDB").
std::vector<size_t> ParseList(CommandState& state, const std::string& text, size_t count, const char* what);
// Such positions, below 32, as bits.
uint32_t MaskOf(const std::vector<size_t>& positions);
// Gives the context a folder for scratch files; throws CommandFailed after a message when none can be made.
void RequireTemporaryFolder(CommandState& state);
// The configuration file that the command reads.
Path ConfigurationFile(const CommandState& state);
// Throws CommandFailed after a message when `output` is the file of a document that was not read whole.
void ExpectWhole(CommandState& state, const Document& document, const std::string& file,
                 const std::string& output);
// Throws CommandFailed after a message unless the database was saved, with a size that a receiver takes.
// `size` from the save.
void ExpectSaved(CommandState& state, const std::string& file, std::optional<uint64_t> size);
// Writes the whole document as `sort` does: version 1.0, three spaces, compression as read. `file` is where
// it came from. Throws CommandFailed after a message.
void SaveDocument(CommandState& state, const Document& document, const std::string& file,
                  const std::string& output);
// The database of a JSON document or a CSV table; throws CommandFailed after a message. `page`: the page of
// the database's names.
Document ReadDocument(CommandState& state, const std::string& file, bool json, const std::string& page);
// What an import left out, a message each.
void TellEach(const CommandState& state, const std::vector<ListNote>& notes);
// Throws CommandFailed after a message unless the output file was written.
void ExpectWritten(CommandState& state, const std::string& file, const WriteResult& result);
// Writes the whole output file, and expects that it was written.
void WriteOutput(CommandState& state, const std::string& file, std::span<const uint8_t> content);

// Makes `program` the whole command line, with every command and option. `state` outlives it.
void DescribeProgram(CLI::App& program, CommandState& state);

void AddDatabaseCommands(CLI::App& program, CommandState& state);  // info check save sort export diff set
// Those of them that have a file of their own.
void AddExportCommand(CLI::App& program, CommandState& state);          // export
void AddDiffCommand(CLI::App& program, CommandState& state);            // diff
void AddSetCommand(CLI::App& program, CommandState& state);             // set
void AddSortCommand(CLI::App& program, CommandState& state);            // sort
void AddCheckCommand(CLI::App& program, CommandState& state);           // check
void AddListCommands(CLI::App& program, CommandState& state);           // import merge
void AddConfigurationCommands(CLI::App& program, CommandState& state);  // ecf show, ecf build
void AddImageCommands(CLI::App& program, CommandState& state);          // adb, urt
void AddReceiverCommands(CLI::App& program, CommandState& state);       // ports upload download loader

}  // namespace vexa
