#include "platform/terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <initializer_list>
#include <string>

namespace vexa {

namespace {

// Opens, under the lowest free number, what refuses to be read, written, and opened again by a path that
// leads to that number. False when the system does not give it.
bool OpenRefusing() {
  const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int socket = made < 0 ? -1 : fcntl(made, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (made >= 0) close(made);
  if (socket < 0) return false;
  const int stream = open(("/proc/self/fd/" + std::to_string(socket)).c_str(), O_PATH);
  close(socket);
  return stream >= 0;
}

}  // namespace

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
    // The lowest free number is this one. At least it does not open for what the stream is for.
    if (!OpenRefusing() && open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) return;
  }
}
unsigned long ProcessNumber() {
  return static_cast<unsigned long>(getpid());
}

}  // namespace vexa
