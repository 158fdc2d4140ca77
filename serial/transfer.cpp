#include "serial/transfer.h"

#include <algorithm>
#include <chrono>

#include "image/line_frame.h"

namespace vexa {

Transfer::~Transfer() {
  if (receive_thread.joinable()) receive_thread.join();
  if (packet.file) std::fclose(packet.file);
  if (region_file) std::fclose(region_file);
}

namespace {

int64_t SteadyMilliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace

void ResetTransfer(Transfer& transfer) {
  for (auto* flag :
       {&transfer.deaf, &transfer.line_done, &transfer.polled, &transfer.weighed, &transfer.late_frame,
        &transfer.xon, &transfer.ack, &transfer.enq, &transfer.nak, &transfer.cancel,
        &transfer.console_active, &transfer.download_started, &transfer.in_packet, &transfer.script_done,
        &transfer.crc_failed, &transfer.decoded, &transfer.refused, &transfer.receive_ended}) {
    *flag = false;
  }
  transfer.counter = transfer.expected = 0;
  transfer.packet_count = transfer.file_index = transfer.region_index = transfer.regions = 0;
  transfer.packets_moved = transfer.packets_repeated = 0;
  transfer.bytes_moved = transfer.region_bytes = 0;
  transfer.receive_outcome = 0;
  transfer.heard_at = SteadyMilliseconds();
  const std::lock_guard hold(transfer.text_lock);
  transfer.status.clear();
  transfer.failure.clear();
}

void Wake(Transfer& transfer) {
  { const std::lock_guard hold(transfer.lock); }  // a waiter is either before its test or in its wait
  transfer.changed.notify_all();
}

bool AwaitTransfer(Transfer& transfer, int milliseconds, const std::function<bool()>& ready) {
  std::unique_lock hold(transfer.lock);
  transfer.changed.wait_for(hold, std::chrono::milliseconds(milliseconds),
                            [&] { return transfer.cancel || ready(); });
  return ready();
}

bool PauseTransfer(Transfer& transfer, int milliseconds) {
  AwaitTransfer(transfer, milliseconds, [] { return false; });
  return !transfer.cancel;
}

bool SendByte(Transfer& transfer, uint8_t byte) {
  return transfer.line.write(std::span(&byte, 1)) == 1;
}

void ShowStatus(Transfer& transfer, const std::string& text) {
  {
    const std::lock_guard hold(transfer.text_lock);
    transfer.status = text;
  }
  Show(transfer.view.status, text);
}

void TellFailure(Transfer& transfer, const std::string& text, const std::string& detail) {
  {
    const std::lock_guard hold(transfer.text_lock);
    transfer.failure = text;
  }
  TellWhy(transfer.context.messages, Icon::kStop, detail, "%s", text.c_str());
}

std::string StatusOf(Transfer& transfer) {
  const std::lock_guard hold(transfer.text_lock);
  return transfer.status;
}

std::string FailureOf(Transfer& transfer) {
  const std::lock_guard hold(transfer.text_lock);
  return transfer.failure;
}

double SecondsUnanswered(const Transfer& transfer) {
  return static_cast<double>(SteadyMilliseconds() - transfer.heard_at) / 1000;
}

bool TakesBytes(Transfer& transfer) {
  ++transfer.chunks_heard;
  transfer.heard_at = SteadyMilliseconds();
  if (transfer.deaf) Wake(transfer);
  return !transfer.deaf && !transfer.cancel;
}

void PressCancel(Transfer& transfer) {
  if (transfer.view.press_cancel) transfer.view.press_cancel();
}

int BurstPause(const Transfer& transfer) {
  constexpr int shortest = 30, bytes = 4;
  if (transfer.bytes_per_second <= 0) return shortest;
  return std::max(shortest, static_cast<int>(bytes * 1000 / transfer.bytes_per_second));
}

namespace {

enum class ByteKind { kAnswer, kText, kData };

ByteKind KindOf(uint8_t byte) {
  constexpr uint8_t answers[] = {kXon, kAck, kEnq, kNak, kEtb};
  if (std::find(std::begin(answers), std::end(answers), byte) != std::end(answers)) return ByteKind::kAnswer;
  const bool text = (byte >= ' ' && byte <= '~') || byte == '\r' || byte == '\n' || byte == '\t';
  return text ? ByteKind::kText : ByteKind::kData;
}

// Looks for a whole right frame behind the first STX of the burst.
bool HoldsFrame(const Bytes& burst) {
  const auto start = std::find(burst.begin(), burst.end(), kStx);
  const FrameView frame = LookAtFrame(std::span(start, burst.end()));
  return frame.whole && frame.end == kEtx && frame.sum == frame.stated;
}

void TakeBurstData(Transfer& transfer, int64_t since, std::span<const uint8_t> bytes) {
  AnswerBurst& burst = transfer.burst;
  if (burst.ack_at > since) transfer.ack = false;
  if (burst.enq_at > since) transfer.enq = false;
  if (burst.nak_at > since) transfer.nak = false;
  constexpr size_t most = kMaximumFrame + kFrameOverhead;
  const auto kept = bytes.first(std::min(most - burst.bytes.size(), bytes.size()));
  burst.bytes.insert(burst.bytes.end(), kept.begin(), kept.end());
  if (!HoldsFrame(burst.bytes)) return;
  burst.bytes.clear();
  transfer.late_frame = true;
}

// Answers right behind data are data; data right behind answers takes them back. Text belongs to the data in
// front of it and else to nothing: a loader may greet. Answers do not prolong the data that they follow, so
// that a receiver that answers every ETB is heard.
void WeighAnswers(Transfer& transfer, std::span<const uint8_t> bytes) {
  AnswerBurst& burst = transfer.burst;
  const int64_t now = transfer.heard_at, since = now - BurstPause(transfer);
  ByteKind kind = ByteKind::kAnswer;
  for (const uint8_t byte : bytes) kind = std::max(kind, KindOf(byte));
  if (burst.data_at <= since) burst.bytes.clear();
  if (kind == ByteKind::kData || (kind == ByteKind::kText && burst.data_at > since)) burst.data_at = now;
  if (burst.data_at > since) {
    TakeBurstData(transfer, since, bytes);
    return Wake(transfer);
  }
  const bool ack = transfer.ack, enq = transfer.enq, nak = transfer.nak;
  ScanHandshakes(transfer, bytes);
  if (!ack && transfer.ack) burst.ack_at = now;
  if (!enq && transfer.enq) burst.enq_at = now;
  if (!nak && transfer.nak) burst.nak_at = now;
}

}  // namespace

void TransferReceive(Transfer& transfer, std::span<const uint8_t> bytes) {
  if (!TakesBytes(transfer)) return;
  transfer.weighed ? WeighAnswers(transfer, bytes) : ScanHandshakes(transfer, bytes);
}

void ScanHandshakes(Transfer& transfer, std::span<const uint8_t> bytes) {
  const bool xon_seen = transfer.xon, ack_seen = transfer.ack, enq_seen = transfer.enq;
  for (const uint8_t byte : bytes) {
    if (!xon_seen && byte == kXon) transfer.xon = true;
    if (!ack_seen) {
      if (byte != kAck) continue;
      transfer.ack = true;
    }
    if (enq_seen) continue;
    if (byte == kEnq) transfer.enq = true;
    if (byte == kNak) transfer.nak = true;
  }
  Wake(transfer);
}

}  // namespace vexa
