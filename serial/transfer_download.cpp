#include <filesystem>

#include "core/bytes.h"
#include "image/crc32_mpeg2.h"
#include "image/line_frame.h"
#include "image/region_frame.h"
#include "image/transfer_files.h"
#include "serial/transfer.h"
#include "serial/verdict.h"

namespace vexa {

namespace {

Path PacketFile(const Transfer& transfer) {
  return transfer.context.temporary_folder / kPacketFile;
}
Path RegionFile(const Transfer& transfer) {
  return transfer.context.temporary_folder / kRegionFile;
}

void Remove(const Path& path) {
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
}

void LeavePacket(Transfer& transfer) {
  transfer.in_packet = false;
  if (transfer.packet.file) std::fclose(transfer.packet.file);
  transfer.packet.file = nullptr;
  Remove(PacketFile(transfer));
}

// The counter steps back here and forward again when the NAK is sent.
void AskAgain(Transfer& transfer) {
  transfer.line.purge();
  --transfer.counter;
  transfer.enq = false;
  transfer.nak = true;
}

bool EnterPacket(Transfer& transfer) {
  transfer.packet.bytes.assign(1, kStx);
  const auto file = transfer.context.files->create(PacketFile(transfer));
  transfer.packet.file = file.value;
  if (!file) {
    TellFailure(transfer, "File Access Error", WriteReason(PacketFile(transfer), file.error));
    return false;
  }
  transfer.in_packet = true;
  return true;
}

// False when the entry table goes beyond the record.
bool TakeHeader(Transfer& transfer, std::span<const uint8_t> record) {
  ByteReader reader(record);
  reader.Seek(kRegionLengthAt);
  const uint32_t length = reader.U32Big();
  reader.Seek(kRegionBlockCountAt);
  const uint32_t entries = reader.U24Big();
  int64_t packets = 1;
  for (uint32_t i = 0; i < entries && reader.ok(); ++i) {
    reader.Skip(4);
    packets += reader.U8();
    reader.Skip(9);
  }
  const uint32_t crc = reader.U32Big();
  if (!reader.ok()) return false;
  const std::lock_guard hold(transfer.region_lock);
  transfer.region_length = length;
  transfer.region_crc = crc;
  transfer.expected = packets;
  return true;
}

// Marks the region as cut, since `file` did not take or give its data: that ends the job, whatever the CRC
// would say. With the region's lock held.
void CutRegion(Transfer& transfer, const Path& file, const std::error_code& why) {
  transfer.region_refused = file;
  transfer.region_error = why;
  transfer.region_cut = true;
}

void KeepData(Transfer& transfer, std::span<const uint8_t> data) {
  const std::lock_guard hold(transfer.region_lock);
  if (!transfer.region_file || transfer.region_cut) return;
  const Outcome written = transfer.context.files->write(transfer.region_file, data);
  if (!written) CutRegion(transfer, RegionFile(transfer), written.error);
  if (written) transfer.region_bytes += data.size();
}

// The packet's file holds the payload of the packet that is arriving.
void KeepPacket(Transfer& transfer, std::span<const uint8_t> payload) {
  const Outcome written = transfer.context.files->write(transfer.packet.file, payload);
  if (written) return;
  const std::lock_guard hold(transfer.region_lock);
  CutRegion(transfer, PacketFile(transfer), written.error);
}

bool TakeRecord(Transfer& transfer, std::span<const uint8_t> record) {
  if (record.empty()) return true;
  if (record[0] == kRegionHeaderTag) return TakeHeader(transfer, record);
  if (record[0] == kRegionDataTag && record.size() > kRegionDataAt)
    KeepData(transfer, record.subspan(kRegionDataAt));
  return true;
}

void FinishPacket(Transfer& transfer, const FrameView& frame) {
  const std::span<const uint8_t> bytes = transfer.packet.bytes;
  KeepPacket(transfer, bytes.subspan(kFrameHead, frame.size() - kFrameHead - 1));
  const bool good = frame.sum == frame.stated && TakeRecord(transfer, frame.payload);
  if (good) transfer.bytes_moved += frame.payload.size();
  LeavePacket(transfer);
  if (good) {
    ++transfer.packets_moved;
    transfer.nak = false;
    transfer.enq = true;
  } else {
    AskAgain(transfer);
  }
}

// A byte inside a packet. False: the rest of the chunk is dropped.
bool TakePacketByte(Transfer& transfer, uint8_t byte) {
  IncomingPacket& packet = transfer.packet;
  packet.bytes.push_back(byte);
  const FrameView frame = LookAtFrame(packet.bytes);
  const bool possible = !frame.length || *frame.length <= kMaximumFrame;
  if (possible && !frame.whole) return true;
  if (possible && frame.end == kEtx) {
    FinishPacket(transfer, frame);
    return true;
  }
  LeavePacket(transfer);
  AskAgain(transfer);
  return false;
}

// XON, ACK, ENQ and NAK while the script is sent. The answers are slowed down, so that a receiver that
// repeats them is not overrun.
void TakeHandshakes(Transfer& transfer, std::span<const uint8_t> bytes) {
  ScanHandshakes(transfer, bytes);
  for (const uint8_t byte : bytes) {
    if (byte == kAck || byte == kEnq || byte == kNak) PauseTransfer(transfer, 50);
  }
}

void StartDownload(Transfer& transfer) {
  Show(transfer.view.title, "Download ( STB to PC )");
  ShowStatus(transfer, "Downloading inprogress");
  transfer.download_started = true;
}

bool OpenRegion(Transfer& transfer) {
  const auto file = transfer.context.files->create(RegionFile(transfer));
  if (!file) {
    TellFailure(transfer, "Terminated Receiving.\nCancel and close the Application and Retry !!!",
                WriteReason(RegionFile(transfer), file.error));
    return false;
  }
  const std::lock_guard hold(transfer.region_lock);
  transfer.region_file = file.value;
  transfer.region_length = transfer.region_crc = 0;
  transfer.region_cut = false;
  return true;
}

void RequestNext(Transfer& transfer) {
  transfer.line.purge();
  SendByte(transfer, kEnq);
  const int64_t counter = transfer.counter, expected = transfer.expected;
  const int64_t percent = counter > 0 && expected > 0 ? counter * 100 / expected : 0;
  if (transfer.view.position) transfer.view.position(static_cast<uint64_t>(percent));
  ++transfer.counter;
}

void RequestAgain(Transfer& transfer) {
  transfer.line.purge();
  SendByte(transfer, kNak);
  ++transfer.packets_repeated;
  ++transfer.counter;
}

bool IsRegionCut(Transfer& transfer) {
  const std::lock_guard hold(transfer.region_lock);
  return transfer.region_cut;
}

// False when cancelled, or when the data cannot be kept.
bool ReceiveRegion(Transfer& transfer) {
  while (transfer.expected == 0 || transfer.counter != transfer.expected) {
    if (transfer.cancel || IsRegionCut(transfer)) return false;
    if (transfer.enq.exchange(false)) {
      RequestNext(transfer);
    } else if (transfer.nak.exchange(false)) {
      RequestAgain(transfer);
    } else {
      AwaitTransfer(transfer, 1000, [&] { return transfer.enq || transfer.nak; });
    }
  }
  if (transfer.view.position) transfer.view.position(100);
  return true;
}

// The file is at every moment the old one or the new one. One that is there and cannot be read is no empty
// one.
WriteResult AppendTo(const Path& path, std::span<const uint8_t> more, const FileOperations& files) {
  Bytes all;
  const ReadResult read = ReadWholeFile(path, all);
  std::error_code missing;
  if (read != ReadResult::kDone && std::filesystem::exists(path, missing))
    return {WriteResult::kFailed, read.error};
  all.insert(all.end(), more.begin(), more.end());
  return WriteWholeFile(path, all, files);
}

// The whole region in `data`, and in the file that was asked for. With the region's lock held.
Outcome KeepRegion(Transfer& transfer, size_t region, Bytes& data) {
  const ReadResult read = ReadWholeFile(RegionFile(transfer), data);
  if (read != ReadResult::kDone) return Outcome(read.error);
  if (region >= transfer.region_files.size()) return true;
  const WriteResult kept = AppendTo(transfer.region_files[region], data, *transfer.context.files);
  return kept == WriteResult::kDone ? Outcome() : Outcome(kept.error);
}

// False when it could not be kept; then the region is cut.
bool VerifyRegion(Transfer& transfer, size_t region) {
  const std::lock_guard hold(transfer.region_lock);
  Outcome kept = transfer.context.files->finish(transfer.region_file);
  transfer.region_file = nullptr;
  if (kept && transfer.region_length == 0) return true;
  Bytes data;
  if (kept) kept = KeepRegion(transfer, region, data);
  if (!kept) {
    CutRegion(transfer, RegionFile(transfer), kept.error);
    return false;
  }
  if (Crc32Mpeg2(data) != transfer.region_crc) transfer.crc_failed = true;
  Show(transfer.view.result, transfer.crc_failed ? CrcFailedText() : kCrcHolds);
  return true;
}

void TellCutRegion(Transfer& transfer) {
  const Path& file = transfer.region_refused;
  TellFailure(transfer,
              Format("The received data could not be written to \"%s\".", Utf8FromPath(file).c_str()),
              WriteReason(file, transfer.region_error));
  transfer.refused = true;
}

void CloseRegion(Transfer& transfer) {
  const std::lock_guard hold(transfer.region_lock);
  if (transfer.region_file) std::fclose(transfer.region_file);
  transfer.region_file = nullptr;
}

// False when cancelled or when a work file cannot be made or written.
bool DownloadRegion(Transfer& transfer) {
  transfer.nak = false;
  transfer.counter = -1;
  transfer.expected = 0;
  transfer.enq = true;
  while (!transfer.download_started) {
    if (!PauseTransfer(transfer, 100)) return false;
  }
  if (transfer.view.range) transfer.view.range(100);
  if (transfer.view.position) transfer.view.position(0);
  const size_t region = transfer.region_index++;
  SendByte(transfer, kAck);
  transfer.line.purge();
  if (!OpenRegion(transfer)) {
    transfer.refused = true;
    return false;
  }
  const bool kept = ReceiveRegion(transfer) && VerifyRegion(transfer, region);
  CloseRegion(transfer);
  Remove(RegionFile(transfer));
  if (!kept && IsRegionCut(transfer)) TellCutRegion(transfer);
  return kept;
}

}  // namespace

void DownloadReceive(Transfer& transfer, std::span<const uint8_t> bytes) {
  if (!TakesBytes(transfer)) return;
  if (!transfer.script_done) TakeHandshakes(transfer, bytes);
  for (const uint8_t byte : bytes) {
    if (transfer.in_packet) {
      if (!TakePacketByte(transfer, byte)) break;
    } else if (byte == kEtb && !transfer.download_started) {
      StartDownload(transfer);
    } else if (byte == kStx && transfer.download_started) {
      if (!EnterPacket(transfer)) break;
    }
  }
  Wake(transfer);
}

int DownloadReceiveThread(Transfer& transfer) {
  while (transfer.region_index < transfer.regions) {
    if (transfer.cancel) return 0;
    if (DownloadRegion(transfer)) continue;
    if (!transfer.cancel) PressCancel(transfer);
    return 0;
  }
  ShowStatus(transfer, "Data download completed");
  Remove(PacketFile(transfer));
  transfer.line_done = true;
  SendByte(transfer, kCan);
  if (transfer.cancel) return 0;  // whoever wanted the data may be gone
  transfer.decoded = transfer.decode && transfer.decode(transfer.crc_failed);
  if (transfer.decoded) {
    for (const Path& file : transfer.region_files) Remove(file);
    Show(transfer.view.button, "&Close");
  }
  PressCancel(transfer);
  return 1;
}

}  // namespace vexa
