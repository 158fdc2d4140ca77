// Runs a receiver on a pseudo-terminal or a serial port, in real time.
#pragma once

#include <functional>
#include <memory>

#include "core/messages.h"
#include "loader/receiver.h"
#include "platform/pseudo_terminal.h"

namespace vexa {

struct LoaderRun {
  uint32_t baud = 0;  // paces both directions at 10 bits a byte; 0: as fast as it goes. Of a port, its speed
  bool once = false;  // end after one session
  std::function<bool()> stop;                                             // asked every few ms
  std::function<void(bool from_pc, std::span<const uint8_t> bytes)> tap;  // may be empty
};

// The serial port `name`, 8 bits without parity, as the receiver's end of a line. Null after a message.
std::unique_ptr<PseudoTerminal> OpenReceiverPort(const std::string& name, uint32_t baud,
                                                 const Messages& messages);

// Until it is stopped, the one session is over, or the line is gone.
void RunReceiver(Receiver& receiver, PseudoTerminal& terminal, const LoaderRun& run);

}  // namespace vexa
