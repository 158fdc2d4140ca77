#include "serial/transfer.h"

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
  for (auto* flag : {&transfer.deaf, &transfer.line_done, &transfer.polled, &transfer.xon, &transfer.ack,
                     &transfer.enq, &transfer.nak, &transfer.cancel, &transfer.console_active,
                     &transfer.download_started, &transfer.in_packet, &transfer.script_done,
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

void TransferReceive(Transfer& transfer, std::span<const uint8_t> bytes) {
  if (!TakesBytes(transfer)) return;
  ScanHandshakes(transfer, bytes);
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
