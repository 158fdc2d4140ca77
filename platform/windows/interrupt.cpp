#include "platform/interrupt.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <csignal>

namespace vexa {

namespace {

constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGBREAK};
constexpr DWORD kClosingTime = 4000;  // ms; the system ends a closed console's program after five seconds

std::atomic<bool> interrupted{false};
std::array<void (*)(int), kSignals.size()> old_handlers{};

void OnSignal(int number) {
  interrupted = true;
  std::signal(number, OnSignal);  // the system forgets the handler when it calls it
}

BOOL WINAPI OnConsole(DWORD event) {
  if (event != CTRL_CLOSE_EVENT && event != CTRL_LOGOFF_EVENT && event != CTRL_SHUTDOWN_EVENT) return FALSE;
  interrupted = true;
  Sleep(kClosingTime);  // the program ends as soon as this returns
  return TRUE;
}

void TakeSignals() {
  for (size_t i = 0; i < kSignals.size(); ++i) {
    old_handlers[i] = std::signal(kSignals[i], OnSignal);
    if (old_handlers[i] == SIG_IGN) std::signal(kSignals[i], SIG_IGN);
  }
  SetConsoleCtrlHandler(OnConsole, TRUE);
}

}  // namespace

void InterruptWatch::TakeToTheEnd() {
  TakeSignals();
}

InterruptWatch::InterruptWatch() {
  TakeSignals();
}

InterruptWatch::~InterruptWatch() {
  SetConsoleCtrlHandler(OnConsole, FALSE);
  for (size_t i = 0; i < kSignals.size(); ++i) std::signal(kSignals[i], old_handlers[i]);
  interrupted = false;
}

bool InterruptWatch::IsInterrupted() {
  return interrupted;
}

}  // namespace vexa
