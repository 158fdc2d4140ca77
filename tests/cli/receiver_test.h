// A receiver on a pseudo-terminal for the commands at its line, and a database that fits it.
#pragma once

#include <atomic>
#include <thread>

#include "loader/run.h"
#include "tests/cli/cli_test.h"

namespace vexa {

class ReceiverTest : public CliTest {
 protected:
  ReceiverTest() {
    std::mt19937 random(7);
    Document document = NewDocument();
    document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
    Save(document, "list.bin");
  }
  ~ReceiverTest() override { StopReceiver(); }
  // False where there are no pseudo-terminals.
  bool StartReceiver(const LoaderFaults& faults = {}, LoaderMemory memory = {}) {
    if (!terminal_) terminal_ = OpenPseudoTerminal(At("line")).value;
    if (!terminal_) return false;
    receiver_ = MakeReceiver(faults, std::move(memory));
    stop_ = false;
    LoaderRun run;
    run.stop = [this] { return stop_.load(); };
    run.tap = [this](bool from_pc, std::span<const uint8_t>) {
      if (from_pc) heard_ = true;
    };
    loader_ = std::thread([this, run] { RunReceiver(receiver_, *terminal_, run); });
    return true;
  }
  // Then its memory may be looked at.
  LoaderMemory StopReceiver() {
    stop_ = true;
    if (loader_.joinable()) loader_.join();
    return std::move(receiver_.memory);
  }
  std::unique_ptr<PseudoTerminal> terminal_;
  Receiver receiver_;
  std::atomic<bool> stop_{false}, heard_{false};
  std::thread loader_;
};

}  // namespace vexa
