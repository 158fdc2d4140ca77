// One fault at every place of a short session in turn: the n-th byte lost, flipped or doubled on its way to
// the receiver or back, the n-th answer lost, late or replaced by another. Nothing may end silently wrong.
#include <gtest/gtest.h>

#include "image/line_frame.h"
#include "tests/serial/faulty_rig.h"

namespace vexa {
namespace {

enum class Kind { kLost, kFlipped, kDoubled, kAnswerLost, kAnswerLate, kAnswerReplaced };
constexpr const char* kKinds[] = {"byte lost",   "byte flipped", "byte doubled",
                                  "answer lost", "answer late",  "answer replaced"};
constexpr Kind kOfBytes[] = {Kind::kLost, Kind::kFlipped, Kind::kDoubled};
constexpr Kind kOfAnswers[] = {Kind::kAnswerLost, Kind::kAnswerLate, Kind::kAnswerReplaced};

struct Fault {
  Kind kind = Kind::kLost;
  bool to_receiver = true;  // of bytes
  int place = -1;           // from 0; -1: none
};

// A line with one fault. It counts what passes; polls and wake-ups that repeat are not counted, so that the
// count is the same however fast the machine is.
struct OneFault {
  Fault fault;
  std::atomic<int> sent{0}, received{0}, answers{0};
  Bytes last;

  void OnBytes(Bytes& bytes, bool to_receiver, std::atomic<int>& counted) const {
    Bytes passed;
    for (const uint8_t byte : bytes) {
      const bool here = counted++ == fault.place && fault.to_receiver == to_receiver;
      const bool hit = here && fault.kind <= Kind::kDoubled;
      if (!hit || fault.kind != Kind::kLost)
        passed.push_back(hit && fault.kind == Kind::kFlipped ? byte ^ 0x10 : byte);
      if (hit && fault.kind == Kind::kDoubled) passed.push_back(byte);
    }
    bytes = passed;
  }
  void OnSent(Bytes& bytes) {
    const bool repeats = bytes == last && (bytes.size() == 6 || bytes == Bytes{kEtb});
    last = bytes;
    if (!repeats) OnBytes(bytes, true, sent);
  }
  void OnAnswer(ReceiverRig& receiver, Bytes& answer) {
    const bool here = answers++ == fault.place;
    if (here && fault.kind == Kind::kAnswerLate) receiver.FeedLate(answer, 700);
    if (here && (fault.kind == Kind::kAnswerLate || fault.kind == Kind::kAnswerLost)) answer.clear();
    if (here && fault.kind == Kind::kAnswerReplaced)
      answer = Bytes{answer == Bytes{kNak} ? uint8_t{kEnq} : uint8_t{kNak}};
    OnBytes(answer, false, received);
  }
};

const Bytes kImage = BytesOf("the image of a short upload");
const std::vector<Bytes> kRegions = {BytesOf("what the receiver holds")};

End RunOne(bool download, OneFault& line) {
  LoaderMemory memory;
  if (download) StoreBytes(memory, 0, 0, kRegions[0]);
  ReceiverRig receiver({}, std::move(memory));
  receiver.on_sent = [&](Bytes& bytes) { line.OnSent(bytes); };
  receiver.on_answer = [&](Bytes& answer) { line.OnAnswer(receiver, answer); };
  FaultyRig rig(receiver.comm.api);
  rig.patience = 4;  // above the 3 s after which the receiver sends a frame again
  return download ? Download(rig, kRegions) : Upload(rig, receiver, kImage);
}

TEST(EveryFault, NoneEndsSilentlyWrong) {
  struct Case {
    bool download;
    Fault fault;
    bool in_last_frame;
  };
  std::vector<Case> cases;
  const int step = kSlowBuild ? 7 : 1;
  for (const bool download : {false, true}) {
    OneFault clean;
    ASSERT_EQ(RunOne(download, clean), End::kRight) << download;
    const auto last = static_cast<int>(FramesOf(UploadFile(kImage)).back().size());
    for (const Kind kind : kOfBytes) {
      for (int n = 0; n < clean.sent; n += step)
        cases.push_back({download, {kind, true, n}, !download && n >= clean.sent - last});
      for (int n = 0; n < clean.received; n += step) cases.push_back({download, {kind, false, n}, false});
    }
    for (const Kind kind : kOfAnswers) {
      for (int n = 0; n < clean.answers; ++n) cases.push_back({download, {kind, false, n}, false});
    }
  }
  std::array<std::atomic<int>, 5> ends{};
  std::mutex lock;
  std::vector<std::string> wrong;
  RunMany(kSlowBuild ? 48 : 160, [&](int number) {
    const auto i = static_cast<size_t>(number - 1);
    if (i >= cases.size()) return false;
    const Case& one = cases[i];
    OneFault line;
    line.fault = one.fault;
    const End end = RunOne(one.download, line);
    ++ends[static_cast<size_t>(end)];
    const std::lock_guard hold(lock);
    // The editor does not listen behind the last packet; only a comparison tells of it.
    if (end == End::kWrong || (end == End::kUnconfirmed && !one.in_last_frame))
      wrong.push_back(Format("%s, %s %d %s the receiver", one.download ? "download" : "upload",
                             kKinds[static_cast<size_t>(one.fault.kind)], one.fault.place,
                             one.fault.to_receiver ? "to" : "from"));
    return true;
  });
  std::printf("%zu faults: %d right, %d told, %d without progress, %d without the last packet\n",
              cases.size(), ends[0].load(), ends[1].load(), ends[2].load(), ends[3].load());
  EXPECT_TRUE(wrong.empty()) << testing::PrintToString(wrong);
  EXPECT_GT(ends[0], static_cast<int>(cases.size()) / 4);
}

}  // namespace
}  // namespace vexa
