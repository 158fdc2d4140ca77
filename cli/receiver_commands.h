// The parts of the receiver's command group.
#pragma once

#include "cli/commands.h"

namespace vexa {

void AddLoaderCommand(CLI::App& program, CommandState& state);

// While one lives, Ctrl+C and a request to end only set a flag: the command closes its port and goes in
// order.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  static bool IsInterrupted();

 private:
  void (*old_interrupt_)(int) = nullptr;
  void (*old_end_)(int) = nullptr;
};

// Behind the message of a port that could not be opened: the ports that are there.
void TellPorts(const CommandState& state);

}  // namespace vexa
