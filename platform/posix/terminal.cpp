#include "platform/terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <initializer_list>

namespace vexa {

bool StandardErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}
size_t TerminalColumns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col - 1u : 79;
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
