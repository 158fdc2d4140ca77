// The simulated receiver in a time of its own.
#include "loader/receiver.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "core/bytes.h"
#include "image/line_frame.h"
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
    ReceiverTakes(receiver, now, bytes);
    return Answers();
  }
  Bytes Send(uint8_t byte) { return Send(std::span(&byte, 1)); }
  Bytes Pass(uint64_t milliseconds) {
    Bytes all;
    for (const uint64_t end = now + milliseconds; now < end;) {
      now += 10;
      ReceiverPasses(receiver, now);
      const Bytes more = Answers();
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
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
  line.Pass(2100);
  EXPECT_TRUE(line.receiver.session_ended);
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
  EXPECT_EQ(line.receiver.frames.size(), 3u);
}

TEST(SimulatedReceiver, SilenceBringsEnqOrNak) {
  const auto frames = UploadFrames(500);
  Line line;
  line.Begin();
  EXPECT_EQ(line.Pass(2050), Bytes{kEnq});  // nothing came at all
  EXPECT_EQ(line.Send(std::span(frames[0]).first(9)), Bytes{});
  EXPECT_EQ(line.Pass(2050), Bytes{kNak});
  EXPECT_EQ(line.Send(frames[0]), Bytes{kEnq});  // the part was dropped
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

TEST(SimulatedReceiver, AnnouncesEightTimes) {
  Line line;
  line.Begin(true);
  EXPECT_EQ(line.Send(RequestFrame(0, 100)), Bytes{});
  EXPECT_EQ(line.Pass(90), Bytes{});
  EXPECT_EQ(line.Pass(30), Bytes{kEtb});
  EXPECT_EQ(line.Pass(20000), Bytes(7, kEtb));
  EXPECT_EQ(line.receiver.state, LoaderState::kIdle);
}

TEST(SimulatedReceiver, HandsARegionOutFrameByFrame) {
  Line line;
  StoreBytes(line.receiver.memory, 0, 10, Bytes(3000, 0xAB));
  line.Begin(true);
  line.Send(RequestFrame(0, 3100));
  line.Pass(120);
  EXPECT_EQ(line.Send(kAck), Bytes{});
  EXPECT_EQ(line.Send(kNak), Bytes{});  // nothing was sent yet
  const Bytes header = line.Send(kEnq);
  EXPECT_EQ(header[4], 0xF1);
  const Bytes first = line.Send(kEnq);
  EXPECT_EQ(first.size(), 2979u + 12 + 9);
  EXPECT_EQ(line.Send(kNak), Bytes{});
  EXPECT_EQ(line.Pass(60), first);
  EXPECT_EQ(line.Pass(3100), first);  // unanswered for 3 s
  const Bytes second = line.Send(kEnq);
  EXPECT_EQ(second.size(), 121u + 12 + 9);
  EXPECT_EQ(second[16], 0xAB);
  EXPECT_EQ(second[16 + 120], 0xFF);
  EXPECT_EQ(line.Send(kEnq), Bytes{});  // complete
  EXPECT_EQ(line.Send(kCan), Bytes{});
  EXPECT_TRUE(line.receiver.session_ended);
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
    const LoaderMemory again = OpenMemory(folder);
    for (size_t space = 0; space < 2; ++space) {
      EXPECT_EQ(LoadBytes(memory, space, 0, 400), expected[space]) << seed;
      EXPECT_EQ(LoadBytes(again, space, 0, 400), expected[space]) << seed;
    }
  }
  LoaderMemory memory;
  StoreBytes(memory, 0, 0xFFFFFFFE, Bytes(5, 1));
  EXPECT_EQ(LoadBytes(memory, 0, 0xFFFFFFFD, 3), (Bytes{0xFF, 1, 1}));
}

}  // namespace
}  // namespace vexa
