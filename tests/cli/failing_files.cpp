#include "tests/cli/failing_files.h"

#if !defined(_WIN32)

#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace vexa {

namespace {

FileFault planned = FileFault::kFullDisk;
int failing = 0;
int* counter = nullptr;

// Whether this step goes wrong and the program lives on.
bool FailsNow(const auto& before_a_kill) {
  if (!counter || ++*counter != failing) return false;
  if (planned == FileFault::kKill) {
    before_a_kill();
    kill(getpid(), SIGKILL);
  }
  errno = ENOSPC;
  return true;
}

bool FailsNow() {
  return FailsNow([] {});
}

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void FailFileStep(FileFault fault, int number, int& steps) {
  planned = fault;
  failing = number;
  counter = &steps;
}

}  // namespace vexa

// The program's own calls come here before they go to the library.
extern "C" {

FILE* fopen(const char* path, const char* mode) {
  static auto* const real = vexa::Real<FILE*(const char*, const char*)>("fopen");
  return *mode != 'r' && vexa::FailsNow() ? nullptr : real(path, mode);
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* file) {
  static auto* const real = vexa::Real<size_t(const void*, size_t, size_t, FILE*)>("fwrite");
  if (!vexa::counter || fileno(file) <= STDERR_FILENO) return real(bytes, size, count, file);
  const auto half = [&] { return real(bytes, size, count / 2, file); };
  const bool fails = vexa::FailsNow([&] {
    half();
    fflush(file);
  });
  if (!fails) return real(bytes, size, count, file);
  const size_t written = half();
  errno = ENOSPC;
  return written;
}

int fsync(int file) {
  static auto* const real = vexa::Real<int(int)>("fsync");
  return vexa::FailsNow() ? -1 : real(file);
}

int rename(const char* from, const char* to) noexcept {
  static auto* const real = vexa::Real<int(const char*, const char*)>("rename");
  return vexa::FailsNow() ? -1 : real(from, to);
}

}  // extern "C"

#endif
