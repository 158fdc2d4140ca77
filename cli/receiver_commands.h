// The parts of the receiver's command group.
#pragma once

#include <array>
#include <functional>
#include <string>

#include "cli/commands.h"

namespace vexa {

void AddLoaderCommand(CLI::App& program, CommandState& state);

// While one lives, Ctrl+C, a request to end and a closed terminal only set a flag: the command closes its
// port and goes in order.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  static bool IsInterrupted();

 private:
  std::array<void (*)(int), 3> old_{};
};

// An option's check: a number in the range, which "nan" is not. `what`: what else the text is said not to be.
std::function<std::string(const std::string&)> NumberCheck(double lowest, double highest, const char* what);

// Behind the message of a port that could not be opened: the ports that are there.
void TellPorts(const CommandState& state);

}  // namespace vexa
