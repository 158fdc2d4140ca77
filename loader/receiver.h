// The receiver's side of the line: a loader that takes uploads into its memory and hands out regions of it.
//
// It knows no port and no clock: bytes and the time go in, answers with their time come out, so that a test
// can run it in memory. It sends XON, ACK, ENQ, NAK, ETB and frames, nothing else, and never ACK and ENQ
// together.
//
// What leads from one state to the next, and what the receiver sends in the new one:
// clang-format off
//   any        wake-up               -> woken      XON
//   idle       ETB                   -> polled     ACK; a console's upload has no wake-up
//   woken      ETB                   -> polled     ACK
//   polled     a pause behind an ETB -> receiving  ENQ for each frame, NAK for a damaged one
//   receiving  ETB behind a pause    -> polled     ACK: the file begins anew
//              an upload is whole    -> woken      nothing: it is stored, another file may follow
//              a script is whole     -> announce   ETB until an ACK comes
//              the file is wrong     -> failed     nothing
//   announce   ACK                   -> region     a frame for each ENQ (next) or NAK (again)
//   region     ENQ behind the last   -> done       ETB until an ACK comes, while regions are left
//   done       ACK                   -> region     the next one
//   announce, region, done: CAN, or nothing for too long -> idle
// clang-format on
//
// Region frames: image/region_frame.h, with at most 2979 bytes of data.
#pragma once

#include <deque>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "image/urt.h"
#include "loader/memory.h"

namespace vexa {

// Deliberate faults, each with a probability; repeatable by the seed.
struct LoaderFaults {
  uint64_t seed = 1;
  double nak = 0;      // a good upload frame, not the last of its file, is answered as if it were bad
  double corrupt = 0;  // a sent frame has one payload bit flipped, its sum unchanged
  double drop = 0;     // a handshake byte is left out
  uint32_t delay = 0;  // ms before every answer
  double silence = 0;  // at a frame taken or asked for: nothing more is heard of it until the next wake-up
  double reset = 0;    // likewise: it starts anew, idle
};

enum class LoaderState { kIdle, kWoken, kPolled, kReceiving, kFailed, kAnnounce, kRegion, kDone };

struct LoaderRegion {
  uint8_t number = 0;
  uint32_t start = 0, end = 0;
};

struct LoaderAnswer {
  uint64_t due = 0;  // ms
  Bytes bytes;
};

// All times in ms of one clock that never goes back.
struct Receiver {
  LoaderFaults faults;
  uint64_t random = 0;
  uint32_t baud = 0;  // for the time that a frame takes; 0: none
  LoaderMemory memory;
  std::function<void()> stored;                       // after an image went into the memory; may be empty
  std::function<void(const std::string& line)> note;  // what it does, in words; may be empty

  LoaderState state = LoaderState::kIdle;
  bool download = false;
  bool session_ended = false;  // stays set until the owner clears it
  Bytes in;                    // from an STX on, not yet complete
  std::deque<LoaderAnswer> out;

  uint64_t last_byte = 0, last_other = 0, last_etb = 0;  // received: any; other than 17; 17
  uint64_t last_ack = 0, last_enq = 0, last_nak = 0;     // sent
  bool ack_sent = false, nak_sent = false, other_since_enq = false;

  std::vector<Bytes> frames;  // payloads of the file, in order
  size_t frames_expected = 0;
  std::vector<UrtBlock> blocks;  // as the description states them
  size_t block = 0;              // of the next packet
  uint32_t block_position = 0, block_packet = 0;
  bool upload_open = false;  // a file was taken; the session ends when no other follows
  uint64_t last_file = 0;

  std::vector<LoaderRegion> regions;
  size_t region = 0;
  Bytes region_data;
  std::vector<uint32_t> region_packets;  // of each block
  size_t region_frames = 0;              // data frames
  int64_t region_frame = -1;             // sent last; 0 is the header
  uint64_t timer = 0;
  int announcements = 0, repeats = 0;
};

// An idle receiver with this content. `baud`, `stored` and `note` are the owner's to set.
Receiver MakeReceiver(const LoaderFaults& faults, LoaderMemory memory);
// Takes bytes that arrived at the time `now`, in pieces of any size, and puts its answers into `out`.
void FeedReceiver(Receiver& receiver, uint64_t now, std::span<const uint8_t> bytes);
// Does what is due at the time `now` without any byte; to be called at least every 10 ms.
void AdvanceReceiver(Receiver& receiver, uint64_t now);
// Moves the next answer whose time has come into `answer`; false, and `answer` is left alone, when there is
// none.
bool TakeAnswer(Receiver& receiver, uint64_t now, Bytes& answer);

// --- shared by the room's files ---

// Queues one control byte, behind the delay among the faults; a fault may leave it out.
void SendHandshake(Receiver& receiver, uint64_t now, uint8_t byte);
// Queues the frame `region_frame` of the open region, `wait` ms behind the delay among the faults.
void SendRegionFrame(Receiver& receiver, uint64_t now, uint32_t wait);
// Cuts the memory of `regions[region]`, which must be there, into blocks and packets to be asked for.
void OpenRegion(Receiver& receiver);
// Whether a fault of this probability, 0 to 1, happens here. Only one above 0 takes a random number.
bool FaultOccurs(Receiver& receiver, double probability);
// Hands a line of text to the owner, when it listens.
void Note(Receiver& receiver, const std::string& line);
// Takes the finished upload apart and stores its image. False, with a line in the log, when anything is
// wrong.
bool StoreUpload(Receiver& receiver);
// Bytes 3 to 9 of the packet that is due.
std::array<uint8_t, 7> PlaceDue(const Receiver& receiver);

}  // namespace vexa
