// A pseudo-terminal: a serial line without hardware. The far end has a path that any program can open as a
// port. Whoever serves one may be given a real port in its place (loader/run.h).
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/files.h"
#include "platform/system_error.h"

namespace vexa {

struct PseudoTerminal {
  virtual ~PseudoTerminal() = default;  // closes it and removes the link
  std::string path;                     // of the far end
  bool keeps_pace = false;              // the line has a speed of its own
  std::atomic<bool> gone{false};        // unplugged: nothing more will come
  // Waits at most `milliseconds` for bytes; the number read, 0 when there were none.
  virtual size_t Read(std::span<uint8_t> buffer, int milliseconds) = 0;
  // The number of bytes taken; less than all when the far end does not read.
  virtual size_t Write(std::span<const uint8_t> bytes) = 0;
};

// With a symbolic link to the far end at `link` when it is not empty; a link that
// an earlier one left there, and that leads nowhere, is replaced, anything else is not. Null when the system
// has no pseudo-terminals (without an error) or the link cannot be made.
Made<std::unique_ptr<PseudoTerminal>> OpenPseudoTerminal(const Path& link);

}  // namespace vexa
