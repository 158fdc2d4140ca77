#include "loader/receiver.h"

#include <algorithm>

#include "core/bytes.h"
#include "image/line_frame.h"
#include "serial/transfer.h"

namespace vexa {

namespace {

constexpr uint64_t kAckEvery = 200, kPollQuiet = 120, kPolledAgain = 30, kNakEvery = 100, kSilence = 2000;
constexpr uint64_t kRepeatAfter = 500, kSessionEnd = 2000;
constexpr uint64_t kFirstEtb = 100, kNextEtb = 500, kDoneEtb = 1000;
constexpr int kAnnouncements = 8;

uint64_t Since(uint64_t then, uint64_t now) {
  return now - std::min(now, then);  // a delayed answer lies ahead
}

void SendEnq(Receiver& receiver, uint64_t now) {
  receiver.last_enq = now + receiver.faults.delay;
  SendHandshake(receiver, now, kEnq);
}

void SendNak(Receiver& receiver, uint64_t now) {
  if (receiver.nak_sent && now - receiver.last_nak < kNakEvery) return;
  receiver.last_nak = now;
  receiver.nak_sent = true;
  SendHandshake(receiver, now, kNak);
}

void BeginFile(Receiver& receiver) {
  receiver.frames.clear();
  receiver.frames_expected = 0;
  receiver.blocks.clear();
  receiver.block = 0;
  receiver.block_position = receiver.block_packet = 0;
  receiver.other_since_enq = false;
}

void WakeUp(Receiver& receiver, uint64_t now, bool download) {
  if (receiver.state != LoaderState::kWoken) receiver.out.clear();  // each wake-up message gets its own XON
  receiver.download = download;
  receiver.state = LoaderState::kWoken;
  receiver.upload_open = false;
  receiver.ack_sent = receiver.nak_sent = false;
  receiver.timer = 0;
  BeginFile(receiver);
  SendHandshake(receiver, now, kXon);
}

void Polled(Receiver& receiver, uint64_t now) {
  if (receiver.state != LoaderState::kPolled) {
    if (receiver.state == LoaderState::kIdle) receiver.download = false;
    receiver.state = LoaderState::kPolled;
    receiver.upload_open = false;
    BeginFile(receiver);
  }
  if (receiver.ack_sent && Since(receiver.last_ack, now) < kAckEvery) return;
  receiver.ack_sent = true;
  receiver.last_ack = now + receiver.faults.delay;
  SendHandshake(receiver, now, kAck);
}

void TakeEtb(Receiver& receiver, uint64_t now) {
  switch (receiver.state) {
    case LoaderState::kIdle:
    case LoaderState::kWoken:
    case LoaderState::kPolled:
      return Polled(receiver, now);
    case LoaderState::kReceiving:
      if (now - receiver.last_other >= kPolledAgain) Polled(receiver, now);
      return;
    default:
      return;
  }
}

void EndSession(Receiver& receiver) {
  receiver.state = LoaderState::kIdle;
  receiver.session_ended = true;
  Note(receiver, "session ended");
}

// Whether a fault ends the transfer at this frame, which was taken or asked for.
bool GoesWrong(Receiver& receiver) {
  if (FaultOccurs(receiver, receiver.faults.silence)) {
    Note(receiver, "fault: silent from now on");
    receiver.state = LoaderState::kFailed;
  } else if (FaultOccurs(receiver, receiver.faults.reset)) {
    Note(receiver, "fault: reset");
    EndSession(receiver);
  } else {
    return false;
  }
  receiver.in.clear();
  receiver.out.clear();
  return true;
}

void TakeRegionControl(Receiver& receiver, uint64_t now, uint8_t byte) {
  if ((byte != kEnq && byte != kNak) || GoesWrong(receiver)) return;
  receiver.repeats = 0;
  if (byte == kNak) {
    // A frame that has not left yet is the answer.
    if (receiver.region_frame >= 0 && receiver.out.empty()) SendRegionFrame(receiver, now, 50);
    return;
  }
  if (receiver.region_frame < static_cast<int64_t>(receiver.region_frames)) {
    ++receiver.region_frame;
    return SendRegionFrame(receiver, now, 0);
  }
  ++receiver.region;
  receiver.state = LoaderState::kDone;
  receiver.announcements = 0;
  receiver.timer = now + kDoneEtb;
  Note(receiver, "region complete");
}

void TakeControl(Receiver& receiver, uint64_t now, uint8_t byte) {
  if (byte == kEtb) return TakeEtb(receiver, now);
  const bool announced = receiver.state == LoaderState::kAnnounce || receiver.state == LoaderState::kDone;
  if (byte == kAck && announced && receiver.region < receiver.regions.size()) return OpenRegion(receiver);
  if (byte == kCan && (announced || receiver.state == LoaderState::kRegion)) return EndSession(receiver);
  if (receiver.state == LoaderState::kRegion) TakeRegionControl(receiver, now, byte);
}

void FailUpload(Receiver& receiver, const std::string& why) {
  Note(receiver, "failed: " + why);
  receiver.state = LoaderState::kFailed;
  receiver.in.clear();
}

// Reads how many frames the file has from its first one. False when that one makes no sense.
bool ReadFirstFrame(Receiver& receiver, const Bytes& payload) {
  ByteReader reader(payload);
  if (receiver.download) {
    receiver.frames_expected = reader.U32Big();
    return reader.ok() && payload.size() == 16 && receiver.frames_expected >= 1 &&
           receiver.frames_expected <= 2;
  }
  UrtContent content;
  if (!ReadDescriptionBody(payload, 0, content)) return false;
  uint64_t packets = 0, size = 0;
  for (const UrtBlock& block : content.blocks) {
    size += block.length;
    if (block.packet_size == 0 || block.length == 0) return false;
    packets += (uint64_t{block.length} + block.packet_size - 1) / block.packet_size;
  }
  if (size > kMaximumImageSize) return false;
  receiver.blocks = std::move(content.blocks);
  receiver.frames_expected = static_cast<size_t>(packets + 1);
  return true;
}

bool IsRepeated(const Receiver& receiver, const Bytes& payload) {
  if (receiver.frames.empty()) return false;
  const Bytes& last = receiver.frames.back();
  if (receiver.download) return payload.size() > 4 && payload[4] == last[4];
  if (receiver.frames.size() == 1) return !payload.empty() && payload[0] == last[0];
  return payload.size() >= 10 && payload[0] == last[0] &&
         std::equal(payload.begin() + 3, payload.begin() + 10, last.begin() + 3);
}

bool IsDue(const Receiver& receiver, const Bytes& payload) {
  if (receiver.download) return payload.size() == 16 && payload[4] == receiver.frames.size() + 1;
  const auto place = PlaceDue(receiver);
  return payload.size() > 12 && std::equal(place.begin(), place.end(), payload.begin() + 3);
}

void CountPacket(Receiver& receiver, const Bytes& payload) {
  if (receiver.download || receiver.frames.size() == 1) return;
  const UrtBlock& block = receiver.blocks[receiver.block];
  receiver.block_position += static_cast<uint32_t>(payload.size() - 12);
  ++receiver.block_packet;
  if (receiver.block_position < block.length) return;
  ++receiver.block;
  receiver.block_position = receiver.block_packet = 0;
}

void BeginAnnounce(Receiver& receiver, uint64_t now) {
  receiver.regions.clear();
  for (const Bytes& record : receiver.frames) {
    ByteReader reader(record);
    reader.Skip(4);
    LoaderRegion region;
    region.number = reader.U8();
    region.start = reader.U32Big();
    region.end = reader.U32Big();
    if (region.end < region.start || region.end - region.start > kLargestRegion) {
      return FailUpload(receiver, "the request asks for a region that there is not");
    }
    receiver.regions.push_back(region);
  }
  receiver.region = 0;
  receiver.announcements = 0;
  receiver.timer = now + kFirstEtb;
  receiver.state = LoaderState::kAnnounce;
  Note(receiver, "request taken");
}

void EndFile(Receiver& receiver, uint64_t now) {
  if (receiver.download) return BeginAnnounce(receiver, now);
  if (!StoreUpload(receiver)) return FailUpload(receiver, "the upload is damaged");
  if (receiver.stored) receiver.stored();
  receiver.state = LoaderState::kWoken;
  receiver.ack_sent = false;
  receiver.upload_open = true;
  receiver.last_file = now;
  BeginFile(receiver);
}

void TakeRepeated(Receiver& receiver, uint64_t now, size_t length) {
  const uint64_t frame_time = receiver.baud == 0 ? 0 : (length + kFrameOverhead) * 10000 / receiver.baud;
  if (Since(receiver.last_enq, now) >= kRepeatAfter + 2 * frame_time) SendEnq(receiver, now);
}

void TakeFrame(Receiver& receiver, uint64_t now, const Bytes& payload) {
  receiver.state = LoaderState::kReceiving;
  if (IsRepeated(receiver, payload)) return TakeRepeated(receiver, now, payload.size());
  if (receiver.frames.empty()) {
    if (!ReadFirstFrame(receiver, payload)) return FailUpload(receiver, "the first frame is no description");
  } else if (!IsDue(receiver, payload)) {
    return FailUpload(receiver, "a frame out of order");
  }
  if (GoesWrong(receiver)) return;
  const bool last = receiver.frames.size() + 1 >= receiver.frames_expected;
  if (!last && FaultOccurs(receiver, receiver.faults.nak)) {
    Note(receiver, "fault: a good frame refused");
    return SendNak(receiver, now);
  }
  receiver.frames.push_back(payload);
  CountPacket(receiver, payload);
  if (last) return EndFile(receiver, now);
  SendEnq(receiver, now);
}

enum class FrameKind { kIncomplete, kGood, kBadLength, kBadEnd, kBadSum };

FrameKind KindOf(const FrameView& frame) {
  if (!frame.length) return FrameKind::kIncomplete;
  if (*frame.length > kMaximumFrame || *frame.length == 0) return FrameKind::kBadLength;
  if (!frame.whole) return FrameKind::kIncomplete;
  if (frame.end != kEtx) return FrameKind::kBadEnd;
  return frame.stated == frame.sum ? FrameKind::kGood : FrameKind::kBadSum;
}

void Drop(Receiver& receiver, size_t count) {
  receiver.in.erase(receiver.in.begin(), receiver.in.begin() + static_cast<std::ptrdiff_t>(count));
}

// Behind the STX of a bad frame a whole right one may stand: then everything before it goes.
bool FindFrameBehind(Receiver& receiver) {
  for (size_t i = 1; i < receiver.in.size(); ++i) {
    if (receiver.in[i] != kStx) continue;
    if (KindOf(LookAtFrame(std::span(receiver.in).subspan(i))) != FrameKind::kGood) continue;
    Drop(receiver, i);
    return true;
  }
  return false;
}

// False: more bytes are needed.
bool TakeFrameBytes(Receiver& receiver, uint64_t now) {
  const FrameView frame = LookAtFrame(receiver.in);
  const FrameKind kind = KindOf(frame);
  if (kind == FrameKind::kIncomplete) return false;
  if (kind == FrameKind::kGood) {
    const Bytes payload(frame.payload.begin(), frame.payload.end());
    Drop(receiver, frame.size());
    TakeFrame(receiver, now, payload);
    return true;
  }
  if (FindFrameBehind(receiver)) return true;
  Drop(receiver, kind == FrameKind::kBadSum ? frame.size() : 1);
  SendNak(receiver, now);
  return true;
}

// -1: cannot become one; 0: not yet; 1: is one.
int MatchWakeUp(std::span<const uint8_t> bytes, std::span<const uint8_t> message) {
  const size_t count = std::min(bytes.size(), message.size());
  if (!std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count), message.begin()))
    return -1;
  return count == message.size() ? 1 : 0;
}

bool TakesFrames(const Receiver& receiver) {
  return receiver.state == LoaderState::kReceiving || receiver.state == LoaderState::kPolled;
}

void Parse(Receiver& receiver, uint64_t now) {
  while (!receiver.in.empty()) {
    if (receiver.in[0] != kStx) {
      const uint8_t byte = receiver.in[0];
      Drop(receiver, 1);
      TakeControl(receiver, now, byte);
      continue;
    }
    const int upload = MatchWakeUp(receiver.in, kUploadWakeUp),
              download = MatchWakeUp(receiver.in, kDownloadWakeUp);
    if (upload == 1 || download == 1) {
      Drop(receiver, kUploadWakeUp.size());
      WakeUp(receiver, now, download == 1);
    } else if (upload == 0 || download == 0) {
      return;
    } else if (!TakesFrames(receiver)) {
      Drop(receiver, 1);
    } else if (!TakeFrameBytes(receiver, now)) {
      return;
    }
  }
}

void BreakSilence(Receiver& receiver, uint64_t now) {
  const uint64_t since = std::max({receiver.last_byte, receiver.last_enq, receiver.timer});
  if (Since(since, now) < kSilence) return;
  receiver.in.clear();
  receiver.timer = now;
  if (receiver.other_since_enq) {
    SendNak(receiver, now);
  } else {
    SendEnq(receiver, now);
  }
}

void RepeatAnnouncement(Receiver& receiver, uint64_t now) {
  if (receiver.region >= receiver.regions.size() || now < receiver.timer) return;
  if (receiver.announcements == kAnnouncements) {
    Note(receiver, "no editor takes the region");
    receiver.state = LoaderState::kIdle;
    return;
  }
  ++receiver.announcements;
  receiver.timer = now + kNextEtb;
  SendHandshake(receiver, now, kEtb);
}

void RepeatRegionFrame(Receiver& receiver, uint64_t now) {
  if (receiver.region_frame < 0 || now < receiver.timer) return;
  if (++receiver.repeats > kAnnouncements) {
    Note(receiver, "the editor is gone");
    receiver.state = LoaderState::kIdle;
    return;
  }
  SendRegionFrame(receiver, now, 0);
}

}  // namespace

Receiver MakeReceiver(const LoaderFaults& faults, LoaderMemory memory) {
  Receiver receiver;
  receiver.faults = faults;
  receiver.random = faults.seed;
  receiver.memory = std::move(memory);
  return receiver;
}

void FeedReceiver(Receiver& receiver, uint64_t now, std::span<const uint8_t> bytes) {
  for (const uint8_t byte : bytes) {
    const bool inside = !receiver.in.empty();
    receiver.last_byte = now;
    receiver.in.push_back(byte);
    if (inside || byte != kEtb) {
      receiver.other_since_enq = true;
      receiver.last_other = now;
    } else {
      receiver.last_etb = now;
    }
    Parse(receiver, now);
  }
}

void AdvanceReceiver(Receiver& receiver, uint64_t now) {
  switch (receiver.state) {
    case LoaderState::kPolled:
      if (Since(receiver.last_byte, now) >= kSilence) receiver.in.clear();
      if (!receiver.in.empty() || Since(std::max(receiver.last_etb, receiver.last_ack), now) < kPollQuiet)
        break;
      receiver.state = LoaderState::kReceiving;
      BeginFile(receiver);
      receiver.timer = now;
      SendEnq(receiver, now);
      break;
    case LoaderState::kReceiving:
      BreakSilence(receiver, now);
      break;
    case LoaderState::kAnnounce:
    case LoaderState::kDone:
      RepeatAnnouncement(receiver, now);
      break;
    case LoaderState::kRegion:
      RepeatRegionFrame(receiver, now);
      break;
    default:
      break;
  }
  if (receiver.upload_open && Since(std::max(receiver.last_file, receiver.last_etb), now) >= kSessionEnd) {
    receiver.upload_open = false;
    EndSession(receiver);
  }
}

bool TakeAnswer(Receiver& receiver, uint64_t now, Bytes& answer) {
  if (receiver.out.empty() || receiver.out.front().due > now) return false;
  answer = std::move(receiver.out.front().bytes);
  receiver.out.pop_front();
  return true;
}

}  // namespace vexa
