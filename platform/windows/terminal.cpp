#include "platform/terminal.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

namespace vexa {

bool StandardErrorIsTerminal() {
  return _isatty(_fileno(stderr)) != 0;
}
size_t TerminalColumns() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)) return 79;
  const int columns = info.srWindow.Right - info.srWindow.Left;
  return columns > 0 ? static_cast<size_t>(columns) : 79;
}
void SetBinaryOutput() {
  _setmode(_fileno(stdout), _O_BINARY);
}
void KeepStandardStreams() {}  // files and streams have numbers of their own
unsigned long ProcessNumber() {
  return GetCurrentProcessId();
}

}  // namespace vexa
