// Runs a receiver on a pseudo-terminal, in real time.
#pragma once

#include <functional>

#include "loader/receiver.h"
#include "platform/pseudo_terminal.h"

namespace vexa {

struct LoaderRun {
  uint32_t baud = 0;           // paces both directions at 10 bits a byte; 0: as fast as it goes
  bool once = false;           // end after one session
  std::function<bool()> stop;  // asked every few ms
  std::function<void(bool from_pc, std::span<const uint8_t> bytes)> tap;  // may be empty
};

void RunReceiver(Receiver& receiver, PseudoTerminal& terminal, const LoaderRun& run);

}  // namespace vexa
