#include "loader/run.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <thread>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

// How many bytes one direction may have moved by now. A busy line catches up when this program was kept
// waiting: were it slower than it says, what a sender repeats at the line's speed would pile up in front of
// it.
struct Pace {
  uint32_t baud = 0;
  double next = 0;  // s, when the line is free again

  size_t Allowance(double now) const {
    if (baud == 0) return std::numeric_limits<size_t>::max();
    return now <= next ? 0 : static_cast<size_t>((now - next) * baud / 10);
  }
  // Nothing to move: the time until now is lost.
  void Idle(double now) { next = std::max(next, now); }
  void Used(size_t count) {
    if (baud != 0) next += static_cast<double>(count) * 10 / baud;
  }
};

struct Outgoing {
  Bytes bytes;
  size_t sent = 0;
};

void SendAnswers(Receiver& receiver, PseudoTerminal& terminal, const LoaderRun& run, Outgoing& outgoing,
                 Pace& pace, double now, uint64_t milliseconds) {
  for (;;) {
    if (outgoing.sent == outgoing.bytes.size()) {
      outgoing = {};
      if (!TakeAnswer(receiver, milliseconds, outgoing.bytes)) return pace.Idle(now);
    }
    const size_t left = outgoing.bytes.size() - outgoing.sent;
    const size_t allowed = std::min(left, pace.Allowance(now));
    if (allowed == 0) return;
    const auto part = std::span(outgoing.bytes).subspan(outgoing.sent, allowed);
    const size_t count = terminal.Write(part);
    if (count == 0) return pace.Idle(now);
    if (run.tap) run.tap(false, part.first(count));
    outgoing.sent += count;
    pace.Used(count);
  }
}

}  // namespace

void RunReceiver(Receiver& receiver, PseudoTerminal& terminal, const LoaderRun& run) {
  const auto start = Clock::now();
  const auto seconds = [start] { return std::chrono::duration<double>(Clock::now() - start).count() + 1000; };
  const uint32_t paced = terminal.keeps_pace ? 0 : run.baud;
  Pace incoming{paced, 0}, leaving{paced, 0};
  Outgoing outgoing;
  std::array<uint8_t, 4096> buffer{};
  receiver.baud = run.baud;
  receiver.session_ended = false;
  while (!run.stop() && !terminal.gone) {
    const size_t allowed = std::min(buffer.size(), incoming.Allowance(seconds()));
    if (allowed == 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const bool busy = !outgoing.bytes.empty();
    const size_t count = allowed == 0 ? 0 : terminal.Read(std::span(buffer).first(allowed), busy ? 1 : 5);
    const double now = seconds();
    const auto milliseconds = static_cast<uint64_t>(now * 1000);
    if (count < allowed) incoming.Idle(now);
    if (count > 0) {
      const auto bytes = std::span<const uint8_t>(buffer).first(count);
      incoming.Used(count);
      if (run.tap) run.tap(true, bytes);
      FeedReceiver(receiver, milliseconds, bytes);
    }
    AdvanceReceiver(receiver, milliseconds);
    SendAnswers(receiver, terminal, run, outgoing, leaving, now, milliseconds);
    if (run.once && receiver.session_ended && receiver.out.empty() && outgoing.bytes.empty()) return;
  }
}

}  // namespace vexa
