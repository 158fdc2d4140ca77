// Thousands of short transfers over a line that goes wrong: each ends right, or it ends with a message. Many
// run at a time, as they mostly wait. VEXA_TRANSFERS sets how many.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "core/bytes.h"
#include "serial/session.h"
#include "tests/serial/end_transfer.h"
#include "tests/serial/receiver_rig.h"
#include "tests/serial/shared_messages.h"
#include "tests/serial/upload_frames.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Clock = std::chrono::steady_clock;

#if defined(__SANITIZE_ADDRESS__)  // GCC's way to say so, and Clang's
#define VEXA_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEXA_SANITIZED
#endif
#endif

#if defined(_WIN32) || defined(VEXA_SANITIZED)
constexpr int kTransfers = 300, kAtATime = 32;
#else
constexpr int kTransfers = 2000, kAtATime = 96;
#endif

enum class End { kRight, kTold, kStalled, kUnconfirmed, kWrong };

struct FaultyRig {
  Recorder recorder;
  SharedMessages messages;
  std::atomic<bool> pressed{false};
  TransferSession session;

  explicit FaultyRig(const CommApi& api) {
    session.port.api = &api;
    session.port.messages = messages.messages();
    session.transfer.context = recorder.context;
    session.transfer.context.messages = messages.messages();
    session.transfer.view.press_cancel = [this] { pressed = true; };
  }
  // Whether the job ended by itself. One without a new packet for 8 s is cancelled, as a user's time-out does
  // it.
  bool Run(TransferJob job, const Bytes& file) {
    const Path path = recorder.context.temporary_folder / "short.urt";
    PutFile(path, file);
    session.transfer.files = {path};
    if (!StartTransfer(session, ProjectConfig{}, job)) return false;
    uint64_t moved = 0;
    for (auto last = Clock::now(); !pressed && !IsTransferOver(session);) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      if (session.transfer.packets_moved != moved) last = Clock::now();
      moved = session.transfer.packets_moved;
      if (Clock::now() - last > std::chrono::seconds(8)) return EndTransfer(session), false;
    }
    return EndTransfer(session);
  }
};

Bytes RandomBytes(std::mt19937& random, size_t size) {
  Bytes bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

// Mostly one kind of fault, often mixed with a little of another.
LoaderFaults MakeFaults(std::mt19937& random, uint64_t seed) {
  LoaderFaults faults;
  faults.seed = seed;
  double* const kinds[] = {&faults.nak, &faults.corrupt, &faults.drop, &faults.silence, &faults.reset};
  *kinds[random() % 3] = 0.1;
  if (random() % 4 == 0) *kinds[random() % std::size(kinds)] = 0.03;
  faults.delay = random() % 3 == 0 ? static_cast<uint32_t>(random() % 30) : 0;
  return faults;
}

End Upload(std::mt19937& random, const LoaderFaults& faults) {
  const Bytes image = RandomBytes(random, 1 + random() % 600);
  ReceiverRig receiver(faults);
  FaultyRig rig(receiver.comm.api);
  if (!rig.Run(TransferJob::kAdb, UploadFile(image))) return End::kStalled;
  if (rig.session.outcome != 1) return rig.messages.Texts().empty() ? End::kWrong : End::kTold;
  // The last packet needs no answer, so the receiver may still be at it.
  for (int i = 0; i < 200 && receiver.Memory().spaces[1].empty(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  const LoaderMemory memory = receiver.Memory();
  if (memory.spaces[1].empty()) return End::kUnconfirmed;
  return memory.spaces[1].begin()->second == image ? End::kRight : End::kWrong;
}

End Download(std::mt19937& random, const LoaderFaults& faults) {
  LoaderMemory memory;
  const size_t regions = 1 + random() % 2;
  std::vector<Bytes> expected, got;
  for (size_t i = 0; i < regions; ++i) {
    expected.push_back(RandomBytes(random, 1 + random() % 9000));
    StoreBytes(memory, i, 0, expected.back());
  }
  ReceiverRig receiver(faults, std::move(memory));
  receiver.swaps_per_thousand = random() % 5 == 0 ? 100 : 0;
  FaultyRig rig(receiver.comm.api);
  Transfer& transfer = rig.session.transfer;
  bool crc_failed = false;
  for (size_t i = 0; i < regions; ++i)
    transfer.region_files.push_back(rig.recorder.context.temporary_folder / ("r" + std::to_string(i)));
  transfer.decode = [&](bool failed) {
    crc_failed = failed;
    for (const Path& file : transfer.region_files) got.push_back(ReadWholeFile(file).value_or(Bytes{}));
    return true;
  };
  if (!rig.Run(TransferJob::kDownload, RequestFile(expected))) return End::kStalled;
  if (crc_failed) return End::kTold;
  if (got.empty()) return rig.messages.Texts().empty() ? End::kWrong : End::kTold;
  return got == expected ? End::kRight : End::kWrong;
}

TEST(FaultyLine, EveryTransferEndsRightOrSaysThatItFailed) {
  const char* wanted = std::getenv("VEXA_TRANSFERS");
  const int transfers = wanted ? std::atoi(wanted) : kTransfers;
  std::atomic<int> next{0};
  std::array<std::atomic<int>, 5> ends{};
  std::mutex lock;
  std::vector<std::string> wrong;
  std::vector<std::thread> workers;
  for (int i = 0; i < kAtATime; ++i) {
    workers.emplace_back([&] {
      for (int seed = ++next; seed <= transfers; seed = ++next) {
        std::mt19937 random(static_cast<unsigned>(seed));
        const LoaderFaults faults = MakeFaults(random, static_cast<uint64_t>(seed));
        const End end = seed % 2 ? Upload(random, faults) : Download(random, faults);
        ++ends[static_cast<size_t>(end)];
        const std::lock_guard hold(lock);
        if (end == End::kWrong) wrong.push_back("seed " + std::to_string(seed));
      }
    });
  }
  for (std::thread& worker : workers) worker.join();
  std::printf("%d right, %d told, %d without progress, %d without the last packet\n", ends[0].load(),
              ends[1].load(), ends[2].load(), ends[3].load());
  EXPECT_TRUE(wrong.empty()) << testing::PrintToString(wrong);
  EXPECT_GT(ends[0], transfers / 2);
  EXPECT_LE(ends[3], transfers / 100) << "uploads that the receiver refused at the end";
}

}  // namespace
}  // namespace vexa
