#include <algorithm>
#include <chrono>

#include "image/line_frame.h"
#include "image/urt.h"
#include "platform/clock.h"
#include "platform/serial.h"
#include "serial/transfer.h"

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kNoResponsePolling =
    "Problem:\tNo response from target\n"
    "Caution:\t1. Target loader may not be running properly\n"
    "\t2. Serial cable connection may be faulty\n"
    "\t3. Port settings may be not correct";
constexpr const char* kNoResponseSending =
    "Problem:\tNo response from target\n"
    "Caution:\t1. Target loader may not be running properly\n"
    "\t2. Serial cable connection may be faulty\n"
    "Solution:\t1. Cancel the download process in tool\n"
    "\t2. Reboot the target\n"
    "\t3.Retry once again";

// What the four upload jobs differ in.
struct UploadStyle {
  bool one_file = false;            // sends one file, whatever there is
  bool polls_back_to_back = false;  // ETB without pause until ACK, then 100 ms; else one ETB each 50 ms
  bool asks_for_download = false;   // "no response" warnings each 15 s
  bool from_console = false;        // reports to the console
  const char* open_failure = "";
  const char* in_progress[2] = {"", ""};
  const char* completed[2] = {"", ""};
};

constexpr UploadStyle kAdbStyle = {
    .open_failure = "File access error - UploadAdbThread",
    .in_progress = {"ADB upload inprogress.", "User Box Info upload inprogress."},
    .completed = {"ADB upload completed.", "User Box Info upload completed."}};
constexpr UploadStyle kSdbStyle = {.one_file = true,
                                   .polls_back_to_back = true,
                                   .open_failure = "File access error - UploadSdbThread",
                                   .in_progress = {"SDB upload inprogress.", ""},
                                   .completed = {"SDB upload completed.", ""}};
constexpr UploadStyle kScriptStyle = {.one_file = true,
                                      .asks_for_download = true,
                                      .open_failure = "File access error - UploadDownloadScriptThread"};
constexpr UploadStyle kConsoleStyle = {.one_file = true,
                                       .polls_back_to_back = true,
                                       .from_console = true,
                                       .open_failure = "File access error - UploadURTPacketThread"};

enum class FileOutcome { kSent, kAgain, kCancelled, kFailed };

// Compared for equality, as the loader's users know it: a start in the last 15 s of an hour never warns.
struct Deadline {
  int at = 0;
};

int SecondsOfHour(const Transfer& transfer) {
  if (transfer.seconds_of_hour) return transfer.seconds_of_hour();
  const LocalTime now = LocalTimeNow();
  return now.minute * 60 + now.second;
}

void Restart(const Transfer& transfer, Deadline& deadline) {
  deadline.at = SecondsOfHour(transfer) + 15;
}

bool IsReached(const Transfer& transfer, const UploadStyle& style, const Deadline& deadline) {
  return style.asks_for_download && SecondsOfHour(transfer) == deadline.at;
}

void ShowText(Transfer& transfer, const char* text) {
  if (*text) ShowStatus(transfer, text);
}

// False when cancelled.
bool AwaitQuietLine(Transfer& transfer) {
  const int quiet = std::max(60, BurstPause(transfer));  // ms
  const auto end = Clock::now() + std::chrono::seconds(5);
  transfer.deaf = true;
  for (bool heard = true; heard && Clock::now() < end;) {
    const uint64_t before = transfer.chunks_heard;
    heard = AwaitTransfer(transfer, quiet, [&] { return transfer.chunks_heard != before; });
    if (transfer.cancel) return false;
  }
  transfer.ack = transfer.enq = transfer.nak = false;
  transfer.deaf = false;
  return true;
}

bool WakeUpReceiver(Transfer& transfer, std::span<const uint8_t> message) {
  ShowStatus(transfer, "Receiver not connected.");
  if (!AwaitQuietLine(transfer)) return false;
  transfer.xon = false;
  transfer.file_index = 0;
  while (!transfer.xon) {
    if (transfer.cancel) return false;
    transfer.line.write(message);
    if (!PauseTransfer(transfer, 50)) return false;
  }
  for (int i = 0; i < 3; ++i) SendByte(transfer, kSyn);
  ShowStatus(transfer, "Wait...");
  return !transfer.cancel;
}

bool PollForAck(Transfer& transfer, const UploadStyle& style) {
  Deadline deadline;
  Restart(transfer, deadline);
  // What arrived before the first ETB answers nothing.
  if (!transfer.polled.exchange(true)) transfer.ack = transfer.enq = transfer.nak = false;
  const int after_ack = style.polls_back_to_back ? std::max(100, BurstPause(transfer) + 10) : 0;  // ms
  do {
    while (!transfer.ack) {
      if (transfer.cancel) return false;
      if (transfer.late_frame.exchange(false)) SendByte(transfer, kCan);
      const bool sent = SendByte(transfer, kEtb);
      if (style.polls_back_to_back && sent) continue;  // a port that takes nothing is not asked without end
      if (!PauseTransfer(transfer, 50)) return false;
      if (IsReached(transfer, style, deadline)) {
        TellWhy(transfer.context.messages, Icon::kWarning, transfer.port_name, "%s", kNoResponsePolling);
        Restart(transfer, deadline);
      }
    }
    if (after_ack > 0) PauseTransfer(transfer, after_ack);
    if (transfer.cancel) return false;
  } while (!transfer.ack);  // data that followed has taken it back
  return true;
}

// Until the first packet is asked for. False when cancelled, or when a frame of a download came instead: then
// the ACK was none.
bool AwaitFirstEnq(Transfer& transfer) {
  while (!transfer.cancel && !transfer.late_frame) {
    if (!AwaitTransfer(transfer, 1000, [&] { return transfer.enq || transfer.late_frame; })) continue;
    if (transfer.weighed) PauseTransfer(transfer, BurstPause(transfer) + 10);
    if (transfer.enq) break;
  }
  return !transfer.cancel && !transfer.late_frame;
}

void Report(Transfer& transfer, int code) {
  if (transfer.report) transfer.report(code);
}

void BackToPolling(Transfer& transfer) {
  transfer.ack = transfer.enq = false;
}

// The file as it is being sent.
struct OpenUrt {
  Bytes content;
  size_t position = 0;
  std::span<const uint8_t> last;  // the packet sent last
  bool handed_over = false;       // the port took all of it
  Clock::time_point line_free;    // when the line will have carried it
  Clock::duration repeats{};      // what the line needs for its repeats
};

// What the line needs for the packet. Without a known speed it is free at once.
Clock::duration SendLast(Transfer& transfer, OpenUrt& file) {
  constexpr double tolerance = 1.01;  // a line may be a little slower than its settings say
  file.handed_over = transfer.line.write(file.last) == file.last.size();
  if (transfer.bytes_per_second <= 0) return {};
  const std::chrono::duration<double> seconds(tolerance * static_cast<double>(file.last.size()) /
                                              transfer.bytes_per_second);
  const auto busy = std::chrono::duration_cast<Clock::duration>(seconds);
  file.line_free = std::max(file.line_free, Clock::now()) + busy;
  return busy;
}

bool OpenUrtFile(Transfer& transfer, const UploadStyle& style, OpenUrt& file) {
  const size_t index = transfer.file_index;
  const Path path = index < transfer.files.size() ? transfer.files[index] : Path();
  const ReadResult read = ReadUrtBytes(path, file.content);
  if (read != ReadResult::kDone) {
    BackToPolling(transfer);
    transfer.counter = 0;
    transfer.refused = true;
    if (style.from_console && transfer.view.reset_console) transfer.view.reset_console();
    TellFailure(transfer, style.open_failure, ReadReason(path, read.error));
    return false;
  }
  file.position = std::min<size_t>(6, file.content.size());
  return true;
}

// Either letter of "MZ" in its place will do.
bool ReadMagicAndCount(Transfer& transfer, const UploadStyle& style, const OpenUrt& file) {
  const auto at = [&](size_t i) { return i < file.content.size() ? file.content[i] : uint8_t{0}; };
  const bool magic = at(0) == 'M' || at(1) == 'Z';
  if (!magic) {
    Report(transfer, -6);
    BackToPolling(transfer);
  }
  uint32_t count = 0;
  for (size_t i = 2; i < 6; ++i) count = count << 8 | at(i);
  transfer.packet_count = count;
  if (transfer.view.range) transfer.view.range(count);
  if (transfer.view.position) transfer.view.position(0);
  if (style.from_console && transfer.view.console_total) transfer.view.console_total(count);
  return magic;
}

// False: back to polling, nothing was sent.
bool TakePacket(OpenUrt& file) {
  const auto rest = std::span<const uint8_t>(file.content).subspan(file.position);
  const FrameView frame = LookAtFrame(rest);
  if (!frame.length || frame.start != kStx) return false;
  file.last = rest.first(std::min(frame.size(), rest.size()));
  file.position += file.last.size();
  return true;
}

// Whether the job needs the line no more behind this file. A script is followed by what it asks for.
bool IsLastFile(const Transfer& transfer, const UploadStyle& style) {
  if (style.asks_for_download) return false;
  return style.one_file || transfer.file_index + 1 >= transfer.files.size();
}

void SendNextPacket(Transfer& transfer, const UploadStyle& style, OpenUrt& file) {
  if (!TakePacket(file)) {
    BackToPolling(transfer);
    transfer.counter = 0;
    if (style.from_console) Report(transfer, -1);
    return;
  }
  // The ENQ tells that the packet before has arrived: only its repeats can still be on the line, also on one
  // that is faster than its settings say.
  file.line_free = std::min(file.line_free, Clock::now() + file.repeats);
  file.repeats = {};
  SendLast(transfer, file);
  const bool last = transfer.counter + 1 == int64_t{transfer.packet_count};
  if (last && file.handed_over && IsLastFile(transfer, style)) transfer.line_done = true;
  if (file.last.back() != kEtx) {
    transfer.ack = false;
    if (style.from_console) {
      transfer.enq = false;
      Report(transfer, -3);
    }
  }
  transfer.bytes_moved += LookAtFrame(file.last).payload.size();
  ++transfer.packets_moved;
  const auto counter = static_cast<uint32_t>(++transfer.counter);
  if (transfer.view.position) transfer.view.position(counter);
  if (style.from_console && transfer.view.console_count) transfer.view.console_count(counter);
}

// NAK stays seen: the packet goes out again on every pass until the next ENQ. A pass begins when the line has
// carried what was sent before. Without that a driver with a large queue, or a converter behind USB, fills up
// with repeats; the receiver, still reading them, takes its ENQ for lost and asks for packets ahead of time.
void SendAgain(Transfer& transfer, OpenUrt& file) {
  const auto busy = std::chrono::ceil<std::chrono::milliseconds>(file.line_free - Clock::now()).count();
  if (busy > 0) {
    AwaitTransfer(transfer, static_cast<int>(busy), [&] { return transfer.enq || !transfer.ack; });
    if (transfer.cancel || transfer.enq || !transfer.ack) return;
  }
  file.repeats += SendLast(transfer, file);
  ++transfer.packets_repeated;
}

FileOutcome SendPackets(Transfer& transfer, const UploadStyle& style, OpenUrt& file) {
  Deadline deadline;
  Restart(transfer, deadline);
  const auto something = [&] {
    return transfer.enq || !transfer.ack || (transfer.nak && !file.last.empty());
  };
  for (;;) {
    if (transfer.cancel) return FileOutcome::kCancelled;
    if (transfer.packet_count > 0 && transfer.counter == transfer.packet_count) return FileOutcome::kSent;
    if (!transfer.ack) return FileOutcome::kAgain;
    if (transfer.enq.exchange(false)) {
      SendNextPacket(transfer, style, file);
    } else if (transfer.nak && !file.last.empty()) {
      SendAgain(transfer, file);
    } else {
      AwaitTransfer(transfer, style.asks_for_download ? 200 : 1000, something);
    }
    if (IsReached(transfer, style, deadline)) {
      TellWhy(transfer.context.messages, Icon::kWarning, transfer.port_name, "%s", kNoResponseSending);
      Restart(transfer, deadline);
    }
  }
}

FileOutcome TryOneFile(Transfer& transfer, const UploadStyle& style) {
  transfer.weighed = style.from_console;
  if (!PollForAck(transfer, style)) return FileOutcome::kCancelled;
  if (!AwaitFirstEnq(transfer)) {
    BackToPolling(transfer);
    return transfer.cancel ? FileOutcome::kCancelled : FileOutcome::kAgain;
  }
  transfer.weighed = false;
  const size_t index = transfer.file_index;
  if (index < 2) ShowText(transfer, style.in_progress[index]);
  OpenUrt file;
  if (!OpenUrtFile(transfer, style, file)) return FileOutcome::kFailed;
  if (!ReadMagicAndCount(transfer, style, file)) return FileOutcome::kAgain;
  return SendPackets(transfer, style, file);
}

FileOutcome SendOneFile(Transfer& transfer, const UploadStyle& style) {
  FileOutcome outcome = FileOutcome::kAgain;
  while (outcome == FileOutcome::kAgain) outcome = TryOneFile(transfer, style);
  if (outcome != FileOutcome::kSent) return outcome;
  BackToPolling(transfer);
  transfer.counter = 0;
  const size_t index = transfer.file_index++;
  if (transfer.view.position) transfer.view.position(0);
  if (index < 2) ShowText(transfer, style.completed[index]);
  return outcome;
}

int UploadFiles(Transfer& transfer, const UploadStyle& style, size_t files) {
  FileOutcome outcome =
      WakeUpReceiver(transfer, kUploadWakeUp) ? FileOutcome::kSent : FileOutcome::kCancelled;
  while (outcome == FileOutcome::kSent && transfer.file_index < files) outcome = SendOneFile(transfer, style);
  if (outcome == FileOutcome::kSent) {
    std::error_code ignored;
    for (const Path& file : std::span(transfer.files).first(files)) std::filesystem::remove(file, ignored);
  }
  if (outcome != FileOutcome::kCancelled) PressCancel(transfer);
  return outcome == FileOutcome::kSent ? 1 : 0;
}

}  // namespace

int UploadAdbThread(Transfer& transfer) {
  return UploadFiles(transfer, kAdbStyle, transfer.files.size());
}

int UploadSdbThread(Transfer& transfer) {
  return UploadFiles(transfer, kSdbStyle, std::min<size_t>(1, transfer.files.size()));
}

int UploadUrtPacketThread(Transfer& transfer) {
  transfer.file_index = 0;
  transfer.console_active = true;
  const FileOutcome outcome =
      AwaitQuietLine(transfer) ? SendOneFile(transfer, kConsoleStyle) : FileOutcome::kCancelled;
  transfer.console_active = false;
  if (outcome == FileOutcome::kSent) {
    Report(transfer, 1);
    if (transfer.view.reset_console) transfer.view.reset_console();
  }
  if (outcome == FileOutcome::kCancelled) Report(transfer, 23);
  return outcome == FileOutcome::kSent ? 1 : 0;
}

int UploadDownloadScriptThread(Transfer& transfer) {
  if (!WakeUpReceiver(transfer, kDownloadWakeUp)) return 0;
  const FileOutcome outcome = SendOneFile(transfer, kScriptStyle);
  if (outcome == FileOutcome::kFailed) PressCancel(transfer);
  if (outcome != FileOutcome::kSent) return 0;
  transfer.script_done = true;
  transfer.regions = transfer.packet_count.load();
  const auto start = transfer.start_thread ? transfer.start_thread : StartThread;
  const Outcome started = start(transfer.receive_thread, [&transfer] {
    transfer.receive_outcome = DownloadReceiveThread(transfer);
    transfer.receive_ended = true;
    Wake(transfer);
  });
  if (started) return 1;
  transfer.receive_ended = true;
  TellFailure(transfer, "CreateThread failed - UploadDownloadScriptThread",
              started.error ? SystemText(started.error) : "");
  PressCancel(transfer);
  return 0;
}

}  // namespace vexa
