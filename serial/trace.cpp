#include "serial/trace.h"

#include <algorithm>

#include "core/messages.h"
#include "image/line_frame.h"

namespace vexa {

namespace {

struct ControlName {
  uint8_t byte;
  const char* name;
};
constexpr ControlName kControlNames[] = {{kStx, "STX"}, {kEtx, "ETX"}, {kEot, "EOT"},   {kEnq, "ENQ"},
                                         {kAck, "ACK"}, {kXon, "XON"}, {kXoff, "XOFF"}, {kNak, "NAK"},
                                         {kSyn, "SYN"}, {kEtb, "ETB"}, {kCan, "CAN"}};

}  // namespace

std::string TraceBytes(std::span<const uint8_t> bytes) {
  std::string hex, text;
  for (const uint8_t byte : bytes) {
    hex += Format("%02X ", byte);
    text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
  }
  if (bytes.size() == 1) {
    for (const ControlName& control : kControlNames) {
      if (control.byte == bytes[0]) text = control.name;
    }
  }
  return Format("%-48s %s", hex.c_str(), text.c_str());
}

Trace::~Trace() {
  Close();
}

Outcome Trace::Close() {
  const std::lock_guard hold(lock_);
  if (!file_) return true;
  WriteRepeats();
  ForgetFileErrors();
  const bool failed_before = std::ferror(file_) != 0;
  const bool written = std::fflush(file_) == 0 && !failed_before;
  // Of an earlier failure the disk is the usual reason.
  const auto reason = LastFileError(std::errc::no_space_on_device);
  std::fclose(file_);
  file_ = nullptr;
  return written ? Outcome() : Outcome(reason);
}

Outcome Trace::Open(const Path& path) {
  const auto file = SystemFiles().create(path);
  file_ = file.value;
  start_ = std::chrono::steady_clock::now();
  return file ? Outcome() : Outcome(file.error);
}

double Trace::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void Trace::WriteRepeats() {
  if (repeats_ > 0) {
    std::fprintf(file_, "%9.3f      (the same again, %llu times)\n", Seconds(),
                 static_cast<unsigned long long>(repeats_));
  }
  repeats_ = 0;
}

void Trace::Bytes(bool from_pc, std::span<const uint8_t> bytes) {
  const std::lock_guard hold(lock_);
  if (!file_) return;
  if (from_pc == last_from_pc_ && std::equal(bytes.begin(), bytes.end(), last_.begin(), last_.end())) {
    ++repeats_;
    return;
  }
  WriteRepeats();
  last_.assign(bytes.begin(), bytes.end());
  last_from_pc_ = from_pc;
  for (size_t i = 0; i < bytes.size(); i += 16) {
    const auto part = bytes.subspan(i, std::min<size_t>(16, bytes.size() - i));
    std::fprintf(file_, "%9.3f %s %s\n", Seconds(), from_pc ? "PC> " : "STB>", TraceBytes(part).c_str());
  }
}

void Trace::Line(const std::string& text) {
  const std::lock_guard hold(lock_);
  if (!file_) return;
  WriteRepeats();
  last_.clear();
  std::fprintf(file_, "%9.3f      -- %s\n", Seconds(), text.c_str());
  std::fflush(file_);
}

}  // namespace vexa
