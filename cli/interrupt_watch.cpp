#include <atomic>
#include <csignal>

#include "cli/receiver_commands.h"

namespace vexa {

namespace {

std::atomic<bool> interrupted{false};

void OnSignal(int number) {
  interrupted = true;
  std::signal(number, OnSignal);  // some systems forget the handler when they call it
}

}  // namespace

InterruptWatch::InterruptWatch() {
  interrupted = false;
  old_interrupt_ = std::signal(SIGINT, OnSignal);
  old_end_ = std::signal(SIGTERM, OnSignal);
}

InterruptWatch::~InterruptWatch() {
  std::signal(SIGINT, old_interrupt_);
  std::signal(SIGTERM, old_end_);
}

bool InterruptWatch::IsInterrupted() {
  return interrupted;
}

}  // namespace vexa
