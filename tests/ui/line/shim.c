// Preloaded into Wine: answers the modem-line requests that a pseudo-terminal refuses, so that it serves as a
// serial port. DTR and RTS are taken; CTS, DSR and carrier read as raised.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <linux/serial.h>
#include <stdarg.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>

static int is_pseudo_terminal(int fd) {
  struct stat status;
  return fstat(fd, &status) == 0 && S_ISCHR(status.st_mode) && major(status.st_rdev) >= 136 &&
         major(status.st_rdev) <= 143;
}

int ioctl(int fd, unsigned long request, ...) {
  static int (*real)(int, unsigned long, ...);
  va_list list;
  va_start(list, request);
  void* argument = va_arg(list, void*);
  va_end(list);
  if (!real) real = (int (*)(int, unsigned long, ...))dlsym(RTLD_NEXT, "ioctl");
  switch (request) {
    case TIOCMGET:
      if (!is_pseudo_terminal(fd)) break;
      *(int*)argument = TIOCM_CTS | TIOCM_DSR | TIOCM_CAR | TIOCM_DTR;
      return 0;
    case TIOCMSET:
    case TIOCMBIS:
    case TIOCMBIC:
      if (!is_pseudo_terminal(fd)) break;
      return 0;
    case TIOCGICOUNT:
      if (!is_pseudo_terminal(fd)) break;
      memset(argument, 0, sizeof(struct serial_icounter_struct));
      return 0;
    default:
      break;
  }
  return real(fd, request, argument);
}

// A pseudo-terminal takes 8 bits without parity and nothing else.
int tcsetattr(int fd, int how, const struct termios* wanted) {
  static int (*real)(int, int, const struct termios*);
  if (!real) real = (int (*)(int, int, const struct termios*))dlsym(RTLD_NEXT, "tcsetattr");
  struct termios possible = *wanted;
  if (is_pseudo_terminal(fd)) {
    possible.c_cflag = (possible.c_cflag & ~(tcflag_t)(CSIZE | PARENB | PARODD | CMSPAR)) | CS8;
  }
  return real(fd, how, &possible);
}
