// The readable record of what crossed the line, both directions, with times in seconds from the start:
//     0.051 PC>  02 44 46 55 20 0A                                 .DFU .
//     0.052 STB> 11                                                XON
// A chunk that repeats the one before it is counted, not listed again. Thread-safe.
#pragma once

#include <chrono>
#include <cstdio>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "platform/files.h"

namespace vexa {

class Trace {
 public:
  Trace() = default;
  ~Trace();
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  // Not done when the file cannot be created.
  Outcome Open(const Path& path);
  // Records bytes that crossed the line at this moment, towards the receiver when `from_pc`. Nothing without
  // a file; failures show when the record is closed.
  void Bytes(bool from_pc, std::span<const uint8_t> bytes);
  // A line of text with its time.
  void Line(const std::string& text);
  // Ends the record. Not done when not all of it could be written; done without a file.
  Outcome Close();

 private:
  void WriteRepeats();
  double Seconds() const;

  std::mutex lock_;
  std::FILE* file_ = nullptr;
  std::chrono::steady_clock::time_point start_;
  std::vector<uint8_t> last_;
  bool last_from_pc_ = false;
  uint64_t repeats_ = 0;
};

// One line of at most 16 bytes: hexadecimal, then the control byte's name or the printable characters.
std::string TraceBytes(std::span<const uint8_t> bytes);

}  // namespace vexa
