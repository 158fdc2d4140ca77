// vexa: the editor's engine without its windows.
#include "cli/program.h"
#include "platform/heap.h"

#if defined(_WIN32)
int wmain(int count, wchar_t** wide) {
  vexa::PrepareHeap();
  vexa::Utf8Arguments arguments(count, wide);
  return vexa::RunProgram(arguments.count(), arguments.values());
}
#else
int main(int count, char** arguments) {
  vexa::PrepareHeap();
  return vexa::RunProgram(count, arguments);
}
#endif
