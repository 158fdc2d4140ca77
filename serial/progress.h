// How far a transfer is: its phase, bytes, rate and time left, and the lines that say so.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "serial/relay.h"

namespace vexa {

enum class TransferPhase { kWakeUp, kUpload, kDownload, kVerify };

// "wake-up", "upload", "download", "verify": as programs read it.
const char* PhaseName(TransferPhase phase);

// "Waiting for the receiver", "Uploading", ...: as people read it.
const char* PhaseText(TransferPhase phase);

struct TransferProgress {
  TransferPhase phase = TransferPhase::kWakeUp;
  uint64_t done = 0, total = 0;  // bytes, done at most total; total is fixed within a phase, 0: not known
  uint64_t rate = 0;             // bytes a second, over the last seconds
  std::optional<uint64_t> seconds_left;  // rounded up; nothing while it cannot be told
  uint64_t repeated = 0;                 // packets, over the whole run
  bool operator==(const TransferProgress&) const = default;
};

// Measures a phase. Times are seconds of one clock that never goes back.
struct ProgressMeter {
  TransferProgress now;
  TransferMeter speed;
  double began = 0;  // the phase
};
void BeginPhase(ProgressMeter& meter, TransferPhase phase, uint64_t total, double seconds);
void Measure(ProgressMeter& meter, uint64_t done, uint64_t repeated, double seconds);

// "progress: upload 8192/65536 11520 5 0"; "-" for a time that cannot be told.
std::string PlainProgress(const TransferProgress& progress);
// Exactly `width` characters: "Uploading [#####-----]  50%  11.5 kB/s  0:05 left  2 repeated". What has no
// room is left out, the bar first.
std::string ProgressLine(const TransferProgress& progress, size_t width);

}  // namespace vexa
