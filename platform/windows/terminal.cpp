#include "platform/terminal.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

namespace vexa {

bool StandardErrorIsTerminal() {
  return _isatty(_fileno(stderr)) != 0;
}
void SetBinaryOutput() {
  _setmode(_fileno(stdout), _O_BINARY);
}
void KeepStandardStreams() {}  // files and streams have numbers of their own
unsigned long ProcessNumber() {
  return GetCurrentProcessId();
}

}  // namespace vexa
