// Thousands of short transfers over a line that goes wrong by chance: each ends right, or it ends with a
// message. VEXA_TRANSFERS sets how many; SOAK_SECONDS goes on for as long instead.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <random>

#include "core/bytes.h"
#include "tests/serial/faulty_rig.h"

namespace vexa {
namespace {

constexpr int kTransfers = kSlowBuild ? 300 : 2000, kAtATime = kSlowBuild ? 32 : 96;

int NumberOf(const char* variable, int otherwise) {
  const char* text = std::getenv(variable);
  return text ? std::atoi(text) : otherwise;
}

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

End RandomUpload(std::mt19937& random, const LoaderFaults& faults) {
  const Bytes image = RandomBytes(random, 1 + random() % 600);
  ReceiverRig receiver(faults);
  FaultyRig rig(receiver.comm.api);
  return Upload(rig, receiver, image);
}

End RandomDownload(std::mt19937& random, const LoaderFaults& faults) {
  LoaderMemory memory;
  const size_t regions = 1 + random() % 2;
  std::vector<Bytes> expected;
  for (size_t i = 0; i < regions; ++i) {
    expected.push_back(RandomBytes(random, 1 + random() % 9000));
    StoreBytes(memory, i, 0, expected.back());
  }
  ReceiverRig receiver(faults, std::move(memory));
  receiver.swaps_per_thousand = random() % 5 == 0 ? 100 : 0;
  FaultyRig rig(receiver.comm.api);
  return Download(rig, expected);
}

TEST(FaultyLine, EveryTransferEndsRightOrSaysThatItFailed) {
  using Clock = std::chrono::steady_clock;
  const int transfers = NumberOf("VEXA_TRANSFERS", kTransfers), soak = NumberOf("SOAK_SECONDS", 0);
  const auto end_of_soak = Clock::now() + std::chrono::seconds(soak);
  std::array<std::atomic<int>, 5> ends{};
  std::mutex lock;
  std::vector<std::string> wrong;
  RunMany(kAtATime, [&](int seed) {
    if (soak > 0 ? Clock::now() > end_of_soak : seed > transfers) return false;
    std::mt19937 random(static_cast<unsigned>(seed));
    const LoaderFaults faults = MakeFaults(random, static_cast<uint64_t>(seed));
    const End end = seed % 2 ? RandomUpload(random, faults) : RandomDownload(random, faults);
    ++ends[static_cast<size_t>(end)];
    const std::lock_guard hold(lock);
    if (end == End::kWrong) wrong.push_back("seed " + std::to_string(seed));
    return true;
  });
  const int all = ends[0] + ends[1] + ends[2] + ends[3] + ends[4];
  std::printf("%d right, %d told, %d without progress, %d without the last packet\n", ends[0].load(),
              ends[1].load(), ends[2].load(), ends[3].load());
  EXPECT_TRUE(wrong.empty()) << testing::PrintToString(wrong);
  EXPECT_GT(ends[0], all / 2);
  EXPECT_LE(ends[3], all / 100) << "uploads that the receiver refused at the end";
}

}  // namespace
}  // namespace vexa
