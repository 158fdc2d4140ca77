// Any bytes on the line: to the receive callbacks of an upload and a download in any state, and to the
// simulated receiver with any times between them.
#include <cstdlib>

#include "core/bytes.h"
#include "image/line_frame.h"
#include "loader/receiver.h"
#include "platform/terminal.h"
#include "serial/transfer.h"
#include "tests/support/test_folder.h"

using namespace vexa;

namespace {

// One folder a process, gone when it ends.
struct OwnFolder {
  std::optional<Path> path = MakeTestFolder(Format("vexa-line-fuzz-%lu", ProcessNumber()));
  ~OwnFolder() {
    if (path) RemoveFolder(*path);
  }
};

Context QuietContext() {
  static const OwnFolder folder;
  Context context;
  context.messages.tell = [](const Message&) {};
  if (folder.path) context.temporary_folder = *folder.path;
  return context;
}

void SetFlags(Transfer& transfer, uint8_t flags) {
  transfer.xon = flags & 1;
  transfer.ack = flags & 2;
  transfer.enq = flags & 4;
  transfer.nak = flags & 8;
  transfer.download_started = flags & 16;
  // Handshakes before the script is through are slowed down on purpose, which would leave nothing to fuzz.
  transfer.script_done = true;
}

void Receive(ByteReader& reader, bool download) {
  Transfer transfer;
  transfer.context = QuietContext();
  transfer.line.write = [](std::span<const uint8_t> bytes) { return bytes.size(); };
  transfer.line.purge = [] {};
  SetFlags(transfer, reader.U8());
  transfer.region_file = std::tmpfile();
  uint64_t moved = 0;
  while (reader.remaining() > 0) {
    const size_t wanted = size_t{reader.U8()} + 1;
    const auto chunk = reader.Take(std::min(wanted, reader.remaining()));
    download ? DownloadReceive(transfer, chunk) : TransferReceive(transfer, chunk);
    if (transfer.packet.bytes.size() > kMaximumFrame + kFrameOverhead) std::abort();
    if (transfer.packets_moved < moved) std::abort();
    moved = transfer.packets_moved;
  }
}

// The receiver sends nothing but handshakes and whole frames, whatever it is sent.
void CheckAnswer(const Bytes& answer) {
  constexpr uint8_t kHandshakes[] = {0x11, 0x06, 0x05, 0x15, 0x17};
  if (answer.size() == 1) {
    for (const uint8_t byte : kHandshakes) {
      if (answer[0] == byte) return;
    }
    std::abort();
  }
  if (answer.size() < 10 || answer.front() != 0x02 || answer.back() != 0x03) std::abort();
}

void FeedReceiver(ByteReader& reader) {
  LoaderFaults faults;
  faults.nak = reader.U8() / 255.0;
  faults.delay = reader.U8();
  Receiver receiver = MakeReceiver(faults, {});
  receiver.baud = reader.U8() & 1 ? 115200 : 0;
  uint64_t now = 1000;
  Bytes answer;
  while (reader.remaining() > 0) {
    now += reader.U8() * uint64_t{11};
    const size_t wanted = reader.U8();
    FeedReceiver(receiver, now, reader.Take(std::min(wanted, reader.remaining())));
    AdvanceReceiver(receiver, now);
    while (TakeAnswer(receiver, now, answer)) CheckAnswer(answer);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ByteReader reader({data, size});
  switch (reader.U8() % 3) {
    case 0:
      Receive(reader, false);
      break;
    case 1:
      Receive(reader, true);
      break;
    default:
      FeedReceiver(reader);
  }
  return 0;
}
