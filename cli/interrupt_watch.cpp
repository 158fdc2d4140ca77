#include <atomic>
#include <csignal>

#include "cli/receiver_commands.h"

namespace vexa {

namespace {

#ifdef SIGHUP
constexpr int kHangUp = SIGHUP;  // the terminal was closed
#else
constexpr int kHangUp = SIGBREAK;  // Ctrl+Break
#endif
constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, kHangUp};

std::atomic<bool> interrupted{false};

void OnSignal(int number) {
  interrupted = true;
  std::signal(number, OnSignal);  // some systems forget the handler when they call it
}

}  // namespace

InterruptWatch::InterruptWatch() {
  interrupted = false;
  for (size_t i = 0; i < kSignals.size(); ++i) old_[i] = std::signal(kSignals[i], OnSignal);
  // Whoever starts a command that is to outlive its terminal says so by ignoring this one.
  if (old_[2] == SIG_IGN) std::signal(kHangUp, SIG_IGN);
}

InterruptWatch::~InterruptWatch() {
  for (size_t i = 0; i < kSignals.size(); ++i) std::signal(kSignals[i], old_[i]);
}

bool InterruptWatch::IsInterrupted() {
  return interrupted;
}

}  // namespace vexa
