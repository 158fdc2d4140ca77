// The last seconds of what crossed the line, kept in memory while a transfer runs. Thread-safe.
#pragma once

#include <chrono>
#include <deque>
#include <mutex>
#include <span>
#include <vector>

#include "serial/trace_story.h"

namespace vexa {

class LineRecord {
 public:
  // Keeps what is younger than `seconds`, at most `bytes` of it.
  LineRecord(double seconds, size_t bytes) : kept_seconds_(seconds), kept_bytes_(bytes) {}

  // Bytes that crossed the line at this moment, towards the receiver when `from_pc`.
  void Add(bool from_pc, std::span<const uint8_t> bytes);
  // The same at another one, in seconds since the record began; not before the last one.
  void AddAt(double seconds, bool from_pc, std::span<const uint8_t> bytes);
  // What is kept, the oldest first.
  std::vector<TraceEntry> Entries() const;
  // Since the record began.
  double Seconds() const;

 private:
  void Append(double seconds, bool from_pc, std::span<const uint8_t> bytes);  // with the lock

  const double kept_seconds_;
  const size_t kept_bytes_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  mutable std::mutex lock_;
  std::deque<TraceEntry> entries_;
  size_t bytes_ = 0;
};

}  // namespace vexa
