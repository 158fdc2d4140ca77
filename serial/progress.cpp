#include "serial/progress.h"

#include <algorithm>

#include "core/messages.h"

namespace vexa {

namespace {

constexpr double kWindow = 5;           // s over which the rate is taken
constexpr double kSampleSpacing = 0.1;  // s
constexpr size_t kShortestBar = 7;      // with its brackets

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

const char* PhaseText(TransferPhase phase) {
  constexpr const char* kTexts[] = {"Waiting for the receiver", "Uploading", "Downloading", "Verifying"};
  return kTexts[static_cast<size_t>(phase)];
}

}  // namespace

const char* PhaseName(TransferPhase phase) {
  constexpr const char* kNames[] = {"wake-up", "upload", "download", "verify"};
  return kNames[static_cast<size_t>(phase)];
}

void BeginPhase(ProgressMeter& meter, TransferPhase phase, uint64_t total, double seconds) {
  meter.now = {phase, 0, total, 0, std::nullopt, meter.now.repeated};
  meter.samples.assign(1, {seconds, 0});
}

void Measure(ProgressMeter& meter, uint64_t done, uint64_t repeated, double seconds) {
  TransferProgress& now = meter.now;
  now.done = std::min(done, now.total);
  now.repeated = repeated;
  auto& samples = meter.samples;
  if (samples.empty() || seconds - samples.back().first >= kSampleSpacing)
    samples.emplace_back(seconds, now.done);
  while (samples.size() > 1 && samples[1].first <= seconds - kWindow) samples.pop_front();
  const double time = seconds - samples.front().first;
  const uint64_t bytes = now.done - std::min(now.done, samples.front().second);
  now.rate = time >= kSampleSpacing ? static_cast<uint64_t>(static_cast<double>(bytes) / time) : 0;
  now.seconds_left.reset();
  if (now.total == 0) return;
  const uint64_t left = now.total - now.done;
  if (left == 0) now.seconds_left = 0;
  if (left > 0 && now.rate > 0) now.seconds_left = (left + now.rate - 1) / now.rate;
}

std::string PlainProgress(const TransferProgress& progress) {
  const std::string left = progress.seconds_left ? std::to_string(*progress.seconds_left) : "-";
  return Format("progress: %s %llu/%llu %llu %s %llu", PhaseName(progress.phase), Wide(progress.done),
                Wide(progress.total), Wide(progress.rate), left.c_str(), Wide(progress.repeated));
}

std::string ProgressLine(const TransferProgress& progress, size_t width) {
  const std::string start = PhaseText(progress.phase);
  std::string rest;
  if (progress.total > 0) {
    rest +=
        Format(" %3llu%%  %s", Wide(progress.done * 100 / progress.total), RateText(progress.rate).c_str());
    if (const auto left = progress.seconds_left)
      rest += Format("  %llu:%02llu left", Wide(*left / 60), Wide(*left % 60));
  }
  if (progress.repeated > 0) rest += Format("  %llu repeated", Wide(progress.repeated));
  const size_t used = start.size() + rest.size() + 1;
  std::string line = start;
  if (progress.total > 0 && used + kShortestBar <= width) line += " " + Bar(progress, width - used);
  line += rest;
  line.resize(width, ' ');
  return line;
}

}  // namespace vexa
