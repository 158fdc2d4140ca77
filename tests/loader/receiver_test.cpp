// The simulated receiver in a time of its own.
#include "loader/receiver.h"

#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <map>
#include <random>

#include "core/bytes.h"
#include "image/line_frame.h"
#include "loader/run.h"
#include "serial/transfer.h"
#include "tests/serial/upload_frames.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

struct Line {
  Receiver receiver = MakeReceiver({}, {});
  uint64_t now = 1000000;
  std::vector<std::string> notes;
  Line() {
    receiver.note = [this](const std::string& text) { notes.push_back(text); };
  }
  Bytes Answers() {
    Bytes all, answer;
    while (TakeAnswer(receiver, now, answer)) all.insert(all.end(), answer.begin(), answer.end());
    return all;
  }
  Bytes Send(std::span<const uint8_t> bytes) {
    FeedReceiver(receiver, now, bytes);
    return Answers();
  }
  Bytes Send(uint8_t byte) { return Send(std::span(&byte, 1)); }
  Bytes Pass(uint64_t milliseconds) {
    Bytes all;
    for (const uint64_t end = now + milliseconds; now < end;) {
      now += 10;
      AdvanceReceiver(receiver, now);
      const Bytes more = Answers();
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }
  // What is heard in the next `milliseconds`, looked at in each of them, and after how many.
  std::vector<std::pair<uint64_t, Bytes>> Timed(uint64_t milliseconds) {
    std::vector<std::pair<uint64_t, Bytes>> heard;
    for (uint64_t after = 1; after <= milliseconds; ++after) {
      AdvanceReceiver(receiver, ++now);
      if (const Bytes answers = Answers(); !answers.empty()) heard.emplace_back(after, answers);
    }
    return heard;
  }
  // Woken, polled, and asked for its first frame.
  void Begin(bool download = false) {
    EXPECT_EQ(Send(download ? kDownloadWakeUp : kUploadWakeUp), Bytes{kXon});
    EXPECT_EQ(Send(kEtb), Bytes{kAck});
    EXPECT_EQ(Pass(130), Bytes{kEnq});
  }
};

std::vector<Bytes> UploadFrames(size_t size) {
  return FramesOf(UploadFile(Bytes(size, 0x17)));
}

TEST(SimulatedReceiver, TakesAnUploadIntoItsMemory) {
  const auto frames = UploadFrames(2500);
  Line line;
  line.Begin();
  for (size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(line.Send(frames[i]), i + 1 < frames.size() ? Bytes{kEnq} : Bytes{}) << i;
  }
  EXPECT_EQ(LoadBytes(line.receiver.memory, 1, 0x40, 2500), Bytes(2500, 0x17));
  EXPECT_FALSE(line.receiver.session_ended);
  line.Pass(1990);
  EXPECT_FALSE(line.receiver.session_ended);
  line.Pass(10);
  EXPECT_TRUE(line.receiver.session_ended);
  // An image without a fixed address goes to the end of its place, with header and fill.
  Line open;
  open.Begin();
  for (const Bytes& frame : FramesOf(UploadFile(Bytes(200, 0x17), 4, 1))) open.Send(frame);
  EXPECT_EQ(open.receiver.memory.spaces[0], (std::map<uint32_t, Bytes>{{0x40 - 4, Bytes(200, 0x17)}}));
}

TEST(SimulatedReceiver, RepeatedBadAndHiddenFrames) {
  const auto frames = UploadFrames(500);
  Bytes bad = frames[1];
  bad[20] ^= 1;
  Line line;
  line.Begin();
  EXPECT_EQ(line.Send(frames[0]), Bytes{kEnq});
  EXPECT_EQ(line.Send(frames[0]), Bytes{});  // repeated: no answer
  EXPECT_EQ(line.Pass(600), Bytes{});
  EXPECT_EQ(line.Send(frames[0]), Bytes{kEnq});  // its ENQ must have been lost
  EXPECT_EQ(line.Send(bad), Bytes{kNak});
  EXPECT_EQ(line.Send(bad), Bytes{});  // at most one in 100 ms
  line.Pass(100);
  EXPECT_EQ(line.Send(bad), Bytes{kNak});
  EXPECT_EQ(line.Send(frames[1]), Bytes{kEnq});
  // A frame that lost a byte swallows the start of the next; the whole one behind it is found.
  Bytes cut = frames[2];
  cut.erase(cut.begin() + 30);
  EXPECT_EQ(line.Send(cut), Bytes{});
  EXPECT_EQ(line.Send(frames[2]), Bytes{kEnq});
  EXPECT_EQ(line.Send(frames[2]), Bytes{});  // once more
  EXPECT_EQ(line.receiver.frames.size(), 3u);
  EXPECT_EQ(line.Pass(100), Bytes{});
  EXPECT_EQ(line.Send(Bytes{kStx, 0xFF, 0xFF, 0xFF}), Bytes{kNak});  // no length that a frame has
  EXPECT_TRUE(line.receiver.in.empty());
}

TEST(SimulatedReceiver, AFrameOutOfOrderFailsTheUploadUntilTheNextWakeUp) {
  const auto frames = UploadFrames(500);
  Line line;
  line.Begin();
  line.Send(frames[0]);
  EXPECT_EQ(line.Send(frames[2]), Bytes{});
  EXPECT_EQ(line.Pass(5000), Bytes{});
  EXPECT_EQ(line.notes, std::vector<std::string>{"failed: a frame out of order"});
  line.Begin();
  EXPECT_EQ(line.Send(frames[0]), Bytes{kEnq});
  line.Send(FrameOf(std::span(frames[1]).subspan(4, 12)));  // a packet without data
  EXPECT_EQ(line.notes.size(), 2u);
  // A packet that is right by itself, of an image that is not.
  line.Begin();
  for (size_t i = 0; i < frames.size(); ++i) {
    Bytes payload(frames[i].begin() + 4, frames[i].end() - 5);
    if (i == 1) payload.back() ^= 1;
    line.Send(FrameOf(payload));
  }
  EXPECT_EQ(line.notes.back(), "failed: the upload is damaged");
  EXPECT_TRUE(line.receiver.memory.spaces[1].empty());
  // A region that ends before it begins, or is larger than the memory.
  for (const auto& [start, end] :
       {std::pair(100u, 99u), std::pair(0u, static_cast<uint32_t>(kLargestRegion) + 1)}) {
    line.Begin(true);
    EXPECT_EQ(line.Send(RequestFrame(start, end)), Bytes{});
    EXPECT_EQ(line.notes.back(), "failed: the request asks for a region that there is not");
    EXPECT_EQ(line.Pass(2000), Bytes{});
  }
  line.Begin(true);
  line.Send(RequestFrame(0, static_cast<uint32_t>(kLargestRegion)));
  EXPECT_EQ(line.notes.back(), "request taken");
}

TEST(SimulatedReceiver, PollingAgainBeginsTheFileAnew) {
  const auto frames = UploadFrames(500);
  Line line;
  line.Begin();
  line.Send(frames[0]);
  line.Send(frames[1]);
  line.Pass(300);
  EXPECT_EQ(line.Send(kEtb), Bytes{kAck});
  EXPECT_EQ(line.Send(kEtb), Bytes{});  // one ACK in 200 ms
  EXPECT_EQ(line.Pass(130), Bytes{kEnq});
  EXPECT_EQ(line.Send(frames[0]), Bytes{kEnq});
  EXPECT_EQ(line.receiver.frames.size(), 1u);
}

using Heard = std::vector<std::pair<uint64_t, Bytes>>;  // ms, bytes

TEST(SimulatedReceiver, AnswersInItsTime) {
  const auto frames = UploadFrames(500);
  Line line;
  EXPECT_EQ(line.Send(kUploadWakeUp), Bytes{kXon});
  EXPECT_EQ(line.Send(kEtb), Bytes{kAck});
  EXPECT_EQ(line.Timed(119), Heard{});
  EXPECT_EQ(line.Send(kEtb), Bytes{});
  EXPECT_EQ(line.Timed(80), Heard{});
  EXPECT_EQ(line.Send(kEtb), Bytes{});  // 199 ms after the ACK
  EXPECT_EQ(line.Timed(1), Heard{});
  EXPECT_EQ(line.Send(kEtb), Bytes{kAck});
  EXPECT_EQ(line.Timed(4200), (Heard{{120, {kEnq}}, {2120, {kEnq}}, {4120, {kEnq}}}));
  line.Send(std::span(frames[0]).first(9));
  EXPECT_EQ(line.Timed(4100), (Heard{{2000, {kNak}}, {4000, {kNak}}}));
  // A frame that comes again is answered when its ENQ must have been lost, sooner on a faster line.
  for (const uint32_t baud : {0u, 9600u}) {
    Line repeated;
    repeated.receiver.baud = baud;
    repeated.Begin();
    EXPECT_EQ(repeated.Send(frames[0]), Bytes{kEnq});
    const uint64_t wait = 500 + (baud == 0 ? 0 : 2 * (frames[0].size() * 10000 / baud));
    EXPECT_EQ(repeated.Timed(wait - 1), Heard{});
    EXPECT_EQ(repeated.Send(frames[0]), Bytes{});
    EXPECT_EQ(repeated.Timed(1), Heard{});
    EXPECT_EQ(repeated.Send(frames[0]), Bytes{kEnq});
  }
  Line late;
  late.receiver.faults.delay = 70;
  EXPECT_EQ(late.Send(kUploadWakeUp), Bytes{});
  EXPECT_EQ(late.Timed(80), (Heard{{70, {kXon}}}));
  EXPECT_EQ(late.Send(kEtb), Bytes{});
  EXPECT_EQ(late.Timed(300), (Heard{{70, {kAck}}, {260, {kEnq}}}));
}

TEST(SimulatedReceiver, AnnouncesAndHandsOutRegionsInTime) {
  const auto requested = [](Line& line) {
    line.Begin(true);
    EXPECT_EQ(line.Send(RequestFrame(0, 100, 1, 2)), Bytes{kEnq});
    EXPECT_EQ(line.Send(RequestFrame(0, 50, 2, 2)), Bytes{});
  };
  Line line;
  requested(line);
  Heard eight;
  for (uint64_t i = 0; i < 8; ++i) eight.push_back({100 + 500 * i, {kEtb}});
  EXPECT_EQ(line.Timed(10000), eight);
  EXPECT_EQ(line.receiver.state, LoaderState::kIdle);
  EXPECT_EQ(line.notes.back(), "no editor takes the region");

  for (const uint32_t baud : {0u, 9600u}) {
    Line slow;
    slow.receiver.baud = baud;
    requested(slow);
    slow.Timed(101);
    EXPECT_EQ(slow.Send(kAck), Bytes{});
    const Bytes header = slow.Send(kEnq);
    const uint64_t again = 3000 + (baud == 0 ? 0 : header.size() * 10000 / baud);
    EXPECT_EQ(slow.Timed(again + 1), (Heard{{again, header}}));
    EXPECT_EQ(slow.Send(kNak), Bytes{});
    EXPECT_EQ(slow.Send(kNak), Bytes{});  // one that waits to go out is the answer
    EXPECT_EQ(slow.Timed(60), (Heard{{50, header}}));
    Heard repeats = slow.Timed(100000);
    EXPECT_EQ(repeats.size(), 8u);
    EXPECT_EQ(repeats.back().first, 8 * again - 10);
    EXPECT_EQ(slow.receiver.state, LoaderState::kIdle);
    EXPECT_EQ(slow.notes.back(), "the editor is gone");
  }

  Line next;
  StoreBytes(next.receiver.memory, 1, 0, Bytes(50, 0x2B));  // the second region is of the second space
  requested(next);
  next.Timed(101);
  next.Send(kAck);
  for (int frame = 0; frame < 2; ++frame) EXPECT_GT(next.Send(kEnq).size(), 60u);
  EXPECT_EQ(next.Send(kEnq), Bytes{});  // the first is complete
  Line waits = next;
  EXPECT_EQ(waits.Timed(10000).size(), 8u);
  EXPECT_EQ(next.Timed(1600), (Heard{{1000, {kEtb}}, {1500, {kEtb}}}));
  EXPECT_EQ(next.Send(kAck), Bytes{});
  next.Send(kEnq);
  const Bytes data = next.Send(kEnq);
  ASSERT_EQ(data.size(), 50u + 12 + 9);
  EXPECT_EQ(Bytes(data.begin() + 4, data.begin() + 17),
            (Bytes{0xF2, 0x80, 59, 0, 0, 0, 0, 0, 0, 0, 0, 50, 0x2B}));
  next.Send(kEnq);
  EXPECT_EQ(next.Timed(5000), Heard{});  // there is no third
  EXPECT_EQ(next.Send(kAck), Bytes{});
  EXPECT_EQ(next.Send(kCan), Bytes{});
  EXPECT_TRUE(next.receiver.session_ended);
  requested(next);
  EXPECT_EQ(next.receiver.regions.size(), 2u);
}

TEST(SimulatedReceiver, FaultsAreWhatTheySay) {
  const auto frames = UploadFrames(500);
  Line refuses;
  LoaderFaults refusing;
  refusing.nak = 1;
  refuses.receiver = MakeReceiver(refusing, {});
  refuses.Begin();
  EXPECT_EQ(refuses.Send(frames[0]), Bytes{kNak});
  EXPECT_TRUE(refuses.receiver.frames.empty());
  Line drops;
  drops.receiver.faults.drop = 1;
  EXPECT_EQ(drops.Send(kUploadWakeUp), Bytes{});
  EXPECT_EQ(drops.receiver.state, LoaderState::kWoken);
  // Within a frame of a wrong sum; what stands behind it is lost with it.
  Bytes hidden = frames[0];
  hidden.push_back(kEtb);
  hidden = FrameOf(hidden);
  hidden[hidden.size() - 2] ^= 1;
  for (const bool reset : {false, true}) {
    Line lost;
    (reset ? lost.receiver.faults.reset : lost.receiver.faults.silence) = 1;
    lost.Begin();
    EXPECT_EQ(lost.Send(hidden), Bytes{});
    EXPECT_EQ(lost.receiver.session_ended, reset);
    EXPECT_EQ(lost.Timed(5000), Heard{});
    EXPECT_EQ(lost.Send(kEtb), reset ? Bytes{kAck} : Bytes{});
    lost.Begin();
  }
  Line flips;
  flips.Begin(true);
  flips.Send(RequestFrame(0, 100));
  flips.Timed(101);
  flips.Send(kAck);
  const Bytes right = flips.Send(kEnq);
  flips.receiver.faults.corrupt = 1;
  flips.Send(kNak);
  const Heard wrong = flips.Timed(50);
  ASSERT_EQ(wrong.size(), 1u);
  int bits = 0;
  for (size_t i = 0; i < right.size(); ++i) {
    const auto changed = static_cast<uint8_t>(right[i] ^ wrong[0].second[i]);
    bits += std::popcount(changed);
    if (changed != 0) {
      EXPECT_TRUE(i >= 4 && i < right.size() - 5) << i;
    }
  }
  EXPECT_EQ(bits, 1);
  flips.receiver.faults = {};
  flips.receiver.faults.delay = 70;
  flips.Send(kNak);
  EXPECT_EQ(flips.Timed(200), (Heard{{120, right}}));
  // The same seed makes the same faults on every machine; of 64, about as many as the probability says.
  Receiver receiver = MakeReceiver({7, 0, 0, 0, 0}, {});
  EXPECT_FALSE(FaultOccurs(receiver, 0));
  EXPECT_EQ(receiver.random, 7u);  // a fault that is not asked for moves no other
  uint64_t happened = 0;
  for (int i = 0; i < 64; ++i) happened = happened << 1 | (FaultOccurs(receiver, 0.25) ? 1 : 0);
  EXPECT_EQ(happened, 0x44A004210B180900u);
}

TEST(SimulatedReceiver, HandsARegionOutFrameByFrame) {
  Line line;
  StoreBytes(line.receiver.memory, 0, 20, Bytes(3000, 0xAB));
  line.Begin(true);
  line.Send(RequestFrame(10, 3110));
  line.Pass(120);
  EXPECT_EQ(line.Send(kAck), Bytes{});
  EXPECT_EQ(line.Send(kNak), Bytes{});  // nothing was sent yet
  const Bytes header = line.Send(kEnq);
  EXPECT_EQ(Bytes(header.begin() + 4, header.begin() + 13), (Bytes{0xF1, 0x80, 61, 0, 0, 0, 0, 0, 15}));
  EXPECT_EQ(Bytes(header.begin() + 28, header.begin() + 61),
            (Bytes{0, 0,    0x0C, 0x1C, 1, 1, 0x07, 0xD0, 0, 0, 0, 0, 0,    0,    0,    10,  0,
                   0, 0x0C, 0x26, 0,    0, 1, 0,    0,    0, 0, 2, 0, 0x0C, 0x1C, 0x0B, 0xA3}));
  EXPECT_EQ(line.Send(kSyn), Bytes{});  // neither asks for the next nor for the same again
  const Bytes first = line.Send(kEnq);
  EXPECT_EQ(first.size(), 2979u + 12 + 9);
  EXPECT_EQ(line.Send(kNak), Bytes{});
  EXPECT_EQ(line.Pass(60), first);
  EXPECT_EQ(line.Pass(3100), first);  // unanswered for 3 s
  const Bytes second = line.Send(kEnq);
  EXPECT_EQ(second.size(), 121u + 12 + 9);
  EXPECT_EQ(Bytes(second.begin() + 4, second.begin() + 17),
            (Bytes{0xF2, 0x80, 130, 0, 0x0B, 0xA3, 0, 0, 0, 1, 0, 121, 0xAB}));
  EXPECT_EQ(second[16 + 120], 0xFF);
  EXPECT_EQ(line.Send(kEnq), Bytes{});  // complete
  EXPECT_EQ(line.Send(kCan), Bytes{});
  EXPECT_TRUE(line.receiver.session_ended);
}

TEST(SimulatedReceiver, APacketIsDueByItsOffsetBlockAndNumber) {
  Receiver receiver;
  receiver.block_position = 0x7ABCDE;
  receiver.block = 0x123456;
  receiver.block_packet = 0x1F7;
  EXPECT_EQ(PlaceDue(receiver), (std::array<uint8_t, 7>{0x02, 0xBC, 0xDE, 0x12, 0x34, 0x56, 0xF7}));
}

// A line on which bytes wait from its second look on.
struct FullLine : PseudoTerminal {
  size_t left = 0, read = 0, looks = 0;
  size_t Read(std::span<uint8_t> buffer, int) override {
    const size_t count = looks++ == 0 ? 0 : std::min(buffer.size(), left);
    left -= count;
    read += count;
    return count;
  }
  size_t Write(std::span<const uint8_t> bytes) override { return bytes.size(); }
};

TEST(SimulatedReceiver, ALineWithoutASpeedOfItsOwnIsPaced) {
  using Clock = std::chrono::steady_clock;
  const std::tuple<uint32_t, bool, bool> rows[] = {
      {20000, false, true}, {20000, true, false}, {0, false, false}};
  for (const auto& [baud, own, paced] : rows) {
    FullLine line;
    line.left = 100000;
    line.keeps_pace = own;
    Receiver receiver = MakeReceiver({}, {});
    const auto start = Clock::now();
    const auto seconds = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    LoaderRun run;
    run.baud = baud;
    run.stop = [&, limit = paced ? 0.3 : 10] { return line.left == 0 || seconds() > limit; };
    RunReceiver(receiver, line, run);
    EXPECT_EQ(line.left > 0, paced) << baud << own;
    EXPECT_GT(line.read, 100u);
    if (paced) {
      EXPECT_LE(static_cast<double>(line.read), seconds() * 2000);
    }
  }
}

TEST(SimulatedReceiver, APortHasASpeedOfItsOwn) {
  const auto terminal = OpenPseudoTerminal({}).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  Recorder recorder;
  const auto port = OpenReceiverPort(terminal->path, 9600, recorder.context.messages);
  ASSERT_TRUE(port);
  EXPECT_TRUE(port->keeps_pace);
  EXPECT_EQ(port->path, terminal->path);
}

TEST(SimulatedReceiver, AnyBytesAreBorne) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    std::mt19937 random(seed);
    const auto frames = UploadFrames(300);
    Line line;
    for (int i = 0; i < 300; ++i) {
      switch (random() % 5) {
        case 0:
          line.Send(random() % 2 ? kUploadWakeUp : kDownloadWakeUp);
          break;
        case 1:
          line.Send(frames[random() % frames.size()]);
          break;
        case 2:
          line.Send(
              RequestFrame(static_cast<uint32_t>(random() % 1000), static_cast<uint32_t>(random() % 100000)));
          break;
        case 3:
          line.Send(std::array<uint8_t, 6>{kStx, kEnq, kAck, kNak, kEtb,
                                           static_cast<uint8_t>(random())}[random() % 6]);
          break;
        default:
          line.Pass(random() % 300);
      }
    }
    EXPECT_LE(line.receiver.in.size(), kMaximumFrame + 9) << seed;
  }
}

TEST(LoaderMemory, HoldsWhatWasStoredLastAndSurvivesTheDisk) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder / "memory";
  for (unsigned seed = 1; seed <= 5; ++seed) {
    std::mt19937 random(seed);
    LoaderMemory memory;
    std::array<Bytes, 2> expected = {Bytes(400, 0xFF), Bytes(400, 0xFF)};
    for (int i = 0; i < 30; ++i) {
      const size_t space = random() % 2, start = random() % 300, size = random() % 100;
      const Bytes bytes(size, static_cast<uint8_t>(random()));
      StoreBytes(memory, space, static_cast<uint32_t>(start), bytes);
      std::copy(bytes.begin(), bytes.end(), expected[space].begin() + static_cast<std::ptrdiff_t>(start));
    }
    ASSERT_TRUE(SaveMemory(memory, folder));
    std::string why;
    const LoaderMemory again = OpenMemory(folder, why).value();
    for (size_t space = 0; space < 2; ++space) {
      EXPECT_EQ(LoadBytes(memory, space, 0, 400), expected[space]) << seed;
      EXPECT_EQ(LoadBytes(again, space, 0, 400), expected[space]) << seed;
    }
  }
  LoaderMemory memory;
  StoreBytes(memory, 0, 0xFFFFFFFE, Bytes(5, 1));
  EXPECT_EQ(LoadBytes(memory, 0, 0xFFFFFFFD, 3), (Bytes{0xFF, 1, 1}));
}

// Half of a memory would replace the whole one at the next save.
TEST(LoaderMemory, WhatCannotBeReadWholeIsRefusedWithItsName) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, unreadable = folder / "space2-00000010.bin";
  std::string why;
  PutFile(folder / "space1-00000000.bin", BytesOf("x"));
  ASSERT_TRUE(OpenMemory(folder, why));
  EXPECT_TRUE(OpenMemory(folder / "none", why)) << "a new one";
  std::filesystem::create_directory(unreadable);
  EXPECT_FALSE(OpenMemory(folder, why));
  EXPECT_EQ(why.find(Utf8FromPath(unreadable) + ": "), 0u) << why;
  EXPECT_FALSE(OpenMemory(folder / "space1-00000000.bin", why));
  EXPECT_EQ(why.find(Utf8FromPath(folder / "space1-00000000.bin") + ": "), 0u) << why;
}

}  // namespace
}  // namespace vexa
