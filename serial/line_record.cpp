#include "serial/line_record.h"

namespace vexa {

void LineRecord::Add(bool from_pc, std::span<const uint8_t> bytes) {
  const std::lock_guard guard(lock_);
  Append(Seconds(), from_pc, bytes);  // read with the lock: threads enter in the order of their times
}

void LineRecord::AddAt(double seconds, bool from_pc, std::span<const uint8_t> bytes) {
  const std::lock_guard guard(lock_);
  Append(seconds, from_pc, bytes);
}

void LineRecord::Append(double seconds, bool from_pc, std::span<const uint8_t> bytes) {
  TraceEntry entry;
  entry.kind = from_pc ? TraceEntry::kFromPc : TraceEntry::kFromReceiver;
  entry.seconds = seconds;
  entry.bytes.assign(bytes.begin(), bytes.end());
  bytes_ += entry.bytes.size();
  entries_.push_back(std::move(entry));
  while (!entries_.empty() && (bytes_ > kept_bytes_ || entries_.front().seconds < seconds - kept_seconds_)) {
    bytes_ -= entries_.front().bytes.size();
    entries_.pop_front();
  }
}

std::vector<TraceEntry> LineRecord::Entries() const {
  const std::lock_guard guard(lock_);
  return {entries_.begin(), entries_.end()};
}

double LineRecord::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

}  // namespace vexa
