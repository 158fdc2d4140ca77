// The parts of the receiver's command group.
#pragma once

#include <functional>
#include <string>

#include "cli/commands.h"
#include "platform/interrupt.h"
#include "serial/trace.h"

namespace vexa {

// `loader`, the simulated receiver.
void AddLoaderCommand(CLI::App& program, CommandState& state);
// `trace show`, a saved record explained.
void AddTraceCommand(CLI::App& program, CommandState& state);

// Begins a trace or log, unless `file` is empty; throws CommandFailed after a message.
void OpenTrace(CommandState& state, Trace& trace, const std::string& file);
// Ends a trace or log. False after a message when it could not be written.
bool IsTraceWritten(CommandState& state, Trace& trace, const std::string& file);

// Tells why a trace or log could not be written.
void TellNotWritten(CommandState& state, const std::string& file, const std::error_code& why);

// An option's check: a number in the range, which "nan" is not. `what`: what else the text is said not to be.
std::function<std::string(const std::string&)> NumberCheck(double lowest, double highest, const char* what);

// Behind the message of a port that could not be opened: the ports that are there.
void TellPorts(const CommandState& state);

}  // namespace vexa
