// A saved trace (serial/trace.h) read back, and what happened on the line in words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

// What was recorded at one moment. The lines of one chunk, 16 bytes each, are joined; a chunk that ends with
// a full line cannot be told from one that goes on, and is joined with the next one of its side.
struct TraceEntry {
  enum Kind { kFromPc, kFromReceiver, kText } kind = kText;
  double seconds = 0;  // since the record began
  std::vector<uint8_t> bytes;
  std::string text;      // of kText
  uint64_t repeats = 0;  // times that the same came again, not listed
};

// Nothing when a line is none of a trace: `line` is its number then, from 1.
std::optional<std::vector<TraceEntry>> ReadTrace(std::string_view file, size_t& line);

// One thing that happened.
struct TraceStep {
  enum Kind { kControl, kPacket, kRepeated, kDamaged, kUnknown, kSilence, kText } kind = kText;
  bool from_pc = false;        // who did it; not of kSilence and kText
  double seconds = 0;          // when
  double last = 0;             // when the last of it crossed the line
  uint64_t times = 1;          // one after the other
  uint64_t number = 0;         // of a packet: from 1, by side, since the last wake-up
  std::string text;            // in words, without the side
  std::vector<uint8_t> bytes;  // of one time; empty for kSilence and kText
};

struct TraceSummary {
  double seconds = 0;  // of the last entry
  struct Side {
    uint64_t bytes = 0, packets = 0, repeated = 0, damaged = 0;
  } pc, receiver;
  uint64_t silences = 0;  // of kTraceSilence seconds and more
  double longest_silence = 0, longest_at = 0;
};
inline constexpr double kTraceSilence = 1.0;

struct TraceStory {
  TraceSummary summary;
  std::vector<TraceStep> steps;  // in the order of time
};
TraceStory ExplainTrace(const std::vector<TraceEntry>& entries);

// The story as text: the summary, then a line a step. Packets that were each asked for once, and came right,
// are one line for all of them.
std::string TraceStoryText(const TraceStory& story);

}  // namespace vexa
