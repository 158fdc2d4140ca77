#include "platform/terminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace vexa {

bool StandardErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}
void SetBinaryOutput() {}
void KeepStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free number is this one. It does not open for what the stream is for.
    if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) return;
  }
}
unsigned long ProcessNumber() {
  return static_cast<unsigned long>(getpid());
}

}  // namespace vexa
