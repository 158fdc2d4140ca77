// What the commands at the receiver's line share: the options of the line, a run with its progress and trace,
// and the document at the end.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "cli/commands.h"
#include "serial/run.h"
#include "serial/run_log.h"
#include "serial/trace.h"

namespace vexa {

struct LineOptions {
  std::string port, baud = "115200", parity = "None", data_bits = "8", stop_bits = "1", trace;
  std::string progress = "auto";  // or "plain"
  double timeout = 0;             // s; 0: none
  bool json = false;
};

// Adds --port and the other options of the line to the command; `line` outlives it.
void AddLineOptions(CLI::App& command, LineOptions& line);
// The port and its settings into the configuration.
void SetLine(ProjectConfig& config, const LineOptions& line);

// A command at the line, from the opening of its trace to its end.
struct LineJob {
  CommandState& state;
  const LineOptions& line;
  Trace trace;
  RunResult result;  // of the run that ended last
};

// A run whose progress, texts and trace go where the options say.
ReceiverRun NewRun(LineJob& job, const ProjectConfig& config);
// Keeps what the run came to, and says in an interruption what state the receiver is in. Gives `done` back.
bool EndRun(LineJob& job, const ReceiverRun& run, bool done);
// How the run ended that gave `done`.
RunEnd EndOf(bool done);
// With --json: the document of the run that ended last, to standard output at once; in one line for a list of
// them. False after a message when it could not be written.
bool PrintDocument(LineJob& job, RunEnd end, bool in_one_line);

// Runs the command: opens the trace, does `body`, which gives back whether it was done, ends the trace and
// prints the document, also of a failure. Throws CommandFailed unless all of it was done.
void RunLineCommand(CommandState& state, const LineOptions& line, const std::function<bool(LineJob&)>& body);
// The same for a command that prints a document for each run itself.
void RunLineList(CommandState& state, const LineOptions& line, const std::function<bool(LineJob&)>& body);

}  // namespace vexa
