#include "platform/interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>

namespace vexa {

namespace {

constexpr std::array<int, 4> kSignals = {SIGINT, SIGTERM, SIGHUP, SIGALRM};
constexpr unsigned kAgain = 1;  // s

std::atomic<bool> interrupted{false};
struct sigaction old_actions[kSignals.size()];
struct sigaction old_pipe, old_size;

// A system call that is entered just behind the flag's last look would wait for ever: it is woken again and
// again.
void OnSignal(int number) {
  if (number != SIGALRM) interrupted = true;
  alarm(kAgain);
}

void TakeSignals() {
  struct sigaction action {};
  action.sa_handler = OnSignal;  // without SA_RESTART: what waits in the system comes back
  sigemptyset(&action.sa_mask);
  for (size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &old_actions[i]);
    if (old_actions[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

}  // namespace

void InterruptWatch::TakeToTheEnd() {
  TakeSignals();
}

InterruptWatch::InterruptWatch() {
  TakeSignals();
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  // What cannot be written to a pipe without a reader, or beyond the largest file allowed, is told as an
  // error.
  sigaction(SIGPIPE, &ignore, &old_pipe);
  sigaction(SIGXFSZ, &ignore, &old_size);
}

InterruptWatch::~InterruptWatch() {
  alarm(0);
  for (size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &old_actions[i], nullptr);
  sigaction(SIGPIPE, &old_pipe, nullptr);
  sigaction(SIGXFSZ, &old_size, nullptr);
  interrupted = false;
}

bool InterruptWatch::IsInterrupted() {
  return interrupted;
}

}  // namespace vexa
