#include "platform/terminal.h"

#include <unistd.h>

namespace vexa {

bool StandardErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}
void SetBinaryOutput() {}
unsigned long ProcessNumber() {
  return static_cast<unsigned long>(getpid());
}

}  // namespace vexa
