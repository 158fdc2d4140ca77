#include "platform/posix/serial_speed.h"

#ifdef __linux__
// The kernel's own terminal structure; it cannot stand in one file with <termios.h>.
#include <asm/termbits.h>
#include <sys/ioctl.h>
#endif

namespace vexa {

#ifdef __linux__
bool SetAnySpeed(int file, uint32_t baud) {
  termios2 state{};
  if (ioctl(file, TCGETS2, &state) != 0) return false;
  state.c_cflag &= ~static_cast<tcflag_t>(CBAUD);
  state.c_cflag |= BOTHER;
  state.c_ispeed = state.c_ospeed = baud;
  return ioctl(file, TCSETS2, &state) == 0;
}
#else
bool SetAnySpeed(int, uint32_t) {
  return false;
}
#endif

}  // namespace vexa
