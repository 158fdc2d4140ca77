#include "platform/pseudo_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace vexa {

namespace {

struct SystemTerminal : PseudoTerminal {
  int master = -1, keeper = -1;  // the keeper holds the far end open, so that the line survives its users
  Path link;

  ~SystemTerminal() override {
    std::error_code error;
    if (!link.empty() && std::filesystem::read_symlink(link, error) == Path(path))
      std::filesystem::remove(link, error);
    if (keeper >= 0) close(keeper);
    if (master >= 0) close(master);
  }

  size_t Read(std::span<uint8_t> buffer, int milliseconds) override {
    pollfd watched{master, POLLIN, 0};
    if (poll(&watched, 1, milliseconds) <= 0) return 0;
    const ssize_t count = read(master, buffer.data(), buffer.size());
    return count > 0 ? static_cast<size_t>(count) : 0;
  }

  size_t Write(std::span<const uint8_t> bytes) override {
    const ssize_t count = write(master, bytes.data(), bytes.size());
    return count > 0 ? static_cast<size_t>(count) : 0;
  }
};

bool MakeRaw(int file) {
  termios state{};
  if (tcgetattr(file, &state) != 0) return false;
  cfmakeraw(&state);
  return tcsetattr(file, TCSANOW, &state) == 0;
}

// To be called before a far end is made: its number may be that of the one which is gone.
void RemoveDeadLink(const Path& link) {
  std::error_code error;
  const Path leads_to = std::filesystem::read_symlink(link, error);
  if (!error && leads_to.native().starts_with("/dev/pts/") && !std::filesystem::exists(leads_to, error) &&
      !error)
    std::filesystem::remove(link, error);
}

}  // namespace

Made<std::unique_ptr<PseudoTerminal>> OpenPseudoTerminal(const Path& link) {
  RemoveDeadLink(link);
  auto terminal = std::make_unique<SystemTerminal>();
  terminal->master = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal->master < 0 || grantpt(terminal->master) != 0 || unlockpt(terminal->master) != 0)
    return LastSystemError();
  const char* name = ptsname(terminal->master);
  if (!name) return LastSystemError();
  terminal->path = name;
  terminal->keeper = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal->keeper < 0 || !MakeRaw(terminal->keeper)) return LastSystemError();
  fcntl(terminal->master, F_SETFD, FD_CLOEXEC);
  fcntl(terminal->master, F_SETFL, O_NONBLOCK);
  if (!link.empty()) {
    std::error_code error;
    std::filesystem::create_symlink(terminal->path, link, error);
    if (error) return error;
    terminal->link = link;
  }
  return terminal;
}

}  // namespace vexa
