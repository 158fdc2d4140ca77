#include "serial/progress.h"

#include <algorithm>
#include <cmath>

#include "core/messages.h"

namespace vexa {

namespace {

constexpr size_t kShortestBar = 7;  // with its brackets
constexpr double kFirstRate = 0.1;  // seconds from which on a rate is told

unsigned long long Wide(uint64_t number) {
  return number;
}

std::string RateText(uint64_t rate) {
  if (rate < 1000) return Format("%llu B/s", Wide(rate));
  return Format("%.1f kB/s", static_cast<double>(rate) / 1000);
}

std::string Bar(const TransferProgress& progress, size_t width) {
  const size_t inside = width - 2;
  const auto full = static_cast<size_t>(progress.done * inside / progress.total);
  return "[" + std::string(full, '#') + std::string(inside - full, '-') + "]";
}

}  // namespace

const char* PhaseName(TransferPhase phase) {
  constexpr const char* kNames[] = {"wake-up", "upload", "download", "verify"};
  return kNames[static_cast<size_t>(phase)];
}

const char* PhaseText(TransferPhase phase) {
  constexpr const char* kTexts[] = {"Waiting for the receiver", "Uploading", "Downloading", "Verifying"};
  return kTexts[static_cast<size_t>(phase)];
}

void BeginPhase(ProgressMeter& meter, TransferPhase phase, uint64_t total, double seconds) {
  meter.now = {phase, 0, total, 0, std::nullopt, meter.now.repeated};
  meter.speed = {};
  meter.speed.Sample(seconds, 0, 0, total);
  meter.began = seconds;
}

void Measure(ProgressMeter& meter, uint64_t done, uint64_t repeated, double seconds) {
  TransferProgress& now = meter.now;
  now.done = std::min(done, now.total);
  now.repeated = repeated;
  meter.speed.Sample(seconds, now.done, now.done, now.total);
  now.rate = static_cast<uint64_t>(meter.speed.BytesPerSecond());
  // Too short for the meter, and long enough to tell: since the phase began.
  const double elapsed = seconds - meter.began;
  if (elapsed >= kFirstRate && elapsed < 1)
    now.rate = static_cast<uint64_t>(static_cast<double>(now.done) / elapsed);
  now.seconds_left.reset();
  const double left = meter.speed.SecondsLeft();
  if (left >= 0) now.seconds_left = static_cast<uint64_t>(std::ceil(left));
  if (now.done == now.total && now.total > 0) now.seconds_left = 0;
}

std::string PlainProgress(const TransferProgress& progress) {
  const std::string left = progress.seconds_left ? std::to_string(*progress.seconds_left) : "-";
  return Format("progress: %s %llu/%llu %llu %s %llu", PhaseName(progress.phase), Wide(progress.done),
                Wide(progress.total), Wide(progress.rate), left.c_str(), Wide(progress.repeated));
}

std::string ProgressLine(const TransferProgress& progress, size_t width) {
  std::string line = PhaseText(progress.phase), rest;
  // On a narrow terminal the last parts are left out, whole.
  const auto add = [&](const std::string& part) {
    if (line.size() + rest.size() + part.size() <= width) rest += part;
  };
  if (progress.total > 0) {
    add(Format(" %3llu%%", Wide(progress.done * 100 / progress.total)));
    add("  " + RateText(progress.rate));
    if (const auto left = progress.seconds_left)
      add(Format("  %llu:%02llu left", Wide(*left / 60), Wide(*left % 60)));
  }
  if (progress.repeated > 0) add(Format("  %llu repeated", Wide(progress.repeated)));
  const size_t used = line.size() + rest.size() + 1;
  if (progress.total > 0 && used + kShortestBar <= width) line += " " + Bar(progress, width - used);
  line += rest;
  line.resize(width, ' ');
  return line;
}

}  // namespace vexa
