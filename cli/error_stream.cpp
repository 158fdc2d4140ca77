#include "cli/error_stream.h"

#include <cstdio>

namespace vexa {

void ErrorStream::TakeAway() {
  if (shown_ == 0) return;
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(shown_), "");
  shown_ = 0;
}

void ErrorStream::Print(const std::string& text) {
  const std::lock_guard hold(lock_);
  TakeAway();
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

void ErrorStream::ShowLine(const std::string& line) {
  const std::lock_guard hold(lock_);
  // A line that covers the one before is written over it, which does not flicker. The cursor goes back to its
  // start: what the terminal echoes of a Ctrl+C would not fit behind it, and would push it up.
  if (line.size() < shown_) TakeAway();
  if (!line.empty()) std::fprintf(stderr, "\r%s\r", line.c_str());
  shown_ = line.size();
  std::fflush(stderr);
}

}  // namespace vexa
